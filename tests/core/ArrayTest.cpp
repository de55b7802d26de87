/// \file
/// Members of `Array`: accessing, adding and removing elements, changing the count, copying and moving.
/// ArrayGrowthTest.cpp tests growth.

#include "vorel/core/Array.h"

#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/Expect.h"
#include "vorel/core/BaseString.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using test::expectThrows;
using vorel::Array;
using vorel::BaseString;
using vorel::InvalidIndexException;

using WideString = BaseString<wchar_t>;

static_assert(std::is_standard_layout_v<Array<unsigned char>> && sizeof(Array<unsigned char>) == 16);
static_assert(std::is_standard_layout_v<Array<double>> && sizeof(Array<double>) == 16);
static_assert(std::is_standard_layout_v<Array<WideString>> && sizeof(Array<WideString>) == 16);

template <class T>
Array<T> arrayOf(std::initializer_list<T> items) {
    Array<T> array;
    for (const T& item : items) {
        array.append(item);
    }
    return array;
}

template <class T>
std::vector<T> elementsOf(const Array<T>& array) {
    return std::vector<T>(array.begin(), array.end());
}

/// The memory layout of an array. Other modules rely on it.
struct Fields {
    int* items;
    unsigned int count;
    unsigned int allocated;
};

Fields fieldsOf(const Array<int>& array) {
    Fields fields;
    static_assert(sizeof fields == sizeof array);
    std::memcpy(&fields, static_cast<const void*>(&array), sizeof fields);
    return fields;
}

void expectNoStorage(const Array<int>& array) {
    const Fields fields = fieldsOf(array);
    EXPECT_EQ(fields.items, nullptr);
    EXPECT_EQ(fields.count, 0u);
    EXPECT_EQ(fields.allocated, 0u);
}

TEST(Array, Default_IsEmptyWithoutStorage) {
    Array<int> array;
    const Array<int>& same = array;
    EXPECT_EQ(array.size(), 0u);
    EXPECT_TRUE(array.empty());
    EXPECT_EQ(array.allocated(), 0u);
    EXPECT_EQ(array.data(), nullptr);
    EXPECT_EQ(same.data(), nullptr);
    EXPECT_EQ(array.begin(), array.end());
    EXPECT_EQ(same.begin(), same.end());
}

TEST(Array, Fields_ArePointerCountSlots) {
    Array<int> array = arrayOf({1, 2, 3});
    array.reserve(6);
    const Fields fields = fieldsOf(array);
    EXPECT_EQ(fields.items, array.data());
    EXPECT_EQ(fields.count, 3u);
    EXPECT_EQ(fields.allocated, 10u);
}

// ---- Access ---------------------------------------------------------------------------------------------------------

TEST(Array, Index_ReadsAndWrites) {
    Array<int> array = arrayOf({10, 20, 30});
    array[1] += 5;
    const Array<int>& same = array;
    EXPECT_EQ(same[0], 10);
    EXPECT_EQ(same[1], 25);
    EXPECT_EQ(same[2], 30);
    EXPECT_EQ(&array[2], array.data() + 2);
}

TEST(Array, Index_OutOfRangeNamesTheLegalValues) {
    struct Case {
        unsigned int count;
        unsigned int index;
        const wchar_t* message;
    };
    for (const Case& c : {
             Case{0, 0, L"An invalid index value (0) has been detected; there are zero items"},
             Case{0, 5, L"An invalid index value (5) has been detected; there are zero items"},
             Case{0, 0xFFFFFFFF, L"An invalid index value (-1) has been detected; there are zero items"},
             Case{1, 1, L"An invalid index value (1) has been detected; only legal value is 0"},
             Case{1, 0xFFFFFFFF, L"An invalid index value (-1) has been detected; only legal value is 0"},
             Case{2, 2, L"An invalid index value (2) has been detected; legal values are between 0 and 1"},
             Case{3, 3, L"An invalid index value (3) has been detected; legal values are between 0 and 2"},
             Case{3, 7, L"An invalid index value (7) has been detected; legal values are between 0 and 2"},
             Case{3, 0x80000000,
                  L"An invalid index value (-2147483648) has been detected; legal values are between 0 and 2"},
         }) {
        Array<unsigned char> array;
        array.setCount(c.count);
        const Array<unsigned char>& same = array;
        expectThrows<InvalidIndexException>([&] { array[c.index] = 1; }, {c.message});
        expectThrows<InvalidIndexException>([&] { static_cast<void>(same[c.index]); }, {c.message});
    }
}

TEST(Array, Index_SlotsPastTheCountAreOutOfRange) {
    Array<int> array;
    array.reserve(10);
    expectThrows<InvalidIndexException>([&] { array[0] = 1; },
                                        {L"An invalid index value (0) has been detected; there are zero items"});
}

// ---- Adding ---------------------------------------------------------------------------------------------------------

