#include "vorellog/Follower.h"

#include <algorithm>
#include <utility>

namespace vorellog {

namespace {

constexpr std::size_t kBlockBytes = std::size_t{1} << 20;
constexpr std::size_t kTailBytes = 256;

}  // namespace

Follower::Follower(LogFiles& files, LogSink& sink) : m_files(files), m_sink(sink), m_buffer(kBlockBytes) {}

Follower::Progress Follower::poll() {
    Pair pair = openPair();
    if (!m_current) {
        return startOver(pair);
    }
    if (isAt(*m_current, pair.log.get())) {
        return followLog(std::move(pair));
    }
    if (isAt(*m_current, pair.backup.get())) {
        return followBackup(std::move(pair));
    }
    m_current.reset();
    m_sink.endOfFile();
    m_sink.gap();
    return startOver(pair);
}

/// Opens the log and then the backup, and ensures that no rotation happened in between. A rotation replaces the
/// backup. So there was no rotation if the backup has the same id before and after the log is opened. The first handle
/// keeps the old backup open, so no new file can get the id of the old backup.
Follower::Pair Follower::openPair() {
    constexpr unsigned int kMaxAttempts = 100;
    const auto sameFile = [](const LogFile* a, const LogFile* b) { return a && b ? a->id() == b->id() : a == b; };
    for (unsigned int attempt = 0; attempt != kMaxAttempts; ++attempt) {
        const std::unique_ptr<LogFile> before = m_files.open(LogFiles::Which::Backup);
        Pair pair;
        pair.log = m_files.open(LogFiles::Which::Log);
        pair.backup = m_files.open(LogFiles::Which::Backup);
        if (sameFile(before.get(), pair.backup.get())) {
            return pair;
        }
    }
    throw FileBusy(tools::Failure(L"gave up: the log keeps being rotated"));
}

bool Follower::isAt(const Position& position, LogFile* file) {
    if (!file || file->id() != position.id) {
        return false;
    }
    std::string tail(position.tail.size(), '\0');
    return tail.empty() || (file->read(position.offset - tail.size(), tail.data(), tail.size()) == tail.size() &&
                            tail == position.tail);
}

/// Starts with the backup, or with the log if the backup does not exist or has already been read.
Follower::Progress Follower::startOver(const Pair& pair) {
    LogFile* first = pair.log.get();
    if (pair.backup && !(m_previous && isAt(*m_previous, pair.backup.get()))) {
        first = pair.backup.get();
    }
    if (!first) {
        return Progress::Idle;
    }
    m_current = Position{first->id(), 0, {}};
    return Progress::More;
}

/// Closes the log before passing the bytes to the sink. The sink may be slow, and the log should be open only briefly.
Follower::Progress Follower::followLog(Pair pair) {
    if (readLateLines(pair)) {
        return Progress::More;
    }
    const std::size_t size = fetch(*m_current, *pair.log);
    pair = {};
    deliver(*m_current, size);
    return size == kBlockBytes ? Progress::More : Progress::Idle;
}

Follower::Progress Follower::followBackup(Pair pair) {
    const bool hasLog = pair.log != nullptr;
    const FileId log = hasLog ? pair.log->id() : FileId();
    pair.log.reset();
    readToEnd(*m_current, *pair.backup);
    if (!hasLog) {
        return Progress::Idle;
    }
    m_previous = std::move(m_current);
    m_current = Position{log, 0, {}};
    m_sink.endOfFile();
    return Progress::More;
}

/// Reads lines that were added to the backup after the rotation. There can be such lines, because a writer that opened
/// the log before its rotation writes its line to the backup. Returns whether there was such a line. While the last
/// line that was read from the log is incomplete, returns false, because the sink needs the rest of this line first.
bool Follower::readLateLines(Pair& pair) {
    if (!m_previous || isWithinLine() || !isAt(*m_previous, pair.backup.get())) {
        return false;
    }
    const std::size_t size = fetch(*m_previous, *pair.backup);
    if (size == 0) {
        return false;
    }
    pair.log.reset();
    deliver(*m_previous, size);
    readToEnd(*m_previous, *pair.backup);
    m_sink.endOfFile();
    return true;
}

void Follower::readToEnd(Position& position, LogFile& file) {
    while (const std::size_t size = fetch(position, file)) {
        deliver(position, size);
    }
}

std::size_t Follower::fetch(const Position& position, LogFile& file) {
    return file.read(position.offset, m_buffer.data(), m_buffer.size());
}

/// Moves `position` past the first `size` bytes of the buffer, and passes these bytes to the sink.
void Follower::deliver(Position& position, std::size_t size) {
    const std::string_view bytes(m_buffer.data(), size);
    position.offset += size;
    position.tail.append(bytes.substr(size - std::min(size, kTailBytes)));
    position.tail.erase(0, position.tail.size() - std::min(position.tail.size(), kTailBytes));
    if (size != 0) {
        m_sink.bytes(bytes);
    }
}

bool Follower::isWithinLine() const {
    return m_current && !m_current->tail.empty() && m_current->tail.back() != '\n';
}

}  // namespace vorellog
