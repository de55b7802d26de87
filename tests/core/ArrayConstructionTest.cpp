/// \file
/// The members of `Array` that work as in containers of the standard library: construction from lists and ranges,
/// deduced element types, `push_back` and `emplace_back`. ArrayTest.cpp and ArrayGrowthTest.cpp test the other members.

#include <algorithm>
#include <array>
#include <cstddef>
#include <forward_list>
#include <iterator>
#include <ranges>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "core/Explosive.h"
#include "support/Expect.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using test::expectThrows;
using test::Explosive;
using vorel::Array;
using vorel::BaseString;
using vorel::MemoryException;

using String = BaseString<char>;
using Texts = std::vector<std::string>;

std::vector<int> elementsOf(const Array<int>& array) {
    return {array.begin(), array.end()};
}

Texts textsOf(const Array<String>& array) {
    Texts texts;
    for (const String& text : array) {
        texts.emplace_back(text.view());
    }
    return texts;
}

// ---- Overloads ------------------------------------------------------------------------------------------------------

// A number without braces is rejected, because it could be a count or an element. A pointer and a count are rejected,
// too.
static_assert(!std::is_constructible_v<Array<int>, int> && !std::is_constructible_v<Array<int>, unsigned int>);
static_assert(!std::is_constructible_v<Array<int>, const int*, unsigned int>);
// A range is converted only explicitly, and only if its elements can be converted.
static_assert(std::is_constructible_v<Array<int>, std::vector<int>&>);
static_assert(!std::is_convertible_v<std::vector<int>, Array<int>>);
static_assert(!std::is_constructible_v<Array<int>, std::vector<std::string>>);
static_assert(!std::is_constructible_v<Array<int*>, std::vector<int>>);
// A copy of an array can be implicit, although an array is a range, too.
static_assert(std::is_convertible_v<Array<int>&, Array<int>>);
// The element's type follows from the arguments.
static_assert(std::is_same_v<decltype(Array{1, 2, 3}), Array<int>>);
static_assert(std::is_same_v<decltype(Array{"a", "b"}), Array<const char*>>);
static_assert(std::is_same_v<decltype(Array(std::vector<double>())), Array<double>>);
static_assert(std::is_same_v<decltype(Array(std::declval<const std::array<char, 3>&>())), Array<char>>);
static_assert(std::is_same_v<decltype(Array(std::declval<Array<int>&>())), Array<int>>, "an array is copied");
static_assert(std::is_same_v<decltype(Array{std::declval<Array<int>&>()}), Array<int>>, "an array is copied");
static_assert(std::is_same_v<decltype(Array{Array<int>(), Array<int>()}), Array<Array<int>>>);

struct Derived : Array<int> {};

/// An element with a constructor of two arguments.
struct Entry {
    Entry() = default;
    Entry(int entryKey, double entryValue) : key(entryKey), value(entryValue) {}

    int key = 0;
    double value = 0;
};

TEST(ArrayConstruction, AnArrayIsCopiedOrMovedAndNotReadAsARange) {
    Array<int> array{1, 2};
    array.reserve(10, true);
    EXPECT_EQ(Array<int>{array}.allocated(), 2u) << "a copy has no spare slots";
    EXPECT_EQ(Array<int>(array).allocated(), 2u) << "a copy has no spare slots";
    const int* const storage = array.data();
    EXPECT_EQ(Array<int>{std::move(array)}.data(), storage) << "a move transfers the storage";

    const Array<Array<int>> nested{{1, 2}, {3}};
    Array<Array<int>> copy{nested};
    ASSERT_EQ(copy.size(), 2u) << "a copy of the outer array, not an array whose only element is a copy";
    copy[0].append(9);
    EXPECT_EQ(elementsOf(copy[0]), (std::vector<int>{1, 2, 9}));
    EXPECT_EQ(elementsOf(nested[0]), (std::vector<int>{1, 2}));

    Derived derived;
    derived.append(7);
    const int* const derivedStorage = derived.data();
    EXPECT_EQ(Array<int>(std::move(derived)).data(), derivedStorage) << "a move transfers the storage";
}

// ---- Lists of elements ----------------------------------------------------------------------------------------------

