// Arrays and hash maps under a failing heap: the container is as it was.

#include <optional>
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

/// Longer than the smallest buffer, so that the sizes of a failure tell the copy of an element from another.
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

/// The failures that can leave an operation which wants storage of `slots`: the storage, or the copy of an element.
template <class T>
std::vector<Trial::Request> requestsFor(unsigned int slots) {
    if constexpr (std::is_same_v<T, int>) {
        return {{slots, sizeof(int)}};
    } else {
        return {{slots, sizeof(T)}, {32, sizeof(wchar_t)}};
    }
}

/// Performs `step` on an array of `count` elements. After a failure it has the same elements in the same storage.
template <class T, class Step>
void change(Trial& trial, unsigned int count, unsigned int slotsWanted, unsigned int countAfter, Step&& step) {
    Array<T> array = arrayOf<T>(count);
    const T* const storage = array.data();
    const unsigned int slots = array.allocated();
    trial.perform([&] { step(array); });
    trial.expectMemoryException(requestsFor<T>(slotsWanted));
    if (trial.completed()) {
        EXPECT_EQ(array.size(), countAfter);
        EXPECT_GE(array.allocated(), countAfter);
        return;
    }
    EXPECT_EQ(array.data(), storage);
    EXPECT_EQ(array.allocated(), slots);
    expectElements(array, count);
    // What was copied half-way is gone again from the free slots.
    array.setCount(slots);
    for (unsigned int index = count; index < slots; ++index) {
        EXPECT_EQ(array[index], T()) << index;
    }
}

template <class T>
void appendFirst(Trial& trial) {
    const T item = element<T>(0);
    change<T>(trial, 0, 5, 1, [&](auto& array) { array.append(item); });
}

template <class T>
void appendGrows(Trial& trial) {
    const T item = element<T>(5);
    change<T>(trial, 5, 10, 6, [&](auto& array) { array.append(item); });
}

template <class T>
void appendOwnElement(Trial& trial) {
    change<T>(trial, 5, 10, 6, [](auto& array) { array.append(array[2]); });
}

/// No growth, but an element's copy can fail; the free slot stays free.
void appendTextToFreeSlot(Trial& trial) {
    const Text item = element<Text>(3);
    change<Text>(trial, 3, 5, 4, [&](auto& array) { array.append(item); });
}

void appendRowOfItself(Trial& trial) {
    change<int>(trial, 4, 10, 8, [](auto& array) { array.append(array.data(), 4); });
}

template <class T>
void reserveGrows(Trial& trial) {
    change<T>(trial, 4, 20, 4, [](auto& array) { array.reserve(11); });
}

template <class T>
void reserveExactly(Trial& trial) {
    change<T>(trial, 4, 7, 4, [](auto& array) { array.reserve(7, true); });
}

template <class T>
void setCount(Trial& trial) {
    change<T>(trial, 4, 10, 9, [](auto& array) { array.setCount(9); });
}

template <class T>
void copied(Trial& trial) {
    const Array<T> original = arrayOf<T>(7);
    std::optional<Array<T>> copy;
    trial.perform([&] { copy.emplace(original); });
    trial.expectMemoryException(requestsFor<T>(7));
    expectElements(original, 7);
    ASSERT_EQ(copy.has_value(), trial.completed());
    if (copy) {
        expectElements(*copy, 7);
    }
}

template <class T>
void assigned(Trial& trial) {
    const Array<T> other = arrayOf<T>(7);
    change<T>(trial, 2, 7, 7, [&](auto& array) { array = other; });
    expectElements(other, 7);
}

/// The failure of a bad index needs memory for its message only.
void badIndex(Trial& trial) {
    Array<int> array = arrayOf<int>(3);
    trial.perform([&] { array[7] = 1; });
    trial.expectThrown(typeid(vorel::InvalidIndexException).name(),
                       {L"An invalid index value (7) has been detected; legal values are between 0 and 2"});
    expectElements(array, 3);
}

/// A map of four buckets that holds the keys below `count`, each with its square.
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

