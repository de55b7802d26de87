// Random texts through every number parser, narrow and wide: value, end and answer are those of the references. The
// texts stand against pages that must not be touched, or in the middle of what others left behind, where they are read
// in blocks.

#include <bit>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "support/NumberReference.h"
#include "support/PageEdge.h"
#include "support/RandomText.h"
#include "support/Shape.h"
#include "support/Widths.h"
#include "vorel/values/NumberParsing.h"

namespace {

namespace util = vorel::util;

constexpr std::uint64_t kSeed = 20261121;
constexpr int kTexts = 100000;

/// Numbers of all lengths, mostly whole ones, with whatever may stand around them and between their parts.
class NumberTexts {
public:
    std::string next() {
        if (m_random.oneIn(8)) {
            return m_random.from("0019.eE+- \t\n\r\xA0xafF,", m_random.below(12));
        }
        std::string text = m_random.from(" \t\n\r\xA0", m_random.oneIn(4) ? m_random.below(3) : 0);
        text += m_random.from("+-", m_random.oneIn(3) ? 1 : 0);
        text += m_random.from("0", m_random.oneIn(8) ? m_random.below(20) : 0);
        text += digits();
        if (m_random.oneIn(2)) {
            text += '.' + (m_random.oneIn(3) ? std::string(m_random.below(4), '0') : digits());
        }
        if (m_random.oneIn(3)) {
            text += m_random.oneOf("eE") + m_random.from("+-", m_random.below(2));
            text += m_random.oneIn(10) ? digits() : std::to_string(m_random.below(601)).substr(m_random.below(2));
        }
        text += m_random.from(" \t\n\r\xA0", m_random.oneIn(4) ? m_random.below(3) : 0);
        return text + m_random.from(".x,eE+-/:0\xB2", m_random.oneIn(6) ? 1 : 0);
    }

    /// The text, now and then with a unit whose lower byte alone would mean something.
    template <class T>
    std::basic_string<T> foreign(std::basic_string<T> text) {
        if (sizeof(T) > 1 && !text.empty() && m_random.oneIn(8)) {
            T& unit = text[m_random.below(text.size())];
            unit = static_cast<T>(static_cast<unsigned int>(unit) | 0x100u << m_random.below(8));
        }
        return text;
    }

    /// The text at either edge of a page, or somewhere within one.
    template <class T>
    const T* place(const std::basic_string<T>& text, test::PageEdge<T>& edge) {
        const std::basic_string_view<T> withTerminator(text.c_str(), text.size() + 1);
        if (m_random.oneIn(4)) {
            return edge.placeAtEnd(withTerminator);
        }
        if (m_random.oneIn(4)) {
            return edge.placeAtStart(withTerminator);
        }
        T* const place = edge.firstElement() + m_random.below(1024);
        withTerminator.copy(place, withTerminator.size());
        return place;
    }

private:
    std::string digits() { return m_random.digits(m_random.oneIn(4) ? m_random.below(41) : m_random.below(9)); }

    test::RandomText m_random{kSeed};
};

template <class T>
class NumberParsingRandom : public ::testing::Test {
protected:
    /// Hands each text, against one page or the other, and its shape to `check`.
    template <class Check>
    void forEachText(Check check) {
        NumberTexts texts;
        test::PageEdge<T> edge(2048);
        for (int count = 0; count < kTexts; ++count) {
            const std::basic_string<T> text = texts.foreign(test::text<T>(texts.next()));
            const T* const place = texts.place(text, edge);
            const std::string shape = test::shapeOf(std::basic_string_view<T>(text));
            check(place, shape);
            ASSERT_FALSE(this->HasFailure()) << "text " << count << " of seed " << kSeed << ": \"" << shape << '"';
        }
    }

    /// What a scan gives is what the reference says.
    template <class Value, class Reference>
    static void expectScan(const T* text, Value (*scan)(const T*, T**) noexcept, const Reference& wanted) {
        T* end = nullptr;
        EXPECT_EQ(scan(text, &end), static_cast<Value>(wanted.value));
        EXPECT_EQ(end - text, static_cast<std::ptrdiff_t>(wanted.end));
    }
};
TYPED_TEST_SUITE(NumberParsingRandom, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(NumberParsingRandom, IntegersWrapAroundAndStopWhereTheReferenceDoes) {
    this->forEachText([&](const TypeParam* text, const std::string& shape) {
        const auto asSigned = test::readInteger(shape, true, true);
        const auto asUnsigned = test::readInteger(shape, false, true);
        this->expectScan(text, &util::stringToInt, asSigned);
        this->expectScan(text, &util::stringToInt64, asSigned);
        this->expectScan(text, &util::stringToUInt, asUnsigned);
        this->expectScan(text, &util::stringToUInt64, asUnsigned);
        const TypeParam* end = nullptr;
        EXPECT_EQ(util::stringToInteger(text, &end, false), static_cast<int>(asSigned.value));
        EXPECT_EQ(end - text, static_cast<std::ptrdiff_t>(test::readInteger(shape, true, false).end));
    });
}

TYPED_TEST(NumberParsingRandom, HexadecimalNumbersAgreeWithTheReference) {
    this->forEachText([&](const TypeParam* text, const std::string& shape) {
        const auto wanted = test::readHex(shape, sizeof(TypeParam) == 1 ? 16 : 8);
        this->expectScan(text, &util::hexToInteger, wanted);
        this->expectScan(text, &util::hexToInt, wanted);
    });
}

TYPED_TEST(NumberParsingRandom, DoublesAgreeInEveryBit) {
    this->forEachText([&](const TypeParam* text, const std::string& shape) {
        const auto wanted = test::readDouble(shape);
        TypeParam* end = nullptr;
        const double value = util::stringToDouble(text, &end);
        EXPECT_EQ(end - text, static_cast<std::ptrdiff_t>(wanted.end));
        EXPECT_TRUE(std::bit_cast<std::uint64_t>(value) == std::bit_cast<std::uint64_t>(wanted.value) ||
                    (value != value && wanted.value != wanted.value))
            << value << " for " << wanted.value;
    });
}

TYPED_TEST(NumberParsingRandom, TrialsAnswerAndStoreWhatTheReferenceDoes) {
    this->forEachText([&](const TypeParam* text, const std::string& shape) {
        int integer = 99;
        const auto asInteger = test::tryInteger(shape);
        EXPECT_EQ(util::tryStringToInteger(text, integer), asInteger.result);
        EXPECT_EQ(integer, asInteger.value.value_or(99));
        double number = 99;
        const auto asDouble = test::tryDouble(shape);
        EXPECT_EQ(util::tryStringToDouble(text, number), asDouble.result);
        const double wanted = asDouble.value.value_or(99);
        EXPECT_TRUE(number == wanted || (number != number && wanted != wanted)) << number << " for " << wanted;
    });
}

TYPED_TEST(NumberParsingRandom, CoercionsAcceptWhatThePatternsMatch) {
    this->forEachText([&](const TypeParam* text, const std::string& shape) {
        for (const bool allow : {false, true}) {
            EXPECT_EQ(util::canCoerceToInteger(text, allow), test::canBeInteger(shape, allow));
            EXPECT_EQ(util::canCoerceToDouble(text, allow), test::canBeDouble(shape, allow));
        }
    });
}

}  // namespace
