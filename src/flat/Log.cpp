/// \file
/// The flat interface to the error log.

#include "vorel/flat/Log.h"

#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <string_view>

#include "exceptions/LogPath.h"
#include "flat/Call.h"
#include "flat/Input.h"
#include "flat/Output.h"
#include "flat/Utf8Units.h"
#include "vorel/core/Array.h"
#include "vorel/exceptions/Exception.h"

using vorel::Array;
using vorel::Exception;
using vorel::detail::kLogPathBytes;
using vorel::flat::fail;
using vorel::flat::guardedCall;
using vorel::flat::notNull;
using vorel::flat::TextOutput;
using vorel::flat::WideText;

namespace {

/// Access to protected members of `Exception`.
struct Channel : Exception {
    static long long limit() noexcept { return CurrentLogSize; }

    /// Writes a line as the diagnostic channels do, but `message` is a text and not a format. `prefix` is UTF-8.
    static void write(const char* prefix, const wchar_t* message) noexcept {
        MirrorErrorMessage(nullptr, CurrentLogSize, prefix, message, true);
    }
};

void append(Array<char>& text, std::string_view more) {
    text.append(more.data(), static_cast<unsigned int>(more.size()));
}

/// "front: back: " with a terminator. An empty part is omitted together with its colon.
Array<char> prefixOf(std::string_view front, std::wstring_view back) {
    Array<char> prefix;
    if (!front.empty()) {
        append(prefix, front);
        append(prefix, ": ");
    }
    if (!back.empty()) {
        const Array<char> bytes = vorel::flat::toUtf8(back);
        append(prefix, {bytes.data(), bytes.size()});
        append(prefix, ": ");
    }
    prefix.append('\0');
    return prefix;
}

/// The code page in which the runtime reads paths: UTF-8 if the locale uses it, otherwise a code page of the process.
UINT pathCodePage() noexcept {
    // The runtime has no documented function that returns the code page of its locale. In UTF-8, and in no other code
    // page, U+4E00 has these bytes.
    constexpr std::string_view kUtf8 = "\xE4\xB8\x80";
    char bytes[8];
    const std::size_t size = std::wcstombs(bytes, L"\x4E00", sizeof bytes);
    if (size == kUtf8.size() && std::memcmp(bytes, kUtf8.data(), size) == 0) {
        return CP_UTF8;
    }
    return AreFileApisANSI() ? GetACP() : GetOEMCP();
}

/// The path in the code page of the runtime's paths, with a terminator. The array is empty if the code page lacks a
/// character of the path, or if the path contains an unpaired surrogate.
Array<char> narrowPath(std::wstring_view path) {
    Array<char> bytes;
    if (path.empty()) {
        bytes.append('\0');
        return bytes;
    }
    const int units = static_cast<int>(path.size());
    BOOL replaced = FALSE;
    // UTF-8 has every character. So if the code page is UTF-8, only an unpaired surrogate cannot be converted. For
    // UTF-8, the system call accepts no pointer to `replaced` and only the flag WC_ERR_INVALID_CHARS, which makes the
    // call fail if the text contains an unpaired surrogate.
    const UINT page = pathCodePage();
    BOOL* const asked = page == CP_UTF8 ? nullptr : &replaced;
    const DWORD flags = asked ? WC_NO_BEST_FIT_CHARS : WC_ERR_INVALID_CHARS;
    const int size = WideCharToMultiByte(page, flags, path.data(), units, nullptr, 0, nullptr, asked);
    if (size <= 0 || replaced) {
        return bytes;
    }
    bytes.setCount(static_cast<unsigned int>(size) + 1);
    WideCharToMultiByte(page, flags, path.data(), units, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

}  // namespace

vorel_status vorel_log_set_path(const vorel_char16* path, size_t length) {
    return guardedCall(L"vorel_log_set_path", [&] {
        const WideText wide(path, length);
        const Array<char> narrow = narrowPath(wide.view());
        if (narrow.empty()) {
            return fail(VOREL_ERROR_INVALID_TEXT, L"The path contains a character that the code page for paths lacks");
        }
        if (narrow.size() > kLogPathBytes) {
            return fail(VOREL_ERROR_INVALID_ARGUMENT, L"The path is too long");
        }
        Exception::SetErrorLogLocation(narrow.data(), 0);
        return vorel_status{VOREL_OK};
    });
}

vorel_status vorel_log_path(vorel_char16* path, size_t capacity, size_t* length) {
    return guardedCall(L"vorel_log_path", [&] {
        const TextOutput out(path, capacity, length);
        char narrow[kLogPathBytes];
        vorel::detail::LogPath::readOrDefault(narrow);
        wchar_t wide[kLogPathBytes];
        const int units =
            MultiByteToWideChar(pathCodePage(), 0, narrow, static_cast<int>(std::strlen(narrow)), wide, kLogPathBytes);
        return out.write(std::wstring_view(wide, static_cast<std::size_t>(units)));
    });
}

vorel_status vorel_log_set_limit(int64_t bytes) {
    return guardedCall(L"vorel_log_set_limit", [&] {
        if (bytes < -1) {
            return fail(VOREL_ERROR_INVALID_ARGUMENT, L"The limit is less than -1");
        }
        Exception::SetErrorLogSize(bytes);
        return vorel_status{VOREL_OK};
    });
}

vorel_status vorel_log_limit(int64_t* bytes) {
    return guardedCall(L"vorel_log_limit", [&] {
        notNull(bytes) = Channel::limit();
        return vorel_status{VOREL_OK};
    });
}

vorel_status vorel_log_write(const vorel_char16* prefix, size_t prefixLength, const vorel_char16* message,
                             size_t messageLength) {
    return guardedCall(L"vorel_log_write", [&] {
        const WideText front(prefix, prefixLength);
        const WideText text(message, messageLength);
        Channel::write(prefixOf({}, front.view()).data(), text.c_str());
        return vorel_status{VOREL_OK};
    });
}

vorel_status vorel_log_debug(const vorel_char16* target, size_t targetLength, const vorel_char16* message,
                             size_t messageLength) {
    return guardedCall(L"vorel_log_debug", [&] {
        const WideText name(target, targetLength);
        const WideText text(message, messageLength);
        if (Exception::isDebugTargetActive(name.c_str())) {
            Channel::write(prefixOf("DEBUG", name.view()).data(), text.c_str());
        }
        return vorel_status{VOREL_OK};
    });
}

vorel_status vorel_log_set_debug_target(const vorel_char16* target, size_t length, int32_t active) {
    return guardedCall(L"vorel_log_set_debug_target", [&] {
        const WideText name(target, length);
        Exception::setDebugTarget(name.c_str(), active != 0);
        return vorel_status{VOREL_OK};
    });
}

vorel_status vorel_log_set_thread_enabled(int32_t enabled) {
    return guardedCall(L"vorel_log_set_thread_enabled", [&] {
        Exception::DisableThreadErrorLogging(enabled == 0);
        return vorel_status{VOREL_OK};
    });
}
