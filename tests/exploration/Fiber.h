/// \file
/// Fibers. A fiber runs a function that can pause at any point and continue from this point later. All fibers run on
/// one thread, so a schedule that is repeated runs their code in the same order.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace exploration {

/// State that Windows and the runtimes keep for each thread, and that each task must have separately: the last error of
/// the system, `errno`, the exceptions in flight, and the handler of invalid parameters.
class ThreadState {
public:
    void save() noexcept;
    void load() const noexcept;

private:
    using InvalidParameterHandler = void(__cdecl*)(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int,
                                                   std::uintptr_t);

    unsigned long m_lastError = 0;
    int m_errno = 0;
    std::array<std::byte, 16> m_exceptions{};
    InvalidParameterHandler m_handler = nullptr;
};

/// Converts the calling thread to a fiber, to which all other fibers return. Only one object may exist at a time.
class MainFiber {
public:
    MainFiber();
    ~MainFiber();

    MainFiber(const MainFiber&) = delete;
    MainFiber& operator=(const MainFiber&) = delete;

    /// Must be called from another fiber. Switches to the main fiber, whose call of `Fiber::run` then returns.
    void resume() noexcept;

private:
    friend class Fiber;

    void* m_fiber;
    ThreadState m_state;
};

/// Runs one function after another. If a function has not ended, the destructor does not run the rest of the function,
/// and does not destroy the objects on the fiber's stack, as if the process had been killed.
class Fiber {
public:
    explicit Fiber(MainFiber& main);
    ~Fiber();

    Fiber(const Fiber&) = delete;
    Fiber& operator=(const Fiber&) = delete;

    /// Sets the function of the next `run`. The previous function must have ended.
    void start(std::function<void()> body);

    /// Starts or continues the function. Returns when the function ends or calls `MainFiber::resume`.
    void run() noexcept;

    [[nodiscard]] bool hasEnded() const noexcept { return !m_body; }

private:
    static void __stdcall loop(void* self);

    MainFiber& m_main;
    void* m_fiber;
    std::function<void()> m_body;
    ThreadState m_state;
};

}  // namespace exploration
