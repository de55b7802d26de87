/// \file
/// An error log of a test's own.
///
///     test::TemporaryLog log;
///     vorel::Exception::warn("low on paper");
///     EXPECT_THAT(log.messages(), ElementsAre("WARN: low on paper"));
///
/// Every test program writes to such a log from its start to its end (LogEnvironment.cpp), so that no test leaves
/// anything in the default file.
#pragma once

#include <string>
#include <vector>

#include <vorel/exceptions/Exception.h>

#include "support/LogText.h"

namespace test {

/// A folder that nobody else has, under the system's folder for temporary files, removed with all that is in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Without a backslash at its end.
    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] std::wstring widePath() const { return {m_path.begin(), m_path.end()}; }

    /// The path of `name` in the folder.
    [[nodiscard]] std::string file(const std::string& name) const { return m_path + "\\" + name; }

private:
    std::string m_path;
};

/// Where the library writes its log, from the object's beginning to its end: a file in a folder of its own. At the end
/// the location before, the size limit, the mirror switch and the logging of the calling thread are as they were.
class TemporaryLog {
public:
    explicit TemporaryLog(long long sizeLimitBytes = vorel::Exception::DefaultLogSize);
    ~TemporaryLog();

    TemporaryLog(const TemporaryLog&) = delete;
    TemporaryLog& operator=(const TemporaryLog&) = delete;

    [[nodiscard]] const TemporaryFolder& folder() const { return m_folder; }
    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] std::string backupPath() const { return m_path + ".001"; }

    /// Points the library here again, after a test has pointed it elsewhere.
    void use() const;

    [[nodiscard]] bool exists() const;

    /// Bytes in the file; 0 when there is none.
    [[nodiscard]] long long size() const;

    [[nodiscard]] std::vector<LogLine> lines() const { return readLogLines(m_path); }

    /// Prefix and message of every line.
    [[nodiscard]] std::vector<std::string> messages() const { return readLogMessages(m_path); }

    /// The same, and the file is gone afterwards: the next call tells what was written since.
    std::vector<std::string> takeMessages();

    void remove();

private:
    TemporaryFolder m_folder;
    std::string m_path;
    std::string m_pathBefore;
    long long m_sizeLimitBefore;
    bool m_mirrorBefore;
    bool m_silencedBefore;
};

/// The size limit in force, in bytes.
long long currentLogSize();

}  // namespace test
