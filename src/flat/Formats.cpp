/// \file
/// The flat interface to the formatting of values and times.

#include <algorithm>
#include <ctime>
#include <iterator>
#include <string_view>

#include "flat/Call.h"
#include "flat/Input.h"
#include "flat/Output.h"
#include "vorel/core/BaseString.h"
#include "vorel/flat/Values.h"
#include "vorel/system/ErrorText.h"
#include "vorel/system/Time.h"
#include "vorel/values/NumberFormatting.h"

using vorel::flat::ArgumentError;
using vorel::flat::fail;
using vorel::flat::guardedCall;
using vorel::flat::notNull;
using vorel::flat::sameValue;
using vorel::flat::TextOutput;

namespace {

namespace util = vorel::util;

static_assert(sameValue(VOREL_FORMAT_DEFAULT, util::FO_Default) && sameValue(VOREL_FORMAT_JSON, util::FO_JSON));

/// Copies the text that `format(buffer, size)` writes to the output. The buffer holds the longest number and its
/// terminator.
template <class Format>
vorel_status formatNumber(const wchar_t* function, vorel_char16* output, size_t capacity, size_t* outputLength,
                          Format format) {
    return guardedCall(function, [&] {
        const TextOutput out(output, capacity, outputLength);
        wchar_t buffer[64];
        return out.write(std::wstring_view(format(buffer, std::size(buffer))));
    });
}

template <class BreakDown>
vorel_status formatTime(const wchar_t* function, int64_t seconds, vorel_char16* output, size_t capacity,
                        size_t* outputLength, BreakDown breakDown) {
    return guardedCall(function, VOREL_ERROR_INVALID_ARGUMENT, [&] {
        const TextOutput out(output, capacity, outputLength);
        const long long time = seconds;
        std::tm fields = {};
        breakDown(&time, &fields);
        if (fields.tm_mday < 1) {
            return fail(VOREL_ERROR_INVALID_ARGUMENT, L"The runtime cannot convert the time");
        }
        char narrow[26];
        const std::string_view text = util::asctime(&fields, narrow, sizeof narrow);
        wchar_t wide[sizeof narrow];
        std::copy(text.begin(), text.end(), wide);
        return out.write(std::wstring_view(wide, text.size()));
    });
}

}  // namespace

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

vorel_status vorel_format_local_time(int64_t seconds, vorel_char16* output, size_t capacity, size_t* outputLength) {
    return formatTime(L"vorel_format_local_time", seconds, output, capacity, outputLength,
                      [](const long long* time, std::tm* fields) { util::localtime(time, fields); });
}

vorel_status vorel_format_utc_time(int64_t seconds, vorel_char16* output, size_t capacity, size_t* outputLength) {
    return formatTime(L"vorel_format_utc_time", seconds, output, capacity, outputLength,
                      [](const long long* time, std::tm* fields) { util::gmtime(time, fields); });
}

vorel_status vorel_current_time(int64_t* microseconds) {
    return guardedCall(L"vorel_current_time", [&] {
        notNull(microseconds) = static_cast<int64_t>(util::getmicrotime());
        return vorel_status{VOREL_OK};
    });
}

vorel_status vorel_system_error_text(int32_t code, vorel_char16* output, size_t capacity, size_t* outputLength) {
    return guardedCall(L"vorel_system_error_text", [&] {
        const TextOutput out(output, capacity, outputLength);
        vorel::BaseString<wchar_t> text;
        util::FormatErrorMsg(code, text);
        return out.write(text.view());
    });
}
