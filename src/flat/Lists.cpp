#include "vorel/flat/Lists.h"

#include <string_view>

#include "flat/Call.h"
#include "flat/Input.h"
#include "flat/Output.h"
#include "values/ListReaders.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"
#include "vorel/values/Joining.h"
#include "vorel/values/ListParsing.h"
#include "vorel/values/Splitting.h"

using vorel::Array;
using vorel::BaseString;
using vorel::flat::ArgumentError;
using vorel::flat::fail;
using vorel::flat::guardedCall;
using vorel::flat::TextOutput;
using vorel::flat::ValuesOutput;
using vorel::flat::WideText;
using vorel::flat::Zeros;

namespace {

using Texts = Array<BaseString<wchar_t>>;

/// Reads items with `read(text, items)` and copies them to the output. `read` returns whether the whole text is a list.
template <class Item, class Value, class Read>
vorel_status parseList(const wchar_t* function, const vorel_char16* text, size_t length, Value* values, size_t capacity,
                       size_t* count, Read read) {
    return guardedCall(function, [&] {
        const ValuesOutput<Value> out(values, capacity, count);
        const WideText input(text, length);
        Array<Item> items;
        if (!read(input.c_str(), items)) {
            return fail(VOREL_ERROR_INVALID_TEXT, L"The text is not a list of values of this type");
        }
        return out.write(items);
    });
}

/// All items in one text, each followed by a zero.
Array<wchar_t> withZeros(const Texts& items) {
    Array<wchar_t> list;
    for (const BaseString<wchar_t>& item : items) {
        const std::wstring_view text = item.view();
        list.append(text.data(), static_cast<unsigned int>(text.size()) + 1);
    }
    return list;
}

Texts itemsOf(std::wstring_view list) {
    Texts items;
    while (!list.empty()) {
        const std::size_t end = list.find(L'\0');
        items.append(BaseString<wchar_t>(list.data(), static_cast<unsigned int>(end)));
        list.remove_prefix(end + 1);
    }
    return items;
}

}  // namespace

// ---- Values ---------------------------------------------------------------------------------------------------------

vorel_status vorel_parse_int32_list(const vorel_char16* text, size_t length, int32_t* values, size_t capacity,
                                    size_t* count) {
    return parseList<int>(L"vorel_parse_int32_list", text, length, values, capacity, count,
                          [](const wchar_t* from, Array<int>& to) { return vorel::values::readIntegers(from, to); });
}

vorel_status vorel_parse_uint32_list(const vorel_char16* text, size_t length, uint32_t* values, size_t capacity,
                                     size_t* count) {
    return parseList<unsigned int>(
        L"vorel_parse_uint32_list", text, length, values, capacity, count,
        [](const wchar_t* from, Array<unsigned int>& to) { return vorel::values::readIntegers(from, to); });
}

vorel_status vorel_parse_double_list(const vorel_char16* text, size_t length, double* values, size_t capacity,
                                     size_t* count) {
    return parseList<double>(
        L"vorel_parse_double_list", text, length, values, capacity, count,
        [](const wchar_t* from, Array<double>& to) { return vorel::values::readDoubles(from, to); });
}

vorel_status vorel_parse_boolean_list(const vorel_char16* text, size_t length, int32_t* values, size_t capacity,
                                      size_t* count) {
    return parseList<int32_t>(L"vorel_parse_boolean_list", text, length, values, capacity, count,
                              [](const wchar_t* from, Array<int32_t>& to) {
                                  Array<bool> booleans;
                                  const bool isList = vorel::values::readBooleans(from, booleans);
                                  for (const bool value : booleans) {
                                      to.append(int32_t{value});
                                  }
                                  return isList;
                              });
}

vorel_status vorel_parse_ranges(const vorel_char16* text, size_t length, vorel_range* ranges, size_t capacity,
                                size_t* count) {
    return guardedCall(L"vorel_parse_ranges", VOREL_ERROR_INVALID_TEXT, [&] {
        const ValuesOutput<vorel_range> out(ranges, capacity, count);
        const WideText input(text, length);
        Array<int> starts;
        Array<int> ends;
        vorel::util::stringToLongRanges(input.c_str(), starts, ends);
        Array<vorel_range> pairs;
        for (unsigned int index = 0; index != starts.size(); ++index) {
            pairs.append({starts[index], ends[index]});
        }
        return out.write(pairs);
    });
}

// ---- Texts ----------------------------------------------------------------------------------------------------------

vorel_status vorel_split_text(const vorel_char16* text, size_t length, const vorel_char16* delimiter,
                              size_t delimiterLength, vorel_char16* items, size_t capacity, size_t* itemsLength) {
    return guardedCall(L"vorel_split_text", [&] {
        const TextOutput out(items, capacity, itemsLength);
        const WideText input(text, length);
        const WideText between(delimiter, delimiterLength);
        Texts parts;
        vorel::util::splitString(input.c_str(), between.c_str(), parts);
        return out.write(withZeros(parts));
    });
}

vorel_status vorel_split_list(const vorel_char16* text, size_t length, const vorel_char16* delimiters,
                              size_t delimitersLength, int32_t trim, vorel_char16* items, size_t capacity,
                              size_t* itemsLength) {
    return guardedCall(L"vorel_split_list", [&] {
        const TextOutput out(items, capacity, itemsLength);
        const WideText input(text, length);
        const WideText between(delimiters, delimitersLength);
        Texts parts;
        vorel::util::singleStringToMultipleStrings(input.c_str(), between.c_str(), parts, trim != 0);
        return out.write(withZeros(parts));
    });
}

vorel_status vorel_join_list(const vorel_char16* items, size_t length, const vorel_char16* delimiter,
                             size_t delimiterLength, vorel_char16* output, size_t capacity, size_t* outputLength) {
    return guardedCall(L"vorel_join_list", [&] {
        const TextOutput out(output, capacity, outputLength);
        if (length == VOREL_ZERO_TERMINATED) {
            throw ArgumentError{VOREL_ERROR_INVALID_ARGUMENT, L"A list needs an explicit length"};
        }
        const WideText list(items, length, Zeros::Allowed);
        const WideText between(delimiter, delimiterLength);
        if (!list.view().empty() && list.view().back() != 0) {
            return fail(VOREL_ERROR_INVALID_TEXT, L"The last item is not followed by a zero");
        }
        BaseString<wchar_t> joined;
        vorel::util::multipleStringsToSingleString(itemsOf(list.view()), between.c_str(), joined);
        return out.write(joined.view());
    });
}
