/// \file
/// Linked into every test program. The error log is a file in a new folder while tests run. A test that reads the log
/// has its own TemporaryLog.

#include <memory>

#include <gtest/gtest.h>

#include "support/TemporaryLog.h"

namespace test {

namespace {

class LogEnvironment : public ::testing::Environment {
public:
    void SetUp() override { m_log = std::make_unique<TemporaryLog>(); }
    void TearDown() override {
        m_log.reset();
        // The destructor of TemporaryLog has restored the path of the default file. A size limit of 0 disables the log,
        // so lines that the library logs while the program ends are not written to this file.
        vorel::Exception::SetErrorLogSize(0);
    }

private:
    std::unique_ptr<TemporaryLog> m_log;
};

[[maybe_unused]] const ::testing::Environment* const s_environment =
    ::testing::AddGlobalTestEnvironment(new LogEnvironment);  // owned by the framework

}  // namespace

}  // namespace test
