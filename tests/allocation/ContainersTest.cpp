// Arrays, hash maps and pointer stacks with a failing heap: a failed operation leaves the elements and entries
// unchanged.

#include <deque>
#include <initializer_list>
#include <optional>
#include <span>
#include <typeinfo>

#include "allocation/Walker.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"
#include "vorel/core/HashMap.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using vorel::Array;
using vorel::BaseString;
using Text = BaseString<wchar_t>;
using Map = vorel::HashMap<int, int>;

template <class T>
T element(unsigned int index);

template <>
int element<int>(unsigned int index) {
    return static_cast<int>(index) + 1;
}

/// The text needs a buffer of 32 units. No request for the array's storage has this size, so the exception shows which
/// request failed.
template <>
Text element<Text>(unsigned int index) {
    return Text((longText<wchar_t>(20) + static_cast<wchar_t>('0' + index)).c_str());
}

template <class T>
Array<T> arrayOf(unsigned int count) {
    Array<T> array;
    for (unsigned int index = 0; index < count; ++index) {
        array.append(element<T>(index));
    }
    return array;
}

template <class T>
void expectElements(const Array<T>& array, unsigned int count) {
    ASSERT_EQ(array.size(), count);
    for (unsigned int index = 0; index < count; ++index) {
        EXPECT_EQ(array[index], element<T>(index)) << index;
    }
}

/// The requests that can fail in an operation that allocates `slots` slots: the request for the slots and, for texts,
/// the request for the copy of an element.
template <class T>
std::vector<Attempt::Request> requestsFor(unsigned int slots) {
    if constexpr (std::is_same_v<T, int>) {
        return {{slots, sizeof(int)}};
    } else {
        return {{slots, sizeof(T)}, {32, sizeof(wchar_t)}};
    }
}

/// Performs `step` on an array of `count` elements. After a failure, the elements and the storage must be unchanged.
template <class T, class Step>
void change(Attempt& attempt, unsigned int count, unsigned int slotsWanted, unsigned int countAfter, Step&& step) {
    Array<T> array = arrayOf<T>(count);
    const T* const storage = array.data();
    const unsigned int slots = array.allocated();
    attempt.perform([&] { step(array); });
    attempt.expectMemoryException(requestsFor<T>(slotsWanted));
    if (attempt.completed()) {
        EXPECT_EQ(array.size(), countAfter);
        EXPECT_GE(array.allocated(), countAfter);
        return;
    }
    EXPECT_EQ(array.data(), storage);
    EXPECT_EQ(array.allocated(), slots);
    expectElements(array, count);
    // Elements that were copied before the failure must be removed from the free slots.
    array.setCount(slots);
    for (unsigned int index = count; index < slots; ++index) {
        EXPECT_EQ(array[index], T()) << index;
    }
}

template <class T>
void appendFirst(Attempt& attempt) {
    const T item = element<T>(0);
    change<T>(attempt, 0, 5, 1, [&](auto& array) { array.append(item); });
}

template <class T>
void appendGrows(Attempt& attempt) {
    const T item = element<T>(5);
    change<T>(attempt, 5, 10, 6, [&](auto& array) { array.append(item); });
}

template <class T>
void appendOwnElement(Attempt& attempt) {
    change<T>(attempt, 5, 10, 6, [](auto& array) { array.append(array[2]); });
}

/// The array does not grow, but the copy of the element can fail. The free slot must stay empty.
void appendTextToFreeSlot(Attempt& attempt) {
    const Text item = element<Text>(3);
    change<Text>(attempt, 3, 5, 4, [&](auto& array) { array.append(item); });
}

void appendOwnElements(Attempt& attempt) {
    change<int>(attempt, 4, 10, 8, [](auto& array) { array.append(array.data(), 4); });
}

template <class T>
void reserveGrows(Attempt& attempt) {
    change<T>(attempt, 4, 20, 4, [](auto& array) { array.reserve(11); });
}

template <class T>
void reserveExactly(Attempt& attempt) {
    change<T>(attempt, 4, 7, 4, [](auto& array) { array.reserve(7, true); });
}

template <class T>
void setCount(Attempt& attempt) {
    change<T>(attempt, 4, 10, 9, [](auto& array) { array.setCount(9); });
}

