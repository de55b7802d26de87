/// \file
/// Parses one line of an error log:
///
///     [Mon Nov 16 01:43:08 2026].045 host7.4312.9876: WARN: text
///     ^time                     ^ms  ^host ^process   ^prefix
///                                               ^thread     ^message
///
/// The milliseconds are present only if the program enabled them. The host may be empty. The prefix ends at the first
/// colon that is followed by a space; a message without such a colon has no prefix.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "vorellog/LogTime.h"

namespace vorellog {

/// The part of a line before the prefix. Positions and sizes are in bytes.
struct LogHeader {
    LocalMs timeMs = 0;  ///< including the milliseconds, if present
    bool hasMilliseconds = false;
    unsigned long processId = 0;
    unsigned long threadId = 0;
    std::size_t hostAt = 0;
    std::size_t hostSize = 0;
    std::size_t bodyAt = 0;  ///< the start of the prefix
};

/// Returns the header at the start of `line`, or nullopt if there is none.
std::optional<LogHeader> parseHeader(std::string_view line) noexcept;

/// Returns the position of the first header after the first character of `line`, or npos. Such a header follows the
/// incomplete line of a writer that was killed, or it is part of a message that quotes or imitates a log.
std::size_t findNextHeader(std::string_view line) noexcept;

/// The part of a line after the header.
struct LogBody {
    std::string_view prefix;  ///< without the colon and " Truncated"
    bool truncated = false;   ///< the prefix ended with " Truncated", which marks incomplete messages
    std::string_view message;
};

LogBody parseBody(std::string_view body) noexcept;

}  // namespace vorellog
