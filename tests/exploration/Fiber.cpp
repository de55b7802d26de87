#include "exploration/Fiber.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <cxxabi.h>
#include <windows.h>

// The C runtime exports these functions, but some compilers' headers do not declare them.
extern "C" {
__declspec(dllimport) _invalid_parameter_handler __cdecl _get_thread_local_invalid_parameter_handler();
__declspec(dllimport) _invalid_parameter_handler
    __cdecl _set_thread_local_invalid_parameter_handler(_invalid_parameter_handler handler);
}

namespace exploration {

namespace {

constexpr std::size_t kCommittedStack = std::size_t{64} * 1024;
constexpr std::size_t kReservedStack = std::size_t{256} * 1024;

}  // namespace

// The C++ runtime stores the exceptions of a thread as a pointer and a count (Itanium C++ ABI: Exception Handling,
// 2.2.2).

void ThreadState::save() noexcept {
    m_lastError = GetLastError();
    m_errno = errno;
    std::memcpy(m_exceptions.data(), abi::__cxa_get_globals(), m_exceptions.size());
    m_handler = _get_thread_local_invalid_parameter_handler();
}

void ThreadState::load() const noexcept {
    _set_thread_local_invalid_parameter_handler(m_handler);
    std::memcpy(static_cast<void*>(abi::__cxa_get_globals()), m_exceptions.data(), m_exceptions.size());
    errno = m_errno;
    SetLastError(m_lastError);
}

MainFiber::MainFiber() : m_fiber(ConvertThreadToFiber(nullptr)) {
    if (!m_fiber) {
        throw std::runtime_error("cannot turn the thread into a fiber");
    }
}

MainFiber::~MainFiber() {
    ConvertFiberToThread();
}

void MainFiber::resume() noexcept {
    SwitchToFiber(m_fiber);
}

Fiber::Fiber(MainFiber& main) : m_main(main), m_fiber(CreateFiberEx(kCommittedStack, kReservedStack, 0, &loop, this)) {
    if (!m_fiber) {
        throw std::runtime_error("cannot create a fiber");
    }
}

Fiber::~Fiber() {
    DeleteFiber(m_fiber);
}

void Fiber::start(std::function<void()> body) {
    m_body = std::move(body);
    m_state = ThreadState();
}

void Fiber::run() noexcept {
    m_main.m_state.save();
    m_state.load();
    SwitchToFiber(m_fiber);
    m_state.save();
    m_main.m_state.load();
}

void __stdcall Fiber::loop(void* self) {
    auto& fiber = *static_cast<Fiber*>(self);
    for (;;) {
        fiber.m_body();
        fiber.m_body = nullptr;
        fiber.m_main.resume();
    }
}

}  // namespace exploration
