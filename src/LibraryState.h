/// \file
/// The objects of the library's state and their order.
#pragma once

#include <span>

namespace vorel::detail {

struct StateEntry {
    const void* object;  // a StateObject
    void (*create)();
    void (*destroy)() noexcept;
};

/// The objects in the order of creation. They are destroyed in reverse order.
std::span<const StateEntry> stateEntries() noexcept;

}  // namespace vorel::detail
