/// \file
/// The set of debug targets of one character width. Narrow and wide names are two sets that never see each other.
#pragma once

#include <atomic>
#include <map>
#include <string>
#include <string_view>

#include "vorel/sync/Guard.h"

namespace vorel {

/// Whether any target was ever switched on; never cleared. Every debug test asks this first.
inline constinit std::atomic<bool> DebugTargetsUsed{false};

/// Names with their states. Entries are never removed. The library's sets take no lock: targets are switched while a
/// program starts.
template <class T, class Lock>
class DebugTargets {
public:
    void set(std::basic_string_view<T> name, bool active) {
        const Guard<Lock> held(m_lock);
        const auto found = m_states.find(name);
        if (found != m_states.end()) {
            found->second = active;
        } else {
            m_states.emplace(name, active);
        }
        if (active) {
            DebugTargetsUsed.store(true, std::memory_order_relaxed);
        }
    }

    bool isActive(std::basic_string_view<T> name) const {
        const Guard<Lock> held(m_lock);
        const auto found = m_states.find(name);
        return found != m_states.end() && found->second;
    }

private:
    mutable Lock m_lock;
    std::map<std::basic_string<T>, bool, std::less<>> m_states;
};

}  // namespace vorel
