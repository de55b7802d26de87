// Mappings of named files. SecuredMappingTest.cpp tests mappings without a file name.

#include <future>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "secure/MappingRace.h"
#include "secure/ObjectSecurity.h"
#include "secure/PeerResult.h"
#include "support/ChildProcess.h"
#include "support/Expect.h"
#include "support/Handle.h"
#include "support/LogText.h"
#include "support/NamedEvent.h"
#include "support/SystemText.h"
#include "support/TemporaryLog.h"
#include "support/WideText.h"
#include "support/Wine.h"
#include "vorel/secure/SecuredMappings.h"

namespace {

using test::Handle;
using test::kPeerDone;
using test::kPeerObtained;
using test::NamedEvent;
using test::runChild;

constexpr DWORD kSize = 4096;
const std::wstring kRecord = L"Accessable::ObtainAccessableFileMappingEx: Vorel exception rethrown";

class SecuredFileMapping : public testing::Test {
protected:
    Handle obtain(const std::wstring& path, DWORD size) {
        return Handle(vorel::ObtainAccessableFileMappingEx(path.c_str(), PAGE_READWRITE, FILE_MAP_WRITE, 0, size,
                                                           name.c_str(), &fileCreated, &mappingCreated));
    }

    /// Expects that `obtain` throws an exception with the message `text`, that the log contains only this failure, and
    /// that `mappingCreated` becomes false.
    void expectFailure(const std::wstring& path, DWORD size, const std::wstring& text) {
        fileCreated = true;
        mappingCreated = true;
        test::expectThrows<vorel::Exception>([&] { (void)obtain(path, size); }, {text, kRecord});
        EXPECT_EQ(log.takeMessages(), (std::vector<std::string>{"Vorel Error: " + test::utf8(text),
                                                                "Vorel Error: " + test::utf8(kRecord)}));
        EXPECT_FALSE(mappingCreated);
    }

    [[nodiscard]] std::wstring file(const std::wstring& fileName) const { return folder.widePath() + L"\\" + fileName; }

