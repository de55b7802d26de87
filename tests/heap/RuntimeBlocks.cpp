#include "heap/Blocks.h"

// The functions that the runtime's `malloc`, `calloc`, `realloc` and `free` call. `__real_malloc` cannot be used here.
// If the linker is lld, `__real_malloc` is the replacement itself, because lld also wraps the pointer through which a
// program calls a function of a DLL.
extern "C" {
void* _malloc_base(std::size_t bytes);
void* _calloc_base(std::size_t count, std::size_t bytes);
void* _realloc_base(void* block, std::size_t bytes);
void _free_base(void* block);
}

namespace heap::blocks {

void* allocate(std::size_t bytes) noexcept {
    return _malloc_base(bytes);
}

void* allocateZeroed(std::size_t count, std::size_t bytes) noexcept {
    return _calloc_base(count, bytes);
}

void* reallocate(void* block, std::size_t bytes) noexcept {
    return _realloc_base(block, bytes);
}

void release(void* block) noexcept {
    _free_base(block);
}

}  // namespace heap::blocks
