/// \file
/// The allocator under the heap of a test program (CountingHeap.cpp). Blocks come from the runtime's heap
/// (RuntimeBlocks.cpp) or from pages with inaccessible neighbours (GuardedBlocks.cpp). A program links one of these two
/// files.
///
/// Several threads may call the functions at the same time.
#pragma once

#include <cstddef>

namespace heap::blocks {

/// Like the runtime's `malloc`, `calloc`, `realloc` and `free`.
void* allocate(std::size_t bytes) noexcept;
void* allocateZeroed(std::size_t count, std::size_t bytes) noexcept;
void* reallocate(void* block, std::size_t bytes) noexcept;
void release(void* block) noexcept;

}  // namespace heap::blocks

// The runtime's functions, with the names that the linker option `--wrap` gives them.
extern "C" {
void* __real_malloc(std::size_t bytes);
void* __real_calloc(std::size_t count, std::size_t bytes);
void* __real_realloc(void* block, std::size_t bytes);
void __real_free(void* block);
}
