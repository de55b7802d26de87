/// \file
/// The time zone of a log. Lines have local times without a zone. A zone is needed only for typed times that have an
/// offset from UTC, or that depend on the current time, such as `today`.
#pragma once

#include <optional>
#include <string_view>

#include "vorellog/LogTime.h"

namespace vorellog {

class TimeZone {
public:
    /// The zone of this computer, with its daylight saving time.
    TimeZone() noexcept = default;

    /// A zone with a fixed offset from UTC.
    explicit TimeZone(LocalMs offsetMs) noexcept : m_offsetMs(offsetMs) {}

    /// The local time at `utcMs`, a time in UTC; `utcMs` itself if the system cannot convert the time.
    [[nodiscard]] LocalMs localTime(LocalMs utcMs) const noexcept;

private:
    std::optional<LocalMs> m_offsetMs;
};

/// Parses an offset from UTC, such as "Z", "+02:00", "-0330" or "+2". Returns nullopt for a text in another format, for
/// an hour above 14, and for a minute above 59. So the largest offset is "+14:59".
std::optional<LocalMs> parseOffset(std::string_view text) noexcept;

/// The current time in UTC.
LocalMs utcNow() noexcept;

}  // namespace vorellog
