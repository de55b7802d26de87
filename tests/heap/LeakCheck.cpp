/// \file
/// Linked into every test program with guarded blocks. Fails a test if more blocks are live after it than before it.
///
/// Data that a program creates once and keeps (tables of a test, caches of the library and of the runtime) does not
/// exist before the first run of a test. So each test runs twice in one process, and only the second run is checked.
/// After the test, fewer blocks may be live than before, because the system frees the data of a thread shortly after
/// the thread was joined, possibly during the next test. In this case, the test fails if it leaves a new block.

#include <cstddef>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "heap/GuardedBlocks.h"

namespace heap {

namespace {

class LeakCheck : public testing::EmptyTestEventListener {
public:
    void OnTestIterationStart(const testing::UnitTest&, int iteration) override { m_isSecondRun = iteration > 0; }

    void OnTestStart(const testing::TestInfo&) override {
        m_before = blocks::live();
        m_serial = blocks::serial();
    }

    void OnTestEnd(const testing::TestInfo& info) override {
        // A failed or skipped test is not checked, because its message may still be a live block.
        if (!m_isSecondRun || !info.result()->Passed() || (blocks::waitForLive(m_before) && isWithoutHiddenLeak())) {
            return;
        }
        // These calls must come before the message, because the message allocates blocks.
        const std::size_t after = blocks::live();
        const std::string sizes = blocks::sizesSince(m_serial);
        ADD_FAILURE() << m_before << " live blocks before the test, " << after
                      << " after it; sizes of new blocks: " << sizes;
    }

private:
    /// Called if the number of live blocks did not rise. If the number fell, older blocks were freed during the test.
    /// They could hide a leak, so in this case no block that was allocated during the test may be live.
    [[nodiscard]] bool isWithoutHiddenLeak() const {
        return blocks::live() == m_before || blocks::sizesSince(m_serial).empty();
    }

    bool m_isSecondRun = false;
    std::size_t m_before = 0;
    std::uint64_t m_serial = 0;
};

[[maybe_unused]] const bool s_listening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new LeakCheck);  // owned by the framework
    return true;
}();

}  // namespace

}  // namespace heap
