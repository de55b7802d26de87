/// \file
/// What the tests of locks share: the switch as it was, and a look at a lock from another thread.
#pragma once

#include <future>

#include "vorel/core/ThreadSafety.h"

namespace test {

/// Brings the thread-safety switch back to what it was.
class ThreadSafetySwitch {
public:
    ThreadSafetySwitch() = default;
    ~ThreadSafetySwitch() { vorel::ThreadSafetyEnabledCount = m_before; }

    ThreadSafetySwitch(const ThreadSafetySwitch&) = delete;
    ThreadSafetySwitch& operator=(const ThreadSafetySwitch&) = delete;

private:
    unsigned int m_before = vorel::ThreadSafetyEnabledCount;
};

/// The result of `action` on a thread of its own.
template <class Action>
auto onAnotherThread(Action action) {
    return std::async(std::launch::async, action).get();
}

/// Whether another thread would get the lock now.
template <class Lock>
bool isFreeForOthers(Lock& lock) {
    return onAnotherThread([&] {
        const bool taken = lock.tryLock();
        if (taken) {
            lock.unlock();
        }
        return taken;
    });
}

}  // namespace test