void constructMap(Trial& trial) {
    std::optional<Map> map;
    trial.perform([&] { map.emplace(31u); });
    trial.expectMemoryException({{40, 8}});
    EXPECT_EQ(map.has_value(), trial.completed());
}

void putFirst(Trial& trial) {
    Squares squares(0);
    trial.perform([&] { squares.map.put(0, 0, 0); });
    trial.expectBadAlloc();
    squares.expectEntries(trial.completed() ? 1 : 0);
}

void putGrows(Trial& trial) {
    Squares squares(3);
    trial.perform([&] { squares.map.put(3, 3, 9); });
    if (squares.map.bucketCount() == 4) {
        trial.expectMemoryException({{20, 8}});
    } else {
        // Grown before the node was refused: the entries are all there, in more buckets.
        EXPECT_EQ(squares.map.bucketCount(), 11u);
        EXPECT_EQ(squares.map.growAt(), 8u);
        trial.expectBadAlloc();
    }
    squares.expectEntries(trial.completed() ? 4 : 3);
}

void putUsesASpareNode(Trial& trial) {
    Squares squares(3);
    squares.map.remove(2, 2);
    trial.perform([&] { squares.map.put(2, 2, 4); });
    trial.expectCompleted();
    EXPECT_FALSE(trial.refused()) << "a spare node is taken, and nothing allocated";
    squares.expectEntries(3);
}

void resizeMap(Trial& trial) {
    Squares squares(3);
    trial.perform([&] { squares.map.resize(23); });
    trial.expectMemoryException({{40, 8}});
    EXPECT_EQ(squares.map.bucketCount(), trial.completed() ? 23u : 4u);
    EXPECT_EQ(squares.map.growAt(), trial.completed() ? 17u : 3u);
    squares.expectEntries(3);
}

void removeEntry(Trial& trial) {
    Squares squares(3);
    trial.perform([&] { squares.map.remove(2, 2); });
    trial.expectMemoryException({{5, 8}});
    squares.expectEntries(trial.completed() ? 2 : 3);
}

void clearMap(Trial& trial) {
    Squares squares(3);
    squares.map.remove(2, 2);
    trial.perform([&] { squares.map.clear(); });
    trial.expectCompleted();
    EXPECT_FALSE(trial.refused()) << "nothing is allocated";
    squares.expectEntries(0);
}

void misuseOfAMap(Trial& trial) {
    Map map;
    trial.perform([&] { map.put(1, 1, 1); });
    trial.expectThrown(typeid(vorel::Exception).name(), {L"Tried to put into a hash map with 0 buckets"});
    EXPECT_EQ(map.size(), 0u);
}

void popOfAnEmptyStack(Trial& trial) {
    vorel::PointerStack<int> stack;
    trial.perform([&] { stack.pop(); });
    trial.expectThrown(typeid(vorel::Exception).name(), {L"Stack is empty"});
}

std::vector<Operation> arrayOperations() {
    std::vector<Operation> all = {{"Append_RowOfItself", appendRowOfItself},
                                  {"Append_TextToFreeSlot", appendTextToFreeSlot},
                                  {"BadIndex", badIndex}};
    const auto add = [&all](const std::string& name, void (*ofInts)(Trial&), void (*ofTexts)(Trial&)) {
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
    add("Assign", assigned<int>, assigned<Text>);
    return all;
}

const std::vector<Operation>& mapOperations() {
    static const std::vector<Operation> kOperations = {
        {"Construct", constructMap},
        {"Put_First", putFirst},
        {"Put_Grows", putGrows},
        {"Put_UsesASpareNode", putUsesASpareNode},
        {"Put_IntoNoBuckets", misuseOfAMap},
        {"Resize", resizeMap},
        {"Remove", removeEntry},
        {"Clear", clearMap},
        {"Pop_OfAnEmptyStack", popOfAnEmptyStack},
    };
    return kOperations;
}

INSTANTIATE_TEST_SUITE_P(Arrays, FailingHeap, underBothFailures(arrayOperations()), failingHeapName);
INSTANTIATE_TEST_SUITE_P(HashMaps, FailingHeap, underBothFailures(mapOperations()), failingHeapName);

}  // namespace
