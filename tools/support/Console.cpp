#include "support/Console.h"

#include <algorithm>

#include <windows.h>

#include "support/Text.h"
#include "support/Tool.h"

namespace tools {

namespace {

constexpr std::wstring_view kOutputName = L"standard output";

DWORD numberOf(Stream stream) noexcept {
    switch (stream) {
    case Stream::Input: return STD_INPUT_HANDLE;
    case Stream::Output: return STD_OUTPUT_HANDLE;
    default: return STD_ERROR_HANDLE;
    }
}

bool isReaderGone(DWORD error) noexcept {
    return error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA || error == ERROR_PIPE_NOT_CONNECTED;
}

void writeConsole(void* console, std::wstring_view text) {
    constexpr std::size_t kMaxUnits = 8192;  // old versions of Windows accept at most 64 KB in one call
    while (!text.empty()) {
        const std::size_t units = std::min(text.size(), kMaxUnits);
        DWORD written = 0;
        if (!WriteConsoleW(console, text.data(), static_cast<DWORD>(units), &written, nullptr) || written == 0) {
            throw systemFailure(L"console", L"cannot be written");
        }
        text.remove_prefix(written);
    }
}

void write(Stream stream, std::wstring_view text) {
    if (isConsole(stream)) {
        writeConsole(streamHandle(stream), text);
    } else {
        const std::string bytes = toUtf8(text);
        writeBytes(streamHandle(stream), bytes.data(), bytes.size(), kOutputName);
    }
}

}  // namespace

void* streamHandle(Stream stream) noexcept {
    HANDLE const handle = GetStdHandle(numberOf(stream));
    return handle == INVALID_HANDLE_VALUE ? nullptr : handle;
}

bool isConsole(Stream stream) noexcept {
    DWORD mode = 0;
    return GetConsoleMode(streamHandle(stream), &mode) != 0;
}

unsigned int consoleColumns(Stream stream) noexcept {
    constexpr unsigned int kDefaultColumns = 80;
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (!GetConsoleScreenBufferInfo(streamHandle(stream), &info)) {
        return kDefaultColumns;
    }
    const int columns = info.srWindow.Right - info.srWindow.Left + 1;
    return columns > 1 ? static_cast<unsigned int>(columns) : kDefaultColumns;
}

unsigned int consoleRows(Stream stream) noexcept {
    constexpr unsigned int kDefaultRows = 25;
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (!GetConsoleScreenBufferInfo(streamHandle(stream), &info)) {
        return kDefaultRows;
    }
    const int rows = info.srWindow.Bottom - info.srWindow.Top + 1;
    return rows > 1 ? static_cast<unsigned int>(rows) : kDefaultRows;
}

bool enableEscapeSequences(Stream stream) noexcept {
    DWORD mode = 0;
    void* const console = streamHandle(stream);
    return GetConsoleMode(console, &mode) != 0 &&
           SetConsoleMode(console, mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

void writeOutput(std::wstring_view text) {
    write(Stream::Output, text);
}

void writeOutput(std::string_view text) {
    void* const output = streamHandle(Stream::Output);
    if (isConsole(Stream::Output)) {
        if (const auto wide = fromUtf8(text)) {
            writeConsole(output, *wide);
            return;
        }
    }
    writeBytes(output, text.data(), text.size(), kOutputName);
}

void writeError(std::wstring_view text) noexcept {
    try {
        write(Stream::Error, text);
    } catch (...) {  // a failure cannot be reported here
        return;
    }
}

void writeBytes(void* handle, const char* bytes, std::size_t size, std::wstring_view name) {
    constexpr std::size_t kMaxBytes = std::size_t{1} << 20;
    while (size != 0) {
        DWORD written = 0;
        if (!WriteFile(handle, bytes, static_cast<DWORD>(std::min(size, kMaxBytes)), &written, nullptr)) {
            const DWORD error = GetLastError();
            if (isReaderGone(error)) {
                throw OutputClosed();
            }
            throw systemFailure(name, L"cannot be written", error);
        }
        bytes += written;
        size -= written;
    }
}

}  // namespace tools
