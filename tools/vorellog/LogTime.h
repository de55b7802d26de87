/// \file
/// The times of a log. Lines contain local time without a time zone. So the difference of two times is wrong by an hour
/// if daylight saving time begins or ends between them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vorellog {

class TimeZone;

/// Milliseconds since 1970-01-01 00:00 on the local clock.
using LocalMs = long long;

/// \name Durations in milliseconds
/// \{
inline constexpr LocalMs kSecond = 1000;
inline constexpr LocalMs kMinute = 60 * kSecond;
inline constexpr LocalMs kHour = 60 * kMinute;
inline constexpr LocalMs kDay = 24 * kHour;
/// \}

/// Number of characters of the time in a line: "Mon Nov 16 01:43:08 2026".
inline constexpr std::size_t kLogTimeSize = 24;

/// Parses the time of a line; nullopt if the format does not match or a field is out of range. A day below ten may have
/// a leading space instead of a zero. The weekday must be a valid name, but need not match the date.
std::optional<LocalMs> parseLogTime(std::string_view text) noexcept;

/// The time span that a typed time denotes. For example, "2026-11-16" denotes a whole day.
struct TimeSpan {
    LocalMs from = 0;  ///< inclusive
    LocalMs to = 0;    ///< exclusive
};

/// Parses a time typed by a user:
///
///     2026-11-16, 2026-11-16 01:43, 2026-11-16T01:43:08.045   a day, a minute, a millisecond
///     2026-11-16T01:43Z, 2026-11-16 01:43:08 +02:00           with an offset from UTC, converted to `zone`
///     today, yesterday                                        the day of `now`, and the day before
///     01:43, 01:43:08                                         a time on the day of `now`
///     90s, 15m, 2h, 3d                                        the time that is this much before `now`
///     Mon Nov 16 01:43:08 2026                                a second, in the format of the log
///
/// In each form except the last, a time of day may have seconds, and the seconds may have three decimals. The separator
/// between a date such as 2026-11-16 and its time of day is 'T' or a space. Returns nullopt for any other text. `now`
/// must not be before 1970.
std::optional<TimeSpan> parseTypedTime(std::string_view text, LocalMs now, const TimeZone& zone) noexcept;

/// Appends a time in the form "2026-11-16T01:43:08", or "2026-11-16T01:43:08.045" if `withMilliseconds`. `separator` is
/// written between the date and the time of day. The year has four digits.
void appendIsoText(std::string& out, LocalMs time, bool withMilliseconds, char separator = 'T');

/// Returns the text that `appendIsoText` appends.
std::string isoText(LocalMs time, bool withMilliseconds, char separator = 'T');

/// The current local time.
LocalMs localNow() noexcept;

}  // namespace vorellog
