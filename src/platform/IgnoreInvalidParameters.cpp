#include "platform/IgnoreInvalidParameters.h"

#include <cstdlib>

// The runtime exports this function, but some compilers' headers do not declare it.
extern "C" __declspec(dllimport) _invalid_parameter_handler
    __cdecl _set_thread_local_invalid_parameter_handler(_invalid_parameter_handler handler);

namespace vorel::platform {

namespace {

void __cdecl ignoreInvalidParameter(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int, std::uintptr_t) {}

}  // namespace

IgnoreInvalidParameters::IgnoreInvalidParameters() noexcept
    : m_previous(_set_thread_local_invalid_parameter_handler(ignoreInvalidParameter)) {}

IgnoreInvalidParameters::~IgnoreInvalidParameters() {
    _set_thread_local_invalid_parameter_handler(m_previous);
}

}  // namespace vorel::platform
