/// \file
/// Reads a log from its start, the backup first, and goes on when the log is moved to its backup, deleted, made anew
/// or emptied.
///
/// Writers open the log by its name for every line, and nobody tells when they move it. So each poll opens the two
/// files, finds out which of them is the one that was read last, goes on there, and closes them again: no file is kept
/// open in between. A program that deletes the log finds that it is gone, and the writers can make it anew. Only a
/// backup stays open until it is read to its end; while it is, the writers may have to put their next rotation off.
///
/// The file that was read last is known by its id and by the bytes in front of the place where reading stopped: an id
/// alone may belong to a new file.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vorellog/LogFiles.h"

namespace vorellog {

/// Takes what a Follower reads.
class LogSink {
public:
    LogSink() = default;
    virtual ~LogSink() = default;
    LogSink(const LogSink&) = delete;
    LogSink& operator=(const LogSink&) = delete;

    virtual void bytes(std::string_view bytes) = 0;

    /// What comes next does not go on where the bytes before stopped.
    virtual void endOfFile() = 0;

    /// The file that was being read is gone: what was added to it since the last poll is lost.
    virtual void gap() = 0;
};

class Follower {
public:
    enum class Progress {
        More,  ///< there is more to be read at once
        Idle,  ///< all is read
    };

    /// Both have to outlive the object.
    Follower(LogFiles& files, LogSink& sink);

    /// Reads one block of the log, or the rest of the backup.
    /// \throws FileBusy, after which the next poll goes on and nothing is lost; tools::Failure; what the sink throws.
    Progress poll();

    /// Whether any file was there so far.
    [[nodiscard]] bool hasFound() const noexcept { return m_current || m_previous; }

private:
    /// How far a file has been read.
    struct Position {
        FileId id;
        unsigned long long offset = 0;
        std::string tail;  ///< the last bytes in front of it
    };
    struct Pair {
        std::unique_ptr<LogFile> log;
        std::unique_ptr<LogFile> backup;
    };

    Pair openPair();
    static bool isAt(const Position& position, LogFile* file);
    std::size_t fetch(const Position& position, LogFile& file);
    void take(Position& position, std::size_t size);
    void readToEnd(Position& position, LogFile& file);
    bool readLateLines(Pair& pair);
    Progress goOnInLog(Pair pair);
    Progress goOnFromBackup(Pair pair);
    Progress startAnew(const Pair& pair);
    [[nodiscard]] bool isWithinLine() const;

    LogFiles& m_files;
    LogSink& m_sink;
    std::vector<char> m_buffer;
    std::optional<Position> m_current;
    std::optional<Position> m_previous;  ///< the backup that was read before
};

}  // namespace vorellog
