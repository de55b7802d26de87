/// \file
/// Arrays whose elements are arrays, exceptions, or values with a throwing destructor.

#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/Explosive.h"
#include "support/Expect.h"
#include "support/TemporaryLog.h"
#include "vorel/core/Array.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using test::expectThrows;
using test::Explosion;
using test::explosionLine;
using test::explosionOf;
using test::Explosive;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using vorel::Array;
using vorel::Exception;
using vorel::MemoryException;

using Texts = std::vector<std::string>;

static_assert(std::is_standard_layout_v<Array<Array<int>>> && sizeof(Array<Array<int>>) == 16);
static_assert(std::is_standard_layout_v<Array<Exception>> && sizeof(Array<Exception>) == 16);

// ---- Arrays ---------------------------------------------------------------------------------------------------------

Array<int> row(int first, unsigned int count) {
    Array<int> array;
    for (unsigned int index = 0; index < count; ++index) {
        array.append(first + static_cast<int>(index));
    }
    return array;
}

std::vector<std::vector<int>> rowsOf(const Array<Array<int>>& rows) {
    std::vector<std::vector<int>> result;
    for (const Array<int>& items : rows) {
        result.emplace_back(items.begin(), items.end());
    }
    return result;
}

TEST(ArrayOfArrays, GrowthKeepsTheElementsAndCopiesAreDeep) {
    Array<Array<int>> rows;
    std::vector<std::vector<int>> model;
    for (int first = 0; first < 12; ++first) {
        rows.append(row(first, 3));
        model.push_back({first, first + 1, first + 2});
    }
    rows.append(rows[1]);
    model.push_back(model[1]);
    EXPECT_EQ(rows.allocated(), 20u);
    const Array<Array<int>> copy(rows);
    rows[1][0] = 77;
    EXPECT_EQ(rowsOf(copy), model);
    model[1][0] = 77;
    EXPECT_EQ(rowsOf(rows), model);
}

TEST(ArrayOfArrays, SlotsPastTheCountHaveNoStorage) {
    Array<Array<int>> rows;
    for (int first = 0; first < 4; ++first) {
        rows.append(row(first, 3));
    }
    const Array<int> last = rows.removeLast();
    EXPECT_EQ(last[2], 5);
    rows.setCount(1);
    for (unsigned int slot = 1; slot < rows.allocated(); ++slot) {
        EXPECT_EQ(rows.data()[slot].data(), nullptr) << slot;
        EXPECT_EQ(rows.data()[slot].allocated(), 0u) << slot;
    }
    rows.setCount(7);
    EXPECT_EQ(rowsOf(rows), (std::vector<std::vector<int>>{{0, 1, 2}, {}, {}, {}, {}, {}, {}}));
}

TEST(ArrayOfArrays, ElementMayContainAnArrayOfItsOwnType) {
    struct Tree {
        int value = 0;
        Array<Tree> children;
    };
    Tree tree;
    tree.children.setCount(2);
    tree.children[1].value = 5;
    tree.children[1].children.setCount(1);
    const Tree copy = tree;
    tree = tree.children[1];
    EXPECT_EQ(tree.value, 5);
    EXPECT_EQ(tree.children.size(), 1u);
    EXPECT_EQ(copy.children[1].children.size(), 1u);
}

// ---- Exceptions -----------------------------------------------------------------------------------------------------

TEST(ArrayOfExceptions, GrowthAndCopiesKeepEveryMessage) {
    const test::TemporaryLog log;
    Array<Exception> failures;
    for (int number = 0; number < 7; ++number) {
        failures.append(Exception(L"failure %d", number));
        failures[static_cast<unsigned int>(number)].appendMessage(L"more");
    }
    Array<Exception> copy;
    copy = failures;
    for (unsigned int index = 0; index < 7; ++index) {
        const std::vector<std::wstring> messages = {L"failure " + std::to_wstring(index), L"more"};
        EXPECT_EQ(test::messagesOf(failures[index]), messages);
        EXPECT_EQ(test::messagesOf(copy[index]), messages);
    }
    EXPECT_EQ(log.messages().size(), 14u) << "copying must not log again";
}

