/// \file
/// The standard streams: whether a person sits in front of one, and text into them. A console gets its text as UTF-16,
/// whatever its code page is; a file or a pipe gets UTF-8. Nothing is held back: whoever writes in small pieces should
/// collect them first.
#pragma once

#include <cstddef>
#include <string_view>

namespace tools {

enum class Stream { Input, Output, Error };

/// Whether the stream is a console, and no file, pipe or "nul".
bool isConsole(Stream stream) noexcept;

/// Columns of the console's window; 80 when the stream is no console.
unsigned int consoleColumns(Stream stream) noexcept;

/// Makes the console obey escape sequences (colours); false when it cannot, or the stream is no console.
bool enableEscapeSequences(Stream stream) noexcept;

/// Writes text to the standard output.
/// \throws OutputClosed when its reader is gone; Failure when it cannot be written.
void writeOutput(std::wstring_view text);

/// The same for UTF-8. The bytes should not end within a sequence when they go to a console; bytes that are no UTF-8
/// get there one by one, in the console's code page.
void writeOutput(std::string_view text);

/// Writes text to the error stream; what cannot be written there is lost.
void writeError(std::wstring_view text) noexcept;

/// The stream's handle, for those who read and write bytes; null when the process has none.
void* streamHandle(Stream stream) noexcept;

/// Writes all `size` bytes to a handle, which is called `name` in failures.
/// \throws OutputClosed when the reader of a pipe is gone; Failure when it cannot be written.
void writeBytes(void* handle, const char* bytes, std::size_t size, std::wstring_view name);

}  // namespace tools
