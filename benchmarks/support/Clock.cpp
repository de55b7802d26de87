#include "support/Clock.h"

#include <windows.h>

#include <chrono>
#include <cstdint>
#include <cstring>

namespace bench {

namespace {

/// The Linux process id of Wine's server; 0 if its processor time cannot be read.
unsigned long s_wineServer = 0;

/// Whether this program runs under Wine on Linux.
bool isOnLinux() {
    static const bool kIsOnLinux = [] {
        using GetHostVersion = void(__cdecl*)(const char** system, const char** release);
        const auto getHostVersion = reinterpret_cast<GetHostVersion>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_host_version")));
        if (!getHostVersion) {
            return false;
        }
        const char* system = "";
        const char* release = "";
        getHostVersion(&system, &release);
        return std::strcmp(system, "Linux") == 0;
    }();
    return kIsOnLinux;
}

/// Calls clock_gettime of Linux directly, because Wine does not export this function. Returns -1 if the call fails.
std::int64_t linuxClockNs(std::int64_t clock) {
    constexpr std::int64_t kClockGettime = 228;
    struct {
        std::int64_t seconds;
        std::int64_t nanoseconds;
    } time = {};
    std::int64_t result = kClockGettime;
    asm volatile("syscall" : "+a"(result) : "D"(clock), "S"(&time) : "rcx", "r11", "memory");
    return result == 0 ? time.seconds * 1000000000 + time.nanoseconds : -1;
}

/// The clock id of a process, computed like clock_getcpuclockid.
std::int64_t clockOf(unsigned long linuxProcessId) {
    return ~static_cast<std::int64_t>(linuxProcessId) * 8 + 2;
}

constexpr std::int64_t kClockOfThisProcess = 2;

bool hasProcessorTime() {
    return s_wineServer != 0;
}

}  // namespace

void setWineServer(unsigned long linuxProcessId) {
    const bool readable = linuxProcessId != 0 && isOnLinux() && linuxClockNs(clockOf(linuxProcessId)) >= 0;
    s_wineServer = readable ? linuxProcessId : 0;
}

double clockNs(Clock clock) {
    if (clock == Clock::Processor && hasProcessorTime()) {
        return static_cast<double>(linuxClockNs(kClockOfThisProcess) + linuxClockNs(clockOf(s_wineServer)));
    }
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

const char* describe(Clock clock) {
    return clock == Clock::Processor && hasProcessorTime() ? "processor time of the program and of Wine's server"
                                                           : "elapsed time";
}

}  // namespace bench
