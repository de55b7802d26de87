/// \file
/// Many rounds of each object's life, also along the ways that fail: every handle that the library got from the system
/// has gone back to it, or to the caller.

#include <ostream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/Handle.h"
#include "support/NamedEvent.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/secure/IsAdmin.h"
#include "vorel/secure/SecuredMappings.h"
#include "vorel/secure/SecuredObjects.h"
#include "whitebox/LiveHandles.h"

namespace {

using test::Handle;
using test::LiveHandles;

constexpr int kRounds = 10000;
constexpr DWORD kSize = 4096;
constexpr const wchar_t* kMissing = L"\\missing";

/// Where a round takes place.
struct Place {
    std::wstring name = test::NamedEvent::uniqueName(L"leaks");
    test::TemporaryFolder folder;
    std::wstring file = folder.widePath() + L"\\mapped.dat";
};

struct Cycle {
    const char* name;
    HANDLE (*prepare)(const Place& place);  // what is there before the first round
    HANDLE (*obtain)(const Place& place);   // a round
    bool obtains;                           // whether it has a handle for its caller
    int rounds = kRounds;

    friend void PrintTo(const Cycle& cycle, std::ostream* out) { *out << cycle.name; }
};

HANDLE nothing(const Place&) {
    return nullptr;
}

HANDLE aMutex(const Place& place) {
    return vorel::ObtainAccessableMutex(0, place.name.c_str(), 0, 0, nullptr);
}

HANDLE anEvent(const Place& place) {
    vorel::BaseString<wchar_t> text;
    return vorel::ObtainAccessableEvent(0, 0, place.name.c_str(), 0, 0, text);
}

HANDLE aMapping(const Place& place) {
    return vorel::ObtainAccessableFileMapping(INVALID_HANDLE_VALUE, PAGE_READWRITE, FILE_MAP_WRITE, 0, kSize,
                                              place.name.c_str(), nullptr);
}

HANDLE anEmptyFile(const Place& place) {
    return CreateFileW(place.file.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_NEW, 0,
                       nullptr);
}

HANDLE aFileThatIsKept(const Place& place) {
    return CreateFileW(place.file.c_str(), GENERIC_READ, 0, nullptr, CREATE_NEW, 0, nullptr);
}

HANDLE mapFile(const std::wstring& file, const Place& place, DWORD size) {
    try {
        return vorel::ObtainAccessableFileMappingEx(file.c_str(), PAGE_READWRITE, FILE_MAP_WRITE, 0, size,
                                                    place.name.c_str(), nullptr, nullptr);
    } catch (const vorel::Exception&) {
        return nullptr;
    }
}

HANDLE aFileMapping(const Place& place) {
    return mapFile(place.file, place, kSize);
}

HANDLE aMappingOfAllOfTheFile(const Place& place) {
    return mapFile(place.file, place, 0);
}

HANDLE aMappingOfAFileNowhere(const Place& place) {
    return mapFile(place.folder.widePath() + kMissing + L"\\mapped.dat", place, kSize);
}

/// Without the last of the steps that build the security.
template <HANDLE (*Obtain)(const Place&)>
HANDLE withoutSecurity(const Place& place) {
    const auto refused = test::refuse(importedSetSecurityDescriptorDacl);
    return Obtain(place);
}

HANDLE askForAdmin(const Place&) {
    (void)vorel::IsAdmin();
    return nullptr;
}

HANDLE askForAdminWhileImpersonating(const Place&) {
    EXPECT_TRUE(ImpersonateSelf(SecurityImpersonation));
    (void)vorel::IsAdmin();
    EXPECT_TRUE(RevertToSelf());
    return nullptr;
}

const Cycle kCycles[] = {
    {"Mutex_New", nothing, aMutex, true},
    {"Mutex_Found", aMutex, aMutex, true},
    {"Mutex_OfATakenName", anEvent, aMutex, false},
    {"Mutex_WithoutSecurity", nothing, withoutSecurity<aMutex>, false},
    {"Event_New", nothing, anEvent, true},
    {"Event_Found", anEvent, anEvent, true},
    {"Event_OfATakenName", aMutex, anEvent, false},
    {"Event_WithoutSecurity", nothing, withoutSecurity<anEvent>, false},
    {"Mapping_New", nothing, aMapping, true},
    {"Mapping_Found", aMapping, aMapping, true},
    {"Mapping_OfATakenName", anEvent, aMapping, false},
    {"Mapping_WithoutSecurity", nothing, withoutSecurity<aMapping>, false},
    {"FileMapping_New", nothing, aFileMapping, true},
    {"FileMapping_Found", aMapping, aFileMapping, true},
    {"FileMapping_OfAFileThatIsKept", aFileThatIsKept, aFileMapping, false},
    {"FileMapping_OfAFileNowhere", nothing, aMappingOfAFileNowhere, false},
    {"FileMapping_WithoutSecurity", nothing, withoutSecurity<aFileMapping>, false},
    // Each of these rounds has fifty attempts.
    {"FileMapping_OfATakenName", anEvent, aFileMapping, false, kRounds / 50},
    {"FileMapping_OfAnEmptyFile", anEmptyFile, aMappingOfAllOfTheFile, false, kRounds / 50},
    {"IsAdmin", nothing, askForAdmin, false},
    {"IsAdmin_WhileImpersonating", nothing, askForAdminWhileImpersonating, false, kRounds / 10},
};

/// The long form of a path costs the system more than all other calls of a round; these paths are long ones already.
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

    const test::TemporaryLog log;  // brings the size back
    const Place place;
};

/// Whether anything is left under the name.
bool isNameFree(const std::wstring& name) {
    const Handle mutex(OpenMutexW(SYNCHRONIZE, FALSE, name.c_str()));
    const DWORD mutexError = GetLastError();
    const Handle mapping(OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str()));
    return !mutex && mutexError == ERROR_FILE_NOT_FOUND && !mapping && GetLastError() == ERROR_FILE_NOT_FOUND;
}

TEST_P(HandleLeaks, ManyRoundsLeaveNoHandle) {
    const Cycle& cycle = GetParam();
    {
        const Handle prepared(cycle.prepare(place));
        Handle(cycle.obtain(place)).close();  // the system may keep something from the first time
        const DWORD reported = test::reportedHandles();
        const LiveHandles live;
        const test::ImportPatch longPaths(importedGetLongPathNameW, &giveLongPath);
        const test::LiveBlocks blocks;
        for (int round = 0; round < cycle.rounds; ++round) {
            Handle obtained(cycle.obtain(place));
            ASSERT_EQ(static_cast<bool>(obtained), cycle.obtains) << round;
            ASSERT_EQ(live.live(), obtained ? 1u : 0u) << "only the caller's";
            obtained.close();
            ASSERT_EQ(live.live(), 0u);
            ASSERT_EQ(blocks.live(), 0u);
        }
        if (cycle.obtains) {
            EXPECT_GE(live.opened(), cycle.rounds);
        }
        EXPECT_EQ(test::reportedHandles(), reported);
    }
    EXPECT_TRUE(isNameFree(place.name));
    if (GetFileAttributesW(place.file.c_str()) != INVALID_FILE_ATTRIBUTES) {
        EXPECT_TRUE(DeleteFileW(place.file.c_str())) << "somebody has it open";
    }
}

INSTANTIATE_TEST_SUITE_P(Each, HandleLeaks, testing::ValuesIn(kCycles),
                         [](const auto& cycle) { return std::string(cycle.param.name); });

}  // namespace
