#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "flat/FlatCalls.h"

namespace {

using namespace std::string_view_literals;

using test::FlatBytes;
using test::flatBytes;
using test::flatFailure;
using test::flatOutput;
using test::FlatText;
using test::flatText;

std::wstring toUtf16(std::string_view utf8) {
    const test::FlatInput<char> input(utf8);
    return flatText([&](auto... out) { return vorel_utf8_to_utf16(input.data(), input.size(), out...); });
}

std::string toUtf8(std::wstring_view text) {
    const FlatText input(text);
    const auto bytes =
        flatOutput<char>([&](auto... out) { return vorel_utf16_to_utf8(input.data(), input.size(), out...); });
    return {bytes.begin(), bytes.end()};
}

TEST(FlatUtf8, ConvertsInBothDirections) {
    const struct {
        std::string_view utf8;
        std::wstring_view text;
    } kRows[] = {
        {"", L""},
        {"A", L"A"},
        {"A\xC3\xA9\xF0\x9F\x98\x80", L"A\u00E9\U0001F600"},
        {"\xE2\x82\xAC", L"\u20AC"},
        {"\0"sv, L"\0"sv},
        {"a\0b"sv, L"a\0b"sv},
        {"\0\0\xC3\xA9\0"sv, L"\0\0\u00E9\0"sv},
        {"the quick brown fox jumps over the lazy dog \xC3\xBC\xC3\xB6\xC3\xA4 and again",
         L"the quick brown fox jumps over the lazy dog \u00FC\u00F6\u00E4 and again"},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(toUtf16(row.utf8), row.text);
        EXPECT_EQ(toUtf8(row.text), row.utf8);
    }
}

TEST(FlatUtf8, ConvertsLongTexts) {
    std::string utf8;
    std::wstring text;
    for (int count = 0; count != 5000; ++count) {
        utf8 += "x\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
        text += L"x\u00E9\u20AC\U0001F600";
    }
    EXPECT_EQ(toUtf16(utf8), text);
    EXPECT_EQ(toUtf8(text), utf8);
}

TEST(FlatUtf8, RejectsInvalidUtf8) {
    const std::string_view kRows[] = {
        "\x80",          // a trailing byte without a lead byte
        "ab\xBF",        //
        "\xFF",          // not a lead byte
        "\xF1\x80\x80",  // 0xF1 is not a lead byte for this library
        "\xC3",          // truncated by the end of the text
        "a\xE2\x82",     //
        "\xF0\x9F\x98",  //
        "\xFC",          // truncated, because 0xFC is a lead byte for this library
        "\xC3\0a"sv,     // truncated by a zero
        "\xF0\x9F\0\0\0\0"sv,
        "0123456789012345678901234567890123456789\xE2",  // a truncated character after a long text
    };
    for (const std::string_view row : kRows) {
        const test::FlatInput<char> input(row);
        EXPECT_EQ(flatFailure<vorel_char16>(
                      [&](auto... out) { return vorel_utf8_to_utf16(input.data(), input.size(), out...); }),
                  VOREL_ERROR_INVALID_TEXT)
            << testing::PrintToString(row);
    }
}

TEST(FlatUtf8, ReplacesUnpairedSurrogatesWithQuestionMarks) {
    EXPECT_EQ(toUtf8(L"\xD800"), "?");
    EXPECT_EQ(toUtf8(L"\xDC00x"), "?x");
    EXPECT_EQ(toUtf8(L"x\xD83D"), "x?");
    EXPECT_EQ(toUtf8(L"\xD83D\0\xDE00"sv), "?\0?"sv) << "a zero between two surrogates separates them";
}

// ---- Bytes as printable text ----------------------------------------------------------------------------------------

/// An encoder and its decoder. The decoder may accept more texts than the encoder writes.
struct Codec {
    const char* name;
    vorel_status (*encode)(const void*, size_t, vorel_char16*, size_t, size_t*);
    vorel_status (*decode)(const vorel_char16*, size_t, void*, size_t, size_t*);
};

vorel_status encodeUpperHex(const void* bytes, size_t size, vorel_char16* output, size_t capacity, size_t* length) {
    return vorel_hex_encode(bytes, size, 1, output, capacity, length);
}

vorel_status encodeLowerHex(const void* bytes, size_t size, vorel_char16* output, size_t capacity, size_t* length) {
    return vorel_hex_encode(bytes, size, 0, output, capacity, length);
}

const Codec kBase64{"Base64", vorel_base64_encode, vorel_base64_decode};
const Codec kDaylight{"Daylight", vorel_daylight_encode, vorel_daylight_decode};
const Codec kUpperHex{"HEX", encodeUpperHex, vorel_hex_decode};
const Codec kLowerHex{"hex", encodeLowerHex, vorel_hex_decode};

TEST(FlatBinaryText, EncodesAndDecodes) {
    const struct {
        Codec codec;
        std::string_view bytes;
        std::wstring_view text;
    } kRows[] = {
        {kBase64, "", L""},
        {kBase64, "A", L"QQ=="},
        {kBase64, "ABCD", L"QUJDRA=="},
        {kBase64, "\0\xFF\x10"sv, L"AP8Q"},
        {kDaylight, "", L"3"},
        {kDaylight, "AB", L"EI6.2"},
        {kDaylight, "ABC", L"EI713"},
        {kUpperHex, "", L""},
        {kUpperHex, "\x4A\x0F", L"4A0F"},
        {kLowerHex, "\x4A\x0F", L"4a0f"},
        {kLowerHex, "\0\xFF"sv, L"00ff"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.codec.name);
        const FlatBytes bytes(row.bytes);
        const FlatText text(row.text);
        EXPECT_EQ(flatText([&](auto... out) { return row.codec.encode(bytes.data(), bytes.size(), out...); }),
                  row.text);
        EXPECT_EQ(flatBytes([&](auto... out) { return row.codec.decode(text.data(), text.size(), out...); }),
                  row.bytes);
    }
}

TEST(FlatBinaryText, RejectsZeroTerminatedBytes) {
    const unsigned char bytes[] = {'A', 0};
    for (const Codec& codec : {kBase64, kDaylight, kUpperHex, kLowerHex}) {
        EXPECT_EQ(
            flatFailure<vorel_char16>([&](auto... out) { return codec.encode(bytes, VOREL_ZERO_TERMINATED, out...); }),
            VOREL_ERROR_INVALID_ARGUMENT)
            << codec.name;
        EXPECT_EQ(test::lastMessage(), L"Bytes have no terminator") << codec.name;
    }
}

TEST(FlatBinaryText, DecodingReturnsTheEncodedBytes) {
    std::string all;
    for (int byte = 0; byte != 3 * 256; ++byte) {
        all += static_cast<char>(byte * 7);
    }
    for (const Codec& codec : {kBase64, kDaylight, kUpperHex, kLowerHex}) {
        SCOPED_TRACE(codec.name);
        for (std::size_t size = all.size() - 4; size != all.size(); ++size) {
            const FlatBytes bytes(std::string_view(all).substr(0, size));
            const FlatText text(
                flatText([&](auto... out) { return codec.encode(bytes.data(), bytes.size(), out...); }));
            EXPECT_EQ(flatBytes([&](auto... out) { return codec.decode(text.data(), text.size(), out...); }),
                      all.substr(0, size));
        }
    }
}

TEST(FlatBinaryText, DecodersAcceptTheDocumentedForms) {
    const struct {
        Codec codec;
        std::wstring_view text;
        std::string_view bytes;
    } kRows[] = {
        {kBase64, L" Q U\tI\r\n= ", "AB"}, {kBase64, L"QQ==anything", "A"}, {kUpperHex, L"0x4142", "AB"},
        {kUpperHex, L"0X4a", "J"},         {kUpperHex, L"0x", ""},          {kUpperHex, L"00", "\0"sv},
    };
    for (const auto& row : kRows) {
        const FlatText text(row.text);
        EXPECT_EQ(flatBytes([&](auto... out) { return row.codec.decode(text.data(), text.size(), out...); }), row.bytes)
            << testing::PrintToString(row.text);
    }
}

TEST(FlatBinaryText, DecodersRejectUndocumentedForms) {
    const struct {
        Codec codec;
        std::wstring_view text;
    } kRows[] = {
        {kBase64, L"QQ"},        {kBase64, L"Q!=="},  {kBase64, L"QQ==\0"sv}, {kBase64, L"QQ\u0100="},
        {kDaylight, L""},        {kDaylight, L"EI6"}, {kDaylight, L"EI6.9"},  {kDaylight, L"EI6.0"},
        {kUpperHex, L"4"},       {kUpperHex, L"4G"},  {kUpperHex, L"4:"},     {kUpperHex, L"0x4"},
        {kUpperHex, L"4\u0141"}, {kUpperHex, L" 41"}, {kUpperHex, L"x4"},     {kUpperHex, L"0x0x"},
    };
    for (const auto& row : kRows) {
        const FlatText text(row.text);
        EXPECT_EQ(
            flatFailure<unsigned char>([&](auto... out) { return row.codec.decode(text.data(), text.size(), out...); }),
            VOREL_ERROR_INVALID_TEXT)
            << row.codec.name << ' ' << testing::PrintToString(row.text);
    }
}

}  // namespace
