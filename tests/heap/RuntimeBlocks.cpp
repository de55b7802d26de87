#include "heap/Blocks.h"

namespace heap::blocks {

void* allocate(std::size_t bytes) noexcept {
    return __real_malloc(bytes);
}

void* allocateZeroed(std::size_t count, std::size_t bytes) noexcept {
    return __real_calloc(count, bytes);
}

void* reallocate(void* block, std::size_t bytes) noexcept {
    return __real_realloc(block, bytes);
}

void release(void* block) noexcept {
    __real_free(block);
}

}  // namespace heap::blocks
