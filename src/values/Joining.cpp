#include "vorel/values/Joining.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "algorithms/JoinedItems.h"
#include "core/HeldInputs.h"
#include "core/StringAccess.h"
#include "vorel/core/Protocol.h"

namespace vorel::util {

namespace {

constexpr std::uint64_t kReservedPerItem = 32;

/// Writes to a string through a raw cursor. `reserve` must come before each write, because writing does not check the
/// capacity. The string's length is updated by `finish`, and before the string grows.
class Writer {
public:
    /// The string must be empty.
    explicit Writer(BaseString<wchar_t>& text) noexcept
        : m_text(text), m_cursor(text.data()), m_end(m_cursor + text.capacity()) {}

    /// Reserves capacity for `units` more units and a terminator.
    /// \throws MemoryException if the capacity cannot be allocated.
    void reserve(std::uint64_t units) {
        if (units < static_cast<std::uint64_t>(m_end - m_cursor)) {
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
        m_cursor = m_text.data() + before;
        m_end = m_text.data() + m_text.capacity();
    }

    void finish() noexcept {
        if (m_cursor) {
            detail::StringAccess<wchar_t>::setLength(m_text, static_cast<unsigned int>(m_cursor - m_text.data()));
        }
    }

    void write(std::wstring_view text) noexcept { m_cursor = std::copy(text.begin(), text.end(), m_cursor); }

    /// Writes an item, quoted if necessary. `item` must be the whole text of a `BaseString`, because items are read in
    /// whole blocks, and the buffer of a `BaseString` consists of whole blocks.
    void writeItem(std::wstring_view item, std::wstring_view delimiter) noexcept {
        m_cursor = algorithms::writeJoinedItem(item, delimiter, m_cursor);
    }

private:
    BaseString<wchar_t>& m_text;
    wchar_t* m_cursor;
    wchar_t* m_end;
};

}  // namespace

void multipleStringsToSingleString(const Array<BaseString<wchar_t>>& items, const wchar_t* delimiter,
                                   BaseString<wchar_t>& result) {
    if (detail::holds(result, delimiter) || detail::holds(items, &result)) {
        BaseString<wchar_t> joined;
        multipleStringsToSingleString(items, delimiter, joined);
        result = std::move(joined);
        return;
    }
    const std::uint64_t reserved = items.size() * kReservedPerItem;
    if (reserved >= BaseString<wchar_t>::kUnknownLength) {
        detail::throwMemory(BaseString<wchar_t>::kUnknownLength, sizeof(wchar_t));
    }
    result.reserve(static_cast<unsigned int>(reserved), true);
    result.clear();
    if (items.size() == 1 && algorithms::isQuotedAlready(items[0].view())) {
        result = items[0];
        return;
    }
    const std::wstring_view between = delimiter ? delimiter : L"";
    Writer writer(result);
    for (const BaseString<wchar_t>& item : items) {
        const std::wstring_view text = item.view();
        writer.reserve(between.size() + algorithms::joinedItemCapacity(text.size()));
        if (&item != items.begin()) {
            writer.write(between);
        }
        writer.writeItem(text, between);
    }
    writer.finish();
}

BaseString<wchar_t> multipleStringsToSingleString(const Array<BaseString<wchar_t>>& items, const wchar_t* delimiter) {
    BaseString<wchar_t> result;
    multipleStringsToSingleString(items, delimiter, result);
    return result;
}

}  // namespace vorel::util
