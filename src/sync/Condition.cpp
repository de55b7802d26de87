#include "vorel/sync/Condition.h"

#include <windows.h>

#include "sync/SystemEvent.h"
#include "vorel/core/Guard.h"
#include "vorel/core/Protocol.h"
#include "vorel/core/ThreadSafety.h"

namespace vorel {

namespace {

/// Counts the thread as a waiter while the object exists.
class Waiter {
public:
    explicit Waiter(volatile long& count) noexcept : m_count(count) { forced::TalInterlockedIncrement(m_count); }
    ~Waiter() { forced::TalInterlockedDecrement(m_count); }

    Waiter(const Waiter&) = delete;
    Waiter& operator=(const Waiter&) = delete;

private:
    volatile long& m_count;
};

}  // namespace

const wchar_t* const Condition::ClassName = L"Condition";

// cppcheck-suppress constParameter; waiters unlock and lock it
Condition::Condition(ForcedCriticalSection& lock) try : m_lock(lock) { createCondition(); } catch (...) {
    detail::rethrowWithRecord(ClassName, L"Condition()");
}

Condition::~Condition() noexcept(false) {
    detail::runDestructor(ClassName, [this] { closeCondition(); });
}

void Condition::createCondition() {
    detail::runRethrowing(ClassName, L"createCondition", [this] {
        m_event = detail::KernelHandle(CreateEventW(nullptr, FALSE, FALSE, nullptr));
        if (!m_event) {
            detail::throwFailure(L"Failed to create condition.");
        }
    });
}

void Condition::closeCondition() {
    detail::runRethrowing(ClassName, L"closeCondition", [this] { m_event.close(); });
}

void Condition::signal() {
    detail::runRethrowing(ClassName, L"signal", [this] { detail::setEvent(m_event); });
}

void Condition::broadcast() {
    detail::runRethrowing(ClassName, L"broadcast", [this] {
        constexpr int kPauseMs = 10;
        const Guard held(m_broadcastLock);
        // The event is auto-reset, so each signal releases one thread. The loop then pauses, because that thread needs
        // some time before it no longer counts as a waiter.
        while (m_waiters > 0) {
            signal();
            Sleep(kPauseMs);
        }
    });
}

bool Condition::wait(int timeout) {
    return detail::runRethrowing(ClassName, L"wait", [this, timeout] {
        const UnGuard left(m_lock);
        { const Guard notDuringABroadcast(m_broadcastLock); }
        const Waiter counted(m_waiters);
        return detail::waitForEvent(m_event, timeout);
    });
}

static_assert(sizeof(Condition) == 32);

}  // namespace vorel
