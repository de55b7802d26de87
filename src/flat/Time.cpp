#include "vorel/flat/Time.h"

#include <algorithm>
#include <ctime>
#include <string_view>

#include "flat/Call.h"
#include "flat/Input.h"
#include "flat/Output.h"
#include "vorel/system/Time.h"

using vorel::flat::fail;
using vorel::flat::guardedCall;
using vorel::flat::notNull;
using vorel::flat::TextOutput;

namespace {

namespace util = vorel::util;

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
