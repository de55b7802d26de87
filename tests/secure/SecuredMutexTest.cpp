#include "vorel/secure/SecuredObjects.h"

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "secure/ObjectSecurity.h"
#include "secure/PeerResult.h"
#include "support/ChildProcess.h"
#include "support/Handle.h"
#include "support/NamedEvent.h"
#include "support/SystemText.h"
#include "support/TemporaryLog.h"

namespace {

using test::ChildProcess;
using test::Handle;
using test::NamedEvent;
using test::runChild;
using Texts = std::vector<std::string>;

/// Whether another thread can take the mutex now.
bool isFreeForOthers(HANDLE mutex) {
    return std::async(std::launch::async,
                      [mutex] {
                          const bool taken = WaitForSingleObject(mutex, 0) == WAIT_OBJECT_0;
                          if (taken) {
                              ReleaseMutex(mutex);
                          }
                          return taken;
                      })
        .get();
}

class SecuredMutex : public testing::Test {
protected:
    Handle obtain(int retries = 0, int sleepMs = 0) {
        return Handle(vorel::ObtainAccessableMutex(0, name.c_str(), retries, sleepMs, &created));
    }

    /// The expected log line if the name cannot be opened.
    [[nodiscard]] Texts warning() const {
        const Handle opened(OpenMutexW(SYNCHRONIZE, FALSE, name.c_str()));
        const DWORD error = GetLastError();
        EXPECT_FALSE(opened);
        return {"WARN: ObtainAccessableMutex warning: OpenMutex " + test::utf8(name) + ": " +
                test::utf8(test::systemText(error))};
    }

    const std::wstring name = NamedEvent::uniqueName(L"secured_mutex");
    const test::TemporaryLog log;
    int created = 7;
};

TEST_F(SecuredMutex, FirstCallCreatesItAndSecondCallOpensIt) {
    const Handle first = obtain();
    EXPECT_TRUE(first);
    EXPECT_EQ(created, 1);
    const Handle second = obtain();
    EXPECT_TRUE(second);
    EXPECT_EQ(created, 0);
    EXPECT_FALSE(log.exists());
}

TEST_F(SecuredMutex, IsDestroyedWithItsLastHandle) {
    for (int round = 0; round < 3; ++round) {
        Handle first = obtain();
        EXPECT_EQ(created, 1);
        const Handle second = obtain();
        EXPECT_EQ(created, 0);
        first.close();
        const Handle third = obtain();
        EXPECT_EQ(created, 0);
    }
    const Handle gone(OpenMutexW(SYNCHRONIZE, FALSE, name.c_str()));
    EXPECT_FALSE(gone);
}

TEST_F(SecuredMutex, OutputFlagMayBeNull) {
    const Handle first(vorel::ObtainAccessableMutex(0, name.c_str(), 0, 0, nullptr));
    const Handle second(vorel::ObtainAccessableMutex(0, name.c_str(), 0, 0, nullptr));
    EXPECT_TRUE(first);
    EXPECT_TRUE(second);
}

TEST_F(SecuredMutex, WithoutANameEachCallCreatesAMutex) {
    const Handle first(vorel::ObtainAccessableMutex(0, nullptr, 0, 0, &created));
    EXPECT_TRUE(first);
    EXPECT_EQ(created, 1);
    created = 7;
    const Handle second(vorel::ObtainAccessableMutex(1, nullptr, 0, 0, &created));
    EXPECT_EQ(created, 1);
    EXPECT_TRUE(isFreeForOthers(first.get()));
    EXPECT_FALSE(isFreeForOthers(second.get()));
}

TEST_F(SecuredMutex, InitialOwnerIsTheCallerIfRequested) {
    for (const int owner : {0, 1, -1}) {
        const Handle mutex(vorel::ObtainAccessableMutex(owner, name.c_str(), 0, 0, nullptr));
        EXPECT_EQ(isFreeForOthers(mutex.get()), owner == 0) << owner;
        EXPECT_EQ(ReleaseMutex(mutex.get()) != FALSE, owner != 0) << owner;
    }
}

TEST_F(SecuredMutex, HandleOfAnExistingMutexCanWaitAndRelease) {
    const Handle first = obtain();
    const Handle second = obtain();
    EXPECT_EQ(WaitForSingleObject(second.get(), 0), WAIT_OBJECT_0);
    EXPECT_FALSE(isFreeForOthers(first.get()));
    EXPECT_TRUE(ReleaseMutex(second.get()));
    EXPECT_TRUE(isFreeForOthers(first.get()));
}

TEST_F(SecuredMutex, EveryoneMayUseItAndNobodyMayChangeItsSecurity) {
    const Handle mutex = obtain();
    test::expectSharedSecurity(mutex.get(), MUTEX_ALL_ACCESS);
}

TEST_F(SecuredMutex, HandleIsNotInherited) {
    const Handle first = obtain();
    const Handle second = obtain();
    for (const Handle* const mutex : {&first, &second}) {
        DWORD flags = 0;
        EXPECT_TRUE(GetHandleInformation(mutex->get(), &flags));
        EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, DWORD{0});
    }
}

