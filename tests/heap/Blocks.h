/// \file
/// Where the blocks of a test program come from whose heap is replaced (CountingHeap.cpp): from the runtime's heap
/// (RuntimeBlocks.cpp), or from pages whose neighbours are inaccessible (GuardedBlocks.cpp). One of the two is linked.
///
/// All of it may be called by any thread.
#pragma once

#include <cstddef>

namespace heap::blocks {

/// As the runtime's `malloc`, `calloc`, `realloc` and `free`.
void* take(std::size_t bytes) noexcept;
void* takeZeroed(std::size_t count, std::size_t bytes) noexcept;
void* resize(void* block, std::size_t bytes) noexcept;
void giveBack(void* block) noexcept;

}  // namespace heap::blocks

// What `--wrap` leaves of the runtime's own functions.
extern "C" {
void* __real_malloc(std::size_t bytes);
void* __real_calloc(std::size_t count, std::size_t bytes);
void* __real_realloc(void* block, std::size_t bytes);
void __real_free(void* block);
}
