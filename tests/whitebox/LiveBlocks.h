/// \file
/// Tracks the security identifiers and the blocks of `LocalAlloc` that the library allocates, for example to create
/// secured objects.
#pragma once

#include <set>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/ImportHook.h"

namespace test {

/// While an object of this class exists, tracks security identifiers and blocks from their allocation until they are
/// freed.
class LiveBlocks {
public:
    LiveBlocks() = default;

    LiveBlocks(const LiveBlocks&) = delete;
    LiveBlocks& operator=(const LiveBlocks&) = delete;

    [[nodiscard]] std::size_t live() const { return m_sids.size() + m_blocks.size(); }
    [[nodiscard]] int allocations() const { return m_allocations; }

private:
    ImportHook<importedAllocateAndInitializeSid> m_makeSid{
        [this](PSID_IDENTIFIER_AUTHORITY authority, BYTE count, DWORD first, DWORD second, DWORD third, DWORD fourth,
               DWORD fifth, DWORD sixth, DWORD seventh, DWORD eighth, PSID* sid) {
            const BOOL made =
                m_makeSid.original(authority, count, first, second, third, fourth, fifth, sixth, seventh, eighth, sid);
            if (made) {
                m_sids.insert(*sid);
                ++m_allocations;
            }
            return made;
        }};
    ImportHook<importedFreeSid> m_freeSid{[this](PSID sid) {
        EXPECT_EQ(m_sids.erase(sid), 1u) << "the identifier was not allocated, or is already freed";
        return m_freeSid.original(sid);
    }};
    ImportHook<importedLocalAlloc> m_allocate{[this](UINT flags, SIZE_T size) {
        void* const block = m_allocate.original(flags, size);
        if (block) {
            m_blocks.insert(block);
            ++m_allocations;
        }
        return block;
    }};
    ImportHook<importedLocalFree> m_free{[this](HLOCAL block) {
        m_blocks.erase(block);  // does nothing for a text that FormatMessage allocated, which is not tracked
        return m_free.original(block);
    }};

    std::set<void*> m_sids;
    std::set<void*> m_blocks;
    int m_allocations = 0;
};

}  // namespace test
