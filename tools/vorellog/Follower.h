/// \file
/// Reads a log from its start, the backup first, and continues after the log is rotated, deleted, created again or
/// emptied.
///
/// Writers open the log by name for each line and do not announce a rotation. So each poll opens both files, continues
/// in the file that was read last, and closes both files. Because no file stays open between polls, a deleted log
/// really disappears, and writers can create it again. A poll that reads the backup keeps the backup open until it has
/// read the backup to its end. During this time, writers may be unable to rotate the log again.
///
/// The file that was read last is recognised by its id and by the bytes before the read position, because a new file
/// may have the same id.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vorellog/LogFiles.h"

namespace vorellog {

/// Receives the bytes that a Follower reads.
class LogSink {
public:
    LogSink() = default;
    virtual ~LogSink() = default;
    LogSink(const LogSink&) = delete;
    LogSink& operator=(const LogSink&) = delete;

    virtual void bytes(std::string_view bytes) = 0;

    /// The next bytes come from another file, or from the start of a file that was emptied.
    virtual void endOfFile() = 0;

    /// The file that was being read no longer exists, or was emptied. Lines that were added to it since the last poll
    /// are lost.
    virtual void gap() = 0;
};

class Follower {
public:
    enum class Progress {
        More,  ///< the next poll may find more bytes at once
        Idle,  ///< all bytes have been read, or no file exists
    };

    /// `files` and `sink` must outlive this object.
    Follower(LogFiles& files, LogSink& sink);

    /// Starts within the log instead of at the start of the backup. Call this before the first poll.
    void startAt(FileId log, unsigned long long offset) { m_current = Position{log, offset, {}}; }

    /// Reads at most one block of the log, or the rest of the backup.
    /// \throws FileBusy (nothing is lost, and the next poll continues); tools::Failure; exceptions of the sink.
    Progress poll();

    /// Whether a file has been found so far, or `startAt` was called. If the log disappears before a backup has been
    /// read, the result is false again until a poll finds a file.
    [[nodiscard]] bool hasFound() const noexcept { return m_current || m_previous; }

private:
    /// How far a file has been read.
    struct Position {
        FileId id;
        unsigned long long offset = 0;
        std::string tail;  ///< the last bytes before `offset`
    };
    struct Pair {
        std::unique_ptr<LogFile> log;
        std::unique_ptr<LogFile> backup;
    };

    Pair openPair();
    static bool isAt(const Position& position, LogFile* file);
    std::size_t fetch(const Position& position, LogFile& file);
    void deliver(Position& position, std::size_t size);
    void readToEnd(Position& position, LogFile& file);
    bool readLateLines(Pair& pair);
    Progress followLog(Pair pair);
    Progress followBackup(Pair pair);
    Progress startOver(const Pair& pair);
    [[nodiscard]] bool isWithinLine() const;

    LogFiles& m_files;
    LogSink& m_sink;
    std::vector<char> m_buffer;
    std::optional<Position> m_current;
    std::optional<Position> m_previous;  ///< the end of the backup, after the backup has been read
};

}  // namespace vorellog
