// Tests of the guarded heap: the errors that it detects, and its behaviour as a heap. These tests are built only
// with the guarded preset.

#include "heap/GuardedBlocks.h"
#include "support/CaseName.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace {

namespace blocks = heap::blocks;

constexpr int kFault = static_cast<int>(EXCEPTION_ACCESS_VIOLATION);
constexpr int kAborted = 3;  // the exit code of `std::abort`

// The functions below use blocks incorrectly, and the compiler would warn about that. The volatile pointers hide the
// blocks from the compiler.
void* (*volatile allocate)(std::size_t) = &std::malloc;
void (*volatile deallocate)(void*) = &std::free;
volatile char* volatile hidden = nullptr;

volatile char* request(std::size_t bytes) {
    hidden = static_cast<volatile char*>(allocate(bytes));
    return hidden;
}

volatile char* requestNew(std::size_t bytes) {
    hidden = new char[bytes];
    return hidden;
}

void release(const volatile char* block) {
    deallocate(const_cast<char*>(block));
}

void readPastEnd() {
    static_cast<void>(request(10)[10]);
}

void writePastEnd() {
    request(4096)[4096] = 'x';
}

void readFarPastEnd() {
    static_cast<void>(request(10)[10 + 4095]);
}

void writePastEndOfNewArray() {
    requestNew(33)[33] = 'x';
}

void readPastEndOfString() {
    const vorel::BaseString<wchar_t> text(std::wstring(100, L'x').c_str());
    const volatile wchar_t* unit = text.c_str();
    for (;;) {
        static_cast<void>(*unit++);
    }
}

void readBeforeStart() {
    static_cast<void>(request(4096)[-1]);
}

void writeBeforeStart() {
    volatile char* const block = request(10);
    block[-1] = 'x';
    release(block);
}

void readFreedBlock() {
    const volatile char* const block = request(10);
    release(block);
    static_cast<void>(block[3]);
}

void useManyBlocks(int count) {
    for (int index = 0; index < count; ++index) {
        release(request(10));
    }
}

