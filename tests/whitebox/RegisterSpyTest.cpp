/// \file
/// The lock behind the registration of a spy: held for the store while thread safety is on, left alone while it is off.

#include <chrono>
#include <future>

#include <gtest/gtest.h>

#include "LibraryState.h"
#include "vorel/core/MemoryAccounting.h"
#include "vorel/sync/ThreadSafety.h"

namespace {

using vorel::AllocBase;
using vorel::EnableThreadSafety;
using vorel::detail::libraryState;

class Spy : public vorel::AllocSpy {
    void allocated(void*, unsigned long long) override {}
    void freed(void*) override {}
    void report(vorel::MemAllocInfo&) override {}
};

struct Client : AllocBase {
    using AllocBase::registeredSpy;
};

TEST(RegisterSpy, WaitsForTheLockWhileThreadSafetyIsOn) {
    Spy spy;
    vorel::AutoCriticalSection& lock = libraryState()->spyLock;
    ASSERT_TRUE(lock.lock(0, true));
    std::promise<void> started;
    auto registered = std::async(std::launch::async, [&] {
        started.set_value();
        AllocBase::registerSpy(&spy);
    });
    started.get_future().wait();
    EXPECT_EQ(registered.wait_for(std::chrono::milliseconds(60)), std::future_status::timeout);
    EXPECT_EQ(Client::registeredSpy(), nullptr);
    lock.unlock();
    ASSERT_EQ(registered.wait_for(std::chrono::seconds(60)), std::future_status::ready);
    EXPECT_EQ(Client::registeredSpy(), &spy);
    AllocBase::registerSpy(nullptr);
}

TEST(RegisterSpy, DoesNotLockWhileThreadSafetyIsOff) {
    Spy spy;
    vorel::AutoCriticalSection& lock = libraryState()->spyLock;
    ASSERT_TRUE(lock.lock(0, true));
    EnableThreadSafety(false);
    auto registered = std::async(std::launch::async, [&] { AllocBase::registerSpy(&spy); });
    const bool done = registered.wait_for(std::chrono::seconds(60)) == std::future_status::ready;
    EnableThreadSafety(true);
    lock.unlock();
    registered.wait();
    EXPECT_TRUE(done);
    EXPECT_EQ(Client::registeredSpy(), &spy);
    AllocBase::registerSpy(nullptr);
}

TEST(RegisterSpy, GivesTheLockBack) {
    AllocBase::registerSpy(nullptr);
    EXPECT_TRUE(std::async(std::launch::async, [] {
                    const bool taken = libraryState()->spyLock.tryLock();
                    if (taken) {
                        libraryState()->spyLock.unlock();
                    }
                    return taken;
                }).get());
}

}  // namespace
