/// \file
/// Takes a named mutex and keeps it.
///
///     mutex=<name> held=<event> release=<event> log=<path>
///
/// `held` is set when the mutex is there. It is given back when `release` is set.

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
