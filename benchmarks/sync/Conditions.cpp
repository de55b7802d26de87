#include <thread>

#include <vorel/sync/Condition.h>

#include <windows.h>

#include "Cases.h"

namespace bench {

namespace {

constexpr std::size_t kRounds = 300;

/// With `Events`, each thread of `pingPong` waits for an event of the system.
struct Events {
    struct Side {
        Side() : event(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}
        ~Side() { CloseHandle(event); }
        Side(const Side&) = delete;
        Side& operator=(const Side&) = delete;

        void begin() {}
        void end() {}
        void wait() const { WaitForSingleObject(event, INFINITE); }
        void signal() const { SetEvent(event); }

        HANDLE event;
    };
};

/// With `Conditions`, each thread of `pingPong` waits for a condition. Each condition has its own lock, which only the
/// waiting thread uses.
struct Conditions {
    struct Side {
        void begin() { lock.lock(60000, true); }
        void end() { lock.unlock(); }
        void wait() { condition.wait(-1); }
        void signal() { condition.signal(); }

        vorel::ForcedCriticalSection lock;
        vorel::Condition condition{lock};
    };
};

/// Two threads wake each other alternately.
template <class Kind>
std::uint64_t pingPong() {
    typename Kind::Side there;
    typename Kind::Side back;
    std::thread other([&] {
        there.begin();
        for (std::size_t round = 0; round != kRounds; ++round) {
            there.wait();
            back.signal();
        }
        there.end();
    });
    back.begin();
    for (std::size_t round = 0; round != kRounds; ++round) {
        there.signal();
        back.wait();
    }
    back.end();
    other.join();
    return kRounds;
}

/// A critical section and two events of the system, used like a lock and two conditions.
class SectionAndEvents {
public:
    SectionAndEvents() { InitializeCriticalSection(&m_section); }
    ~SectionAndEvents() { DeleteCriticalSection(&m_section); }
    SectionAndEvents(const SectionAndEvents&) = delete;
    SectionAndEvents& operator=(const SectionAndEvents&) = delete;

    void lock() { EnterCriticalSection(&m_section); }
    void unlock() { LeaveCriticalSection(&m_section); }
    void signal(int side) { m_sides[side].signal(); }
    void wait(int side) {
        unlock();
        m_sides[side].wait();
        lock();
    }

private:
    CRITICAL_SECTION m_section{};
    Events::Side m_sides[2];
};

/// A lock and two conditions.
class LockAndConditions {
public:
    void lock() { m_lock.lock(60000, true); }
    void unlock() { m_lock.unlock(); }
    void signal(int side) { m_sides[side].signal(); }
    void wait(int side) { m_sides[side].wait(-1); }

private:
    vorel::ForcedCriticalSection m_lock;
    vorel::Condition m_sides[2] = {vorel::Condition(m_lock), vorel::Condition(m_lock)};
};

/// Two threads take turns under one lock. Each thread holds the lock while it signals the other thread.
template <class Kind>
std::uint64_t turns() {
    Kind shared;
    int turn = 0;
    const auto play = [&](int side) {
        shared.lock();
        for (std::size_t round = 0; round != kRounds; ++round) {
            while (turn != side) {
                shared.wait(side);
            }
            turn = 1 - side;
            shared.signal(turn);
        }
        shared.unlock();
    };
    std::thread other(play, 1);
    play(0);
    other.join();
    return kRounds;
}

}  // namespace

void conditions(Family& family) {
    const Pass events = &pingPong<Events>;
    family.compare("Condition, ping-pong", kRounds, &pingPong<Conditions>, {{"two events", events}});
    family.compare("Condition, ping-pong under one lock", kRounds, &turns<LockAndConditions>,
                   {{"two events and a section", &turns<SectionAndEvents>}, {"two events", events}});
}

}  // namespace bench
