#include "vorel/flat/CodePages.h"

#include <cerrno>
#include <optional>

#include "flat/Call.h"
#include "flat/Input.h"
#include "flat/Output.h"
#include "flat/Utf8Units.h"
#include "vorel/text/CodePages.h"

using vorel::Array;
using vorel::flat::ArgumentError;
using vorel::flat::Bytes;
using vorel::flat::BytesOutput;
using vorel::flat::fail;
using vorel::flat::guardedCall;
using vorel::flat::notNull;
using vorel::flat::TextOutput;
using vorel::flat::WideText;
using vorel::flat::Zeros;

namespace {

constexpr auto kFailed = static_cast<std::size_t>(-1);

void check(int32_t codePage) {
    if (codePage < 1 || codePage > 0xFFFE) {
        throw ArgumentError{VOREL_ERROR_INVALID_ARGUMENT, L"The code page is not a number from 1 to 65534"};
    }
}

/// Calls `convert(out, capacity)` twice: first to get the number of units, then to get the units. Returns nullopt after
/// a failure. `errno` then contains the reason, or 0 if the system reports an error that has no `errno` value.
template <class Unit, class Convert>
std::optional<Array<Unit>> converted(Convert&& convert) {
    Array<Unit> units;
    errno = 0;
    const std::size_t count = convert(static_cast<Unit*>(nullptr), std::size_t{0});
    if (count == kFailed) {
        return std::nullopt;
    }
    units.setCount(static_cast<unsigned int>(count));
    if (convert(units.data(), count) == kFailed) {
        return std::nullopt;
    }
    return units;
}

vorel_status conversionFailure() noexcept {
    return errno == EILSEQ ? fail(VOREL_ERROR_INVALID_TEXT, L"The bytes are not valid in the code page")
                           : fail(VOREL_ERROR_UNSUPPORTED, L"The system does not support the code page");
}

}  // namespace

vorel_status vorel_code_page_by_name(const vorel_char16* name, size_t length, int32_t* codePage) {
    return guardedCall(L"vorel_code_page_by_name", [&] {
        int32_t& result = notNull(codePage);
        Array<char> narrow = vorel::flat::toUtf8(WideText(name, length).view());
        narrow.append('\0');
        const int page = vorel::util::iconv_open(narrow.data(), nullptr);
        if (page == -1) {
            return fail(VOREL_ERROR_UNKNOWN_NAME, L"No code page has this name");
        }
        result = page;
        return vorel_status{VOREL_OK};
    });
}

// An empty text is valid in every code page, but the system rejects it. So the next two functions do not pass an empty
// text to the system.

vorel_status vorel_code_page_to_utf16(int32_t codePage, const void* bytes, size_t size, vorel_char16* output,
                                      size_t capacity, size_t* outputLength) {
    return guardedCall(L"vorel_code_page_to_utf16", [&] {
        const TextOutput out(output, capacity, outputLength);
        const Bytes input(bytes, size);
        check(codePage);
        if (input.size() == 0) {
            return out.write(Array<wchar_t>());
        }
        const int converter = vorel::util::iconv_open_codepage(0, codePage);
        const auto units = converted<wchar_t>([&](wchar_t* buffer, std::size_t available) {
            const char* const text = reinterpret_cast<const char*>(input.data());
            return vorel::util::iconv_to_wc(converter, text, input.size(), buffer, available);
        });
        return units ? out.write(*units) : conversionFailure();
    });
}

vorel_status vorel_utf16_to_code_page(int32_t codePage, const vorel_char16* text, size_t length, void* output,
                                      size_t capacity, size_t* outputLength, int32_t* replaced) {
    return guardedCall(L"vorel_utf16_to_code_page", [&] {
        const BytesOutput out(output, capacity, outputLength);
        const WideText units(text, length, Zeros::Allowed);
        check(codePage);
        bool used = false;
        bool* const asked = replaced && vorel::util::iconv_isCheckDefaultValid(codePage) ? &used : nullptr;
        std::optional<Array<char>> bytes = Array<char>();
        if (units.length() != 0) {
            const int converter = vorel::util::iconv_open_codepage(codePage, 0);
            bytes = converted<char>([&](char* buffer, std::size_t available) {
                return vorel::util::iconv_from_wc(converter, units.c_str(), units.length(), buffer, available, asked);
            });
        }
        if (!bytes) {
            return conversionFailure();
        }
        const vorel_status status = out.write(*bytes);
        if (status == VOREL_OK && replaced) {
            *replaced = asked ? int32_t{used} : -1;
        }
        return status;
    });
}
