#include "vorellog/TimeZone.h"

#include <chrono>
#include <cstdlib>

#include <windows.h>

namespace vorellog {

namespace {

/// Parses one or two digits at the start of `text` and removes them. Returns -1 if `text` does not start with a digit.
int consumeNumber(std::string_view& text) noexcept {
    constexpr std::size_t kMaxDigits = 2;
    int value = -1;
    for (std::size_t count = 0; count != kMaxDigits && !text.empty() && text.front() >= '0' && text.front() <= '9';
         ++count) {
        value = (value < 0 ? 0 : value * 10) + (text.front() - '0');
        text.remove_prefix(1);
    }
    return value;
}

SYSTEMTIME systemTimeOf(LocalMs time) noexcept {
    const std::chrono::sys_time<std::chrono::milliseconds> point{std::chrono::milliseconds(time)};
    const auto day = std::chrono::floor<std::chrono::days>(point);
    const std::chrono::year_month_day date{day};
    const std::chrono::hh_mm_ss clock{point - day};
    SYSTEMTIME result = {};
    result.wYear = static_cast<WORD>(int{date.year()});
    result.wMonth = static_cast<WORD>(unsigned{date.month()});
    result.wDay = static_cast<WORD>(unsigned{date.day()});
    result.wHour = static_cast<WORD>(clock.hours().count());
    result.wMinute = static_cast<WORD>(clock.minutes().count());
    result.wSecond = static_cast<WORD>(clock.seconds().count());
    result.wMilliseconds = static_cast<WORD>(clock.subseconds().count());
    return result;
}

LocalMs timeOf(const SYSTEMTIME& time) noexcept {
    const std::chrono::sys_days day =
        std::chrono::year{time.wYear} / std::chrono::month{time.wMonth} / std::chrono::day{time.wDay};
    return day.time_since_epoch().count() * kDay + time.wHour * kHour + time.wMinute * kMinute +
           time.wSecond * kSecond + time.wMilliseconds;
}

}  // namespace

LocalMs TimeZone::localTime(LocalMs utcMs) const noexcept {
    if (m_offsetMs) {
        return utcMs + *m_offsetMs;
    }
    const SYSTEMTIME utc = systemTimeOf(utcMs);
    SYSTEMTIME local = {};
    return SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local) ? timeOf(local) : utcMs;
}

std::optional<LocalMs> parseOffset(std::string_view text) noexcept {
    if (text == "Z" || text == "z") {
        return 0;
    }
    if (text.empty() || (text.front() != '+' && text.front() != '-')) {
        return std::nullopt;
    }
    const bool isWest = text.front() == '-';
    text.remove_prefix(1);
    const int hours = consumeNumber(text);
    int minutes = 0;
    if (!text.empty()) {
        text.remove_prefix(text.front() == ':' ? 1 : 0);
        minutes = text.size() == 2 ? consumeNumber(text) : -1;
    }
    constexpr int kMaxHours = 14;
    if (hours < 0 || hours > kMaxHours || minutes < 0 || minutes > 59 || !text.empty()) {
        return std::nullopt;
    }
    const LocalMs offset = hours * kHour + minutes * kMinute;
    return isWest ? -offset : offset;
}

LocalMs utcNow() noexcept {
    SYSTEMTIME now = {};
    GetSystemTime(&now);
    return timeOf(now);
}

}  // namespace vorellog
