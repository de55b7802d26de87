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
constexpr wchar_t kWideText[] = L"the quick brown fox jumps over the lazy dog";

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

/// Makes only the calls that append a line to a file: open with the runtime, lock, write, unlock, close.
class BareCalls {
public:
    explicit BareCalls(std::string path) : m_path(std::move(path)), m_line(lineLikeTheLogs()) {}

    /// Uses a stream of the runtime, as the log does.
    [[nodiscard]] bool writeToStream() const {
        const int descriptor = open();
        lock(descriptor, true);
        std::FILE* const stream = _fdopen(descriptor, "a");
        const bool written =
            stream && std::fwrite(m_line.data(), 1, m_line.size(), stream) == m_line.size() && std::fflush(stream) == 0;
        lock(descriptor, false);
        return written && std::fclose(stream) == 0;
    }

    [[nodiscard]] bool writeToDescriptor() const {
        const int descriptor = open();
        lock(descriptor, true);
        const bool written = _write(descriptor, m_line.data(), static_cast<unsigned int>(m_line.size())) > 0;
        lock(descriptor, false);
        return _close(descriptor) == 0 && written;
    }

private:
    [[nodiscard]] int open() const {
        int descriptor = -1;
        _sopen_s(&descriptor, m_path.c_str(), _O_WRONLY | _O_CREAT | _O_NOINHERIT | _O_APPEND, _SH_DENYNO,
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

template <class Write>
Pass lines(Write write) {
    return [write] {
        std::uint64_t written = 0;
        for (std::size_t line = 0; line != kLines; ++line) {
            written += write() ? 1u : 0u;
        }
        return written;
    };
}

}  // namespace

void logLines(Family& family) {
    const std::string logPath = temporaryPath("vorel_bench_log_");
    const std::string barePath = temporaryPath("vorel_bench_bare_");
    vorel::Exception::SetErrorLogLocation(logPath.c_str(), 1000000000);
    const BareCalls bare(barePath);
    const std::vector<Peer> peers = {
        {"stream, opened for each line", lines([&] { return bare.writeToStream(); })},
        {"descriptor, opened for each line", lines([&] { return bare.writeToDescriptor(); })},
    };
    family.compare("a line of the error log", kLines, lines([] {
                       vorel::Exception::warn("%s", kText);
                       return true;
                   }),
                   peers);
    family.compare("a line of the error log, wide", kLines, lines([] {
                       vorel::Exception::warn(L"%ls", kWideText);
                       return true;
                   }),
                   peers);
    DeleteFileA(logPath.c_str());
    DeleteFileA(barePath.c_str());
}

}  // namespace bench
