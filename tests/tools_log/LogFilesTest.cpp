/// \file
/// Log files on disk while the library writes to them.

#include "vorellog/LogFiles.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

#include "support/Handle.h"
#include "support/LockedFile.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/Exception.h"
#include "vorellog/Follower.h"

namespace {

using vorel::Exception;
using vorellog::DiskLogFiles;
using vorellog::FileBusy;
using vorellog::Follower;
using vorellog::LogFile;
using vorellog::LogSink;
using Which = vorellog::LogFiles::Which;

std::wstring wide(const std::string& ascii) {
    return {ascii.begin(), ascii.end()};
}

class LogFilesTest : public ::testing::Test {
protected:
    test::TemporaryLog log{1000};
    DiskLogFiles files{wide(log.path())};

    std::string contentOf(LogFile& file) {
        std::string bytes(100000, '\0');
        bytes.resize(file.read(0, bytes.data(), bytes.size()));
        return bytes;
    }
};

TEST_F(LogFilesTest, OpenReturnsNullForAMissingFile) {
    EXPECT_FALSE(files.open(Which::Log));
    EXPECT_FALSE(files.open(Which::Backup));
    EXPECT_FALSE(DiskLogFiles(wide(log.folder().file("no_folder\\log.txt"))).open(Which::Log));
}

TEST_F(LogFilesTest, ReadsFromAnyOffset) {
    Exception::warn("text");
    const std::string bytes = test::readFileBytes(log.path()).value();
    const auto file = files.open(Which::Log);
    ASSERT_TRUE(file);
    EXPECT_EQ(contentOf(*file), bytes);
    char part[5];
    EXPECT_EQ(file->read(3, part, sizeof part), sizeof part);
    EXPECT_EQ(std::string(part, sizeof part), bytes.substr(3, sizeof part));
    EXPECT_EQ(file->read(bytes.size() - 2, part, sizeof part), 2u);
    EXPECT_EQ(file->read(bytes.size(), part, sizeof part), 0u);
    EXPECT_EQ(file->read(bytes.size() + 100, part, sizeof part), 0u);
}

TEST_F(LogFilesTest, OpenLogCanBeWrittenAndRotated) {
    Exception::warn("first");
    const auto open = files.open(Which::Log);
    ASSERT_TRUE(open);
    while (!files.open(Which::Backup)) {
        Exception::warn("%s", std::string(100, 'x').c_str());
        ASSERT_LT(log.size(), 2000);
    }
    EXPECT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(files.open(Which::Backup)->id(), open->id());
    EXPECT_FALSE(files.open(Which::Log)->id() == open->id());
    EXPECT_EQ(contentOf(*open), test::readFileBytes(log.backupPath()).value());
}

/// The numbers in the lines of `text`, in their order, such as 7 in "line 7.".
std::vector<int> numbersIn(const std::string& text) {
    constexpr std::string_view kLine = "line ";
    std::vector<int> numbers;
    for (std::size_t at = text.find(kLine); at != std::string::npos; at = text.find(kLine, at + 1)) {
        numbers.push_back(std::stoi(text.substr(at + kLine.size())));
    }
    return numbers;
}

TEST_F(LogFilesTest, LinesStayConsecutiveWhileTheBackupIsOpen) {
    int last = 0;
    const auto writeLines = [&](int count) {
        for (; count != 0; --count) {
            Exception::warn("line %d.", ++last);
        }
    };
    writeLines(30);
    {
        const auto backup = files.open(Which::Backup);
        ASSERT_TRUE(backup);
        writeLines(50);
        EXPECT_FALSE(contentOf(*backup).empty());
        // If the library deletes the open backup, its name is free at once on some systems, and only after the backup
        // is closed on other systems. On all systems, the remaining lines are consecutive.
        const std::vector<int> numbers =
            numbersIn(test::readFileBytes(log.backupPath()).value_or("") + test::readFileBytes(log.path()).value());
        ASSERT_FALSE(numbers.empty());
        for (std::size_t index = 0; index != numbers.size(); ++index) {
            EXPECT_EQ(numbers[index], last - static_cast<int>(numbers.size() - 1 - index));
        }
    }
    writeLines(2);
    EXPECT_LE(log.size(), 1200);
}

TEST_F(LogFilesTest, LockedLogIsBusyOrReadable) {
    Exception::warn("text");
    const std::string bytes = test::readFileBytes(log.path()).value();
    const auto file = files.open(Which::Log);
    test::LockedFile writer(log.path());
    try {
        EXPECT_EQ(contentOf(*file), bytes);
    } catch (const FileBusy&) {
        writer.unlock();
        EXPECT_EQ(contentOf(*file), bytes);
    }
}

TEST_F(LogFilesTest, FileOpenedWithoutSharingIsBusy) {
    Exception::warn("text");
    const test::Handle exclusive(CreateFileA(log.path().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(exclusive);
    EXPECT_THROW(files.open(Which::Log), FileBusy);
}

TEST_F(LogFilesTest, OpeningAFolderIsAPermanentFailure) {
    try {
        DiskLogFiles(wide(log.folder().path())).open(Which::Log);
        ADD_FAILURE() << "a folder was opened as a log";
    } catch (const FileBusy&) {
        ADD_FAILURE() << "a folder was reported as a busy file";
    } catch (const tools::Failure& failure) {
        EXPECT_NE(failure.text().find(wide(log.folder().path())), std::wstring::npos);
    }
}

/// Collects the bytes that a follower reads from all files, and counts the gaps that it reports.
class Text : public LogSink {
public:
    std::string text;
    unsigned int gaps = 0;
    void bytes(std::string_view bytes) override { text += bytes; }
    void endOfFile() override {}
    void gap() override { ++gaps; }
};

TEST_F(LogFilesTest, RotationsAndDeletionLoseNothing) {
    Text sink;
    Follower follower(files, sink);
    const auto readAll = [&] {
        while (follower.poll() == Follower::Progress::More) {}
    };
    constexpr int kLines = 200;
    std::vector<int> expected;
    for (int count = 0; count != kLines; ++count) {
        Exception::warn("line %d.", count);
        expected.push_back(count);
        if (count % 3 == 0) {
            readAll();
        }
        if (count == 120) {
            readAll();
            log.remove();
        }
    }
    readAll();
    EXPECT_EQ(numbersIn(sink.text), expected);
    EXPECT_EQ(sink.gaps, 1u);
}

}  // namespace
