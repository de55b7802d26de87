// Binary-to-text encodings, URLs and code pages with a failing heap. A binary-to-text encoding allocates
// memory at most once.

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

/// Expects at most one allocation, of `capacity` units. If the allocation fails, the output keeps its text.
template <class T, class Encode>
void encodeOnce(Attempt& attempt, unsigned int capacity, const Attempt::Messages& records, Encode&& encode) {
    BaseString<T> text(textOf<T>("old").c_str());
    attempt.perform([&] { encode(text); });
    attempt.expectMemoryException({{capacity, sizeof(T)}}, records);
    EXPECT_LE(attempt.requests(), attempt.completed() ? 1u : attempt.requests());
    if (!attempt.completed()) {
        EXPECT_EQ(text, textOf<T>("old").c_str());
    }
}

template <class T>
void base64Encode(Attempt& attempt, const wchar_t* record) {
    const Array<unsigned char> bytes = hundredBytes();
    encodeOnce<T>(attempt, 256, {record}, [&](BaseString<T>& text) { util::Base64::Encode(bytes, text); });
}

void base64EncodeNarrow(Attempt& attempt) {
    base64Encode<char>(attempt, L"Base64::Encode(char): Vorel exception rethrown");
}

void base64EncodeWide(Attempt& attempt) {
    base64Encode<wchar_t>(attempt, L"Base64::Encode(wchar_t): Vorel exception rethrown");
}

void base64EncodeRangeNarrow(Attempt& attempt) {
    const Array<unsigned char> bytes = hundredBytes();
    encodeOnce<char>(attempt, 256, {L"Base64::EncodeRange(CString): Vorel exception rethrown"},
                     [&](BaseString<char>& text) { util::Base64::EncodeRange(bytes.data(), 1, 99, text); });
}

void base64EncodeRangeWide(Attempt& attempt) {
    const Array<unsigned char> bytes = hundredBytes();
    encodeOnce<wchar_t>(attempt, 256, {L"Base64::EncodeRange(String): Vorel exception rethrown"},
                        [&](BaseString<wchar_t>& text) { util::Base64::EncodeRange(bytes.data(), 1, 99, text); });
}

void daylightEncode(Attempt& attempt) {
    const Array<unsigned char> bytes = hundredBytes();
    encodeOnce<wchar_t>(attempt, 256, {}, [&](BaseString<wchar_t>& text) { util::Daylight::Encode(bytes, text); });
}

void hexEncode(Attempt& attempt) {
    const Array<unsigned char> bytes = hundredBytes();
    encodeOnce<wchar_t>(attempt, 256, {}, [&](BaseString<wchar_t>& text) { util::Hex::Encode(bytes, text); });
}

template <class T>
void byteArrayToHexString(Attempt& attempt) {
    const Array<unsigned char> bytes = hundredBytes();
    encodeOnce<T>(attempt, 256, {L"vorel::util::byteArrayToHexString: Vorel exception rethrown"},
                  [&](BaseString<T>& text) { util::byteArrayToHexString(bytes, text, true); });
}

/// Expects one allocation, of an array with `slots` bytes. If the allocation fails, the output stays empty.
template <class Decode>
void decodeOnce(Attempt& attempt, unsigned int count, unsigned int slots, const Attempt::Messages& records,
                Decode&& decode) {
    Array<unsigned char> bytes;
    attempt.perform([&] { decode(bytes); });
    attempt.expectMemoryException({{slots, 1}}, records);
    EXPECT_EQ(attempt.requests(), attempt.completed() ? 1u : attempt.requests());
    EXPECT_EQ(bytes.size(), attempt.completed() ? count : 0u);
}

void base64Decode(Attempt& attempt) {
    const std::string text(400, 'Q');
    decodeOnce(attempt, 300, 332, {L"Base64::Decode(char): Vorel exception rethrown"},
               [&](Array<unsigned char>& bytes) { util::Base64::Decode(text.c_str(), bytes); });
}

void base64DecodeShort(Attempt& attempt) {
    decodeOnce(attempt, 24, 56, {L"Base64::Decode(wchar_t): Vorel exception rethrown"},
               [&](Array<unsigned char>& bytes) { util::Base64::Decode(L"QUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFB", bytes); });
}

/// A text without a complete group of characters is decoded to no bytes, so no memory is needed.
void base64DecodeNothing(Attempt& attempt) {
    Array<unsigned char> bytes;
    int statusOfEmpty = 1;
    int statusOfInvalid = 0;
    attempt.perform([&] {
        statusOfEmpty = util::Base64::Decode("", bytes);
        statusOfInvalid = util::Base64::Decode(L"*", bytes);
    });
    attempt.expectCompleted();
    EXPECT_EQ(attempt.requests(), 0u);
    EXPECT_EQ(statusOfEmpty, 0);
    EXPECT_EQ(statusOfInvalid, 1);
}

void daylightDecode(Attempt& attempt) {
    const BaseString<wchar_t> text((std::wstring(400, L'E') + L"3").c_str());
    decodeOnce(attempt, 300, 320, {}, [&](Array<unsigned char>& bytes) { util::Daylight::Decode(text, bytes); });
}

void hexDecode(Attempt& attempt) {
    const BaseString<wchar_t> text(std::wstring(400, L'E').c_str());
    decodeOnce(attempt, 200, 320, {}, [&](Array<unsigned char>& bytes) { util::Hex::Decode(text, bytes); });
}

