#include "vorellog/LogLine.h"

#include <algorithm>
#include <charconv>

namespace vorellog {

namespace {

constexpr std::string_view kFieldEnd = ": ";

/// Parses the number after the last period of `origin`, and removes the period and the number from `origin`. Returns
/// false if `origin` does not end with a period and a number.
bool consumeLastNumber(std::string_view& origin, unsigned long& number) noexcept {
    const std::size_t point = origin.rfind('.');
    if (point == std::string_view::npos || point + 1 == origin.size()) {
        return false;
    }
    const char* const end = origin.data() + origin.size();
    const auto [stop, error] = std::from_chars(origin.data() + point + 1, end, number);
    origin = origin.substr(0, point);
    return error == std::errc() && stop == end;
}

/// The value of three digits, or -1 if `text` is not three digits.
int threeDigits(std::string_view text) noexcept {
    if (text.size() != 3 || !std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        return -1;
    }
    return (text[0] - '0') * 100 + (text[1] - '0') * 10 + (text[2] - '0');
}

}  // namespace

std::optional<LogHeader> parseHeader(std::string_view line) noexcept {
    constexpr std::size_t kTimeEnd = 1 + kLogTimeSize;
    // The host has at most 15 characters. The ids of the process and the thread have at most 10 digits each.
    constexpr std::size_t kMaxOriginBytes = 64;
    if (line.size() <= kTimeEnd || line[0] != '[' || line[kTimeEnd] != ']') {
        return std::nullopt;
    }
    const std::optional<LocalMs> time = parseLogTime(line.substr(1, kLogTimeSize));
    if (!time) {
        return std::nullopt;
    }
    LogHeader header;
    header.timeMs = *time;
    std::size_t at = kTimeEnd + 1;
    if (line.substr(at).starts_with('.')) {
        const int milliseconds = threeDigits(line.substr(at + 1, 3));
        if (milliseconds < 0) {
            return std::nullopt;
        }
        header.hasMilliseconds = true;
        header.timeMs += milliseconds;
        at += 4;
    }
    if (!line.substr(at).starts_with(' ')) {
        return std::nullopt;
    }
    ++at;
    std::string_view origin = line.substr(at, kMaxOriginBytes);
    const std::size_t colon = origin.find(kFieldEnd);
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    origin = origin.substr(0, colon);
    if (!consumeLastNumber(origin, header.threadId) || !consumeLastNumber(origin, header.processId) ||
        origin.find_first_of(" []") != std::string_view::npos) {
        return std::nullopt;
    }
    header.hostAt = at;
    header.hostSize = origin.size();
    header.bodyAt = at + colon + kFieldEnd.size();
    return header;
}

std::size_t findNextHeader(std::string_view line) noexcept {
    std::size_t at = line.find('[', 1);
    while (at != std::string_view::npos && !parseHeader(line.substr(at))) {
        at = line.find('[', at + 1);
    }
    return at;
}

LogBody parseBody(std::string_view body) noexcept {
    constexpr std::string_view kTruncated = " Truncated";
    LogBody result;
    const std::size_t end = body.find(kFieldEnd);
    if (end == std::string_view::npos) {
        result.message = body;
        return result;
    }
    result.prefix = body.substr(0, end);
    result.message = body.substr(end + kFieldEnd.size());
    result.truncated = result.prefix.ends_with(kTruncated);
    if (result.truncated) {
        result.prefix.remove_suffix(kTruncated.size());
    }
    return result;
}

}  // namespace vorellog
