/// \file
/// Many rounds of the life of each handle of the flat interface, also along the ways that fail: what the system gave is
/// closed, and every block is free again.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Handle.h"
#include "support/NamedEvent.h"
#include "support/TemporaryLog.h"
#include "vorel/vorelCoreC.h"
#include "whitebox/LiveHandles.h"

namespace {

constexpr int kRounds = 2000;

std::vector<vorel_char16> units(const std::wstring& text) {
    return {text.begin(), text.end()};
}

TEST(FlatLeaks, AClosedMutexLeavesNothingBehind) {
    const auto name = units(test::NamedEvent::uniqueName(L"flat_mutex"));
    const test::LiveHandles handles;
    for (int round = 0; round != kRounds; ++round) {
        vorel_mutex* mutex = nullptr;
        ASSERT_EQ(vorel_mutex_open(name.data(), name.size(), &mutex), VOREL_OK);
        ASSERT_EQ(vorel_mutex_lock(mutex, 0), VOREL_OK);
        ASSERT_EQ(vorel_mutex_close(mutex), VOREL_OK);
    }
    EXPECT_GE(handles.opened(), kRounds);
    EXPECT_EQ(handles.live(), 0u);
}

TEST(FlatLeaks, AClosedConditionLeavesNothingBehind) {
    const auto name = units(test::NamedEvent::uniqueName(L"flat_condition"));
    const test::LiveHandles handles;
    for (int round = 0; round != kRounds; ++round) {
        vorel_condition* condition = nullptr;
        ASSERT_EQ(vorel_condition_open(name.data(), name.size(), &condition), VOREL_OK);
        ASSERT_EQ(vorel_condition_signal(condition), VOREL_OK);
        ASSERT_EQ(vorel_condition_wait(condition, 0), VOREL_OK);
        ASSERT_EQ(vorel_condition_close(condition), VOREL_OK);
    }
    EXPECT_GE(handles.opened(), kRounds);
    EXPECT_EQ(handles.live(), 0u);
}

}  // namespace
