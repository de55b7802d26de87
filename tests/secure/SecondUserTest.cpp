/// \file
/// A second, ordinary user uses secured objects of the first user, but cannot change their security.

#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <string>
#include <system_error>

#include <gtest/gtest.h>
#include <windows.h>

#include "secure/SecondUser.h"
#include "support/CaseName.h"
#include "support/Handle.h"
#include "support/NamedEvent.h"
#include "support/TemporaryLog.h"
#include "vorel/secure/SecuredMappings.h"
#include "vorel/secure/SecuredObjects.h"

namespace {

using test::Handle;

constexpr DWORD kSize = 4096;

/// A kind of object.
struct Kind {
    const char* name;
    HANDLE (*obtain)(const std::wstring& name);
    HANDLE (*open)(const std::wstring& name, DWORD access);
    bool (*use)(HANDLE object);
    DWORD usualAccess;  // the access that a program needs to use the object
    DWORD allAccess;

    friend void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }
};

HANDLE obtainMutex(const std::wstring& name) {
    return vorel::ObtainAccessableMutex(0, name.c_str(), 0, 0, nullptr);
}

bool lockAndUnlock(HANDLE mutex) {
    return WaitForSingleObject(mutex, 0) == WAIT_OBJECT_0 && ReleaseMutex(mutex);
}

HANDLE obtainEvent(const std::wstring& name) {
    vorel::BaseString<wchar_t> text;
    return vorel::ObtainAccessableEvent(0, 0, name.c_str(), 0, 0, text);
}

bool setAndConsume(HANDLE event) {
    return SetEvent(event) && WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

HANDLE obtainMapping(const std::wstring& name) {
    return vorel::ObtainAccessableFileMapping(INVALID_HANDLE_VALUE, PAGE_READWRITE, FILE_MAP_WRITE, 0, kSize,
                                              name.c_str(), nullptr);
}

bool mapAndWrite(HANDLE mapping) {
    auto* const view = static_cast<volatile char*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, kSize));
    if (!view) {
        return false;
    }
    view[0] = 1;
    return UnmapViewOfFile(const_cast<char*>(view));
}

const Kind kKinds[] = {
    {"Mutex", obtainMutex,
     [](const std::wstring& name, DWORD access) { return OpenMutexW(access, FALSE, name.c_str()); }, lockAndUnlock,
     SYNCHRONIZE, MUTEX_ALL_ACCESS},
    {"Event", obtainEvent,
     [](const std::wstring& name, DWORD access) { return OpenEventW(access, FALSE, name.c_str()); }, setAndConsume,
     SYNCHRONIZE | EVENT_MODIFY_STATE, EVENT_ALL_ACCESS},
    {"Mapping", obtainMapping,
     [](const std::wstring& name, DWORD access) { return OpenFileMappingW(access, FALSE, name.c_str()); }, mapAndWrite,
     FILE_MAP_READ | FILE_MAP_WRITE, SECTION_ALL_ACCESS},
};

class SecondUser : public testing::TestWithParam<Kind> {
protected:
    /// The error of opening the object, or 0 if it was opened.
    [[nodiscard]] DWORD errorOfOpening(DWORD access) const {
        const Handle opened(GetParam().open(name, access));
        const DWORD error = GetLastError();
        return opened ? 0 : error;
    }

    const std::wstring name = test::NamedEvent::uniqueName(L"second_user");
    const test::TemporaryLog log;
};

TEST_P(SecondUser, ObtainsAndUsesTheObject) {
    const Handle object(GetParam().obtain(name));
    ASSERT_TRUE(object);
    const test::ActAsSecondUser second;
    const Handle same(GetParam().obtain(name));
    ASSERT_TRUE(same) << "the object exists, so the call must open it";
    EXPECT_TRUE(GetParam().use(same.get()));
    EXPECT_FALSE(log.exists());
}

TEST_P(SecondUser, MayOpenTheObjectForUseAndReadItsSecurity) {
    const Handle object(GetParam().obtain(name));
    const test::ActAsSecondUser second;
    EXPECT_EQ(errorOfOpening(GetParam().usualAccess), 0u);
    EXPECT_EQ(errorOfOpening(READ_CONTROL), 0u);
}

TEST_P(SecondUser, MayNotChangeTheSecurityOfTheObject) {
    const Handle object(GetParam().obtain(name));
    const test::ActAsSecondUser second;
    for (const DWORD access :
         {DWORD{WRITE_DAC}, DWORD{WRITE_OWNER}, GetParam().usualAccess | DWORD{WRITE_DAC}, GetParam().allAccess}) {
        EXPECT_EQ(errorOfOpening(access), DWORD{ERROR_ACCESS_DENIED}) << std::hex << access;
    }
}

INSTANTIATE_TEST_SUITE_P(Each, SecondUser, testing::ValuesIn(kKinds), test::caseName);

/// A folder in which all users may read. In the folder for temporary files, other users may not read.
class PublicFolder {
public:
    PublicFolder() { std::filesystem::create_directory(path); }
    ~PublicFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }

    PublicFolder(const PublicFolder&) = delete;
    PublicFolder& operator=(const PublicFolder&) = delete;

    const std::filesystem::path path =
        std::filesystem::path(_wgetenv(L"ProgramData")) / test::NamedEvent::uniqueName(L"second_user");
};

TEST(SecondUserOfAFile, MapsTheFileThatTheFirstUserHasCreated) {
    const PublicFolder folder;
    const auto obtain = [&](bool& isFileNew) {
        return Handle(vorel::ObtainAccessableFileMappingEx(
            (folder.path / L"shared.dat").c_str(), PAGE_READWRITE, FILE_MAP_WRITE, 0, kSize,
            test::NamedEvent::uniqueName(L"second_user").c_str(), &isFileNew, nullptr));
    };
    bool isNew = false;
    const Handle first = obtain(isNew);
    EXPECT_TRUE(isNew);
    {
        const test::ActAsSecondUser second;
        const Handle other = obtain(isNew);
        EXPECT_FALSE(isNew);
        EXPECT_TRUE(mapAndWrite(other.get()));
    }
}

}  // namespace
