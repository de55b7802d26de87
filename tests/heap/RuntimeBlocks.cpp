#include "heap/Blocks.h"

// The functions that malloc and its family call. With lld, `__real_malloc` would be the replacement itself, because
// this linker also wraps the pointer through which a program calls a function of a DLL.
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
