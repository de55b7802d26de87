// Writes one item of a joined wide text, with quotes if necessary, and compares the text with the reference. If the
// item is not empty and the delimiter is one unit other than a quotation mark, splitting the text must restore the
// item.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "algorithms/JoinedItems.h"
#include "algorithms/Splitting.h"
#include "support/Input.h"
#include "support/TextReference.h"

namespace {

using vorel::algorithms::isQuotedAlready;
using vorel::algorithms::joinedItemCapacity;
using vorel::algorithms::kUnitBlock;
using vorel::algorithms::QuotedItems;
using vorel::algorithms::Quotes;
using vorel::algorithms::writeJoinedItem;

std::wstring widened(const std::u16string& text) {
    return {text.begin(), text.end()};
}

/// Joins one item. The item is in a buffer of whole blocks, and the output has the capacity that the item may need.
void join(const std::u16string& item, const std::u16string& delimiter, const fuzz::Placement& source,
          const fuzz::Placement& target) {
    const std::size_t blocks = (item.size() + kUnitBlock - 1) / kUnitBlock * kUnitBlock;
    auto* const from = fuzz::inputPages().allocate<char16_t>(blocks, source);
    std::copy(item.begin(), item.end(), from);
    auto* const out = fuzz::outputPages().allocate<char16_t>(joinedItemCapacity(item.size()), target);
    const char16_t* const end =
        writeJoinedItem(std::u16string_view(from, item.size()), std::u16string_view(delimiter), out);
    const std::u16string joined(out, static_cast<std::size_t>(end - out));
    const std::wstring expected = test::isToBeQuoted(widened(item), widened(delimiter))
                                      ? test::joined({widened(item), {}}, widened(delimiter))
                                      : widened(item) + widened(delimiter);
    fuzz::check(widened(joined + delimiter) == expected, "the item is written as expected");
    fuzz::check(isQuotedAlready(std::u16string_view(item)) ==
                    (item.size() > 1 && item[0] == u'"' && item[item.size() - 1] == u'"'),
                "isQuotedAlready checks for quotation marks at both ends of the item");

    // With a delimiter of one unit other than a quotation mark, splitting restores every item that is not empty.
    if (delimiter.size() != 1 || delimiter[0] == u'"' || item.empty()) {
        return;
    }
    std::u16string back;
    QuotedItems<char16_t> items(joined, delimiter);
    if (!items.isQuoted() || items.consumeQuoted(back) != Quotes::Closed) {
        back = items.consumePlain();
    }
    fuzz::check(back == item && items.atEnd(), "splitting restores the item");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const fuzz::Placement source = input.placement();
    const fuzz::Placement target = input.placement();
    const std::size_t length = input.upTo(6);
    const std::u16string delimiter = input.text<char16_t>(length);
    join(input.restAsText<char16_t>(), delimiter, source, target);
    return 0;
}
