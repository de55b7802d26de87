/// \file
/// Creates and closes each kind of object many times, and repeats calls that fail. The library must close every system
/// handle or return it to the caller, and must free every security identifier and every block of `LocalAlloc`.

#include <ostream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/CaseName.h"
#include "support/Handle.h"
#include "support/ImportHook.h"
#include "support/NamedEvent.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/secure/IsAdmin.h"
#include "vorel/secure/SecuredMappings.h"
#include "vorel/secure/SecuredObjects.h"
#include "whitebox/LiveBlocks.h"
#include "whitebox/LiveHandles.h"

namespace {

using test::Handle;
using test::LiveHandles;

constexpr int kRounds = 10000;
constexpr DWORD kSize = 4096;
constexpr const wchar_t* kMissing = L"\\missing";

/// The object name and the file that the rounds use.
struct Resources {
    std::wstring name = test::NamedEvent::uniqueName(L"leaks");
    test::TemporaryFolder folder;
    std::wstring file = folder.widePath() + L"\\mapped.dat";
};

struct Cycle {
    const char* name;
    HANDLE (*prepare)(const Resources& resources);  // creates the object that exists before the first round
    HANDLE (*obtain)(const Resources& resources);   // runs a round
    bool obtains;                                   // whether a round returns a handle
    int rounds = kRounds;

    friend void PrintTo(const Cycle& cycle, std::ostream* out) { *out << cycle.name; }
};

HANDLE nothing(const Resources&) {
    return nullptr;
}

HANDLE newMutex(const Resources& resources) {
    return vorel::ObtainAccessableMutex(0, resources.name.c_str(), 0, 0, nullptr);
}

HANDLE newEvent(const Resources& resources) {
    vorel::BaseString<wchar_t> text;
    return vorel::ObtainAccessableEvent(0, 0, resources.name.c_str(), 0, 0, text);
}

HANDLE newMapping(const Resources& resources) {
    return vorel::ObtainAccessableFileMapping(INVALID_HANDLE_VALUE, PAGE_READWRITE, FILE_MAP_WRITE, 0, kSize,
                                              resources.name.c_str(), nullptr);
}

HANDLE createEmptyFile(const Resources& resources) {
    return CreateFileW(resources.file.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_NEW, 0,
                       nullptr);
}

HANDLE openFileExclusively(const Resources& resources) {
    return CreateFileW(resources.file.c_str(), GENERIC_READ, 0, nullptr, CREATE_NEW, 0, nullptr);
}

HANDLE mapFile(const std::wstring& file, const Resources& resources, DWORD size) {
    try {
        return vorel::ObtainAccessableFileMappingEx(file.c_str(), PAGE_READWRITE, FILE_MAP_WRITE, 0, size,
                                                    resources.name.c_str(), nullptr, nullptr);
    } catch (const vorel::Exception&) {
        return nullptr;
    }
}

HANDLE mapWithSize(const Resources& resources) {
    return mapFile(resources.file, resources, kSize);
}

HANDLE mapWholeFile(const Resources& resources) {
    return mapFile(resources.file, resources, 0);
}

HANDLE mapFileInMissingFolder(const Resources& resources) {
    return mapFile(resources.folder.widePath() + kMissing + L"\\mapped.dat", resources, kSize);
}

/// Calls `Obtain` while the last step of building the security descriptor fails.
template <HANDLE (*Obtain)(const Resources&)>
HANDLE withoutSecurity(const Resources& resources) {
    const auto failing = test::failCalls<importedSetSecurityDescriptorDacl>();
    return Obtain(resources);
}

HANDLE askForAdmin(const Resources&) {
    (void)vorel::IsAdmin();
    return nullptr;
}

HANDLE askForAdminWhileImpersonating(const Resources&) {
    EXPECT_TRUE(ImpersonateSelf(SecurityImpersonation));
    (void)vorel::IsAdmin();
    EXPECT_TRUE(RevertToSelf());
    return nullptr;
}

const Cycle kCycles[] = {
    {"Mutex_New", nothing, newMutex, true},
    {"Mutex_Existing", newMutex, newMutex, true},
    {"Mutex_WithTheNameOfAnEvent", newEvent, newMutex, false},
    {"Mutex_WithoutSecurityDescriptor", nothing, withoutSecurity<newMutex>, false},
    {"Event_New", nothing, newEvent, true},
    {"Event_Existing", newEvent, newEvent, true},
    {"Event_WithTheNameOfAMutex", newMutex, newEvent, false},
    {"Event_WithoutSecurityDescriptor", nothing, withoutSecurity<newEvent>, false},
    {"Mapping_New", nothing, newMapping, true},
    {"Mapping_Existing", newMapping, newMapping, true},
    {"Mapping_WithTheNameOfAnEvent", newEvent, newMapping, false},
    {"Mapping_WithoutSecurityDescriptor", nothing, withoutSecurity<newMapping>, false},
    {"FileMapping_New", nothing, mapWithSize, true},
    {"FileMapping_Existing", newMapping, mapWithSize, true},
    {"FileMapping_OfAFileOpenedExclusively", openFileExclusively, mapWithSize, false},
    {"FileMapping_InAMissingFolder", nothing, mapFileInMissingFolder, false},
    {"FileMapping_WithoutSecurityDescriptor", nothing, withoutSecurity<mapWithSize>, false},
    // In each round of the next two cycles, the library tries fifty times to create the mapping.
    {"FileMapping_WithTheNameOfAnEvent", newEvent, mapWithSize, false, kRounds / 50},
    {"FileMapping_OfAnEmptyFile", createEmptyFile, mapWholeFile, false, kRounds / 50},
    {"IsAdmin", nothing, askForAdmin, false},
    {"IsAdmin_WhileImpersonating", nothing, askForAdminWhileImpersonating, false, kRounds / 10},
};

/// Replaces GetLongPathNameW, which takes longer than all other calls of a round. Returns the path itself, because the
/// paths of this test are already long forms. Fails for a path in the missing folder.
DWORD WINAPI giveLongPath(LPCWSTR path, LPWSTR longPath, DWORD size) {
    const std::wstring_view text = path;
    if (text.find(kMissing) != std::wstring_view::npos) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return 0;
    }
    if (size <= text.size()) {
        return static_cast<DWORD>(text.size() + 1);
    }
    longPath[text.copy(longPath, size)] = L'\0';
    return static_cast<DWORD>(text.size());
}

