#include "vorel/flat/Numbers.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "algorithms/Ascii.h"
#include "flat/Call.h"
#include "flat/Input.h"
#include "flat/LastError.h"
#include "flat/Output.h"
#include "vorel/values/BooleanParsing.h"
#include "vorel/values/NumberFormatting.h"
#include "vorel/values/NumberParsing.h"

using vorel::flat::ArgumentError;
using vorel::flat::fail;
using vorel::flat::guardedCall;
using vorel::flat::notNull;
using vorel::flat::sameValue;
using vorel::flat::TextOutput;
using vorel::flat::WideText;

namespace {

namespace util = vorel::util;

static_assert(sameValue(VOREL_FORMAT_DEFAULT, util::FO_Default) && sameValue(VOREL_FORMAT_JSON, util::FO_JSON));

/// Reads the value at the beginning of `text` with `scan` and sets `*used` to the number of units that `scan` has read,
/// including white space.
template <class Value, class Scan>
vorel_status scanText(const wchar_t* function, const vorel_char16* text, size_t length, Value* value, size_t* used,
                      Scan scan) {
    return guardedCall(function, [&] {
        Value& result = notNull(value);
        size_t& units = notNull(used);
        const WideText input(text, length);
        wchar_t* end = nullptr;
        result = static_cast<Value>(scan(input.c_str(), &end));
        units = static_cast<size_t>(end - input.c_str());
        return vorel_status{VOREL_OK};
    });
}

/// Reads a whole text with `scan`. Fails with `message` unless `isValue(text)` is true.
template <class Value, class IsValue, class Scan>
vorel_status parseText(const wchar_t* function, const vorel_char16* text, size_t length, Value* value,
                       const wchar_t* message, IsValue isValue, Scan scan) {
    return guardedCall(function, [&] {
        Value& result = notNull(value);
        const WideText input(text, length);
        if (!isValue(input)) {
            return fail(VOREL_ERROR_INVALID_TEXT, message);
        }
        wchar_t* end = nullptr;
        result = static_cast<Value>(scan(input.c_str(), &end));
        return vorel_status{VOREL_OK};
    });
}

constexpr wchar_t kNotInteger[] = L"The text is not an integer";
constexpr wchar_t kNotUnsigned[] = L"The text is not an unsigned integer";

bool isInteger(const WideText& text) {
    return util::canCoerceToInteger(text.c_str(), true);
}

bool isUnsigned(const WideText& text) {
    return isInteger(text) && text.view().find(L'-') == std::wstring_view::npos;
}

bool isDouble(const WideText& text) {
    return util::canCoerceToDouble(text.c_str(), true);
}

bool isBoolean(const WideText& text) {
    return util::canCoerceToBoolean(text.c_str());
}

/// Whether the text is one to eight hexadecimal digits with optional white space around them.
bool isHex(const WideText& text) {
    const auto isSpace = [](wchar_t unit) { return vorel::algorithms::isSpace(unit); };
    const std::wstring_view all = text.view();
    wchar_t* end = nullptr;
    util::hexToInt(text.c_str(), &end);
    return end == all.data() + all.size() && !std::all_of(all.begin(), all.end(), isSpace);
}

// Each function object selects the wide overload.
constexpr auto toInt32 = [](const wchar_t* text, wchar_t** end) { return util::stringToInt(text, end); };
constexpr auto toUInt32 = [](const wchar_t* text, wchar_t** end) { return util::stringToUInt(text, end); };
constexpr auto toInt64 = [](const wchar_t* text, wchar_t** end) { return util::stringToInt64(text, end); };
constexpr auto toUInt64 = [](const wchar_t* text, wchar_t** end) { return util::stringToUInt64(text, end); };
constexpr auto toHex = [](const wchar_t* text, wchar_t** end) { return util::hexToInt(text, end); };
constexpr auto toDouble = [](const wchar_t* text, wchar_t** end) { return util::stringToDouble(text, end); };
constexpr auto toBoolean = [](const wchar_t* text, wchar_t** end) { return util::stringToBoolean(text, end); };

/// Calls `format(buffer, size)` and copies the text in the buffer to the output. The buffer is large enough for the
/// longest number and its terminator.
template <class Format>
vorel_status formatNumber(const wchar_t* function, vorel_char16* output, size_t capacity, size_t* outputLength,
                          Format format) {
    return guardedCall(function, [&] {
        const TextOutput out(output, capacity, outputLength);
        wchar_t buffer[64];
        return out.write(std::wstring_view(format(buffer, std::size(buffer))));
    });
}

}  // namespace

