/// \file
/// The error log. Each line opens, locks, writes, unlocks and closes the file, so other processes may write, move or
/// delete it at any time. Nothing here throws, waits without limit, or changes the caller's `errno` or last system
/// error.

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include <io.h>
#include <process.h>
#include <windows.h>

#include "algorithms/Utf8Streams.h"
#include "core/Format.h"
#include "exceptions/DebugTargets.h"
#include "exceptions/InvalidParameter.h"
#include "exceptions/LocaleText.h"
#include "exceptions/LogFile.h"
#include "exceptions/LogPath.h"
#include "exceptions/LogState.h"
#include "platform/ComputerName.h"
#include "platform/SystemClock.h"
#include "vorel/core/Guard.h"
#include "vorel/exceptions/Exception.h"

namespace vorel {

// The class has their values; these definitions are for code that takes their addresses.
const long long Exception::DefaultLogSize;
const long long Exception::LargeErrorLogSize;

alignas(8) constinit char Exception::ErrorLogLocation[MaxPathSize] = {};
constinit long long Exception::CurrentLogSize = DefaultLogSize;
constinit bool Exception::m_mirrorToErrorLog = false;

namespace {

using detail::LogFile;

constexpr unsigned int kMaxRetries = 30;
constexpr unsigned int kRetryStepMs = 3;

/// Restores `errno` and the last system error of the thread.
class ErrorStateGuard {
public:
    ErrorStateGuard() noexcept : m_errno(errno), m_lastError(GetLastError()) {}
    ~ErrorStateGuard() {
        errno = m_errno;
        SetLastError(m_lastError);
    }

    ErrorStateGuard(const ErrorStateGuard&) = delete;
    ErrorStateGuard& operator=(const ErrorStateGuard&) = delete;

private:
    int m_errno;
    DWORD m_lastError;
};

/// A message converted to UTF-8. A short message is one piece on the stack, a long message one piece on the heap. If
/// the heap allocation fails, a long message is converted in several pieces on the stack.
class Utf8Message {
public:
    explicit Utf8Message(const wchar_t* message) noexcept : m_writer(message, -1) {
        const std::size_t units = std::char_traits<wchar_t>::length(message);
        const std::size_t capacity = units * algorithms::kMaxUtf8BytesPerUnit + kSlack;
        if (capacity > m_capacity) {
            m_heap.reset(static_cast<char*>(std::malloc(capacity)));
            m_capacity = m_heap ? capacity : m_capacity;
        }
        convertPiece();
    }

    /// The current piece.
    [[nodiscard]] const char* text() const noexcept { return m_heap ? m_heap.get() : m_buffer; }

    /// The text after the current piece: a line feed after the last one.
    [[nodiscard]] const char* ending() const noexcept { return m_writer.atEnd() ? "\n" : ""; }

    /// Converts the next piece; false when there is none.
    bool next() noexcept {
        if (m_writer.atEnd()) {
            return false;
        }
        convertPiece();
        return true;
    }

private:
    struct Free {
        void operator()(char* block) const noexcept { std::free(block); }
    };

    static constexpr std::size_t kSlack = algorithms::kLongestUtf8Sequence + 1;

    void convertPiece() noexcept {
        char* const piece = m_heap ? m_heap.get() : m_buffer;
        const std::size_t capacity = m_capacity - kSlack;
        piece[m_writer.write(reinterpret_cast<unsigned char*>(piece), capacity, capacity)] = 0;
    }

