/// \file
/// Renders formats. PlainFormat.h renders plain formats. The runtime's print functions render all other formats; no
/// other file of the library calls these functions. The compiler's replacements of the print functions are not used, so
/// texts and counts are the same as the runtime's. In wide formats, the argument of `%s` is wide text, as by default in
/// the runtime.
#pragma once

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace vorel::baseutil {

/// Renders at most `size` units into `buffer` and returns the number written, or -1 if the text does not fit or cannot
/// be rendered. A text of exactly `size` units fits and has no terminator. If the runtime rejects the format, the
/// invalid-parameter handler is not called, and a program without a handler is not ended.
int boundedFormat(char* buffer, std::size_t size, const char* fmt, ...) noexcept;
int boundedFormat(wchar_t* buffer, std::size_t size, const wchar_t* fmt, ...) noexcept;
int vboundedFormat(char* buffer, std::size_t size, const char* fmt, va_list args) noexcept;
int vboundedFormat(wchar_t* buffer, std::size_t size, const wchar_t* fmt, va_list args) noexcept;

/// Renders to a stream and returns the number of units written, or a negative value.
int streamPrint(std::FILE* stream, const char* fmt, ...) noexcept;

/// Renders into `buffer` of `size` units, or into a heap block if the text does not fit. Returns one of:
///
/// - `buffer`;
/// - the heap block, also stored in `heapOut`;
/// - `buffer` with the text truncated to `size - 1` units and `truncatedOut` set, if the block cannot be allocated;
/// - null if `fmt` is null or cannot be rendered, if the text does not fit and its length cannot be determined, or if
///   another thread lengthens an argument during the call.
///
/// `heapOut` is unchanged if no block is needed, so the caller must set it to null before the call. The caller must
/// `free` it after every call, because it can contain a block even if the result is null. The functions never throw.
char* formatWithFallback(char* buffer, std::size_t size, char*& heapOut, bool& truncatedOut, const char* fmt,
                         va_list args) noexcept;
wchar_t* formatWithFallback(wchar_t* buffer, std::size_t size, wchar_t*& heapOut, bool& truncatedOut,
                            const wchar_t* fmt, va_list args) noexcept;

/// The text that replaces a message that cannot be rendered.
inline constexpr wchar_t kUnformattable[] = L"(unable to format message)";

/// A rendered message. It is on the stack if it has fewer than `Units` units, otherwise on the heap.
template <class T, std::size_t Units = 8000>
class MessageText {
public:
    MessageText() noexcept = default;
    MessageText(const T* fmt, va_list args) noexcept { render(fmt, args); }
    ~MessageText() { std::free(m_heap); }

    MessageText(const MessageText&) = delete;
    MessageText& operator=(const MessageText&) = delete;

    /// Renders the message. Call it once per object.
    void render(const T* fmt, va_list args) noexcept {
        m_text = formatWithFallback(m_buffer, Units, m_heap, m_truncated, fmt, args);
    }
    void renderf(const T* fmt, ...) noexcept {
        va_list args;
        va_start(args, fmt);
        render(fmt, args);
        va_end(args);
    }

    /// Sets the message to the texts `front`, followed by `text`, which may be the message itself. If memory runs out,
    /// the message is truncated to the buffer on the stack, as in `render`.
    void compose(std::initializer_list<std::basic_string_view<T>> front, std::basic_string_view<T> text) noexcept {
        std::size_t frontUnits = 0;
        for (const std::basic_string_view<T> part : front) {
            frontUnits += part.size();
        }
        const std::size_t units = frontUnits + text.size();
        T* block = nullptr;
        if (units >= Units) {
            block = static_cast<T*>(std::malloc((units + 1) * sizeof(T)));
            m_truncated = m_truncated || !block;
        }
        join(block ? block : m_buffer, block ? units : std::min(units, Units - 1), frontUnits, front, text);
        if (block) {
            std::free(std::exchange(m_heap, block));
        }
    }

    /// The rendered message; null if the message cannot be rendered.
    [[nodiscard]] const T* text() const noexcept { return m_text; }
    [[nodiscard]] bool truncated() const noexcept { return m_truncated; }

private:
    /// Writes the first `units` units of `front` and `text` to `target`. `text` is moved first, because it may lie in
    /// `target`.
    void join(T* target, std::size_t units, std::size_t frontUnits,
              std::initializer_list<std::basic_string_view<T>> front, std::basic_string_view<T> text) noexcept {
        const std::size_t start = std::min(frontUnits, units);
        std::char_traits<T>::move(target + start, text.data(), units - start);
        std::size_t position = 0;
        for (const std::basic_string_view<T> part : front) {
            position += part.copy(target + position, start - position);
        }
        target[units] = 0;
        m_text = target;
    }

    const T* m_text = nullptr;
    T* m_heap = nullptr;
    bool m_truncated = false;
    T m_buffer[Units];
};

}  // namespace vorel::baseutil

namespace vorel::detail {

/// Throws `Exception` "Unable to format: … (…)" with the format and the runtime's text for the current `errno`.
/// Defined in exceptions/Protocol.cpp.
[[noreturn]] void throwUnableToFormat(const char* fmt);
[[noreturn]] void throwUnableToFormat(const wchar_t* fmt);

}  // namespace vorel::detail
