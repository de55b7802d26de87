/// \file
/// Internal access to `AutoMutex`. `AutoMutex::unlock` does nothing on a thread that does not own the mutex. Callers
/// that must report this case check ownership first.
#pragma once

namespace vorel {

class AutoMutex;

namespace detail {

struct MutexAccess {
    /// Whether the calling thread holds the mutex through this object.
    static bool isHeldByCaller(AutoMutex& mutex);
};

}  // namespace detail

}  // namespace vorel