void writeToOldFreedBlock() {
    useManyBlocks(30'000);
    volatile char* const block = request(10);
    release(block);
    block[9] = 'x';
    useManyBlocks(10'000);
}

void writeToFreedBlockBeforeTheQueueIsFull() {
    useManyBlocks(30'000);
    volatile char* const block = request(10);
    release(block);
    block[9] = 'x';
    // These blocks are released without an allocation in between, so the queue of released blocks becomes full.
    std::vector<const volatile char*> blocks;
    for (int index = 0; index < 20'000; ++index) {
        blocks.push_back(request(10));
    }
    std::for_each(blocks.begin(), blocks.end(), &release);
}

void readElementAfterGrowth() {
    vorel::Array<int> items;
    items.append(1);
    hidden = reinterpret_cast<volatile char*>(items.data());
    items.reserve(1000);
    static_cast<void>(hidden[0]);
}

void writeToEmptyBlock() {
    request(0)[0] = 'x';
}

void releaseTwice() {
    const volatile char* const block = request(10);
    release(block);
    release(block);
}

void releaseInTheMiddle() {
    release(request(10) + 1);
}

struct Mistake {
    const char* name;
    void (*make)();
    int exitCode;
    const char* explanation;

    friend void PrintTo(const Mistake& mistake, std::ostream* out) { *out << mistake.name; }
};

class GuardedBlocks : public testing::TestWithParam<Mistake> {};

TEST_P(GuardedBlocks, MistakeEndsProgramAndPrintsReason) {
    const Mistake& mistake = GetParam();
    EXPECT_EXIT(mistake.make(), testing::ExitedWithCode(mistake.exitCode), mistake.explanation);
}

INSTANTIATE_TEST_SUITE_P(
    Mistakes, GuardedBlocks,
    testing::Values(
        Mistake{"ReadPastEnd", readPastEnd, kFault, "read at offset 10 of a block of 10 bytes"},
        Mistake{"WritePastEnd", writePastEnd, kFault, "write at offset 4096 of a block of 4096 bytes"},
        Mistake{"ReadFarPastEnd", readFarPastEnd, kFault, "read at offset 4105 of a block of 10 bytes"},
        Mistake{"WritePastEndOfNewArray", writePastEndOfNewArray, kFault, "write at offset 33 of a block of 33 bytes"},
        Mistake{"ReadPastEndOfString", readPastEndOfString, kFault, "read at offset \\d+ of a block of"},
        Mistake{"ReadBeforeStart", readBeforeStart, kFault, "read at offset -1 of a block of 4096 bytes"},
        Mistake{"WriteBeforeStart", writeBeforeStart, kAborted, "write before a block of 10 bytes"},
        Mistake{"ReadFreedBlock", readFreedBlock, kFault, "read in a freed block of 10 bytes"},
        Mistake{"WriteToOldFreedBlock", writeToOldFreedBlock, kAborted, "write to a freed block of 10 bytes"},
        Mistake{"WriteToFreedBlockBeforeTheQueueIsFull", writeToFreedBlockBeforeTheQueueIsFull, kAborted,
                "write to a freed block of 10 bytes"},
        Mistake{"ReadElementAfterGrowth", readElementAfterGrowth, kFault, "read in a freed block of"},
        Mistake{"WriteToEmptyBlock", writeToEmptyBlock, kFault, "write at offset 0 of a block of 0 bytes"},
        Mistake{"ReleaseTwice", releaseTwice, kAborted, "second free of a block of 10 bytes"},
        Mistake{"ReleaseInTheMiddle", releaseInTheMiddle, kAborted, "free of an address where no block starts"}),
    test::caseName);

TEST(GuardedHeap, ProvidesAllBytesOfEverySize) {
    for (std::size_t bytes = 1; bytes < 10000; bytes += bytes < 70 ? 1 : 997) {
        volatile char* const block = request(bytes);
        ASSERT_TRUE(block);
        for (std::size_t index = 0; index < bytes; ++index) {
            block[index] = static_cast<char>(index);
        }
        EXPECT_EQ(block[bytes - 1], static_cast<char>(bytes - 1));
        release(block);
    }
}

TEST(GuardedHeap, AlignsBlockWhenSizeIsMultipleOfAlignment) {
    for (const std::size_t alignment : {1u, 2u, 4u, 8u, 16u, 32u}) {
        volatile char* const block = request(3 * alignment);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignment, 0u) << alignment;
        release(block);
    }
}

TEST(GuardedHeap, Realloc_PreservesBytesThatFitNewSize) {
    void* block = std::malloc(6);
    std::memcpy(block, "abcde", 6);
    block = std::realloc(block, 10000);
    ASSERT_TRUE(block);
    EXPECT_STREQ(static_cast<char*>(block), "abcde");
    block = std::realloc(block, 3);
    ASSERT_TRUE(block);
    EXPECT_EQ(std::memcmp(block, "abc", 3), 0);
    std::free(block);
}

TEST(GuardedHeap, Calloc_ReturnsZeros) {
    auto* const block = static_cast<unsigned char*>(std::calloc(100, 7));
    ASSERT_TRUE(block);
    for (std::size_t index = 0; index < 700; ++index) {
        ASSERT_EQ(block[index], 0u) << index;
    }
    std::free(block);
}

/// All blocks of this test together need more pages than the region of the heap contains. The heap reuses pages of
/// freed blocks, but not pages of live blocks.
TEST(GuardedHeap, ReusesFreePagesWhenRegionIsUsedUp) {
    constexpr std::size_t kBytes = std::size_t{1} << 27;
    auto* const kept = static_cast<char*>(std::calloc(1, 5));
    ASSERT_TRUE(kept);
    std::memcpy(kept, "kept", 5);
    for (int round = 0; round < 300; ++round) {
        void* const block = std::calloc(kBytes, 1);
        ASSERT_TRUE(block) << round;
        std::free(block);
    }
    EXPECT_STREQ(kept, "kept");
    std::free(kept);
}

TEST(GuardedHeap, Live_CountsBlocksOfMallocAndNew) {
    const std::size_t before = blocks::live();
    const std::uint64_t serial = blocks::serial();
    const volatile char* const block = request(24);
    const auto number = std::make_unique<std::uint64_t>(7);
    const std::size_t during = blocks::live();
    const std::string sizes = blocks::sizesSince(serial);
    release(block);
    EXPECT_EQ(during, before + 2);
    EXPECT_EQ(sizes.substr(0, 5), "24, 8");
}

/// The exception runtime relies on the alignment of the header before a thrown object.
TEST(GuardedHeap, SupportsThrownObjectsOfAnySize) {
    struct Three {
        char units[3];
    };
    EXPECT_THROW(throw Three{}, Three);
    EXPECT_THROW(throw 'x', char);
    EXPECT_THROW(throw std::runtime_error("x"), std::runtime_error);
}

}  // namespace
