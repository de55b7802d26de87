/// \file
/// Tests `BaseString::reserve`: the capacity, the text and the length after growth. Every growth of a string follows
/// the same rules.

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/StringFields.h"
#include "support/Expect.h"
#include "support/Widths.h"
#include "vorel/core/BaseString.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using vorel::BaseString;

constexpr unsigned int kMi = 1048576;

template <class T>
class BaseStringGrowth : public ::testing::Test {};

TYPED_TEST_SUITE(BaseStringGrowth, test::CharacterTypes, test::CharacterNames);

struct Case {
    unsigned int count;
    unsigned int capacity;
};

TYPED_TEST(BaseStringGrowth, Capacity_OfTheFirstBuffer) {
    for (const auto& [count, capacity] : {
             Case{1, 16},
             Case{2, 16},
             Case{7, 16},
             Case{8, 16},
             Case{15, 16},
             Case{16, 32},
             Case{17, 32},
             Case{1048575, kMi},
             Case{1048576, 2 * kMi},
             Case{1048577, 2 * kMi},
             Case{2 * kMi - 2, 2 * kMi},
             Case{2 * kMi - 1, 3 * kMi},  // needs 2 Mi units; above 1 Mi, the next larger multiple of 1 Mi
             Case{2 * kMi, 3 * kMi},
             Case{3 * kMi - 2, 3 * kMi},
             Case{3 * kMi - 1, 4 * kMi},
         }) {
        BaseString<TypeParam> string;
        TypeParam* const buffer = string.reserve(count, true);
        EXPECT_EQ(string.capacity(), capacity) << count;
        EXPECT_EQ(buffer, string.data());
        EXPECT_EQ(buffer[count], TypeParam{}) << count;
    }
}

TYPED_TEST(BaseStringGrowth, Capacity_AtEachPowerOfTwo) {
    for (unsigned int power = 16; power <= kMi / 2; power *= 2) {
        for (const auto& [count, capacity] :
             {Case{power - 1, power}, Case{power, 2 * power}, Case{power + 1, 2 * power}}) {
            BaseString<TypeParam> string;
            string.reserve(count, false);
            EXPECT_EQ(string.capacity(), capacity) << count;
        }
    }
}

TYPED_TEST(BaseStringGrowth, ReserveWithoutDiscardArgument_KeepsTheTextAndItsLength) {
    BaseString<TypeParam> string(test::text<TypeParam>("text").c_str());
    const TypeParam* const buffer = string.reserve(20);
    EXPECT_EQ(buffer, string.data());
    EXPECT_EQ(string.capacity(), 32u);
    EXPECT_EQ(test::fieldsOf(string).length, 4u);
    EXPECT_TRUE(string == test::text<TypeParam>("text").c_str());
}

TYPED_TEST(BaseStringGrowth, Capacity_NeverShrinks) {
    BaseString<TypeParam> string;
    string.reserve(1000, true);
    TypeParam* const buffer = string.data();
    for (const unsigned int count : {0u, 1u, 16u, 999u, 1023u}) {
        EXPECT_EQ(string.reserve(count, true), buffer) << count;
        EXPECT_EQ(string.capacity(), 1024u) << count;
    }
    string.reserve(1024, true);
    EXPECT_EQ(string.capacity(), 2048u);
}

TYPED_TEST(BaseStringGrowth, ReserveZero_AllocatesNothing) {
    BaseString<TypeParam> string;
    EXPECT_EQ(string.reserve(0, false), nullptr);
    EXPECT_EQ(string.reserve(0, true), nullptr);
    EXPECT_EQ(string.capacity(), 0u);
    EXPECT_EQ(test::fieldsOf(string).length, 0xFFFFFFFFu);
}

TYPED_TEST(BaseStringGrowth, ReserveZero_ClearsTheTextAndKeepsTheBuffer) {
    for (const bool discard : {false, true}) {
        BaseString<TypeParam> string(test::text<TypeParam>("text").c_str());
        TypeParam* const buffer = string.data();
        EXPECT_EQ(string.reserve(0, discard), buffer);
        EXPECT_EQ(test::fieldsOf(string).length, 0u);
        EXPECT_EQ(buffer[0], TypeParam{});
        EXPECT_EQ(string.capacity(), 16u);
    }
}

TYPED_TEST(BaseStringGrowth, Growing_KeepsTextAndKnownLength) {
    const auto text = test::text<TypeParam>("kept");
    BaseString<TypeParam> string(text.c_str());
    string.reserve(100, false);
    EXPECT_EQ(test::fieldsOf(string).length, 4u);
    EXPECT_TRUE(string.view() == text);
    EXPECT_EQ(string.c_str()[100], TypeParam{});
    EXPECT_EQ(string.capacity(), 128u);
}

TYPED_TEST(BaseStringGrowth, Growing_KeepsEmbeddedZerosIfTheLengthIsKnown) {
    const auto text = test::text<TypeParam>(std::string_view("a\0bc", 4));
    BaseString<TypeParam> string(text.c_str(), 4);
    string.reserve(100, false);
    EXPECT_TRUE(string.view() == text);
}

TYPED_TEST(BaseStringGrowth, Growing_KeepsTextOfUnknownLength) {
    const auto text = test::text<TypeParam>("counted later");
    BaseString<TypeParam> string;
    text.copy(string.reserve(15, true), text.size());
    string.data()[text.size()] = 0;
    string.reserve(100, false);
    EXPECT_FALSE(test::knowsLength(string));
    EXPECT_TRUE(string.view() == text);
}

TYPED_TEST(BaseStringGrowth, Growing_WithDiscardMakesTheLengthUnknown) {
    BaseString<TypeParam> string(test::text<TypeParam>("gone").c_str());
    string.reserve(16, true);
    EXPECT_FALSE(test::knowsLength(string));
    BaseString<TypeParam> fresh;
    fresh.reserve(16, true);
    EXPECT_FALSE(test::knowsLength(fresh));
}

