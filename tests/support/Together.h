/// \file
/// Runs the same code on several threads at the same time.
#pragma once

#include <atomic>
#include <thread>
#include <vector>

namespace test {

/// Runs `action(number)` on `count` threads that start together, and waits for all of them. The numbers are 0 to
/// `count` - 1.
template <class Action>
void runTogether(int count, const Action& action) {
    std::atomic<int> arrived{0};
    std::vector<std::thread> threads;
    for (int number = 0; number < count; ++number) {
        threads.emplace_back([&, number] {
            ++arrived;
            while (arrived < count) {
                std::this_thread::yield();
            }
            action(number);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace test
