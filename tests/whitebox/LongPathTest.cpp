/// \file
/// The path that the library uses to open the file of a mapping. For an existing file, it is the long form of the
/// file's path. For a new file, it consists of the long form of the folder's path and the file's name.

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/Expect.h"
#include "support/Handle.h"
#include "support/ImportHook.h"
#include "support/SystemText.h"
#include "vorel/secure/SecuredMappings.h"

namespace {

HANDLE someHandle() {
    return CreateSemaphoreW(nullptr, 0, 1, nullptr);
}

/// Simulates a system with the long forms that a test sets. Opening files and creating mappings always succeed.
class LongPath : public testing::Test {
protected:
    /// Obtains a mapping of `path`.
    static test::Handle obtain(const wchar_t* path) {
        return test::Handle(vorel::ObtainAccessableFileMappingEx(path, PAGE_READWRITE, FILE_MAP_WRITE, 0, 0, nullptr,
                                                                 nullptr, nullptr));
    }

    std::map<std::wstring, std::wstring> longForms;
    DWORD error = ERROR_FILE_NOT_FOUND;  // the last error after the query for a path without a long form
    std::vector<std::wstring> asked;
    std::vector<std::wstring> opened;

private:
    const test::ImportHook<importedGetLongPathNameW> m_longPath{
        [this](LPCWSTR path, LPWSTR longPath, DWORD size) -> DWORD {
            if (asked.empty() || asked.back() != path) {
                asked.emplace_back(path);
            }
            const auto found = longForms.find(path);
            if (found == longForms.end()) {
                SetLastError(error);
                return 0;
            }
            const std::wstring& form = found->second;
            if (size <= form.size()) {
                return static_cast<DWORD>(form.size() + 1);
            }
            std::copy_n(form.c_str(), form.size() + 1, longPath);
            return static_cast<DWORD>(form.size());
        }};
    const test::ImportHook<importedCreateFileW> m_createFile{[this](LPCWSTR path, auto...) {
        opened.emplace_back(path);
        return someHandle();
    }};
    const test::ImportHook<importedCreateFileMappingW> m_createMapping{[](auto...) { return someHandle(); }};
};

using Texts = std::vector<std::wstring>;

TEST_F(LongPath, ExistingFileIsOpenedWithItsLongPath) {
    longForms = {{L"c:\\PROGRA~1\\DATAFI~1.DAT", L"C:\\Program Files\\Data file of the day.dat"}};
    EXPECT_TRUE(obtain(L"c:\\PROGRA~1\\DATAFI~1.DAT"));
    EXPECT_EQ(opened, Texts{L"C:\\Program Files\\Data file of the day.dat"});
}

TEST_F(LongPath, NewFileIsCreatedWithTheLongPathOfItsFolder) {
    struct Row {
        const wchar_t* path;
        const wchar_t* folder;
        const wchar_t* longFolder;
        const wchar_t* opened;
    };
    const Row rows[] = {
        {L"c:\\PROGRA~1\\new.dat", L"c:\\PROGRA~1\\", L"C:\\Program Files\\", L"C:\\Program Files\\new.dat"},
        {L"c:/PROGRA~1/new.dat", L"c:/PROGRA~1/", L"C:/Program Files/", L"C:/Program Files/new.dat"},
        {L"c:\\a/new.dat", L"c:\\a/", L"c:\\a/", L"c:\\a/new.dat"},
        {L"c:new.dat", L"c:", L"c:", L"c:new.dat"},
        {L"\\new.dat", L"\\", L"\\", L"\\new.dat"},
        {L"..\\x~1\\n", L"..\\x~1\\", L"..\\xylophone\\", L"..\\xylophone\\n"},
    };
    for (const Row& row : rows) {
        longForms = {{row.folder, row.longFolder}};
        asked.clear();
        opened.clear();
        EXPECT_TRUE(obtain(row.path));
        EXPECT_EQ(asked, (Texts{row.path, row.folder}));
        EXPECT_EQ(opened, Texts{row.opened});
    }
}

TEST_F(LongPath, NewFileWithoutAFolderIsCreatedWithTheGivenPath) {
    EXPECT_TRUE(obtain(L"new.dat"));
    EXPECT_EQ(asked, Texts{L"new.dat"});
    EXPECT_EQ(opened, Texts{L"new.dat"});
}

TEST_F(LongPath, LongPathOfAnyLengthIsSupported) {
    for (const std::size_t length : {1u, 7u, 8u, 259u, 260u, 261u, 5000u, 32000u}) {
        const std::wstring form(length, L'x');
        longForms = {{L"short", form}};
        opened.clear();
        EXPECT_TRUE(obtain(L"short"));
        EXPECT_EQ(opened, Texts{form});
    }
}

void expectFailure(const wchar_t* path, const std::wstring& printed, DWORD error) {
    test::expectThrows<vorel::Exception>(
        [path] {
            vorel::ObtainAccessableFileMappingEx(path, PAGE_READWRITE, FILE_MAP_WRITE, 0, 0, nullptr, nullptr, nullptr);
        },
        {L"ObtainAccessableFileMappingEx: Long API failed for " + printed + L": " + test::systemText(error),
         L"Accessable::ObtainAccessableFileMappingEx: Vorel exception rethrown"});
}

TEST_F(LongPath, FailedQueryForTheFileThrowsUnlessTheFileIsMissing) {
    for (const DWORD code : {DWORD{ERROR_PATH_NOT_FOUND}, DWORD{ERROR_ACCESS_DENIED}, DWORD{ERROR_INVALID_NAME}}) {
        error = code;
        asked.clear();
        expectFailure(L"folder\\file", L"folder\\file", code);
        EXPECT_EQ(asked, Texts{L"folder\\file"});
    }
    EXPECT_EQ(opened, Texts());
}

TEST_F(LongPath, FolderWithoutALongPathThrows) {
    expectFailure(L"folder\\file", L"folder\\file", ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(asked, (Texts{L"folder\\file", L"folder\\"}));
    expectFailure(L"folder\\", L"folder\\", ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(opened, Texts());
}

/// The long path grows between the query for its length and the query for its text.
TEST(LongPathThatChanges, IsQueriedAgainIfItHasGrown) {
    std::vector<DWORD> sizes;
    std::wstring opened;
    const test::ImportHook<importedGetLongPathNameW> longPath([&](LPCWSTR, LPWSTR text, DWORD size) -> DWORD {
        constexpr std::wstring_view kForm = L"a longer path";
        const DWORD requiredUnits = sizes.empty() ? 2 : static_cast<DWORD>(kForm.size() + 1);
        sizes.push_back(size);
        if (size < requiredUnits) {
            return requiredUnits;
        }
        text[kForm.copy(text, size)] = L'\0';
        return static_cast<DWORD>(kForm.size());
    });
    const test::ImportHook<importedCreateFileW> createFile([&](LPCWSTR path, auto...) {
        opened = path;
        return someHandle();
    });
    const test::ImportHook<importedCreateFileMappingW> createMapping([](auto...) { return someHandle(); });
    const test::Handle mapping(
        vorel::ObtainAccessableFileMappingEx(L"a", PAGE_READWRITE, FILE_MAP_WRITE, 0, 0, nullptr, nullptr, nullptr));
    EXPECT_TRUE(mapping);
    EXPECT_EQ(sizes, (std::vector<DWORD>{0, 2, 14}));
    EXPECT_EQ(opened, L"a longer path");
}

}  // namespace