    void write(const std::wstring& path, std::string_view bytes) const {
        const Handle created(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
        DWORD written = 0;
        ASSERT_TRUE(WriteFile(created.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    }

    const std::wstring name = NamedEvent::uniqueName(L"secured_file_mapping");
    const test::TemporaryFolder folder;
    test::TemporaryLog log;
    bool fileCreated = false;
    bool mappingCreated = false;
};

/// The first `count` bytes of a mapping.
std::string bytesOf(const Handle& mapping, std::size_t count) {
    const char* const view = static_cast<const char*>(MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, 0));
    std::string bytes = view ? std::string(view, count) : "no view";
    if (view) {
        UnmapViewOfFile(view);
    }
    return bytes;
}

TEST_F(SecuredFileMapping, CreatesTheMappingAndAFileOfTheGivenSize) {
    const std::wstring path = file(L"new.dat");
    const Handle mapping = obtain(path, kSize);
    EXPECT_TRUE(mapping);
    EXPECT_TRUE(fileCreated);
    EXPECT_TRUE(mappingCreated);
    WIN32_FILE_ATTRIBUTE_DATA attributes = {};
    EXPECT_TRUE(GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &attributes));
    EXPECT_EQ(attributes.nFileSizeLow, kSize);
    EXPECT_EQ(bytesOf(mapping, kSize), std::string(kSize, '\0'));
    EXPECT_FALSE(log.exists());
}

TEST_F(SecuredFileMapping, MapsAnExistingFile) {
    const std::wstring path = file(L"old.dat");
    write(path, "already in the old file");
    for (const DWORD size : {DWORD{0}, DWORD{23}}) {
        fileCreated = true;
        mappingCreated = false;
        const Handle mapping = obtain(path, size);
        EXPECT_FALSE(fileCreated) << size;
        EXPECT_TRUE(mappingCreated) << size;
        EXPECT_EQ(bytesOf(mapping, 23), "already in the old file");
    }
}

TEST_F(SecuredFileMapping, WritesReachTheFile) {
    const std::wstring path = file(L"new.dat");
    {
        const Handle mapping = obtain(path, 16);
        auto* const view = static_cast<char*>(MapViewOfFile(mapping.get(), FILE_MAP_WRITE, 0, 0, 0));
        ASSERT_NE(view, nullptr);
        std::string_view("0123456789abcdef").copy(view, 16);
        UnmapViewOfFile(view);
    }
    EXPECT_EQ(test::readFileBytes(folder.file("new.dat")), "0123456789abcdef");
}

TEST_F(SecuredFileMapping, ExistingMappingIsOpenedWithoutTheFile) {
    const Handle first = obtain(file(L"first.dat"), kSize);
    EXPECT_TRUE(mappingCreated);
    fileCreated = true;
    mappingCreated = true;
    const std::wstring other = file(L"missing folder\\other.dat");
    const Handle second = obtain(other, kSize);
    EXPECT_TRUE(second);
    EXPECT_FALSE(fileCreated);
    EXPECT_FALSE(mappingCreated);
    EXPECT_EQ(GetFileAttributesW(other.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_FALSE(log.exists());
}

TEST_F(SecuredFileMapping, OutputFlagsMayBeNull) {
    const std::wstring path = file(L"new.dat");
    const Handle none(vorel::ObtainAccessableFileMappingEx(path.c_str(), PAGE_READWRITE, FILE_MAP_WRITE, 0, kSize,
                                                           name.c_str(), nullptr, nullptr));
    EXPECT_TRUE(none);
    const Handle one(vorel::ObtainAccessableFileMappingEx(path.c_str(), PAGE_READWRITE, FILE_MAP_WRITE, 0, kSize,
                                                          nullptr, nullptr, &mappingCreated));
    EXPECT_TRUE(mappingCreated) << "a mapping without a name is always new";
    const Handle other(vorel::ObtainAccessableFileMappingEx(path.c_str(), PAGE_READWRITE, FILE_MAP_WRITE, 0, kSize,
                                                            nullptr, &fileCreated, nullptr));
    EXPECT_FALSE(fileCreated);
}

TEST_F(SecuredFileMapping, FileCanBeDeletedAfterTheMappingIsClosed) {
    const std::wstring path = file(L"new.dat");
    Handle mapping = obtain(path, kSize);
    mapping.close();
    EXPECT_TRUE(DeleteFileW(path.c_str()));
    const Handle gone(OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str()));
    EXPECT_FALSE(gone);
}

TEST_F(SecuredFileMapping, AccessListOfTheMappingDeniesOnlyChangesOfSecurity) {
    const Handle mapping = obtain(file(L"new.dat"), kSize);
    test::expectSharedSecurity(mapping.get(), SECTION_ALL_ACCESS);
}

TEST_F(SecuredFileMapping, AccessListOfTheFileDeniesOnlyChangesOfSecurity) {
    if (test::wineVersion()) {
        GTEST_SKIP() << "Wine does not keep access lists of files";
    }
    const std::wstring path = file(L"new.dat");
    const Handle mapping = obtain(path, kSize);
    const Handle opened(CreateFileW(path.c_str(), READ_CONTROL, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, 0, nullptr));
    test::expectSharedSecurity(opened.get(), FILE_ALL_ACCESS);
}

TEST_F(SecuredFileMapping, NamesMayContainBlanksAndNonAsciiCharacters) {
    const std::wstring path = file(L"Gr\u00F6\u00DFe \u4E16\u754C.dat");
    const Handle mapping = obtain(path, kSize);
    EXPECT_TRUE(mapping);
    EXPECT_TRUE(fileCreated);
    EXPECT_NE(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
}

// ---- Failures ----

/// The system's text for a failure to open `path` with the access rights and the sharing that the library requests.
std::wstring textOfOpening(const std::wstring& path) {
    const Handle file(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_EXISTING, 0, nullptr));
    const DWORD error = GetLastError();
    EXPECT_FALSE(file);
    return test::systemText(error);
}

std::wstring textOfLongPath(const std::wstring& path) {
    EXPECT_EQ(GetLongPathNameW(path.c_str(), nullptr, 0), DWORD{0});
    return test::systemText(GetLastError());
}

TEST_F(SecuredFileMapping, MissingFolderThrows) {
    const std::wstring missing = file(L"missing");
    const std::wstring path = missing + L"\\new.dat";
    expectFailure(path, kSize,
                  L"ObtainAccessableFileMappingEx: Long API failed for " + path + L": " + textOfLongPath(path));
    EXPECT_EQ(GetFileAttributesW(missing.c_str()), INVALID_FILE_ATTRIBUTES) << "the call must not create the folder";
    EXPECT_FALSE(fileCreated);
}

TEST_F(SecuredFileMapping, FolderInsteadOfAFileThrows) {
    const std::wstring path = folder.widePath();
    expectFailure(path, kSize,
                  L"ObtainAccessableFileMappingEx: Unable to create file " + path + L": " + textOfOpening(path));
    EXPECT_FALSE(fileCreated);
}

TEST_F(SecuredFileMapping, FileThatIsOpenWithoutSharingThrows) {
    const std::wstring path = file(L"kept.dat");
    Handle kept(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, CREATE_NEW, 0, nullptr));
    expectFailure(path, kSize,
                  L"ObtainAccessableFileMappingEx: Unable to create file " + path + L": " + textOfOpening(path));
    kept.close();
    const Handle mapping = obtain(path, kSize);
    EXPECT_TRUE(mapping);
    EXPECT_FALSE(fileCreated);
}

TEST_F(SecuredFileMapping, EmptyFileThrowsIfTheSizeIsZero) {
    const std::wstring path = file(L"empty.dat");
    write(path, "");
    Handle empty(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 7, nullptr, OPEN_EXISTING, 0, nullptr));
    const Handle none(CreateFileMappingW(empty.get(), nullptr, PAGE_READWRITE, 0, 0, nullptr));
    const std::wstring reason = test::systemText(GetLastError());
    EXPECT_FALSE(none);
    empty.close();
    const std::wstring text =
        L"ObtainAccessableFileMappingEx: Opening file mapping failed for " + path + L" after 50 tries: " + reason;
    expectFailure(path, 0, text);
    EXPECT_FALSE(fileCreated);
    EXPECT_TRUE(DeleteFileW(path.c_str())) << "every handle of the file must be closed";
    // The file is now missing. The first attempt of the next call creates an empty file.
    expectFailure(path, 0, text);
    EXPECT_FALSE(fileCreated) << "the last attempt opened the file that the first attempt created";
    EXPECT_TRUE(DeleteFileW(path.c_str()));
}

TEST_F(SecuredFileMapping, TakenNameThrowsAfterFiftyAttempts) {
    const NamedEvent taken(name);
    const Handle none(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, kSize, name.c_str()));
    const std::wstring reason = test::systemText(GetLastError());
    EXPECT_FALSE(none);
    const std::wstring path = file(L"new.dat");
    expectFailure(path, kSize,
                  L"ObtainAccessableFileMappingEx: Opening file mapping failed for " + path + L" after 50 tries: " +
                      reason);
    EXPECT_TRUE(DeleteFileW(path.c_str()));
}

