// Tests of the counting heap that the other tests of this folder use.

#include "heap/CountingHeap.h"

#include <cstdlib>
#include <memory>
#include <new>
#include <string>

#include <gtest/gtest.h>

namespace {

/// Returns `block`. The compiler cannot remove the allocation of the block, because a volatile variable stores its
/// address.
template <class T>
T* visible(T* block) {
    static T* volatile s_block;
    s_block = block;
    return s_block;
}

void* request(std::size_t bytes) {
    return visible(std::malloc(bytes));
}

TEST(CountingHeap, HeldBlocks_CountsBlocksThatAreNotFreed) {
    void* const before = request(8);
    heap::watch();
    void* const first = request(8);
    void* const second = visible(std::calloc(2, 8));
    const std::unique_ptr<std::string> third(visible(new std::string(100, 'x')));
    EXPECT_EQ(heap::heldBlocks(), 4u);
    std::free(before);
    EXPECT_EQ(heap::heldBlocks(), 4u) << "blocks from before `watch` must not be counted";
    std::free(first);
    void* const moved = std::realloc(second, 5000);
    EXPECT_EQ(heap::heldBlocks(), 3u);
    std::free(moved);
    heap::stopWatching();
    EXPECT_EQ(heap::heldBlocks(), 2u);
}

TEST(CountingHeap, HeldBlocks_IgnoresUnwatchedBlocks) {
    heap::watch();
    void* kept = nullptr;
    {
        const heap::Unwatched unwatched;
        kept = request(8);
    }
    EXPECT_EQ(heap::heldBlocks(), 0u);
    heap::stopWatching();
    std::free(kept);
}

TEST(CountingHeap, Arm_FailsTheNthRequestOrAllRequestsFromTheNthOn) {
    for (const heap::Failure failure : {heap::Failure::Once, heap::Failure::FromThenOn}) {
        bool succeeded[4] = {};
        heap::arm(2, failure);
        for (bool& result : succeeded) {
            void* const block = request(8);
            result = block != nullptr;
            std::free(block);
        }
        heap::disarm();
        const bool laterRequestsSucceed = failure == heap::Failure::Once;
        EXPECT_TRUE(succeeded[0]);
        EXPECT_FALSE(succeeded[1]);
        EXPECT_EQ(succeeded[2], laterRequestsSucceed);
        EXPECT_EQ(succeeded[3], laterRequestsSucceed);
        EXPECT_EQ(heap::requests(), 4u);
        EXPECT_EQ(heap::failedRequests(), laterRequestsSucceed ? 1u : 3u);
    }
}

TEST(CountingHeap, Arm_MakesGlobalOperatorNewThrow) {
    heap::arm(1, heap::Failure::Once);
    EXPECT_THROW(static_cast<void>(std::string(100, 'x')), std::bad_alloc);
    heap::disarm();
    EXPECT_EQ(heap::failedRequests(), 1u);
}

}  // namespace
