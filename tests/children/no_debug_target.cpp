/// \file
/// Checks that debug calls do not read arguments that they do not need. Before the first debug target is switched on,
/// they do not read the names of target, class and method, or the arguments of the format. While only other targets are
/// active, they read the name of the target, but not the names of class and method or the arguments of the format.

#include <cstdarg>
#include <cstdint>

#include <vorel/exceptions/Exception.h>

using vorel::Exception;

namespace {

/// A pointer that faults on access.
template <class T>
const T* nowhere() {
    return reinterpret_cast<const T*>(std::uintptr_t{16});
}

template <class T>
void vDebugWith(const T* target, const T* format, ...) {
    va_list args;
    va_start(args, format);
    Exception::vDebug(target, format, args);
    va_end(args);
}

void debugAll(const char* target, const wchar_t* wideTarget) {
    Exception::debug(target, "%s", nowhere<char>());
    Exception::debug(wideTarget, L"%ls", nowhere<wchar_t>());
    vDebugWith(target, "%s", nowhere<char>());
    vDebugWith(wideTarget, L"%ls", nowhere<wchar_t>());
    Exception::debugClass(nowhere<wchar_t>(), nowhere<wchar_t>(), wideTarget, L"%ls", nowhere<wchar_t>());
}

bool isAnyActive() {
    return Exception::isDebugTargetActive(nowhere<char>()) || Exception::isDebugTargetActive(nowhere<wchar_t>());
}

}  // namespace

int main() {
    Exception::SetErrorLogLocation("errors.txt", 0);
    debugAll(nowhere<char>(), nowhere<wchar_t>());
    if (isAnyActive()) {
        return 1;
    }
    // These calls switch no target on, so the library must still not read the names of targets.
    Exception::setDebugTarget("Target", false);
    Exception::setDebugTarget(L"Target", false);
    debugAll(nowhere<char>(), nowhere<wchar_t>());
    if (isAnyActive()) {
        return 2;
    }
    // From now on the library reads the names of targets, but it renders messages only for active targets.
    Exception::setDebugTarget("Other", true);
    Exception::setDebugTarget(L"Other", true);
    debugAll("Target", L"Target");
    debugAll("Unknown", L"Unknown");
    return 0;
}
