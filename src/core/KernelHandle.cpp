#include "vorel/core/KernelHandle.h"

#include <windows.h>

namespace vorel::detail {

bool KernelHandle::close() {
    if (!m_handle) {
        return true;
    }
    const DWORD lastError = GetLastError();
    if (!CloseHandle(release())) {
        return false;
    }
    SetLastError(lastError);
    return true;
}

static_assert(sizeof(KernelHandle) == sizeof(HANDLE));

}  // namespace vorel::detail
