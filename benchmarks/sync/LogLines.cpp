#include <cstdio>
#include <string>

#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>
#include <vorel/exceptions/Exception.h>
#include <windows.h>

#include "Cases.h"

namespace bench {

namespace {

constexpr std::size_t kLines = 50;

constexpr char kText[] = "the quick brown fox jumps over the lazy dog";

/// A line with the same length as a line of the log.
std::string lineLikeTheLogs() {
    char computer[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD size = sizeof computer;
    GetComputerNameA(computer, &size);
    return "[Sat Nov 21 02:33:34 2026] " + std::string(computer) + "." + std::to_string(GetCurrentProcessId()) + "." +
           std::to_string(GetCurrentThreadId()) + ": WARN: " + kText + "\n";
}

std::string temporaryPath(const char* name) {
    char folder[MAX_PATH + 1] = {};
    GetTempPathA(sizeof folder, folder);
    return folder + std::string(name) + std::to_string(GetCurrentProcessId()) + ".txt";
}

/// Only the calls that write a line of the log: read the size under the lock, then append under the lock.
class BareCalls {
public:
    explicit BareCalls(std::string path) : m_path(std::move(path)), m_line(lineLikeTheLogs()) {}

    [[nodiscard]] std::uint64_t write() const {
        const int looked = open(0);
        lock(looked, true);
        struct _stat64 status = {};
        const bool known = _fstat64(looked, &status) == 0;
        lock(looked, false);
        _close(looked);

        const int opened = open(_O_APPEND);
        lock(opened, true);
        std::FILE* const stream = _fdopen(opened, "a");
        if (stream) {
            (void)std::fwrite(m_line.data(), 1, m_line.size(), stream);
            (void)std::fflush(stream);
            lock(opened, false);
            (void)std::fclose(stream);
        }
        return known && stream ? 1 : 0;
    }

private:
    [[nodiscard]] int open(int flag) const {
        int descriptor = -1;
        _sopen_s(&descriptor, m_path.c_str(), _O_WRONLY | _O_CREAT | _O_NOINHERIT | flag, _SH_DENYNO,
                 _S_IREAD | _S_IWRITE);
        return descriptor;
    }

    static void lock(int descriptor, bool lock) {
        auto* const handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
        OVERLAPPED fromStart = {};
        if (lock) {
            LockFileEx(handle, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 0xFFFFFFFF, 0xFFFFFFFF,
                       &fromStart);
        } else {
            UnlockFileEx(handle, 0, 0xFFFFFFFF, 0xFFFFFFFF, &fromStart);
        }
    }

    std::string m_path;
    std::string m_line;
};

}  // namespace

void logLines(Family& family) {
    const std::string logPath = temporaryPath("vorel_bench_log_");
    const std::string barePath = temporaryPath("vorel_bench_bare_");
    vorel::Exception::SetErrorLogLocation(logPath.c_str(), 1000000000);
    const BareCalls bare(barePath);
    family.compare("a line of the error log", kLines,
                   [] {
                       for (std::size_t line = 0; line != kLines; ++line) {
                           vorel::Exception::warn("%s", kText);
                       }
                       return std::uint64_t{kLines};
                   },
                   {{"the same calls without the log", [&] {
                         std::uint64_t lines = 0;
                         for (std::size_t line = 0; line != kLines; ++line) {
                             lines += bare.write();
                         }
                         return lines;
                     }}});
    DeleteFileA(logPath.c_str());
    DeleteFileA(barePath.c_str());
}

}  // namespace bench