template <class T>
void copied(Attempt& attempt) {
    const Array<T> original = arrayOf<T>(7);
    std::optional<Array<T>> copy;
    attempt.perform([&] { copy.emplace(original); });
    attempt.expectMemoryException(requestsFor<T>(7));
    expectElements(original, 7);
    ASSERT_EQ(copy.has_value(), attempt.completed());
    if (copy) {
        expectElements(*copy, 7);
    }
}

/// Constructs an array from `source`, which contains 7 elements.
template <class T, class Source>
void constructed(Attempt& attempt, const Source& source) {
    std::optional<Array<T>> array;
    attempt.perform([&] { array.emplace(source); });
    attempt.expectMemoryException(requestsFor<T>(7));
    ASSERT_EQ(array.has_value(), attempt.completed());
    if (array) {
        expectElements(*array, 7);
    }
}

template <class T>
void constructedFromList(Attempt& attempt) {
    const std::initializer_list<T> items = {element<T>(0), element<T>(1), element<T>(2), element<T>(3),
                                            element<T>(4), element<T>(5), element<T>(6)};
    constructed<T>(attempt, items);
}

template <class T>
void constructedFromRange(Attempt& attempt) {
    const Array<T> source = arrayOf<T>(7);
    constructed<T>(attempt, std::span<const T>(source.begin(), source.end()));
}

/// Constructs from a range that is not contiguous, so it is read element by element.
template <class T>
void constructedFromSeparateElements(Attempt& attempt) {
    const Array<T> source = arrayOf<T>(7);
    const std::deque<T> elements(source.begin(), source.end());
    constructed<T>(attempt, elements);
}

template <class T>
void assigned(Attempt& attempt) {
    const Array<T> other = arrayOf<T>(7);
    change<T>(attempt, 2, 7, 7, [&](auto& array) { array = other; });
    expectElements(other, 7);
}

/// The exception for an invalid index needs memory only for its message.
void badIndex(Attempt& attempt) {
    Array<int> array = arrayOf<int>(3);
    attempt.perform([&] { array[7] = 1; });
    attempt.expectThrown(typeid(vorel::InvalidIndexException).name(),
                         {L"An invalid index value (7) has been detected; legal values are between 0 and 2"});
    expectElements(array, 3);
}

/// A map with four buckets. It contains the keys below `count` and their squares.
struct Squares {
    explicit Squares(unsigned int count) : map(4) {
        for (unsigned int key = 0; key < count; ++key) {
            map.put(key, static_cast<int>(key), static_cast<int>(key * key));
        }
    }

    void expectEntries(unsigned int count) const {
        EXPECT_EQ(map.size(), count);
        for (unsigned int key = 0; key < count; ++key) {
            const auto found = map.find(static_cast<int>(key), key);
            ASSERT_FALSE(found == map.end()) << key;
            EXPECT_EQ(found.value(), static_cast<int>(key * key));
        }
    }

    Map map;
};

void constructMap(Attempt& attempt) {
    std::optional<Map> map;
    attempt.perform([&] { map.emplace(31u); });
    attempt.expectMemoryException({{40, 8}});
    EXPECT_EQ(map.has_value(), attempt.completed());
}

void putFirst(Attempt& attempt) {
    Squares squares(0);
    attempt.perform([&] { squares.map.put(0, 0, 0); });
    attempt.expectBadAlloc();
    squares.expectEntries(attempt.completed() ? 1 : 0);
}

void putGrows(Attempt& attempt) {
    Squares squares(3);
    attempt.perform([&] { squares.map.put(3, 3, 9); });
    if (squares.map.bucketCount() == 4) {
        attempt.expectMemoryException({{20, 8}});
    } else {
        // The map grows before it allocates the node. So it has more buckets, even if the allocation of the node
        // failed.
        EXPECT_EQ(squares.map.bucketCount(), 11u);
        EXPECT_EQ(squares.map.growAt(), 8u);
        attempt.expectBadAlloc();
    }
    squares.expectEntries(attempt.completed() ? 4 : 3);
}

