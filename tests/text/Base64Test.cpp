#include "vorel/text/Base64.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/StringFields.h"
#include "support/Arrays.h"
#include "support/BitTextReference.h"
#include "support/Expect.h"
#include "support/PageEdge.h"
#include "support/RandomInputs.h"
#include "support/RandomText.h"
#include "support/Widths.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using test::arrayOf;
using test::Bytes;
using test::valuesOf;
using vorel::Array;
using vorel::BaseString;
using vorel::Exception;
using vorel::util::Base64;

Bytes bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

template <class T>
class Base64Test : public ::testing::Test {};
TYPED_TEST_SUITE(Base64Test, test::CharacterTypes, test::CharacterNames);

struct Row {
    std::string_view bytes;
    std::string_view text;
};

constexpr Row kRows[] = {{"", ""},
                         {"f", "Zg=="},
                         {"fo", "Zm8="},
                         {"foo", "Zm9v"},
                         {"foob", "Zm9vYg=="},
                         {"fooba", "Zm9vYmE="},
                         {"foobar", "Zm9vYmFy"},
                         {"\xFF\xFF\xFE", "///+"},
                         {"A", "QQ=="},
                         {"ABCDEF", "QUJDREVG"}};

TYPED_TEST(Base64Test, Encode_PadsTheLastGroup) {
    for (const Row& row : kRows) {
        BaseString<TypeParam> text(test::text<TypeParam>("old").c_str());
        Base64::Encode(arrayOf(bytesOf(row.bytes)), text);
        EXPECT_EQ(text, test::text<TypeParam>(row.text).c_str());
        EXPECT_EQ(text.length(), row.text.size());
        EXPECT_EQ(text.c_str()[row.text.size()], 0);
    }
}

TYPED_TEST(Base64Test, Encode_ReservesOneGroupAfterTheCompleteGroups) {
    for (unsigned int count = 0; count < 400; ++count) {
        BaseString<TypeParam> text;
        Base64::Encode(arrayOf(std::vector<unsigned char>(count)), text);
        EXPECT_EQ(text.capacity(), test::capacityFor(count / 3 * 4 + 4)) << count;
    }
}

TYPED_TEST(Base64Test, Encode_TerminatesTheReservedUnits) {
    BaseString<TypeParam> text(std::basic_string<TypeParam>(100, TypeParam{'x'}).c_str());
    Base64::Encode(arrayOf(bytesOf("foo")), text);
    EXPECT_EQ(text, test::text<TypeParam>("Zm9v").c_str());
    EXPECT_EQ(text.data()[8], 0);  // the end of the reserved units, which are one group more than the text
}

TYPED_TEST(Base64Test, EncodeRange_AcceptsBytesOfItsOwnOutput) {
    for (const unsigned int length : {1u, 5u, 12u, 40u, 500u}) {
        for (const unsigned int start : {0u, 1u, length / 2}) {
            BaseString<TypeParam> text(std::basic_string<TypeParam>(length, TypeParam{'M'}).c_str());
            const auto* const bytes = reinterpret_cast<const unsigned char*>(text.c_str());
            const unsigned int count = length - start;
            BaseString<TypeParam> expected;
            Base64::Encode(arrayOf(std::vector<unsigned char>(bytes + start, bytes + start + count)), expected);
            Base64::EncodeRange(bytes, start, count, text);
            EXPECT_EQ(text, expected) << length << " units, from unit " << start;
        }
    }
}

TYPED_TEST(Base64Test, EncodeRange_EncodesPartOfTheData) {
    const Bytes data = bytesOf("xxfoobaryy");
    BaseString<TypeParam> text;
    Base64::EncodeRange(data.data(), 2, 6, text);
    EXPECT_EQ(text, test::text<TypeParam>("Zm9vYmFy").c_str());
    Base64::EncodeRange(data.data(), 2, 0, text);
    EXPECT_TRUE(text.empty());
    Base64::EncodeRange(nullptr, 2, 6, text);
    EXPECT_TRUE(text.empty());
}

