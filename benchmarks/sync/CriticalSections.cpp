#include <mutex>
#include <thread>

#include <vorel/core/CriticalSections.h>
#include <vorel/core/ThreadSafety.h>

#include <windows.h>

#include "Cases.h"

namespace bench {

namespace {

constexpr std::size_t kLocks = 100000;

/// The system's critical section, called directly.
class RawSection {
public:
    RawSection() { InitializeCriticalSection(&m_section); }
    ~RawSection() { DeleteCriticalSection(&m_section); }

    RawSection(const RawSection&) = delete;
    RawSection& operator=(const RawSection&) = delete;

    void lock() { EnterCriticalSection(&m_section); }
    void unlock() { LeaveCriticalSection(&m_section); }

private:
    CRITICAL_SECTION m_section{};
};

template <class Lock>
void acquire(Lock& lock) {
    if constexpr (requires { lock.lock(60000u, true); }) {
        lock.lock(60000, true);
    } else {
        lock.lock();
    }
}

/// Locks, adds to a number, and unlocks, `kLocks` times.
template <class Lock>
void work(Lock& lock, std::uint64_t& number) {
    for (std::size_t count = 0; count != kLocks; ++count) {
        acquire(lock);
        number += count;
        lock.unlock();
    }
}

template <class Lock>
Pass alone() {
    return [] {
        static Lock lock;
        std::uint64_t number = 0;
        work(lock, number);
        return number;
    };
}

template <class Lock>
Pass byTwo() {
    return [] {
        static Lock lock;
        std::uint64_t number = 0;
        std::thread other([&] { work(lock, number); });
        work(lock, number);
        other.join();
        return number;
    };
}

/// A pass that calls `pass` while thread safety is disabled.
Pass switchedOff(const Pass& pass) {
    return [pass] {
        vorel::EnableThreadSafety(false);
        const std::uint64_t result = pass();
        vorel::EnableThreadSafety(true);
        return result;
    };
}

}  // namespace

void criticalSections(Family& family) {
    using vorel::AutoCriticalSection;
    using vorel::ForcedCriticalSection;
    const std::vector<Peer> peers = {{"raw critical section", alone<RawSection>()},
                                     {"std::recursive_mutex", alone<std::recursive_mutex>()}};
    family.compare("ForcedCriticalSection, alone", kLocks, alone<ForcedCriticalSection>(), peers);
    family.compare("AutoCriticalSection, alone", kLocks, alone<AutoCriticalSection>(), peers);
    family.compare("AutoCriticalSection, alone, switched off", kLocks, switchedOff(alone<AutoCriticalSection>()),
                   peers);

    const std::vector<Peer> peersByTwo = {{"raw critical section", byTwo<RawSection>()},
                                          {"std::recursive_mutex", byTwo<std::recursive_mutex>()}};
    family.compare("ForcedCriticalSection, two threads", 2 * kLocks, byTwo<ForcedCriticalSection>(), peersByTwo);
    family.compare("AutoCriticalSection, two threads", 2 * kLocks, byTwo<AutoCriticalSection>(), peersByTwo);
}

}  // namespace bench
