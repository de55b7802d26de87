// Binary-to-text encodings, URLs and code pages under a failing heap; and that no encoding allocates more than once.

#include <cerrno>
#include <typeinfo>

#include "allocation/Walker.h"
#include "support/Arrays.h"
#include "text/CodePageState.h"
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

template <class T, bool Counted>
void hexStringToByteArray(Trial& trial) {
    const std::basic_string<T> text(400, T{'E'});
    decodeOnce(trial, 200, 320, {}, [&](Array<unsigned char>& bytes) {
        if constexpr (Counted) {
            util::hexStringToByteArray(text.c_str(), 400, bytes);
        } else {
            util::hexStringToByteArray(text.c_str(), bytes);
        }
    });
}

/// A conversion for URLs of 100 units that stay as they are.
template <class T>
using UrlConversion = void (*)(const T* text, BaseString<T>& output);

template <class T>
void urlOnce(Trial& trial, UrlConversion<T> convert) {
    const std::basic_string<T> text(100, T{'x'});
    BaseString<T> output;
    trial.perform([&] { convert(text.c_str(), output); });
    trial.expectMemoryOrDone();
    if (trial.completed()) {
        EXPECT_EQ(output, text.c_str());
    } else {
        EXPECT_TRUE(output.empty());
    }
    if (sizeof(T) == 1 && trial.completed()) {
        EXPECT_EQ(trial.requests(), 1u) << "narrow text is measured first";
    }
}

template <class T>
void addUrlConversions(std::vector<Operation>& all, const std::string& width) {
    const auto add = [&](const std::string& name, UrlConversion<T> convert) {
        all.push_back({name + width, [convert](Trial& trial) { urlOnce<T>(trial, convert); }});
    };
    add("UrlEncode", [](const T* text, BaseString<T>& output) { util::urlEncode(text, output, true, true); });
    add("UrlEncode_Anew", [](const T* text, BaseString<T>& output) { output = util::urlEncode(text, true, true); });
    add("UrlEncodeComponent",
        [](const T* text, BaseString<T>& output) { util::urlEncodeComponent(text, output, util::UrlQueryParameter); });
    add("UrlEncodeComponent_Anew",
        [](const T* text, BaseString<T>& output) { output = util::urlEncodeComponent(text, util::UrlQueryParameter); });
    add("UrlDecode", [](const T* text, BaseString<T>& output) { util::urlDecode(text, output, 1); });
    add("UrlDecode_Anew", [](const T* text, BaseString<T>& output) { output = util::urlDecode(text); });
}

/// Escapes that are no UTF-8: the failure is the one of the text, or of memory.
void urlDecodeWrongText(Trial& trial) {
    BaseString<wchar_t> output(L"old");
    trial.perform([&] { util::urlDecode(L"abc%FF", output, 0); });
    EXPECT_FALSE(trial.completed());
    const bool isMemory = trial.thrown() == typeid(vorel::MemoryException).name();
    EXPECT_TRUE(trial.thrown() == typeid(vorel::Exception).name() || (trial.refused() && isMemory)) << trial.thrown();
    const heap::Unwatched unwatched;
    ASSERT_FALSE(trial.logged().empty());
    EXPECT_TRUE(trial.logged()[0].starts_with(isMemory ? "Vorel Error: No more memory is available: "
                                                       : "Vorel Error: Error converting UTF-8 character ("))
        << trial.logged()[0];
}

void urlOfWideText(Trial& trial) {
    const std::wstring text(100, L'\u00E9');
    BaseString<wchar_t> output;
    trial.perform([&] { util::urlEncode(text.c_str(), output, true, true); });
    trial.expectMemoryOrDone();
}

/// The map of names is filled at the first look; when that fails, the next look fills it anew.
void fillTheNames(Trial& trial) {
    vorel::detail::CodePageState* const state = vorel::detail::codePageState.get();
    ASSERT_NE(state, nullptr);
    {
        const heap::Unwatched buckets;  // they grow once and stay
        util::iconv_open("UTF-8", nullptr);
    }
    state->codePageNames.clear();
    int handle = 0;
    trial.perform([&] { handle = util::iconv_open("UTF-8", nullptr); });
    trial.expectException(typeid(vorel::Exception).name(),
                          {L"iconv::FillCodeMap: Severe error thrown", L"iconv::iconv_open: Vorel exception rethrown"});
    if (trial.completed()) {
        EXPECT_EQ(handle, 65001);
    } else {
        EXPECT_EQ(state->codePageNames.size(), 0u);
    }
    EXPECT_EQ(util::iconv_open("utf-8", nullptr), 65001);
    state->codePageNames.clear();
}

/// Converters, once the names are known: the system converts into the caller's storage.
void convertByCodePage(Trial& trial) {
    util::iconv_open("UTF-8", nullptr);
    char bytes[8] = {};
    wchar_t units[8] = {};
    bool defaultUsed = true;
    trial.perform([&] {
        const int toUtf8 = util::iconv_open("UTF-8", nullptr);
        const int fromUtf8 = util::iconv_open(nullptr, "UTF-8");
        util::iconv_from_wc(util::iconv_open_codepage(1252, 0), L"abc", 4, bytes, sizeof bytes, &defaultUsed);
        util::iconv_from_wc(toUtf8, L"abc", 4, bytes, sizeof bytes, nullptr);
        util::iconv_to_wc(fromUtf8, bytes, 4, units, 8);
        util::iconv_getCodePage("utf-8");
        util::iconv_isCheckDefaultValid(1252);
        util::iconv_reset(toUtf8);
        util::iconv_close(toUtf8);
    });
    trial.expectCompleted();
    EXPECT_EQ(trial.requests(), 0u);
    EXPECT_STREQ(units, L"abc");
    EXPECT_FALSE(defaultUsed);
}

std::vector<Operation> operations() {
    std::vector<Operation> all = {{"Base64Encode_Narrow", base64EncodeNarrow},
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
                                  {"HexStringToByteArray_Narrow", hexStringToByteArray<char, false>},
                                  {"HexStringToByteArray_NarrowCounted", hexStringToByteArray<char, true>},
                                  {"HexStringToByteArray_Wide", hexStringToByteArray<wchar_t, false>},
                                  {"HexStringToByteArray_WideCounted", hexStringToByteArray<wchar_t, true>},
                                  {"UrlOfWideText", urlOfWideText},
                                  {"UrlDecode_OfAWrongText", urlDecodeWrongText},
                                  {"FillTheNames", fillTheNames},
                                  {"ConvertByCodePage", convertByCodePage}};
    addUrlConversions<char>(all, "_Narrow");
    addUrlConversions<wchar_t>(all, "_Wide");
    return all;
}

INSTANTIATE_TEST_SUITE_P(Encodings, FailingHeap, underBothFailures(operations()), failingHeapName);

}  // namespace
