/// \file
/// A thread with little stack left. Wine gives every thread a megabyte, so the rest of it is used up first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>

#include <malloc.h>
#include <windows.h>

#include "support/Handle.h"

namespace test {

/// Runs `action` on a new thread that has `bytes` of its stack left, and waits for it. Needing more ends the program.
class SmallStack {
public:
    static void run(std::size_t bytes, const std::function<void()>& action) {
        SmallStack arguments{bytes, action};
        const Handle thread(
            CreateThread(nullptr, kSmallest, &enter, &arguments, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
        if (!thread || WaitForSingleObject(thread.get(), INFINITE) != WAIT_OBJECT_0) {
            throw std::runtime_error("no thread with a small stack");
        }
    }

private:
    static constexpr std::size_t kSmallest = 65'536;
    static constexpr std::size_t kPage = 4096;

    SmallStack(std::size_t bytes, const std::function<void()>& action) : m_bytes(bytes), m_action(action) {}

    static DWORD WINAPI enter(void* arguments) {
        static_cast<SmallStack*>(arguments)->useUpAndCall();
        return 0;
    }

    void useUpAndCall() const {
        ULONG_PTR low = 0;
        ULONG_PTR high = 0;
        GetCurrentThreadStackLimits(&low, &high);
        // The lowest page stays inaccessible, and touching the one above it is the overflow.
        const ULONG_PTR end = low + 2 * kPage + m_bytes;
        // cppcheck-suppress _allocaCalled ; using up the stack is what this is for
        auto* last = static_cast<volatile char*>(_alloca(sizeof(char)));
        while (reinterpret_cast<ULONG_PTR>(last) > end + kPage) {
            // cppcheck-suppress _allocaCalled ; as above
            last = static_cast<volatile char*>(_alloca(kPage / 2));
            *last = 0;  // pages become accessible one after the other
        }
        m_action();
    }

    std::size_t m_bytes;
    const std::function<void()>& m_action;
};

}  // namespace test
