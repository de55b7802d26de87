#include "vorel/text/Daylight.h"

#include <string>

#include <gtest/gtest.h>

#include "core/StringFields.h"
#include "support/Arrays.h"
#include "support/BitTextReference.h"
#include "support/Expect.h"
#include "support/RandomInputs.h"
#include "support/RandomText.h"
#include "support/Widths.h"

namespace {

using test::arrayOf;
using test::Bytes;
using test::valuesOf;
using vorel::Array;
using vorel::BaseString;
using vorel::Exception;
using vorel::util::Daylight;

const std::wstring kWrongLength = L"Daylight64::Decode: Invalid ASCII string (length wrong)";
const std::wstring kWrongEnd = L"Daylight64::Decode: Invalid ASCII string (unexepected charater at end)";

struct Row {
    Bytes bytes;
    const wchar_t* text;
};

const std::vector<Row>& rows() {
    static const std::vector<Row> kRows = {{{}, L"3"},
                                           {{0x41}, L"EE..1"},
                                           {{0x41, 0x42}, L"EI6.2"},
                                           {{0x41, 0x42, 0x43}, L"EI713"},
                                           {{0, 0, 0}, L"....3"},
                                           {{0xFF, 0xFF, 0xFF, 0xFF}, L"zzzzzk..1"}};
    return kRows;
}

TEST(DaylightTest, Encode_AppendsTheByteCountOfTheLastGroup) {
    for (const Row& row : rows()) {
        BaseString<wchar_t> text(L"old");
        Daylight::Encode(arrayOf(row.bytes), text);
        EXPECT_EQ(text, row.text);
        EXPECT_EQ(text.length(), (row.bytes.size() + 2) / 3 * 4 + 1);
        EXPECT_EQ(text.c_str()[text.length()], 0);
    }
}

TEST(DaylightTest, Encode_ReservesTheSizeOfTheResult) {
    for (unsigned int count = 0; count < 400; ++count) {
        BaseString<wchar_t> text;
        Daylight::Encode(arrayOf(Bytes(count)), text);
        EXPECT_EQ(text.capacity(), test::capacityFor((count + 2) / 3 * 4 + 1)) << count;
    }
}

TEST(DaylightTest, Decode_ReadsEncodedText) {
    for (const Row& row : rows()) {
        Array<unsigned char> bytes = arrayOf<unsigned char>({1, 2, 3, 4, 5, 6, 7, 8, 9});
        EXPECT_EQ(Daylight::Decode(row.text, bytes), 0);
        EXPECT_EQ(valuesOf(bytes), row.bytes);
    }
}

TEST(DaylightTest, Decode_AcceptsEveryCharacterBeforeTheEndCharacter) {
    // A comma is decoded as '+'. Any other character outside the alphabet is decoded as '.', including the characters
    // from 128, for which the decoding table has no entries.
    for (const wchar_t* text : {L"EI6.2", L"EI6-2", L"EI6 2",
                                L"EI6\x7F"
                                L"2",
                                L"EI6\u0080"
                                L"2",
                                L"EI6\u013A"
                                L"2",
                                L"EI6\xFFFF"
                                L"2"}) {
        Array<unsigned char> bytes;
        EXPECT_EQ(Daylight::Decode(text, bytes), 0);
        EXPECT_EQ(valuesOf(bytes), (Bytes{0x41, 0x42})) << text;
    }
    Array<unsigned char> plus;
    Array<unsigned char> comma;
    Daylight::Decode(L"++++3", plus);
    Daylight::Decode(L"+,+,3", comma);
    EXPECT_EQ(valuesOf(plus), valuesOf(comma));
    EXPECT_EQ(valuesOf(plus), (Bytes{0x04, 0x10, 0x41}));
}

/// A string that may contain zeros.
BaseString<wchar_t> stringOf(const std::wstring& text) {
    return BaseString<wchar_t>(text.data(), static_cast<unsigned int>(text.size()));
}

Bytes bytesOf(const std::wstring& groups) {
    return test::bytesOfCharacters({groups.begin(), groups.end()}, test::kDaylightCharacters);
}

TEST(DaylightTest, Decode_EveryUnitAtEveryPositionAgreesWithTheReference) {
    Array<unsigned char> bytes;
    for (unsigned int unit = 0; unit <= 0xFFFF; ++unit) {
        for (std::size_t position = 0; position < 4; ++position) {
            std::wstring groups = L"zzzz";
            groups[position] = static_cast<wchar_t>(unit);
            Daylight::Decode(stringOf(groups + L'3'), bytes);
            ASSERT_EQ(valuesOf(bytes), bytesOf(groups)) << unit << " at " << position;
        }
    }
}

TEST(DaylightTest, Decode_AcceptsOnly1To3AsTheEndCharacter) {
    Array<unsigned char> bytes;
    for (unsigned int unit = 0; unit <= 0xFFFF; unit += unit < 0x200 ? 1 : 0xFF) {
        bool threw = false;
        try {
            Daylight::Decode(stringOf(std::wstring(L"EI71") + static_cast<wchar_t>(unit)), bytes);
        } catch (const Exception&) {
            threw = true;
        }
        ASSERT_EQ(threw, unit < '1' || unit > '3') << unit;
        ASSERT_EQ(bytes.size(), threw ? 3u : unit - '0') << unit;
    }
}

TEST(DaylightTest, Decode_AgreesWithTheReferenceOnRandomUnits) {
    Array<unsigned char> bytes;
    test::forEachRandomInput(5000, [&](test::RandomText& random) {
        std::wstring groups = test::text<wchar_t>(random.from(test::kDaylightCharacters, 4 * random.below(60)));
        for (std::size_t damage = random.below(4); damage != 0 && !groups.empty(); --damage) {
            groups[random.below(groups.size())] = static_cast<wchar_t>(random.bits() >> 8 * random.below(7));
        }
        Bytes wanted = bytesOf(groups);
        const std::size_t last = groups.empty() ? 3 : 1 + random.below(3);
        wanted.resize(wanted.size() + last - 3);
        Daylight::Decode(stringOf(groups + static_cast<wchar_t>('0' + last)), bytes);
        ASSERT_EQ(valuesOf(bytes), wanted);
    });
}

TEST(DaylightTest, Decode_RejectsAWrongLength) {
    for (const wchar_t* text : {L"", L"EI", L"EI6", L"EI6.", L"EI6.2EI"}) {
        Array<unsigned char> bytes = arrayOf<unsigned char>({7});
        test::expectThrows<Exception>([&] { Daylight::Decode(text, bytes); }, {kWrongLength});
        EXPECT_EQ(valuesOf(bytes), Bytes{7});
    }
}

TEST(DaylightTest, Decode_RejectsAWrongEndCharacter) {
    for (const wchar_t* text : {L"EI6.0", L"EI6.4", L"EI6./", L"EI6.z", L"EI6.\u0131", L"EI6.\uFF11"}) {
        Array<unsigned char> bytes;
        test::expectThrows<Exception>([&] { Daylight::Decode(text, bytes); }, {kWrongEnd});
        EXPECT_EQ(valuesOf(bytes), (Bytes{0x41, 0x42, 0x00}));
    }
    for (const wchar_t* text : {L"1", L"2", L"0"}) {  // no group before the end character
        Array<unsigned char> bytes;
        test::expectThrows<Exception>([&] { Daylight::Decode(text, bytes); }, {kWrongEnd});
    }
}

TEST(DaylightTest, RandomBytesAgreeWithTheReference) {
    BaseString<wchar_t> text;
    Array<unsigned char> again;
    test::forEachRandomInput(3000, [&](test::RandomText& random) {
        const Bytes bytes = random.bytes(random.below(random.oneIn(20) ? 3000 : 150));
        Daylight::Encode(arrayOf(bytes), text);
        ASSERT_EQ(std::wstring(text.view()), test::text<wchar_t>(test::daylightOf(bytes)));
        ASSERT_EQ(Daylight::Decode(text, again), 0);
        ASSERT_EQ(valuesOf(again), bytes);
    });
}

TEST(DaylightObject, AssignmentReturnsTheTarget) {
    Daylight one;
    const Daylight other;
    EXPECT_EQ(&(one = other), &one);
}

}  // namespace
