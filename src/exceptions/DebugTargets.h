/// \file
/// The set of debug targets of one character width. Narrow and wide names have separate sets.
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
#include <type_traits>

#include "vorel/core/Guard.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"

namespace vorel {

/// Names with their states, ordered by name. Any thread may set and test targets at any time. The set needs no lock, so
/// the library uses `NoLock` as `Lock`. A test uses a lock that counts the accesses. Entries are never removed before
/// the set is destroyed, so a reader never accesses a freed entry.
///
/// The set is a skip list (W. Pugh, "Skip Lists: A Probabilistic Alternative to Balanced Trees", 1990). Its links are
/// set by compare-and-swap. An entry is in the set if the lowest level links to it. The higher levels are shortcuts.
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

    /// \throws MemoryException if a new name cannot be allocated.
    void set(std::basic_string_view<T> name, bool active) {
        const Guard<Lock> held(m_lock);
        Position position;
        Entry* entry = find(name, position);
        if (!entry) {
            entry = insert(name, position);
        }
        entry->active.store(active, std::memory_order_relaxed);
        if (active) {
            DebugTargetsUsed.store(true, std::memory_order_relaxed);
        }
    }

    bool isActive(const T* name) const {
        const Guard<Lock> held(m_lock);
        const Entry* const entry = find(name);
        return entry && entry->active.load(std::memory_order_relaxed);
    }

private:
    static constexpr std::size_t kLevels = 8;  // one entry in four reaches the next level: enough for 4^8 entries

    struct Entry;
    using Links = std::array<std::atomic<Entry*>, kLevels>;

    struct Entry {
        explicit Entry(std::basic_string_view<T> text) : name(text) {}

        const std::basic_string<T> name;
        std::atomic<bool> active{false};
        Links next{};
    };

    /// The position of a name: for each level, the links of the last entry before the name, or the first links of the
    /// set if no entry is before the name; and the entry that these links lead to, or null.
    struct Position {
        std::array<Links*, kLevels> before;
        std::array<Entry*, kLevels> after;
    };

    /// The order of two names: below 0, 0, or above 0. Names are short and mostly differ early, so the loop is faster
    /// than the runtime's functions.
    static int compare(const T* first, const T* second) noexcept {
        using Unit = std::make_unsigned_t<T>;
        while (*first == *second && *first != 0) {
            ++first;
            ++second;
        }
        return static_cast<int>(static_cast<Unit>(*first)) - static_cast<int>(static_cast<Unit>(*second));
    }

    /// Returns the entry of `name`, or null.
    const Entry* find(const T* name) const noexcept {
        const Links* links = &m_first;
        for (std::size_t level = kLevels; level-- != 0;) {
            while (const Entry* const next = (*links)[level].load(std::memory_order_acquire)) {
                const int order = compare(next->name.c_str(), name);
                if (order == 0) {
                    return next;
                }
                if (order > 0) {
                    break;
                }
                links = &next->next;
            }
        }
        return nullptr;
    }

    /// Returns the entry of `name`, or null, and sets `position`.
    Entry* find(std::basic_string_view<T> name, Position& position) const noexcept {
        Links* links = &m_first;
        for (std::size_t level = kLevels; level-- != 0;) {
            Entry* next = (*links)[level].load(std::memory_order_acquire);
            while (next && next->name < name) {
                links = &next->next;
                next = (*links)[level].load(std::memory_order_acquire);
            }
            position.before[level] = links;
            position.after[level] = next;
        }
        Entry* const candidate = position.after[0];
        return candidate && candidate->name == name ? candidate : nullptr;
    }

    /// Adds an entry for `name`, unless another thread has added such an entry in the meantime. Returns the entry in
    /// the set.
    Entry* insert(std::basic_string_view<T> name, Position& position) {
        std::unique_ptr<Entry> added = make(name);
        while (!link(*added, 0, position)) {
            if (Entry* const found = find(name, position)) {
                return found;
            }
        }
        Entry* const entry = added.release();
        const std::size_t levels = levelCount(name);
        for (std::size_t level = 1; level < levels; ++level) {
            while (!link(*entry, level, position)) {
                find(name, position);
            }
        }
        return entry;
    }

    /// Links `entry` at its position on one level. Returns false if another thread has changed that position.
    static bool link(Entry& entry, std::size_t level, const Position& position) noexcept {
        Entry* after = position.after[level];
        entry.next[level].store(after, std::memory_order_relaxed);
        return (*position.before[level])[level].compare_exchange_strong(after, &entry, std::memory_order_release,
                                                                        std::memory_order_relaxed);
    }

    static std::unique_ptr<Entry> make(std::basic_string_view<T> name) {
        try {
            return std::make_unique<Entry>(name);
        } catch (const std::bad_alloc&) {
            detail::throwMemory(static_cast<unsigned int>(name.size() + 1), sizeof(T));
        }
    }

    static std::size_t levelCount(std::basic_string_view<T> name) noexcept {
        const std::size_t hash = std::hash<std::basic_string_view<T>>()(name);
        return 1 + static_cast<std::size_t>(std::countr_zero(hash | std::size_t{1} << 2 * (kLevels - 1))) / 2;
    }

    mutable Lock m_lock;
    mutable Links m_first{};
};

}  // namespace vorel
