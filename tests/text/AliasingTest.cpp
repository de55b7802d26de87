/// \file
/// Inputs inside the output of the same call (docs/aliasing.md). Each operation must have the same result as with a
/// separate input. The guarded heap detects reads from memory that the output has released.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "support/Arrays.h"
#include "support/CaseName.h"
#include "support/Expect.h"
#include "support/Widths.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/text/Base64.h"
#include "vorel/text/Hex.h"
#include "vorel/text/Unicode.h"
#include "vorel/text/Url.h"
#include "vorel/values/Joining.h"
#include "vorel/values/ListParsing.h"
#include "vorel/values/Splitting.h"

namespace {

using vorel::Array;
using vorel::BaseString;
using vorel::Exception;
namespace util = vorel::util;
using Bytes = Array<unsigned char>;
using Texts = Array<BaseString<wchar_t>>;

// ---- Position of the input ------------------------------------------------------------------------------------------

enum class Place { Separate, InOutput };

/// All messages of an exception.
std::string messagesOf(const Exception& e) {
    std::string all;
    for (const std::wstring& message : test::messagesOf(e)) {
        all.append(message.begin(), message.end()) += '\n';
    }
    return all;
}

std::string bytesOf(const void* data, std::size_t bytes) {
    return {static_cast<const char*>(data), bytes};
}

/// The bytes of an output.
template <class T>
std::string outcomeOf(const BaseString<T>& output) {
    return bytesOf(output.view().data(), output.view().size() * sizeof(T));
}

template <class T>
std::string outcomeOf(const Array<T>& output) {
    return bytesOf(output.data(), output.size() * sizeof(T));
}

template <class T>
std::string outcomeOf(const Array<BaseString<T>>& output) {
    std::string all;
    for (const BaseString<T>& item : output) {
        all += outcomeOf(item) + '|';
    }
    return all;
}

/// Makes room for `bytes` bytes in the output, and returns a pointer to them. A string only reserves these bytes. An
/// array gets elements for them.
template <class T>
unsigned char* memoryOf(BaseString<T>& output, std::size_t bytes) {
    return reinterpret_cast<unsigned char*>(output.reserve(static_cast<unsigned int>(bytes / sizeof(T) + 1), true));
}

template <class T>
unsigned char* memoryOf(Array<T>& output, std::size_t bytes) {
    const auto count = static_cast<unsigned int>((bytes + sizeof(T) - 1) / sizeof(T));
    output.reserve(count, true);  // exactly as large as the input, so that appending makes the array grow
    output.setCount(count);
    return reinterpret_cast<unsigned char*>(output.data());
}

/// Runs `operation(input, output)`. Returns the operation's result or the messages of its exception, followed by '/'
/// and the bytes of the output. Before the call, the output contains `offset` units 'x', then `text` and a terminator.
/// The input is the text in the output, or a separate copy of it.
template <class Input, class Output, class Operation>
std::string withText(Place place, const std::basic_string<Input>& text, std::size_t offset, Operation&& operation) {
    const std::size_t bytes = (offset + text.size() + 1) * sizeof(Input);
    const std::basic_string<Input> whole = std::basic_string<Input>(offset, Input{'x'}) + text;
    Output output;
    unsigned char* const memory = memoryOf(output, bytes);
    std::memcpy(memory, whole.c_str(), bytes);
    const auto* const inside = reinterpret_cast<const Input*>(memory) + offset;
    const Input* const input = place == Place::InOutput ? inside : whole.c_str() + offset;
    std::string result;
    try {
        result = operation(input, output);
    } catch (const Exception& e) {
        result = messagesOf(e);
    }
    return result + '/' + outcomeOf(output);
}

// ---- Operations -----------------------------------------------------------------------------------------------------

/// An operation on a text of `units` units that begins `offset` units after the start of the output.
struct Row {
    const char* name;
    std::function<std::string(Place place, std::size_t units, std::size_t offset)> run;

    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};

template <class T>
std::basic_string<T> repeated(std::string_view pattern, std::size_t units) {
    std::basic_string<T> text;
    while (text.size() < units) {
        text += test::text<T>(pattern);
    }
    text.resize(units);
    if (sizeof(T) > 1) {
        std::replace(text.begin(), text.end(), static_cast<T>(0xE9), static_cast<T>(0x20AC));  // three bytes in UTF-8
    }
    // The last UTF-8 sequence must be complete, because otherwise the decoder would read past the text.
    for (std::size_t at = units; at != 0 && static_cast<std::make_unsigned_t<T>>(text[at - 1]) >= 0x80; --at) {
        text[at - 1] = 'z';
    }
    return text;
}

/// A row for an operation `run(input, output)`, which may return a number.
template <class Input, class Output, class Run>
Row row(const char* name, std::string_view pattern, Run run) {
    return {name, [=](Place place, std::size_t units, std::size_t offset) {
                return withText<Input, Output>(place, repeated<Input>(pattern, units), offset,
                                               [&](const Input* input, Output& output) {
                                                   if constexpr (std::is_void_v<decltype(run(input, output))>) {
                                                       run(input, output);
                                                       return std::string();
                                                   } else {
                                                       return std::to_string(run(input, output));
                                                   }
                                               });
            }};
}

const unsigned char* asBytes(const void* text) {
    return static_cast<const unsigned char*>(text);
}

template <class T>
unsigned int bytesIn(const T* text) {
    return static_cast<unsigned int>(std::basic_string_view<T>(text).size() * sizeof(T));
}

std::vector<Row> encodings() {
    using Wide = BaseString<wchar_t>;
    using Narrow = BaseString<char>;
    constexpr std::string_view kUrl = "a b%41+~/\xC3\xA9%zz";
    return {
        row<char, Narrow>("urlEncode", kUrl, [](auto* in, auto& out) { util::urlEncode(in, out, true, false); }),
        row<wchar_t, Wide>("urlEncode_Wide", kUrl, [](auto* in, auto& out) { util::urlEncode(in, out, true, true); }),
        row<char, Narrow>("urlEncodeComponent", kUrl,
                          [](auto* in, auto& out) { util::urlEncodeComponent(in, out, util::UrlQuery); }),
        row<wchar_t, Wide>("urlEncodeComponent_Wide", kUrl,
                           [](auto* in, auto& out) { util::urlEncodeComponent(in, out, util::UrlPath); }),
        row<char, Narrow>("urlDecode", kUrl, [](auto* in, auto& out) { util::urlDecode(in, out, 1); }),
        row<wchar_t, Wide>("urlDecode_Wide", kUrl, [](auto* in, auto& out) { util::urlDecode(in, out, 1); }),
        row<wchar_t, Wide>("urlDecode_Wide_Fails", "abc%80", [](auto* in, auto& out) { util::urlDecode(in, out, 1); }),
        row<char, Narrow>("Base64_EncodeRange", "abc",
                          [](auto* in, auto& out) { util::Base64::EncodeRange(asBytes(in), 0, bytesIn(in), out); }),
        row<wchar_t, Wide>(
            "Base64_EncodeRange_Wide", "abc",
            [](auto* in, auto& out) { util::Base64::EncodeRange(asBytes(in), 1, bytesIn(in) - 1, out); }),
        row<char, Bytes>("Base64_Decode", "QUJDREVG",
                         [](auto* in, auto& out) { return util::Base64::Decode(in, out); }),
        row<wchar_t, Bytes>("Base64_Decode_Wide", "QUJDREVG",
                            [](auto* in, auto& out) { return util::Base64::Decode(in, out); }),
        row<char, Bytes>("hexStringToByteArray", "4142aF",
                         [](auto* in, auto& out) { util::hexStringToByteArray(in, out); }),
        row<wchar_t, Bytes>("hexStringToByteArray_Wide", "4142aF",
                            [](auto* in, auto& out) { util::hexStringToByteArray(in, out); }),
        row<char, Bytes>("hexStringToByteArray_Counted", "4142aF",
                         [](auto* in, auto& out) { util::hexStringToByteArray(in, 2, out); }),
        row<wchar_t, Bytes>("hexStringToByteArray_Counted_Wide", "4142aF",
                            [](auto* in, auto& out) { util::hexStringToByteArray(in, 2, out); }),
        row<char, Wide>("ConvertUTF8toString", "ab\xC3\xA9\xE2\x82\xAC",
                        [](auto* in, auto& out) { return util::ConvertUTF8toString(out, asBytes(in), -1, true); }),
        row<char, Wide>("ConvertUTF8toString_Narrow", "ab\xC3\xA9\xE2\x82\xAC",
                        [](auto* in, auto& out) { return util::ConvertUTF8toString(out, in, -1, true); }),
        row<char, Wide>("ConvertUTF8toString_Narrow_Fails", "abc\x80z",
                        [](auto* in, auto& out) { return util::ConvertUTF8toString(out, in, -1, true); }),
        row<wchar_t, Bytes>("ConvertStringtoUTF8", "ab\xE9",
                            [](auto* in, auto& out) { util::ConvertStringtoUTF8(in, out, true, -1); }),
        row<wchar_t, Narrow>("ConvertStringtoUTF8_String", "ab\xE9",
                             [](auto* in, auto& out) { util::ConvertStringtoUTF8(in, out, -1); }),
        row<wchar_t, Wide>("ConvertUTF16toString", "ab\xE9",
                           [](auto* in, auto& out) { util::ConvertUTF16toString(out, asBytes(in), 5000); }),
        row<char, Wide>("ConvertUTF16toString_Narrow", "ab\xE9",
                        [](auto* in, auto& out) { util::ConvertUTF16toString(out, in, 2); }),
        row<char, Wide>("ConvertUTF16toString_Narrow_Fails", "ab\xE9",
                        [](auto* in, auto& out) { util::ConvertUTF16toString(out, in, -1); }),
        row<wchar_t, Bytes>("ConvertStringtoUTF16", "ab\xE9",
                            [](auto* in, auto& out) { util::ConvertStringtoUTF16(in, out, false, true, -1); }),
        row<wchar_t, Bytes>("EncodeAndAppendToBuffer", "ab\xE9",
                            [](auto* in, auto& out) { util::EncodeAndAppendToBuffer(in, out); }),
    };
}

std::vector<Row> values() {
    using Wide = BaseString<wchar_t>;
    using Narrow = BaseString<char>;
    return {
        row<char, Array<int>>("stringToIntegerArray", "1,22 3",
                              [](auto* in, auto& out) { return util::stringToIntegerArray(in, out, false); }),
        row<wchar_t, Array<int>>("stringToIntegerArray_Appended", "1,22 3",
                                 [](auto* in, auto& out) { return util::stringToIntegerArray(in, out, true); }),
        row<wchar_t, Array<unsigned int>>(
            "stringToUIntegerArray", "1,22 3",
            [](auto* in, auto& out) { return util::stringToUIntegerArray(in, out, true); }),
        row<char, Array<double>>("stringToDoubleArray", "1 2e3 ",
                                 [](auto* in, auto& out) { return util::stringToDoubleArray(in, out, true); }),
        row<wchar_t, Array<double>>("stringToDoubleArray_Wide", "1 2e3 ",
                                    [](auto* in, auto& out) { return util::stringToDoubleArray(in, out, false); }),
        row<char, Array<bool>>("stringToBooleanArray", "t 0 1 ",
                               [](auto* in, auto& out) { return util::stringToBooleanArray(in, out, true); }),
        row<wchar_t, Array<bool>>("stringToBooleanArray_Wide", "t 0 1 ",
                                  [](auto* in, auto& out) { return util::stringToBooleanArray(in, out, false); }),
        row<wchar_t, Array<int>>("stringToLongRanges_Starts", "1-5,7,",
                                 [](auto* in, auto& out) {
                                     Array<int> ends;
                                     util::stringToLongRanges(in, out, ends);
                                     return ends.size();
                                 }),
        row<wchar_t, Array<int>>("stringToLongRanges_Ends", "1-5,7,",
                                 [](auto* in, auto& out) {
                                     Array<int> starts;
                                     util::stringToLongRanges(in, starts, out);
                                     return starts.size();
                                 }),
        row<wchar_t, Array<int>>("stringToLongRanges_Fails", "1-a",
                                 [](auto* in, auto& out) {
                                     Array<int> starts;
                                     util::stringToLongRanges(in, starts, out);
                                 }),
        row<wchar_t, Wide>("multipleStringsToSingleString_Delimiter", ",b",
                           [](auto* in, auto& out) {
                               const auto items = test::stringsOf<wchar_t>({L"a", std::wstring(100, L'b'), L"c,"});
                               util::multipleStringsToSingleString(items, in, out);
                           }),
        row<char, Narrow>("BaseString_Assign", "abc", [](auto* in, auto& out) { out = in; }),
        row<wchar_t, Wide>("BaseString_AssignView", "abc", [](auto* in, auto& out) { out = std::wstring_view(in, 1); }),
        row<char, Narrow>("BaseString_Append", "abc", [](auto* in, auto& out) { out.append(in); }),
        row<wchar_t, Wide>("BaseString_Append_Wide", "abc", [](auto* in, auto& out) { out.append(in, 1); }),
        row<char, Narrow>("BaseString_Format", "abc", [](auto* in, auto& out) { out.format("<%s %s>", in, in); }),
        row<wchar_t, Wide>("BaseString_Format_Wide", "abc", [](auto* in, auto& out) { out.format(L"<%ls>", in); }),
        row<wchar_t, Wide>("BaseString_Format_Itself", "abc", [](auto* in, auto& out) { out.format(in); }),
        row<char, Array<char>>("Array_Append", "abc", [](auto* in, auto& out) { out.append(*in); }),
        row<char, Array<char>>("Array_AppendMany", "abc", [](auto* in, auto& out) { out.append(in, 1); }),
    };
}

// ---- Buffers of the caller ------------------------------------------------------------------------------------------

/// A row for an operation `run(input, output, capacity)`. The output is a buffer of 8,000 bytes. The input is a text in
/// this buffer, or a separate copy of the text.
template <class Input, class Unit, class Run>
Row bufferRow(const char* name, std::string_view pattern, Run run) {
    return {name, [=](Place place, std::size_t units, std::size_t offset) {
                constexpr std::size_t kCapacity = 8000 / sizeof(Unit);
                const std::basic_string<Input> text =
                    std::basic_string<Input>(offset, Input{'x'}) + repeated<Input>(pattern, units);
                std::vector<Unit> buffer(kCapacity);
                std::memcpy(buffer.data(), text.c_str(), (text.size() + 1) * sizeof(Input));
                const auto* const inside = reinterpret_cast<const Input*>(buffer.data());
                const Input* const input = (place == Place::InOutput ? inside : text.c_str()) + offset;
                std::string result;
                try {
                    result = std::to_string(run(input, buffer.data(), kCapacity));
                } catch (const Exception& e) {
                    result = messagesOf(e);
                }
                // The whole buffer: the written text, then the rest of the input.
                return result + '/' + bytesOf(buffer.data(), kCapacity * sizeof(Unit));
            }};
}

std::vector<Row> buffers() {
    const auto decode = [](const char* in, wchar_t* out, std::size_t capacity) {
        return util::ConvertUTF8toString(out, static_cast<unsigned int>(capacity), asBytes(in), -1, true);
    };
    return {
        bufferRow<char, wchar_t>("ConvertUTF8toString_Buffer", "ab\xC3\xA9\xE2\x82\xAC", decode),
        bufferRow<char, wchar_t>("ConvertUTF8toString_Buffer_Fails", "ab\x80z", decode),
    };
}

// ---- Lists of texts -------------------------------------------------------------------------------------------------

/// A row for an operation `run(first, second, list)`. `second` is the second item of the list. `first` is the first
/// item from the unit `offset` on, so it lacks the units before. Both lie in the list, or in a copy of the list. The
/// list has no spare capacity.
template <class T, class Run>
Row listRow(const char* name, std::string_view second, Run run) {
    return {name, [=](Place place, std::size_t units, std::size_t offset) {
                const auto first = repeated<T>("a,\"b\"c,,", units);
                const Array<BaseString<T>> copy = test::stringsOf<T>({first, test::text<T>(second)});
                Array<BaseString<T>> list(copy);  // has as many slots as elements, unlike `copy`
                // cppcheck-suppress duplicateExpressionTernary ; equal texts in different objects
                const Array<BaseString<T>>& source = place == Place::InOutput ? list : copy;
                run(source[0].view().data() + std::min(offset, units), source[1].c_str(), list);
                return outcomeOf(list);
            }};
}

std::vector<Row> lists() {
    return {
        listRow<char>("splitString", ",", [](auto* text, auto* at, auto& list) { util::splitString(text, at, list); }),
        listRow<wchar_t>("splitString_Wide", ",,",
                         [](auto* text, auto* at, auto& list) { util::splitString(text, at, list); }),
        listRow<char>(
            "singleCStringToMultipleCStrings", ",;",
            [](auto* text, auto* at, auto& list) { util::singleCStringToMultipleCStrings(text, at, list, true); }),
        listRow<wchar_t>(
            "singleStringToMultipleStrings", ",;",
            [](auto* text, auto* at, auto& list) { util::singleStringToMultipleStrings(text, at, list, false); }),
        listRow<wchar_t>("multipleStringsToSingleString_ResultIsAnItem", ",",
                         [](auto* text, auto*, auto& list) {
                             // If the input is separate from the list, the output is a separate string, too.
                             const bool isItem = text >= list[0].c_str() && text <= list[0].c_str() + list[0].length();
                             BaseString<wchar_t> apart;
                             BaseString<wchar_t>& result = isItem ? list[0] : apart;
                             util::multipleStringsToSingleString(list, list[1].c_str(), result);
                             list[0] = result;
                         }),
        listRow<wchar_t>("Array_AppendElement", ",", [](auto*, auto*, auto& list) { list.append(list[0]); }),
    };
}

/// Tokenizes a text. The delimiter is a tail of the text, or a copy of this tail.
template <class T>
std::string tokenized(Place place, std::size_t units, std::size_t offset) {
    std::basic_string<T> text = repeated<T>("ab,c,", units);
    const std::size_t at = std::min(offset, units);
    const std::basic_string<T> delimiter = text.substr(at);
    Array<T*> tokens;
    const int count =
        util::tokenizeString(text.data(), place == Place::InOutput ? text.data() + at : delimiter.c_str(), tokens, -1);
    return std::to_string(count) + bytesOf(text.data(), text.size() * sizeof(T));
}

std::vector<Row> allRows() {
    std::vector<Row> all = {{"tokenizeString", tokenized<char>}, {"tokenizeString_Wide", tokenized<wchar_t>}};
    for (const std::vector<Row>& rows : {encodings(), values(), buffers(), lists()}) {
        all.insert(all.end(), rows.begin(), rows.end());
    }
    return all;
}

class InputInOutput : public testing::TestWithParam<Row> {};

TEST_P(InputInOutput, GivesTheSameResultAsSeparateInput) {
    for (const std::size_t units : {1u, 2u, 3u, 7u, 8u, 12u, 40u, 96u, 300u, 1000u}) {
        for (const std::size_t offset : {0u, 1u, 2u, 5u, 17u}) {
            SCOPED_TRACE(std::to_string(units) + " units at offset " + std::to_string(offset));
            EXPECT_EQ(GetParam().run(Place::InOutput, units, offset), GetParam().run(Place::Separate, units, offset));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Text, InputInOutput, testing::ValuesIn(allRows()), test::caseName);

}  // namespace
