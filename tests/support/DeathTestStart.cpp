/// \file
/// Linked into every test program. A death test starts its child again if Wine could not start it. GoogleTest alone
/// would end the test program, and its message would be lost in the captured output.

#include <windows.h>

#include "support/ImportHook.h"

namespace test {

namespace {

// Under load, starting a program under Wine fails with ERROR_INTERNAL_ERROR about once in several thousand times.
constexpr int kMaxStarts = 5;

BOOL WINAPI createProcess(LPCSTR program, LPSTR commandLine, LPSECURITY_ATTRIBUTES process,
                          LPSECURITY_ATTRIBUTES thread, BOOL inherit, DWORD flags, LPVOID environment, LPCSTR folder,
                          LPSTARTUPINFOA startup, LPPROCESS_INFORMATION started);

const ImportPatch s_patch(importedCreateProcessA, &createProcess);

BOOL WINAPI createProcess(LPCSTR program, LPSTR commandLine, LPSECURITY_ATTRIBUTES process,
                          LPSECURITY_ATTRIBUTES thread, BOOL inherit, DWORD flags, LPVOID environment, LPCSTR folder,
                          LPSTARTUPINFOA startup, LPPROCESS_INFORMATION started) {
    BOOL created = FALSE;
    for (int start = 0; start != kMaxStarts && !created; ++start) {
        created = s_patch.original()(program, commandLine, process, thread, inherit, flags, environment, folder,
                                     startup, started);
        if (!created && GetLastError() != ERROR_INTERNAL_ERROR) {
            break;
        }
    }
    return created;
}

}  // namespace

}  // namespace test
