/// \file
/// The error log of whole programs. One program sets no location, another sets no debug target, and a third logs before
/// and after `main`.

#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

#include "support/ChildProcess.h"
#include "support/Handle.h"
#include "support/NamedEvent.h"
#include "support/TemporaryLog.h"

namespace {

using Texts = std::vector<std::string>;

/// Moves a file out of the way, if it exists. The destructor deletes the file that now has its name, and moves the old
/// file back.
class FileSetAside {
public:
    FileSetAside(std::string path, const test::TemporaryFolder& folder, const std::string& name)
        : m_path(std::move(path)), m_temporaryPath(folder.file(name)) {
        m_moved = MoveFileExA(m_path.c_str(), m_temporaryPath.c_str(), MOVEFILE_COPY_ALLOWED) != FALSE;
    }
    ~FileSetAside() {
        DeleteFileA(m_path.c_str());
        if (m_moved) {
            MoveFileExA(m_temporaryPath.c_str(), m_path.c_str(), MOVEFILE_COPY_ALLOWED);
        }
    }

    FileSetAside(const FileSetAside&) = delete;
    FileSetAside& operator=(const FileSetAside&) = delete;

    [[nodiscard]] const std::string& path() const { return m_path; }

private:
    std::string m_path;
    std::string m_temporaryPath;
    bool m_moved;
};

/// Whether this user may create files in the root of drive C. Windows allows this only to administrators.
bool isRootWritable() {
    const test::Handle file(CreateFileW((L"C:\\" + test::NamedEvent::uniqueName(L"probe")).c_str(), GENERIC_WRITE, 0,
                                        nullptr, CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    return static_cast<bool>(file);
}

// No other test uses the default file, so this test can run at the same time as other tests.
TEST(LogOfPrograms, UnconfiguredLogUsesTheDefaultFileAndSkipsTheFirstSizeCheck) {
    if (!isRootWritable()) {
        GTEST_SKIP() << "this user cannot create files in the root of drive C, where the default log is";
    }
    const test::TemporaryFolder folder;
    const FileSetAside log("C:\\TalvenorError.txt", folder, "log");
    const FileSetAside backup("C:\\TalvenorError.txt.001", folder, "backup");
    const std::string old(1000001, '#');
    std::FILE* const file = std::fopen(log.path().c_str(), "wb");
    ASSERT_NE(file, nullptr);
    std::fwrite(old.data(), 1, old.size(), file);
    std::fclose(file);

    EXPECT_EQ(test::runChild(L"never_configured"), 0u);

    EXPECT_EQ(test::readLogMessages(log.path()), (Texts{"WARN: second", "WARN: third"}))
        << "the third line must not rotate the log";
    const std::string moved = test::readFileBytes(backup.path()).value_or("");
    ASSERT_GT(moved.size(), old.size());
    EXPECT_TRUE(moved.compare(0, old.size(), old) == 0);
    const std::string firstLine = moved.substr(old.size());
    EXPECT_NE(firstLine.find(": WARN: first\r\n"), std::string::npos) << firstLine;
}

TEST(LogOfPrograms, DebugCallsDoNotReadTheirArgumentsIfTheTargetIsNotActive) {
    const test::TemporaryFolder folder;
    EXPECT_EQ(test::runChild(L"no_debug_target", {}, {.directory = folder.widePath()}), 0u);
    EXPECT_FALSE(test::readFileBytes(folder.file("errors.txt")).has_value());
}

TEST(LogOfPrograms, LoggingWorksBeforeAndAfterMain) {
    const test::TemporaryFolder folder;
    EXPECT_EQ(test::runChild(L"log_from_statics", {}, {.directory = folder.widePath()}), 0u);
    EXPECT_EQ(test::readLogMessages(folder.file("errors.txt")),
              (Texts{"Vorel Error: constructor", "WARN: main", "DEBUG: AtExit: before destructors",
                     "Vorel Error: destructor", "DEBUG: AtExit: after destructors", "Vorel Error: after destructors"}));
}

}  // namespace