TEST(ArrayConstruction, ListGivesItsElementsAndNoSpareSlots) {
    struct Case {
        Array<int> array;
        std::vector<int> elements;
    };
    for (const Case& c : {
             Case{Array<int>{1, 2, 3}, {1, 2, 3}},
             Case{Array{1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 6}},
             Case{Array<int>{3}, {3}},
             Case{Array<int>{0}, {0}},
             Case{Array<int>({8, 9}), {8, 9}},
             Case{{4, 5}, {4, 5}},
             Case{Array<int>{}, {}},
             Case{{}, {}},
         }) {
        EXPECT_EQ(elementsOf(c.array), c.elements);
        EXPECT_EQ(c.array.allocated(), c.elements.size());
        EXPECT_EQ(c.array.data() == nullptr, c.elements.empty());
    }
    EXPECT_EQ(textsOf({"left", "", "right"}), (Texts{"left", "", "right"}));
}

TEST(ArrayConstruction, AssignedListReplacesTheElements) {
    Array<int> array{1, 2, 3, 4};
    array = {7, 8};
    EXPECT_EQ(elementsOf(array), (std::vector<int>{7, 8}));
    EXPECT_EQ(array.allocated(), 4u) << "assignment never shrinks the storage";
    array = {};
    EXPECT_TRUE(array.empty());
}

// ---- Ranges ---------------------------------------------------------------------------------------------------------

/// The numbers of a stream, which can be read only once.
struct Numbers {
    [[nodiscard]] std::istream_iterator<int> begin() const { return std::istream_iterator<int>(stream); }
    [[nodiscard]] static std::istream_iterator<int> end() { return {}; }

    std::istream& stream;
};

/// A range that has more elements than an array can have.
struct TooMany {
    [[nodiscard]] static const long long* begin() { return nullptr; }
    [[nodiscard]] static const long long* end() { return nullptr; }
    [[nodiscard]] static std::size_t size() { return 0x100000000; }
};

/// A range whose iterators move the strings out of a vector.
struct Moved {
    [[nodiscard]] auto begin() const { return std::move_iterator(strings.begin()); }
    [[nodiscard]] auto end() const { return std::move_iterator(strings.end()); }

    std::vector<String>& strings;
};

/// A number that can be converted to an element. The conversion of the number 7 throws.
struct Failing {
    explicit operator Explosive() const {
        return number == 7 ? throw std::runtime_error("no element") : Explosive(number);
    }

    int number;
};

TEST(ArrayConstruction, RangeOfEveryKindGivesItsElementsInOrder) {
    const std::vector<int> vector = {1, 2, 3};
    const std::array<int, 3> array = {1, 2, 3};
    const int builtIn[] = {1, 2, 3};
    const std::forward_list<int> list = {1, 2, 3};  // has no `size` function
    const std::vector<signed char> bytes = {1, 2, 3};
    const std::vector<double> doubles = {1.9, 2.5, 3.0};
    std::istringstream stream("1 2 3");
    struct Case {
        const char* range;
        Array<int> array;
        unsigned int slots;  // if the range has no `size` function, the array grows as with `append`
    };
    for (const Case& c : {
             Case{"vector", Array<int>(vector), 3},
             Case{"vector in braces", Array<int>{vector}, 3},
             Case{"temporary", Array<int>(std::vector<int>{1, 2, 3}), 3},
             Case{"array", Array<int>(array), 3},
             Case{"built-in array", Array<int>(builtIn), 3},
             Case{"span", Array<int>(std::span<const int>(vector)), 3},
             Case{"forward list", Array<int>(list), 5},
             Case{"stream", Array<int>(Numbers{stream}), 5},
             Case{"elements of a smaller type", Array<int>(bytes), 3},
             Case{"doubles", Array<int>(doubles), 3},
             Case{"Array with another element type", Array<int>(Array<long long>{1, 2, 3}), 3},
         }) {
        EXPECT_EQ(elementsOf(c.array), (std::vector<int>{1, 2, 3})) << c.range;
        EXPECT_EQ(c.array.allocated(), c.slots) << c.range;
    }
}

TEST(ArrayConstruction, RangeWithoutElementsAllocatesNoStorage) {
    const std::vector<int> none;
    std::istringstream stream;
    EXPECT_EQ(Array<int>(none).data(), nullptr);
    EXPECT_EQ(Array<int>(Numbers{stream}).data(), nullptr);
    EXPECT_EQ(Array<String>(std::vector<std::string>()).data(), nullptr);
}

