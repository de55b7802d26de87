// Only part of the guarded build: what the heap of its tests finds, and that it passes for a heap otherwise.

#include "heap/GuardedBlocks.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include <windows.h>

#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace {

namespace blocks = heap::blocks;

constexpr int kFault = static_cast<int>(EXCEPTION_ACCESS_VIOLATION);
constexpr int kAborted = 3;

// The compiler knows the rules of the heap, and would warn of what is done here; so it must not see which block it is.
void* (*volatile get)(std::size_t) = &std::malloc;
void (*volatile put)(void*) = &std::free;
volatile char* volatile hidden = nullptr;

volatile char* request(std::size_t bytes) {
    hidden = static_cast<volatile char*>(get(bytes));
    return hidden;
}

volatile char* requestNew(std::size_t bytes) {
    hidden = new char[bytes];
    return hidden;
}

void giveBack(const volatile char* block) {
    put(const_cast<char*>(block));
}

void readBehind() {
    static_cast<void>(request(10)[10]);
}

void writeBehind() {
    request(4096)[4096] = 'x';
}

void readFarBehind() {
    static_cast<void>(request(10)[10 + 4095]);
}

void writeBehindAnArrayOfNew() {
    requestNew(33)[33] = 'x';
}

void readBehindAString() {
    const vorel::BaseString<wchar_t> text(std::wstring(100, L'x').c_str());
    const volatile wchar_t* unit = text.c_str();
    for (;;) {
        static_cast<void>(*unit++);
    }
}

void readInFront() {
    static_cast<void>(request(4096)[-1]);
}

void writeInFront() {
    volatile char* const block = request(10);
    block[-1] = 'x';
    giveBack(block);
}

void readWhatWasGivenBack() {
    const volatile char* const block = request(10);
    giveBack(block);
    static_cast<void>(block[3]);
}

void useManyBlocks(int count) {
    for (int index = 0; index < count; ++index) {
        giveBack(request(10));
    }
}

void writeToOneOfManyThatWereGivenBack() {
    useManyBlocks(30'000);
    volatile char* const block = request(10);
    giveBack(block);
    block[9] = 'x';
    useManyBlocks(10'000);
}

void readAnItemThatMoved() {
    vorel::Array<int> items;
    items.append(1);
    hidden = reinterpret_cast<volatile char*>(items.data());
    items.reserve(1000);
    static_cast<void>(hidden[0]);
}

void useAnEmptyBlock() {
    request(0)[0] = 'x';
}

void giveBackTwice() {
    const volatile char* const block = request(10);
    giveBack(block);
    giveBack(block);
}

void giveBackTheMiddle() {
    giveBack(request(10) + 1);
}

struct Mistake {
    const char* name;
    void (*make)();
    int exitCode;
    const char* explanation;

    friend void PrintTo(const Mistake& mistake, std::ostream* out) { *out << mistake.name; }
};

std::string nameOf(const testing::TestParamInfo<Mistake>& info) {
    return info.param.name;
}

class GuardedBlocks : public testing::TestWithParam<Mistake> {};

TEST_P(GuardedBlocks, EndTheProgramAndSayWhy) {
    const Mistake& mistake = GetParam();
    EXPECT_EXIT(mistake.make(), testing::ExitedWithCode(mistake.exitCode), mistake.explanation);
}

INSTANTIATE_TEST_SUITE_P(
    Mistakes, GuardedBlocks,
    testing::Values(
        Mistake{"ReadBehind", readBehind, kFault, "read 0 bytes behind the end of a block of 10 bytes"},
        Mistake{"WriteBehind", writeBehind, kFault, "write 0 bytes behind the end of a block of 4096 bytes"},
        Mistake{"ReadFarBehind", readFarBehind, kFault, "read 4095 bytes behind the end of a block of 10 bytes"},
        Mistake{"WriteBehindAnArrayOfNew", writeBehindAnArrayOfNew, kFault,
                "write 0 bytes behind the end of a block of 33 bytes"},
        Mistake{"ReadBehindAString", readBehindAString, kFault, "read 0 bytes behind the end of a block of"},
        Mistake{"ReadInFront", readInFront, kFault, "read 1 bytes in front of a block of 4096 bytes"},
        Mistake{"WriteInFront", writeInFront, kAborted, "write in front of a block, 10 bytes"},
        Mistake{"ReadWhatWasGivenBack", readWhatWasGivenBack, kFault,
                "read in a block of 10 bytes that was given back"},
        Mistake{"WriteToOneOfManyThatWereGivenBack", writeToOneOfManyThatWereGivenBack, kAborted,
                "write to a block that was given back, 10 bytes"},
        Mistake{"ReadAnItemThatMoved", readAnItemThatMoved, kFault, "read in a block of .* that was given back"},
        Mistake{"UseAnEmptyBlock", useAnEmptyBlock, kFault, "write 0 bytes behind the end of a block of 0 bytes"},
        Mistake{"GiveBackTwice", giveBackTwice, kAborted, "a block came back twice, 10 bytes"},
        Mistake{"GiveBackTheMiddle", giveBackTheMiddle, kAborted, "no block begins where one came back"}),
    nameOf);

TEST(GuardedHeap, HoldsEverySizeToItsLastByte) {
    for (std::size_t bytes = 1; bytes < 10000; bytes += bytes < 70 ? 1 : 997) {
        volatile char* const block = request(bytes);
        ASSERT_TRUE(block);
        for (std::size_t place = 0; place < bytes; ++place) {
            block[place] = static_cast<char>(place);
        }
        EXPECT_EQ(block[bytes - 1], static_cast<char>(bytes - 1));
        giveBack(block);
    }
}

TEST(GuardedHeap, AlignsABlockAsItsSizeAsksFor) {
    for (const std::size_t alignment : {1u, 2u, 4u, 8u, 16u, 32u}) {
        volatile char* const block = request(3 * alignment);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignment, 0u) << alignment;
        giveBack(block);
    }
}

TEST(GuardedHeap, Resize_KeepsTheBytesThatBothHave) {
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

TEST(GuardedHeap, Calloc_GivesZeros) {
    auto* const block = static_cast<unsigned char*>(std::calloc(100, 7));
    ASSERT_TRUE(block);
    for (std::size_t place = 0; place < 700; ++place) {
        ASSERT_EQ(block[place], 0u) << place;
    }
    std::free(block);
}

/// More than the region has room for at once: places are used again, held ones are not.
TEST(GuardedHeap, GoesRoundItsRegion) {
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

TEST(GuardedHeap, Live_CountsBlocksOfMallocAndOfNew) {
    const std::size_t before = blocks::live();
    const std::uint64_t serial = blocks::serial();
    const volatile char* const block = request(24);
    const auto number = std::make_unique<std::uint64_t>(7);
    const std::size_t during = blocks::live();
    const std::string sizes = blocks::sizesSince(serial);
    giveBack(block);
    EXPECT_EQ(during, before + 2);
    EXPECT_EQ(sizes.substr(0, 5), "24, 8");
}

/// The thrown object has a header in front, whose alignment the runtime of exceptions relies on.
TEST(GuardedHeap, BearsThrownObjectsOfAnySize) {
    struct Three {
        char units[3];
    };
    EXPECT_THROW(throw Three{}, Three);
    EXPECT_THROW(throw 'x', char);
    EXPECT_THROW(throw std::runtime_error("x"), std::runtime_error);
}

}  // namespace
