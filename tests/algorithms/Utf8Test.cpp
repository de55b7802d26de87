#include "algorithms/Utf8.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "algorithms/NotableValues.h"
#include "support/Utf8Reference.h"

namespace {

using test::notableValues;
using vorel::algorithms::consumeValue;
using vorel::algorithms::decodeUtf8Sequence;
using vorel::algorithms::encodeUtf8Sequence;
using vorel::algorithms::kLongestUtf8Sequence;
using vorel::algorithms::Surrogates;
using vorel::algorithms::Utf8Sequence;
using vorel::algorithms::utf8SequenceLength;

/// Texts of five bytes that follow a lead byte: valid trailing bytes, zeros, ASCII, 0xFF, and zeros with one bit set.
const std::vector<std::string>& trailers() {
    static const std::vector<std::string> kTrailers = [] {
        std::vector<std::string> all = {std::string(5, '\x80'), std::string(5, '\xBF'), std::string(5, '\0'),
                                        std::string(5, '\x41'), std::string(5, '\xFF'), "\x81\x92\xA3\xB4\xC5"};
        for (std::size_t position = 0; position < 5; ++position) {
            for (unsigned int bit = 0; bit < 8; ++bit) {
                std::string trailer(5, '\0');
                trailer[position] = static_cast<char>(1u << bit);
                all.push_back(trailer);
            }
        }
        return all;
    }();
    return kTrailers;
}

std::string encoded(std::uint32_t value) {
    unsigned char bytes[kLongestUtf8Sequence] = {};
    const unsigned int length = encodeUtf8Sequence(value, bytes);
    return {reinterpret_cast<const char*>(bytes), length};
}

TEST(Utf8Test, DecodeSequence_ReturnsTheLengthForEveryLeadByte) {
    struct Range {
        unsigned int first, last, step, length;
    };
    // The decoder's mask for the lead bytes of four-byte sequences excludes F1, F3, …, but includes F8, FA, FC and FE.
    static constexpr Range kRanges[] = {{0xC0, 0xDF, 1, 2}, {0xE0, 0xEF, 1, 3}, {0xF0, 0xFE, 2, 4}, {0xFD, 0xFD, 1, 6}};
    unsigned int expected[256] = {};
    for (const Range& range : kRanges) {
        for (unsigned int lead = range.first; lead <= range.last; lead += range.step) {
            expected[lead] = range.length;
        }
    }
    for (unsigned int lead = 0x80; lead < 256; ++lead) {
        const unsigned char bytes[6] = {static_cast<unsigned char>(lead), 0x80, 0x80, 0x80, 0x80, 0x80};
        EXPECT_EQ(decodeUtf8Sequence(bytes).bytes, expected[lead]) << "lead byte " << std::hex << lead;
    }
}

TEST(Utf8Test, DecodeSequence_AcceptsAnyTrailingBytes) {
    for (unsigned int lead = 0x80; lead < 256; ++lead) {
        for (const std::string& trailer : trailers()) {
            const std::string text = static_cast<char>(lead) + trailer;
            const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
            const unsigned int length = test::sequenceLength(static_cast<unsigned char>(lead));
            if (length != 0) {
                EXPECT_EQ(decodeUtf8Sequence(bytes).value, test::sequenceValue(bytes, length))
                    << testing::PrintToString(text);
            }
        }
    }
}

TEST(Utf8Test, DecodeSequence_ReturnsValuesOfAtMost31Bits) {
    for (unsigned int lead = 0x80; lead < 256; ++lead) {
        const unsigned char bytes[6] = {static_cast<unsigned char>(lead), 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
        EXPECT_LT(decodeUtf8Sequence(bytes).value, 0x80000000u) << std::hex << lead;
    }
}

TEST(Utf8Test, DecodeSequence_RestoresEncodedValuesOfAcceptedLeadBytes) {
    // The loop ends at 0x200000. The encoder writes larger values as five or six bytes. The decoder rejects most of
    // these sequences or reads them as other values. It also rejects four-byte sequences with an odd lead byte.
    for (std::uint32_t value = 0x80; value < 0x200000; value += value < 0x20000 ? 1 : 61) {
        const std::string bytes = encoded(value);
        const auto lead = static_cast<unsigned char>(bytes[0]);
        if (lead >= 0xF0 && lead % 2 != 0) {
            continue;
        }
        const Utf8Sequence sequence = decodeUtf8Sequence(reinterpret_cast<const unsigned char*>(bytes.data()));
        ASSERT_EQ(sequence.value, value) << std::hex << value;
        ASSERT_EQ(sequence.bytes, bytes.size()) << std::hex << value;
    }
}

TEST(Utf8Test, EncodeSequence_ReturnsTheShortestOfSixForms) {
    struct Case {
        std::uint32_t value;
        std::string bytes;
    };
    const Case cases[] = {
        {0x00, std::string(1, '\0')},
        {0x7F, "\x7F"},
        {0x80, "\xC2\x80"},
        {0x7FF, "\xDF\xBF"},
        {0x800, "\xE0\xA0\x80"},
        {0xD800, "\xED\xA0\x80"},
        {0xFFFF, "\xEF\xBF\xBF"},
        {0x10000, "\xF0\x90\x80\x80"},
        {0x1FFFFF, "\xF7\xBF\xBF\xBF"},
        {0x200000, "\xF8\x88\x80\x80\x80"},
        {0x3FFFFFF, "\xFB\xBF\xBF\xBF\xBF"},
        {0x4000000, "\xFC\x84\x80\x80\x80\x80"},
        {0x7FFFFFFF, "\xFD\xBF\xBF\xBF\xBF\xBF"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(encoded(c.value), c.bytes) << std::hex << c.value;
        EXPECT_EQ(utf8SequenceLength(c.value), c.bytes.size()) << std::hex << c.value;
    }
}

TEST(Utf8Test, EncodeSequence_AgreesWithTheReference) {
    for (const std::uint32_t value : notableValues()) {
        EXPECT_EQ(encoded(value), test::encodeUtf8(value)) << std::hex << value;
    }
    for (std::uint32_t value = 0; value < 0x11000; ++value) {
        ASSERT_EQ(encoded(value), test::encodeUtf8(value)) << std::hex << value;
    }
}

TEST(Utf8Test, ConsumeValue_JoinsPairsAndReplacesUnpairedSurrogates) {
    struct Case {
        const wchar_t* units;
        std::uint32_t value;
        unsigned int taken;
    };
    static constexpr Case kCases[] = {
        {L"A", 0x41, 1},
        {L"\xD800\xDC00", 0x10000, 2},
        {L"\xDBFF\xDFFF", 0x10FFFF, 2},
        {L"\xD83D\xDE00", 0x1F600, 2},
        {L"\xD800", '?', 1},
        {L"\xDBFF", '?', 1},
        {L"\xDC00", '?', 1},
        {L"\xDFFF", '?', 1},
        {L"\xD800\xD800", '?', 1},
        {L"\xDC00\xDC00", '?', 1},
        {L"\xDC00\xD800", '?', 1},
        {L"\xD800\xE000", '?', 1},
        {L"\xD7FF", 0xD7FF, 1},
        {L"\xE000\xDC00", 0xE000, 1},
        {L"\xFFFF", 0xFFFF, 1},
    };
    for (const Case& c : kCases) {
        const wchar_t* cursor = c.units;
        EXPECT_EQ(consumeValue<Surrogates::Paired>(cursor), c.value) << testing::PrintToString(c.units);
        EXPECT_EQ(cursor - c.units, c.taken) << testing::PrintToString(c.units);

        cursor = c.units;
        EXPECT_EQ(consumeValue<Surrogates::Single>(cursor), std::uint32_t{c.units[0]});
        EXPECT_EQ(cursor - c.units, 1);
    }
}

static_assert(
    decodeUtf8Sequence(std::begin({static_cast<unsigned char>(0xC3), static_cast<unsigned char>(0xA9)})).value == 0xE9,
    "the codec must work at compile time");

}  // namespace
