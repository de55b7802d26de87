/// \file
/// The error log: writers in several processes, the size limit, and kills at every call.

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "exploration/SystemScenario.h"
#include "vorel/exceptions/Exception.h"

namespace {

using exploration::Ending;
using exploration::ProcessId;
using exploration::require;
using exploration::SystemScenario;
using vorel::Exception;

constexpr const char* kPath = "C:\\log.txt";
constexpr const char* kBackup = "C:\\log.txt.001";
constexpr long long kNoLimit = -1;

/// A line that a writer passed to the log, and whether the call has returned.
struct Line {
    std::string text;
    bool isReturned;
};

/// Describes a scenario: the initial files, the writers, the other processes, and the free space of the disk.
struct Shape {
    unsigned int writers = 2;
    unsigned int lines = 1;
    long long limit = kNoLimit;
    std::string before{};                    ///< the log's contents at the start
    std::string backup{};                    ///< the backup's contents at the start
    bool hasReader = false;                  ///< whether a process locks the log
    bool staysLocked = false;                ///< whether that process keeps the lock until the end
    bool readsBackup = false;                ///< whether a process opens the backup with all sharing modes
    bool mayLose = false;                    ///< whether a line whose call returned may be missing
    std::uint64_t disk = ~std::uint64_t{0};  ///< free space in bytes
    std::size_t length = 2;                  ///< length of each message
};

/// How often each event occurred, in all schedules together.
struct Counts {
    unsigned long long rotated = 0;     ///< the log was moved to its backup
    unsigned long long kept = 0;        ///< the log stayed above its limit
    unsigned long long lost = 0;        ///< a line whose call returned is missing
    unsigned long long unfinished = 0;  ///< the line of a killed writer is missing
    unsigned long long torn = 0;        ///< a long line of a killed writer is incomplete
};

/// Writers, each in a separate process.
class Writers final : public SystemScenario {
public:
    Writers(Shape shape, Counts& counts) : m_shape(std::move(shape)), m_counts(counts) {}

private:
    void start() override {
        if (!m_shape.before.empty()) {
            machine().files().put(kPath, m_shape.before);
        }
        if (!m_shape.backup.empty()) {
            machine().files().put(kBackup, m_shape.backup);
        }
        machine().files().setFreeSpace(m_shape.disk);
        for (unsigned int writer = 0; writer < m_shape.writers; ++writer) {
            static constexpr const char* kNames[] = {"writer A", "writer B", "writer C"};
            task(kNames[writer], writer + 1, [this, writer] { write(static_cast<char>('A' + writer)); });
        }
        if (m_shape.readsBackup) {
            task("reader of the backup", m_shape.writers + 1, [this] {
                exploration::FileSystem& files = machine().files();
                files.close(files.open(kBackup, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                       OPEN_EXISTING));
            });
        }
        if (m_shape.hasReader) {
            task("reader", m_shape.writers + 1, [this] { lockForAWhile(); });
        }
    }

    void write(char name) {
        for (unsigned int line = 0; line < m_shape.lines; ++line) {
            std::string text = name + std::to_string(line);
            text.resize(m_shape.length, name);
            const std::size_t index = m_lines.size();
            m_lines.push_back({text, false});
            Exception::log(kPath, m_shape.limit, "W", "%s", text.c_str());
            m_lines[index].isReturned = true;
        }
    }

    void lockForAWhile() {
        exploration::FileSystem& files = machine().files();
        HANDLE const file =
            files.open(kPath, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_ALWAYS);
        if (files.lock(file, 0, ~std::uint64_t{0}) && m_shape.staysLocked) {
            await([] { return false; });
        }
        files.close(file);
    }

    void check(const std::vector<Ending>& endings) override {
        const std::size_t writers = m_shape.writers;
        for (std::size_t task = 0; task < endings.size(); ++task) {
            require(endings[task] != Ending::Blocked || (task == writers && m_shape.staysLocked), "a task is blocked");
        }
        require(machine().files().openCount() == (endings.back() == Ending::Blocked ? 1u : 0u), "a file stays open");
        for (const std::string& path : machine().files().paths()) {
            require(path == kPath || path == kBackup, "there is an unexpected file " + path);
        }
        const std::string log = machine().files().contents(kPath).value_or("");
        const std::string backup = machine().files().contents(kBackup).value_or("");
        const bool isRotated = !m_shape.before.empty() && backup.starts_with(m_shape.before);
        m_counts.rotated += isRotated ? 1u : 0u;
        m_counts.kept += log.starts_with(m_shape.before) && m_shape.limit > 0 ? 1u : 0u;
        std::vector<std::string> messages = messagesOf(log);
        if (backup != m_shape.backup) {
            const std::vector<std::string> older = messagesOf(backup);
            messages.insert(messages.begin(), older.begin(), older.end());
        }
        checkOrder(messages);
        for (const Line& line : m_lines) {
            const bool isWritten = std::find(messages.begin(), messages.end(), line.text) != messages.end();
            require(isWritten || !line.isReturned || m_shape.mayLose, "a line is lost: " + line.text);
            m_counts.lost += line.isReturned && !isWritten ? 1u : 0u;
            m_counts.unfinished += line.isReturned || isWritten ? 0u : 1u;
        }
    }

