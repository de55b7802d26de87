/// \file
/// Growth of `Array`: the number of slots, the elements after growth, and failures while an array grows.

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/Expect.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using test::expectThrows;
using vorel::Array;
using vorel::BaseString;
using vorel::MemoryException;

using WideString = BaseString<wchar_t>;

/// An element so large that 2^31 elements exceed the address space, so their allocation always fails.
struct Huge {
    char bytes[1048576];
};

template <class T>
class ArrayGrowth : public ::testing::Test {};

using Elements = ::testing::Types<unsigned char, bool, int, unsigned int, double, const char*, BaseString<char>,
                                  BaseString<wchar_t>>;
TYPED_TEST_SUITE(ArrayGrowth, Elements);

TYPED_TEST(ArrayGrowth, Slots_DoubleFrom5) {
    struct Case {
        unsigned int count;
        unsigned int allocated;
    };
    for (const auto& [count, allocated] :
         {Case{0, 0}, Case{1, 5}, Case{4, 5}, Case{5, 5}, Case{6, 10}, Case{10, 10}, Case{11, 20}, Case{20, 20},
          Case{21, 40}, Case{40, 40}, Case{41, 80}, Case{1280, 1280}, Case{1281, 2560}}) {
        Array<TypeParam> array;
        array.reserve(count);
        EXPECT_EQ(array.allocated(), allocated) << count;
        EXPECT_TRUE(array.empty());
    }
}

TYPED_TEST(ArrayGrowth, Slots_DoubleFromTheCurrentNumber) {
    Array<TypeParam> array;
    array.reserve(1);
    EXPECT_EQ(array.allocated(), 5u);
    array.reserve(6);
    EXPECT_EQ(array.allocated(), 10u);
    array.reserve(13, true);
    array.reserve(14);
    EXPECT_EQ(array.allocated(), 26u);
    array.reserve(100);
    EXPECT_EQ(array.allocated(), 104u);
}

TYPED_TEST(ArrayGrowth, ReserveExact_AllocatesExactlyTheCount) {
    for (const unsigned int count : {1u, 4u, 5u, 6u, 7u, 1000u}) {
        Array<TypeParam> array;
        array.reserve(count, true);
        EXPECT_EQ(array.allocated(), count);
    }
}

// Doubling starts at 5 even if the array has fewer slots.
TYPED_TEST(ArrayGrowth, Slots_DoubleFrom5IfFewerWereReserved) {
    Array<TypeParam> array;
    array.reserve(2, true);
    array.reserve(3);
    EXPECT_EQ(array.allocated(), 5u);
    Array<TypeParam> other;
    other.reserve(3, true);
    other.reserve(6);
    EXPECT_EQ(other.allocated(), 10u);
}

TYPED_TEST(ArrayGrowth, Reserve_NeverShrinks) {
    Array<TypeParam> array;
    array.reserve(12, true);
    const TypeParam* const storage = array.data();
    for (const bool exact : {false, true}) {
        for (const unsigned int count : {0u, 1u, 11u, 12u}) {
            array.reserve(count, exact);
            EXPECT_EQ(array.allocated(), 12u);
            EXPECT_EQ(array.data(), storage);
        }
    }
}

TYPED_TEST(ArrayGrowth, Assignment_NeverShrinks) {
    for (const unsigned int count : {0u, 1u, 2u, 99u, 100u}) {
        for (const bool moved : {false, true}) {
            Array<TypeParam> array;
            array.reserve(100, true);
            array.setCount(40);
            const TypeParam* const storage = array.data();
            Array<TypeParam> other;
            other.reserve(count, true);
            other.setCount(count);
            if (moved) {
                array = std::move(other);
                EXPECT_EQ(other.data(), nullptr);
                EXPECT_EQ(other.size(), 0u);
                EXPECT_EQ(other.allocated(), 0u);
            } else {
                array = other;
            }
            EXPECT_EQ(array.size(), count);
            EXPECT_EQ(array.allocated(), 100u) << count;
            if (!moved || count < 100) {
                EXPECT_EQ(array.data(), storage) << count;
            }
        }
    }
}

