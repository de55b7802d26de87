/// \file
/// Linked into every test program. A death test starts its child again if Wine could not start it. Without this second
/// attempt, GoogleTest would end the test program, and its message would be lost in the captured output.

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
