/// \file
/// Internal access to `AutoMutex`. Its `unlock` ignores threads that do not own the mutex, so callers that report this
/// check the owner first.
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
