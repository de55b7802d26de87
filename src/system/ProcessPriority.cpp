#include "vorel/system/ProcessPriority.h"

#include <windows.h>

#include "vorel/core/Protocol.h"

namespace vorel::util {

namespace {

DWORD systemClassOf(ProcessPriorityClass priority) noexcept {
    switch (priority) {
    case PPC_AboveNormal: return ABOVE_NORMAL_PRIORITY_CLASS;
    case PPC_BelowNormal: return BELOW_NORMAL_PRIORITY_CLASS;
    default: return NORMAL_PRIORITY_CLASS;
    }
}

}  // namespace

void SetProcessPriority(ProcessPriorityClass priority, int) {
    detail::runRethrowing(L"vorel::util", L"SetProcessPriority",
                          [=] { SetPriorityClass(GetCurrentProcess(), systemClassOf(priority)); });
}

}  // namespace vorel::util
