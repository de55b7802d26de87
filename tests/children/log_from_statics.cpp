/// \file
/// Logs not only in `main`, but also in the constructor and the destructor of a global object, and in two functions
/// that run at exit: the first before that destructor, the second after it.

#include <cstdlib>

#include <vorel/exceptions/Exception.h>

using vorel::Exception;

namespace {

void logSilenced() {
    Exception::DisableThreadErrorLogging(true);
    Exception::warn("silenced");
    Exception::DisableThreadErrorLogging(false);
}

void logBeforeDestructors() {
    Exception::setDebugTarget(L"AtExit", true);
    Exception::debug(L"AtExit", L"before destructors");
}

void logAfterDestructors() {
    Exception::debug(L"AtExit", L"after destructors");
    const Exception e(L"after destructors");
    logSilenced();
}

struct Global {
    Global() {
        Exception::SetErrorLogLocation("errors.txt", 0);
        std::atexit(logAfterDestructors);
        const Exception e(L"constructor");
        logSilenced();
    }
    ~Global() {
        const Exception e(L"destructor");
        logSilenced();
    }
};

const Global s_global;

}  // namespace

int main() {
    std::atexit(logBeforeDestructors);
    Exception::warn("main");
    return 0;
}
