/// \file
/// The inline members of `Exception` that are too long for the class definition. They handle an exception that was
/// caught by const reference. Exception.h includes this header.
#pragma once

#include <cstdarg>

#include "vorel/exceptions/Exception.h"

namespace vorel {

inline Exception Exception::locationOf(const wchar_t* format, va_list args) noexcept {
    Exception location;
    location.m_delayedLogging = true;
    location.SetMessageOnStack(format, args);
    location.m_delayedLogging = false;
    return location;
}

inline void Exception::throwCopy() const {
    // Every `rethrow` throws a copy and does not change its object, so it may be called for a const object. An override
    // in a program may return, although `rethrow` is [[noreturn]]. The call uses a volatile pointer, because the
    // compiler would remove the code after a direct call. The last line handles an override that returns.
    void (Exception::*const volatile throwAsOwnClass)() = &Exception::rethrow;
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): `rethrow` is not const because its declaration is fixed
    (const_cast<Exception*>(this)->*throwAsOwnClass)();
    throw Exception(*this);
}

inline void Exception::catchGeneric(const wchar_t* format, ...) const noexcept {
    va_list args;
    va_start(args, format);
    const Exception location = locationOf(format, args);
    va_end(args);
    catchMessage(location.getErrorMessage(0));
}

inline void Exception::rethrowMessage(const wchar_t* location) const {
    try {
        throwCopy();
    } catch (Exception& copy) {
        copy.rethrowMessage(location);
    }
}

inline void Exception::rethrowClass(const wchar_t* className, const wchar_t* method) const {
    try {
        throwCopy();
    } catch (Exception& copy) {
        copy.rethrowClass(className, method);
    }
}

inline void Exception::rethrowGeneric(const wchar_t* format, ...) const {
    va_list args;
    va_start(args, format);
    const Exception location = locationOf(format, args);
    va_end(args);
    rethrowMessage(location.getErrorMessage(0));
}

}  // namespace vorel
