/// \file
/// Part of every test program: from its first test to its last one the error log is a file in a fresh folder. A test
/// that looks at the log has a TemporaryLog of its own.

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
        // What still is logged while the program ends has no place any more.
        vorel::Exception::SetErrorLogSize(0);
    }

private:
    std::unique_ptr<TemporaryLog> m_log;
};

[[maybe_unused]] const ::testing::Environment* const s_environment =
    ::testing::AddGlobalTestEnvironment(new LogEnvironment);  // the framework deletes it

}  // namespace

}  // namespace test
