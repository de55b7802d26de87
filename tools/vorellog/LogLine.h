/// \file
/// One line of an error log, taken apart:
///
///     [Mon Nov 16 01:43:08 2026].045 host7.4312.9876: WARN: text
///     ^time                     ^ms  ^host ^process^thread  ^prefix, message
///
/// The milliseconds are there only when the program asked for them; the host may be empty. The prefix ends at the first
/// colon with a blank behind it; a message without one has no prefix.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "vorellog/LogTime.h"

namespace vorellog {

/// What stands before the prefix. Places and sizes count bytes of the line.
struct LogHeader {
    LocalMs timeMs = 0;  ///< with the milliseconds, if there are any
    bool hasMilliseconds = false;
    unsigned long processId = 0;
    unsigned long threadId = 0;
    std::size_t hostAt = 0;
    std::size_t hostSize = 0;
    std::size_t bodyAt = 0;  ///< where the prefix begins
};

/// The header that `line` begins with; nothing when it begins with none.
std::optional<LogHeader> parseHeader(std::string_view line) noexcept;

/// Where the first header after the first character of `line` begins, npos when there is none. There the next writer
/// continued the line of one that had been killed, or a message quotes or imitates a line of a log.
std::size_t findNextHeader(std::string_view line) noexcept;

/// What stands behind the header.
struct LogBody {
    std::string_view prefix;  ///< without the colon, and without " Truncated"
    bool truncated = false;   ///< the library had no memory for the whole message, and said so in the prefix
    std::string_view message;
};

LogBody parseBody(std::string_view body) noexcept;

}  // namespace vorellog
