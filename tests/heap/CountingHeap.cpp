#include "heap/CountingHeap.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <new>

#include "heap/Blocks.h"

extern "C" {
void* __wrap_malloc(std::size_t bytes);
void* __wrap_calloc(std::size_t count, std::size_t bytes);
void* __wrap_realloc(void* block, std::size_t bytes);
void __wrap_free(void* block);
}

namespace heap {

namespace {

/// The counted blocks that are in use. The table is static, because it must not allocate memory.
struct Held {
    void* blocks[4096];
    std::size_t count;
};

constinit Held held{};
constinit bool watching = false;
constinit bool armed = false;
constinit unsigned int failAt = 0;
constinit Failure mode = Failure::Once;
constinit unsigned int requestCount = 0;
constinit unsigned int failureCount = 0;

void remember(void* block) noexcept {
    if (!watching || !block) {
        return;
    }
    if (held.count == std::size(held.blocks)) {
        (void)std::fputs("counting heap: the table of counted blocks is full\n", stderr);
        std::abort();
    }
    held.blocks[held.count++] = block;
}

/// Ignores blocks that were not counted, and blocks of another heap.
void forget(const void* block) noexcept {
    void** const end = held.blocks + held.count;
    void** const found = std::find(held.blocks, end, block);
    if (found != end) {
        *found = held.blocks[--held.count];
    }
}

bool shouldFail() noexcept {
    if (!armed) {
        return false;
    }
    ++requestCount;
    if (mode == Failure::Once ? requestCount != failAt : requestCount < failAt) {
        return false;
    }
    ++failureCount;
    return true;
}

}  // namespace

void watch() noexcept {
    held.count = 0;
    watching = true;
}

void stopWatching() noexcept {
    watching = false;
}

std::size_t heldBlocks() noexcept {
    return held.count;
}

Unwatched::Unwatched() noexcept : m_before(watching) {
    watching = false;
}

Unwatched::~Unwatched() {
    watching = m_before;
}

void arm(unsigned int nth, Failure failure) noexcept {
    failAt = nth;
    mode = failure;
    requestCount = 0;
    failureCount = 0;
    armed = true;
}

void disarm() noexcept {
    armed = false;
}

unsigned int requests() noexcept {
    return requestCount;
}

unsigned int failedRequests() noexcept {
    return failureCount;
}

}  // namespace heap

// ---- Replacements of the runtime's functions (linker option --wrap) ----

void* __wrap_malloc(std::size_t bytes) {
    void* const block = heap::shouldFail() ? nullptr : heap::blocks::allocate(bytes);
    heap::remember(block);
    return block;
}

void* __wrap_calloc(std::size_t count, std::size_t bytes) {
    void* const block = heap::shouldFail() ? nullptr : heap::blocks::allocateZeroed(count, bytes);
    heap::remember(block);
    return block;
}

void* __wrap_realloc(void* block, std::size_t bytes) {
    if (heap::shouldFail()) {
        return nullptr;
    }
    heap::forget(block);
    void* const moved = heap::blocks::reallocate(block, bytes);
    heap::remember(moved);
    return moved;
}

void __wrap_free(void* block) {
    heap::forget(block);
    heap::blocks::release(block);
}

// ---- Global operators ----

void* operator new(std::size_t bytes) {
    void* const block = __wrap_malloc(bytes != 0 ? bytes : 1);
    if (!block) {
        throw std::bad_alloc();
    }
    return block;
}

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return __wrap_malloc(bytes != 0 ? bytes : 1);
}

void* operator new[](std::size_t bytes) {
    return operator new(bytes);
}

void* operator new[](std::size_t bytes, const std::nothrow_t& tag) noexcept {
    return operator new(bytes, tag);
}

void operator delete(void* block) noexcept {
    __wrap_free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    __wrap_free(block);
}

void operator delete[](void* block) noexcept {
    __wrap_free(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    __wrap_free(block);
}
