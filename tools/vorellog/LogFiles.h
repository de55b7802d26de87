/// \file
/// The two files of an error log, opened so that nobody who writes, moves or deletes them notices.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "support/Tool.h"

namespace vorellog {

/// What a file is known by while it has a name, whatever that is. A file that was deleted may leave its id to another
/// one.
struct FileId {
    unsigned long long volume = 0;
    unsigned long long index = 0;

    friend bool operator==(const FileId&, const FileId&) = default;
};

/// A failure that is likely to pass: a writer is at work in the file, or somebody is just deleting it.
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

    /// Reads up to `size` bytes from `offset` on; fewer only at the end of the file.
    /// \throws FileBusy; tools::Failure when the file cannot be read.
    virtual std::size_t read(unsigned long long offset, char* buffer, std::size_t size) = 0;
};

class LogFiles {
public:
    enum class Which { Log, Backup };

    LogFiles() = default;
    virtual ~LogFiles() = default;
    LogFiles(const LogFiles&) = delete;
    LogFiles& operator=(const LogFiles&) = delete;

    /// Null when there is no such file.
    /// \throws FileBusy; tools::Failure when it cannot be opened.
    virtual std::unique_ptr<LogFile> open(Which which) = 0;
};

/// The files on the disk.
class DiskLogFiles : public LogFiles {
public:
    /// `path` is the log's. Its backup has ".001" behind the name.
    explicit DiskLogFiles(std::wstring path) : m_log(std::move(path)), m_backup(m_log + L".001") {}

    std::unique_ptr<LogFile> open(Which which) override;

private:
    std::wstring m_log;
    std::wstring m_backup;
};

}  // namespace vorellog
