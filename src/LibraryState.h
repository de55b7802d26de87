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

/// In the order of creation; the objects are destroyed in reverse.
std::span<const StateEntry> stateEntries() noexcept;

}  // namespace vorel::detail
