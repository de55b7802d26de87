/// \file
/// An error log of a test's own.
///
///     test::TemporaryLog log;
///     vorel::Exception::warn("careful");
///     EXPECT_EQ(log.texts(), std::vector<std::string>{"WARN: careful"});
#pragma once

#include <string>
#include <vector>

#include "support/LogLine.h"
#include "support/TemporaryFolder.h"
#include "vorel/exceptions/Exception.h"

namespace test {

/// While one lives, the log is a file in a fresh folder. At its end the log of the test program, the default limit, and
/// the switched-off mirror are back.
class TemporaryLog {
public:
    explicit TemporaryLog(long long limit = vorel::Exception::DefaultLogSize);
    ~TemporaryLog();

    TemporaryLog(const TemporaryLog&) = delete;
    TemporaryLog& operator=(const TemporaryLog&) = delete;

    std::string path() const { return m_folder.file("error.txt"); }
    std::string backupPath() const { return path() + ".001"; }
    const TemporaryFolder& folder() const noexcept { return m_folder; }
    bool exists() const;

    /// The lines of the log so far, taken apart. A test fails when one is not whole.
    std::vector<LogLine> lines() const;

    /// What stands on them behind the head: prefix and message.
    std::vector<std::string> texts() const;

    /// Forgets the lines so far.
    void clear() const;

private:
    TemporaryFolder m_folder;
};

/// Sends the log of the whole test program to a folder of its own, so that no test writes to the default file. Called
/// once, at the start.
void redirectProgramLog();

}  // namespace test