TEST(ArrayConstruction, RangeOfStandardStringsBecomesAnArrayOfStrings) {
    const Texts texts = {"left", "", "right"};
    const std::vector<std::string_view> views = {"left", "", "right"};
    const char* const literals[] = {"left", "", "right"};
    EXPECT_EQ(textsOf(Array<String>(texts)), texts);
    EXPECT_EQ(textsOf(Array<String>(views)), texts);
    EXPECT_EQ(textsOf(Array<String>(literals)), texts);
}

TEST(ArrayConstruction, ARangeIsReadAndNotChanged) {
    std::vector<String> strings(2, String("long enough to have a buffer"));
    const Array<String> fromTemporary(std::move(strings));
    // NOLINTNEXTLINE(bugprone-use-after-move): the range is only read
    EXPECT_EQ(textsOf(fromTemporary), Texts(strings.begin(), strings.end()));
    EXPECT_NE(fromTemporary[0].c_str(), strings[0].c_str());
}

TEST(ArrayConstruction, ElementsOfARangeWithMoveIteratorsAreMoved) {
    std::vector<String> strings(2, String("long enough to have a buffer"));
    const char* const buffer = strings[1].c_str();
    const Array<String> moved(Moved{strings});
    EXPECT_EQ(moved[1].c_str(), buffer);
}

TEST(ArrayConstruction, TheTerminatorOfAStringLiteralIsAnElement) {
    EXPECT_EQ(Array<char>("abc").size(), 4u);
    EXPECT_EQ(Array<char>(std::string_view("abc")).size(), 3u);
}

TEST(ArrayConstruction, RangeWithTooManyElementsThrowsBeforeItIsRead) {
    expectThrows<MemoryException>([] { static_cast<void>(Array<long long>(TooMany())); },
                                  {L"No more memory is available: -1 objects of size 8 requested"});
}

TEST(ArrayConstruction, AConversionThatThrowsReleasesTheConvertedElements) {
    Explosive::s_alive = 0;
    const std::vector<Failing> numbers = {{1}, {2}, {7}, {8}};
    EXPECT_THROW(static_cast<void>(Array<Explosive>(numbers)), std::runtime_error);
    EXPECT_EQ(Explosive::s_alive, 0);
}

// ---- push_back and emplace_back -------------------------------------------------------------------------------------

TEST(ArrayConstruction, PushBackAppends) {
    Array<String> array;
    const String copied("copied, with a buffer");
    String moved("moved, with a buffer");
    const char* const buffer = moved.c_str();
    array.push_back(copied);
    array.push_back(std::move(moved));
    array.push_back(array[0]);
    EXPECT_EQ(textsOf(array), (Texts{"copied, with a buffer", "moved, with a buffer", "copied, with a buffer"}));
    EXPECT_NE(array[0].c_str(), copied.c_str());
    EXPECT_EQ(array[1].c_str(), buffer);
    EXPECT_EQ(array.allocated(), 5u) << "push_back grows the array as append does";
}

TEST(ArrayConstruction, EmplaceBackConstructsFromItsArgumentsAndReturnsTheElement) {
    Array<String> array;
    EXPECT_EQ(array.emplace_back("abcdef", 3u).view(), "abc");
    EXPECT_EQ(array.emplace_back(std::string("from a std::string")).view(), "from a std::string");
    EXPECT_EQ(array.emplace_back().c_str(), nullptr);
    for (int count = 0; count != 20; ++count) {  // grows several times
        array.emplace_back(array[0]);
    }
    array.emplace_back() = "last";
    EXPECT_EQ(array.size(), 24u);
    EXPECT_EQ(array[22].view(), "abc");
    EXPECT_EQ(array[23].view(), "last");

    Array<Entry> entries;
    entries.emplace_back(1, 2.5);
    EXPECT_EQ(entries[0].key, 1);
    EXPECT_EQ(entries[0].value, 2.5);
}

TEST(ArrayConstruction, StandardAlgorithmsAppendThroughABackInserter) {
    const std::vector<int> numbers = {1, 2, 3, 4};
    Array<int> even;
    std::copy_if(numbers.begin(), numbers.end(), std::back_inserter(even), [](int number) { return number % 2 == 0; });
    EXPECT_EQ(elementsOf(even), (std::vector<int>{2, 4}));
    static_assert(std::ranges::contiguous_range<Array<int>> && std::ranges::sized_range<const Array<int>>);
    static_assert(std::is_same_v<std::ranges::range_value_t<Array<int>>, Array<int>::value_type>);
}

}  // namespace
