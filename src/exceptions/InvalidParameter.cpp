#include "exceptions/InvalidParameter.h"

#include <cstdlib>

#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"

namespace vorel {

namespace detail {

namespace {

constinit InvalidParameterHandler s_handler = nullptr;
constinit unsigned int s_installations = 0;

}  // namespace

void installInvalidParameterHandler(InvalidParameterHandler handler) noexcept {
    if (!s_handler) {
        s_handler = handler;
    }
    if (s_handler != handler) {
        return;
    }
    const InvalidParameterHandler current = _get_invalid_parameter_handler();
    if (!current) {
        _set_invalid_parameter_handler(handler);
    }
    if (!current || current == handler) {
        ++s_installations;
    }
}

unsigned int invalidParameterHandlerInstallations() noexcept {
    return s_installations;
}

SetCurrentIPH::~SetCurrentIPH() {
    if (s_handler && _get_invalid_parameter_handler() == s_handler) {
        _set_invalid_parameter_handler(nullptr);
        --s_installations;
    }
}

}  // namespace detail

void Exception::Invalid_Parameter_Handler(const wchar_t* expression, const wchar_t* function, const wchar_t* file,
                                          unsigned int line, std::uintptr_t) noexcept {
    if (!expression && !function && !file) {
        return;  // the release runtime passes no details
    }
    detail::runNoThrow(L"vorel::Exception - Invalid_Parameter_Handler", [=] {
        warn(L"Invalid parameter detected: %ls::%ls(%d): %ls", file, function, line, expression);
    });
}

}  // namespace vorel
