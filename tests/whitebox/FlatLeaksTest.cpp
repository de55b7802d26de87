/// \file
/// Opens and closes each kind of handle of the flat interface many times; every system handle must be closed. Also
/// tests that the memory for a thread's last failure is freed when the thread exits.

#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/Handle.h"
#include "support/ImportHook.h"
#include "support/NamedEvent.h"
#include "support/TemporaryLog.h"
#include "vorel/vorelCoreC.h"
#include "whitebox/LiveHandles.h"

namespace {

constexpr int kRounds = 2000;

std::vector<vorel_char16> units(const std::wstring& text) {
    return {text.begin(), text.end()};
}

TEST(FlatLeaks, ClosedMutexLeavesNoHandleOpen) {
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

TEST(FlatLeaks, ClosedConditionLeavesNoHandleOpen) {
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

TEST(FlatLeaks, LastFailureIsFreedWhenTheThreadExits) {
    std::set<void*> live;
    int allocated = 0;
    // Only one thread runs at a time, so the hooks need no lock.
    const test::ImportHook<importedHeapAlloc> alloc([&](HANDLE heap, DWORD flags, SIZE_T size) {
        void* const block = alloc.original(heap, flags, size);
        live.insert(block);
        ++allocated;
        return block;
    });
    const test::ImportHook<importedHeapFree> free([&](HANDLE heap, DWORD flags, void* block) {
        live.erase(block);
        return free.original(heap, flags, block);
    });
    constexpr int kThreads = 20;
    for (int count = 0; count != kThreads; ++count) {
        std::thread([] {
            EXPECT_EQ(vorel_parse_int32(nullptr, 0, nullptr), VOREL_ERROR_INVALID_ARGUMENT);
            EXPECT_EQ(vorel_parse_int32(nullptr, 1, nullptr), VOREL_ERROR_INVALID_ARGUMENT);
        }).join();
    }
    EXPECT_EQ(allocated, kThreads) << "a thread allocates once for all of its failures";
    EXPECT_TRUE(live.empty());
}

TEST(FlatLeaks, FailureThatCannotBeStoredIsReportedAsOutOfMemory) {
    const test::ImportHook<importedHeapAlloc> alloc([](HANDLE, DWORD, SIZE_T) -> void* { return nullptr; });
    std::thread([] {
        EXPECT_EQ(vorel_parse_int32(nullptr, 0, nullptr), VOREL_ERROR_INVALID_ARGUMENT);
        EXPECT_EQ(vorel_last_error_status(), VOREL_ERROR_OUT_OF_MEMORY);
        char message[64] = {};
        std::size_t length = 0;
        EXPECT_EQ(vorel_last_error_message_utf8(message, sizeof message, &length), VOREL_OK);
        EXPECT_STREQ(message, "No more memory is available");
    }).join();
}

}  // namespace
