/// \file
/// The open error log: a descriptor, a lock on the whole file, and a stream over the descriptor. `close` first releases
/// the lock, then closes the stream and the descriptor. So flush the stream before `close`; otherwise `close` writes
/// the buffered text without the lock.
#pragma once

#include <cstddef>
#include <cstdio>

namespace vorel::detail {

/// Locks the whole file exclusively without waiting, or unlocks it. Returns false after a failure or for an invalid
/// descriptor.
bool lockWholeFile(int fileDescriptor, bool lock) noexcept;

/// The capacity of a log path in bytes, terminator included.
inline constexpr std::size_t kLogPathBytes = 1024;

/// The name of the backup of the log at `path`: at most 1018 bytes of the path, and ".001".
struct BackupName {
    explicit BackupName(const char* path) noexcept;

    char text[kLogPathBytes];
};

class LogFile {
public:
    /// Whether the file is opened to append a line, or only to inspect its size.
    enum class Mode { Append, Inspect };

    /// Opens the file for writing, and creates it if it does not exist. Other processes may read and write the file.
    LogFile(const char* path, Mode mode) noexcept;
    ~LogFile() { close(); }

    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    [[nodiscard]] bool isOpen() const noexcept { return m_descriptor != -1; }
    bool tryLock() noexcept;

    /// Whether the file has more than `limit` bytes; false if its size is unknown or does not fit into 31 bits.
    [[nodiscard]] bool isLargerThan(long long limit) const noexcept;

    /// A stream that appends to the file; null if it cannot be created.
    std::FILE* stream() noexcept;

    void close() noexcept;

private:
    int m_descriptor = -1;
    std::FILE* m_stream = nullptr;
    bool m_locked = false;
};

}  // namespace vorel::detail
