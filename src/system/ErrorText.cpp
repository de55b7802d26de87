#include "vorel/system/ErrorText.h"

#include <windows.h>

#include "platform/SystemMessage.h"
#include "vorel/core/Protocol.h"

namespace vorel::util {

namespace {

constexpr const wchar_t* kClass = L"vorel::util";

}  // namespace

const wchar_t* FormatErrorMsg(int code, BaseString<wchar_t>& text) {
    return detail::runRethrowing(kClass, L"FormatErrorMsg", [&] {
        if (code == 0) {
            text = L"No Error";
        } else {
            const platform::SystemMessage message(code);
            const std::wstring_view trimmed = message.trimmed();
            text.clear();
            text.append(trimmed.data(), static_cast<unsigned int>(trimmed.size()));
        }
        return text.view().data();
    });
}

bool GetLastErrorMsg(BaseString<wchar_t>& text) {
    const DWORD code = GetLastError();
    return detail::runRethrowing(kClass, L"GetLastErrorMsg", [&] {
        if (code == 0) {
            return false;
        }
        FormatErrorMsg(static_cast<int>(code), text);
        return true;
    });
}

}  // namespace vorel::util
