#include "LineFilter.h"

#include "support/Text.h"

namespace conv {

namespace {

std::wstring decoded(std::string_view line) {
    (void)wholeUtf8(line, true);
    const std::size_t zero = line.find('\0');
    if (zero != std::string_view::npos) {
        throw BadInput{zero, L"expected text, found a zero byte"};
    }
    return tools::fromUtf8(line).value();
}

}  // namespace

std::size_t LineFilter::convert(std::string_view block, bool last, std::string& result) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    std::size_t start = m_isFirst && block.starts_with(kMark) ? kMark.size() : 0;
    m_isFirst = false;
    while (start < block.size()) {
        const std::size_t end = block.find('\n', start);
        if (end == std::string_view::npos && !last) {
            return start;
        }
        std::string_view line = block.substr(start, end == std::string_view::npos ? end : end - start);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        try {
            convertLine(decoded(line), result);
        } catch (BadInput& reason) {
            reason.index += start;
            throw;
        }
        start = end == std::string_view::npos ? block.size() : end + 1;
    }
    if (last) {
        finish(result);
    }
    return start;
}

void appendLine(std::string& result, std::wstring_view text) {
    result += tools::toUtf8(text);
    result += '\n';
}

std::wstring quoted(const std::wstring& line) {
    constexpr std::size_t kMaxUnits = 60;
    return L'"' + (line.size() > kMaxUnits ? line.substr(0, kMaxUnits) + L"…" : line) + L'"';
}

std::wstring trimmed(const std::wstring& line) {
    constexpr std::wstring_view kSpace = L" \t\r\n\u00A0";
    const std::size_t first = line.find_first_not_of(kSpace);
    return first == std::wstring::npos ? std::wstring() : line.substr(first, line.find_last_not_of(kSpace) - first + 1);
}

}  // namespace conv
