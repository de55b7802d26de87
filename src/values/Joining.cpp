#include "vorel/values/Joining.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/StringAccess.h"
#include "kernels/UnitBlocks.h"
#include "vorel/core/Protocol.h"

namespace vorel::util {

namespace {

constexpr wchar_t kQuote = L'"';
constexpr std::uint64_t kReservedPerItem = 32;

/// Whether an item has to be quoted. The search for the delimiter never goes back: a character that ends a partial
/// match is not looked at again as the start of another.
bool needsQuotes(std::wstring_view item, std::wstring_view delimiter) noexcept {
    std::size_t matched = 0;
    for (const wchar_t unit : item) {
        if (unit == kQuote) {
            return true;
        }
        if (delimiter.empty()) {
            continue;
        }
        matched = unit == delimiter[matched] ? matched + 1 : 0;
        if (matched == delimiter.size()) {
            return true;
        }
    }
    return false;
}

bool isQuotedAlready(std::wstring_view item) noexcept {
    return item.size() > 1 && item.front() == kQuote && item.back() == kQuote;
}

/// A string that is written unit by unit: how long it is, it is told at the end, and before it grows.
class Writer {
public:
    /// Writes to an empty string.
    explicit Writer(BaseString<wchar_t>& text) noexcept
        : m_text(text), m_place(text.data()), m_end(m_place + text.capacity()) {}

    /// Makes room for `units` more and a terminator.
    void reserve(std::uint64_t units) {
        if (units < static_cast<std::uint64_t>(m_end - m_place)) {
            return;
        }
        finish();
        const std::uint64_t needed = m_text.length() + units;
        if (needed >= BaseString<wchar_t>::kUnknownLength) {
            detail::throwMemory(BaseString<wchar_t>::kUnknownLength, sizeof(wchar_t));
        }
        const unsigned int before = m_text.length();
        m_text.reserve(static_cast<unsigned int>(needed), false);
        detail::StringAccess<wchar_t>::setLength(m_text, before);
        m_place = m_text.data() + before;
        m_end = m_text.data() + m_text.capacity();
    }

    void finish() noexcept {
        if (m_place) {
            detail::StringAccess<wchar_t>::setLength(m_text, static_cast<unsigned int>(m_place - m_text.data()));
        }
    }

    void write(wchar_t unit) noexcept { *m_place++ = unit; }

    void write(std::wstring_view text) noexcept { m_place = std::copy(text.begin(), text.end(), m_place); }

    /// Writes an item in quotes, its own doubled.
    void writeQuoted(std::wstring_view item) noexcept {
        write(kQuote);
        for (const wchar_t unit : item) {
            write(unit);
            if (unit == kQuote) {
                write(kQuote);
            }
        }
        write(kQuote);
    }

    /// Writes an item unless it holds a quote or `delimiter`, and says whether it did. The item is all of a string:
    /// the buffer of one is a whole number of blocks.
    bool writePlain(std::wstring_view item, wchar_t delimiter) noexcept {
        const bool isPlain = !kernels::copyAndFind(item.data(), item.size(), kQuote, delimiter, m_place);
        m_place += isPlain ? item.size() : 0;
        return isPlain;
    }

private:
    BaseString<wchar_t>& m_text;
    wchar_t* m_place;
    wchar_t* m_end;
};

}  // namespace

void multipleStringsToSingleString(const Array<BaseString<wchar_t>>& items, const wchar_t* delimiter,
                                   BaseString<wchar_t>& result) {
    const std::uint64_t reserved = items.size() * kReservedPerItem;
    if (reserved >= BaseString<wchar_t>::kUnknownLength) {
        detail::throwMemory(BaseString<wchar_t>::kUnknownLength, sizeof(wchar_t));
    }
    result.reserve(static_cast<unsigned int>(reserved), true);
    result.clear();
    if (items.size() == 1 && isQuotedAlready(items[0].view())) {
        result = items[0];
        return;
    }
    const std::wstring_view between = delimiter ? delimiter : L"";
    Writer writer(result);
    for (const BaseString<wchar_t>& item : items) {
        const std::wstring_view text = item.view();
        constexpr std::uint64_t kQuotes = 2;
        writer.reserve(between.size() + kQuotes + std::uint64_t{2} * text.size() + kernels::kUnitBlock);
        if (&item != items.begin()) {
            writer.write(between);
        }
        if (between.size() == 1) {
            if (!writer.writePlain(text, between.front())) {
                writer.writeQuoted(text);
            }
        } else if (needsQuotes(text, between)) {
            writer.writeQuoted(text);
        } else {
            writer.write(text);
        }
    }
    writer.finish();
}

BaseString<wchar_t> multipleStringsToSingleString(const Array<BaseString<wchar_t>>& items, const wchar_t* delimiter) {
    BaseString<wchar_t> result;
    multipleStringsToSingleString(items, delimiter, result);
    return result;
}

}  // namespace vorel::util
