/// \file
/// Opens the two files of an error log: the log and its backup. While they are open, other programs can still write,
/// rotate and delete them.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "support/Tool.h"

namespace vorellog {

/// Identifies a file independently of its name. A new file may get the id of a deleted file.
struct FileId {
    unsigned long long volume = 0;
    unsigned long long index = 0;

    friend bool operator==(const FileId&, const FileId&) = default;
};

/// A failure that may be temporary: another program has locked the file or does not share it, or the system denies
/// access. The system also denies access while the file is being deleted.
class FileBusy : public tools::Failure {
public:
    explicit FileBusy(const tools::Failure& failure) : Failure(failure) {}
};

/// An open file.
class LogFile {
public:
    LogFile() = default;
    virtual ~LogFile() = default;
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    [[nodiscard]] virtual FileId id() const = 0;

    /// The current size in bytes; 0 if the system does not report it.
    [[nodiscard]] virtual unsigned long long size() const = 0;

    /// Reads up to `size` bytes at `offset` and returns their number, which is less than `size` only at the end of the
    /// file.
    /// \throws FileBusy; tools::Failure if the file cannot be read.
    virtual std::size_t read(unsigned long long offset, char* buffer, std::size_t size) = 0;
};

class LogFiles {
public:
    enum class Which { Log, Backup };

    LogFiles() = default;
    virtual ~LogFiles() = default;
    LogFiles(const LogFiles&) = delete;
    LogFiles& operator=(const LogFiles&) = delete;

    /// Returns null if the file does not exist.
    /// \throws FileBusy; tools::Failure if the file cannot be opened.
    virtual std::unique_ptr<LogFile> open(Which which) = 0;
};

/// Log files on disk.
class DiskLogFiles : public LogFiles {
public:
    /// `path` is the path of the log; the path of the backup has ".001" appended.
    explicit DiskLogFiles(std::wstring path) : m_log(std::move(path)), m_backup(m_log + L".001") {}

    std::unique_ptr<LogFile> open(Which which) override;

private:
    std::wstring m_log;
    std::wstring m_backup;
};

}  // namespace vorellog
