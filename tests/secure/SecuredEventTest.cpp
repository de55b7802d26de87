#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include <windows.h>

#include "secure/ObjectSecurity.h"
#include "secure/PeerResult.h"
#include "support/ChildProcess.h"
#include "support/Handle.h"
#include "support/NamedEvent.h"
#include "support/SystemText.h"
#include "support/TemporaryLog.h"
#include "vorel/secure/SecuredObjects.h"

namespace {

using test::ChildProcess;
using test::Handle;
using test::NamedEvent;

bool isSet(HANDLE event) {
    return WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

class SecuredEvent : public testing::Test {
protected:
    ~SecuredEvent() override { EXPECT_FALSE(log.exists()) << "failures must not be logged"; }

    Handle obtain(int manualReset = 0, int initialState = 0, int retries = 0, int sleepMs = 0) {
        return Handle(vorel::ObtainAccessableEvent(manualReset, initialState, name.c_str(), retries, sleepMs, text));
    }

    /// The expected text if the name cannot be opened.
    [[nodiscard]] std::wstring failedOpen() const {
        const Handle opened(OpenEventW(SYNCHRONIZE | EVENT_MODIFY_STATE, FALSE, name.c_str()));
        const DWORD error = GetLastError();
        EXPECT_FALSE(opened);
        return L"OpenEvent failed: " + test::systemText(error);
    }

    const std::wstring name = NamedEvent::uniqueName(L"secured_event");
    const test::TemporaryLog log;
    vorel::BaseString<wchar_t> text{L"before"};
};

TEST_F(SecuredEvent, HasTheRequestedKindAndState) {
    for (const int manualReset : {0, 1, -1}) {
        for (const int initialState : {0, 1, -1}) {
            const Handle event = obtain(manualReset, initialState);
            ASSERT_TRUE(event);
            EXPECT_EQ(isSet(event.get()), initialState != 0);
            EXPECT_EQ(isSet(event.get()), initialState != 0 && manualReset != 0)
                << "an auto-reset event must satisfy only one wait";
            EXPECT_TRUE(SetEvent(event.get()));
            EXPECT_TRUE(isSet(event.get()));
            EXPECT_EQ(isSet(event.get()), manualReset != 0);
        }
    }
    EXPECT_EQ(text.view(), L"before");
}

TEST_F(SecuredEvent, NameMayPointIntoTheErrorText) {
    text = name.c_str();
    {
        const Handle event(vorel::ObtainAccessableEvent(1, 1, text.c_str(), 0, 0, text));
        EXPECT_TRUE(event && isSet(event.get()));
        const Handle sameName(OpenEventW(SYNCHRONIZE, FALSE, name.c_str()));
        EXPECT_TRUE(sameName);
        EXPECT_EQ(text.view(), name);
    }
    const Handle mutex(CreateMutexW(nullptr, FALSE, name.c_str()));
    EXPECT_EQ(vorel::ObtainAccessableEvent(0, 0, text.c_str(), 1, 0, text), nullptr);
    EXPECT_EQ(text.view(), failedOpen());
}

TEST_F(SecuredEvent, SecondCallOpensTheEventUnchanged) {
    const Handle first = obtain(1, 1);
    const Handle second = obtain(0, 0);
    EXPECT_TRUE(second);
    EXPECT_TRUE(isSet(second.get()));
    EXPECT_TRUE(isSet(second.get())) << "the event must still be a manual-reset event";
    EXPECT_TRUE(ResetEvent(second.get()));
    EXPECT_FALSE(isSet(first.get()));
    EXPECT_TRUE(SetEvent(second.get()));
    EXPECT_TRUE(isSet(first.get()));
    EXPECT_EQ(text.view(), L"before");
}

TEST_F(SecuredEvent, IsDestroyedWithItsLastHandle) {
    {
        const Handle first = obtain(1, 1);
        const Handle second = obtain(1, 0);
    }
    const Handle gone(OpenEventW(SYNCHRONIZE, FALSE, name.c_str()));
    EXPECT_FALSE(gone);
    const Handle again = obtain(1, 0);
    EXPECT_FALSE(isSet(again.get()));
}

TEST_F(SecuredEvent, WithoutANameEachCallCreatesAnEvent) {
    const Handle first(vorel::ObtainAccessableEvent(1, 1, nullptr, 0, 0, text));
    const Handle second(vorel::ObtainAccessableEvent(1, 0, nullptr, 0, 0, text));
    EXPECT_TRUE(isSet(first.get()));
    ASSERT_TRUE(second);
    EXPECT_FALSE(isSet(second.get()));
}

TEST_F(SecuredEvent, EveryoneMayUseItAndNobodyMayChangeItsSecurity) {
    const Handle event = obtain();
    test::expectSharedSecurity(event.get(), EVENT_ALL_ACCESS);
}

TEST_F(SecuredEvent, ExistingEventWithDefaultSecurityIsOpened) {
    const NamedEvent plain(name);
    const Handle event = obtain();
    ASSERT_TRUE(event);
    plain.set();
    EXPECT_TRUE(isSet(event.get()));
    EXPECT_EQ(text.view(), L"before");
}

// ---- Names of objects of another kind ----

TEST_F(SecuredEvent, TakenNameIsTriedOnceWithoutRetries) {
    const Handle taken(CreateMutexW(nullptr, FALSE, name.c_str()));
    const auto start = std::chrono::steady_clock::now();
    const Handle event = obtain(0, 0, 0, 3600000);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::minutes(1)) << "the call must not sleep";
    EXPECT_FALSE(event);
    EXPECT_EQ(text.view(), failedOpen());
}

TEST_F(SecuredEvent, TakenNameIsTriedAgainAfterEachSleep) {
    const Handle taken(CreateMutexW(nullptr, FALSE, name.c_str()));
    const auto start = std::chrono::steady_clock::now();
    const Handle event = obtain(0, 0, 4, 50);
    const auto taking = std::chrono::steady_clock::now() - start;
    EXPECT_FALSE(event);
    EXPECT_GE(taking, std::chrono::milliseconds(4 * 50 - 4 * 16))
        << "the call must sleep four times for 50 ms, minus a clock tick each";
    EXPECT_LT(taking, std::chrono::minutes(1));
    EXPECT_EQ(text.view(), failedOpen());
}

// ---- With a second process ----

TEST_F(SecuredEvent, SignalsWorkBetweenProcesses) {
    const Handle asked = obtain();
    const std::wstring answerName = NamedEvent::uniqueName(L"answer");
    const Handle answer(vorel::ObtainAccessableEvent(0, 0, answerName.c_str(), 0, 0, text));
    const ChildProcess peer(L"secured_peer", {L"task=event", L"name=" + name, L"answer=" + answerName});
    EXPECT_FALSE(isSet(answer.get())) << "the answer must not be signalled before the request";
    EXPECT_TRUE(SetEvent(asked.get()));
    EXPECT_EQ(WaitForSingleObject(answer.get(), test::kGenerousMs), WAIT_OBJECT_0);
    ASSERT_TRUE(peer.wait());
    EXPECT_EQ(peer.exitCode(), test::kPeerObtained | test::kPeerDone);
    EXPECT_FALSE(isSet(asked.get())) << "the other process must have consumed the signal";
}

}  // namespace
