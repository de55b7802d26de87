/// \file
/// Repeatedly adds one to the number in a file. In each round, the program reads and writes the number
/// while it owns a named mutex.
///
///     mutex=<name> file=<path> rounds=<count> go=<event> log=<path>
///
/// Starts when `go` is set.

#include <vorel/core/Guard.h>
#include <vorel/exceptions/Exception.h>
#include <vorel/sync/AutoMutex.h>

#include <windows.h>

#include "support/ChildArguments.h"
#include "support/Handle.h"
#include "support/NamedEvent.h"

namespace {

bool addOne(HANDLE file) {
    long long number = 0;
    DWORD size = 0;
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    if (!ReadFile(file, &number, sizeof number, &size, nullptr) || (size != 0 && size != sizeof number)) {
        return false;
    }
    ++number;
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    return WriteFile(file, &number, sizeof number, &size, nullptr) && size == sizeof number;
}

int count(const test::ChildArguments& arguments) {
    vorel::Exception::SetErrorLogLocation(arguments.text("log").c_str(), -1);
    const test::Handle file(CreateFileA(arguments.text("file").c_str(), GENERIC_READ | GENERIC_WRITE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, 0, nullptr));
    vorel::AutoMutex mutex(arguments.wide("mutex").c_str(), false, false);
    if (!file || !test::NamedEvent(arguments.wide("go")).wait()) {
        return 1;
    }
    for (long long round = 0; round != arguments.number("rounds"); ++round) {
        const vorel::Guard held(mutex);
        if (!addOne(file.get())) {
            return 2;
        }
    }
    return 0;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    try {
        return count({argumentCount, arguments});
    } catch (...) {
        return 3;
    }
}
