// Parses random texts, narrow and wide, with every number parser. The parsed value, the end and the return value
// must be equal to the results of the reference. Some texts are next to an inaccessible page, so a read out of bounds
// faults. Other texts are in the middle of a buffer, where a parser may read beyond the text, but must ignore what
// earlier texts left there.

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include <gtest/gtest.h>

#include "support/NumberReference.h"
#include "support/RandomInputs.h"
#include "support/RandomText.h"
#include "support/Scans.h"
#include "support/Widths.h"
#include "vorel/values/NumberParsing.h"

namespace {

namespace util = vorel::util;

constexpr int kTexts = 100000;

/// Numbers of different lengths, with and without a fraction and an exponent. Some texts have other characters around
/// or within the number.
class NumberTexts {
public:
    explicit NumberTexts(test::RandomText& random) : m_random(random) {}

    std::string next() {
        if (m_random.oneIn(8)) {
            return m_random.from("0019.eE+- \t\n\r\xA0xafF,", m_random.below(12));
        }
        std::string text = blanks() + m_random.from("+-", m_random.oneIn(3) ? 1 : 0);
        text += m_random.from("0", m_random.oneIn(8) ? m_random.below(20) : 0);
        text += digits();
        if (m_random.oneIn(2)) {
            text += '.' + (m_random.oneIn(3) ? std::string(m_random.below(4), '0') : digits());
        }
        if (m_random.oneIn(3)) {
            text += m_random.oneOf("eE") + m_random.from("+-", m_random.below(2)) + exponent();
        }
        return text + blanks() + m_random.from(".x,eE+-/:0\xB2", m_random.oneIn(6) ? 1 : 0);
    }

    std::string nextHex() {
        std::string text = blanks() + m_random.from("0", m_random.oneIn(8) ? m_random.below(10) : 0);
        text += m_random.from("0123456789abcdefABCDEF", m_random.below(m_random.oneIn(2) ? 20 : 8));
        return text + blanks() + m_random.from("xgG/:@`0aF-", m_random.oneIn(4) ? 1 : 0);
    }

private:
    std::string blanks() { return m_random.from(" \t\n\r\xA0", m_random.oneIn(4) ? m_random.below(3) : 0); }
    std::string digits() { return m_random.digits(m_random.oneIn(4) ? m_random.below(41) : m_random.below(9)); }

    /// Usually a number up to 600, which is often beyond the range of doubles. Sometimes one of these: zeros and then
    /// such a number; only zeros; random digits; no digits; a number near a multiple of 2^31.
    std::string exponent() {
        switch (m_random.below(12)) {
        case 0: return digits();
        case 1: return std::string(m_random.below(4), '0');
        case 2: return std::to_string((std::uint64_t{1 + m_random.below(4)} << 31) - 300 + m_random.below(600));
        case 3: return std::string(m_random.below(20), '0') + std::to_string(m_random.below(601));
        default: return std::to_string(m_random.below(601));
        }
    }

    test::RandomText& m_random;
};

std::string numberText(test::RandomText& random) {
    return NumberTexts(random).next();
}

std::string hexText(test::RandomText& random) {
    return NumberTexts(random).nextHex();
}

template <class T>
class NumberParsingRandom : public ::testing::Test {
protected:
    /// Expects that `scan` returns the value and the end in `wanted`, which are the results of the reference.
    template <class Value, class Wanted>
    static void expectScan(const T* text, Value (*scan)(const T*, T**) noexcept, const test::Reading<Wanted>& wanted) {
        T* end = nullptr;
        EXPECT_EQ(scan(text, &end), static_cast<Value>(wanted.value));
        EXPECT_EQ(end - text, static_cast<std::ptrdiff_t>(wanted.end));
    }

    /// Expects the results of the reference from a parser that can skip the white space after the number.
    template <class Value>
    static void expectScans(const T* text, Value (*scan)(const T*, const T**, bool) noexcept,
                            const std::string& shape) {
        for (const bool skip : {false, true}) {
            const auto wanted = test::readInteger(shape, std::is_signed_v<Value>, skip);
            const T* end = nullptr;
            EXPECT_EQ(scan(text, &end, skip), static_cast<Value>(wanted.value));
            EXPECT_EQ(end - text, static_cast<std::ptrdiff_t>(wanted.end));
        }
    }
};
TYPED_TEST_SUITE(NumberParsingRandom, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(NumberParsingRandom, IntegersAgreeWithTheReference) {
    test::forEachRandomText<TypeParam>(kTexts, numberText, [&](const TypeParam* text, const std::string& shape) {
        const auto asSigned = test::readInteger(shape, true, true);
        const auto asUnsigned = test::readInteger(shape, false, true);
        this->expectScan(text, &util::stringToInt, asSigned);
        this->expectScan(text, &util::stringToInt64, asSigned);
        this->expectScan(text, &util::stringToUInt, asUnsigned);
        this->expectScan(text, &util::stringToUInt64, asUnsigned);
        this->expectScans(text, &util::stringToInteger, shape);
        this->expectScans(text, &util::stringToInteger64, shape);
        this->expectScans(text, &util::stringToUnsignedInteger64, shape);
    });
}

TYPED_TEST(NumberParsingRandom, HexadecimalNumbersAgreeWithTheReference) {
    test::forEachRandomText<TypeParam>(kTexts, hexText, [&](const TypeParam* text, const std::string& shape) {
        const auto wanted = test::readHex(shape, sizeof(TypeParam) == 1 ? 16 : 8);
        this->expectScan(text, &util::hexToInteger, wanted);
        this->expectScan(text, &util::hexToInt, wanted);
    });
}

TYPED_TEST(NumberParsingRandom, DoublesAgreeWithTheReferenceInEveryBit) {
    test::forEachRandomText<TypeParam>(kTexts, numberText, [&](const TypeParam* text, const std::string& shape) {
        const auto wanted = test::readDouble(shape);
        TypeParam* end = nullptr;
        const double value = util::stringToDouble(text, &end);
        EXPECT_EQ(test::bitsOf(value), test::bitsOf(wanted.value)) << value << " for " << wanted.value;
        EXPECT_EQ(end - text, static_cast<std::ptrdiff_t>(wanted.end));
    });
}

TYPED_TEST(NumberParsingRandom, TryFunctionsAgreeWithTheReference) {
    test::forEachRandomText<TypeParam>(kTexts, numberText, [&](const TypeParam* text, const std::string& shape) {
        int integer = 99;
        const auto asInteger = test::tryInteger(shape);
        EXPECT_EQ(util::tryStringToInteger(text, integer), asInteger.result);
        EXPECT_EQ(integer, asInteger.value.value_or(99));
        double number = 99;
        const auto asDouble = test::tryDouble(shape);
        EXPECT_EQ(util::tryStringToDouble(text, number), asDouble.result);
        const double wanted = asDouble.value.value_or(99);
        EXPECT_EQ(test::bitsOf(number), test::bitsOf(wanted)) << number << " for " << wanted;
    });
}

TYPED_TEST(NumberParsingRandom, CanCoerceFunctionsAgreeWithTheReference) {
    test::forEachRandomText<TypeParam>(kTexts, numberText, [&](const TypeParam* text, const std::string& shape) {
        for (const bool allow : {false, true}) {
            EXPECT_EQ(util::canCoerceToInteger(text, allow), test::canBeInteger(shape, allow));
            EXPECT_EQ(util::canCoerceToDouble(text, allow), test::canBeDouble(shape, allow));
        }
    });
}

}  // namespace
