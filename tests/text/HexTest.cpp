#include "vorel/text/Hex.h"

#include <numeric>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "core/StringFields.h"
#include "support/Arrays.h"
#include "support/BitTextReference.h"
#include "support/PageEdge.h"
#include "support/RandomInputs.h"
#include "support/RandomText.h"
#include "support/Widths.h"

namespace {

using test::arrayOf;
using test::Bytes;
using test::valuesOf;
using vorel::Array;
using vorel::BaseString;
using vorel::util::Hex;
namespace util = vorel::util;

Bytes everyByte() {
    Bytes bytes(256);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
    return bytes;
}

TEST(HexTest, Encode_WritesTwoUpperCaseDigitsForEachByte) {
    BaseString<wchar_t> text(L"old");
    Hex::Encode(arrayOf<unsigned char>({0x00, 0x0F, 0x9A, 0xFF}), text);
    EXPECT_EQ(text, L"000F9AFF");
    EXPECT_EQ(text.c_str()[8], 0);
    Hex::Encode(arrayOf<unsigned char>({}), text);
    EXPECT_EQ(text, L"");
    EXPECT_EQ(*text.c_str(), 0);
    Hex::Encode(arrayOf(everyByte()), text);
    EXPECT_EQ(text, test::text<wchar_t>(test::hexOf(everyByte(), true)).c_str());
}

struct Row {
    const wchar_t* text;
    int result;
    Bytes bytes;
};

TEST(HexTest, Decode_ReportsInvalidPairs) {
    // The array initially has four bytes of 0xEE; bytes that are not written keep this value.
    for (const Row& row :
         {Row{L"41fF", 0, {0x41, 0xFF}},
          Row{L"", 0, {}},
          Row{L"0x4142", 0, {0x41, 0x42, 0xEE}},  // the prefix also gets a byte, but nothing is written there
          Row{L"0X41", 0, {0x41, 0xEE}},
          Row{L"0x", 0, {0xEE}},
          Row{L"x041", 1, {0xEE, 0xEE}},
          Row{L"0x1", 1, {0xEE}},
          Row{L"0x414", 1, {0x41, 0xEE}},  // odd number of digits after the prefix
          Row{L"00x1", 1, {0x00, 0xEE}},
          Row{L"1x41", 1, {0xEE, 0xEE}},
          Row{L"0x0x41", 1, {0xEE, 0xEE, 0xEE}},  // only one prefix is skipped
          Row{L"4G", 1, {0xEE}},
          Row{L"G4", 1, {0xEE}},
          Row{L"41/1", 1, {0x41, 0xEE}},
          Row{L"411/", 1, {0x41, 0xEE}},
          Row{L"abc", 1, {0xAB}},  // the terminator is not a digit
          Row{L"a", 1, {}},
          Row{L":@", 0, {0x39}},  // ':' to '@' count as 3 to 9
          Row{L";<=>", 0, {0x45, 0x67}},
          Row{L"1?", 0, {0x18}},
          Row{L"4 ", 1, {0xEE}}}) {
        Array<unsigned char> bytes = arrayOf(Bytes(4, 0xEE));
        EXPECT_EQ(Hex::Decode(row.text, bytes), row.result) << row.text;
        EXPECT_EQ(valuesOf(bytes), row.bytes) << row.text;
    }
}

TEST(HexTest, Decode_UsesTheLowEightBitsOfEachUnit) {
    Array<unsigned char> bytes;
    EXPECT_EQ(Hex::Decode(L"\u0141\u0232", bytes), 0);  // the low bytes are 'A' and '2'
    EXPECT_EQ(valuesOf(bytes), Bytes{0xA2});
    EXPECT_EQ(Hex::Decode(L"\u0161"
                          L"2",
                          bytes),
              1);  // U+0161 is not one of the letters a to z, so its low byte 'a' does not become 'A'
}

/// The value of a unit. The letters a to z are converted to upper case. Then the low eight bits are read as a digit, or
/// as a letter, where 'A' is 10. Returns -1 if the value is not 0 to 15.
int lenientValue(unsigned int unit) {
    unsigned int character = unit >= 'a' && unit <= 'z' ? unit - 32 : unit;
    character &= 0xFF;
    const int value = static_cast<int>(character) - (character < 58 ? 48 : 55);
    return value >= 0 && value <= 15 ? value : -1;
}

TEST(HexTest, Decode_EveryUnitAtBothPositionsOfAPairAgreesWithTheReference) {
    Array<unsigned char> bytes;
    for (unsigned int unit = 0; unit <= 0xFFFF; ++unit) {
        const int value = lenientValue(unit);
        const wchar_t pairs[] = {static_cast<wchar_t>(unit), L'5', L'5', static_cast<wchar_t>(unit)};
        for (const unsigned int position : {0u, 2u}) {
            const BaseString<wchar_t> text(pairs + position, 2);
            ASSERT_EQ(Hex::Decode(text, bytes), value < 0 ? 1 : 0) << unit << " at " << position;
            ASSERT_EQ(bytes.size(), 1u);
            if (value >= 0) {
                ASSERT_EQ(bytes[0], position == 0 ? value * 16 + 5 : 5 * 16 + value) << unit << " at " << position;
            }
        }
    }
}

TEST(HexTest, Decode_AgreesWithTheReferenceOnRandomTexts) {
    test::forEachRandomInput(20000, [&](test::RandomText& random) {
        std::wstring digits = test::text<wchar_t>(random.from("0123456789abcdefABCDEF", random.below(120)));
        for (std::size_t damage = random.below(3); damage != 0 && !digits.empty(); --damage) {
            digits[random.below(digits.size())] = static_cast<wchar_t>(random.oneOf(":;?@G/\xC1"));
        }
        const std::wstring prefix = random.oneIn(4) ? L"0x" : L"";
        Bytes wanted((prefix.size() + digits.size()) / 2, 0xEE);
        bool isWhole = digits.size() % 2 == 0;
        for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
            const int high = lenientValue(digits[at]);
            const int low = lenientValue(digits[at + 1]);
            if (high < 0 || low < 0) {
                isWhole = false;
                break;
            }
            wanted[at / 2] = static_cast<unsigned char>(high * 16 + low);
        }
        Array<unsigned char> bytes = arrayOf(Bytes(61, 0xEE));
        ASSERT_EQ(Hex::Decode((prefix + digits).c_str(), bytes), isWhole ? 0 : 1) << digits;
        ASSERT_EQ(valuesOf(bytes), wanted) << digits;
    });
}

