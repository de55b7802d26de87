/// \file
/// Part of every test program that runs on guarded blocks: after a test no more blocks are live than before it.
///
/// What a program makes once and keeps (tables of a test, caches of the library and of the runtime) is not there before
/// the first run of a test. So each test runs twice in one process, and the count is taken of the second run.
/// There may be fewer: a thread of an earlier test gives back what the system had for it a little after it was joined.

#include <cstddef>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "heap/GuardedBlocks.h"

namespace heap {

namespace {

class LeakCheck : public testing::EmptyTestEventListener {
public:
    void OnTestIterationStart(const testing::UnitTest&, int iteration) override { m_counts = iteration > 0; }

    void OnTestStart(const testing::TestInfo&) override {
        m_before = blocks::live();
        m_serial = blocks::serial();
    }

    void OnTestEnd(const testing::TestInfo& info) override {
        // A test that failed has left its explanation behind.
        if (!m_counts || !info.result()->Passed() || (blocks::waitForLive(m_before) && isWithoutHiddenLeak())) {
            return;
        }
        // Before the message, which asks for blocks itself.
        const std::size_t after = blocks::live();
        const std::string sizes = blocks::sizesSince(m_serial);
        ADD_FAILURE() << m_before << " blocks were live before the test, " << after
                      << " are now; new ones of these sizes: " << sizes;
    }

private:
    /// Where old blocks came back late, they must not make up for new ones that stay.
    [[nodiscard]] bool isWithoutHiddenLeak() const {
        return blocks::live() == m_before || blocks::sizesSince(m_serial).empty();
    }

    bool m_counts = false;
    std::size_t m_before = 0;
    std::uint64_t m_serial = 0;
};

[[maybe_unused]] const bool s_listening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new LeakCheck);  // the framework deletes it
    return true;
}();

}  // namespace

}  // namespace heap
