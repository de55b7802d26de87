#include "support/TemporaryLog.h"

#include <optional>

#include <gtest/gtest.h>

namespace test {

namespace {

std::string s_programLog;

class ProgramLog : public ::testing::Environment {
public:
    void SetUp() override {
        m_folder.emplace();
        s_programLog = m_folder->file("program.txt");
        vorel::Exception::SetErrorLogLocation(s_programLog.c_str(), 0);
    }
    void TearDown() override { m_folder.reset(); }

private:
    std::optional<TemporaryFolder> m_folder;
};

}  // namespace

TemporaryLog::TemporaryLog(long long limit) {
    vorel::Exception::SetErrorLogLocation(path().c_str(), 0);
    vorel::Exception::SetErrorLogSize(limit);
}

TemporaryLog::~TemporaryLog() {
    vorel::Exception::SetErrorLogLocation(s_programLog.c_str(), vorel::Exception::DefaultLogSize);
    vorel::Exception::ResetClass();
    vorel::Exception::DisableThreadErrorLogging(false);
}

bool TemporaryLog::exists() const {
    return fileExists(path());
}

std::vector<LogLine> TemporaryLog::lines() const {
    std::vector<LogLine> result;
    for (const std::string& line : logLines(readFile(path()))) {
        result.push_back(parseLogLine(line));
        EXPECT_TRUE(result.back().valid) << line;
    }
    return result;
}

std::vector<std::string> TemporaryLog::texts() const {
    std::vector<std::string> result;
    for (const LogLine& line : lines()) {
        result.push_back(line.text);
    }
    return result;
}

void TemporaryLog::clear() const {
    removeFile(path());
}

void redirectProgramLog() {
    ::testing::AddGlobalTestEnvironment(new ProgramLog);  // GoogleTest owns it
}

}  // namespace test
