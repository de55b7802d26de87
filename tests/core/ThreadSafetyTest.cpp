#include "vorel/core/ThreadSafety.h"

#include <climits>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "core/ThreadSafetySwitch.h"

namespace {

using vorel::EnableThreadSafety;
using vorel::ThreadSafetyEnabledCount;
using vorel::forced::TalInterlockedDecrement;
using vorel::forced::TalInterlockedIncrement;

// ---- The switch -----------------------------------------------------------------------------------------------------

TEST(ThreadSafetySwitch, IsOnAtLoad) {
    EXPECT_EQ(ThreadSafetyEnabledCount, 1u);
}

TEST(ThreadSafetySwitch, EnablingAddsOneAndDisablingSubtractsOne) {
    const test::ThreadSafetySwitch restored;
    EnableThreadSafety(true);
    EnableThreadSafety(true);
    EXPECT_EQ(ThreadSafetyEnabledCount, 3u);
    EnableThreadSafety(false);
    EXPECT_EQ(ThreadSafetyEnabledCount, 2u);
}

TEST(ThreadSafetySwitch, NeverGoesBelow0) {
    const test::ThreadSafetySwitch restored;
    EnableThreadSafety(false);
    EXPECT_EQ(ThreadSafetyEnabledCount, 0u);
    EnableThreadSafety(false);
    EXPECT_EQ(ThreadSafetyEnabledCount, 0u);
    EnableThreadSafety(true);
    EXPECT_EQ(ThreadSafetyEnabledCount, 1u);
}

// ---- Counters -------------------------------------------------------------------------------------------------------

TEST(ForcedCounters, ReturnTheNewValue) {
    volatile long number = 41;
    EXPECT_EQ(TalInterlockedIncrement(number), 42);
    EXPECT_EQ(number, 42);
    EXPECT_EQ(TalInterlockedDecrement(number), 41);
    EXPECT_EQ(number, 41);
    volatile unsigned long count = 7;
    EXPECT_EQ(TalInterlockedIncrement(count), 8u);
    EXPECT_EQ(count, 8u);
    EXPECT_EQ(TalInterlockedDecrement(count), 7u);
    EXPECT_EQ(count, 7u);
}

TEST(ForcedCounters, WrapAround) {
    volatile unsigned long count = 0;
    EXPECT_EQ(TalInterlockedDecrement(count), 4294967295u);
    EXPECT_EQ(TalInterlockedIncrement(count), 0u);
    volatile long number = LONG_MAX;
    EXPECT_EQ(TalInterlockedIncrement(number), LONG_MIN);
    EXPECT_EQ(TalInterlockedDecrement(number), LONG_MAX);
    number = 0;
    EXPECT_EQ(TalInterlockedDecrement(number), -1);
}

/// Changes a counter from several threads, and returns its final value.
template <class Number>
Number countFromThreads(Number (*change)(volatile Number&)) {
    volatile Number counter = 0;
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50000; ++round) {
                change(counter);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return counter;
}

TEST(ForcedCounters, AreAtomicWithThreadSafetyOnAndOff) {
    const test::ThreadSafetySwitch restored;
    for (const bool enabled : {true, false}) {
        ThreadSafetyEnabledCount = enabled ? 1 : 0;
        EXPECT_EQ(countFromThreads<long>([](volatile long& n) { return TalInterlockedIncrement(n); }), 200000);
        EXPECT_EQ(countFromThreads<long>([](volatile long& n) { return TalInterlockedDecrement(n); }), -200000);
        EXPECT_EQ(countFromThreads<unsigned long>([](volatile unsigned long& n) { return TalInterlockedIncrement(n); }),
                  200000u);
    }
}

// ---- Sleeping -------------------------------------------------------------------------------------------------------

TEST(Sleep, WaitsAtLeastTheGivenTime) {
    vorel::Sleep(0);
    const ULONGLONG before = GetTickCount64();
    vorel::Sleep(60);
    EXPECT_GE(GetTickCount64() - before, 60u - 16u);  // the tick count grows in steps of up to 16 ms
}

}  // namespace
