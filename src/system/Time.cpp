#include "vorel/system/Time.h"

#include <windows.h>

#include "algorithms/ClockArithmetic.h"
#include "platform/IgnoreInvalidParameters.h"
#include "platform/SystemClock.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"

namespace vorel::util {

namespace {

using detail::runRethrowing;

constexpr const wchar_t* kClass = L"vorel::util";
constexpr unsigned long long kTimeTextBytes = 26;

void checkTimeBuffer(const char* buffer, unsigned long long size) {
    if (!buffer) {
        throw Exception(L"buffer is null");
    }
    if (size < kTimeTextBytes) {
        throw Exception(L"buffer must be at least 26 characters long, actual size = %i", static_cast<int>(size));
    }
}

}  // namespace

std::tm* localtime(const long long* time, std::tm* result) {
    return runRethrowing(kClass, L"localtime", [=] {
        if (!result) {
            throw Exception(L"pLocalTime is null");
        }
        const platform::IgnoreInvalidParameters silent;
        _localtime64_s(result, time);
        return result;
    });
}

std::tm* gmtime(const long long* time, std::tm* result) {
    return runRethrowing(kClass, L"gmtime", [=] {
        if (!result) {
            throw Exception(L"pGMTime is null");
        }
        const platform::IgnoreInvalidParameters silent;
        _gmtime64_s(result, time);
        return result;
    });
}

char* asctime(const std::tm* time, char* buffer, unsigned long long size) {
    return runRethrowing(kClass, L"asctime", [=] {
        checkTimeBuffer(buffer, size);
        std::tm now = {};
        if (!time) {
            const long long seconds = _time64(nullptr);
            localtime(&seconds, &now);
        }
        if (!platform::formatTime(time ? *time : now, buffer, size)) {
            throw Exception(L"Invalid time structure or out of range values for components of the time");
        }
        return buffer;
    });
}

char* ctime(const long long* time, char* buffer, unsigned long long size) {
    return runRethrowing(kClass, L"ctime", [=] {
        checkTimeBuffer(buffer, size);
        const platform::IgnoreInvalidParameters silent;
        _ctime64_s(buffer, size, time);
        return buffer;
    });
}

unsigned long long getmicrotime() {
    return runRethrowing(kClass, L"getmicrotime", [] { return algorithms::unixMicroseconds(platform::fileTimeNow()); });
}

unsigned long long getMillisecondsUTC() {
    return runRethrowing(kClass, L"getMillisecondsUTC", [] { return platform::millisecondsUtc(); });
}

unsigned long long getMillisecondCount() noexcept {
    return GetTickCount();
}

unsigned long long getProcessorCycles() noexcept {
    return GetTickCount();
}

unsigned long long getMicrotimeFromProcessorCycles(unsigned long long start, unsigned long long end) noexcept {
    return algorithms::microsecondsBetweenTicks(start, end);
}

}  // namespace vorel::util
