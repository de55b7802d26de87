/// \file
/// The times of a log. Its lines have the local time without a zone, so a time in here is what a clock on the wall
/// showed: comparable within one log, and off by an hour across a change of the clocks.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vorellog {

/// Milliseconds since 1970-01-01 00:00 on the local clock.
using LocalMs = long long;

/// \name The parts of a day
/// \{
inline constexpr LocalMs kSecond = 1000;
inline constexpr LocalMs kMinute = 60 * kSecond;
inline constexpr LocalMs kHour = 60 * kMinute;
inline constexpr LocalMs kDay = 24 * kHour;
/// \}

/// The characters of a line's time: "Mon Nov 16 01:43:08 2026".
inline constexpr std::size_t kLogTimeSize = 24;

/// Reads a line's time; nothing when a character is out of place or a field out of its range. A day below ten may have
/// a blank in front instead of a zero. The name of the weekday has to be one, but not the right one.
std::optional<LocalMs> parseLogTime(std::string_view text) noexcept;

/// A time as somebody types it, and all that it may mean: "2026-11-16" is a whole day.
struct TimeSpan {
    LocalMs from = 0;
    LocalMs to = 0;  ///< the first millisecond that no longer belongs to it
};

/// Reads a time that was typed:
///
///     2026-11-16, 2026-11-16 01:43, 2026-11-16T01:43:08.045   a day, a minute, a millisecond
///     01:43, 01:43:08                                         of today
///     90s, 15m, 2h, 3d                                        so long before `now`
///     Mon Nov 16 01:43:08 2026                                a second, as the log writes it
///
/// Nothing for any other text.
std::optional<TimeSpan> parseTypedTime(std::string_view text, LocalMs now) noexcept;

/// "2026-11-16T01:43:08", with `withMilliseconds` "2026-11-16T01:43:08.045".
std::string isoText(LocalMs time, bool withMilliseconds, char separator = 'T');

/// The local clock.
LocalMs localNow() noexcept;

}  // namespace vorellog
