#include "vorel/text/CodePages.h"

#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "algorithms/Ascii.h"
#include "text/ClearOnFailure.h"
#include "text/CodePageNames.h"
#include "text/CodePageState.h"
#include "vorel/core/Guard.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"

namespace vorel::util {

namespace {

using algorithms::nameHash;
using detail::CodePageState;
using detail::runRethrowing;

constexpr wchar_t kClass[] = L"iconv";
constexpr int kFailed = -1;
constexpr auto kNothing = static_cast<std::size_t>(-1);

// Callers compare `errno` with these numbers.
static_assert(EBADF == 9 && E2BIG == 7 && EINVAL == 22 && EILSEQ == 42);

int fail(int error) noexcept {
    errno = error;
    return kFailed;
}

// ---- Names ----------------------------------------------------------------------------------------------------------

/// Fills the map of names if it is empty. The caller already holds the code-map lock. The lock is recursive, so this
/// function can lock it again.
void fillCodeMap(CodePageState& state) {
    runRethrowing(kClass, L"FillCodeMap", [&] {
        const Guard<AutoCriticalSection> held(state.codeMapLock);
        auto& map = state.codePageNames;
        if (map.size() != 0) {
            return;
        }
        text::ClearOnFailure filling(map);  // a map with entries counts as complete
        for (const text::CodePageName& row : text::kCodePageNames) {
            const std::uint32_t hash = nameHash(row.name());
            if (map.find(row.name(), hash) == map.end()) {
                map.put(hash, row.name(), row.codePage);
            }
        }
        filling.done();
    });
}

/// The code page of a name; 0 if the name is unknown or null. While the library state does not exist (during load and
/// unload), searches the table instead of the map.
unsigned int codePageOf(const char* name) {
    CodePageState* const state = detail::codePageState.get();
    if (!state) {
        const auto* const row =
            std::find_if(std::begin(text::kCodePageNames), std::end(text::kCodePageNames),
                         [name](const text::CodePageName& r) { return NameEqual()(r.name(), name); });
        return row != std::end(text::kCodePageNames) ? row->codePage : 0;
    }
    const Guard<AutoCriticalSection> held(state->codeMapLock);
    fillCodeMap(*state);
    const auto found = state->codePageNames.find(name, nameHash(name));
    return found != state->codePageNames.end() ? found.value() : 0;
}

/// Whether the system has a code page. 0 (CP_ACP) is the ANSI code page of the process.
bool isUsable(unsigned int codePage) {
    return MultiByteToWideChar(codePage, 0, "", 1, nullptr, 0) != 0;
}

// ---- Converters -----------------------------------------------------------------------------------------------------

constexpr unsigned int kNoCodePage = 0xFFFF;  // each half of the handle -1, which reports a failure

/// The two code pages in a converter handle.
struct Converter {
    explicit Converter(int handle) noexcept
        : from(static_cast<std::uint32_t>(handle) >> 16), to(static_cast<std::uint32_t>(handle) & 0xFFFF) {}
    Converter(unsigned int toPage, unsigned int fromPage) noexcept : from(fromPage & 0xFFFF), to(toPage & 0xFFFF) {}

    [[nodiscard]] int handle() const noexcept { return static_cast<int>(from << 16 | to); }

