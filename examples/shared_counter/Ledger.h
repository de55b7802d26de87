/// \file
/// What the processes share: a file that each maps, a mutex that guards it, and a condition that tells of changes.
#pragma once

#include <memory>
#include <string>

#include <vorel/vorelCore.h>

#include "support/Processes.h"

namespace shared_counter {

inline constexpr unsigned int kProcesses = 4;
inline constexpr unsigned int kRounds = 2000;  ///< of each process
inline constexpr unsigned int kVictim = 3;     ///< the process that is killed after half of its rounds

/// The mapped bytes.
struct Figures {
    long long total;
    long long added[kProcesses];
    unsigned long processIds[kProcesses];
    long finished;  ///< processes that have done all their rounds
};

class Ledger {
public:
    /// Opens the ledger of the run `name`, over a file in `folder`; the first of the processes creates it, all zero.
    Ledger(const std::string& folder, const std::string& name);

    /// Adds one to the total, as the work of `process`.
    void addOne(unsigned int process);

    /// Enters the calling process as `process`.
    void enter(unsigned int process);

    /// Says that one more process has finished.
    void finish();

    /// Takes the mutex, tells the parent, and never comes back: whoever is to be killed waits here.
    void stopWithTheMutexHeld();

    /// Waits until the victim has stopped; false when that takes too long.
    bool waitForVictim() { return m_victimStopped.wait(kPatienceMs); }

    /// Waits until `count` processes have finished; false when that takes too long.
    bool waitForFinished(long count);

    /// A copy of the figures.
    Figures read();

private:
    static constexpr int kPatienceMs = 60000;

    struct UnmapView {
        void operator()(Figures* view) const noexcept;
    };

    vorel::AutoMutex m_mutex;
    vorel::NamedCondition m_changed;
    vorel::NamedCondition m_victimStopped;
    examples::Handle m_mapping;
    std::unique_ptr<Figures, UnmapView> m_figures;
};

}  // namespace shared_counter