// Releasing a slot destroys its exception. An exception with delayed logging then writes its messages. If the slot is
// used again, its new exception logs without delay.
TEST(ArrayOfExceptions, ReleasedSlotsAreReset) {
    test::TemporaryLog log;
    Array<Exception> failures;
    failures.setCount(3);
    for (unsigned int index = 0; index < 3; ++index) {
        failures[index].setDelayedLogging(true);
        failures[index].appendMessage(L"delayed %u", index);
    }
    failures.setCount(2);
    EXPECT_THAT(log.takeMessages(), ElementsAre("Vorel Error: delayed 2"));
    EXPECT_EQ(failures.removeLast().getMessageTotal(), 1u);
    EXPECT_THAT(log.takeMessages(), ElementsAre("Vorel Error: delayed 1"));
    failures.clear();
    EXPECT_THAT(log.takeMessages(), ElementsAre("Vorel Error: delayed 0"));
    failures.setCount(3);
    for (Exception& failure : failures) {
        EXPECT_EQ(failure.getMessageTotal(), 0u);
        failure.appendMessage(L"at once");
    }
    EXPECT_EQ(log.takeMessages(), Texts(3, "Vorel Error: at once"));
}

// ---- Throwing destructors -------------------------------------------------------------------------------------------

using Explosives = Array<Explosive>;

/// Fills an array with the values 1 to `count`.
void fill(Explosives& array, unsigned int count) {
    array.setCount(count);
    for (unsigned int index = 0; index < count; ++index) {
        array[index].number = static_cast<int>(index) + 1;
    }
}

std::vector<int> numbersOf(const Explosives& array) {
    std::vector<int> numbers;
    for (const Explosive& value : array) {
        numbers.push_back(value.number);
    }
    return numbers;
}

Explosives arrayOf(unsigned int count) {
    Explosives array;
    fill(array, count);
    return array;
}

/// An operation that releases elements of an array. The array has 10 slots and contains the values 1 to 9.
struct Case {
    const char* operation;
    void (*run)(Explosives&);
    std::vector<int> exploding;  ///< the values whose destructors throw, in the order of their release
    bool destroysStorage;        ///< whether a temporary array, whose destructor adds a record, releases the elements
    std::vector<int> after;
    unsigned int slotsAfter;
};

const Case kCases[] = {
    {"setCount", [](Explosives& a) { a.setCount(3); }, {5, 9}, false, {1, 2, 3}, 10},
    {"setCount, one failure", [](Explosives& a) { a.setCount(3); }, {4}, false, {1, 2, 3}, 10},
    {"clear", [](Explosives& a) { a.clear(); }, {1, 2, 3, 4, 5, 6, 7, 8, 9}, false, {}, 10},
    {"removeLast", [](Explosives& a) { a.removeLast(); }, {9}, false, {1, 2, 3, 4, 5, 6, 7, 8}, 10},
    {"reserve", [](Explosives& a) { a.reserve(11); }, {2, 3}, true, {1, 2, 3, 4, 5, 6, 7, 8, 9}, 20},
    {"setCount, growing", [](Explosives& a) { a.setCount(11); }, {1, 9}, true, {1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 0}, 20},
    {"append, growing",
     [](Explosives& a) {
         a.append(Explosive(10));
         a.append(a[0]);
     },
     {1, 9},
     true,
     {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 1},
     20},
    {"copy assignment within the storage",
     [](Explosives& a) {
         const Explosives two = arrayOf(2);
         a = two;
     },
     {3, 9},
     false,
     {1, 2},
     10},
    {"copy assignment that grows",
     [](Explosives& a) {
         const Explosives many = arrayOf(11);
         a = many;
     },
     {3, 9},
     true,
     {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11},
     11},
    {"move assignment within the storage", [](Explosives& a) { a = arrayOf(2); }, {3, 9}, false, {1, 2}, 10},
    {"move assignment that replaces the storage",
     [](Explosives& a) { a = arrayOf(11); },
     {3, 9},
     true,
     {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11},
     20},
};