TYPED_TEST(Base64Test, EncodeRange_RejectsTooLargeCountsBeforeReading) {
    const unsigned char byte = 0;
    for (const unsigned int count : {0xFFFFFFFFu, 0xC0000000u}) {
        BaseString<TypeParam> text(test::text<TypeParam>("old").c_str());
        test::expectThrows<vorel::MemoryException>(
            [&] { Base64::EncodeRange(&byte, 0, count, text); },
            {L"No more memory is available: -1 objects of size " + std::to_wstring(sizeof(TypeParam)) + L" requested",
             sizeof(TypeParam) == 1 ? L"Base64::EncodeRange(CString): Vorel exception rethrown"
                                    : L"Base64::EncodeRange(String): Vorel exception rethrown"});
        EXPECT_EQ(text, test::text<TypeParam>("old").c_str());
    }
}

TYPED_TEST(Base64Test, Decode_ReadsEncodedText) {
    for (const Row& row : kRows) {
        Array<unsigned char> bytes = arrayOf(bytesOf("something longer than the result"));
        EXPECT_EQ(Base64::Decode(test::text<TypeParam>(row.text).c_str(), bytes), 0);
        EXPECT_EQ(valuesOf(bytes), bytesOf(row.bytes));
    }
}

TYPED_TEST(Base64Test, Decode_ReportsInvalidText) {
    struct Case {
        const char* text;
        int result;
        std::string_view bytes;
    };
    for (const Case& row :
         {Case{"QQ", 1, ""},         // incomplete group
          Case{"QUJDQQ", 1, "ABC"},  // the bytes before the error are kept
          Case{"QUJD!UJD", 1, "ABC"}, Case{"QUJDQUJ\x80", 1, "ABC"}, Case{"QUJDQUJ\xFF", 1, "ABC"}, Case{"QQ=", 1, ""},
          Case{"QQ==", 0, "A"}, Case{"QQ=A", 0, "A"},   // after '=', a character must be valid; its value is ignored
          Case{"QQ=!", 1, ""}, Case{"QQ==!!", 0, "A"},  // the text after the padding is ignored
          Case{"QUI=QUJD", 0, "AB"}, Case{"=QQQ", 0, {"\x01\x04\x10", 3}},  // a "=" at the start is decoded as "A"
          Case{" Q\tQ\r=\n= ", 0, "A"}, Case{"QUJD\nREVG", 0, "ABCDEF"}, Case{"QUJD\r\n", 0, "ABC"},
          Case{"QU\vJD", 1, ""},  // unlike the white space above, \v is not skipped
          Case{" ", 0, ""}, Case{"", 0, ""}, Case{nullptr, 0, ""}}) {
        Array<unsigned char> bytes = arrayOf(bytesOf("old"));
        EXPECT_EQ(Base64::Decode(test::OptionalText<TypeParam>(row.text).get(), bytes), row.result)
            << (row.text ? row.text : "null");
        EXPECT_EQ(valuesOf(bytes), bytesOf(row.bytes)) << (row.text ? row.text : "null");
    }
}

TEST(Base64Wide, Decode_RejectsUnitsAbove255) {
    for (const wchar_t* text : {L"QUJD\u0141UJD", L"QUJDQ\u2028JD", L"QUJDQUJ\xFFFF"}) {
        Array<unsigned char> bytes;
        test::expectThrows<Exception>(
            [&] { Base64::Decode(text, bytes); },
            {L"Unicode character found in Base64 text", L"Base64::Decode(wchar_t): Vorel exception rethrown"});
        EXPECT_EQ(valuesOf(bytes), bytesOf("ABC"));
    }
    Array<unsigned char> bytes;
    EXPECT_EQ(Base64::Decode(L"QQ==\u0141", bytes), 0);
}

