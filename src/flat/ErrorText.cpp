#include "vorel/flat/ErrorText.h"

#include "flat/Call.h"
#include "flat/Output.h"
#include "vorel/core/BaseString.h"
#include "vorel/system/ErrorText.h"

using vorel::flat::guardedCall;
using vorel::flat::TextOutput;

vorel_status vorel_system_error_text(int32_t code, vorel_char16* output, size_t capacity, size_t* outputLength) {
    return guardedCall(L"vorel_system_error_text", [&] {
        const TextOutput out(output, capacity, outputLength);
        vorel::BaseString<wchar_t> text;
        vorel::util::FormatErrorMsg(code, text);
        return out.write(text.view());
    });
}
