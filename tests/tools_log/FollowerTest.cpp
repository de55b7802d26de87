/// \file
/// The Follower with files in memory. Tests can change the files at any time, even between two reads of the Follower.

#include "vorellog/Follower.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using vorellog::FileBusy;
using vorellog::FileId;
using vorellog::Follower;
using vorellog::LogFile;
using vorellog::LogFiles;
using vorellog::LogSink;

struct MemoryFile {
    unsigned long long index = 0;
    std::string bytes;
    std::size_t read = 0;  ///< the end of the bytes read so far
};
using MemoryFilePointer = std::shared_ptr<MemoryFile>;

/// A log and its backup. A step of a reader opens a file or reads a block. `before` is called before each step.
class MemoryFiles : public LogFiles {
public:
    MemoryFilePointer log;
    MemoryFilePointer backup;
    std::function<void()> before = [] {};
    unsigned int openFiles = 0;

    std::unique_ptr<LogFile> open(Which which) override {
        before();
        const MemoryFilePointer file = which == Which::Log ? log : backup;
        return file ? std::make_unique<Opened>(*this, file) : nullptr;
    }

    void append(std::string_view bytes) {
        if (!log) {
            log = std::make_shared<MemoryFile>();
            log->index = ++m_lastIndex;
        }
        log->bytes += bytes;
    }

    void rotate() { backup = std::exchange(log, nullptr); }

    /// Makes the next new file reuse the id of the last file, as some file systems do.
    void reuseId() { --m_lastIndex; }

private:
    class Opened : public LogFile {
    public:
        Opened(MemoryFiles& files, MemoryFilePointer file) : m_files(files), m_file(std::move(file)) {
            ++m_files.openFiles;
        }
        ~Opened() override { --m_files.openFiles; }

        [[nodiscard]] FileId id() const override { return {1, m_file->index}; }
        [[nodiscard]] unsigned long long size() const override { return m_file->bytes.size(); }

        std::size_t read(unsigned long long offset, char* buffer, std::size_t size) override {
            m_files.before();
            const std::string& bytes = m_file->bytes;
            const std::size_t at = std::min<std::size_t>(offset, bytes.size());
            const std::size_t count = bytes.copy(buffer, size, at);
            m_file->read = std::max(m_file->read, at + count);
            return count;
        }

    private:
        MemoryFiles& m_files;
        MemoryFilePointer m_file;
    };

    unsigned long long m_lastIndex = 0;
};

/// The output of a Follower: "|" marks the end of a file, "?" a gap.
class Text : public LogSink {
public:
    std::string text;
    void bytes(std::string_view bytes) override { text += bytes; }
    void endOfFile() override { text += '|'; }
    void gap() override { text += '?'; }
};

class FollowerTest : public ::testing::Test {
protected:
    MemoryFiles files;
    Text sink;
    Follower follower{files, sink};

    /// Reads until nothing is left and returns the output.
    std::string readAll() {
        sink.text.clear();
        while (follower.poll() == Follower::Progress::More) {}
        EXPECT_EQ(files.openFiles, 0u);
        return sink.text;
    }
};

TEST_F(FollowerTest, MissingLogIsReadWhenItAppears) {
    EXPECT_EQ(readAll(), "");
    EXPECT_FALSE(follower.hasFound());
    files.append("a\n");
    EXPECT_EQ(readAll(), "a\n");
    EXPECT_TRUE(follower.hasFound());
}

TEST_F(FollowerTest, BackupIsReadBeforeTheLog) {
    files.append("a\n");
    files.rotate();
    files.append("b\n");
    EXPECT_EQ(readAll(), "a\n|b\n");
    EXPECT_EQ(readAll(), "");
}

TEST_F(FollowerTest, BackupIsReadIfTheLogIsMissing) {
    files.append("a\n");
    files.rotate();
    EXPECT_EQ(readAll(), "a\n");
    EXPECT_TRUE(follower.hasFound());
    files.append("b\n");
    EXPECT_EQ(readAll(), "|b\n");
}

TEST_F(FollowerTest, AppendedBytesAreReadOnce) {
    files.append("a\n");
    EXPECT_EQ(readAll(), "a\n");
    files.append("b");
    EXPECT_EQ(readAll(), "b");
    files.append("c\n");
    EXPECT_EQ(readAll(), "c\n");
}

TEST_F(FollowerTest, RestOfARotatedLogIsReadBeforeTheNewLog) {
    files.append("a\n");
    EXPECT_EQ(readAll(), "a\n");
    files.append("b\n");
    files.rotate();
    files.append("c\n");
    EXPECT_EQ(readAll(), "b\n|c\n");
    files.append("d\n");
    files.rotate();
    EXPECT_EQ(readAll(), "d\n");
    files.append("e\n");
    EXPECT_EQ(readAll(), "|e\n");
}

