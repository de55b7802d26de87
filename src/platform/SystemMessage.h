/// \file
/// Owns the system's text for an error code or an HRESULT.
#pragma once

#include <string_view>

namespace vorel::platform {

class SystemMessage {
public:
    /// Fetches the text in the user's default language.
    explicit SystemMessage(int code) noexcept;
    ~SystemMessage();

    SystemMessage(const SystemMessage&) = delete;
    SystemMessage& operator=(const SystemMessage&) = delete;

    /// The system's text with its final line break; null if the system has no text for the code, or if the text cannot
    /// be allocated.
    [[nodiscard]] const wchar_t* text() const noexcept { return m_text; }

    /// The text without ASCII white space at either end; empty if `text()` is null.
    [[nodiscard]] std::wstring_view trimmed() const noexcept;

private:
    wchar_t* m_text = nullptr;
};

}  // namespace vorel::platform
