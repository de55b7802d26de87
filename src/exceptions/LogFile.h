/// \file
/// One opening of the error log: a descriptor, the lock on the whole file, and the stream on top of it. What was taken
/// is given back in reverse when it ends.
#pragma once

#include <cstddef>
#include <cstdio>

namespace vorel::detail {

/// Locks or unlocks the whole file behind `fileDescriptor`, exclusively and without waiting. False when that fails,
/// also for a number that is no descriptor.
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
    enum class Mode { Append, Inspect };

    /// Opens the file, created if missing, for writing; others may go on reading and writing it.
    LogFile(const char* path, Mode mode) noexcept;
    ~LogFile() { close(); }

    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    [[nodiscard]] bool isOpen() const noexcept { return m_descriptor != -1; }
    bool tryLock() noexcept;

    /// Whether the file has more than `limit` bytes; false when its size cannot be told, or exceeds 31 bits.
    [[nodiscard]] bool isLargerThan(long long limit) const noexcept;

    /// A stream that appends to the file, null when there is none to be had.
    std::FILE* stream() noexcept;

    void close() noexcept;

private:
    int m_descriptor = -1;
    std::FILE* m_stream = nullptr;
    bool m_locked = false;
};

}  // namespace vorel::detail
