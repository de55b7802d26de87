/// \file
/// The lock that `registerSpy` takes. The function takes the lock only while thread safety is on.

#include <future>

#include <gtest/gtest.h>

#include "core/SpyLock.h"
#include "support/HeldLock.h"
#include "vorel/core/MemoryAccounting.h"
#include "vorel/core/ThreadSafety.h"

namespace {

using vorel::AllocBase;
using vorel::EnableThreadSafety;
using vorel::detail::spyLock;

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
    vorel::AutoCriticalSection& lock = *spyLock.get();
    test::expectWaitsFor(
        lock, [&] { AllocBase::registerSpy(&spy); }, [] { EXPECT_EQ(Client::registeredSpy(), nullptr); });
    EXPECT_EQ(Client::registeredSpy(), &spy);
    AllocBase::registerSpy(nullptr);
}

TEST(RegisterSpy, DoesNotLockWhileThreadSafetyIsOff) {
    Spy spy;
    vorel::AutoCriticalSection& lock = *spyLock.get();
    // `expectPasses` locks `lock` before the action and unlocks it after the action. Without thread safety, both calls
    // would do nothing. So thread safety is switched off only during the action.
    test::expectPasses(lock, [&] {
        EnableThreadSafety(false);
        AllocBase::registerSpy(&spy);
        EnableThreadSafety(true);
    });
    EXPECT_EQ(Client::registeredSpy(), &spy);
    AllocBase::registerSpy(nullptr);
}

TEST(RegisterSpy, ReleasesTheLock) {
    AllocBase::registerSpy(nullptr);
    EXPECT_TRUE(std::async(std::launch::async, [] {
                    const bool taken = spyLock.get()->tryLock();
                    if (taken) {
                        spyLock.get()->unlock();
                    }
                    return taken;
                }).get());
}

}  // namespace