TEST(ArrayOfExplosives, EveryOperationCompletesBeforeItThrowsTheFirstFailure) {
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.operation);
        const test::TemporaryLog log;
        {
            Explosives array;
            fill(array, 9);
            ASSERT_EQ(array.allocated(), 10u);
            std::vector<std::wstring> messages = {explosionOf(c.exploding.front())};
            Texts lines;
            for (const int value : c.exploding) {
                array[static_cast<unsigned int>(value) - 1].explosion = Explosion::Library;
                lines.push_back(explosionLine(value));
                if (lines.size() > 1) {
                    lines.emplace_back("Vorel Error: Array::~Array: Vorel exception suppressed");
                }
            }
            if (c.destroysStorage) {
                messages.emplace_back(L"Array::~Array: Vorel exception rethrown");
                lines.emplace_back("Vorel Error: Array::~Array: Vorel exception rethrown");
            }
            expectThrows<MemoryException>([&] { c.run(array); }, messages);
            EXPECT_THAT(log.messages(), ElementsAreArray(lines));
            EXPECT_EQ(numbersOf(array), c.after);
            EXPECT_EQ(array.allocated(), c.slotsAfter);
            EXPECT_EQ(Explosive::s_alive, static_cast<int>(array.allocated()));
            for (unsigned int slot = array.size(); slot < array.allocated(); ++slot) {
                EXPECT_EQ(array.data()[slot].number, 0) << slot;
            }
        }
        EXPECT_EQ(Explosive::s_alive, 0);
    }
}

/// Destroys an array of the values 1 to 5. `explosions` lists the values whose destructors throw. If `nested` is true,
/// the array is an element of another array, which is destroyed. If `unwinding` is true, the destruction is a part of
/// stack unwinding.
void destroyArray(const std::vector<std::pair<int, Explosion>>& explosions, bool nested, bool unwinding) {
    Array<Explosives> outer;
    outer.setCount(nested ? 3 : 0);
    Explosives own;
    Explosives& array = nested ? outer[1] : own;
    fill(array, 5);
    for (const auto& [value, explosion] : explosions) {
        array[static_cast<unsigned int>(value) - 1].explosion = explosion;
    }
    if (unwinding) {
        throw std::runtime_error("the first failure");
    }
}

TEST(ArrayOfExplosives, Destructor_ReleasesEveryElementAndThenRethrowsTheFirstFailure) {
    test::TemporaryLog log;
    expectThrows<MemoryException>(
        [] {
            destroyArray({{2, Explosion::Library}, {3, Explosion::Other}, {5, Explosion::Library}}, false, false);
        },
        {explosionOf(2), L"Array::~Array: Vorel exception rethrown"});
    EXPECT_THAT(log.takeMessages(),
                ElementsAre(explosionLine(2), "Vorel Error: Array::~Array: Severe error suppressed", explosionLine(5),
                            "Vorel Error: Array::~Array: Vorel exception suppressed",
                            "Vorel Error: Array::~Array: Vorel exception rethrown"));
    EXPECT_EQ(Explosive::s_alive, 0);

    expectThrows<Exception>(
        [] {
            destroyArray({{1, Explosion::Other}, {2, Explosion::Library}}, false, false);
        },
        {L"Array::~Array: Severe error thrown"});
    EXPECT_THAT(log.takeMessages(),
                ElementsAre(explosionLine(2), "Vorel Error: Array::~Array: Vorel exception suppressed",
                            "Vorel Error: Array::~Array: Severe error thrown"));
    EXPECT_EQ(Explosive::s_alive, 0);
}

TEST(ArrayOfExplosives, Destructor_OfNestedArraysAddsOneRecordPerArray) {
    expectThrows<MemoryException>(
        [] {
            destroyArray({{4, Explosion::Library}}, true, false);
        },
        {explosionOf(4), L"Array::~Array: Vorel exception rethrown", L"Array::~Array: Vorel exception rethrown"});
    EXPECT_EQ(Explosive::s_alive, 0);
}

TEST(ArrayOfExplosives, Destructor_DuringUnwindingRecordsFailuresAndThrowsNothing) {
    for (const bool nested : {false, true}) {
        const test::TemporaryLog log;
        EXPECT_THROW(destroyArray({{2, Explosion::Library}, {5, Explosion::Other}}, nested, true), std::runtime_error);
        EXPECT_THAT(log.messages(), ElementsAre(explosionLine(2), "Vorel Error: Array::~Array: Severe error suppressed",
                                                "Vorel Error: Array::~Array: Vorel exception suppressed"));
        EXPECT_EQ(Explosive::s_alive, 0);
    }
}

}  // namespace
