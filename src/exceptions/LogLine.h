/// \file
/// The text of one line of the error log. The text, or its first piece, is rendered before the file is opened.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "algorithms/Utf8Streams.h"

namespace vorel::detail {

/// A line is usually one piece: a short line is rendered on the stack, a long line on the heap. A line of more than
/// 16 MiB is rendered in several pieces. If the heap allocation fails, a long line is rendered on the stack in several
/// pieces.
class LogLine {
public:
    /// `prefix` and `message` must outlive the object. Null is rendered as "NULL Method" and "NULL Message".
    LogLine(const char* prefix, const wchar_t* message, bool withMilliseconds) noexcept;

    LogLine(const LogLine&) = delete;
    LogLine& operator=(const LogLine&) = delete;
    ~LogLine() = default;

    /// The current piece, zero-terminated. The last piece ends with a line feed.
    [[nodiscard]] const char* piece() const noexcept { return m_heap ? m_heap.get() : m_buffer; }

    /// Renders the next piece. Returns false if there is none.
    bool next() noexcept;

private:
    struct Free {
        void operator()(char* block) const noexcept { std::free(block); }
    };

    /// "[", a time of at most 25 characters, "].", three digits, a space, a computer name of at most 15 characters, a
    /// period, a process id of at most 11 characters, a period, a thread id of at most 10 digits, ": ".
    static constexpr std::size_t kMaxHeaderBytes = 1 + 25 + 2 + 3 + 1 + 15 + 1 + 11 + 1 + 10 + 2;

    void renderHeader(bool withMilliseconds) noexcept;
    void render() noexcept;
    std::size_t renderFront(char* out, std::size_t capacity) noexcept;

    std::string_view m_header;  // the part of the header that is not yet rendered
    std::string_view m_prefix;  // the part of the prefix that is not yet rendered
    algorithms::Utf8Writer<algorithms::Surrogates::Paired, wchar_t> m_message;
    std::unique_ptr<char, Free> m_heap;
    std::size_t m_capacity;
    bool m_complete = false;
    char m_headerText[kMaxHeaderBytes];
    char m_buffer[1024];
};

}  // namespace vorel::detail