// ---- Whole texts ----------------------------------------------------------------------------------------------------

vorel_status vorel_parse_int32(const vorel_char16* text, size_t length, int32_t* value) {
    return parseText(L"vorel_parse_int32", text, length, value, kNotInteger, isInteger, toInt32);
}

vorel_status vorel_parse_uint32(const vorel_char16* text, size_t length, uint32_t* value) {
    return parseText(L"vorel_parse_uint32", text, length, value, kNotUnsigned, isUnsigned, toUInt32);
}

vorel_status vorel_parse_int64(const vorel_char16* text, size_t length, int64_t* value) {
    return parseText(L"vorel_parse_int64", text, length, value, kNotInteger, isInteger, toInt64);
}

vorel_status vorel_parse_uint64(const vorel_char16* text, size_t length, uint64_t* value) {
    return parseText(L"vorel_parse_uint64", text, length, value, kNotUnsigned, isUnsigned, toUInt64);
}

vorel_status vorel_parse_hex32(const vorel_char16* text, size_t length, uint32_t* value) {
    return parseText(L"vorel_parse_hex32", text, length, value, L"The text is not one to eight hexadecimal digits",
                     isHex, toHex);
}

vorel_status vorel_parse_double(const vorel_char16* text, size_t length, double* value) {
    return parseText(L"vorel_parse_double", text, length, value, L"The text is not a number", isDouble, toDouble);
}

vorel_status vorel_parse_boolean(const vorel_char16* text, size_t length, int32_t* value) {
    return parseText(L"vorel_parse_boolean", text, length, value, L"The text is not a Boolean value", isBoolean,
                     toBoolean);
}

// ---- Values at the beginning of texts -------------------------------------------------------------------------------

vorel_status vorel_scan_int32(const vorel_char16* text, size_t length, int32_t* value, size_t* used) {
    return scanText(L"vorel_scan_int32", text, length, value, used, toInt32);
}

vorel_status vorel_scan_uint32(const vorel_char16* text, size_t length, uint32_t* value, size_t* used) {
    return scanText(L"vorel_scan_uint32", text, length, value, used, toUInt32);
}

vorel_status vorel_scan_int64(const vorel_char16* text, size_t length, int64_t* value, size_t* used) {
    return scanText(L"vorel_scan_int64", text, length, value, used, toInt64);
}

vorel_status vorel_scan_uint64(const vorel_char16* text, size_t length, uint64_t* value, size_t* used) {
    return scanText(L"vorel_scan_uint64", text, length, value, used, toUInt64);
}

vorel_status vorel_scan_hex32(const vorel_char16* text, size_t length, uint32_t* value, size_t* used) {
    return scanText(L"vorel_scan_hex32", text, length, value, used, toHex);
}

vorel_status vorel_scan_double(const vorel_char16* text, size_t length, double* value, size_t* used) {
    return scanText(L"vorel_scan_double", text, length, value, used, toDouble);
}

vorel_status vorel_scan_boolean(const vorel_char16* text, size_t length, int32_t* value, size_t* used) {
    return scanText(L"vorel_scan_boolean", text, length, value, used, toBoolean);
}

// ---- Values as text -------------------------------------------------------------------------------------------------

vorel_status vorel_format_int64(int64_t value, vorel_char16* output, size_t capacity, size_t* outputLength) {
    return formatNumber(L"vorel_format_int64", output, capacity, outputLength,
                        [value](wchar_t* buffer, std::size_t size) { return util::Int64ToStr(value, buffer, size); });
}

vorel_status vorel_format_uint64(uint64_t value, vorel_char16* output, size_t capacity, size_t* outputLength) {
    return formatNumber(L"vorel_format_uint64", output, capacity, outputLength,
                        [value](wchar_t* buffer, std::size_t size) { return util::UInt64ToStr(value, buffer, size); });
}

vorel_status vorel_format_double(double value, int32_t options, vorel_char16* output, size_t capacity,
                                 size_t* outputLength) {
    return formatNumber(
        L"vorel_format_double", output, capacity, outputLength, [value, options](wchar_t* buffer, std::size_t size) {
            if (options != VOREL_FORMAT_DEFAULT && options != VOREL_FORMAT_JSON) {
                throw ArgumentError{VOREL_ERROR_INVALID_ARGUMENT, L"An option is unknown"};
            }
            return util::doubleToString(value, buffer, size, static_cast<util::FormattingOptions>(options));
        });
}
