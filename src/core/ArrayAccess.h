/// \file
/// Operations on an `Array` that only the library may use. They allocate storage without filling it with zeros first,
/// and later fill the unused slots.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <type_traits>

#include "algorithms/SimdBlocks.h"
#include "vorel/core/Array.h"
#include "vorel/core/Protocol.h"

namespace vorel::detail {

template <class T>
struct ArrayAccess {
    static_assert(std::is_trivially_copyable_v<T>);

    /// Allocates exactly `slots` slots for an array without storage. `slots` must be at least 1. The slots are not
    /// initialised. The caller must write the elements, set their number, and then call `clearUnused`.
    /// \throws MemoryException, like `Array::reserve`; the array is unchanged.
    static void allocate(Array<T>& array, unsigned int slots) {
        void* const storage = std::malloc(std::size_t{slots} * sizeof(T));
        if (!storage) {
            throwMemory(slots, sizeof(T));
        }
        array.m_items = static_cast<T*>(storage);
        array.m_allocated = slots;
    }

    /// Fills the slots after the elements with zeros.
    static void clearUnused(Array<T>& array) noexcept {
        if (array.m_count != array.m_allocated) {
            algorithms::fillWithZeros(array.m_items + array.m_count,
                                      std::size_t{array.m_allocated - array.m_count} * sizeof(T));
        }
    }
};

}  // namespace vorel::detail
