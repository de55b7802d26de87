/// \file
/// The system's error texts, as UTF-16 for messages and as UTF-8 for the log. Tests get these texts from the system,
/// because the texts of Wine and Windows differ.
#pragma once

#include <string>

#include <windows.h>

#include <vorel/system/ErrorText.h>

namespace test {

/// The text of `FormatErrorMsg`: the system's text without white space at either end; "No Error" for 0.
inline std::wstring systemText(DWORD error) {
    vorel::BaseString<wchar_t> text;
    vorel::util::FormatErrorMsg(static_cast<int>(error), text);
    return std::wstring(text.view());
}

/// `text` in the encoding of the log.
inline std::string utf8(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    std::string bytes(3 * text.size(), '\0');
    bytes.resize(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(),
                                                              static_cast<int>(bytes.size()), nullptr, nullptr)));
    return bytes;
}

}  // namespace test
