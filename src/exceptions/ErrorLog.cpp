/// \file
/// The error log. For each line, the file is opened, locked, written, unlocked and closed, so other processes may
/// write, move or delete the file between two lines. Writing a line never throws, never waits for the file without
/// limit, and does not change the caller's `errno` or last system error.

#include <cerrno>
#include <cstdio>

#include <io.h>
#include <windows.h>

#include "algorithms/Attributes.h"
#include "core/Format.h"
#include "exceptions/InvalidParameter.h"
#include "exceptions/LocaleText.h"
#include "exceptions/LogFile.h"
#include "exceptions/LogLine.h"
#include "exceptions/LogPath.h"
#include "exceptions/LogState.h"
#include "vorel/core/Guard.h"
#include "vorel/exceptions/Exception.h"

namespace vorel {

// The class declaration initialises these constants. Code that takes their addresses needs these definitions.
const long long Exception::DefaultLogSize;
const long long Exception::LargeErrorLogSize;

alignas(8) constinit char Exception::ErrorLogLocation[MaxPathSize] = {};
constinit long long Exception::CurrentLogSize = DefaultLogSize;
constinit bool Exception::m_mirrorToErrorLog = false;

namespace {

using detail::LogFile;
using detail::LogLine;

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

/// Writes a line to a locked file. Drops the line if no stream can be opened on the file.
void write(LogFile& file, LogLine& line) noexcept {
    std::FILE* const stream = file.stream();
    if (!stream) {
        return;
    }
    do {
        baseutil::streamPrint(stream, "%hs", line.piece());
    } while (line.next());
    (void)std::fflush(stream);
}

/// Appends a line to the file at `path`. Drops the line if other writers keep the file locked during all attempts, or
/// if the file cannot be opened.
void append(const char* path, LogLine& line) noexcept {
    for (unsigned int failures = 0;;) {
        LogFile file(path, LogFile::Mode::Append);
        if (!file.isOpen()) {
            return;
        }
        if (file.tryLock()) {
            write(file, line);
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

/// The path of the file for one line: the caller's path, or a copy of the log location. The size check and the line use
/// the same copy, because another thread may change the location between them.
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

/// Moves a locked file to its backup and closes it.
VOREL_NOINLINE void moveToBackup(LogFile& file, const char* path) noexcept {
    const detail::BackupName backup(path);
    _unlink(backup.text);
    file.close();
    (void)std::rename(path, backup.text);
}

/// Whether a size limit applies to the file at `path`.
bool isLimited(const char* path, long long limit) noexcept {
    return *path && limit >= 1;
}

/// Moves the file at `path` to its backup if it has more than `limit` bytes.
void moveIfLarger(const char* path, long long limit) noexcept {
    if (!isLimited(path, limit)) {
        return;
    }
    LogFile file(path, LogFile::Mode::Inspect);
    // If another writer has locked the file, the size is checked when the next line is logged.
    if (file.isOpen() && file.tryLock() && file.isLargerThan(limit)) {
        moveToBackup(file, path);
    }
}

/// Checks the size of the file at `path` and appends a line, under one lock. Returns false if the file cannot be
/// opened, cannot be locked at once, or is larger than `limit`. A larger file is moved to its backup. If the result is
/// false, the caller writes the line without another check of the size.
bool appendIfNotLarger(const char* path, long long limit, LogLine& line) noexcept {
    LogFile file(path, LogFile::Mode::Append);
    if (!file.isOpen() || !file.tryLock()) {
        return false;
    }
    if (file.isLargerThan(limit)) {
        moveToBackup(file, path);
        return false;
    }
    write(file, line);
    return true;
}

/// Runs `action` under the log-settings lock. While the library state does not exist (during load and unload), runs
/// `action` without the lock.
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
    long long limit = maxSize < 1 ? CurrentLogSize : maxSize;
    if (path.empty()) {
        withSettings([&path] {
            path.readLocation();  // again, because another thread may be setting the location
            if (path.empty()) {
                SetErrorLogLocation(detail::kDefaultLogPath, 0);
            }
        });
        path.readLocation();
        limit = -1;  // the first line of a log whose path was not set is written without a size check
    }
    LogLine line(prefix, message, isDebugTargetActive(L"LogsIncludeMsecs"));
    if (!isLimited(path.text(), limit) || !appendIfNotLarger(path.text(), limit, line)) {
        append(path.text(), line);
    }
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
        // The destructor of this object removes the handler. Without the object, during load and unload, the handler
        // would stay installed after the module is unloaded.
        if (detail::currentInvalidParameterHandler.get()) {
            detail::installInvalidParameterHandler(&Invalid_Parameter_Handler);
        }
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
