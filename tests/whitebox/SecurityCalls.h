/// \file
/// The imported system functions that create secured objects, and a counter of the memory that they allocate.
#pragma once

#include <set>
#include <type_traits>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/ImportHook.h"

extern "C" {
extern decltype(&::AllocateAndInitializeSid) importedAllocateAndInitializeSid __asm__("__imp_AllocateAndInitializeSid");
extern decltype(&::FreeSid) importedFreeSid __asm__("__imp_FreeSid");
extern decltype(&::LocalAlloc) importedLocalAlloc __asm__("__imp_LocalAlloc");
extern decltype(&::LocalFree) importedLocalFree __asm__("__imp_LocalFree");
extern decltype(&::InitializeAcl) importedInitializeAcl __asm__("__imp_InitializeAcl");
extern decltype(&::AddAccessDeniedAce) importedAddAccessDeniedAce __asm__("__imp_AddAccessDeniedAce");
extern decltype(&::AddAccessAllowedAce) importedAddAccessAllowedAce __asm__("__imp_AddAccessAllowedAce");
extern decltype(&::InitializeSecurityDescriptor)
    importedInitializeSecurityDescriptor __asm__("__imp_InitializeSecurityDescriptor");
extern decltype(&::SetSecurityDescriptorDacl)
    importedSetSecurityDescriptorDacl __asm__("__imp_SetSecurityDescriptorDacl");

extern decltype(&::CreateMutexW) importedCreateMutexW __asm__("__imp_CreateMutexW");
extern decltype(&::OpenMutexW) importedOpenMutexW __asm__("__imp_OpenMutexW");
extern decltype(&::CreateEventW) importedCreateEventW __asm__("__imp_CreateEventW");
extern decltype(&::OpenEventW) importedOpenEventW __asm__("__imp_OpenEventW");
extern decltype(&::CreateFileW) importedCreateFileW __asm__("__imp_CreateFileW");
extern decltype(&::CreateFileMappingW) importedCreateFileMappingW __asm__("__imp_CreateFileMappingW");
extern decltype(&::OpenFileMappingW) importedOpenFileMappingW __asm__("__imp_OpenFileMappingW");
extern decltype(&::GetLongPathNameW) importedGetLongPathNameW __asm__("__imp_GetLongPathNameW");
extern decltype(&::OpenThreadToken) importedOpenThreadToken __asm__("__imp_OpenThreadToken");
extern decltype(&::CloseHandle) importedCloseHandle __asm__("__imp_CloseHandle");
extern decltype(&::Sleep) importedSleep __asm__("__imp_Sleep");
}

namespace test {

/// Tracks the identifiers and local blocks that are allocated during its lifetime, until they are freed.
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
        EXPECT_EQ(m_sids.erase(sid), 1u) << "not allocated, or already freed";
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
        m_blocks.erase(block);  // the system's texts are freed here, too
        return m_free.original(block);
    }};

    std::set<void*> m_sids;
    std::set<void*> m_blocks;
    int m_allocations = 0;
};

}  // namespace test
