#include "Filter.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "Input.h"
#include "Interrupt.h"
#include "Output.h"
#include "Progress.h"
#include "support/Text.h"
#include "support/Tool.h"
#include "support/Utf8.h"

namespace conv {

namespace {

constexpr std::size_t kBlockBytes = std::size_t{1} << 20;
constexpr std::size_t kMaxBytes = std::size_t{1} << 30;

/// The part of the input that is read but not yet converted.
class Window {
public:
    explicit Window(Input& input) : m_input(input), m_buffer(kBlockBytes) {}

    /// Reads until the window is full or the input ends.
    void fill() {
        while (m_count < m_buffer.size() && !m_ended) {
            throwIfInterrupted();
            const std::size_t read = m_input.read(m_buffer.data() + m_count, m_buffer.size() - m_count);
            m_count += read;
            m_ended = read == 0;
        }
    }

    [[nodiscard]] std::string_view bytes() const { return {m_buffer.data(), m_count}; }
    [[nodiscard]] bool isLast() const { return m_ended; }
    [[nodiscard]] std::uint64_t offset() const { return m_offset; }

    /// Removes the first `count` bytes. If `count` is 0 and the input has not ended, enlarges the buffer instead.
    /// \throws tools::Failure if the buffer already has more than kMaxBytes.
    void drop(std::size_t count) {
        m_line += lineFeeds(count);
        m_offset += count;
        m_count -= count;
        std::memmove(m_buffer.data(), m_buffer.data() + count, m_count);
        if (count == 0 && !m_ended) {
            grow();
        }
    }

    [[noreturn]] void reject(const BadInput& reason) const {
        std::wstring position = m_input.name() + L": ";
        if (reason.isText) {
            position += L"line " + std::to_wstring(m_line + lineFeeds(reason.index)) + L", ";
        }
        position += L"offset " + std::to_wstring(m_offset + reason.index);
        throw tools::Failure(position + L": " + reason.message);
    }

private:
    [[nodiscard]] std::uint64_t lineFeeds(std::size_t count) const {
        return static_cast<std::uint64_t>(std::count(m_buffer.data(), m_buffer.data() + count, '\n'));
    }

    void grow() {
        if (m_buffer.size() > kMaxBytes) {
            reject({0, L"this line has more than " + std::to_wstring(kMaxBytes) +
                           L" bytes; every line must fit into memory"});
        }
        const std::size_t doubled = 2 * m_buffer.size();
        // One byte more than kMaxBytes, because a line of kMaxBytes is not too long.
        m_buffer.resize(doubled < kMaxBytes ? doubled : kMaxBytes + 1);
    }

    Input& m_input;
    std::vector<char> m_buffer;
    std::size_t m_count = 0;
    std::uint64_t m_offset = 0;  // offset of the window in the input
    std::uint64_t m_line = 1;    // number of the line that contains the first byte of the window
    bool m_ended = false;
};

void convertAll(Input& input, Filter& filter, Output& output, Progress& progress) {
    Window window(input);
    std::string result;
    for (bool last = false; !last;) {
        window.fill();
        last = window.isLast();
        result.clear();
        std::size_t converted = 0;
        try {
            converted = filter.convert(window.bytes(), last, result);
        } catch (const BadInput& reason) {
            window.reject(reason);
        }
        output.write(result);
        window.drop(converted);
        progress.report(window.offset());
    }
}

}  // namespace

void runFilter(const tools::Arguments& arguments, Filter& filter) {
    watchInterrupts();
    Input input(arguments);
    Output output(arguments);
    try {
        Progress progress(input.size(), output.isStandardOutput());
        convertAll(input, filter, output, progress);
        input.close();
        output.commit();
    } catch (const tools::Failure& failure) {
        throw tools::Failure(failure.text() + output.abandon());
    } catch (const tools::OutputClosed&) {
        (void)output.abandon();  // without a message, because OutputClosed is not reported
        throw;
    }
}

std::string_view wholeUtf8(std::string_view block, bool last) {
    const tools::Utf8Scan scan = tools::scanUtf8(block);
    if (scan.valid == block.size() || (scan.isTruncated && !last)) {
        return block.substr(0, scan.valid);
    }
    const std::string_view rest = block.substr(scan.valid);
    const tools::Utf8Sequence sequence = tools::utf8SequenceAt(rest);
    if (sequence.size == 0) {
        throw BadInput{scan.valid, L"invalid UTF-8: a sequence cannot begin with " + quoted(rest[0])};
    }
    std::wstring message =
        L"invalid UTF-8: a " + std::to_wstring(sequence.size) + L"-byte sequence begins with " + quoted(rest[0]);
    message += sequence.found == rest.size() ? L", but the text ends within it"
                                             : L", but " + quoted(rest[sequence.found]) + L" cannot follow";
    throw BadInput{scan.valid, message};
}

std::wstring quoted(char byte) {
    const auto code = static_cast<unsigned char>(byte);
    const std::wstring number = tools::formatted(L"0x%02X", static_cast<unsigned int>(code));
    const bool isPrintable = code > 0x20 && code < 0x7F;
    return isPrintable ? L"'" + std::wstring(1, static_cast<wchar_t>(code)) + L"' (" + number + L")" : number;
}

}  // namespace conv
