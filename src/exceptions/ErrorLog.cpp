/// \file
/// The error log. Every line opens, locks, writes, unlocks and closes the file, so that other processes may write,
/// move or delete it at any time. Nothing in here throws, waits for long, or changes what the caller's next look at
/// `errno` or the last system error finds.

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include <io.h>
#include <process.h>
#include <windows.h>

#include "LibraryState.h"
#include "core/Print.h"
#include "exceptions/DebugTargets.h"
#include "exceptions/LocaleText.h"
#include "exceptions/LogFile.h"
#include "exceptions/LogLocation.h"
#include "kernels/Utf8Streams.h"
#include "system/ComputerName.h"
#include "system/SystemClock.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/sync/Guard.h"

namespace vorel {

// Their values stand in the class; they are defined here for those who take their address.
const long long Exception::DefaultLogSize;
const long long Exception::LargeErrorLogSize;

constinit char Exception::ErrorLogLocation[MaxPathSize] = {};
constinit long long Exception::CurrentLogSize = DefaultLogSize;
constinit bool Exception::m_mirrorToErrorLog = false;

namespace {

using detail::LogFile;

constexpr char kDefaultLogPath[] = "C:\\TalvenorError.txt";
constexpr unsigned int kMostRetries = 30;
constexpr unsigned int kRetryStepMs = 3;

/// Logging leaves no trace in the error values of its thread.
class ErrorValues {
public:
    ErrorValues() noexcept : m_errno(errno), m_lastError(GetLastError()) {}
    ~ErrorValues() {
        errno = m_errno;
        SetLastError(m_lastError);
    }

    ErrorValues(const ErrorValues&) = delete;
    ErrorValues& operator=(const ErrorValues&) = delete;

private:
    int m_errno;
    DWORD m_lastError;
};

/// A message in UTF-8, on the stack unless it is long. Without memory a long message is cut.
class Utf8Message {
public:
    explicit Utf8Message(const wchar_t* message) noexcept {
        const std::size_t units = std::char_traits<wchar_t>::length(message);
        const std::size_t room = units * kernels::kMostUtf8BytesPerUnit + kSlack;
        std::size_t usable = sizeof m_buffer;
        if (room > sizeof m_buffer) {
            m_heap.reset(static_cast<char*>(std::malloc(room)));
            usable = m_heap ? room : usable;
        }
        char* const text = m_heap ? m_heap.get() : m_buffer;
        kernels::Utf8Writer<kernels::Surrogates::Paired, wchar_t> writer(message, -1);
        const std::size_t bytes =
            writer.write(reinterpret_cast<unsigned char*>(text), usable - kSlack, usable - kSlack);
        text[bytes] = 0;
        m_text = text;
    }

    [[nodiscard]] const char* text() const noexcept { return m_text; }

private:
    struct Free {
        void operator()(char* block) const noexcept { std::free(block); }
    };

    static constexpr std::size_t kSlack = kernels::kLongestUtf8Sequence + 1;

    const char* m_text;
    std::unique_ptr<char, Free> m_heap;
    char m_buffer[8192];
};

/// Sets a path of at most 1023 bytes.
void copyPath(char (&target)[detail::kLogPathBytes], const char* path) noexcept {
    const std::size_t length = path ? strnlen(path, sizeof target - 1) : 0;
    std::memmove(target, path ? path : "", length);
    target[length] = 0;
    target[sizeof target - 1] = 0;
}

/// The path that a caller means.
const char* orCurrent(const char* logPath, const char* current) noexcept {
    return logPath && *logPath ? logPath : current;
}

/// Runs `action` under the log-settings lock.
template <class Action>
void withSettings(Action&& action) noexcept {
    if (detail::LibraryState* const state = detail::libraryState()) {
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
    const ErrorValues kept;
    // Before the default file is chosen: the first line of a log that was never configured goes without a size check.
    CheckOldLogSize(logPath, maxSize);
    const Utf8Message text(message ? message : L"NULL Message");
    const char* path = orCurrent(logPath, ErrorLogLocation);
    if (!*path) {
        SetErrorLogLocation(kDefaultLogPath, 0);
        path = ErrorLogLocation;
    }
    const system::ComputerName computer = system::ComputerName::remembered();
    const system::LocalTimeText time;
    const bool withMilliseconds = isDebugTargetActive(L"LogsIncludeMsecs");
    const unsigned long long milliseconds = withMilliseconds ? system::millisecondsUtc() % 1000 : 0;

    for (unsigned int failures = 0;;) {
        LogFile file(path, LogFile::Mode::Append);
        if (!file.isOpen()) {
            return;
        }
        if (!file.tryLock()) {
            file.close();
            if (failures == kMostRetries) {
                return;
            }
            ++failures;
            ::Sleep(kRetryStepMs * failures);
            continue;
        }
        std::FILE* const stream = file.stream();
        if (!stream) {
            return;
        }
        const char* const front = prefix ? prefix : "NULL Method";
        if (withMilliseconds) {
            baseutil::streamPrint(stream, "[%hs].%.3llu %hs.%d.%lu: %hs%hs\n", time.text, milliseconds, computer.text,
                                  _getpid(), GetCurrentThreadId(), front, text.text());
        } else {
            baseutil::streamPrint(stream, "[%hs] %hs.%d.%lu: %hs%hs\n", time.text, computer.text, _getpid(),
                                  GetCurrentThreadId(), front, text.text());
        }
        (void)std::fflush(stream);
        return;
    }
}

void Exception::CheckOldLogSize(const char* logPath, long long maxSize) noexcept {
    const char* const path = orCurrent(logPath, ErrorLogLocation);
    const long long limit = maxSize < 1 ? CurrentLogSize : maxSize;
    if (!*path || limit < 1) {
        return;
    }
    LogFile file(path, LogFile::Mode::Inspect);
    // A busy file is being written: the next line will look again.
    if (!file.isOpen() || !file.tryLock() || !file.isLargerThan(limit)) {
        return;
    }
    const detail::BackupName backup(path);
    _unlink(backup.text);
    file.close();
    (void)std::rename(path, backup.text);
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
        copyPath(ErrorLogLocation, path);
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

void detail::LogLocation::copyTo(char (&path)[kLogPathBytes]) noexcept {
    withSettings(
        [&path] { copyPath(path, *Exception::ErrorLogLocation ? Exception::ErrorLogLocation : kDefaultLogPath); });
}

}  // namespace vorel
