#include "sync/MutexAccess.h"

#include <windows.h>

#include "vorel/sync/AutoMutex.h"

namespace vorel::detail {

bool MutexAccess::isHeldByCaller(AutoMutex& mutex) {
    return mutex.GetLockCount() >= 1 && mutex.GetLockingThreadID() == static_cast<long long>(GetCurrentThreadId());
}

}  // namespace vorel::detail