TYPED_TEST(ArrayGrowth, Assignment_GrowsToTheCountOfTheSource) {
    for (const unsigned int count : {3u, 6u, 100u}) {
        Array<TypeParam> array;
        array.reserve(2, true);
        Array<TypeParam> other;
        other.setCount(count);
        array = other;
        EXPECT_EQ(array.size(), count);
        EXPECT_EQ(array.allocated(), count);
    }
}

TYPED_TEST(ArrayGrowth, SlotsPastTheCount_AreValueInitialised) {
    Array<TypeParam> array;
    for (const unsigned int slots : {5u, 10u, 33u}) {
        array.reserve(slots, true);
        for (unsigned int slot = 0; slot < slots; ++slot) {
            ASSERT_TRUE(array.data()[slot] == TypeParam()) << slot;
        }
    }
}

TYPED_TEST(ArrayGrowth, AppendingOneByOne_DoublesTheSlots) {
    Array<TypeParam> array;
    std::vector<unsigned int> sizes;
    for (unsigned int i = 0; i < 200; ++i) {
        array.append(TypeParam());
        if (sizes.empty() || sizes.back() != array.allocated()) {
            sizes.push_back(array.allocated());
        }
    }
    EXPECT_EQ(sizes, (std::vector<unsigned int>{5, 10, 20, 40, 80, 160, 320}));
}

TEST(ArrayGrowthOfStrings, CopiesEachElementDeeply) {
    Array<WideString> array;
    array.append(L"first");
    array.append(L"");
    array.append(L"third");
    array[0].reserve(1000, false);  // more capacity than a copy needs
    const WideString* const elements = array.data();
    const wchar_t* const text = array[2].c_str();
    array.reserve(6);
    EXPECT_NE(array.data(), elements);
    EXPECT_NE(array[2].c_str(), text);
    EXPECT_TRUE(array[0] == L"first");
    EXPECT_EQ(array[0].capacity(), 16u);
    EXPECT_EQ(array[1].c_str(), nullptr);
    EXPECT_TRUE(array[2] == L"third");
    EXPECT_EQ(array.size(), 3u);
    for (unsigned int slot = 3; slot < array.allocated(); ++slot) {
        EXPECT_EQ(array.data()[slot].c_str(), nullptr) << slot;
        EXPECT_EQ(array.data()[slot].capacity(), 0u) << slot;
    }
}

TEST(ArrayGrowthOfStrings, KeepsEmbeddedZeros) {
    Array<WideString> array;
    array.append(WideString(L"a\0b", 3));
    array.reserve(100);
    EXPECT_TRUE(array[0].view() == std::wstring_view(L"a\0b", 3));
}

// ---- Failures -------------------------------------------------------------------------------------------------------

TEST(ArrayGrowthFailure, ReportsSlotsAndElementSize) {
    struct Case {
        unsigned int count;
        bool exact;
        const wchar_t* message;
    };
    for (const Case& c : {
             Case{0x7FFFFFFF, true, L"No more memory is available: 2147483647 objects of size 1048576 requested"},
             // 5 doubled 29 times is 0xA0000000. The message contains it as a signed number.
             Case{0xA0000000, false, L"No more memory is available: -1610612736 objects of size 1048576 requested"},
             // The 30th doubling overflows, so the number of slots is 0xFFFFFFFF.
             Case{0xA0000001, false, L"No more memory is available: -1 objects of size 1048576 requested"},
             Case{0xFFFFFFFF, false, L"No more memory is available: -1 objects of size 1048576 requested"},
         }) {
        Array<Huge> array;
        expectThrows<MemoryException>([&] { array.reserve(c.count, c.exact); }, {c.message});
        EXPECT_EQ(array.data(), nullptr);
        EXPECT_EQ(array.allocated(), 0u);
    }
}

TEST(ArrayGrowthFailure, AppendItems_RejectsAnImpossibleCountBeforeReading) {
    Array<int> array;
    array.append(7);
    const int one = 8;
    expectThrows<MemoryException>([&] { array.append(&one, 0xFFFFFFFF); },
                                  {L"No more memory is available: -1 objects of size 4 requested"});
    ASSERT_EQ(array.size(), 1u);
    EXPECT_EQ(array[0], 7);
}

