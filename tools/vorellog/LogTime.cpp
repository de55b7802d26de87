#include "vorellog/LogTime.h"

#include <charconv>
#include <chrono>

#include <windows.h>

#include "vorellog/TimeZone.h"

namespace vorellog {

namespace {

/// Parses a text from left to right. After the first mismatch, every call fails.
class Cursor {
public:
    explicit Cursor(std::string_view text) noexcept : m_rest(text) {}

    bool skip(char expected) noexcept {
        m_good = m_good && m_rest.starts_with(expected);
        if (m_good) {
            m_rest.remove_prefix(1);
        }
        return m_good;
    }

    /// The value of exactly `count` digits.
    int digits(std::size_t count) noexcept {
        int value = 0;
        m_good = m_good && m_rest.size() >= count;
        for (std::size_t index = 0; m_good && index != count; ++index) {
            m_good = m_rest[index] >= '0' && m_rest[index] <= '9';
            value = value * 10 + (m_rest[index] - '0');
        }
        if (m_good) {
            m_rest.remove_prefix(count);
        }
        return value;
    }

    /// Reads a name of three letters and returns its index in `names`, from 0. `names` contains all names, without
    /// separators.
    int name(std::string_view names) noexcept {
        constexpr std::size_t kLetters = 3;
        const std::size_t found = m_good ? names.find(m_rest.substr(0, kLetters)) : 0;
        m_good = m_good && m_rest.size() >= kLetters && found % kLetters == 0 && found != std::string_view::npos;
        if (m_good) {
            m_rest.remove_prefix(kLetters);
        }
        return static_cast<int>(found / kLetters);
    }