TEST(Array, Append_AddsAtTheEnd) {
    Array<double> array;
    for (int i = 0; i < 100; ++i) {
        array.append(i / 2.0);
        ASSERT_EQ(array.size(), static_cast<unsigned int>(i) + 1);
        ASSERT_EQ(array[static_cast<unsigned int>(i)], i / 2.0);
    }
    EXPECT_EQ(array[0], 0.0);
    EXPECT_EQ(array[99], 49.5);
}

TEST(Array, Append_WorksForElementTypesOfTheInterface) {
    const int object = 0;
    EXPECT_EQ(elementsOf(arrayOf<unsigned char>({0, 255})), (std::vector<unsigned char>{0, 255}));
    EXPECT_EQ(elementsOf(arrayOf<int>({-1, 1})), (std::vector<int>{-1, 1}));
    EXPECT_EQ(elementsOf(arrayOf<unsigned int>({0xFFFFFFFF, 0})), (std::vector<unsigned int>{0xFFFFFFFF, 0}));
    EXPECT_EQ(elementsOf(arrayOf<bool>({true, false, true})), (std::vector<bool>{true, false, true}));
    EXPECT_EQ(elementsOf(arrayOf<const int*>({nullptr, &object})), (std::vector<const int*>{nullptr, &object}));
    EXPECT_EQ(elementsOf(arrayOf<BaseString<char>>({"a", ""})), (std::vector<BaseString<char>>{"a", ""}));
    EXPECT_EQ(elementsOf(arrayOf<WideString>({L"a", L"b"})), (std::vector<WideString>{L"a", L"b"}));
}

TEST(Array, Append_AcceptsAnElementOfTheArrayItself) {
    Array<int> numbers = arrayOf({7});
    Array<WideString> strings = arrayOf<WideString>({L"long enough to have a buffer"});
    for (unsigned int i = 0; i < 50; ++i) {  // grows several times
        numbers.append(numbers[i]);
        strings.append(strings[i]);
    }
    EXPECT_EQ(elementsOf(numbers), std::vector<int>(51, 7));
    EXPECT_EQ(elementsOf(strings), std::vector<WideString>(51, L"long enough to have a buffer"));
}

