/// \file
/// A program in which no debug target was ever switched on: its debug calls do not look at what they are given.

#include <cstdarg>
#include <cstdint>

#include <vorel/exceptions/Exception.h>

using vorel::Exception;

namespace {

/// Whoever reads a text from here faults.
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

void debugAll() {
    Exception::debug(nowhere<char>(), "%s", nowhere<char>());
    Exception::debug(nowhere<wchar_t>(), L"%ls", nowhere<wchar_t>());
    vDebugWith(nowhere<char>(), "%s", nowhere<char>());
    vDebugWith(nowhere<wchar_t>(), L"%ls", nowhere<wchar_t>());
    Exception::debugClass(nowhere<wchar_t>(), nowhere<wchar_t>(), nowhere<wchar_t>(), L"%ls", nowhere<wchar_t>());
}

bool isAnyActive() {
    return Exception::isDebugTargetActive(nowhere<char>()) || Exception::isDebugTargetActive(nowhere<wchar_t>());
}

}  // namespace

int main() {
    Exception::SetErrorLogLocation("errors.txt", 0);
    debugAll();
    if (isAnyActive()) {
        return 1;
    }
    // Switching targets off is not the same as using them.
    Exception::setDebugTarget("Target", false);
    Exception::setDebugTarget(L"Target", false);
    debugAll();
    return isAnyActive() ? 2 : 0;
}
