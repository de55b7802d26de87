/// \file
/// The state that the processes share: a mapped file, a mutex that guards the file, and two conditions. One condition
/// is signalled when a process has finished, the other condition when the victim (the process that the parent kills)
/// holds the mutex.
#pragma once

#include <memory>
#include <string>

#include <vorel/vorelCore.h>

#include "support/Processes.h"

namespace shared_counter {

inline constexpr unsigned int kProcesses = 4;
inline constexpr unsigned int kRounds = 2000;  ///< rounds of each process
inline constexpr unsigned int kVictim = 3;     ///< the process that is killed after half of its rounds

/// The content of the mapped file.
struct Counts {
    long long total;
    long long added[kProcesses];
    unsigned long processIds[kProcesses];
    long finished;  ///< number of processes that have completed all rounds
};

class Ledger {
public:
    /// Opens the ledger of the run `name`, in a file in `folder`. The first process creates the file, in which all
    /// counts are 0.
    Ledger(const std::string& folder, const std::string& name);

    /// Adds one to the total and to the count of `process`.
    void addOne(unsigned int process);

    /// Stores the id of the calling process as the id of `process`.
    void enter(unsigned int process);

    /// Records that one more process has finished, and signals the change.
    void finish();

    /// Locks the mutex, signals the parent, and sleeps for 60 seconds. The parent kills the process during this time.
    void stopWithTheMutexHeld();

    /// Waits until the victim holds the mutex. Returns false after 60 seconds.
    bool waitForVictim() { return m_victimStopped.wait(kTimeoutMs); }

    /// Waits until `count` processes have finished. Returns false after 60 seconds.
    bool waitForFinished(long count);

    /// Locks the mutex and returns a copy of the counts.
    Counts read();

private:
    static constexpr int kTimeoutMs = 60000;

    struct UnmapView {
        void operator()(Counts* view) const noexcept;
    };

    vorel::AutoMutex m_mutex;
    vorel::NamedCondition m_changed;
    vorel::NamedCondition m_victimStopped;
    examples::Handle m_mapping;
    std::unique_ptr<Counts, UnmapView> m_counts;
};

}  // namespace shared_counter
