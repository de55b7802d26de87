#include "sync/SystemEvent.h"

#include <windows.h>

#include "vorel/core/Protocol.h"

namespace vorel::detail {

void setEvent(const KernelHandle& event) {
    if (!SetEvent(event.get())) {
        throwFailure(L"Failed to set event.");
    }
}

bool waitForEvent(const KernelHandle& event, int timeoutMs) {
    static_assert(INFINITE == static_cast<DWORD>(-1));
    return WaitForSingleObject(event.get(), static_cast<DWORD>(timeoutMs)) == WAIT_OBJECT_0;
}

}  // namespace vorel::detail