TEST(HexTest, Decode_ReversesEncodeForRandomBytes) {
    BaseString<wchar_t> text;
    Array<unsigned char> again;
    test::forEachRandomInput(3000, [&](test::RandomText& random) {
        const Bytes bytes = random.bytes(random.below(random.oneIn(20) ? 2000 : 100));
        Hex::Encode(arrayOf(bytes), text);
        ASSERT_EQ(std::wstring(text.view()), test::text<wchar_t>(test::hexOf(bytes, true)));
        ASSERT_EQ(Hex::Decode(text, again), 0);
        ASSERT_EQ(valuesOf(again), bytes);
    });
}

TEST(HexTest, Decode_StopsAtAnInvalidPairAtEveryPosition) {
    for (std::size_t damaged = 0; damaged < 80; ++damaged) {
        std::wstring text(80, L'7');
        text[damaged] = L'g';
        Array<unsigned char> bytes = arrayOf(Bytes(40, 0xEE));
        EXPECT_EQ(Hex::Decode(text.c_str(), bytes), 1);
        Bytes wanted(40, 0xEE);
        std::fill_n(wanted.begin(), damaged / 2, static_cast<unsigned char>(0x77));
        EXPECT_EQ(valuesOf(bytes), wanted) << damaged;
    }
}

template <class T>
class HexText : public ::testing::Test {};
TYPED_TEST_SUITE(HexText, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(HexText, ByteArrayToHexString_WritesUpperOrLowerCaseDigits) {
    BaseString<TypeParam> text(test::text<TypeParam>("old").c_str());
    util::byteArrayToHexString(arrayOf<unsigned char>({0xAB, 0x09}), text, false);
    EXPECT_EQ(text, test::text<TypeParam>("ab09").c_str());
    util::byteArrayToHexString(arrayOf<unsigned char>({0xAB, 0x09}), text, true);
    EXPECT_EQ(text, test::text<TypeParam>("AB09").c_str());
    EXPECT_EQ(text.length(), 4u);
    util::byteArrayToHexString(arrayOf<unsigned char>({}), text, true);
    EXPECT_TRUE(text.empty());
    BaseString<TypeParam> none;
    util::byteArrayToHexString(arrayOf<unsigned char>({}), none, true);
    EXPECT_TRUE(none.empty());
}

TYPED_TEST(HexText, ByteArrayToHexString_ReservesTwoUnitsPerByte) {
    for (unsigned int count = 1; count < 400; ++count) {
        BaseString<TypeParam> text;
        util::byteArrayToHexString(arrayOf(Bytes(count)), text, true);
        EXPECT_EQ(text.capacity(), test::capacityFor(2 * count)) << count;
    }
}

TYPED_TEST(HexText, HexStringToByteArray_ReadsInvalidDigitsAsZero) {
    struct Case {
        const char* text;
        Bytes bytes;
    };
    for (const Case& row :
         {Case{"4142", {0x41, 0x42}}, Case{"4g", {0x40}}, Case{"g4", {0x04}}, Case{"aBCd", {0xAB, 0xCD}},
          Case{":@", {0x00}}, Case{"0x41", {0x00, 0x41}}, Case{" 1", {0x01}}, Case{"/G`h", {0x00, 0x00}},
          Case{"123", {0xEE}},  // an odd length leaves the array unchanged
          Case{"", {0xEE}}, Case{nullptr, {0xEE}}}) {
        Array<unsigned char> bytes = arrayOf<unsigned char>({0xEE});
        util::hexStringToByteArray(test::OptionalText<TypeParam>(row.text).get(), bytes);
        EXPECT_EQ(valuesOf(bytes), row.bytes) << (row.text ? row.text : "null");
    }
}

TYPED_TEST(HexText, ByteArrayToHexString_WritesEveryByte) {
    for (const bool upperCase : {false, true}) {
        BaseString<TypeParam> text;
        util::byteArrayToHexString(arrayOf(everyByte()), text, upperCase);
        EXPECT_EQ(std::basic_string<TypeParam>(text.c_str()),
                  test::text<TypeParam>(test::hexOf(everyByte(), upperCase)));
        EXPECT_EQ(text.length(), 512u);
    }
}

/// The value of a hexadecimal digit of either case; 0 for any other unit.
unsigned int digitOrZero(unsigned int unit) {
    const std::size_t found = unit != 0 && unit < 128
                                  ? std::string_view("0123456789abcdef0123456789ABCDEF").find(static_cast<char>(unit))
                                  : std::string_view::npos;
    return found == std::string_view::npos ? 0 : static_cast<unsigned int>(found % 16);
}

TYPED_TEST(HexText, HexStringToByteArray_EveryUnitAtBothPositionsAgreesWithTheReference) {
    Array<unsigned char> bytes;
    for (unsigned int unit = 0; unit < 1u << 8 * sizeof(TypeParam); ++unit) {
        const TypeParam pairs[] = {static_cast<TypeParam>(unit), '5', '5', static_cast<TypeParam>(unit)};
        util::hexStringToByteArray(pairs, 4, bytes);
        const unsigned int value = digitOrZero(unit);
        ASSERT_EQ(valuesOf(bytes),
                  (Bytes{static_cast<unsigned char>(value * 16 + 5), static_cast<unsigned char>(5 * 16 + value)}))
            << unit;
    }
}

TYPED_TEST(HexText, HexStringToByteArray_ReadsTheGivenEvenLength) {
    Array<unsigned char> bytes = arrayOf<unsigned char>({0xEE});
    const auto text = test::text<TypeParam>("414243");
    util::hexStringToByteArray(text.c_str(), 4, bytes);
    EXPECT_EQ(valuesOf(bytes), (Bytes{0x41, 0x42}));
    util::hexStringToByteArray(text.c_str(), 3, bytes);
    EXPECT_EQ(valuesOf(bytes), (Bytes{0x41, 0x42}));
    util::hexStringToByteArray(text.c_str(), 0, bytes);
    EXPECT_EQ(valuesOf(bytes), (Bytes{0x41, 0x42}));
    util::hexStringToByteArray(static_cast<const TypeParam*>(nullptr), 4, bytes);
    EXPECT_EQ(valuesOf(bytes), (Bytes{0x41, 0x42}));
    const auto withZero = test::text<TypeParam>(std::string_view("4\0"
                                                                 "42",
                                                                 4));
    util::hexStringToByteArray(withZero.c_str(), 4, bytes);
    EXPECT_EQ(valuesOf(bytes), (Bytes{0x40, 0x42}));
}

// An array without storage gets five slots. If they are not enough, the number is doubled until it is sufficient. The
// slots after the bytes are zeros.
TYPED_TEST(HexText, HexStringToByteArray_DoublesTheCapacityFromFiveSlots) {
    struct Case {
        unsigned int count;
        unsigned int slots;
    };
    for (const Case& c : {Case{1, 5}, Case{5, 5}, Case{6, 10}, Case{10, 10}, Case{11, 20}, Case{41, 80}, Case{160, 160},
                          Case{161, 320}, Case{5000, 5120}}) {
        const std::basic_string<TypeParam> text(std::size_t{2} * c.count, TypeParam{'F'});
        Array<unsigned char> bytes;
        util::hexStringToByteArray(text.c_str(), bytes);
        EXPECT_EQ(bytes.size(), c.count);
        ASSERT_EQ(bytes.allocated(), c.slots) << c.count;
        bytes.setCount(c.slots);
        for (unsigned int slot = 0; slot != c.slots; ++slot) {
            ASSERT_EQ(bytes[slot], slot < c.count ? 0xFF : 0) << c.count << ", slot " << slot;
        }
    }
}

TYPED_TEST(HexText, RandomTextsAgreeWithTheReference) {
    test::PageEdge<TypeParam> edge(1024);
    test::forEachRandomInput(20000, [&](test::RandomText& random) {
        const std::size_t pairs = 1 + random.below(60);
        std::string narrow = random.from("0123456789abcdefABCDEF", 2 * pairs);
        for (std::size_t damage = random.below(3); damage != 0; --damage) {
            narrow[random.below(narrow.size())] = random.oneOf("/:@G`g\x80\xFF \xB1");
        }
        std::basic_string<TypeParam> text = test::text<TypeParam>(narrow);
        if (sizeof(TypeParam) > 1 && random.oneIn(4)) {
            TypeParam& unit = text[random.below(text.size())];
            unit = static_cast<TypeParam>(static_cast<unsigned int>(unit) | 0x100u << random.below(8));
        }
        Bytes wanted(pairs);
        for (std::size_t at = 0; at < text.size(); ++at) {
            const unsigned int digit = digitOrZero(static_cast<std::make_unsigned_t<TypeParam>>(text[at]));
            wanted[at / 2] = static_cast<unsigned char>(wanted[at / 2] * 16u + digit);
        }
        Array<unsigned char> bytes;
        util::hexStringToByteArray(edge.placeAtEnd(text), static_cast<unsigned int>(text.size()), bytes);
        ASSERT_EQ(valuesOf(bytes), wanted) << narrow;
        BaseString<TypeParam> again;
        util::byteArrayToHexString(bytes, again, false);
        ASSERT_EQ(std::basic_string<TypeParam>(again.view()), test::text<TypeParam>(test::hexOf(wanted, false)));
    });
}

TEST(HexObject, AssignmentReturnsTheTarget) {
    Hex one;
    const Hex other;
    EXPECT_EQ(&(one = other), &one);
}

}  // namespace
