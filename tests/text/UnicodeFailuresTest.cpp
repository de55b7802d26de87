// The messages of a failed conversion: the failure, the record of the function and, for narrow text, the input.

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Expect.h"
#include "support/TemporaryLog.h"
#include "support/Utf8Reference.h"
#include "vorel/text/Unicode.h"

namespace {

using vorel::BaseString;
using vorel::Exception;
using vorel::util::ConvertUTF16toString;
using vorel::util::ConvertUTF8toString;

const std::wstring kUtf8Record = L"vorel::util::ConvertUTF8toString: Vorel exception rethrown";
const std::wstring kUtf16Record = L"vorel::util::ConvertUTF16toString: Vorel exception rethrown";
const std::wstring kNoLength = L"A string length needs to be specified for UTF-16 to UCS conversion";

const unsigned char* bytesOf(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

/// A narrow message in the form that an exception stores: converted by the C runtime, or a fixed text if the runtime
/// cannot convert it.
std::wstring widened(const std::string& message) {
    std::wstring wide(message.size() + 1, L'\0');
    const std::size_t units = std::mbstowcs(wide.data(), message.c_str(), wide.size());
    return units == static_cast<std::size_t>(-1) ? L"Error in text conversion" : wide.substr(0, units);
}

struct BadText {
    std::string bytes;
    int length;
    std::wstring dump;
    const char* why;
};

const std::array<BadText, 10>& badTexts() {
    static const std::array<BadText, 10> kTexts = {{
        {std::string("\xFF\x28\0", 3), -1, L"Hex string: 28", "one byte after the invalid byte"},
        {std::string("\x80\0", 2), -1, L"", "no byte after the invalid byte"},
        {std::string("\x80\0AB\0", 5), -1, L"", "a zero after the invalid byte ends the dump"},
        {std::string("\xF1\x80\x80\x80\0", 5), -1, L"Hex string: 80-80-80", "unsupported lead byte"},
        {std::string("ab\xFFzZ09\x0A\xFF\0", 9), -1, L"Hex string: 7A-5A-30-39-0A-FF",
         "two upper-case digits for each byte"},
        {std::string("\xF3"
                     "AB\0CD\0",
                     7),
         -1, L"Hex string: 41-42", "a zero in the middle ends the dump"},
        {std::string("\xF5"
                     "ABCD\0",
                     6),
         1, L"Hex string: 41-42-43-44", "the dump includes bytes beyond the bound"},
        {std::string("\xC3\xA9\xBF"
                     "A\0",
                     5),
         3, L"Hex string: 41", "an invalid byte after a character"},
        {std::string("\xC3\0\xBF"
                     "A\0",
                     5),
         -1, L"Hex string: 41", "an invalid byte after a zero that is decoded as a trailing byte"},
        {std::string("\x9F") + std::string(100, '\x01') + '\0', -1,
         [] {
             std::wstring dump = L"Hex string: 01";
             for (int byte = 1; byte < 100; ++byte) {
                 dump += L"-01";
             }
             return dump;
         }(),
         "the dump is not limited in length"},
    }};
    return kTexts;
}

std::wstring utf8Message(const std::wstring& dump) {
    return L"Error converting UTF-8 character (" + dump + L")";
}

TEST(UnicodeFailures, Utf8_MessageDumpsTheBytesAfterTheInvalidByte) {
    for (const BadText& text : badTexts()) {
        SCOPED_TRACE(text.why);
        const std::vector<std::wstring> messages = {utf8Message(text.dump), kUtf8Record};
        EXPECT_EQ(text.dump, test::hexDump(text.bytes, *test::decodeUtf8(text.bytes, text.length).error));
        BaseString<wchar_t> output;
        test::expectThrows<Exception>([&] { ConvertUTF8toString(output, bytesOf(text.bytes), text.length, true); },
                                      messages);
        wchar_t buffer[200];
        test::expectThrows<Exception>([&] { ConvertUTF8toString(buffer, 200, bytesOf(text.bytes), text.length, true); },
                                      messages);
    }
}

TEST(UnicodeFailures, Utf8_AddsNarrowInputToTheMessages) {
    for (const BadText& text : badTexts()) {
        SCOPED_TRACE(text.why);
        BaseString<wchar_t> output;
        test::expectThrows<Exception>(
            [&] { ConvertUTF8toString(output, text.bytes.c_str(), text.length, true); },
            {utf8Message(text.dump), kUtf8Record,
             widened("Failed to convert utf8 text to String: " + text.bytes.substr(0, text.bytes.find('\0')))});
    }
}

TEST(UnicodeFailures, Utf8_FailureThatDoesNotThrowLogsNothing) {
    const test::TemporaryLog log;
    for (const BadText& text : badTexts()) {
        BaseString<wchar_t> output;
        wchar_t buffer[200];
        EXPECT_FALSE(ConvertUTF8toString(output, bytesOf(text.bytes), text.length, false)) << text.why;
        EXPECT_FALSE(ConvertUTF8toString(output, text.bytes.c_str(), text.length, false)) << text.why;
        EXPECT_FALSE(ConvertUTF8toString(buffer, 200, bytesOf(text.bytes), text.length, false)) << text.why;
    }
    EXPECT_FALSE(log.exists());
}

TEST(UnicodeFailures, Utf8_ThrowingLeavesUnitsBeforeTheInvalidByteInTheOutput) {
    const std::string text = std::string(700, 'a') + "\xFF";
    BaseString<wchar_t> output;
    EXPECT_THROW(ConvertUTF8toString(output, text.c_str(), -1, true), Exception);
    EXPECT_EQ(output.view(), std::wstring(450, L'a'));

    std::wstring buffer(8, L'\x5A5A');
    EXPECT_THROW(ConvertUTF8toString(buffer.data(), 8, bytesOf("abc\xFF"), -1, true), Exception);
    EXPECT_EQ(buffer, L"abc" + std::wstring(5, L'\x5A5A'));
}

TEST(UnicodeFailures, Utf16_RejectsANegativeLength) {
    const std::string text("A\0B\0\0\0", 6);
    for (const int length : {-1, -2, -2147483647 - 1}) {
        BaseString<wchar_t> output(L"before");
        test::expectThrows<Exception>([&] { ConvertUTF16toString(output, bytesOf(text), length); },
                                      {kNoLength, kUtf16Record});
        EXPECT_TRUE(output.empty());
        test::expectThrows<Exception>([&] { ConvertUTF16toString(output, text.data(), length); },
                                      {kNoLength, kUtf16Record, L"Failed to convert UTF-16 text to String: A"});
    }
}

TEST(UnicodeFailures, EveryMessageIsLogged) {
    const test::TemporaryLog log;
    BaseString<wchar_t> output;
    EXPECT_THROW(ConvertUTF8toString(output,
                                     "\xFF"
                                     "abc",
                                     -1, true),
                 Exception);
    const std::vector<std::string> texts = log.messages();
    ASSERT_EQ(texts.size(), 3u);
    EXPECT_EQ(texts[0], "Vorel Error: Error converting UTF-8 character (Hex string: 61-62-63)");
    EXPECT_EQ(texts[1], "Vorel Error: vorel::util::ConvertUTF8toString: Vorel exception rethrown");
    EXPECT_TRUE(texts[2].starts_with("Vorel Error: Failed to convert utf8 text to String: "));
}

}  // namespace
