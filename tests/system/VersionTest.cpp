// The headers, the library and the file properties of the DLL have the same version.

#include "vorel/Version.h"
#include "support/WideText.h"

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

#include "vorel/vorelCoreC.h"

namespace {

/// The file properties of the DLL in the folder of this program.
class FileProperties {
public:
    FileProperties() {
        std::wstring path(MAX_PATH, L'\0');
        path.resize(GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
        path.replace(path.find_last_of(L'\\') + 1, std::wstring::npos, L"vorelCore.dll");
        m_block.resize(GetFileVersionInfoSizeW(path.c_str(), nullptr));
        if (!GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(m_block.size()), m_block.data())) {
            m_block.clear();
        }
    }

    [[nodiscard]] VS_FIXEDFILEINFO fixed() const {
        VS_FIXEDFILEINFO* found = nullptr;
        UINT size = 0;
        return query(L"\\", &found, &size) && size == sizeof *found ? *found : VS_FIXEDFILEINFO{};
    }

    /// The property `name` from the only language block, which is for American English in UTF-16; "(none)" if missing.
    [[nodiscard]] std::wstring text(const std::wstring& name) const {
        wchar_t* found = nullptr;
        UINT units = 0;
        return query(L"\\StringFileInfo\\040904B0\\" + name, &found, &units) ? std::wstring(found) : L"(none)";
    }

private:
    template <class T>
    bool query(const std::wstring& name, T** found, UINT* size) const {
        return !m_block.empty() &&
               VerQueryValueW(m_block.data(), name.c_str(), reinterpret_cast<void**>(found), size) != 0;
    }

    std::vector<char> m_block;
};

TEST(Version, TextConsistsOfTheNumbers) {
    EXPECT_EQ(std::string(VOREL_VERSION_STRING), std::to_string(VOREL_VERSION_MAJOR) + "." +
                                                     std::to_string(VOREL_VERSION_MINOR) + "." +
                                                     std::to_string(VOREL_VERSION_PATCH));
}

TEST(Version, LibraryHasTheVersionOfItsHeaders) {
    EXPECT_STREQ(vorel::version(), VOREL_VERSION_STRING);
    EXPECT_STREQ(vorel_version(), VOREL_VERSION_STRING);
}

TEST(Version, FilePropertiesHaveTheNumbersOfTheHeaders) {
    const VS_FIXEDFILEINFO fixed = FileProperties().fixed();
    EXPECT_EQ(fixed.dwSignature, 0xFEEF04BDu);
    EXPECT_EQ(fixed.dwFileVersionMS, MAKELONG(VOREL_VERSION_MINOR, VOREL_VERSION_MAJOR));
    EXPECT_EQ(fixed.dwFileVersionLS, MAKELONG(0, VOREL_VERSION_PATCH));
    EXPECT_EQ(fixed.dwProductVersionMS, fixed.dwFileVersionMS);
    EXPECT_EQ(fixed.dwProductVersionLS, fixed.dwFileVersionLS);
    EXPECT_EQ(fixed.dwFileType, static_cast<DWORD>(VFT_DLL));
    EXPECT_EQ(fixed.dwFileOS, static_cast<DWORD>(VOS_NT_WINDOWS32));
    EXPECT_EQ(fixed.dwFileFlagsMask, static_cast<DWORD>(VS_FFI_FILEFLAGSMASK));
#ifdef NDEBUG
    EXPECT_EQ(fixed.dwFileFlags & VS_FF_DEBUG, 0u);
#else
    EXPECT_EQ(fixed.dwFileFlags & VS_FF_DEBUG, static_cast<DWORD>(VS_FF_DEBUG));
#endif
}

TEST(Version, FilePropertiesNameTheLibrary) {
    const std::string_view narrow = VOREL_VERSION_STRING;
    const std::wstring version = test::widened(narrow);
    const struct {
        const wchar_t* name;
        std::wstring text;
    } kRows[] = {
        {L"CompanyName", L"Talvenor"},           {L"FileVersion", version},      {L"InternalName", L"vorelCore"},
        {L"OriginalFilename", L"vorelCore.dll"}, {L"ProductName", L"vorelCore"}, {L"ProductVersion", version},
    };
    const FileProperties properties;
    for (const auto& row : kRows) {
        EXPECT_EQ(properties.text(row.name), row.text) << row.name;
    }
    EXPECT_NE(properties.text(L"FileDescription"), L"(none)");
}

}  // namespace