TEST_F(FollowerTest, LinesWrittenToTheBackupAfterARotationAreRead) {
    files.append("a\n");
    EXPECT_EQ(readAll(), "a\n");
    files.rotate();
    files.append("c\n");
    EXPECT_EQ(readAll(), "|c\n");
    files.backup->bytes += "b\n";
    EXPECT_EQ(readAll(), "b\n|");
    files.append("half");
    files.backup->bytes += "late\n";
    EXPECT_EQ(readAll(), "late\n|half");
    files.backup->bytes += "later\n";
    EXPECT_EQ(readAll(), "");  // a late line of the backup is not shown while a line of the log is incomplete
    files.append(" whole\n");
    EXPECT_EQ(readAll(), " whole\n");
    EXPECT_EQ(readAll(), "later\n|");
}

TEST_F(FollowerTest, DeletionIsReportedAsAGapAndTheNewLogIsRead) {
    files.append("a\n");
    EXPECT_EQ(readAll(), "a\n");
    files.log = nullptr;
    EXPECT_EQ(readAll(), "|?");
    EXPECT_EQ(readAll(), "");
    files.append("b\n");
    EXPECT_EQ(readAll(), "b\n");
}

TEST_F(FollowerTest, BackupIsNotReadAgainAfterDeletion) {
    files.append("a\n");
    files.rotate();
    files.append("b\n");
    EXPECT_EQ(readAll(), "a\n|b\n");
    files.log = nullptr;
    EXPECT_EQ(readAll(), "|?");
    files.append("c\n");
    EXPECT_EQ(readAll(), "c\n");
}

TEST_F(FollowerTest, NewLogWithAReusedIdIsReadFromItsStart) {
    files.append("a1\n");
    EXPECT_EQ(readAll(), "a1\n");
    files.log = nullptr;
    files.reuseId();
    files.append("b1\nb2\n");
    EXPECT_EQ(readAll(), "|?b1\nb2\n");
}

TEST_F(FollowerTest, EmptiedLogIsReadFromItsStart) {
    files.append("a1\na2\n");
    EXPECT_EQ(readAll(), "a1\na2\n");
    files.log->bytes = "b\n";
    EXPECT_EQ(readAll(), "|?b\n");
}

TEST_F(FollowerTest, TwoRotationsBetweenPollsAreReportedAsAGap) {
    files.append("a\n");
    EXPECT_EQ(readAll(), "a\n");
    files.append("lost\n");
    files.rotate();
    files.append("b\n");
    files.rotate();
    files.append("c\n");
    EXPECT_EQ(readAll(), "|?b\n|c\n");
}

TEST(FollowerStepsTest, RotationAtAnyStepNeitherLosesNorRepeatsLines) {
    constexpr unsigned int kSteps = 40;  // more steps than are necessary to read everything
    for (const bool hasBackup : {false, true}) {
        for (unsigned int rotateAt = 0; rotateAt != kSteps; ++rotateAt) {
            SCOPED_TRACE(rotateAt);
            MemoryFiles files;
            if (hasBackup) {
                files.append("a");
                files.rotate();
            }
            files.append("b");
            Text sink;
            Follower follower(files, sink);
            unsigned int step = 0;
            files.before = [&] {
                if (step++ == rotateAt) {
                    files.rotate();
                    files.append("c");
                }
            };
            while (step < 2 * kSteps) {
                (void)follower.poll();
            }
            std::erase(sink.text, '|');
            std::erase(sink.text, '?');
            // The rotation may have deleted the backup before it was read.
            EXPECT_TRUE(sink.text == "bc" || (hasBackup && sink.text == "abc")) << sink.text;
        }
    }
}

TEST_F(FollowerTest, FilesLongerThanABlockAreReadCompletely) {
    std::string bytes;
    for (int number = 0; bytes.size() < 3'500'000; ++number) {
        bytes += std::to_string(number) + '\n';
    }
    files.append(bytes);
    EXPECT_EQ(readAll(), bytes);
    files.rotate();
    files.append(bytes);
    EXPECT_EQ(readAll(), "|" + bytes);
}

TEST_F(FollowerTest, LogIsClosedBeforeBytesAreDelivered) {
    class Watching : public LogSink {
    public:
        explicit Watching(const MemoryFiles& files) : m_files(files) {}
        void bytes(std::string_view) override { EXPECT_EQ(m_files.openFiles, 0u); }
        void endOfFile() override {}
        void gap() override {}

    private:
        const MemoryFiles& m_files;
    };
    Watching watching(files);
    Follower watched(files, watching);
    files.append("a\n");
    while (watched.poll() == Follower::Progress::More) {}
}