    void processEnded(exploration::ProcessId) override { m_isKilled = true; }

    /// The messages in a file. Every line must be complete, except for a long line whose writer was killed.
    std::vector<std::string> messagesOf(std::string text) {
        if (text.starts_with(m_shape.before)) {
            text.erase(0, m_shape.before.size());
        }
        std::vector<std::string> messages;
        for (std::size_t end = 0; (end = text.find("\r\n")) != std::string::npos; text.erase(0, end + 2)) {
            const std::string line = text.substr(0, end);
            const std::size_t begin = std::min(line.rfind('['), end);  // after the remains of a torn line, if any
            if (begin != 0) {
                addTorn(line);
            }
            const std::size_t message = line.find(": W: ", begin);
            if (message != std::string::npos && line.size() == message + kMessageOffset + m_shape.length) {
                messages.push_back(line.substr(message + kMessageOffset));
            } else {
                addTorn(line);
            }
        }
        if (!text.empty()) {
            addTorn(text);
        }
        return messages;
    }

    void addTorn(const std::string& line) {
        ++m_counts.torn;
        require(m_isKilled && m_shape.length > kUnbufferedLength, "a line is torn or mixed: " + line);
    }

    void checkOrder(const std::vector<std::string>& messages) {
        std::map<char, std::string> last;
        for (const std::string& message : messages) {
            std::string& before = last[message.front()];
            require(before < message, before == message ? "a line is written twice" : "the lines are not in order");
            before = message;
        }
    }

    static constexpr std::size_t kMessageOffset = 5;
    static constexpr std::size_t kUnbufferedLength = 4000;  // a longer line needs several writes

    Shape m_shape;
    Counts& m_counts;
    std::vector<Line> m_lines;
    bool m_isKilled = false;
};

/// Adds a log that is larger than the limit, so a writer moves this log to the backup. The log that the writers then
/// create stays below the limit, so they do not move it.
Shape withRotation(Shape shape) {
    shape.before = std::string(1000, '-') + "\r\n";
    shape.limit = 1000;
    return shape;
}

class ErrorLogExploration : public exploration::ExplorationTest {};

TEST_F(ErrorLogExploration, NoLineIsLostOrMixedWithAnother) {
    Counts counts;
    explores<Writers>({.preemptions = 4}, Shape{.writers = 2}, std::ref(counts));
    explores<Writers>({.preemptions = 3}, Shape{.writers = 2, .lines = 2}, std::ref(counts));
    explores<Writers>({.preemptions = 2}, Shape{.writers = 3}, std::ref(counts));
    explores<Writers>({.preemptions = 2}, Shape{.writers = 2, .length = 6000}, std::ref(counts));
}

TEST_F(ErrorLogExploration, NoLineIsLostWhileTheLogIsMoved) {
    Counts counts;
    explores<Writers>({.preemptions = 3}, withRotation({.writers = 2}), std::ref(counts));
    explores<Writers>({.preemptions = 2}, withRotation({.writers = 2, .lines = 2}), std::ref(counts));
    explores<Writers>({.preemptions = 2}, withRotation({.writers = 3, .backup = "older\r\n"}), std::ref(counts));
    explores<Writers>({.preemptions = 2}, withRotation({.writers = 2, .backup = "older\r\n", .readsBackup = true}),
                      std::ref(counts));
    EXPECT_NE(counts.rotated, 0u);
    EXPECT_NE(counts.kept, 0u) << "no schedule has a writer whose open log file prevents the rename";
}

TEST_F(ErrorLogExploration, AKilledWriterLosesOnlyItsOwnLine) {
    Counts counts;
    explores<Writers>({.preemptions = 2, .kills = 1}, Shape{.writers = 2}, std::ref(counts));
    explores<Writers>({.preemptions = 2, .kills = 1}, withRotation({.writers = 2}), std::ref(counts));
    explores<Writers>({.preemptions = 1, .kills = 1}, withRotation({.writers = 3}), std::ref(counts));
    EXPECT_NE(counts.unfinished, 0u);
}

TEST_F(ErrorLogExploration, OnlyALongLineOfAKilledWriterIsTorn) {
    Counts counts;
    explores<Writers>({.preemptions = 1, .kills = 1}, Shape{.writers = 2, .length = 6000}, std::ref(counts));
    EXPECT_NE(counts.torn, 0u);
}

// The following tests show when a line is lost although its call has returned.

TEST_F(ErrorLogExploration, ALockedLogLosesALineOnlyIfItStaysLocked) {
    Counts counts;
    explores<Writers>({.preemptions = 2}, Shape{.writers = 2, .hasReader = true}, std::ref(counts));
    explores<Writers>({.preemptions = 1}, withRotation({.writers = 2, .hasReader = true}), std::ref(counts));
    explores<Writers>({.preemptions = 1}, Shape{.writers = 1, .hasReader = true, .staysLocked = true, .mayLose = true},
                      std::ref(counts));
    EXPECT_NE(counts.lost, 0u);
}

TEST_F(ErrorLogExploration, ALineIsLostOnAFullDisk) {
    Counts counts;
    explores<Writers>({.preemptions = 1}, Shape{.writers = 2, .mayLose = true, .disk = 60}, std::ref(counts));
    EXPECT_NE(counts.lost, 0u);
}

}  // namespace