// ---- With a second process ----

TEST_F(SecuredFileMapping, AnotherProcessSeesTheSameContent) {
    const std::wstring path = file(L"shared.dat");
    const std::vector<std::wstring> task = {L"task=mapping", L"name=" + name, L"file=" + path};
    const auto withNumbers = [&task](const wchar_t* expected, const wchar_t* written) {
        std::vector<std::wstring> arguments = task;
        arguments.insert(arguments.end(), {expected, written});
        return arguments;
    };
    {
        const Handle mapping = obtain(path, kSize);
        EXPECT_EQ(runChild(L"secured_peer", withNumbers(L"expect=0", L"write=41")), kPeerObtained | kPeerDone);
        EXPECT_EQ(bytesOf(mapping, 8), std::string("\x29\0\0\0\0\0\0\0", 8));
    }
    EXPECT_EQ(runChild(L"secured_peer", withNumbers(L"expect=41", L"write=1")),
              kPeerObtained | test::kPeerCreated | kPeerDone)
        << "the mapping no longer exists, but the file does";
}

// ---- Simultaneous first opening ----

TEST_F(SecuredFileMapping, ThreadsThatOpenTheSameMappingAtTheSameTimeAllSucceed) {
    const test::MappingRace race{name, folder.widePath(), 4, 100};
    std::vector<std::future<int>> parties;
    for (long party = 0; party != race.parties; ++party) {
        parties.push_back(std::async(std::launch::async, test::runMappingRace, race));
    }
    for (std::future<int>& party : parties) {
        EXPECT_EQ(party.get(), race.rounds);
    }
    EXPECT_FALSE(log.exists());
}

TEST_F(SecuredFileMapping, ProcessesThatOpenTheSameMappingAtTheSameTimeAllSucceed) {
    constexpr int kParties = 3;
    const std::string logPath = log.path();
    const std::vector<std::wstring> task = {L"task=race",
                                            L"name=" + name,
                                            L"folder=" + folder.widePath(),
                                            L"parties=" + std::to_wstring(kParties),
                                            L"rounds=40",
                                            L"log=" + test::widened(logPath)};
    std::vector<test::ChildProcess> parties;
    for (int party = 0; party != kParties; ++party) {
        parties.emplace_back(L"secured_peer", task);
    }
    for (const test::ChildProcess& party : parties) {
        ASSERT_TRUE(party.wait());
        EXPECT_EQ(party.exitCode(), kPeerObtained | kPeerDone);
    }
    EXPECT_FALSE(log.exists());
}

}  // namespace
