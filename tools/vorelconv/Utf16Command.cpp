#include <algorithm>
#include <utility>

#include "Command.h"
#include "Filter.h"
#include "support/Text.h"
#include "support/Tool.h"
#include "vorel/text/Unicode.h"

namespace conv {

namespace {

using Bytes = vorel::Array<unsigned char>;
using WideString = vorel::BaseString<wchar_t>;

constexpr std::string_view kMarkLittle = "\xFF\xFE";
constexpr std::string_view kMarkBig = "\xFE\xFF";
constexpr std::string_view kMarkUtf8 = "\xEF\xBB\xBF";

void append(std::string& result, const Bytes& bytes) {
    result.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

/// Converts UTF-8 to UTF-16.
class Utf16Encoder final : public Filter {
public:
    Utf16Encoder(bool littleEndian, bool withMark) : m_littleEndian(littleEndian), m_needsMark(withMark) {}

    std::size_t convert(std::string_view block, bool last, std::string& result) override {
        const std::string_view text = wholeUtf8(block, last);
        if (m_needsMark && !text.starts_with(kMarkUtf8)) {
            result += m_littleEndian ? kMarkLittle : kMarkBig;
        }
        m_needsMark = false;
        for (std::size_t start = 0; start < text.size();) {
            // The library's conversions stop at a zero.
            const std::size_t end = std::min(text.find('\0', start), text.size());
            convertPiece(text.substr(start, end - start), result);
            if (end < text.size()) {
                result.append(2, '\0');
            }
            start = end + 1;
        }
        return text.size();
    }

private:
    void convertPiece(std::string_view piece, std::string& result) {
        const std::wstring wide = tools::fromUtf8(piece).value();
        vorel::util::ConvertStringtoUTF16(wide.c_str(), m_bytes, m_littleEndian, false, -1);
        append(result, m_bytes);
    }

    bool m_littleEndian;
    bool m_needsMark;
    Bytes m_bytes;
};

bool isHigh(wchar_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool isLow(wchar_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// Converts UTF-16 to UTF-8.
class Utf16Decoder final : public Filter {
public:
    explicit Utf16Decoder(bool littleEndian) : m_littleEndian(littleEndian) {}

    std::size_t convert(std::string_view block, bool last, std::string& result) override {
        if (last && block.size() % 2 != 0) {
            throw BadInput{block.size(), L"the text ends within a code unit; expected an even number of bytes", false};
        }
        const std::size_t mark = m_isFirst ? consumeMark(block) : 0;
        m_isFirst = false;
        m_text.assign(block.substr(0, block.size() - block.size() % 2));
        if (!m_littleEndian) {
            swapBytes();
        }
        if (!last && m_text.size() > mark && isHigh(unitAt(m_text.size() - 2))) {
            m_text.resize(m_text.size() - 2);  // the low surrogate is in the next block
        }
        for (std::size_t start = mark; start < m_text.size();) {
            start += convertPiece(start, result);
            if (start < m_text.size()) {  // the library's conversions stop at a zero
                result += '\0';
                start += 2;
            }
        }
        return m_text.size();
    }

private:
    std::size_t consumeMark(std::string_view block) {
        if (block.starts_with(kMarkLittle) || block.starts_with(kMarkBig)) {
            m_littleEndian = block.starts_with(kMarkLittle);
            return kMarkLittle.size();
        }
        return 0;
    }

    /// The library reads little-endian text only.
    void swapBytes() {
        for (std::size_t index = 0; index < m_text.size(); index += 2) {
            std::swap(m_text[index], m_text[index + 1]);
        }
    }

    [[nodiscard]] wchar_t unitAt(std::size_t index) const {
        return static_cast<wchar_t>(static_cast<unsigned char>(m_text[index]) |
                                    static_cast<unsigned char>(m_text[index + 1]) << 8);
    }

    /// Converts the text from `start` up to a zero or the end, and returns the number of bytes converted.
    std::size_t convertPiece(std::size_t start, std::string& result) {
        vorel::util::ConvertUTF16toString(m_wide, m_text.data() + start, static_cast<int>(m_text.size() - start));
        checkSurrogates(start);
        vorel::util::ConvertStringtoUTF8(m_wide.c_str(), m_bytes, false, -1);
        append(result, m_bytes);
        return 2 * std::size_t{m_wide.length()};
    }

    void checkSurrogates(std::size_t start) const {
        const std::wstring_view units = m_wide.view();
        for (std::size_t index = 0; index < units.size(); ++index) {
            if (isHigh(units[index]) && index + 1 < units.size() && isLow(units[index + 1])) {
                ++index;
            } else if (isHigh(units[index]) || isLow(units[index])) {
                throw BadInput{start + 2 * index, L"expected a surrogate pair, found a single surrogate", false};
            }
        }
    }

    bool m_littleEndian;
    bool m_isFirst = true;
    std::string m_text;  // little-endian
    WideString m_wide;
    Bytes m_bytes;
};

constexpr tools::Option kBigOption = {L"big-endian", L'b', {}, L"use big-endian UTF-16 instead of little-endian"};
constexpr tools::Option kMarkOption = {L"mark", L'm', {}, L"write a byte-order mark at the start"};

int run(const tools::Arguments& arguments) {
    const bool littleEndian = !arguments.has(kBigOption.name);
    if (arguments.has(kDecodeOption.name)) {
        if (arguments.has(kMarkOption.name)) {
            throw tools::UsageError(L"--mark cannot be combined with --decode", L"vorelconv utf16");
        }
        Utf16Decoder decoder(littleEndian);
        runFilter(arguments, decoder);
    } else {
        Utf16Encoder encoder(littleEndian, arguments.has(kMarkOption.name));
        runFilter(arguments, encoder);
    }
    return tools::kDone;
}

constexpr tools::Option kOptions[] = {kDecodeOption, kBigOption, kMarkOption, kTextOption, kOutputOption};

constexpr Command kCommand = {
    .syntax = {.command = L"vorelconv utf16",
               .summary = L"encode UTF-8 as UTF-16, or decode UTF-16",
               .options = kOptions,
               .operands = kInputOperand,
               .maxOperands = 1,
               .details = L"The input must be well-formed. When decoding, a byte-order mark at the start selects\n"
                          L"the byte order and is dropped.\n"
                          L"\n"
                          L"  vorelconv utf16 names.txt -o names.utf16\n"
                          L"  vorelconv utf16 --decode names.utf16 | vorelconv utf16 --big-endian --mark"},
    .run = run};

}  // namespace

const Command& utf16Command() {
    return kCommand;
}

}  // namespace conv
