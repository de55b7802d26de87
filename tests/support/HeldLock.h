/// \file
/// Checks whether an operation waits for one of the library's own locks.
#pragma once

#include <chrono>
#include <functional>
#include <future>

#include <gtest/gtest.h>

namespace test {

/// Runs `action` on another thread while the calling thread holds `lock`. Expects that `action` ends only after the
/// lock is released. Calls `meanwhile` before the release.
template <class Lock>
void expectWaitsFor(
    Lock& lock, const std::function<void()>& action, const std::function<void()>& meanwhile = [] {}) {
    ASSERT_TRUE(lock.lock(0, true));
    std::promise<void> started;
    const std::future<void> running = std::async(std::launch::async, [&] {
        started.set_value();
        action();
    });
    started.get_future().wait();
    EXPECT_EQ(running.wait_for(std::chrono::milliseconds(60)), std::future_status::timeout)
        << "the action did not wait for the lock";
    meanwhile();
    lock.unlock();
    EXPECT_EQ(running.wait_for(std::chrono::seconds(60)), std::future_status::ready);
}

/// Runs `action` on another thread while the calling thread holds `lock`. Expects that `action` ends before the lock is
/// released.
template <class Lock>
void expectPasses(Lock& lock, const std::function<void()>& action) {
    ASSERT_TRUE(lock.lock(0, true));
    const std::future<void> running = std::async(std::launch::async, action);
    EXPECT_EQ(running.wait_for(std::chrono::seconds(60)), std::future_status::ready) << "the action waits for the lock";
    lock.unlock();
}

}  // namespace test
