/// \file
/// A thread with little stack left. Wine gives every thread at least a megabyte of stack, so the thread first uses up
/// all stack except the wanted size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>

#include <malloc.h>
#include <windows.h>

#include "support/Handle.h"

namespace test {

/// Runs `action` on a new thread with about `bytes` of stack left, and waits for the thread. The difference is less
/// than two pages. A stack overflow ends the program.
class SmallStack {
public:
    static void run(std::size_t bytes, const std::function<void()>& action) {
        SmallStack arguments{bytes, action};
        const Handle thread(
            CreateThread(nullptr, kMinStackBytes, &enter, &arguments, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
        if (!thread || WaitForSingleObject(thread.get(), INFINITE) != WAIT_OBJECT_0) {
            throw std::runtime_error("cannot run a thread with a small stack");
        }
    }

private:
    static constexpr std::size_t kMinStackBytes = 65'536;
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
        // The lowest page stays inaccessible, and an access to the page above it is a stack overflow.
        const ULONG_PTR end = low + 2 * kPage + m_bytes;
        // cppcheck-suppress _allocaCalled ; this function uses up the stack
        auto* last = static_cast<volatile char*>(_alloca(sizeof(char)));
        while (reinterpret_cast<ULONG_PTR>(last) > end + kPage) {
            // cppcheck-suppress _allocaCalled ; as above
            last = static_cast<volatile char*>(_alloca(kPage / 2));
            *last = 0;  // the system commits the stack one page at a time
        }
        m_action();
    }

    std::size_t m_bytes;
    const std::function<void()>& m_action;
};

}  // namespace test
