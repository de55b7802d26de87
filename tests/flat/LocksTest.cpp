#include "vorel/flat/Locks.h"

#include <functional>
#include <string>
#include <string_view>
#include <thread>

#include <gmock/gmock.h>

#include "flat/FlatCalls.h"
#include "support/ChildProcess.h"
#include "support/NamedEvent.h"
#include "support/TemporaryLog.h"
#include "support/WideText.h"
#include "sync/ObjectNames.h"

namespace {

using namespace std::string_view_literals;

using test::ChildProcess;
using test::FlatText;
using test::kGenerousMs;
using test::lastMessage;
using test::NamedEvent;
using test::TemporaryLog;
using test::uniqueName;
using testing::ElementsAre;

constexpr vorel_status kOk = VOREL_OK;

template <class Handle>
using Open = vorel_status (*)(const vorel_char16*, size_t, Handle**);

template <class Handle>
Handle* opened(Open<Handle> open, const std::wstring& name) {
    Handle* handle = nullptr;
    EXPECT_EQ(open(FlatText(name).data(), name.size(), &handle), VOREL_OK);
    EXPECT_NE(handle, nullptr);
    return handle;
}

vorel_mutex* openMutex(const std::wstring& name) {
    return opened(vorel_mutex_open, name);
}

vorel_condition* openCondition(const std::wstring& name) {
    return opened(vorel_condition_open, name);
}

vorel_status onAnotherThread(const std::function<vorel_status()>& call) {
    vorel_status status = -1;
    std::thread([&] { status = call(); }).join();
    return status;
}

template <class Handle>
void expectNames(Open<Handle> open, const wchar_t* taken) {
    auto* const untouched = reinterpret_cast<Handle*>(0x4711);
    const struct {
        std::wstring_view name;
        vorel_status status;
    } kRows[] = {
        {L"", VOREL_ERROR_INVALID_ARGUMENT}, {L"a\0b"sv, VOREL_ERROR_INVALID_TEXT}, {taken, VOREL_ERROR_SYSTEM}};
    for (const auto& row : kRows) {
        Handle* handle = untouched;
        const FlatText name(row.name);
        EXPECT_EQ(open(name.data(), name.size(), &handle), row.status) << testing::PrintToString(row.name);
        EXPECT_EQ(handle, untouched);
    }
    Handle* handle = untouched;
    EXPECT_EQ(open(nullptr, 1, &handle), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(open(FlatText(L"a").data(), 1, nullptr), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(handle, untouched);
}

// ---- Mutex ----------------------------------------------------------------------------------------------------------

TEST(FlatMutex, ExistsFromOpenToClose) {
    const std::wstring name = uniqueName(L"flat_mutex");
    vorel_mutex* const mutex = openMutex(name);
    EXPECT_TRUE(test::mutexExists(L"Global\\" + name));
    EXPECT_EQ(vorel_mutex_close(mutex), VOREL_OK);
    EXPECT_FALSE(test::mutexExists(L"Global\\" + name));
}

TEST(FlatMutex, RejectsInvalidAndTakenNames) {
    const TemporaryLog log;
    const std::wstring name = uniqueName(L"flat_mutex");
    const NamedEvent taken(L"Global\\" + name);  // another kind of object
    expectNames<vorel_mutex>(vorel_mutex_open, name.c_str());
}

TEST(FlatMutex, EachLockNeedsAnUnlock) {
    const std::wstring name = uniqueName(L"flat_mutex");
    vorel_mutex* const mutex = openMutex(name);
    vorel_mutex* const other = openMutex(name);
    EXPECT_EQ(vorel_mutex_lock(mutex, 0), VOREL_OK);
    EXPECT_EQ(vorel_mutex_lock(mutex, VOREL_WAIT_FOREVER), VOREL_OK);
    const auto takeOther = [other] {
        const vorel_status status = vorel_mutex_lock(other, 0);
        return status == VOREL_OK ? vorel_mutex_unlock(other) : status;
    };
    EXPECT_EQ(onAnotherThread(takeOther), VOREL_ERROR_TIMEOUT);
    EXPECT_EQ(vorel_mutex_unlock(mutex), VOREL_OK);
    EXPECT_EQ(onAnotherThread(takeOther), VOREL_ERROR_TIMEOUT);
    EXPECT_EQ(vorel_mutex_unlock(mutex), VOREL_OK);
    EXPECT_EQ(onAnotherThread(takeOther), VOREL_OK);
    EXPECT_EQ(vorel_mutex_unlock(mutex), VOREL_ERROR_NOT_OWNER);
    EXPECT_EQ(vorel_mutex_close(mutex), VOREL_OK);
    EXPECT_EQ(vorel_mutex_close(other), VOREL_OK);
}

TEST(FlatMutex, OnlyTheOwnerCanUnlock) {
    vorel_mutex* const mutex = openMutex(uniqueName(L"flat_mutex"));
    EXPECT_EQ(vorel_mutex_unlock(mutex), VOREL_ERROR_NOT_OWNER);
    EXPECT_EQ(lastMessage(), L"The thread does not hold the mutex");
    EXPECT_EQ(vorel_mutex_lock(mutex, 0), VOREL_OK);
    EXPECT_EQ(onAnotherThread([mutex] { return vorel_mutex_unlock(mutex); }), VOREL_ERROR_NOT_OWNER);
    EXPECT_EQ(vorel_mutex_unlock(mutex), VOREL_OK);
    EXPECT_EQ(vorel_mutex_close(mutex), VOREL_OK);
}

TEST(FlatMutex, ReportsAndLogsATimeout) {
    const TemporaryLog log;
    const std::wstring name = uniqueName(L"flat_mutex");
    const std::string narrowName = test::narrowed(name);
    vorel_mutex* const mutex = openMutex(name);
    EXPECT_EQ(vorel_mutex_lock(mutex, 0), VOREL_OK);
    std::thread([&] {
        EXPECT_EQ(vorel_mutex_lock(mutex, 0), VOREL_ERROR_TIMEOUT);
        EXPECT_FALSE(log.exists()) << "a timeout of 0 must log nothing";
        EXPECT_EQ(vorel_mutex_lock(mutex, 1), VOREL_ERROR_TIMEOUT);
        EXPECT_EQ(vorel_last_error_status(), VOREL_ERROR_TIMEOUT);
        EXPECT_EQ(lastMessage(), L"Failed to lock mutex " + name + L": Timed out");
    }).join();
    EXPECT_THAT(log.messages(),
                ElementsAre("WARN: AutoMutex::lock: Failed to lock mutex " + narrowName + ": Timed out"));
    EXPECT_EQ(vorel_mutex_unlock(mutex), VOREL_OK);
    EXPECT_EQ(vorel_mutex_close(mutex), VOREL_OK);
}

TEST(FlatMutex, CanBeLockedAfterItsOwnerExited) {
    const TemporaryLog log;
    vorel_mutex* const mutex = openMutex(uniqueName(L"flat_mutex"));
    EXPECT_EQ(onAnotherThread([mutex] { return vorel_mutex_lock(mutex, 0) + vorel_mutex_lock(mutex, 0); }), kOk);
    EXPECT_EQ(vorel_mutex_lock(mutex, 0), VOREL_OK);
    EXPECT_EQ(log.messages().size(), 1u) << "only the warning about the owner that exited";
    EXPECT_EQ(vorel_mutex_unlock(mutex), VOREL_OK);
    EXPECT_EQ(vorel_mutex_unlock(mutex), VOREL_ERROR_NOT_OWNER) << "no lock of the exited thread may remain";
    EXPECT_EQ(vorel_mutex_close(mutex), VOREL_OK);
}

TEST(FlatMutex, CloseReleasesEveryLockOfItsHandle) {
    const std::wstring name = uniqueName(L"flat_mutex");
    vorel_mutex* const mutex = openMutex(name);
    vorel_mutex* const other = openMutex(name);
    EXPECT_EQ(vorel_mutex_lock(mutex, 0), VOREL_OK);
    EXPECT_EQ(vorel_mutex_lock(mutex, 0), VOREL_OK);
    EXPECT_EQ(vorel_mutex_close(mutex), VOREL_OK);
    EXPECT_EQ(onAnotherThread([other] { return vorel_mutex_lock(other, 0) + vorel_mutex_unlock(other); }), kOk);
    EXPECT_EQ(vorel_mutex_close(other), VOREL_OK);
}

TEST(FlatMutex, RejectsNullHandles) {
    EXPECT_EQ(vorel_mutex_lock(nullptr, 0), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(vorel_mutex_unlock(nullptr), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(vorel_mutex_close(nullptr), VOREL_ERROR_INVALID_ARGUMENT);
}

TEST(FlatMutex, IsSharedWithTheLibraryInAnotherProcess) {
    const TemporaryLog log;
    const std::wstring name = uniqueName(L"flat_mutex");
    const NamedEvent held(NamedEvent::uniqueName(L"held"));
    const NamedEvent release(NamedEvent::uniqueName(L"release"));
    const std::wstring logPath = test::widened(log.path());
    const ChildProcess child(
        L"mutex_holder", {L"mutex=" + name, L"held=" + held.name(), L"release=" + release.name(), L"log=" + logPath});
    ASSERT_TRUE(held.wait());
    vorel_mutex* const mutex = openMutex(name);
    EXPECT_EQ(vorel_mutex_lock(mutex, 0), VOREL_ERROR_TIMEOUT);
    release.set();
    EXPECT_EQ(vorel_mutex_lock(mutex, kGenerousMs), VOREL_OK);
    EXPECT_TRUE(child.wait());
    EXPECT_EQ(vorel_mutex_close(mutex), VOREL_OK);
}

// ---- Condition ------------------------------------------------------------------------------------------------------

TEST(FlatCondition, ExistsFromOpenToClose) {
    const std::wstring name = uniqueName(L"flat_condition");
    vorel_condition* const condition = openCondition(name);
    EXPECT_TRUE(test::eventExists(name));
    EXPECT_EQ(vorel_condition_close(condition), VOREL_OK);
    EXPECT_FALSE(test::eventExists(name));
}

TEST(FlatCondition, RejectsInvalidAndTakenNames) {
    const TemporaryLog log;
    const std::wstring name = uniqueName(L"flat_condition");
    vorel_mutex* const taken = openMutex(name);  // another kind of object
    expectNames<vorel_condition>(vorel_condition_open, (L"Global\\" + name).c_str());
    EXPECT_THAT(lastMessage(), testing::StrEq(L"A pointer is null"));
    EXPECT_EQ(vorel_mutex_close(taken), VOREL_OK);
}

TEST(FlatCondition, SignalsWithoutAWaiterReleaseOneWaiter) {
    vorel_condition* const condition = openCondition(uniqueName(L"flat_condition"));
    EXPECT_EQ(vorel_condition_wait(condition, 0), VOREL_ERROR_TIMEOUT);
    EXPECT_EQ(lastMessage(), L"There was no signal in time");
    EXPECT_EQ(vorel_condition_signal(condition), VOREL_OK);
    EXPECT_EQ(vorel_condition_signal(condition), VOREL_OK);
    EXPECT_EQ(vorel_condition_wait(condition, VOREL_WAIT_FOREVER), VOREL_OK);
    EXPECT_EQ(vorel_condition_wait(condition, 1), VOREL_ERROR_TIMEOUT);
    EXPECT_EQ(vorel_condition_close(condition), VOREL_OK);
}

TEST(FlatCondition, IsSharedByThreads) {
    vorel_condition* const condition = openCondition(uniqueName(L"flat_condition"));
    std::thread waiter([condition] { EXPECT_EQ(vorel_condition_wait(condition, kGenerousMs), VOREL_OK); });
    EXPECT_EQ(vorel_condition_signal(condition), VOREL_OK);
    waiter.join();
    EXPECT_EQ(vorel_condition_close(condition), VOREL_OK);
}

TEST(FlatCondition, IsSharedWithTheLibraryInAnotherProcess) {
    constexpr int kRounds = 20;
    const std::wstring askedName = uniqueName(L"flat_asked");
    const std::wstring answeredName = uniqueName(L"flat_answered");
    vorel_condition* const asked = openCondition(askedName);
    vorel_condition* const answered = openCondition(answeredName);
    const ChildProcess child(L"condition_echo",
                             {L"wait=" + askedName, L"signal=" + answeredName, L"rounds=" + std::to_wstring(kRounds)});
    for (int round = 0; round != kRounds; ++round) {
        EXPECT_EQ(vorel_condition_signal(asked), VOREL_OK);
        ASSERT_EQ(vorel_condition_wait(answered, kGenerousMs), VOREL_OK);
    }
    ASSERT_TRUE(child.wait());
    EXPECT_EQ(child.exitCode(), 0u);
    EXPECT_EQ(vorel_condition_close(asked), VOREL_OK);
    EXPECT_EQ(vorel_condition_close(answered), VOREL_OK);
}

TEST(FlatCondition, RejectsNullHandles) {
    EXPECT_EQ(vorel_condition_signal(nullptr), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(vorel_condition_wait(nullptr, 0), VOREL_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(vorel_condition_close(nullptr), VOREL_ERROR_INVALID_ARGUMENT);
}

}  // namespace
