/// \file
/// Compares `Array` with `std::vector` over random sequences of operations.

#include <random>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace {

using vorel::Array;
using vorel::BaseString;

/// Maps a random number to a value of an element type. The number 0 gives the value-initialised element.
template <class T>
T valueFor(unsigned int number) {
    if constexpr (std::is_arithmetic_v<T>) {
        return static_cast<T>(number);
    } else {
        T string;
        for (; number != 0; number /= 10) {
            string += static_cast<std::remove_pointer_t<decltype(string.data())>>('0' + number % 10);
        }
        return string;
    }
}

template <class T>
class ArrayAndModel {
public:
    explicit ArrayAndModel(unsigned int seed) : m_random(seed) {}

    void step() {
        switch (below(10)) {
        case 0: reserve(); break;
        case 1: setCount(); break;
        case 2: removeLast(); break;
        case 3: appendElement(); break;
        case 4: write(); break;
        case 5: copyAndMove(); break;
        case 6: appendItems(); break;
        case 7: below(10) == 0 ? clear() : append(); break;
        default: append(); break;
        }
    }

    void check() const {
        ASSERT_EQ(m_array.size(), m_model.size()) << m_last;
        ASSERT_LE(m_array.size(), m_array.allocated()) << m_last;
        for (unsigned int slot = 0; slot < m_array.allocated(); ++slot) {
            const T expected = slot < m_model.size() ? m_model[slot] : T();
            ASSERT_TRUE(m_array.data()[slot] == expected) << m_last << ", slot " << slot;
        }
    }

private:
    unsigned int below(unsigned int limit) { return static_cast<unsigned int>(m_random() % limit); }

    void reserve() {
        m_last = "reserve";
        m_array.reserve(below(m_array.size() + 20), below(2) == 0);
    }

    void setCount() {
        m_last = "set the count";
        const unsigned int count = below(m_array.size() + 10);
        m_array.setCount(count);
        m_model.resize(count);
    }

    void removeLast() {
        m_last = "remove the last element";
        if (!m_model.empty()) {
            ASSERT_TRUE(m_array.removeLast() == m_model.back());
            m_model.pop_back();
        }
    }

    void append() {
        m_last = "append";
        const T value = valueFor<T>(below(1000));
        m_array.append(value);
        m_model.push_back(value);
    }

    void appendElement() {
        m_last = "append one of its own elements";
        if (!m_model.empty()) {
            const unsigned int index = below(m_array.size());
            m_array.append(m_array[index]);
            m_model.push_back(T(m_model[index]));
        }
    }

    void appendItems() {
        m_last = "append several of its own elements";
        if constexpr (std::is_trivially_copyable_v<T>) {
            const unsigned int from = below(m_array.size() + 1);
            const unsigned int count = below(m_array.size() - from + 1) % 20;
            m_array.append(m_array.data() + from, count);
            for (unsigned int i = 0; i < count; ++i) {
                m_model.push_back(T(m_model[from + i]));
            }
        }
    }

    void write() {
        m_last = "write an element";
        if (!m_model.empty()) {
            const unsigned int index = below(m_array.size());
            m_array[index] = m_model[index] = valueFor<T>(below(1000));
        }
    }

    void copyAndMove() {
        m_last = "copy, assign and move";
        Array<T> copy(m_array);
        Array<T> assigned;
        assigned.append(valueFor<T>(1));
        assigned = copy;
        m_array = std::move(assigned);
    }

    void clear() {
        m_last = "clear";
        m_array.clear();
        m_model.clear();
    }

    std::mt19937 m_random;
    Array<T> m_array;
    std::vector<T> m_model;
    const char* m_last = "none";
};

template <class T>
class ArrayRandom : public ::testing::Test {};

using Elements = ::testing::Types<unsigned char, int, double, BaseString<char>, BaseString<wchar_t>>;
TYPED_TEST_SUITE(ArrayRandom, Elements);

TYPED_TEST(ArrayRandom, BehavesLikeTheStandardVector) {
    for (unsigned int seed = 1; seed <= 20; ++seed) {
        ArrayAndModel<TypeParam> pair(seed);
        for (unsigned int step = 0; step < 300; ++step) {
            pair.step();
            ASSERT_NO_FATAL_FAILURE(pair.check()) << "seed " << seed << ", step " << step;
        }
    }
}

}  // namespace
