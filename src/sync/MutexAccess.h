/// \file
/// What only the library itself may ask an `AutoMutex`, whose `unlock` passes over the calls of strangers in silence.
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