TYPED_TEST(Base64Test, RandomBytesAgreeWithTheReference) {
    BaseString<TypeParam> text;
    Array<unsigned char> again;
    test::forEachRandomInput(3000, [&](test::RandomText& random) {
        const Bytes bytes = random.bytes(random.below(random.oneIn(20) ? 3000 : 120));
        Base64::Encode(arrayOf(bytes), text);
        ASSERT_EQ(std::basic_string<TypeParam>(text.view()), test::text<TypeParam>(test::base64Of(bytes)));
        ASSERT_EQ(Base64::Decode(text.c_str(), again), 0);
        ASSERT_EQ(valuesOf(again), bytes);
    });
}

/// Decodes the zero-terminated text at `position` and compares the outcome with the reference.
template <class T>
void expectDecoding(const T* position, Array<unsigned char>& bytes) {
    std::vector<unsigned int> units;
    for (const T* unit = position; *unit; ++unit) {
        units.push_back(static_cast<std::make_unsigned_t<T>>(*unit));
    }
    const test::Decoding wanted = test::fromBase64(units);
    bool threw = false;
    int result = 0;
    try {
        result = Base64::Decode(position, bytes);
    } catch (const Exception&) {
        threw = true;
    }
    ASSERT_EQ(threw, wanted.threw);
    ASSERT_EQ(result, wanted.result);
    ASSERT_EQ(valuesOf(bytes), wanted.bytes);
}

TYPED_TEST(Base64Test, DamagedTextsAgreeWithTheReference) {
    test::PageEdge<TypeParam> edge(4096);
    test::forEachRandomInput(20000, [&](test::RandomText& random) {
        std::string narrow = test::base64Of(random.bytes(random.below(150)));
        for (std::size_t damage = random.below(3); damage != 0; --damage) {
            narrow.insert(random.below(narrow.size() + 1), random.from("\r\n \t=!\x80\xFF"
                                                                       "A",
                                                                       1 + random.below(3)));
        }
        std::basic_string<TypeParam> text = test::text<TypeParam>(narrow);
        if (sizeof(TypeParam) > 1 && !text.empty() && random.oneIn(40)) {
            text[random.below(text.size())] = static_cast<TypeParam>(0x100 + random.below(0xFEFF));
        }
        Array<unsigned char> bytes;
        ASSERT_NO_FATAL_FAILURE(
            expectDecoding(edge.placeAtEnd(std::basic_string_view<TypeParam>(text.c_str(), text.size() + 1)), bytes))
            << narrow;
    });
}

TYPED_TEST(Base64Test, Decode_UnitsAtEveryPositionOfAGroupAgreeWithTheReference) {
    Array<unsigned char> bytes;
    // Every byte except zero, and some units above 255, including units whose low byte is a Base64 character. For units
    // above 255, Decode always throws.
    const unsigned int end = 1u << 8 * sizeof(TypeParam);
    for (unsigned int unit = 1; unit < end; unit += unit < 0x200 ? 1 : 0x303) {
        for (std::size_t position = 0; position < 4; ++position) {
            auto text = test::text<TypeParam>("QUJDxyz/REVG");
            text[4 + position] = static_cast<TypeParam>(unit);
            ASSERT_NO_FATAL_FAILURE(expectDecoding(text.c_str(), bytes)) << unit << " at " << position;
        }
    }
}

TYPED_TEST(Base64Test, Decode_LeavesZerosAfterTheBytes) {
    const std::string text = test::base64Of(Bytes(200, 0xFF));
    for (std::size_t length = 0; length <= text.size(); length += 4) {
        Array<unsigned char> bytes = arrayOf(Bytes(300, 0xEE));
        Base64::Decode(test::text<TypeParam>(text.substr(0, length)).c_str(), bytes);
        const unsigned int count = bytes.size();
        bytes.setCount(300);
        for (unsigned int at = count; at < 300; ++at) {
            ASSERT_EQ(bytes[at], 0) << "slot " << at << ", text of " << length << " characters";
        }
    }
}