class HandleLeaks : public testing::TestWithParam<Cycle> {
protected:
    HandleLeaks() { vorel::Exception::SetErrorLogSize(0); }

    const test::TemporaryLog log;  // restores the size limit
    const Resources resources;
};

/// Whether no object has the name.
bool isNameFree(const std::wstring& name) {
    // If an object of another kind has the name, both calls fail, but not with ERROR_FILE_NOT_FOUND.
    const Handle mutex(OpenMutexW(SYNCHRONIZE, FALSE, name.c_str()));
    const DWORD mutexError = GetLastError();
    const Handle mapping(OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str()));
    return !mutex && mutexError == ERROR_FILE_NOT_FOUND && !mapping && GetLastError() == ERROR_FILE_NOT_FOUND;
}

TEST_P(HandleLeaks, ManyRoundsLeaveNoHandleOpen) {
    const Cycle& cycle = GetParam();
    {
        const Handle prepared(cycle.prepare(resources));
        Handle(cycle.obtain(resources)).close();  // the system may keep handles after the first call
        const DWORD reported = test::reportedHandles();
        const LiveHandles live;
        const test::ImportPatch longPaths(importedGetLongPathNameW, &giveLongPath);
        const test::LiveBlocks blocks;
        for (int round = 0; round < cycle.rounds; ++round) {
            Handle obtained(cycle.obtain(resources));
            ASSERT_EQ(static_cast<bool>(obtained), cycle.obtains) << round;
            ASSERT_EQ(live.live(), obtained ? 1u : 0u) << "only the caller's handle may be open";
            obtained.close();
            ASSERT_EQ(live.live(), 0u);
            ASSERT_EQ(blocks.live(), 0u);
        }
        if (cycle.obtains) {
            EXPECT_GE(live.opened(), cycle.rounds);
        }
        // The system may open some handles, too, but fewer than one handle for every ten rounds.
        EXPECT_LT(test::reportedHandles(), reported + static_cast<DWORD>(cycle.rounds) / 10);
    }
    EXPECT_TRUE(isNameFree(resources.name));
    if (GetFileAttributesW(resources.file.c_str()) != INVALID_FILE_ATTRIBUTES) {
        EXPECT_TRUE(DeleteFileW(resources.file.c_str())) << "the file must be closed";
    }
}

INSTANTIATE_TEST_SUITE_P(Each, HandleLeaks, testing::ValuesIn(kCycles), test::caseName);

}  // namespace
