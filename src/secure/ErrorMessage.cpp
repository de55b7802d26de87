#include "secure/ErrorMessage.h"

#include "vorel/core/Protocol.h"
#include "vorel/system/ErrorText.h"

namespace vorel::detail {

void GetErrorMessage(const wchar_t* context, int error, BaseString<wchar_t>& text) {
    runRethrowing(L"Accessable", L"GetErrorMessage", [&] {
        BaseString<wchar_t> message;
        text.format(L"%ls: %ls", context, util::FormatErrorMsg(error, message));
    });
}

}  // namespace vorel::detail