TEST_F(SecuredMutex, MutexWithDefaultSecurityIsOpened) {
    const Handle plain(CreateMutexW(nullptr, FALSE, name.c_str()));
    const Handle mutex = obtain();
    EXPECT_TRUE(mutex);
    EXPECT_EQ(created, 0);
    EXPECT_EQ(WaitForSingleObject(mutex.get(), 0), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(mutex.get()));
}

// ---- Names of objects of another kind ----

TEST_F(SecuredMutex, TakenNameIsTriedOnceIfNoRetriesAreRequested) {
    const NamedEvent taken(name);
    const auto start = std::chrono::steady_clock::now();
    const Handle mutex = obtain(0, 3600000);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::minutes(1)) << "the call must not sleep";
    EXPECT_FALSE(mutex);
    EXPECT_EQ(created, 0);
    EXPECT_EQ(log.messages(), warning());
}

TEST_F(SecuredMutex, TakenNameIsTriedAgainAfterEachSleep) {
    const NamedEvent taken(name);
    const auto start = std::chrono::steady_clock::now();
    const Handle mutex = obtain(4, 50);
    const auto taking = std::chrono::steady_clock::now() - start;
    EXPECT_FALSE(mutex);
    EXPECT_EQ(created, 0);
    EXPECT_GE(taking, std::chrono::milliseconds(4 * 50 - 4 * 16))
        << "the call must sleep four times for 50 ms, minus a clock tick each";
    EXPECT_LT(taking, std::chrono::minutes(1));
    EXPECT_EQ(log.messages(), warning());
}

TEST_F(SecuredMutex, LaterAttemptTakesANameThatBecomesFree) {
    auto taken = std::make_unique<NamedEvent>(name);
    std::promise<void> started;
    auto later = std::async(std::launch::async, [&] {
        started.set_value();
        return obtain(30000, 1);
    });
    started.get_future().wait();
    taken.reset();
    const Handle mutex = later.get();
    EXPECT_TRUE(mutex);
    EXPECT_EQ(created, 1);
    EXPECT_FALSE(log.exists());
}

// ---- With a second process ----

TEST_F(SecuredMutex, AnotherProcessOpensTheMutex) {
    const Handle mutex = obtain();
    EXPECT_EQ(created, 1);
    EXPECT_EQ(runChild(L"secured_peer", {L"task=mutex", L"name=" + name}), test::kPeerObtained | test::kPeerDone);
    EXPECT_EQ(WaitForSingleObject(mutex.get(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(runChild(L"secured_peer", {L"task=mutex", L"name=" + name}), test::kPeerObtained)
        << "this process holds the mutex now";
    EXPECT_TRUE(ReleaseMutex(mutex.get()));
    EXPECT_EQ(runChild(L"secured_peer", {L"task=mutex", L"name=" + name}), test::kPeerObtained | test::kPeerDone);
}

TEST_F(SecuredMutex, MutexOfAnotherProcessIsOpenedWhileThatProcessRuns) {
    const NamedEvent held(NamedEvent::uniqueName(L"held"));
    const NamedEvent release(NamedEvent::uniqueName(L"release"));
    const ChildProcess peer(L"secured_peer",
                            {L"task=mutex", L"name=" + name, L"held=" + held.name(), L"release=" + release.name()});
    ASSERT_TRUE(held.wait());
    {
        const Handle mutex = obtain();
        EXPECT_TRUE(mutex);
        EXPECT_EQ(created, 0);
        EXPECT_EQ(WaitForSingleObject(mutex.get(), 0), DWORD{WAIT_TIMEOUT}) << "the other process holds the mutex";
        release.set();
        EXPECT_EQ(WaitForSingleObject(mutex.get(), test::kGenerousMs), WAIT_OBJECT_0);
        EXPECT_TRUE(ReleaseMutex(mutex.get()));
        ASSERT_TRUE(peer.wait());
        EXPECT_EQ(peer.exitCode(), test::kPeerObtained | test::kPeerCreated | test::kPeerDone);
    }
    const Handle again = obtain();
    EXPECT_EQ(created, 1) << "every handle of the previous mutex is closed";
}

TEST_F(SecuredMutex, NameMayHaveTheGlobalPrefix) {
    const std::wstring global = L"Global\\" + name;
    const Handle wide(vorel::ObtainAccessableMutex(0, global.c_str(), 0, 0, &created));
    EXPECT_TRUE(wide);
    EXPECT_EQ(created, 1);
    const Handle found(OpenMutexW(SYNCHRONIZE, FALSE, global.c_str()));
    EXPECT_TRUE(found) << "the name must be used unchanged";
    EXPECT_EQ(runChild(L"secured_peer", {L"task=mutex", L"name=" + global}), test::kPeerObtained | test::kPeerDone);
}

}  // namespace