TYPED_TEST(Base64Test, Decode_ArrayWithoutStorageReservesForTheWholeText) {
    for (unsigned int length = 4; length <= 400; ++length) {
        std::string text(length, 'A');
        for (std::size_t at = 50; at < text.size(); at += 77) {
            text[at] = '\n';  // memory is reserved for white space, too
        }
        Array<unsigned char> bytes;
        Base64::Decode(test::text<TypeParam>(text).c_str(), bytes);
        EXPECT_EQ(bytes.allocated(), length / 4 * 3 + 32) << length;
    }
}

TYPED_TEST(Base64Test, Decode_AllocatesNothingIfNoByteIsDecoded) {
    struct Case {
        const char* text;
        int status;
    };
    for (const Case& c : {Case{"", 0}, Case{" \r\n\t", 0}, Case{"*", 1}, Case{"Q", 1}, Case{"QQ", 1}, Case{"QQQ", 1},
                          Case{"QQ*=QUJD", 1}, Case{" *QUJDREVG", 1}}) {
        SCOPED_TRACE(c.text);
        Array<unsigned char> bytes;
        EXPECT_EQ(Base64::Decode(test::text<TypeParam>(c.text).c_str(), bytes), c.status);
        EXPECT_EQ(bytes.data(), nullptr);
        EXPECT_EQ(bytes.allocated(), 0u);
        Array<unsigned char> reused = arrayOf(Bytes(5, 0xEE));
        const unsigned int allocated = reused.allocated();
        EXPECT_EQ(Base64::Decode(test::text<TypeParam>(c.text).c_str(), reused), c.status);
        EXPECT_EQ(reused.size(), 0u);
        EXPECT_EQ(reused.allocated(), allocated);
    }
}

TYPED_TEST(Base64Test, Decode_ArrayWithFewFreeSlotsGrowsForTheRestOfTheText) {
    // `Decode` works in steps. A step decodes a multiple of 24 bytes. Before each step, the storage grows if fewer than
    // 32 slots are free. The array has 100 slots, so 28 slots are free after 72 bytes.
    constexpr std::size_t kDecoded = 72;
    for (const std::size_t newLine : {20u, 33u, 76u, 95u, 96u, 97u, 130u}) {
        std::string text(400, 'Q');
        text.insert(newLine, "\r\n");
        const std::size_t read = kDecoded / 3 * 4 + (newLine < kDecoded / 3 * 4 ? 2 : 0);
        Array<unsigned char> bytes;
        bytes.reserve(100, true);
        EXPECT_EQ(Base64::Decode(test::text<TypeParam>(text).c_str(), bytes), 0);
        EXPECT_EQ(bytes.size(), 300u);
        EXPECT_EQ(bytes.allocated(), kDecoded + (text.size() - read) / 4 * 3 + 32) << newLine;
    }
}

TYPED_TEST(Base64Test, Decode_LeavesZerosInTheUnusedSlotsOfNewStorage) {
    for (const char* end : {"", "QQ==", "!", " \n", "QUI="}) {
        for (std::size_t groups = 0; groups <= 60; ++groups) {
            std::string text;
            for (std::size_t group = 0; group < groups; ++group) {
                text += "////";
            }
            Array<unsigned char> bytes;
            Base64::Decode(test::text<TypeParam>(text + end).c_str(), bytes);
            const unsigned int count = bytes.size();
            bytes.setCount(bytes.allocated());
            ASSERT_TRUE(std::all_of(bytes.begin() + count, bytes.end(), [](unsigned char value) { return value == 0; }))
                << groups << " groups, then '" << end << '\'';
        }
    }
}

TEST(Base64Object, AssignmentReturnsTheTarget) {
    Base64 one;
    const Base64 other;
    EXPECT_EQ(&(one = other), &one);
}

}  // namespace
