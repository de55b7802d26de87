#include "platform/SystemMessage.h"

#include <windows.h>

namespace vorel::platform {

SystemMessage::SystemMessage(int code) noexcept {
    FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                   static_cast<DWORD>(code), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                   reinterpret_cast<wchar_t*>(&m_text), 0, nullptr);
}

SystemMessage::~SystemMessage() {
    LocalFree(m_text);
}

std::wstring_view SystemMessage::trimmed() const noexcept {
    constexpr const wchar_t* kSpaces = L" \t\n\v\f\r";
    const std::wstring_view whole = m_text ? m_text : L"";
    const std::size_t first = whole.find_first_not_of(kSpaces);
    if (first == std::wstring_view::npos) {
        return {};
    }
    return whole.substr(first, whole.find_last_not_of(kSpaces) + 1 - first);
}

}  // namespace vorel::platform
