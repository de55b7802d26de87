// Binary-to-text encodings, URLs and code pages under a failing heap; and that no encoding allocates more than once.

#include <cerrno>
#include <typeinfo>

#include "LibraryState.h"
#include "allocation/Walker.h"
#include "support/Arrays.h"
#include "vorel/exceptions/ExceptionFamily.h"
#include "vorel/text/Base64.h"
#include "vorel/text/CodePages.h"
#include "vorel/text/Daylight.h"
#include "vorel/text/Hex.h"
#include "vorel/text/Url.h"

namespace {

using vorel::Array;
using vorel::BaseString;
namespace util = vorel::util;

Array<unsigned char> hundredBytes() {
    return test::arrayOf(std::vector<unsigned char>(100, 0xA5));
}

/// One string is made, with room for `capacity` units, or none, and the one that was there stays.
template <class T, class Encode>
void encodeOnce(Trial& trial, unsigned int capacity, const Trial::Messages& records, Encode&& encode) {
    BaseString<T> text(textOf<T>("old").c_str());
    trial.perform([&] { encode(text); });
    trial.expectMemoryException({{capacity, sizeof(T)}}, records);
    EXPECT_LE(trial.requests(), trial.completed() ? 1u : trial.requests());
    if (!trial.completed()) {
        EXPECT_EQ(text, textOf<T>("old").c_str());
    }
}

template <class T>
void base64Encode(Trial& trial, const wchar_t* record) {
    const Array<unsigned char> bytes = hundredBytes();
    encodeOnce<T>(trial, 256, {record}, [&](BaseString<T>& text) { util::Base64::Encode(bytes, text); });
}

void base64EncodeNarrow(Trial& trial) {
    base64Encode<char>(trial, L"Base64::Encode(char): Vorel exception rethrown");
}

void base64EncodeWide(Trial& trial) {
    base64Encode<wchar_t>(trial, L"Base64::Encode(wchar_t): Vorel exception rethrown");
}

void base64EncodeRangeNarrow(Trial& trial) {
    const Array<unsigned char> bytes = hundredBytes();
    encodeOnce<char>(trial, 256, {L"Base64::EncodeRange(CString): Vorel exception rethrown"},
                     [&](BaseString<char>& text) { util::Base64::EncodeRange(bytes.data(), 1, 99, text); });
}

void base64EncodeRangeWide(Trial& trial) {
    const Array<unsigned char> bytes = hundredBytes();
    encodeOnce<wchar_t>(trial, 256, {L"Base64::EncodeRange(String): Vorel exception rethrown"},
                        [&](BaseString<wchar_t>& text) { util::Base64::EncodeRange(bytes.data(), 1, 99, text); });
}

void daylightEncode(Trial& trial) {
    const Array<unsigned char> bytes = hundredBytes();
    encodeOnce<wchar_t>(trial, 256, {}, [&](BaseString<wchar_t>& text) { util::Daylight::Encode(bytes, text); });
}

void hexEncode(Trial& trial) {
    const Array<unsigned char> bytes = hundredBytes();
    encodeOnce<wchar_t>(trial, 256, {}, [&](BaseString<wchar_t>& text) { util::Hex::Encode(bytes, text); });
}

template <class T>
void byteArrayToHexString(Trial& trial) {
    const Array<unsigned char> bytes = hundredBytes();
    encodeOnce<T>(trial, 256, {L"vorel::util::byteArrayToHexString: Vorel exception rethrown"},
                  [&](BaseString<T>& text) { util::byteArrayToHexString(bytes, text, true); });
}

/// One array of `slots` bytes is made, or none.
template <class Decode>
void decodeOnce(Trial& trial, unsigned int count, unsigned int slots, const Trial::Messages& records, Decode&& decode) {
    Array<unsigned char> bytes;
    trial.perform([&] { decode(bytes); });
    trial.expectMemoryException({{slots, 1}}, records);
    EXPECT_EQ(trial.requests(), trial.completed() ? 1u : trial.requests());
    EXPECT_EQ(bytes.size(), trial.completed() ? count : 0u);
}

void base64Decode(Trial& trial) {
    const std::string text(400, 'Q');
    decodeOnce(trial, 300, 332, {L"Base64::Decode(char): Vorel exception rethrown"},
               [&](Array<unsigned char>& bytes) { util::Base64::Decode(text.c_str(), bytes); });
}

void base64DecodeShort(Trial& trial) {
    decodeOnce(trial, 24, 56, {L"Base64::Decode(wchar_t): Vorel exception rethrown"},
               [&](Array<unsigned char>& bytes) { util::Base64::Decode(L"QUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFB", bytes); });
}

void daylightDecode(Trial& trial) {
    const BaseString<wchar_t> text((std::wstring(400, L'E') + L"3").c_str());
    decodeOnce(trial, 300, 320, {}, [&](Array<unsigned char>& bytes) { util::Daylight::Decode(text, bytes); });
}

void hexDecode(Trial& trial) {
    const BaseString<wchar_t> text(std::wstring(400, L'E').c_str());
    decodeOnce(trial, 200, 320, {}, [&](Array<unsigned char>& bytes) { util::Hex::Decode(text, bytes); });
}

void hexStringToByteArray(Trial& trial) {
    const std::string text(400, 'E');
    decodeOnce(trial, 200, 320, {},
               [&](Array<unsigned char>& bytes) { util::hexStringToByteArray(text.c_str(), bytes); });
}

void urlOnce(Trial& trial, void (*convert)(const char*, BaseString<char>&)) {
    const std::string text(100, 'x');
    BaseString<char> output;
    trial.perform([&] { convert(text.c_str(), output); });
    EXPECT_EQ(trial.completed(), !trial.refused());
    if (trial.completed()) {
        EXPECT_EQ(trial.requests(), 1u);
        EXPECT_EQ(output, text.c_str());
    } else {
        EXPECT_EQ(trial.thrown(), typeid(vorel::MemoryException).name());
        EXPECT_TRUE(output.empty());
    }
}

void urlEncode(Trial& trial) {
    urlOnce(trial, [](const char* text, BaseString<char>& output) { util::urlEncode(text, output, true, true); });
}

void urlEncodeComponent(Trial& trial) {
    urlOnce(trial, [](const char* text, BaseString<char>& output) {
        util::urlEncodeComponent(text, output, util::UrlQueryParameter);
    });
}

void urlDecode(Trial& trial) {
    urlOnce(trial, [](const char* text, BaseString<char>& output) { util::urlDecode(text, output, 1); });
}

void urlOfWideText(Trial& trial) {
    const std::wstring text(100, L'\u00E9');
    BaseString<wchar_t> output;
    trial.perform([&] { util::urlEncode(text.c_str(), output, true, true); });
    EXPECT_EQ(trial.completed(), !trial.refused());
    if (!trial.completed()) {
        EXPECT_EQ(trial.thrown(), typeid(vorel::MemoryException).name());
    }
}

/// The map of names is filled at the first look; when that fails, the next look fills it anew.
void fillTheNames(Trial& trial) {
    vorel::detail::LibraryState* const state = vorel::detail::libraryState();
    ASSERT_NE(state, nullptr);
    {
        const heap::Unwatched buckets;  // they grow once and stay
        util::iconv_open("UTF-8", nullptr);
    }
    state->codePageNames.clear();
    int handle = 0;
    trial.perform([&] { handle = util::iconv_open("UTF-8", nullptr); });
    EXPECT_EQ(trial.completed(), !trial.refused());
    if (trial.completed()) {
        EXPECT_EQ(handle, 65001);
    } else {
        EXPECT_EQ(state->codePageNames.size(), 0u);
    }
    EXPECT_EQ(util::iconv_open("utf-8", nullptr), 65001);
    state->codePageNames.clear();
}

INSTANTIATE_TEST_SUITE_P(Encodings, FailingHeap,
                         underBothFailures({{"Base64Encode_Narrow", base64EncodeNarrow},
                                            {"Base64Encode_Wide", base64EncodeWide},
                                            {"Base64EncodeRange_Narrow", base64EncodeRangeNarrow},
                                            {"Base64EncodeRange_Wide", base64EncodeRangeWide},
                                            {"Base64Decode", base64Decode},
                                            {"Base64Decode_Short", base64DecodeShort},
                                            {"DaylightEncode", daylightEncode},
                                            {"DaylightDecode", daylightDecode},
                                            {"HexEncode", hexEncode},
                                            {"HexDecode", hexDecode},
                                            {"ByteArrayToHexString_Narrow", byteArrayToHexString<char>},
                                            {"ByteArrayToHexString_Wide", byteArrayToHexString<wchar_t>},
                                            {"HexStringToByteArray", hexStringToByteArray},
                                            {"UrlEncode", urlEncode},
                                            {"UrlEncodeComponent", urlEncodeComponent},
                                            {"UrlDecode", urlDecode},
                                            {"UrlOfWideText", urlOfWideText},
                                            {"FillTheNames", fillTheNames}}),
                         failingHeapName);

}  // namespace
