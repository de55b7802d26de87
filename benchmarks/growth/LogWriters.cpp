#include <windows.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>
#include <vorel/exceptions/Exception.h>

#include "Cases.h"

namespace bench {

namespace {

/// The number of lines that each process writes in a call of `Writers::write`.
constexpr std::size_t kLines = 100;

/// The benchmark fails if it waits longer than this time for the next process to finish its lines.
constexpr DWORD kLimitMs = 60000;

constexpr char kText[] = "the quick brown fox jumps over the lazy dog";
constexpr char kOurs[] = "ours";
constexpr char kBare[] = "bare";

struct CloseHandleOf {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};

using Handle = std::unique_ptr<void, CloseHandleOf>;

/// Returns an owner of a handle that a system call returned. Throws if the call failed.
Handle owned(HANDLE handle) {
    if (!handle) {
        throw std::runtime_error("cannot create or open a process, an event or a semaphore");
    }
    return Handle(handle);
}

/// Starts this program as a writer. If this process ends, the writer ends too.
Handle startWriter(const std::string& arguments) {
    std::array<char, MAX_PATH + 1> program = {};
    GetModuleFileNameA(nullptr, program.data(), static_cast<DWORD>(program.size()));
    std::string commandLine = '"' + std::string(program.data()) + "\" --writer " + arguments;
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started = {};
    // Wine rarely fails to start a program.
    constexpr int kAttempts = 3;
    for (int attempt = 0; attempt != kAttempts && !started.hProcess; ++attempt) {
        CreateProcessA(program.data(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                       &started);
    }
    const Handle thread = owned(started.hThread);
    return owned(started.hProcess);
}

/// Processes that write to the same file. They write only during a call of `write`, and wait between two calls.
class Writers {
public:
    /// The destructor adds the number of lines that are missing from the file to `missingLines`.
    Writers(std::size_t count, const std::string& kind, long long& missingLines)
        : m_missingLines(missingLines),
          m_path(temporaryPath(kind)),
          m_name("vorel_bench_" + kind + std::to_string(GetCurrentProcessId())),
          m_done(owned(CreateSemaphoreA(nullptr, 0, 1000, (m_name + "done").c_str()))) {
        for (std::size_t writer = 0; writer != count; ++writer) {
            const std::string go = m_name + "go" + std::to_string(writer);
            m_go.push_back(owned(CreateEventA(nullptr, FALSE, FALSE, go.c_str())));
            std::string arguments = kind;
            for (const std::string& argument : {m_path, go, m_name + "done", std::to_string(GetCurrentProcessId())}) {
                arguments.append(" \"").append(argument).append("\"");
            }
            m_processes.push_back(startWriter(arguments));
        }
    }

    Writers(const Writers&) = delete;
    Writers& operator=(const Writers&) = delete;

    /// Terminates all writers, counts the lines of the file, and removes the file.
    ~Writers() {
        for (const Handle& process : m_processes) {
            TerminateProcess(process.get(), 0);
            WaitForSingleObject(process.get(), INFINITE);
        }
        m_missingLines += static_cast<long long>(m_expected) - static_cast<long long>(countLines());
        DeleteFileA(m_path.c_str());
    }

    /// Lets each process write `kLines` lines, and waits until all processes have written them. Returns the number of
    /// lines that the file should have.
    std::uint64_t write() {
        for (const Handle& go : m_go) {
            SetEvent(go.get());
        }
        for (std::size_t done = 0; done != m_processes.size(); ++done) {
            if (WaitForSingleObject(m_done.get(), kLimitMs) != WAIT_OBJECT_0) {
                throw std::runtime_error("a writer of the log does not finish");
            }
        }
        m_expected += kLines * m_processes.size();
        return m_expected;
    }

private:
    static std::string temporaryPath(const std::string& kind) {
        std::array<char, MAX_PATH + 1> folder = {};
        GetTempPathA(static_cast<DWORD>(folder.size()), folder.data());
        return folder.data() + ("vorel_bench_" + kind) + std::to_string(GetCurrentProcessId()) + ".txt";
    }

    [[nodiscard]] std::size_t countLines() const {
        std::FILE* const file = std::fopen(m_path.c_str(), "rb");
        std::size_t lines = 0;
        for (int c = 0; file && (c = std::getc(file)) != EOF;) {
            lines += c == '\n' ? 1 : 0;
        }
        if (file) {
            std::fclose(file);
        }
        return lines;
    }

    long long& m_missingLines;
    std::string m_path;
    std::string m_name;
    Handle m_done;
    std::vector<Handle> m_go;
    std::vector<Handle> m_processes;
    std::size_t m_expected = 0;
};

Steps writersOf(const std::string& kind, long long& missingLines) {
    return [kind, &missingLines](std::size_t count) -> Step {
        auto writers = std::make_shared<Writers>(count, kind, missingLines);
        return {[writers] { return writers->write(); }, count * kLines};
    };
}

/// Opens the file, locks it, writes a line, unlocks the file, and closes it.
void writeBare(const char* path, const std::string& line) {
    int descriptor = -1;
    if (_sopen_s(&descriptor, path, _O_WRONLY | _O_CREAT | _O_APPEND | _O_BINARY | _O_NOINHERIT, _SH_DENYNO,
                 _S_IREAD | _S_IWRITE) != 0) {
        return;
    }
    auto* const file = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
    OVERLAPPED fromStart = {};
    LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK, 0, 0xFFFFFFFF, 0xFFFFFFFF, &fromStart);
    (void)_write(descriptor, line.data(), static_cast<unsigned int>(line.size()));
    UnlockFileEx(file, 0, 0xFFFFFFFF, 0xFFFFFFFF, &fromStart);
    _close(descriptor);
}

}  // namespace

int writeLines(char** arguments) {
    const bool isBare = std::string_view(arguments[0]) == kBare;
    const char* const path = arguments[1];
    const Handle go = owned(OpenEventA(SYNCHRONIZE, FALSE, arguments[2]));
    const Handle done = owned(OpenSemaphoreA(SEMAPHORE_MODIFY_STATE, FALSE, arguments[3]));
    const Handle parent = owned(OpenProcess(SYNCHRONIZE, FALSE, std::strtoul(arguments[4], nullptr, 10)));
    vorel::Exception::SetErrorLogLocation(path, 1LL << 40);
    const std::string bareLine = "[Sat Nov 21 02:33:34 2026] computer.1234.1234: WARN: " + std::string(kText) + "\r\n";
    const std::array<HANDLE, 2> wakers = {parent.get(), go.get()};
    while (WaitForMultipleObjects(2, wakers.data(), FALSE, INFINITE) == WAIT_OBJECT_0 + 1) {
        for (std::size_t line = 0; line != kLines; ++line) {
            if (isBare) {
                writeBare(path, bareLine);
            } else {
                vorel::Exception::warn("%s", kText);
            }
        }
        ReleaseSemaphore(done.get(), 1, nullptr);
    }
    return EXIT_SUCCESS;
}

bool logWriters(Growth& growth) {
    long long missingLines = 0;
    growth.measure({"line of the error log, by n processes",
                    {1, 2, 4, 8, 16},
                    0,
                    writersOf(kOurs, missingLines),
                    "open, lock and write each line",
                    writersOf(kBare, missingLines),
                    Clock::Elapsed});
    if (missingLines != 0) {
        std::fprintf(stderr, "%lld lines are missing from the logs\n", missingLines);
    }
    return missingLines == 0;
}

}  // namespace bench