void putUsesSpareNode(Attempt& attempt) {
    Squares squares(3);
    squares.map.remove(2, 2);
    attempt.perform([&] { squares.map.put(2, 2, 4); });
    attempt.expectCompleted();
    EXPECT_FALSE(attempt.allocationFailed()) << "the call must reuse the spare node and allocate nothing";
    squares.expectEntries(3);
}

void resizeMap(Attempt& attempt) {
    Squares squares(3);
    attempt.perform([&] { squares.map.resize(23); });
    attempt.expectMemoryException({{40, 8}});
    EXPECT_EQ(squares.map.bucketCount(), attempt.completed() ? 23u : 4u);
    EXPECT_EQ(squares.map.growAt(), attempt.completed() ? 17u : 3u);
    squares.expectEntries(3);
}

void removeEntry(Attempt& attempt) {
    Squares squares(3);
    attempt.perform([&] { squares.map.remove(2, 2); });
    attempt.expectMemoryException({{5, 8}});
    squares.expectEntries(attempt.completed() ? 2 : 3);
}

void clearMap(Attempt& attempt) {
    Squares squares(3);
    squares.map.remove(2, 2);
    attempt.perform([&] { squares.map.clear(); });
    attempt.expectCompleted();
    EXPECT_FALSE(attempt.allocationFailed()) << "clearing the map must allocate nothing";
    squares.expectEntries(0);
}

void putIntoNoBuckets(Attempt& attempt) {
    Map map;
    attempt.perform([&] { map.put(1, 1, 1); });
    attempt.expectThrown(typeid(vorel::Exception).name(), {L"Tried to put into a hash map with 0 buckets"});
    EXPECT_EQ(map.size(), 0u);
}

void popOfEmptyStack(Attempt& attempt) {
    vorel::PointerStack<int> stack;
    attempt.perform([&] { stack.pop(); });
    attempt.expectThrown(typeid(vorel::Exception).name(), {L"Stack is empty"});
}

std::vector<Operation> arrayOperations() {
    std::vector<Operation> all = {{"Append_OwnElements", appendOwnElements},
                                  {"Append_TextToFreeSlot", appendTextToFreeSlot},
                                  {"AccessWithInvalidIndex", badIndex}};
    const auto add = [&all](const std::string& name, void (*ofInts)(Attempt&), void (*ofTexts)(Attempt&)) {
        all.push_back({name + "_OfInts", ofInts});
        all.push_back({name + "_OfTexts", ofTexts});
    };
    add("Append_First", appendFirst<int>, appendFirst<Text>);
    add("Append_Grows", appendGrows<int>, appendGrows<Text>);
    add("Append_OwnElement", appendOwnElement<int>, appendOwnElement<Text>);
    add("Reserve_Grows", reserveGrows<int>, reserveGrows<Text>);
    add("Reserve_Exactly", reserveExactly<int>, reserveExactly<Text>);
    add("SetCount", setCount<int>, setCount<Text>);
    add("Copy", copied<int>, copied<Text>);
    add("Construct_FromList", constructedFromList<int>, constructedFromList<Text>);
    add("Construct_FromRange", constructedFromRange<int>, constructedFromRange<Text>);
    add("Construct_FromSeparateElements", constructedFromSeparateElements<int>, constructedFromSeparateElements<Text>);
    add("Assign", assigned<int>, assigned<Text>);
    return all;
}

const std::vector<Operation>& mapOperations() {
    static const std::vector<Operation> kOperations = {
        {"Construct", constructMap},
        {"Put_First", putFirst},
        {"Put_Grows", putGrows},
        {"Put_UsesSpareNode", putUsesSpareNode},
        {"Put_IntoMapWithoutBuckets", putIntoNoBuckets},
        {"Resize", resizeMap},
        {"Remove", removeEntry},
        {"Clear", clearMap},
        {"Pop_OfEmptyStack", popOfEmptyStack},
    };
    return kOperations;
}

INSTANTIATE_TEST_SUITE_P(Arrays, FailingHeap, underBothFailures(arrayOperations()), failingHeapName);
INSTANTIATE_TEST_SUITE_P(HashMaps, FailingHeap, underBothFailures(mapOperations()), failingHeapName);

}  // namespace
