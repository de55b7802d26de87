#include "platform/SystemClock.h"

#include <cstring>

#include <windows.h>

#include "algorithms/ClockArithmetic.h"
#include "platform/IgnoreInvalidParameters.h"

namespace vorel::platform {

namespace {

/// The position of the line feed in the runtime's text of a time; it is removed.
constexpr std::size_t kLineFeedIndex = 24;

}  // namespace

std::uint64_t fileTimeNow() {
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    return std::uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime;
}

std::uint64_t millisecondsUtc() {
    return algorithms::unixMilliseconds(fileTimeNow());
}

bool formatTime(const std::tm& time, char* buffer, std::size_t size) noexcept {
    const platform::IgnoreInvalidParameters silent;
    if (asctime_s(buffer, size, &time) != 0) {
        return false;
    }
    if (buffer[kLineFeedIndex] == '\n') {
        buffer[kLineFeedIndex] = 0;
        return true;
    }
    buffer[size - 1] = 0;
    const std::size_t length = std::strlen(buffer);
    if (length != 0 && buffer[length - 1] == '\n') {
        buffer[length - 1] = 0;
    }
    return true;
}

LocalTimeText::LocalTimeText() noexcept {
    const __time64_t now = _time64(nullptr);
    std::tm local = {};
    if (_localtime64_s(&local, &now) != 0 || !formatTime(local, text, sizeof text)) {
        text[0] = 0;
    }
}

}  // namespace vorel::platform
