/// \file
/// The standard streams: detects consoles and writes text. A console receives UTF-16, independent of its code page; a
/// file or a pipe receives UTF-8. Output is not buffered, so callers should combine small pieces.
#pragma once

#include <cstddef>
#include <string_view>

namespace tools {

enum class Stream { Input, Output, Error };

/// Whether the stream is a console rather than a file, a pipe or "nul".
bool isConsole(Stream stream) noexcept;

/// Number of columns of the console window; 80 if the stream is not the output of a console or the number is below 2.
unsigned int consoleColumns(Stream stream) noexcept;

/// Number of rows of the console window; 25 if the stream is not the output of a console or the number is below 2.
unsigned int consoleRows(Stream stream) noexcept;

/// Enables escape sequences (colours). Returns false if the console does not support them or the stream is not a
/// console.
bool enableEscapeSequences(Stream stream) noexcept;

/// Writes text to standard output.
/// \throws OutputClosed if the reader has closed the pipe; Failure if the output cannot be written.
void writeOutput(std::wstring_view text);

/// Writes UTF-8 to standard output. If the output is a console, `text` should not end within a character. If `fromUtf8`
/// (Text.h) rejects the text, its bytes are written to the console unchanged, and the console interprets them in its
/// code page.
/// \throws OutputClosed if the reader has closed the pipe; Failure if the output cannot be written.
void writeOutput(std::string_view text);

/// Writes text to the error stream and ignores failures.
void writeError(std::wstring_view text) noexcept;

/// The handle of the stream, for reading and writing bytes; null if the process has no such stream.
void* streamHandle(Stream stream) noexcept;

/// Writes all `size` bytes to a handle. Failure texts contain `name`.
/// \throws OutputClosed if the handle is a pipe whose reader has closed it; Failure if the bytes cannot be written.
void writeBytes(void* handle, const char* bytes, std::size_t size, std::wstring_view name);

}  // namespace tools