TYPED_TEST(BaseStringGrowth, Growing_AStringWithoutABufferGivesTheEmptyText) {
    BaseString<TypeParam> string;
    string.reserve(20, false);
    EXPECT_EQ(string.c_str()[0], TypeParam{});
    EXPECT_EQ(string.c_str()[20], TypeParam{});
    EXPECT_EQ(string.length(), 0u);
}

TYPED_TEST(BaseStringGrowth, LargeEnoughBuffer_KeepsALengthUpToCount) {
    const auto text = test::text<TypeParam>("ten units.");
    for (const bool discard : {false, true}) {
        for (const unsigned int count : {10u, 11u, 15u}) {
            BaseString<TypeParam> string(text.c_str());
            string.reserve(count, discard);
            EXPECT_EQ(test::fieldsOf(string).length, 10u) << count;
            EXPECT_TRUE(string.view() == text) << count;
            EXPECT_EQ(string.c_str()[count], TypeParam{}) << count;
        }
    }
}

TYPED_TEST(BaseStringGrowth, LargeEnoughBuffer_TruncatesATextLongerThanCount) {
    const auto text = test::text<TypeParam>("ten units.");
    for (const bool discard : {false, true}) {
        for (unsigned int count = 1; count < 10; ++count) {
            BaseString<TypeParam> string(text.c_str());
            string.reserve(count, discard);
            EXPECT_EQ(test::fieldsOf(string).length, count);
            EXPECT_TRUE(string.view() == text.substr(0, count)) << count;
            EXPECT_EQ(string.c_str()[count], TypeParam{}) << count;
        }
    }
}

// `reserve(count, …)` reduces a length that exceeds `count` to `count`. An unknown length has all bits set, so it
// exceeds every count. So the length becomes `count`, even if the text is shorter.
TYPED_TEST(BaseStringGrowth, LargeEnoughBuffer_SetsAnUnknownLengthToCount) {
    for (const bool discard : {false, true}) {
        for (const unsigned int count : {1u, 3u, 15u}) {
            BaseString<TypeParam> string;
            string.reserve(15, true);
            std::fill_n(string.data(), 15, TypeParam{'x'});
            string.data()[2] = 0;
            ASSERT_FALSE(test::knowsLength(string));
            string.reserve(count, discard);
            EXPECT_EQ(test::fieldsOf(string).length, count);
            EXPECT_EQ(string.c_str()[count], TypeParam{});
        }
    }
}

TYPED_TEST(BaseStringGrowth, Append_DoublesTheCapacity) {
    BaseString<TypeParam> string;
    std::vector<unsigned int> capacities;
    for (unsigned int i = 0; i < 5000; ++i) {
        string.append(TypeParam{'a'});
        if (capacities.empty() || capacities.back() != string.capacity()) {
            capacities.push_back(string.capacity());
        }
    }
    EXPECT_EQ(capacities, (std::vector<unsigned int>{16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192}));
}

TYPED_TEST(BaseStringGrowth, CapacityBeyond32Bits_ThrowsAndDoesNotWrap) {
    const auto text = test::text<TypeParam>("as it was");
    const std::wstring message =
        L"No more memory is available: -1 objects of size " + std::to_wstring(sizeof(TypeParam)) + L" requested";
    for (const unsigned int count : {0xFFEFFFFFu, 0xFFF00000u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
        for (const bool discard : {false, true}) {
            BaseString<TypeParam> string(text.c_str());
            const TypeParam* const buffer = string.c_str();
            test::expectThrows<vorel::MemoryException>([&] { string.reserve(count, discard); }, {message});
            EXPECT_EQ(string.c_str(), buffer);
            EXPECT_EQ(string.capacity(), 16u);
            EXPECT_TRUE(string.view() == text);
        }
    }
}

TYPED_TEST(BaseStringGrowth, AppendBeyond32Bits_ThrowsAndDoesNotWrap) {
    const auto text = test::text<TypeParam>("as it was");
    BaseString<TypeParam> string(text.c_str());
    const std::wstring message =
        L"No more memory is available: -1 objects of size " + std::to_wstring(sizeof(TypeParam)) + L" requested";
    test::expectThrows<vorel::MemoryException>([&] { string.append(text.c_str(), 0xFFFFFFF8); }, {message});
    EXPECT_TRUE(string.view() == text);
}

/// An independent implementation of the growth rule.
std::uint64_t expectedCapacity(std::uint64_t count, std::uint64_t oldCapacity) {
    if (count + 1 <= oldCapacity) {
        return oldCapacity;
    }
    std::uint64_t candidate = 1;
    if (count < kMi) {
        while (candidate <= count) {
            candidate *= 2;
        }
    } else {
        candidate = (count + 1) / kMi * kMi + kMi;
    }
    return std::max({candidate, oldCapacity, std::uint64_t{16}});
}

TYPED_TEST(BaseStringGrowth, Capacity_FollowsTheRuleOverChainsOfReserves) {
    std::uint64_t state = 20240611;
    for (int chain = 0; chain < 100; ++chain) {
        BaseString<TypeParam> string;
        std::uint64_t expected = 0;
        for (int step = 0; step < 8; ++step) {
            state = state * 6364136223846793005u + 1442695040888963407u;
            const auto count = static_cast<unsigned int>((state >> 33) % (1u << (1 + (state >> 24) % 21)));
            string.reserve(count, step % 2 == 0);
            expected = count == 0 ? expected : expectedCapacity(count, expected);
            ASSERT_EQ(string.capacity(), expected) << "seed 20240611, chain " << chain << ", count " << count;
        }
    }
}

}  // namespace
