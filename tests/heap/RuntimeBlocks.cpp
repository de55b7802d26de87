#include "heap/Blocks.h"

namespace heap::blocks {

void* take(std::size_t bytes) noexcept {
    return __real_malloc(bytes);
}

void* takeZeroed(std::size_t count, std::size_t bytes) noexcept {
    return __real_calloc(count, bytes);
}

void* resize(void* block, std::size_t bytes) noexcept {
    return __real_realloc(block, bytes);
}

void giveBack(void* block) noexcept {
    __real_free(block);
}

}  // namespace heap::blocks
