/// \file
/// The one door to the runtime's print functions. Everything the library renders goes through here, with the legacy
/// null-termination behaviour and never through a compiler's replacement, so that texts and counts are the runtime's.
/// In wide formats `%s` is wide text, the runtime's default.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace vorel::baseutil {

/// Renders at most `size` units into `buffer` and returns the number written, or -1 when the text does not fit or
/// cannot be rendered. A text of exactly `size` units fits and has no terminator. A format that the runtime refuses
/// reaches no invalid-parameter handler, and does not end a program that has none.
int boundedFormat(char* buffer, std::size_t size, const char* fmt, ...) noexcept;
int boundedFormat(wchar_t* buffer, std::size_t size, const wchar_t* fmt, ...) noexcept;
int vboundedFormat(char* buffer, std::size_t size, const char* fmt, va_list args) noexcept;
int vboundedFormat(wchar_t* buffer, std::size_t size, const wchar_t* fmt, va_list args) noexcept;

/// Renders to a stream; returns the number of units written, or a negative value.
int streamPrint(std::FILE* stream, const char* fmt, ...) noexcept;

/// Renders into `buffer` of `size` units, or into a heap block when the text does not fit, and returns the text:
/// `buffer`; or the block, left in `heapOut` for the caller to `free`; or, when no block can be had, `buffer` with the
/// text cut to `size - 1` units and `truncatedOut` set; or null for a format that cannot be rendered. Never throws.
char* formatWithFallback(char* buffer, std::size_t size, char*& heapOut, bool& truncatedOut, const char* fmt,
                         va_list args) noexcept;
wchar_t* formatWithFallback(wchar_t* buffer, std::size_t size, wchar_t*& heapOut, bool& truncatedOut,
                            const wchar_t* fmt, va_list args) noexcept;

/// The text of a message that cannot be rendered.
inline constexpr wchar_t kUnformattable[] = L"(unable to format message)";

/// A rendered message: 8,000 units on the stack, and the heap for longer ones.
template <class T>
class MessageText {
public:
    MessageText() noexcept = default;
    MessageText(const T* fmt, va_list args) noexcept { render(fmt, args); }
    ~MessageText() { std::free(m_heap); }

    MessageText(const MessageText&) = delete;
    MessageText& operator=(const MessageText&) = delete;

    /// Renders the message, once in an object's life.
    void render(const T* fmt, va_list args) noexcept {
        m_text = formatWithFallback(m_buffer, kUnits, m_heap, m_truncated, fmt, args);
    }
    void renderf(const T* fmt, ...) noexcept {
        va_list args;
        va_start(args, fmt);
        render(fmt, args);
        va_end(args);
    }

    /// Null when the message could not be rendered.
    [[nodiscard]] const T* text() const noexcept { return m_text; }
    [[nodiscard]] bool truncated() const noexcept { return m_truncated; }

private:
    static constexpr std::size_t kUnits = 8000;

    const T* m_text = nullptr;
    T* m_heap = nullptr;
    bool m_truncated = false;
    T m_buffer[kUnits];
};

}  // namespace vorel::baseutil
