#include "platform/IgnoreInvalidParameters.h"

#include <cstdlib>

// The runtime exports it; not every compiler's headers declare it.
extern "C" __declspec(dllimport) _invalid_parameter_handler
    __cdecl _set_thread_local_invalid_parameter_handler(_invalid_parameter_handler handler);

namespace vorel::platform {

namespace {

void __cdecl ignoreInvalidParameter(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int, std::uintptr_t) {}

}  // namespace

IgnoreInvalidParameters::IgnoreInvalidParameters() noexcept
    : m_before(_set_thread_local_invalid_parameter_handler(ignoreInvalidParameter)) {}

IgnoreInvalidParameters::~IgnoreInvalidParameters() {
    _set_thread_local_invalid_parameter_handler(m_before);
}

}  // namespace vorel::platform
