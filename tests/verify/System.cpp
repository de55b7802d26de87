#include "verify/System.h"

#include <array>
#include <cstdlib>

#include <windows.h>

#include "support/AccessList.h"
#include "support/Handle.h"
#include "support/SystemText.h"
#include "support/Wine.h"

namespace verify {

namespace {

/// The last part of the system's version; each update of the system increases it. Returns 0 if the registry does not
/// contain it.
DWORD updateRevision() {
    DWORD revision = 0;
    DWORD size = sizeof revision;
    RegGetValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", L"UBR", RRF_RT_REG_DWORD,
                 nullptr, &revision, &size);
    return revision;
}

/// Whether the process has the rights of an administrator.
bool isAdministrator() {
    test::SidBytes administrators = test::administrators();
    BOOL member = FALSE;
    return CheckTokenMembership(nullptr, administrators.data(), &member) && member;
}

/// Whether the user is an administrator, but the process was not started as an administrator.
bool couldBeElevated() {
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) {
        return false;
    }
    const test::Handle owner(token);
    TOKEN_ELEVATION_TYPE type = TokenElevationTypeDefault;
    DWORD size = 0;
    return GetTokenInformation(token, TokenElevationType, &type, sizeof type, &size) &&
           type == TokenElevationTypeLimited;
}

}  // namespace

std::string windowsBuild() {
    using GetVersion = LONG(WINAPI*)(OSVERSIONINFOW*);
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    // GetVersionEx is not used, because it returns at most the version that the manifest of the program declares.
    const auto getVersion = reinterpret_cast<GetVersion>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion")));
    if (getVersion) {
        getVersion(&version);
    }
    std::string text = std::to_string(version.dwMajorVersion) + "." + std::to_string(version.dwMinorVersion) + "." +
                       std::to_string(version.dwBuildNumber);
    if (const DWORD revision = updateRevision()) {
        text += "." + std::to_string(revision);
    }
    if (const char* const wine = test::wineVersion()) {
        text += std::string(" (Wine ") + wine + ")";
    }
    return text;
}

UserKind userKind() {
    if (isAdministrator()) {
        return {.phrase = "an administrator", .folder = L"administrator"};
    }
    if (couldBeElevated()) {
        return {.phrase = "an administrator without elevation", .folder = L"unelevated"};
    }
    return {.phrase = "an ordinary user", .folder = L"user"};
}

std::string machineFacts() {
    // `native` is the processor of the machine, even if the machine emulates an x86-64 processor for this program.
    USHORT process = 0;
    USHORT native = 0;
    const char* processor = "x86-64";
    if (IsWow64Process2(GetCurrentProcess(), &process, &native) && native == IMAGE_FILE_MACHINE_ARM64) {
        processor = "AArch64, which emulates x86-64";
    }
    std::array<wchar_t, LOCALE_NAME_MAX_LENGTH> locale{};
    GetUserDefaultLocaleName(locale.data(), static_cast<int>(locale.size()));
    SYSTEM_INFO info{};
    GetSystemInfo(&info);
    return std::string("Processor: ") + processor + ", " + std::to_string(info.dwNumberOfProcessors) +
           " logical\nANSI code page: " + std::to_string(GetACP()) + "\nOEM code page: " + std::to_string(GetOEMCP()) +
           "\nLocale: " + test::utf8(locale.data());
}

}  // namespace verify
