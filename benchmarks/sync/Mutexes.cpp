#include <string>
#include <vector>

#include <vorel/sync/AutoMutex.h>

#include <windows.h>

#include "Cases.h"

namespace bench {

namespace {

constexpr std::size_t kLocks = 200;
constexpr std::size_t kCreations = 100;

std::wstring nameOf(const wchar_t* stem) {
    return stem + std::to_wstring(GetCurrentProcessId());
}

/// Builds an access list that lets all users open the mutex, and creates a mutex with this list.
HANDLE createForAllUsers(const wchar_t* name) {
    SID_IDENTIFIER_AUTHORITY world = SECURITY_WORLD_SID_AUTHORITY;
    PSID everyone = nullptr;
    AllocateAndInitializeSid(&world, 1, SECURITY_WORLD_RID, 0, 0, 0, 0, 0, 0, 0, &everyone);
    const DWORD size = 2 * GetLengthSid(everyone) + 32;
    std::vector<unsigned char> storage(size);
    auto* const list = reinterpret_cast<ACL*>(storage.data());
    InitializeAcl(list, size, ACL_REVISION);
    AddAccessDeniedAce(list, ACL_REVISION, WRITE_DAC | WRITE_OWNER, everyone);
    AddAccessAllowedAce(list, ACL_REVISION, GENERIC_ALL, everyone);
    SECURITY_DESCRIPTOR descriptor;
    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&descriptor, TRUE, list, FALSE);
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, &descriptor, FALSE};
    const HANDLE mutex = CreateMutexW(&attributes, FALSE, name);
    FreeSid(everyone);
    return mutex;
}

}  // namespace

void mutexes(Family& family) {
    vorel::AutoMutex ours(nameOf(L"vorel_bench_ours_").c_str(), false, false);
    const HANDLE raw = CreateMutexW(nullptr, FALSE, nameOf(L"Global\\vorel_bench_raw_").c_str());
    family.compare("AutoMutex", kLocks,
                   [&] {
                       std::uint64_t number = 0;
                       for (std::size_t count = 0; count != kLocks; ++count) {
                           number += ours.lock(60000, true) ? 1u : 0u;
                           ours.unlock();
                       }
                       return number;
                   },
                   {{"WaitForSingleObject and ReleaseMutex", [&] {
                         std::uint64_t number = 0;
                         for (std::size_t count = 0; count != kLocks; ++count) {
                             number += WaitForSingleObject(raw, 60000) == WAIT_OBJECT_0 ? 1u : 0u;
                             ReleaseMutex(raw);
                         }
                         return number;
                     }}});
    CloseHandle(raw);

    const std::wstring oursName = nameOf(L"vorel_bench_created_");
    const std::wstring rawName = nameOf(L"Global\\vorel_bench_created_raw_");
    family.compare("AutoMutex, create and destroy", kCreations,
                   [&] {
                       for (std::size_t count = 0; count != kCreations; ++count) {
                           const vorel::AutoMutex mutex(oursName.c_str(), false, false);
                       }
                       return std::uint64_t{kCreations};
                   },
                   {{"CreateMutexW and CloseHandle",
                     [&] {
                         for (std::size_t count = 0; count != kCreations; ++count) {
                             CloseHandle(CreateMutexW(nullptr, FALSE, rawName.c_str()));
                         }
                         return std::uint64_t{kCreations};
                     }},
                    {"the same with an access list", [&] {
                         for (std::size_t count = 0; count != kCreations; ++count) {
                             CloseHandle(createForAllUsers(rawName.c_str()));
                         }
                         return std::uint64_t{kCreations};
                     }}});
}

}  // namespace bench
