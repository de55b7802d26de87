#include "algorithms/Utf8Short.h"

#include <algorithm>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/PageEdge.h"
#include "support/RandomText.h"
#include "support/Utf8Reference.h"
#include "support/Widths.h"

namespace {

using test::RandomText;
using vorel::algorithms::decodeShortText;
using vorel::algorithms::encodeShortText;
using vorel::algorithms::kNotShort;
using vorel::algorithms::kShortText;
using vorel::algorithms::shortTextLength;
using vorel::algorithms::Surrogates;

constexpr std::uint64_t kSeed = 20261121;
constexpr std::size_t kAmple = 4 * kShortText;
constexpr wchar_t kGuardUnit = 0x5A5A;
constexpr char kGuardByte = 0x5A;

template <class T>
class ShortTextLength : public testing::Test {};
TYPED_TEST_SUITE(ShortTextLength, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(ShortTextLength, IsTheBoundOrThePositionOfTheFirstZero) {
    const std::basic_string<TypeParam> text(kShortText + 10, TypeParam{'x'});
    EXPECT_EQ(shortTextLength(text.c_str(), 0), 0u);
    EXPECT_EQ(shortTextLength(text.c_str(), 48), 48u);
    EXPECT_EQ(shortTextLength(text.c_str(), 49), kNotShort);
    EXPECT_EQ(shortTextLength(text.c_str(), 2147483647), kNotShort);

    alignas(256) TypeParam block[kShortText + 10] = {};
    for (std::size_t zero = 0; zero < kShortText + 5; ++zero) {
        std::fill_n(block, kShortText + 10, TypeParam{0x7F});
        block[zero] = 0;
        EXPECT_EQ(shortTextLength(block, -1), zero < 48 ? zero : kNotShort) << zero;
        EXPECT_EQ(shortTextLength(block, 20), 20u) << "zeros before the bound must be ignored";
    }
}

TYPED_TEST(ShortTextLength, ReadsOnlyOnePage) {
    test::PageEdge<TypeParam> edge(4096);
    for (std::size_t size = 1; size < kShortText; ++size) {
        const TypeParam* const text =
            edge.placeAtEnd(std::basic_string<TypeParam>(size - 1, TypeParam{'x'}) + TypeParam{0});
        EXPECT_EQ(shortTextLength(text, -1), kNotShort) << size;
    }
}

/// Decodes and encodes texts that end at an inaccessible page.
class Utf8Short : public testing::Test {
protected:
    /// Decodes `bytes` up to a zero, or at most `length` bytes if `length` is not negative. Returns whether the whole
    /// text was decoded. If it was, the function also checks the result.
    bool decodes(std::string_view bytes, int length, std::size_t capacity) {
        const test::DecodedText expected = test::decodeUtf8(bytes, length);
        const auto* const input =
            m_bytes.placeAtEnd({reinterpret_cast<const unsigned char*>(bytes.data()), expected.bytesRead});
        std::wstring out(capacity + 8, kGuardUnit);
        const std::size_t units = decodeShortText(input, length, out.data(), capacity);
        EXPECT_EQ(out.find_first_not_of(kGuardUnit, capacity), std::wstring::npos)
            << "nothing may be written after the capacity";
        if (units == kNotShort) {
            return false;
        }
        EXPECT_FALSE(expected.error);
        EXPECT_EQ(out.substr(0, units), expected.units);
        EXPECT_EQ(out.find_first_not_of(kGuardUnit, units), std::wstring::npos)
            << "nothing may be written after the text";
        return true;
    }

    /// Encodes `text` up to a zero, or at most `length` units if `length` is not negative. Returns whether the whole
    /// text was encoded. If it was, the function also checks the result.
    template <Surrogates Rule>
    bool encodes(std::wstring_view text, int length, std::size_t capacity) {
        const std::wstring input(text);
        const test::EncodedText expected = test::encodeUtf16(input, length);
        const wchar_t* const position = m_units.placeAtEnd(text.substr(0, expected.unitsRead));
        std::string out(capacity + 8, kGuardByte);
        const std::size_t bytes =
            encodeShortText<Rule>(position, length, reinterpret_cast<unsigned char*>(out.data()), capacity);
        EXPECT_EQ(out.find_first_not_of(kGuardByte, capacity), std::string::npos)
            << "nothing may be written after the capacity";
        if (bytes == kNotShort) {
            return false;
        }
        const std::wstring bounded = length < 0 ? input : input.substr(0, static_cast<std::size_t>(length)) + L'\0';
        EXPECT_EQ(out.substr(0, bytes), Rule == Surrogates::Paired ? expected.bytes : test::encodeUnits(bounded));
        EXPECT_EQ(out.find_first_not_of(kGuardByte, bytes), std::string::npos)
            << "nothing may be written after the text";
        return true;
    }

    test::PageEdge<unsigned char> m_bytes{4096};
    test::PageEdge<wchar_t> m_units{4096};
};

/// Bytes after a lead byte: valid trailing bytes, and other bytes that are decoded as trailing bytes.
constexpr std::string_view kFollowers[] = {"\x80\x80\x80\x80\x80", "\xBF\xBF\xBF\xBF\xBF", "abcde",
                                           "\xFF\xC0\x41\x80\x01", std::string_view("\0\0\0\0\0", 5)};

TEST_F(Utf8Short, DecodesLeadBytesOfUpToFourBytes) {
    for (unsigned int lead = 0; lead < 256; ++lead) {
        for (const std::string_view followers : kFollowers) {
            const std::string text = "-" + std::string(1, static_cast<char>(lead)) + std::string(followers);
            const unsigned int bytes = test::sequenceLength(static_cast<unsigned char>(lead));
            const bool isOverlong =
                bytes == 4 && test::sequenceValue(reinterpret_cast<const unsigned char*>(&text[1]), 4) < 0x10000;
            EXPECT_EQ(decodes(text, 2, kAmple), bytes != 0 && bytes != 6 && !isOverlong) << std::hex << lead;
        }
    }
}

TEST_F(Utf8Short, RejectsTextAboveTheCapacity) {
    struct Case {
        std::string_view text;
        std::size_t units;
    };
    for (const auto& [text, units] :
         {Case{"abcdefghij", 10}, Case{"\xC3\xA9\xC3\xA9\xC3\xA9", 3}, Case{"\xE2\x82\xAC\xE2\x82\xAC", 2},
          Case{"\xF0\x9F\x98\x80-\xF0\x9F\x98\x80", 5}}) {
        const int length = static_cast<int>(text.size());
        for (std::size_t capacity = 0; capacity < units; ++capacity) {
            EXPECT_FALSE(decodes(text, length, capacity)) << text << " in " << capacity;
        }
        // The decoder may require space for one more unit, because any character may need two units.
        EXPECT_TRUE(decodes(text, length, units + 1)) << text;
    }
}

TEST_F(Utf8Short, RejectsTextWithoutALengthIfATrailingByteIsZero) {
    const std::string text("a\xC3\0z\0", 5);
    EXPECT_TRUE(decodes(text, 2, kAmple));
    const std::string longer = text + std::string(100, '\0');  // contains all bytes that the decoder reads
    EXPECT_EQ(decodeShortText(reinterpret_cast<const unsigned char*>(longer.data()), -1, std::wstring(9, 0).data(), 9),
              kNotShort);
}

TEST_F(Utf8Short, RejectsTextOfMoreThan48Units) {
    EXPECT_TRUE(decodes(std::string(48, 'x'), 48, kAmple));
    EXPECT_FALSE(decodes(std::string(49, 'x'), 49, kAmple));
    EXPECT_TRUE(encodes<Surrogates::Paired>(std::wstring(48, L'x'), 48, kAmple));
    EXPECT_FALSE(encodes<Surrogates::Paired>(std::wstring(49, L'x'), 49, kAmple));
}

TEST_F(Utf8Short, EncodesSurrogatesByTheRule) {
    EXPECT_TRUE(encodes<Surrogates::Paired>(L"a\xD83D\xDE00z", 4, kAmple));
    EXPECT_TRUE(encodes<Surrogates::Paired>(L"a\xD83D\xDE00z", 2, kAmple))
        << "a pair across the bound must be encoded as a pair";
    for (const std::wstring_view lone : {L"a\xD83Dz", L"a\xDE00z", L"a\xD83D\xD83D\xDE00", L"\xDE00\xD83D"}) {
        EXPECT_FALSE(encodes<Surrogates::Paired>(std::wstring(lone) + L'\0', static_cast<int>(lone.size()), kAmple));
        EXPECT_TRUE(encodes<Surrogates::Single>(std::wstring(lone) + L'\0', static_cast<int>(lone.size()), kAmple));
    }
}

TEST_F(Utf8Short, EncodesTheFirstAndLastUnitsOfEverySequenceLength) {
    for (const wchar_t unit : std::wstring_view(L"\x01\x7F\x80\x7FF\x800\xD7FF\xE000\xFFFF")) {
        SCOPED_TRACE(testing::Message() << std::hex << std::uint32_t{unit});
        EXPECT_TRUE(encodes<Surrogates::Paired>(std::wstring(3, unit) + L'\0', 3, kAmple));
        EXPECT_FALSE(encodes<Surrogates::Paired>(std::wstring(4, unit) + L'\0', 4, 3))
            << "text above the capacity must be rejected";
    }
}

TEST_F(Utf8Short, AgreesWithTheReferenceOnRandomTexts) {
    RandomText random(kSeed);
    for (int round = 0; round < 20000; ++round) {
        SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", round " << round);
        std::wstring text;
        const std::size_t mask = std::size_t{0x7F} << random.below(9);  // without a shift: only ASCII
        for (std::size_t left = random.below(60); left != 0; --left) {
            text += static_cast<wchar_t>(1 + (random.bits() & (mask | 0x7F) & 0xFFFE));
        }
        if (random.oneIn(3)) {
            text.insert(random.below(text.size() + 1), L"\xD83D\xDE00\xD800\xDC00");
        }
        text += L'\0';
        const int wideLength = static_cast<int>(random.below(text.size() + 1)) - 1;
        encodes<Surrogates::Paired>(text, wideLength, random.oneIn(2) ? kAmple : random.below(kAmple));
        encodes<Surrogates::Single>(text, wideLength, random.oneIn(2) ? kAmple : random.below(kAmple));

        std::string bytes = test::encodeUtf16(text, -1).bytes;
        if (random.oneIn(3) && !bytes.empty()) {
            bytes[random.below(bytes.size())] = static_cast<char>(random.bits());
        }
        bytes += std::string(6, '\0');
        const int length = static_cast<int>(random.below(bytes.size() - 4)) - 1;
        decodes(bytes, length, random.oneIn(2) ? kAmple : random.below(kShortText));
        if (HasFailure()) {
            return;
        }
    }
}

}  // namespace
