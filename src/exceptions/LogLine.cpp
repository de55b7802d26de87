#include "exceptions/LogLine.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string>

#include <process.h>
#include <windows.h>

#include "platform/ComputerName.h"
#include "platform/SystemClock.h"

namespace vorel::detail {

namespace {

constexpr std::size_t kEndBytes = 2;  // line feed and terminator

/// The largest piece. The runtime prints at most INT_MAX bytes of a text, and a limit saves memory.
constexpr std::size_t kMaxPieceBytes = std::size_t{16} << 20;

const wchar_t* messageOf(const wchar_t* message) noexcept {
    return message ? message : L"NULL Message";
}

char* put(char* out, std::string_view text) noexcept {
    return std::copy(text.begin(), text.end(), out);
}

/// Writes a dot and three digits.
char* putMilliseconds(char* out, unsigned int milliseconds) noexcept {
    *out++ = '.';
    for (unsigned int unit = 100; unit != 0; unit /= 10) {
        *out++ = static_cast<char>('0' + milliseconds / unit % 10);
    }
    return out;
}

}  // namespace

LogLine::LogLine(const char* prefix, const wchar_t* message, bool withMilliseconds) noexcept
    : m_prefix(prefix ? prefix : "NULL Method"), m_message(messageOf(message), -1), m_capacity(sizeof m_buffer) {
    renderHeader(withMilliseconds);
    const std::size_t units = std::char_traits<wchar_t>::length(messageOf(message));
    const std::size_t needed = std::min(
        m_header.size() + m_prefix.size() + units * algorithms::kMaxUtf8BytesPerUnit + kEndBytes, kMaxPieceBytes);
    if (needed > m_capacity) {
        m_heap.reset(static_cast<char*>(std::malloc(needed)));
        m_capacity = m_heap ? needed : m_capacity;
    }
    render();
}

bool LogLine::next() noexcept {
    if (m_complete) {
        return false;
    }
    render();
    return true;
}

void LogLine::renderHeader(bool withMilliseconds) noexcept {
    const platform::LocalTimeText time(withMilliseconds);
    const platform::ComputerName computer = platform::ComputerName::remembered();
    char* out = m_headerText;
    *out++ = '[';
    out = put(out, time.text);
    *out++ = ']';
    if (withMilliseconds) {
        out = putMilliseconds(out, time.milliseconds);
    }
    *out++ = ' ';
    out = put(out, computer.text);
    *out++ = '.';
    out = std::to_chars(out, std::end(m_headerText), _getpid()).ptr;
    *out++ = '.';
    out = std::to_chars(out, std::end(m_headerText), GetCurrentThreadId()).ptr;
    out = put(out, ": ");
    m_header = {m_headerText, static_cast<std::size_t>(out - m_headerText)};
}

/// Renders a piece: as much of the line as fits into the buffer.
void LogLine::render() noexcept {
    char* const out = m_heap ? m_heap.get() : m_buffer;
    const std::size_t capacity = m_capacity - kEndBytes;
    std::size_t size = renderFront(out, capacity);
    if (m_prefix.empty()) {
        size += m_message.write(reinterpret_cast<unsigned char*>(out + size), capacity - size, capacity - size);
        m_complete = m_message.atEnd();
    }
    if (m_complete) {
        out[size++] = '\n';
    }
    out[size] = 0;
}

/// Renders the parts of the header and of the prefix that are not yet rendered. Returns the number of bytes written.
std::size_t LogLine::renderFront(char* out, std::size_t capacity) noexcept {
    std::size_t size = 0;
    for (std::string_view* const front : {&m_header, &m_prefix}) {
        const std::size_t copied = front->copy(out + size, capacity - size);
        front->remove_prefix(copied);
        size += copied;
    }
    return size;
}

}  // namespace vorel::detail