    unsigned int from;
    unsigned int to;
};

int errorOf(DWORD error) noexcept {
    switch (error) {
    case ERROR_INVALID_PARAMETER:
    case ERROR_INVALID_FLAGS: return EINVAL;
    case ERROR_INSUFFICIENT_BUFFER: return E2BIG;
    default: return 0;
    }
}

std::size_t failWith(int error) noexcept {
    if (error != 0) {
        errno = error;
    }
    return kNothing;
}

/// Whether the system accepts the counts. The system's counts have 31 bits. SIZE_MAX becomes -1, which means "up to the
/// terminator".
bool fitsSystemCall(std::size_t input, std::size_t output) noexcept {
    return (input <= INT_MAX || input == SIZE_MAX) && output <= INT_MAX;
}

}  // namespace

int iconv_open(const char* to, const char* from) {
    return runRethrowing(kClass, L"iconv_open", [&] {
        const unsigned int page = codePageOf(from ? from : to);
        const Converter converter(from ? 0 : page, from ? page : 0);
        if (converter.handle() == 0) {
            return fail(EINVAL);
        }
        // If both are given, `to` is ignored. By design, the process must then have a usable ANSI code page.
        if (to && converter.to == 0 && !isUsable(CP_ACP)) {
            return fail(EINVAL);
        }
        return converter.handle();
    });
}

int iconv_open_codepage(int to, int from) {
    return runRethrowing(kClass, L"iconv_open_codepage", [&] {
        const Converter converter(static_cast<unsigned int>(to), static_cast<unsigned int>(from));
        const bool isCut = (to != 0 && converter.to == 0) || (from != 0 && converter.from == 0);
        if (converter.handle() == 0 || (isCut && !isUsable(CP_ACP))) {
            return fail(EINVAL);
        }
        return converter.handle();
    });
}

std::size_t iconv(int, char**, std::size_t*, char**, std::size_t*) {
    throw Exception(
        L"This function has not been tested.  If you are attempting to use it, please confirm that the behavior is as "
        L"you expect and remove this Exception.  iconv_from_wc and iconv_to_wc can be used without problem.");
}

int iconv_close(int converter) noexcept {
    const Converter pages(converter);
    return pages.from == kNoCodePage || pages.to == kNoCodePage ? fail(EBADF) : 0;
}

void iconv_reset(int) noexcept {}

std::size_t iconv_to_wc(int converter, const char* text, std::size_t bytes, wchar_t* out, std::size_t capacity) {
    return runRethrowing(kClass, L"iconv_to_wc", [&] {
        const unsigned int page = Converter(converter).from;
        if (page == 0 || page == kNoCodePage) {
            return failWith(EBADF);
        }
        if (!fitsSystemCall(bytes, capacity)) {
            return failWith(EINVAL);
        }
        const int units = MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, text, static_cast<int>(bytes), out,
                                              static_cast<int>(capacity));
        if (units != 0) {
            return static_cast<std::size_t>(units);
        }
        const DWORD error = GetLastError();
        return failWith(error == ERROR_NO_UNICODE_TRANSLATION ? EILSEQ : errorOf(error));
    });
}

std::size_t iconv_from_wc(int converter, const wchar_t* text, std::size_t units, char* out, std::size_t capacity,
                          bool* defaultUsed) {
    return runRethrowing(kClass, L"iconv_from_wc", [&] {
        const unsigned int page = Converter(converter).to;
        if (page == 0 || page == kNoCodePage) {
            return failWith(EBADF);
        }
        if (!fitsSystemCall(units, capacity)) {
            return failWith(EINVAL);
        }
        BOOL used = FALSE;
        const int bytes = WideCharToMultiByte(page, 0, text, static_cast<int>(units), out, static_cast<int>(capacity),
                                              nullptr, defaultUsed ? &used : nullptr);
        if (bytes == 0) {
            return failWith(errorOf(GetLastError()));
        }
        if (defaultUsed) {
            *defaultUsed = used != FALSE;
        }
        return static_cast<std::size_t>(bytes);
    });
}

bool iconv_isCheckDefaultValid(int codePage) {
    return runRethrowing(kClass, L"CheckDefaultParamIsValid", [&] {
        char byte = 0;
        BOOL used = FALSE;
        const int written =
            WideCharToMultiByte(static_cast<unsigned int>(codePage), 0, L"a", 1, &byte, 1, nullptr, &used);
        return written != 0 || GetLastError() != ERROR_INVALID_PARAMETER;
    });
}

int iconv_getCodePage(const char* name) {
    return runRethrowing(kClass, L"iconv_getCodePage", [&] {
        const unsigned int page = codePageOf(name);
        return page != 0 && isUsable(page) ? static_cast<int>(page) : kFailed;
    });
}

}  // namespace vorel::util
