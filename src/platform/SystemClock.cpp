#include "platform/SystemClock.h"

#include <cstring>

#include <windows.h>

#include "algorithms/ClockArithmetic.h"
#include "platform/IgnoreInvalidParameters.h"

namespace vorel::platform {

namespace {

constexpr std::uint64_t kSecond = 10000000;  // in units of a file time

/// A time since 1970.
struct UnixTime {
    __time64_t seconds;
    unsigned int milliseconds;
};

/// The current time. Reading the system's coarse clock is ten times as fast as reading the runtime's clock, but the
/// coarse clock lags by up to one tick, usually 16 ms. If the coarse clock is in the last tenth of a second, the next
/// second may already have begun. So if only the seconds are needed, they are then read from the runtime's clock. If
/// milliseconds are needed, both values come from the coarse clock. The seconds of one clock with the milliseconds of
/// the other could give a time that is wrong by almost a second.
UnixTime timeNow(bool withMilliseconds) noexcept {
    constexpr std::uint64_t kMaxLag = kSecond / 10;
    try {
        const std::uint64_t coarse = fileTimeNow();
        if (withMilliseconds || coarse % kSecond < kSecond - kMaxLag) {
            const std::uint64_t milliseconds = algorithms::unixMilliseconds(coarse);
            return {static_cast<__time64_t>(milliseconds / 1000), static_cast<unsigned int>(milliseconds % 1000)};
        }
    } catch (...) {
        // A hooked system call may throw, but a line of the log must not fail.
    }
    return {_time64(nullptr), 0};
}

/// The position of the line feed in the runtime's text of a time. The line feed is removed.
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

LocalTimeText::LocalTimeText(bool withMilliseconds) noexcept {
    const UnixTime now = timeNow(withMilliseconds);
    milliseconds = now.milliseconds;
    std::tm local = {};
    if (_localtime64_s(&local, &now.seconds) != 0 || !formatTime(local, text, sizeof text)) {
        text[0] = 0;
    }
}

}  // namespace vorel::platform
