/// \file
/// The set of debug targets of one character width. Narrow and wide names are two sets that never see each other.
#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "vorel/core/Guard.h"
#include "vorel/core/Protocol.h"

namespace vorel {

/// Whether any target was ever switched on; never cleared. Every debug test asks this first.
inline constinit std::atomic<bool> DebugTargetsUsed{false};

/// Names with their states, in the order of the names. Any thread may set and test targets at any time without a lock:
/// entries are only added, and stay until the set ends, so nothing is ever retired while it is read.
///
/// A skip list (W. Pugh, "Skip Lists: A Probabilistic Alternative to Balanced Trees", 1990), whose links are set by
/// compare-and-swap: an entry is in the set once the lowest level links it, and the higher levels are short cuts.
template <class T, class Lock>
class DebugTargets {
public:
    DebugTargets() = default;
    ~DebugTargets() {
        for (Entry* entry = m_first[0].load(std::memory_order_relaxed); entry;) {
            const std::unique_ptr<Entry> last(entry);
            entry = last->next[0].load(std::memory_order_relaxed);
        }
    }

    DebugTargets(const DebugTargets&) = delete;
    DebugTargets& operator=(const DebugTargets&) = delete;

    /// \throws MemoryException when there is no memory for a new name.
    void set(std::basic_string_view<T> name, bool active) {
        const Guard<Lock> held(m_lock);
        Places places;
        Entry* entry = find(name, places);
        if (!entry) {
            entry = insert(name, places);
        }
        entry->active.store(active, std::memory_order_relaxed);
        if (active) {
            DebugTargetsUsed.store(true, std::memory_order_relaxed);
        }
    }

    bool isActive(std::basic_string_view<T> name) const {
        const Guard<Lock> held(m_lock);
        Places places;
        const Entry* const entry = find(name, places);
        return entry && entry->active.load(std::memory_order_relaxed);
    }

private:
    static constexpr std::size_t kLevels = 8;  // one entry of four has a further level: enough for 4^8 entries

    struct Entry;
    using Links = std::array<std::atomic<Entry*>, kLevels>;

    struct Entry {
        explicit Entry(std::basic_string_view<T> text) : name(text) {}

        const std::basic_string<T> name;
        std::atomic<bool> active{false};
        Links next{};
    };

    /// Where a name belongs: for each level the links of the last entry before it, and the first entry after those.
    struct Places {
        std::array<Links*, kLevels> before;
        std::array<Entry*, kLevels> after;
    };

    /// The entry of `name`, or null.
    Entry* find(std::basic_string_view<T> name, Places& places) const noexcept {
        Links* links = &m_first;
        for (std::size_t level = kLevels; level-- != 0;) {
            Entry* next = (*links)[level].load(std::memory_order_acquire);
            while (next && next->name < name) {
                links = &next->next;
                next = (*links)[level].load(std::memory_order_acquire);
            }
            places.before[level] = links;
            places.after[level] = next;
        }
        Entry* const candidate = places.after[0];
        return candidate && candidate->name == name ? candidate : nullptr;
    }

    /// Adds an entry for `name`, unless another thread has added one meanwhile, and returns the one that is there.
    Entry* insert(std::basic_string_view<T> name, Places& places) {
        std::unique_ptr<Entry> added = make(name);
        while (!link(*added, 0, places)) {
            if (Entry* const found = find(name, places)) {
                return found;
            }
        }
        Entry* const entry = added.release();
        const std::size_t levels = levelsOf(name);
        for (std::size_t level = 1; level < levels; ++level) {
            while (!link(*entry, level, places)) {
                find(name, places);
            }
        }
        return entry;
    }

    /// Links `entry` at its place of one level; false when that has changed.
    static bool link(Entry& entry, std::size_t level, const Places& places) noexcept {
        Entry* after = places.after[level];
        entry.next[level].store(after, std::memory_order_relaxed);
        return (*places.before[level])[level].compare_exchange_strong(after, &entry, std::memory_order_release,
                                                                      std::memory_order_relaxed);
    }

    static std::unique_ptr<Entry> make(std::basic_string_view<T> name) {
        try {
            return std::make_unique<Entry>(name);
        } catch (const std::bad_alloc&) {
            detail::throwMemory(static_cast<unsigned int>(name.size() + 1), sizeof(T));
        }
    }

    static std::size_t levelsOf(std::basic_string_view<T> name) noexcept {
        const std::size_t hash = std::hash<std::basic_string_view<T>>()(name);
        return 1 + static_cast<std::size_t>(std::countr_zero(hash | std::size_t{1} << 2 * (kLevels - 1))) / 2;
    }

    mutable Lock m_lock;
    mutable Links m_first{};
};

}  // namespace vorel
