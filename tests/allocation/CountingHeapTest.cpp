// The heap of these tests has to be right before it can tell anything about others.

#include "heap/CountingHeap.h"

#include <cstdlib>
#include <memory>
#include <new>
#include <string>

#include <gtest/gtest.h>

namespace {

/// A request that the compiler cannot do away with.
void* request(std::size_t bytes) {
    static void* volatile block;
    block = std::malloc(bytes);
    return block;
}

TEST(CountingHeap, Held_CountsWhatWasNotGivenBack) {
    void* const before = request(8);
    heap::watch();
    void* const first = request(8);
    void* const second = std::calloc(2, 8);
    const auto third = std::make_unique<std::string>(100, 'x');
    EXPECT_EQ(heap::heldBlocks(), 4u);
    std::free(before);
    EXPECT_EQ(heap::heldBlocks(), 4u) << "a block from before the watch";
    std::free(first);
    void* const moved = std::realloc(second, 5000);
    EXPECT_EQ(heap::heldBlocks(), 3u);
    std::free(moved);
    heap::stopWatching();
    EXPECT_EQ(heap::heldBlocks(), 2u);
}

TEST(CountingHeap, Held_LeavesOutWhatIsUnwatched) {
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

TEST(CountingHeap, Arm_RefusesOneRequestOrAllFromThenOn) {
    for (const heap::Failure failure : {heap::Failure::Once, heap::Failure::FromThenOn}) {
        bool granted[4] = {};
        heap::arm(2, failure);
        for (bool& answer : granted) {
            void* const block = request(8);
            answer = block != nullptr;
            std::free(block);
        }
        heap::disarm();
        const bool afterwards = failure == heap::Failure::Once;
        EXPECT_TRUE(granted[0]);
        EXPECT_FALSE(granted[1]);
        EXPECT_EQ(granted[2], afterwards);
        EXPECT_EQ(granted[3], afterwards);
        EXPECT_EQ(heap::requests(), 4u);
        EXPECT_EQ(heap::refusals(), afterwards ? 1u : 3u);
    }
}

TEST(CountingHeap, Arm_MakesTheGlobalOperatorThrow) {
    heap::arm(1, heap::Failure::Once);
    EXPECT_THROW(static_cast<void>(std::string(100, 'x')), std::bad_alloc);
    heap::disarm();
    EXPECT_EQ(heap::refusals(), 1u);
}

}  // namespace