    algorithms::Utf8Writer<algorithms::Surrogates::Paired, wchar_t> m_writer;
    std::unique_ptr<char, Free> m_heap;
    std::size_t m_capacity = sizeof m_buffer;
    char m_buffer[1024];
};

/// Writes one line to a locked file.
void printLine(std::FILE* stream, const platform::LocalTimeText& time,
               const std::optional<unsigned long long>& milliseconds, const char* prefix,
               Utf8Message& message) noexcept {
    const platform::ComputerName computer = platform::ComputerName::remembered();
    const char* const shownPrefix = prefix ? prefix : "NULL Method";
    if (milliseconds) {
        baseutil::streamPrint(stream, "[%hs].%.3llu %hs.%d.%lu: %hs%hs%hs", time.text, *milliseconds, computer.text,
                              _getpid(), GetCurrentThreadId(), shownPrefix, message.text(), message.ending());
    } else {
        baseutil::streamPrint(stream, "[%hs] %hs.%d.%lu: %hs%hs%hs", time.text, computer.text, _getpid(),
                              GetCurrentThreadId(), shownPrefix, message.text(), message.ending());
    }
    while (message.next()) {
        baseutil::streamPrint(stream, "%hs%hs", message.text(), message.ending());
    }
    (void)std::fflush(stream);
}

/// Appends one line to the file at `path`. Drops the line when others keep the file locked during all attempts, or the
/// file cannot be opened.
[[gnu::noinline]] void appendLine(const char* path, const char* prefix, const wchar_t* message,
                                  bool withMilliseconds) noexcept {
    Utf8Message text(message ? message : L"NULL Message");
    const platform::LocalTimeText time;
    std::optional<unsigned long long> milliseconds;
    if (withMilliseconds) {
        milliseconds = platform::millisecondsUtc() % 1000;
    }
    for (unsigned int failures = 0;;) {
        LogFile file(path, LogFile::Mode::Append);
        if (!file.isOpen()) {
            return;
        }
        if (file.tryLock()) {
            if (std::FILE* const stream = file.stream()) {
                printLine(stream, time, milliseconds, prefix, text);
            }
            return;
        }
        file.close();
        if (failures == kMaxRetries) {
            return;
        }
        ++failures;
        ::Sleep(kRetryStepMs * failures);
    }
}

/// The path of one line: the caller's path, or a copy of the log location. The copy is made once, so the size check and
/// the line use the same path.
class LinePath {
public:
    explicit LinePath(const char* own) noexcept : m_text(own && *own ? own : m_location) {
        if (m_text == m_location) {
            readLocation();
        }
    }

    ~LinePath() = default;
    LinePath(const LinePath&) = delete;
    LinePath& operator=(const LinePath&) = delete;

    void readLocation() noexcept { detail::LogPath::read(m_location); }
    [[nodiscard]] const char* text() const noexcept { return m_text; }
    [[nodiscard]] bool empty() const noexcept { return *m_text == 0; }

private:
    const char* m_text;
    char m_location[detail::kLogPathBytes];
};

/// Moves the file at `path` to its backup if it has more than `limit` bytes.
[[gnu::noinline]] void moveIfLarger(const char* path, long long limit) noexcept {
    if (!*path || limit < 1) {
        return;
    }
    LogFile file(path, LogFile::Mode::Inspect);
    // Another process is writing to a locked file; the next line checks the size again.
    if (!file.isOpen() || !file.tryLock() || !file.isLargerThan(limit)) {
        return;
    }
    const detail::BackupName backup(path);
    _unlink(backup.text);
    file.close();
    (void)std::rename(path, backup.text);
}

/// Runs `action` under the log-settings lock.
template <class Action>
void withSettings(Action&& action) noexcept {
    if (detail::LogState* const state = detail::logState.get()) {
        const Guard<ForcedCriticalSection> held(state->LogSettingsLock);
        action();
    } else {
        action();
    }
}

}  // namespace

void Exception::MirrorErrorMessage(const char* logPath, long long maxSize, const char* prefix, const wchar_t* message,
                                   bool force) noexcept {
    if (maxSize == 0 || IsThreadErrorLoggingDisabled() || (!m_mirrorToErrorLog && !force)) {
        return;
    }
    const ErrorStateGuard errorState;
    LinePath path(logPath == ErrorLogLocation ? nullptr : logPath);
    if (path.empty()) {
        // The first line of a log that was never configured is written without a size check.
        SetErrorLogLocation(detail::kDefaultLogPath, 0);
        path.readLocation();
    } else {
        moveIfLarger(path.text(), maxSize < 1 ? CurrentLogSize : maxSize);
    }
    appendLine(path.text(), prefix, message, isDebugTargetActive(L"LogsIncludeMsecs"));
}

void Exception::CheckOldLogSize(const char* logPath, long long maxSize) noexcept {
    const LinePath path(logPath == ErrorLogLocation ? nullptr : logPath);
    moveIfLarger(path.text(), maxSize < 1 ? CurrentLogSize : maxSize);
}

bool Exception::LockLogFile(int fileDescriptor, bool lock) noexcept {
    return detail::lockWholeFile(fileDescriptor, lock);
}

void Exception::SetErrorLogLocation(const char* path, long long size) noexcept {
    static_assert(MaxPathSize == detail::kLogPathBytes);
    withSettings([=] {
        if (size >= 1) {
            CurrentLogSize = size;
        }
        detail::LogPath::write(path);
        detail::installInvalidParameterHandler(&Invalid_Parameter_Handler);
    });
}

void Exception::SetErrorLogLocation(const wchar_t* path, long long size) noexcept {
    BaseString<char> narrow;
    detail::wcs2mbs(path, narrow);
    SetErrorLogLocation(narrow.c_str(), size);
}

void Exception::SetErrorLogSize(long long size) noexcept {
    if (size >= -1) {
        withSettings([=] { CurrentLogSize = size; });
    }
}

}  // namespace vorel
