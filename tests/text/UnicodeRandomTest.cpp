// Converts random texts from and to UTF-8 with every overload, and to UTF-16 bytes and back. The texts contain many
// special bytes and units. The results of the UTF-8 conversions must equal the results of the reference codec. A UTF-8
// conversion must not read input that the reference does not read.

#include <algorithm>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/Expect.h"
#include "support/PageEdge.h"
#include "support/RandomInputs.h"
#include "support/RandomText.h"
#include "support/Utf8Reference.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/text/Unicode.h"

namespace {

using test::forEachRandomInput;
using test::RandomText;
using vorel::Array;
using vorel::BaseString;
using vorel::util::ConvertStringtoUTF16;
using vorel::util::ConvertStringtoUTF8;
using vorel::util::ConvertUTF16toString;
using vorel::util::ConvertUTF8toString;
using vorel::util::EncodeAndAppendToBuffer;

constexpr int kTexts = 200000;
constexpr std::size_t kMaxLength = 1500;
constexpr std::string_view kBytes("\0\x01\x41\x7F\x80\xBF\xC0\xC3\xDF\xE0\xED\xEF\xF0\xF1\xF4\xF8\xFC\xFD\xFE\xFF", 20);
constexpr std::wstring_view kUnits(L"\0\x01\x41\x7F\x80\xFF\x7FF\x800\x4100\xD7FF\xD800\xDBFF\xDC00\xDFFF\xE000\xFFFF",
                                   16);

/// Whether the unused slots of an array are zero. They must be zero even if the conversion wrote to them.
bool hasZerosAfterCount(const Array<unsigned char>& bytes) {
    return std::all_of(bytes.data() + bytes.size(), bytes.data() + bytes.allocated(),
                       [](unsigned char byte) { return byte == 0; });
}

/// A bound for a text of `size` elements, or no bound.
int boundOf(RandomText& random, std::size_t size) {
    return random.oneIn(3) ? -1 : static_cast<int>(random.below(size + 10));
}

/// ASCII letters with special and random elements between them. The frequency of such elements is random. Most texts
/// have fewer than 60 elements. A few have up to 1,499 elements, so that some texts are converted in several blocks.
template <class T>
std::basic_string<T> mixedText(RandomText& random, std::basic_string_view<T> interesting) {
    const std::size_t rarity = random.below(40) + 1;
    std::basic_string<T> result(random.below(random.oneIn(50) ? kMaxLength : 60), T{});
    for (T& element : result) {
        const std::size_t kind = random.below(rarity);
        if (kind == 0) {
            element = interesting[random.below(interesting.size())];
        } else if (kind == 1) {
            element = static_cast<T>(random.bits());
        } else {
            element = static_cast<T>('a' + random.below(26));
        }
    }
    return result;
}

/// Disables logging, because many conversions fail, and the tests do not check the log.
class UnicodeRandom : public testing::Test {
protected:
    UnicodeRandom() { vorel::Exception::DisableThreadErrorLogging(true); }
    ~UnicodeRandom() override { vorel::Exception::DisableThreadErrorLogging(false); }
};

void expectStringForms(const char* input, int length, const test::DecodedText& expected) {
    const std::size_t kept = expected.error ? expected.units.size() / 450 * 450 : expected.units.size();
    const std::wstring_view units = std::wstring_view(expected.units).substr(0, kept);
    static BaseString<wchar_t> output;  // reused, so that the buffer has various sizes
    ASSERT_EQ(ConvertUTF8toString(output, reinterpret_cast<const unsigned char*>(input), length, false),
              !expected.error.has_value());
    ASSERT_EQ(output.view(), units);
    BaseString<wchar_t> fresh;
    ASSERT_EQ(ConvertUTF8toString(fresh, input, length, false), !expected.error.has_value());
    ASSERT_EQ(fresh.view(), units);
}

void expectBufferForm(const char* input, int length, const test::DecodedText& expected, std::size_t size) {
    constexpr wchar_t kGuard = L'\x5A5A';
    static wchar_t buffer[kMaxLength + 20];
    std::fill(std::begin(buffer), std::end(buffer), kGuard);
    std::size_t used = 0;
    std::size_t characters = 0;
    while (characters < expected.unitsOf.size() && used + expected.unitsOf[characters] < size) {
        used += expected.unitsOf[characters++];
    }
    const bool done = characters < expected.unitsOf.size() || !expected.error;
    ASSERT_EQ(ConvertUTF8toString(buffer, static_cast<unsigned int>(size),
                                  reinterpret_cast<const unsigned char*>(input), length, false),
              done);
    ASSERT_EQ(std::wstring_view(buffer, used), std::wstring_view(expected.units).substr(0, used));
    ASSERT_EQ(buffer[used], done ? L'\0' : kGuard);
    ASSERT_TRUE(std::all_of(buffer + used + 1, std::end(buffer), [](wchar_t unit) { return unit == kGuard; }));
}

TEST_F(UnicodeRandom, DecodingAgreesWithTheReference) {
    test::PageEdge<char> edge(kMaxLength + 20);
    int count = 0;
    forEachRandomInput(kTexts, [&](RandomText& random) {
        const std::string text = mixedText(random, kBytes) + std::string(6, '\0');
        const int length = boundOf(random, text.size() - 6);
        const test::DecodedText expected = test::decodeUtf8(text, length);
        SCOPED_TRACE(testing::Message() << "bound " << length);
        const char* input = edge.placeAtEnd(std::string_view(text).substr(0, expected.bytesRead));
        expectStringForms(input, length, expected);
        expectBufferForm(input, length, expected, 1 + random.below(expected.units.size() + 4));
        if (expected.error && ++count % 20 == 0) {
            // This call gets the whole text, because the hex dump in the message contains all bytes up to the next
            // zero, even beyond the bound.
            BaseString<wchar_t> output;
            test::expectThrows<vorel::Exception>(
                [&] { ConvertUTF8toString(output, reinterpret_cast<const unsigned char*>(text.data()), length, true); },
                {L"Error converting UTF-8 character (" + test::hexDump(text, *expected.error) + L")",
                 L"vorel::util::ConvertUTF8toString: Vorel exception rethrown"});
        }
    });
}

TEST_F(UnicodeRandom, EncodingAgreesWithTheReference) {
    test::PageEdge<wchar_t> edge(kMaxLength + 20);
    Array<unsigned char> reused;
    forEachRandomInput(kTexts, [&](RandomText& random) {
        const std::wstring text = mixedText(random, kUnits) + std::wstring(2, L'\0');
        const int length = boundOf(random, text.size() - 2);
        const bool appendZero = random.oneIn(2);
        const test::EncodedText expected = test::encodeUtf16(text, length);
        SCOPED_TRACE(testing::Message() << "bound " << length);
        const wchar_t* input = edge.placeAtEnd(std::wstring_view(text).substr(0, expected.unitsRead));

        ConvertStringtoUTF8(input, reused, appendZero, length);
        const auto* bytes = reinterpret_cast<const char*>(reused.data());
        ASSERT_EQ(std::string_view(bytes, reused.size()), expected.bytes + std::string(appendZero ? 1 : 0, '\0'));
        ASSERT_TRUE(hasZerosAfterCount(reused));
        BaseString<char> string;
        ConvertStringtoUTF8(input, string, length);
        ASSERT_EQ(string.view(), expected.bytes);
    });
}

TEST_F(UnicodeRandom, EncodingOfSingleUnitsAgreesWithTheReference) {
    test::PageEdge<wchar_t> edge(kMaxLength + 20);
    Array<unsigned char> output;
    std::string expected;
    int count = 0;
    forEachRandomInput(kTexts, [&](RandomText& random) {
        const std::wstring text = mixedText(random, kUnits);
        const std::wstring terminated = text.substr(0, text.find(L'\0')) + L'\0';
        EncodeAndAppendToBuffer(edge.placeAtEnd(terminated), output);
        expected += test::encodeUnits(terminated);
        ASSERT_EQ(output.size(), expected.size());
        ASSERT_TRUE(hasZerosAfterCount(output));
        if (++count % 8 == 0) {
            ASSERT_EQ(std::string_view(reinterpret_cast<const char*>(output.data()), output.size()), expected);
            expected.clear();
            output.setCount(0);
        }
    });
}

TEST_F(UnicodeRandom, ReadingUtf16ReversesWritingIt) {
    forEachRandomInput(kTexts / 4, [](RandomText& random) {
        const std::wstring text = mixedText(random, kUnits);
        const std::wstring whole = text.substr(0, text.find(L'\0'));
        Array<unsigned char> bytes;
        ConvertStringtoUTF16(whole.c_str(), bytes, true, false, -1);
        BaseString<wchar_t> back;
        ConvertUTF16toString(back, bytes.data(), static_cast<int>(bytes.size()));
        ASSERT_EQ(back.view(), whole);
    });
}

}  // namespace
