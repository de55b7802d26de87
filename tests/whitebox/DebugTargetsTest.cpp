/// \file
/// The set of debug targets: its lock, its order and its lookups, and the flag that the first active target sets.
/// While the flag is clear, no target is looked up.

#include "exceptions/DebugTargets.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "vorel/core/CriticalSections.h"
#include "vorel/exceptions/Exception.h"

namespace {

using vorel::DebugTargetsUsed;
using vorel::Exception;

/// Counts its calls.
class CountingLock {
public:
    bool lock(unsigned int, bool) {
        ++s_locked;
        return true;
    }
    void unlock() { ++s_unlocked; }

    static inline int s_locked = 0;
    static inline int s_unlocked = 0;
};

/// Clears the flag, so that each test begins as after the load of the library, and restores the flag after the test.
class DebugTargetsInside : public testing::Test {
protected:
    DebugTargetsInside() : m_before(DebugTargetsUsed.exchange(false)) {}
    ~DebugTargetsInside() override { DebugTargetsUsed = m_before; }

private:
    bool m_before;
};

TEST_F(DebugTargetsInside, FirstActiveTargetSetsTheFlagPermanently) {
    Exception::setDebugTarget("DTI.Flag", false);
    Exception::setDebugTarget(L"DTI.Flag", false);
    EXPECT_FALSE(DebugTargetsUsed);
    Exception::setDebugTarget("DTI.Flag", true);
    EXPECT_TRUE(DebugTargetsUsed);
    Exception::setDebugTarget("DTI.Flag", false);
    EXPECT_TRUE(DebugTargetsUsed);
}

TEST_F(DebugTargetsInside, FirstActiveWideTargetSetsTheSameFlag) {
    Exception::setDebugTarget(L"DTI.WideFlag", true);
    EXPECT_TRUE(DebugTargetsUsed);
    Exception::setDebugTarget(L"DTI.WideFlag", false);
}

TEST_F(DebugTargetsInside, NoTargetIsActiveWhileTheFlagIsClear) {
    Exception::setDebugTarget("DTI.NoFlag", true);
    DebugTargetsUsed = false;
    EXPECT_FALSE(Exception::isDebugTargetActive("DTI.NoFlag"));
    DebugTargetsUsed = true;
    EXPECT_TRUE(Exception::isDebugTargetActive("DTI.NoFlag"));
    Exception::setDebugTarget("DTI.NoFlag", false);
}

TEST_F(DebugTargetsInside, EveryAccessAcquiresTheLock) {
    CountingLock::s_locked = CountingLock::s_unlocked = 0;
    vorel::DebugTargets<char, CountingLock> targets;
    targets.set("a", true);
    EXPECT_TRUE(targets.isActive("a"));
    EXPECT_FALSE(targets.isActive("b"));
    EXPECT_EQ(CountingLock::s_locked, 3);
    EXPECT_EQ(CountingLock::s_unlocked, 3);
}

template <class T>
void expectFoundInAnyOrder(std::vector<std::basic_string<T>> names) {
    std::sort(names.begin(), names.end());
    do {
        vorel::DebugTargets<T, vorel::NoLock> targets;
        for (const std::basic_string<T>& name : names) {
            targets.set(name, true);
        }
        for (const std::basic_string<T>& name : names) {
            EXPECT_TRUE(targets.isActive(name.c_str()));
        }
    } while (std::next_permutation(names.begin(), names.end()));
}

TEST(DebugTargetSet, FindsNamesWithHighUnitsInsertedInAnyOrder) {
    expectFoundInAnyOrder<char>({"", "a", "ab", "\x7F", "\x80", "\xFF\x01"});
    expectFoundInAnyOrder<wchar_t>({L"", L"a", L"ab", L"\x7FFF", L"\x8000", L"\xFFFF\x0001"});
}

TEST(DebugTargetSet, FindsManyNamesInsertedInAnyOrder) {
    constexpr int kNames = 3000;
    const auto nameOf = [](int number) { return std::to_string(100000 + number); };
    for (const int step : {1, kNames - 1, 7}) {  // ascending, descending, mixed; 7 and 3000 are coprime
        vorel::DebugTargets<char, vorel::NoLock> targets;
        for (int count = 0, number = 0; count < kNames; ++count, number = (number + step) % kNames) {
            EXPECT_FALSE(targets.isActive(nameOf(number).c_str()));
            targets.set(nameOf(number), number % 3 != 0);
        }
        for (int number = 0; number < kNames; ++number) {
            EXPECT_EQ(targets.isActive(nameOf(number).c_str()), number % 3 != 0) << number;
            EXPECT_FALSE(targets.isActive((nameOf(number) + "0").c_str()));
        }
    }
}

}  // namespace