TEST(ArrayGrowthFailure, LeavesTheArrayUnchanged) {
    Array<Huge> array;
    array.reserve(1, true);
    array.setCount(1);
    array[0].bytes[7] = 'x';
    const Huge* const storage = array.data();
    expectThrows<MemoryException>([&] { array.setCount(0x7FFFFFFF); },
                                  {L"No more memory is available: -1610612736 objects of size 1048576 requested"});
    EXPECT_EQ(array.data(), storage);
    EXPECT_EQ(array.size(), 1u);
    EXPECT_EQ(array.allocated(), 1u);
    EXPECT_EQ(array[0].bytes[7], 'x');
}

/// An element whose copy assignment throws after `s_copiesLeft` successful assignments. The class counts its live
/// objects.
struct Fragile {
    Fragile() noexcept { ++s_alive; }
    Fragile(const Fragile& other) noexcept : value(other.value) { ++s_alive; }
    ~Fragile() { --s_alive; }

    Fragile& operator=(const Fragile& other) {
        if (this != &other) {
            if (s_copiesLeft == 0) {
                throw MemoryException(1, 2);
            }
            --s_copiesLeft;
            value = other.value;
        }
        return *this;
    }

    int value = 0;

    static inline int s_alive = 0;
    static inline int s_copiesLeft = 0;
};

TEST(ArrayGrowthFailure, DuringAssignmentLeavesTheArrayUnchanged) {
    for (int copies = 0; copies < 3; ++copies) {
        {
            Fragile::s_copiesLeft = 1000;
            Array<Fragile> array;
            array.setCount(4);
            array[3].value = 4;
            Array<Fragile> other;
            other.setCount(3);
            other[2].value = 30;
            const Fragile* const storage = array.data();
            Fragile::s_copiesLeft = copies;
            expectThrows<MemoryException>([&] { array = other; },
                                          {L"No more memory is available: 1 objects of size 2 requested"});
            EXPECT_EQ(array.data(), storage);
            EXPECT_EQ(array.allocated(), 5u);
            ASSERT_EQ(array.size(), 4u);
            EXPECT_EQ(array[3].value, 4);
            EXPECT_EQ(array[2].value, 0);
            Fragile::s_copiesLeft = 3;
            array = other;
            EXPECT_EQ(array.allocated(), 5u);
            ASSERT_EQ(array.size(), 3u);
            EXPECT_EQ(array[2].value, 30);
            Fragile::s_copiesLeft = 1000;
        }
        EXPECT_EQ(Fragile::s_alive, 0);
    }
}

TEST(ArrayGrowthFailure, WhileCopyingElementsLeavesTheArrayUnchanged) {
    for (int copies = 0; copies < 4; ++copies) {
        {
            Fragile::s_copiesLeft = 1000;
            Array<Fragile> array;
            array.setCount(4);
            for (unsigned int i = 0; i < 4; ++i) {
                array[i].value = static_cast<int>(i) + 1;
            }
            const Fragile* const storage = array.data();
            Fragile::s_copiesLeft = copies;
            expectThrows<MemoryException>([&] { array.reserve(6); },
                                          {L"No more memory is available: 1 objects of size 2 requested"});
            expectThrows<MemoryException>([&] { static_cast<void>(Array<Fragile>(array)); },
                                          {L"No more memory is available: 1 objects of size 2 requested"});
            EXPECT_EQ(array.data(), storage);
            EXPECT_EQ(array.allocated(), 5u);
            EXPECT_EQ(Fragile::s_alive, 5) << "the elements of the new storage must be destroyed";
            ASSERT_EQ(array.size(), 4u);
            for (unsigned int i = 0; i < 4; ++i) {
                EXPECT_EQ(array[i].value, static_cast<int>(i) + 1);
            }
            Fragile::s_copiesLeft = 1000;
        }
        EXPECT_EQ(Fragile::s_alive, 0);
    }
}

}  // namespace