TEST_F(FollowerTest, BusyFileIsReadLater) {
    files.append("a\n");
    files.rotate();
    files.append("b\n");
    // Every step fails once before it succeeds.
    unsigned int step = 0;
    unsigned int failAt = 0;
    files.before = [&] {
        if (step++ == failAt) {
            ++failAt;
            throw FileBusy(tools::Failure(L"locked"));
        }
    };
    unsigned int failures = 0;
    for (bool done = false; !done;) {
        step = 0;
        try {
            done = follower.poll() == Follower::Progress::Idle;
            failAt = 0;
        } catch (const FileBusy&) {
            ++failures;
        }
    }
    EXPECT_EQ(sink.text, "a\n|b\n");
    EXPECT_GT(failures, 10u);
    EXPECT_EQ(files.openFiles, 0u);
}

TEST_F(FollowerTest, LogRotatedBeforeEachStepIsReportedAsBusy) {
    files.append("a\n");
    files.before = [&] {
        files.rotate();
        files.append("b\n");
    };
    EXPECT_THROW((void)follower.poll(), FileBusy);
}

TEST_F(FollowerTest, OpenFailureIsReported) {
    files.before = [] { throw tools::Failure(L"no"); };
    EXPECT_THROW((void)follower.poll(), tools::Failure);
}

/// Writers that act before each step of the reader. They write whole lines, lines in two parts, and late lines, which
/// are written to a log file after it became the backup. They also rotate the log, but only after the backup has been
/// read, because a rotation deletes the backup. Sometimes `act` throws `FileBusy`, so the step of the reader fails.
class Writers {
public:
    Writers(MemoryFiles& files, unsigned int seed) : m_files(files), m_random(seed) {}

    void act() {
        switch (m_random() % 8) {
        case 0:
        case 1:
            if (m_rest.empty()) {
                m_files.append(line());
            }
            break;
        case 2:  // a line in two parts; until it is complete, its writer excludes all other writers of the log
            if (m_rest.empty()) {
                m_rest = line();
                const std::size_t half = m_random() % m_rest.size();
                m_files.append(std::string_view(m_rest).substr(0, half));
                m_rest.erase(0, half);
            }
            break;
        case 3: finishLine(); break;
        case 4:
            if (m_rest.empty() && m_files.log && mayReplaceBackup()) {
                m_files.rotate();
            }
            break;
        case 5:
            if (m_files.backup && m_random() % 4 == 0) {
                m_files.backup->bytes += line();
            }
            break;
        case 6:
            if (m_random() % 4 == 0) {
                throw FileBusy(tools::Failure(L"locked"));
            }
            break;
        default: break;
        }
    }

    /// Acts before the reader starts. Ignores `FileBusy`, because no step of the reader is running that could fail.
    void actBeforeReading() {
        try {
            act();
        } catch (const FileBusy&) {
            return;
        }
    }

    void finishLine() {
        if (!m_rest.empty()) {
            m_files.append(m_rest);
            m_rest.clear();
        }
    }

    [[nodiscard]] unsigned int lines() const { return m_lines; }

private:
    [[nodiscard]] bool mayReplaceBackup() const {
        return !m_files.backup || m_files.backup->read == m_files.backup->bytes.size();
    }

    std::string line() { return "line " + std::to_string(m_lines++) + "\n"; }

    MemoryFiles& m_files;
    std::mt19937 m_random;
    std::string m_rest;
    unsigned int m_lines = 0;
};

TEST(FollowerRandomTest, NoLineIsLostOrRepeated) {
    for (unsigned int seed = 1; seed != 300; ++seed) {
        SCOPED_TRACE(seed);
        MemoryFiles files;
        Text sink;
        Follower follower(files, sink);
        Writers writers(files, seed);
        const auto poll = [&] {
            try {
                return follower.poll() == Follower::Progress::More;
            } catch (const FileBusy&) {
                return true;
            }
        };
        for (unsigned int count = 0; count != seed % 20; ++count) {
            writers.actBeforeReading();
        }
        files.before = [&] { writers.act(); };
        for (int count = 0; count != 300; ++count) {
            (void)poll();
        }
        writers.finishLine();
        files.before = [] {};
        for (int idle = 0; idle != 3;) {
            idle = poll() ? 0 : idle + 1;
        }
        std::map<std::string, unsigned int> times;
        std::string text = sink.text;
        std::erase(text, '|');
        std::erase(text, '?');  // a gap may be reported even if no line was lost
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t end = text.find('\n', at);
            ASSERT_NE(end, std::string::npos);
            ++times[text.substr(at, end - at)];
            at = end + 1;
        }
        ASSERT_EQ(times.size(), writers.lines());
        for (const auto& [line, count] : times) {
            ASSERT_EQ(count, 1u) << line;
        }
    }
}

}  // namespace