TEST(Array, AppendItems_AddsPlainValues) {
    const int items[] = {1, 2, 3, 4, 5, 6, 7};
    Array<int> array;
    array.append(items, 3);
    array.append(items + 3, 4);
    EXPECT_EQ(elementsOf(array), (std::vector<int>{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(array.allocated(), 10u);
}

TEST(Array, AppendItems_WithoutItemsChangesNothing) {
    const int item = 1;
    Array<int> array;
    array.append(nullptr, 0);
    array.append(&item, 0);
    EXPECT_EQ(array.data(), nullptr);
    EXPECT_EQ(array.size(), 0u);
}

TEST(Array, AppendItems_AcceptsItemsOfTheArrayItselfWithAndWithoutGrowth) {
    for (unsigned int count = 1; count <= 12; ++count) {
        for (unsigned int from = 0; from < count; ++from) {
            Array<int> array;
            std::vector<int> model;
            for (int i = 0; i < static_cast<int>(count); ++i) {
                array.append(i);
                model.push_back(i);
            }
            array.append(array.data() + from, count - from);
            for (unsigned int i = from; i < count; ++i) {
                model.push_back(static_cast<int>(i));
            }
            ASSERT_EQ(elementsOf(array), model) << count << " elements, from " << from;
        }
    }
}

// ---- Removing and resizing ------------------------------------------------------------------------------------------

TEST(Array, RemoveLast_ReturnsTheElementAndResetsItsSlot) {
    Array<int> numbers = arrayOf({1, 2});
    EXPECT_EQ(numbers.removeLast(), 2);
    EXPECT_EQ(numbers.size(), 1u);
    EXPECT_EQ(numbers.data()[1], 0);

    Array<WideString> strings = arrayOf<WideString>({L"a", L"b"});
    EXPECT_TRUE(strings.removeLast() == L"b");
    EXPECT_EQ(strings.size(), 1u);
    EXPECT_EQ(strings.data()[1].c_str(), nullptr);
    EXPECT_EQ(strings.allocated(), 5u);
}

TEST(Array, RemoveLast_OfAnEmptyArrayThrows) {
    Array<int> array;
    expectThrows<InvalidIndexException>([&] { array.removeLast(); },
                                        {L"An invalid index value (-1) has been detected; there are zero items"});
    array.append(1);
    array.removeLast();
    expectThrows<InvalidIndexException>([&] { array.removeLast(); },
                                        {L"An invalid index value (-1) has been detected; there are zero items"});
    EXPECT_EQ(array.size(), 0u);
}

TEST(Array, SetCount_GrowsWithValueInitialisedElements) {
    Array<int> array = arrayOf({1, 2});
    array.setCount(4);
    EXPECT_EQ(elementsOf(array), (std::vector<int>{1, 2, 0, 0}));
    EXPECT_EQ(array.allocated(), 5u);
    array.setCount(6);
    EXPECT_EQ(elementsOf(array), (std::vector<int>{1, 2, 0, 0, 0, 0}));
    EXPECT_EQ(array.allocated(), 10u);
}

TEST(Array, SetCount_ShrinkingThenGrowingResetsElements) {
    Array<int> numbers = arrayOf({1, 2, 3, 4});
    Array<WideString> strings = arrayOf<WideString>({L"a", L"b", L"c", L"d"});
    numbers.setCount(1);
    strings.setCount(1);
    for (unsigned int slot = 1; slot < 5; ++slot) {
        EXPECT_EQ(numbers.data()[slot], 0) << slot;
        EXPECT_EQ(strings.data()[slot].c_str(), nullptr) << slot;
        EXPECT_EQ(strings.data()[slot].capacity(), 0u) << slot;
    }
    numbers.setCount(4);
    strings.setCount(4);
    EXPECT_EQ(elementsOf(numbers), (std::vector<int>{1, 0, 0, 0}));
    EXPECT_EQ(elementsOf(strings), (std::vector<WideString>{L"a", L"", L"", L""}));
}

TEST(Array, Clear_ResetsTheElementsAndKeepsTheStorage) {
    Array<WideString> array = arrayOf<WideString>({L"a", L"b"});
    const WideString* const storage = array.data();
    array.clear();
    EXPECT_TRUE(array.empty());
    EXPECT_EQ(array.data(), storage);
    EXPECT_EQ(array.allocated(), 5u);
    EXPECT_EQ(array.data()[0].c_str(), nullptr);
    array.clear();
    Array<int> fresh;
    fresh.clear();
    EXPECT_EQ(fresh.data(), nullptr);
}

TEST(Array, Iteration_StopsAtTheCount) {
    Array<int> array = arrayOf({1, 2, 3});
    for (int& value : array) {
        value *= 2;
    }
    EXPECT_EQ(elementsOf(array), (std::vector<int>{2, 4, 6}));
    EXPECT_EQ(array.end() - array.begin(), 3);
}

// ---- Copying and moving ---------------------------------------------------------------------------------------------

TEST(Array, Copy_IsDeepAndHasNoSpareSlots) {
    Array<WideString> original = arrayOf<WideString>({L"a", L"b"});
    Array<WideString> copy(original);
    EXPECT_EQ(copy.allocated(), 2u);
    original[0] = L"changed";
    EXPECT_EQ(elementsOf(copy), (std::vector<WideString>{L"a", L"b"}));

    Array<int> reserved;
    reserved.reserve(10);
    EXPECT_EQ(Array<int>(reserved).data(), nullptr);
}

TEST(Array, Assign_ReplacesTheElementsWithCopies) {
    const Array<WideString> original = arrayOf<WideString>({L"a", L"b"});
    Array<WideString> array = arrayOf<WideString>({L"x", L"y", L"z"});
    array = original;
    EXPECT_EQ(elementsOf(array), elementsOf(original));
    EXPECT_NE(array[0].c_str(), original[0].c_str());
    Array<WideString>& same = array;
    array = same;
    EXPECT_EQ(elementsOf(array), elementsOf(original));
}

TEST(Array, Assign_WithinTheStorageResetsTheSlotsPastTheCount) {
    for (const bool moved : {false, true}) {
        Array<int> numbers = arrayOf({1, 2, 3, 4});
        Array<int> twoNumbers = arrayOf({8, 9});
        twoNumbers.reserve(2, true);
        Array<WideString> strings;
        strings.reserve(8, true);
        strings.append(L"a");
        strings.append(L"b");
        strings.append(L"c");
        Array<WideString> twoStrings = arrayOf<WideString>({L"x", L"y"});
        if (moved) {
            numbers = std::move(twoNumbers);
            strings = std::move(twoStrings);
        } else {
            numbers = twoNumbers;
            strings = twoStrings;
        }
        EXPECT_EQ(elementsOf(numbers), (std::vector<int>{8, 9}));
        EXPECT_EQ(elementsOf(strings), (std::vector<WideString>{L"x", L"y"}));
        numbers.setCount(5);
        EXPECT_EQ(elementsOf(numbers), (std::vector<int>{8, 9, 0, 0, 0}));
        EXPECT_EQ(strings.allocated(), 8u);
        for (unsigned int slot = 2; slot < strings.allocated(); ++slot) {
            EXPECT_EQ(strings.data()[slot].c_str(), nullptr) << slot;
        }
    }
}

TEST(Array, Move_TransfersTheStorage) {
    Array<int> original = arrayOf({1, 2, 3});
    const int* const storage = original.data();
    Array<int> taken(std::move(original));
    EXPECT_EQ(taken.data(), storage);
    expectNoStorage(original);

    Array<int> assigned = arrayOf({9});
    assigned = std::move(taken);
    EXPECT_EQ(assigned.data(), storage);
    EXPECT_EQ(elementsOf(assigned), (std::vector<int>{1, 2, 3}));
    expectNoStorage(taken);
}

}  // namespace
