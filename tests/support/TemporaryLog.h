/// \file
/// A separate error log for one test.
///
///     test::TemporaryLog log;
///     vorel::Exception::warn("low on paper");
///     EXPECT_THAT(log.messages(), ElementsAre("WARN: low on paper"));
///
/// Every test program uses such a log while its tests run (LogEnvironment.cpp), so no test writes to the default file.
#pragma once

#include <string>
#include <vector>

#include <vorel/exceptions/Exception.h>

#include "support/LogText.h"
#include "support/WideText.h"

namespace test {

/// A unique folder in the system's folder for temporary files. The destructor removes it with its contents.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// The path without a trailing backslash.
    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] std::wstring widePath() const { return widened(m_path); }

    /// The path of `name` in the folder.
    [[nodiscard]] std::string file(const std::string& name) const { return m_path + "\\" + name; }

private:
    std::string m_path;
};

/// While the object exists, the library writes its log to a file in a separate folder. The constructor switches the
/// mirror off (`SetMirrorErrorLog`), and switches the logging of the calling thread on. The destructor restores the
/// size limit, the mirror switch and the logging switch of the calling thread, and selects the file of the
/// `TemporaryLog` that was current before, or the default file if there was none.
class TemporaryLog {
public:
    explicit TemporaryLog(long long sizeLimitBytes = vorel::Exception::DefaultLogSize);
    ~TemporaryLog();

    TemporaryLog(const TemporaryLog&) = delete;
    TemporaryLog& operator=(const TemporaryLog&) = delete;

    [[nodiscard]] const TemporaryFolder& folder() const { return m_folder; }
    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] std::string backupPath() const { return m_path + ".001"; }

    /// Selects this log again after a test has selected another log.
    void use() const;

    [[nodiscard]] bool exists() const;

    /// The size of the file in bytes; 0 if it does not exist.
    [[nodiscard]] long long size() const;

    [[nodiscard]] std::vector<LogLine> lines() const { return readLogLines(m_path); }

    /// The messages of all lines, with their prefixes.
    [[nodiscard]] std::vector<std::string> messages() const { return readLogMessages(m_path); }

    /// Returns the messages and removes the file, so the next call returns only newer messages.
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

/// The current size limit in bytes.
long long currentLogSize();

}  // namespace test