template <class T, bool Counted>
void hexStringToByteArray(Attempt& attempt) {
    const std::basic_string<T> text(400, T{'E'});
    decodeOnce(attempt, 200, 320, {}, [&](Array<unsigned char>& bytes) {
        if constexpr (Counted) {
            util::hexStringToByteArray(text.c_str(), 400, bytes);
        } else {
            util::hexStringToByteArray(text.c_str(), bytes);
        }
    });
}

/// A conversion for URLs. The tests apply it to 100 units that it does not change.
template <class T>
using UrlConversion = void (*)(const T* text, BaseString<T>& output);

template <class T>
void urlOnce(Attempt& attempt, UrlConversion<T> convert) {
    const std::basic_string<T> text(100, T{'x'});
    BaseString<T> output;
    attempt.perform([&] { convert(text.c_str(), output); });
    attempt.expectCompletedOrMemoryException();
    if (attempt.completed()) {
        EXPECT_EQ(output, text.c_str());
    } else {
        EXPECT_TRUE(output.empty());
    }
    if (sizeof(T) == 1 && attempt.completed()) {
        EXPECT_EQ(attempt.requests(), 1u) << "narrow text is measured first, so the output grows once";
    }
}

template <class T>
void addUrlConversions(std::vector<Operation>& all, const std::string& width) {
    const auto add = [&](const std::string& name, UrlConversion<T> convert) {
        all.push_back({name + width, [convert](Attempt& attempt) { urlOnce<T>(attempt, convert); }});
    };
    add("UrlEncode", [](const T* text, BaseString<T>& output) { util::urlEncode(text, output, true, true); });
    add("UrlEncode_Returned", [](const T* text, BaseString<T>& output) { output = util::urlEncode(text, true, true); });
    add("UrlEncodeComponent",
        [](const T* text, BaseString<T>& output) { util::urlEncodeComponent(text, output, util::UrlQueryParameter); });
    add("UrlEncodeComponent_Returned",
        [](const T* text, BaseString<T>& output) { output = util::urlEncodeComponent(text, util::UrlQueryParameter); });
    add("UrlDecode", [](const T* text, BaseString<T>& output) { util::urlDecode(text, output, 1); });
    add("UrlDecode_Returned", [](const T* text, BaseString<T>& output) { output = util::urlDecode(text); });
}

/// Escapes that are not valid UTF-8. The exception reports the invalid text, or the lack of memory.
void urlDecodeInvalidText(Attempt& attempt) {
    BaseString<wchar_t> output(L"old");
    attempt.perform([&] { util::urlDecode(L"abc%FF", output, 0); });
    EXPECT_FALSE(attempt.completed());
    const bool isMemory = attempt.thrown() == typeid(vorel::MemoryException).name();
    EXPECT_TRUE(attempt.thrown() == typeid(vorel::Exception).name() || (attempt.allocationFailed() && isMemory))
        << attempt.thrown();
    const heap::Unwatched unwatched;
    ASSERT_FALSE(attempt.logged().empty());
    EXPECT_TRUE(attempt.logged()[0].starts_with(isMemory ? "Vorel Error: No more memory is available: "
                                                         : "Vorel Error: Error converting UTF-8 character ("))
        << attempt.logged()[0];
}

void urlOfWideText(Attempt& attempt) {
    const std::wstring text(100, L'\u00E9');
    BaseString<wchar_t> output;
    attempt.perform([&] { util::urlEncode(text.c_str(), output, true, true); });
    attempt.expectCompletedOrMemoryException();
}

/// The first lookup fills the map of names. If memory runs out while the map is filled, the next lookup fills the map.
void fillNames(Attempt& attempt) {
    vorel::detail::CodePageState* const state = vorel::detail::codePageState.get();
    ASSERT_NE(state, nullptr);
    {
        const heap::Unwatched buckets;  // the map keeps the buckets that it allocates here
        util::iconv_open("UTF-8", nullptr);
    }
    state->codePageNames.clear();
    int handle = 0;
    attempt.perform([&] { handle = util::iconv_open("UTF-8", nullptr); });
    attempt.expectException(typeid(vorel::Exception).name(), {L"iconv::FillCodeMap: Severe error thrown",
                                                              L"iconv::iconv_open: Vorel exception rethrown"});
    if (attempt.completed()) {
        EXPECT_EQ(handle, 65001);
    } else {
        EXPECT_EQ(state->codePageNames.size(), 0u);
    }
    EXPECT_EQ(util::iconv_open("utf-8", nullptr), 65001);
    state->codePageNames.clear();
}

/// After the map of names is filled, converters allocate nothing, because the system writes its results to the
/// caller's buffers.
void convertByCodePage(Attempt& attempt) {
    util::iconv_open("UTF-8", nullptr);
    char bytes[8] = {};
    wchar_t units[8] = {};
    bool defaultUsed = true;
    attempt.perform([&] {
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
    attempt.expectCompleted();
    EXPECT_EQ(attempt.requests(), 0u);
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
                                  {"Base64Decode_ToNoBytes", base64DecodeNothing},
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
                                  {"UrlEncode_OfNonAsciiWideText", urlOfWideText},
                                  {"UrlDecode_OfInvalidText", urlDecodeInvalidText},
                                  {"FillCodePageNames", fillNames},
                                  {"ConvertByCodePage", convertByCodePage}};
    addUrlConversions<char>(all, "_Narrow");
    addUrlConversions<wchar_t>(all, "_Wide");
    return all;
}

INSTANTIATE_TEST_SUITE_P(Encodings, FailingHeap, underBothFailures(operations()), failingHeapName);

}  // namespace
