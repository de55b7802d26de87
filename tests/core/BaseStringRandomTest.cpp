/// \file
/// Compares `BaseString` with `std::basic_string` over random sequences of operations.

#include <cstdint>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "core/StringFields.h"
#include "support/Widths.h"
#include "vorel/core/BaseString.h"

namespace {

using vorel::BaseString;

/// Applies each operation to a string and to its model. Lengths stay below a few thousand units.
template <class T>
class StringAndModel {
public:
    explicit StringAndModel(unsigned int seed) : m_random(seed) {}

    void step() {
        switch (below(12)) {
        case 0: assignText(); break;
        case 1: assignTail(); break;
        case 2: assignString(); break;
        case 3: appendText(); break;
        case 4: appendUnits(); break;
        case 5: appendPartOfItself(); break;
        case 6: appendUnit(); break;
        case 7: reserve(); break;
        case 8: forgetLength(); break;
        case 9: formatItself(); break;
        case 10: formatNumber(); break;
        default: below(8) == 0 ? clear() : appendUnit(); break;
        }
        if (m_model.size() > 3000) {
            clear();
        }
    }

    void check() const {
        ASSERT_EQ(m_string.length(), m_model.size()) << m_last;
        ASSERT_TRUE(m_string.view() == m_model) << m_last;
        if (m_string.c_str()) {
            ASSERT_LT(m_model.size(), m_string.capacity()) << m_last;
            ASSERT_EQ(m_string.c_str()[m_model.size()], T{}) << m_last;
        }
        BaseString<T> copy(m_string);
        ASSERT_TRUE(copy == m_string) << m_last;
    }

private:
    using Model = std::basic_string<T>;

    unsigned int below(unsigned int limit) { return static_cast<unsigned int>(m_random() % limit); }

    /// Up to `maxUnits` units. No unit is a null character or a percent sign.
    Model randomText(unsigned int maxUnits) {
        Model text(below(maxUnits + 1), T{});
        for (T& unit : text) {
            unit = static_cast<T>('0' + below(75));
        }
        return text;
    }

    void assignText() {
        m_last = "assign a text";
        m_model = randomText(40);
        m_string = m_model.c_str();
    }

    void assignTail() {
        m_last = "assign a tail of itself";
        if (m_string.c_str()) {
            const unsigned int from = below(m_string.length() + 1);
            m_string = m_string.c_str() + from;
            m_model = Model(m_model.c_str() + from);  // the text ends at the first zero
        }
    }

    void assignString() {
        m_last = "assign a string";
        const Model text = randomText(60);
        const BaseString<T> other(text.c_str());
        m_string = other;
        m_model = text;
    }

    void appendText() {
        m_last = "append a text";
        const Model text = randomText(50);
        m_string += text.c_str();
        m_model += text;
    }

    void appendUnits() {
        m_last = "append units with a zero";
        Model text = randomText(20);
        text += T{};
        text += T{'z'};
        m_string.append(text.c_str(), static_cast<unsigned int>(text.size()));
        m_model += text;
    }

    void appendPartOfItself() {
        m_last = "append a part of itself";
        if (m_string.c_str()) {
            const unsigned int from = below(m_string.length() + 1);
            const unsigned int count = below(m_string.length() - from + 1);
            m_string.append(m_string.c_str() + from, count);
            m_model += Model(m_model, from, count);
        }
    }

    void appendUnit() {
        m_last = "append a unit";
        const T unit = static_cast<T>('a' + below(26));
        m_string += unit;
        m_model += unit;
    }

    void reserve() {
        m_last = "reserve";
        const unsigned int count = below(2 * m_string.length() + 20);
        m_string.reserve(count, false);
        if (count < m_model.size()) {
            m_model.resize(count);
        }
    }

    void forgetLength() {
        m_last = "write a text after reserve";
        const Model text = randomText(100) + T{'.'};
        const auto count = static_cast<unsigned int>(text.size());
        text.copy(m_string.reserve(count, true), count);
        // If the buffer was large enough, the string still has a known length, which the write does not update. So the
        // text is also assigned.
        if (test::knowsLength(m_string)) {
            m_string = BaseString<T>(text.c_str());
        }
        m_model = text;
    }

    void formatItself() {
        m_last = "format the string into itself";
        const Model format = test::text<T>("<%s|%d|%s>");
        const Model before = m_model.substr(0, m_model.find(T{}));  // an argument ends at the first zero
        m_string.format(format.c_str(), m_string.view().data(), 42, m_string.view().data());
        m_model = T{'<'} + before + test::text<T>("|42|") + before + T{'>'};
    }

    void formatNumber() {
        m_last = "format a number";
        const unsigned int width = 1 + below(70);
        m_string.format(test::text<T>("%0*u").c_str(), width, 7u);
        m_model = Model(width - 1, T{'0'}) + T{'7'};
    }

    void clear() {
        m_last = "clear";
        m_string.clear();
        m_model.clear();
    }

    std::mt19937 m_random;
    BaseString<T> m_string;
    Model m_model;
    const char* m_last = "none";
};

template <class T>
class BaseStringRandom : public ::testing::Test {};

TYPED_TEST_SUITE(BaseStringRandom, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(BaseStringRandom, BehavesLikeTheStandardString) {
    for (unsigned int seed = 1; seed <= 40; ++seed) {
        StringAndModel<TypeParam> pair(seed);
        for (int step = 0; step < 300; ++step) {
            pair.step();
            ASSERT_NO_FATAL_FAILURE(pair.check()) << "seed " << seed << ", step " << step;
        }
    }
}

}  // namespace
