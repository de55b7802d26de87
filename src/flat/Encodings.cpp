#include "vorel/flat/Encodings.h"

#include <algorithm>

#include "algorithms/Ascii.h"
#include "flat/Call.h"
#include "flat/Input.h"
#include "flat/Output.h"
#include "flat/Utf8Units.h"
#include "vorel/core/BaseString.h"
#include "vorel/text/Base64.h"
#include "vorel/text/Daylight.h"
#include "vorel/text/Hex.h"

using vorel::Array;
using vorel::BaseString;
using vorel::flat::Bytes;
using vorel::flat::BytesOutput;
using vorel::flat::fail;
using vorel::flat::guardedCall;
using vorel::flat::TextOutput;
using vorel::flat::Utf8Output;
using vorel::flat::Utf8Text;
using vorel::flat::WideText;
using vorel::flat::Zeros;
using vorel::util::Base64;
using vorel::util::Daylight;
using vorel::util::Hex;

namespace {

/// The digits of a hexadecimal text, without a leading "0x" or "0X".
std::wstring_view withoutPrefix(std::wstring_view text) noexcept {
    const bool hasPrefix = text.size() > 1 && text[0] == '0' && vorel::algorithms::foldCase(text[1]) == 'x';
    return hasPrefix ? text.substr(2) : text;
}

bool isHexDigit(wchar_t unit) noexcept {
    return vorel::algorithms::hexDigitValue(unit) < 16;
}

}  // namespace

// ---- UTF-8 ----------------------------------------------------------------------------------------------------------

vorel_status vorel_utf8_to_utf16(const char* text, size_t length, vorel_char16* output, size_t capacity,
                                 size_t* outputLength) {
    return guardedCall(L"vorel_utf8_to_utf16", [&] {
        const TextOutput out(output, capacity, outputLength);
        const Utf8Text bytes(text, length, Zeros::Allowed);
        const auto units = vorel::flat::toUtf16(bytes.view());
        return units ? out.write(*units) : fail(VOREL_ERROR_INVALID_TEXT, L"Invalid UTF-8");
    });
}

vorel_status vorel_utf16_to_utf8(const vorel_char16* text, size_t length, char* output, size_t capacity,
                                 size_t* outputLength) {
    return guardedCall(L"vorel_utf16_to_utf8", [&] {
        const Utf8Output out(output, capacity, outputLength);
        const WideText units(text, length, Zeros::Allowed);
        return out.write(vorel::flat::toUtf8(units.view()));
    });
}

// ---- Bytes as printable text ----------------------------------------------------------------------------------------

vorel_status vorel_base64_encode(const void* bytes, size_t size, vorel_char16* output, size_t capacity,
                                 size_t* outputLength) {
    return guardedCall(L"vorel_base64_encode", [&] {
        const TextOutput out(output, capacity, outputLength);
        const Bytes input(bytes, size);
        BaseString<wchar_t> text;
        Base64::EncodeRange(input.data(), 0, input.size(), text);
        return out.write(text.view());
    });
}

vorel_status vorel_base64_decode(const vorel_char16* text, size_t length, void* output, size_t capacity,
                                 size_t* outputLength) {
    return guardedCall(L"vorel_base64_decode", VOREL_ERROR_INVALID_TEXT, [&] {
        const BytesOutput out(output, capacity, outputLength);
        const WideText encoded(text, length);
        Array<unsigned char> bytes;
        return Base64::Decode(encoded.c_str(), bytes) == 0 ? out.write(bytes)
                                                           : fail(VOREL_ERROR_INVALID_TEXT, L"The text is not Base64");
    });
}

vorel_status vorel_daylight_encode(const void* bytes, size_t size, vorel_char16* output, size_t capacity,
                                   size_t* outputLength) {
    return guardedCall(L"vorel_daylight_encode", [&] {
        const TextOutput out(output, capacity, outputLength);
        BaseString<wchar_t> text;
        Daylight::Encode(Bytes(bytes, size).array(), text);
        return out.write(text.view());
    });
}

vorel_status vorel_daylight_decode(const vorel_char16* text, size_t length, void* output, size_t capacity,
                                   size_t* outputLength) {
    return guardedCall(L"vorel_daylight_decode", VOREL_ERROR_INVALID_TEXT, [&] {
        const BytesOutput out(output, capacity, outputLength);
        const WideText encoded(text, length);
        Array<unsigned char> bytes;
        Daylight::Decode(encoded.c_str(), bytes);
        return out.write(bytes);
    });
}

vorel_status vorel_hex_encode(const void* bytes, size_t size, int32_t upperCase, vorel_char16* output, size_t capacity,
                              size_t* outputLength) {
    return guardedCall(L"vorel_hex_encode", [&] {
        const TextOutput out(output, capacity, outputLength);
        BaseString<wchar_t> text;
        vorel::util::byteArrayToHexString(Bytes(bytes, size).array(), text, upperCase != 0);
        return out.write(text.view());
    });
}

vorel_status vorel_hex_decode(const vorel_char16* text, size_t length, void* output, size_t capacity,
                              size_t* outputLength) {
    return guardedCall(L"vorel_hex_decode", [&] {
        const BytesOutput out(output, capacity, outputLength);
        const WideText encoded(text, length);
        // The decoder accepts some characters that are not digits, and it returns a byte too many for a text with a
        // prefix. So the text is checked and the prefix is removed first.
        const std::wstring_view digits = withoutPrefix(encoded.view());
        if (digits.size() % 2 != 0 || !std::all_of(digits.begin(), digits.end(), isHexDigit)) {
            return fail(VOREL_ERROR_INVALID_TEXT, L"The text is not made of pairs of hexadecimal digits");
        }
        Array<unsigned char> bytes;
        Hex::Decode(digits.data(), bytes);
        return out.write(bytes);
    });
}
