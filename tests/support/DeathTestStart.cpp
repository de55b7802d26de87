/// \file
/// Linked into every test program, except in builds with MSVC. If Wine cannot start the child of a death test, the
/// child is started again. Otherwise GoogleTest would end the test program, and the message of GoogleTest would be lost
/// in the captured output.

#include <windows.h>

#include "support/ImportHook.h"
#include "support/StartProgram.h"

namespace test {

namespace {

BOOL WINAPI createProcess(LPCSTR program, LPSTR commandLine, LPSECURITY_ATTRIBUTES process,
                          LPSECURITY_ATTRIBUTES thread, BOOL inherit, DWORD flags, LPVOID environment, LPCSTR folder,
                          LPSTARTUPINFOA startup, LPPROCESS_INFORMATION started);

const ImportPatch s_patch(importedCreateProcessA, &createProcess);

BOOL WINAPI createProcess(LPCSTR program, LPSTR commandLine, LPSECURITY_ATTRIBUTES process,
                          LPSECURITY_ATTRIBUTES thread, BOOL inherit, DWORD flags, LPVOID environment, LPCSTR folder,
                          LPSTARTUPINFOA startup, LPPROCESS_INFORMATION started) {
    return startProgram([=] {
        return s_patch.original()(program, commandLine, process, thread, inherit, flags, environment, folder, startup,
                                  started);
    });
}

}  // namespace

}  // namespace test
