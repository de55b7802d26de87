/// \file
/// Keeps the last entries, which are shown as context before a matching entry. Later entries reuse the memory of
/// earlier entries.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "vorellog/TrailAssembler.h"

namespace vorellog {

class ContextBuffer {
public:
    /// Keeps the last `size` entries. If `size` is 0, `keep` must not be called.
    explicit ContextBuffer(std::size_t size) : m_entries(size) {}

    /// Keeps a copy of a record. If the buffer is full, the record replaces the oldest entry.
    void keep(const Record& record) {
        Trail& entry = next();
        entry.records.resize(1);
        entry.records.front() = record;
        entry.isException = false;
    }

    void keep(const Trail& trail) { next() = trail; }

    /// Whether an entry was overwritten since the last call of drain().
    [[nodiscard]] bool hasLost() const noexcept { return m_kept > m_entries.size(); }

    /// Calls `show` for each entry, the oldest first, and forgets the entries.
    template <class Show>
    void drain(Show&& show) {
        const std::size_t count = std::min(m_kept, m_entries.size());
        for (std::size_t index = m_kept - count; index != m_kept; ++index) {
            show(m_entries[index % m_entries.size()]);
        }
        m_kept = 0;
    }

private:
    Trail& next() { return m_entries[m_kept++ % m_entries.size()]; }

    std::vector<Trail> m_entries;
    std::size_t m_kept = 0;  ///< entries kept since the last call of drain()
};

}  // namespace vorellog
