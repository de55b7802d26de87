/// \file
/// Whether the tests run on Windows or under Wine. Tests of behaviour in which Wine differs from Windows are skipped
/// under Wine.
///
///     if (test::wineVersion()) {
///         GTEST_SKIP() << "Wine does not count handles";
///     }
#pragma once

#include <windows.h>

namespace test {

/// The version of Wine, such as "8.0"; null on Windows.
inline const char* wineVersion() {
    using Version = const char* (*)();
    // Only the ntdll.dll of Wine has this function.
    static const auto version = reinterpret_cast<Version>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version")));
    return version ? version() : nullptr;
}

}  // namespace test
