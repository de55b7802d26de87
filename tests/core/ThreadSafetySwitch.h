/// \file
/// Helpers for the tests of locks: a class that restores the thread-safety switch, and functions that run actions on
/// another thread.
#pragma once

#include <future>

#include "vorel/core/ThreadSafety.h"

namespace test {

/// Restores the thread-safety switch in its destructor.
class ThreadSafetySwitch {
public:
    ThreadSafetySwitch() = default;
    ~ThreadSafetySwitch() { vorel::ThreadSafetyEnabledCount = m_before; }

    ThreadSafetySwitch(const ThreadSafetySwitch&) = delete;
    ThreadSafetySwitch& operator=(const ThreadSafetySwitch&) = delete;

private:
    unsigned int m_before = vorel::ThreadSafetyEnabledCount;
};

/// Runs `action` on a new thread and returns its result.
template <class Action>
auto onAnotherThread(Action action) {
    return std::async(std::launch::async, action).get();
}

/// Whether another thread can take the lock now.
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
