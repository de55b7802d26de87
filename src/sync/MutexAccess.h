/// \file
/// Internal access to `AutoMutex`. `AutoMutex::unlock` does nothing on a thread that does not own the mutex. Callers
/// that must report this case check ownership first.
#pragma once

namespace vorel {

class AutoMutex;

namespace detail {

struct MutexAccess {
    /// Whether `mutex` records that the calling thread holds it. If a thread ended while it held the mutex, the record
    /// may be out of date (see AutoMutex.h).
    static bool isHeldByCaller(AutoMutex& mutex);
};

}  // namespace detail

}  // namespace vorel
