/// \file
/// Locks a named mutex and holds it.
///
///     mutex=<name> held=<event> release=<event> log=<path>
///
/// Sets `held` when it has locked the mutex. Unlocks the mutex when `release` is set, or after 30 seconds.

#include <vorel/exceptions/Exception.h>
#include <vorel/sync/AutoMutex.h>

#include "support/ChildArguments.h"
#include "support/NamedEvent.h"

namespace {

int holdMutex(const test::ChildArguments& arguments) {
    vorel::Exception::SetErrorLogLocation(arguments.text("log").c_str(), -1);
    const test::NamedEvent held(arguments.wide("held"));
    const test::NamedEvent release(arguments.wide("release"));
    vorel::AutoMutex mutex(arguments.wide("mutex").c_str(), true, false);
    held.set();
    const bool released = release.wait();
    mutex.unlock();
    return released ? 0 : 1;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    try {
        return holdMutex({argumentCount, arguments});
    } catch (...) {
        return 2;
    }
}