    [[nodiscard]] bool startsWith(char expected) const noexcept { return m_good && m_rest.starts_with(expected); }
    [[nodiscard]] bool good() const noexcept { return m_good; }
    [[nodiscard]] bool atEnd() const noexcept { return m_good && m_rest.empty(); }

private:
    std::string_view m_rest;
    bool m_good = true;
};

std::optional<LocalMs> dayStart(int year, int month, int day) noexcept {
    const std::chrono::year_month_day date{std::chrono::year{year},
                                           std::chrono::month{static_cast<unsigned int>(month)},
                                           std::chrono::day{static_cast<unsigned int>(day)}};
    if (!date.ok()) {
        return std::nullopt;
    }
    return std::chrono::sys_days{date}.time_since_epoch().count() * kDay;
}

/// Parses "01:43", "01:43:08" or "01:43:08.045" as a time of the day that starts at `day`.
std::optional<TimeSpan> clockTime(Cursor& cursor, LocalMs day) noexcept {
    const int hour = cursor.digits(2);
    cursor.skip(':');
    const int minute = cursor.digits(2);
    int second = 0;
    int millisecond = 0;
    LocalMs length = kMinute;
    if (cursor.startsWith(':')) {
        cursor.skip(':');
        second = cursor.digits(2);
        length = kSecond;
        if (cursor.startsWith('.')) {
            cursor.skip('.');
            millisecond = cursor.digits(3);
            length = 1;
        }
    }
    if (!cursor.atEnd() || hour > 23 || minute > 59 || second > 60) {
        return std::nullopt;
    }
    const LocalMs from = day + hour * kHour + minute * kMinute + second * kSecond + millisecond;
    return TimeSpan{from, from + length};
}

std::optional<TimeSpan> dateAndTime(std::string_view text) noexcept {
    Cursor cursor(text);
    const int year = cursor.digits(4);
    cursor.skip('-');
    const int month = cursor.digits(2);
    cursor.skip('-');
    const int day = cursor.digits(2);
    const std::optional<LocalMs> start = cursor.good() ? dayStart(year, month, day) : std::nullopt;
    if (!start) {
        return std::nullopt;
    }
    if (cursor.atEnd()) {
        return TimeSpan{*start, *start + kDay};
    }
    if (!cursor.skip(cursor.startsWith('T') ? 'T' : ' ')) {
        return std::nullopt;
    }
    return clockTime(cursor, *start);
}

/// Parses a date and time with an offset from UTC. The offset begins at the last "Z", "z", "+" or "-" of the text.
std::optional<TimeSpan> withOffset(std::string_view text, const TimeZone& zone) noexcept {
    const std::size_t clock = text.find(':');
    const std::size_t sign = text.find_last_of("Zz+-");
    if (clock == std::string_view::npos || sign == std::string_view::npos || sign < clock) {
        return std::nullopt;
    }
    std::string_view local = text.substr(0, sign);
    while (local.ends_with(' ')) {
        local.remove_suffix(1);
    }
    const std::optional<LocalMs> offset = parseOffset(text.substr(sign));
    const std::optional<TimeSpan> span = dateAndTime(local);
    if (!offset || !span) {
        return std::nullopt;
    }
    const LocalMs from = zone.localTime(span->from - *offset);
    return TimeSpan{from, from + (span->to - span->from)};
}

/// Parses a duration such as "15m", and returns the millisecond that is this duration before `now`.
std::optional<TimeSpan> ago(std::string_view text, LocalMs now) noexcept {
    constexpr LocalMs kMax = 1000000000;
    LocalMs count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    const std::string_view unit = text.substr(static_cast<std::size_t>(end - text.data()));
    if (error != std::errc() || count < 0 || count > kMax || unit.size() != 1) {
        return std::nullopt;
    }
    LocalMs length = 0;
    switch (unit.front()) {
    case 's': length = kSecond; break;
    case 'm': length = kMinute; break;
    case 'h': length = kHour; break;
    case 'd': length = kDay; break;
    default: return std::nullopt;
    }
    return TimeSpan{now - count * length, now - count * length + 1};
}

/// Writes the last `digits` digits of a number and a separator, and returns the end. With printf, the tool would spend
/// most of its time on the conversion of times.
char* writeNumber(char* out, unsigned int number, std::size_t digits, char separator) noexcept {
    for (std::size_t index = digits; index != 0; number /= 10) {
        out[--index] = static_cast<char>('0' + number % 10);
    }
    out[digits] = separator;
    return out + digits + 1;
}

/// The start of the day of `time`, which must not be before 1970.
LocalMs startOfDay(LocalMs time) noexcept {
    return time - time % kDay;
}

}  // namespace

std::optional<LocalMs> parseLogTime(std::string_view text) noexcept {
    if (text.size() != kLogTimeSize) {
        return std::nullopt;
    }
    Cursor cursor(text);
    cursor.name("SunMonTueWedThuFriSat");
    cursor.skip(' ');
    const int month = cursor.name("JanFebMarAprMayJunJulAugSepOctNovDec") + 1;
    cursor.skip(' ');
    const bool oneDigit = cursor.startsWith(' ') && cursor.skip(' ');
    const int day = cursor.digits(oneDigit ? 1 : 2);
    cursor.skip(' ');
    const int hour = cursor.digits(2);
    cursor.skip(':');
    const int minute = cursor.digits(2);
    cursor.skip(':');
    const int second = cursor.digits(2);
    cursor.skip(' ');
    const int year = cursor.digits(4);
    if (!cursor.atEnd() || hour > 23 || minute > 59 || second > 60) {
        return std::nullopt;
    }
    const std::optional<LocalMs> start = dayStart(year, month, day);
    if (!start) {
        return std::nullopt;
    }
    return *start + hour * kHour + minute * kMinute + second * kSecond;
}

std::optional<TimeSpan> parseTypedTime(std::string_view text, LocalMs now, const TimeZone& zone) noexcept {
    const LocalMs today = startOfDay(now);
    if (text == "today" || text == "yesterday") {
        const LocalMs from = text == "today" ? today : today - kDay;
        return TimeSpan{from, from + kDay};
    }
    if (const auto span = dateAndTime(text)) {
        return span;
    }
    if (const auto span = withOffset(text, zone)) {
        return span;
    }
    Cursor cursor(text);
    if (const auto span = clockTime(cursor, today)) {
        return span;
    }
    if (const auto second = parseLogTime(text)) {
        return TimeSpan{*second, *second + kSecond};
    }
    return ago(text, now);
}

void appendIsoText(std::string& out, LocalMs time, bool withMilliseconds, char separator) {
    const std::chrono::sys_time<std::chrono::milliseconds> point{std::chrono::milliseconds(time)};
    const auto day = std::chrono::floor<std::chrono::days>(point);
    const std::chrono::year_month_day date{day};
    const std::chrono::hh_mm_ss clock{point - day};
    char text[24];
    char* end = writeNumber(text, static_cast<unsigned int>(int{date.year()}), 4, '-');
    end = writeNumber(end, unsigned{date.month()}, 2, '-');
    end = writeNumber(end, unsigned{date.day()}, 2, separator);
    end = writeNumber(end, static_cast<unsigned int>(clock.hours().count()), 2, ':');
    end = writeNumber(end, static_cast<unsigned int>(clock.minutes().count()), 2, ':');
    end = writeNumber(end, static_cast<unsigned int>(clock.seconds().count()), 2, '.');
    if (withMilliseconds) {
        end = writeNumber(end, static_cast<unsigned int>(clock.subseconds().count()), 3, '.');
    }
    out.append(text, end - 1);
}

std::string isoText(LocalMs time, bool withMilliseconds, char separator) {
    std::string text;
    appendIsoText(text, time, withMilliseconds, separator);
    return text;
}

LocalMs localNow() noexcept {
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    return dayStart(now.wYear, now.wMonth, now.wDay).value_or(0) + now.wHour * kHour + now.wMinute * kMinute +
           now.wSecond * kSecond + now.wMilliseconds;
}

}  // namespace vorellog
