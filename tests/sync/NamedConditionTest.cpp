#include "vorel/sync/NamedCondition.h"

#include <chrono>
#include <future>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/ChildProcess.h"
#include "support/Expect.h"
#include "support/Handle.h"
#include "support/TemporaryLog.h"
#include "support/WideText.h"
#include "sync/ObjectNames.h"
#include "vorel/system/ErrorText.h"

namespace {

using test::uniqueName;
using vorel::Exception;
using vorel::NamedCondition;

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kGenerousMs = static_cast<int>(test::kGenerousMs);

static_assert(!std::is_default_constructible_v<NamedCondition> && !std::is_copy_constructible_v<NamedCondition> &&
              !std::is_copy_assignable_v<NamedCondition>);

TEST(NamedCondition, ConstructorCreatesTheNamedEventAndDestructorClosesIt) {
    const std::wstring name = uniqueName(L"condition");
    {
        const NamedCondition condition(name.c_str());
        EXPECT_TRUE(test::eventExists(name));
        EXPECT_FALSE(test::eventExists(L"Global\\" + name + L"_")) << "the check must return false for an unused name";
    }
    EXPECT_FALSE(test::eventExists(name));
}

TEST(NamedCondition, ObjectsWithTheSameNameShareTheEvent) {
    const std::wstring name = uniqueName(L"condition");
    NamedCondition first(name.c_str());
    NamedCondition second(name.c_str());
    EXPECT_FALSE(second.wait(0)) << "the event must not be signalled initially";
    first.signal();
    EXPECT_TRUE(second.wait(0));
    EXPECT_FALSE(first.wait(0)) << "one signal must release one waiter only";
}

TEST(NamedCondition, NarrowUtf8NameAndItsWideNameShareTheEvent) {
    const std::wstring stem = uniqueName(L"condition");
    NamedCondition wide((stem + L"\u00FC").c_str());
    NamedCondition narrow((test::narrowed(stem) + "\xC3\xBC").c_str());
    wide.signal();
    EXPECT_TRUE(narrow.wait(0));
}

TEST(NamedCondition, NarrowNullNameCreatesAPrivateEvent) {
    const char* const none = nullptr;
    NamedCondition first(none);
    NamedCondition second(none);
    first.signal();
    EXPECT_FALSE(second.wait(0));
    EXPECT_TRUE(first.wait(0));
}

TEST(NamedCondition, NarrowNameThatIsNotUtf8Throws) {
    const test::TemporaryLog log;
    EXPECT_THROW(static_cast<void>(NamedCondition("name\xFF")), Exception);
}

TEST(NamedCondition, SignalsWithoutAWaiterReleaseOneWaiter) {
    NamedCondition condition(uniqueName(L"condition").c_str());
    condition.signal();
    condition.signal();
    EXPECT_TRUE(condition.wait(-1));
    EXPECT_FALSE(condition.wait(0));
}

TEST(NamedCondition, WaitTimesOut) {
    NamedCondition condition(uniqueName(L"condition").c_str());
    const Clock::time_point start = Clock::now();
    EXPECT_FALSE(condition.wait(60));
    // A wait may end early, by up to one tick of the system clock.
    EXPECT_GE(Clock::now() - start + milliseconds(16), milliseconds(60));
}

TEST(NamedCondition, SignalWakesAWaitingThread) {
    const std::wstring name = uniqueName(L"condition");
    NamedCondition condition(name.c_str());
    std::future<bool> waiter = std::async(std::launch::async, [&] { return condition.wait(kGenerousMs); });
    NamedCondition(name.c_str()).signal();
    EXPECT_TRUE(waiter.get());
}

TEST(NamedCondition, WaitReturnsAfterASignalEvenWithoutAName) {
    NamedCondition condition(nullptr);
    condition.signal();
    EXPECT_TRUE(condition.wait(0));
}

TEST(NamedCondition, NameOfAnotherKindOfObjectThrows) {
    const test::TemporaryLog log;
    const std::wstring name = uniqueName(L"taken");
    const test::Handle mutex(CreateMutexW(nullptr, FALSE, name.c_str()));
    ASSERT_FALSE(test::eventExists(name));
    vorel::BaseString<wchar_t> reason;
    vorel::util::GetLastErrorMsg(reason);

    const Clock::time_point start = Clock::now();
    test::expectThrows<Exception>(
        [&] { const NamedCondition condition(name.c_str()); },
        {L"Failed to create condition '" + name + L"': OpenEvent failed: " + std::wstring(reason.view()),
         L"NamedCondition::createCondition: Vorel exception rethrown"});
    EXPECT_GE(Clock::now() - start, milliseconds(450)) << "the constructor must sleep ten times for 50 ms";
}

TEST(NamedCondition, SignalsWorkBetweenProcesses) {
    const std::wstring there = uniqueName(L"there");
    const std::wstring back = uniqueName(L"back");
    NamedCondition toChild(there.c_str());
    NamedCondition fromChild(back.c_str());
    const test::ChildProcess child(L"condition_echo", {L"wait=" + there, L"signal=" + back, L"rounds=20"});
    for (int round = 0; round != 20; ++round) {
        toChild.signal();
        ASSERT_TRUE(fromChild.wait(kGenerousMs)) << round;
    }
    ASSERT_TRUE(child.wait());
    EXPECT_EQ(child.exitCode(), 0u);
    EXPECT_FALSE(toChild.wait(0)) << "no signal may be left";
    EXPECT_FALSE(fromChild.wait(0));
}

}  // namespace
