/// \file
/// Operations on a text that another thread or process changes concurrently. The result is unspecified, but no
/// operation may write beyond its memory. The guarded heap detects such writes. Each operation runs repeatedly for each
/// pair of texts before and after the change. While the operation reads the text, the text changes once: in the first
/// run at the first switch, in the second run at the second switch, and so on (ChangingText.h explains switches). The
/// last run is the first run in which the operation ends before the change, or run 100.

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/CaseName.h"
#include "support/ChangingText.h"
#include "support/Widths.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/text/Base64.h"
#include "vorel/text/CodePages.h"
#include "vorel/text/Daylight.h"
#include "vorel/text/Hex.h"
#include "vorel/text/Unicode.h"
#include "vorel/text/Url.h"
#include "vorel/values/BooleanParsing.h"
#include "vorel/values/Comparing.h"
#include "vorel/values/Joining.h"
#include "vorel/values/ListParsing.h"
#include "vorel/values/NumberParsing.h"
#include "vorel/values/Splitting.h"

namespace {

using vorel::Array;
using vorel::BaseString;
using vorel::Exception;
namespace util = vorel::util;
using Bytes = Array<unsigned char>;

constexpr int kUtf8Page = 65001;

/// A string or an array, constructed from its three fields. It points to memory that it does not own, so its destructor
/// never runs.
template <class Object, class Item>
class Borrowed {
public:
    Borrowed(const Item* items, unsigned int first, unsigned int second) {
        static_assert(sizeof(Object) == sizeof items + sizeof first + sizeof second);
        std::memcpy(m_object, &items, sizeof items);
        std::memcpy(m_object + sizeof items, &first, sizeof first);
        std::memcpy(m_object + sizeof items + sizeof first, &second, sizeof second);
    }
    [[nodiscard]] const Object& get() const { return *std::launder(reinterpret_cast<const Object*>(m_object)); }

private:
    alignas(Object) unsigned char m_object[sizeof(Object)];
};

template <class T>
Borrowed<BaseString<T>, T> asString(const T* text, unsigned int units) {
    return {text, units + 1, units};
}

template <class T>
Borrowed<Array<T>, T> asArray(const T* items, unsigned int count) {
    return {items, count, count};
}

template <class T>
struct Operation {
    const char* name;
    void (*run)(T* text, unsigned int units);

    friend void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }
};

// ---- Both widths ----------------------------------------------------------------------------------------------------

template <class T>
void split(const T* text, const T* delimiter) {
    Array<BaseString<T>> parts;
    util::splitString(text, delimiter, parts);
}

void splitList(const char* text, const char* delimiters, Array<BaseString<char>>& items) {
    util::singleCStringToMultipleCStrings(text, delimiters, items, true);
}

void splitList(const wchar_t* text, const wchar_t* delimiters, Array<BaseString<wchar_t>>& items) {
    util::singleStringToMultipleStrings(text, delimiters, items, true);
}

void format(const char* text, BaseString<char>& output) {
    output.format("%s", text);
}

void format(const wchar_t* text, BaseString<wchar_t>& output) {
    output.format(L"%ls", text);
}

Exception exceptionWith(const char* text) {
    return Exception("%s", text);
}

Exception exceptionWith(const wchar_t* text) {
    return Exception(L"%ls", text);
}

template <class T>
std::vector<Operation<T>> operationsOfBothWidths() {
    using Text = BaseString<T>;
    return {
        {"urlEncode",
         [](T* text, unsigned int) {
             Text output;
             util::urlEncode(text, output, true, false);
         }},
        {"urlEncode_PlusForASpace",
         [](T* text, unsigned int) {
             Text output;
             util::urlEncode(text, output, true, true);
         }},
        {"urlEncodeComponent",
         [](T* text, unsigned int) {
             Text output;
             util::urlEncodeComponent(text, output, util::UrlQueryParameter);
         }},
        {"urlDecode",
         [](T* text, unsigned int) {
             Text output;
             util::urlDecode(text, output, 1);
         }},
        {"Base64_Decode",
         [](T* text, unsigned int) {
             Bytes bytes;
             util::Base64::Decode(text, bytes);
         }},
        {"Base64_EncodeRange",
         [](T* text, unsigned int units) {
             Text output;
             util::Base64::EncodeRange(reinterpret_cast<unsigned char*>(text), 0, units, output);
         }},
        {"Base64_Encode",
         [](T* text, unsigned int units) {
             Text output;
             util::Base64::Encode(asArray(reinterpret_cast<unsigned char*>(text), units).get(), output);
         }},
        {"byteArrayToHexString",
         [](T* text, unsigned int units) {
             Text output;
             util::byteArrayToHexString(asArray(reinterpret_cast<unsigned char*>(text), units).get(), output, true);
         }},
        {"hexStringToByteArray",
         [](T* text, unsigned int) {
             Bytes bytes;
             util::hexStringToByteArray(text, bytes);
         }},
        {"hexStringToByteArray_Counted",
         [](T* text, unsigned int units) {
             Bytes bytes;
             util::hexStringToByteArray(text, units / 2 * 2, bytes);
         }},
        {"BaseString_Construct", [](T* text, unsigned int) { const Text copy(text); }},
        {"BaseString_Append",
         [](T* text, unsigned int) {
             Text output(test::text<T>("abc").c_str());
             output += text;
         }},
        {"BaseString_Format",
         [](T* text, unsigned int) {
             Text output;
             format(text, output);
         }},
        {"Exception", [](T* text, unsigned int) { const Exception e = exceptionWith(text); }},
        {"splitString", [](T* text, unsigned int) { split<T>(text, test::text<T>(",,").c_str()); }},
        {"splitString_Delimiter", [](T* text, unsigned int) { split<T>(test::text<T>("a,,b%%").c_str(), text); }},
        {"splitList",
         [](T* text, unsigned int) {
             Array<BaseString<T>> items;
             splitList(text, test::text<T>(", ").c_str(), items);
         }},
        {"splitList_Delimiters",
         [](T* text, unsigned int) {
             Array<BaseString<T>> items;
             splitList(test::text<T>("1%2\"a,b \"").c_str(), text, items);
         }},
        {"tokenizeString",
         [](T* text, unsigned int) {
             Array<T*> tokens;
             util::tokenizeString(text, test::text<T>(",").c_str(), tokens, -1);
         }},
        {"tokenizeString_Limited",
         [](T* text, unsigned int) {
             Array<T*> tokens;
             util::tokenizeString(text, test::text<T>(",").c_str(), tokens, 0x7FFFFFFF);
         }},
        {"stringToIntegerArray",
         [](T* text, unsigned int) {
             Array<int> values;
             util::stringToIntegerArray(text, values, false);
         }},
        {"stringToDoubleArray",
         [](T* text, unsigned int) {
             Array<double> values;
             util::stringToDoubleArray(text, values, false);
         }},
        {"stringToBooleanArray",
         [](T* text, unsigned int) {
             Array<bool> values;
             util::stringToBooleanArray(text, values, false);
         }},
        {"stringToDouble", [](T* text, unsigned int) { util::stringToDouble(text, nullptr); }},
        {"tryStringToInteger",
         [](T* text, unsigned int) {
             int value = 0;
             util::tryStringToInteger(text, value);
         }},
        {"strcmpAdvanced",
         [](T* text, unsigned int) {
             util::strcmpAdvanced(text, text, static_cast<util::strcmpAdvFlag>(util::SCMP_Numeric));
         }},
    };
}

// ---- One width ------------------------------------------------------------------------------------------------------

template <class T>
std::vector<Operation<T>> operations();

template <>
std::vector<Operation<char>> operations() {
    std::vector<Operation<char>> all = operationsOfBothWidths<char>();
    all.insert(all.end(),
               {
                   {"ConvertUTF8toString",
                    [](char* text, unsigned int) {
                        BaseString<wchar_t> output;
                        util::ConvertUTF8toString(output, text, -1, true);
                    }},
                   {"ConvertUTF8toString_Bounded",
                    [](char* text, unsigned int units) {
                        BaseString<wchar_t> output;
                        util::ConvertUTF8toString(output, text, static_cast<int>(units), false);
                    }},
                   {"ConvertUTF8toString_Buffer",
                    [](char* text, unsigned int units) {
                        BaseString<wchar_t> output;
                        util::ConvertUTF8toString(output.reserve(units - 1, true), units,
                                                  reinterpret_cast<unsigned char*>(text), -1, false);
                    }},
                   {"ConvertUTF16toString",
                    [](char* text, unsigned int units) {
                        BaseString<wchar_t> output;
                        util::ConvertUTF16toString(output, text, static_cast<int>(units));
                    }},
                   {"Daylight_Encode",
                    [](char* text, unsigned int units) {
                        BaseString<wchar_t> output;
                        util::Daylight::Encode(asArray(reinterpret_cast<unsigned char*>(text), units).get(), output);
                    }},
                   {"Hex_Encode",
                    [](char* text, unsigned int units) {
                        BaseString<wchar_t> output;
                        util::Hex::Encode(asArray(reinterpret_cast<unsigned char*>(text), units).get(), output);
                    }},
                   {"iconv_to_wc",
                    [](char* text, unsigned int) {
                        BaseString<wchar_t> output;
                        util::iconv_to_wc(util::iconv_open_codepage(0, kUtf8Page), text, static_cast<std::size_t>(-1),
                                          output.reserve(600, true), 600);
                    }},
               });
    return all;
}

template <>
std::vector<Operation<wchar_t>> operations() {
    std::vector<Operation<wchar_t>> all = operationsOfBothWidths<wchar_t>();
    all.insert(
        all.end(),
        {
            {"ConvertStringtoUTF8",
             [](wchar_t* text, unsigned int) {
                 BaseString<char> output;
                 util::ConvertStringtoUTF8(text, output, -1);
             }},
            {"ConvertStringtoUTF8_Array",
             [](wchar_t* text, unsigned int units) {
                 Bytes output;
                 util::ConvertStringtoUTF8(text, output, true, static_cast<int>(units));
             }},
            {"ConvertStringtoUTF16",
             [](wchar_t* text, unsigned int) {
                 Bytes output;
                 util::ConvertStringtoUTF16(text, output, false, true, -1);
             }},
            {"EncodeAndAppendToBuffer",
             [](wchar_t* text, unsigned int) {
                 Bytes output;
                 util::EncodeAndAppendToBuffer(text, output);
             }},
            {"Daylight_Decode",
             [](wchar_t* text, unsigned int units) {
                 Bytes bytes;
                 util::Daylight::Decode(asString(text, units / 4 * 4 - 3).get(), bytes);
             }},
            {"Hex_Decode",
             [](wchar_t* text, unsigned int units) {
                 Bytes bytes;
                 util::Hex::Decode(asString(text, units).get(), bytes);
             }},
            {"multipleStringsToSingleString",
             [](wchar_t* text, unsigned int units) {
                 const auto item = asString(text, units);
                 BaseString<wchar_t> output;
                 util::multipleStringsToSingleString(asArray(&item.get(), 1).get(), L",", output);
             }},
            {"multipleStringsToSingleString_LongDelimiter",
             [](wchar_t* text, unsigned int units) {
                 const auto item = asString(text, units);
                 BaseString<wchar_t> output;
                 util::multipleStringsToSingleString(asArray(&item.get(), 1).get(), L",,", output);
             }},
            {"multipleStringsToSingleString_Delimiter",
             [](wchar_t* text, unsigned int) {
                 Array<BaseString<wchar_t>> items;
                 items.setCount(3);
                 BaseString<wchar_t> output;
                 util::multipleStringsToSingleString(items, text, output);
             }},
            {"stringToLongRanges",
             [](wchar_t* text, unsigned int) {
                 Array<int> starts;
                 Array<int> ends;
                 util::stringToLongRanges(text, starts, ends);
             }},
            {"stringToUIntegerArray",
             [](wchar_t* text, unsigned int) {
                 Array<unsigned int> values;
                 util::stringToUIntegerArray(text, values, false);
             }},
            {"stringVersionAtLeast", [](wchar_t* text, unsigned int) { util::stringVersionAtLeast(text, text); }},
            {"iconv_from_wc",
             [](wchar_t* text, unsigned int) {
                 BaseString<char> output;
                 util::iconv_from_wc(util::iconv_open_codepage(kUtf8Page, 0), text, static_cast<std::size_t>(-1),
                                     output.reserve(600, true), 600, nullptr);
             }},
        });
    return all;
}

// ---- The test -------------------------------------------------------------------------------------------------------

/// The patterns that the texts repeat. The results of the operations have different lengths for different patterns. The
/// last two patterns contain a zero, which ends the text early.
template <class T>
std::vector<std::basic_string<T>> patterns() {
    std::vector<std::basic_string<T>> all;
    for (const char* pattern : {"a", "%", "\xFF", "\"", "1,", " ,\"", "%41+", "QUJD"}) {
        all.push_back(test::text<T>(pattern));
    }
    // U+00E9, U+20AC and U+1F600, which have different lengths in UTF-8.
    all.push_back(sizeof(T) == 1 ? test::text<T>("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80")
                                 : std::basic_string<T>{T(0xE9), T(0x20AC), T(0xD83D), T(0xDE00)});
    all.push_back(sizeof(T) == 1 ? test::text<T>("\xE2\x82\xAC") : std::basic_string<T>{T(0x20AC)});
    all.push_back(std::basic_string<T>(40, T{'9'}) + T{});
    all.push_back(std::basic_string<T>(1, T{}));
    return all;
}

template <class T>
class ChangingText : public testing::TestWithParam<Operation<T>> {
protected:
    /// Disables logging, because many calls fail.
    static void SetUpTestSuite() { Exception::DisableThreadErrorLogging(true); }
    static void TearDownTestSuite() { Exception::DisableThreadErrorLogging(false); }

    static void run(const Operation<T>& operation, T* text) {
        try {
            operation.run(text, static_cast<unsigned int>(test::ChangingText<T>::kUnits));
        } catch (const Exception&) {  // thrown by operations that reject the text
        }
    }

    /// Runs the operation with a text that changes at the first switch, then with a text that changes at the second
    /// switch, and so on (see `test::ChangingText`).
    static void runWithEachChange(const Operation<T>& operation) {
        constexpr unsigned int kMaxSwitches = 100;
        unsigned int most = 0;
        for (const std::basic_string<T>& before : patterns<T>()) {
            for (const std::basic_string<T>& after : patterns<T>()) {
                test::ChangingText<T> text(before, after);
                unsigned int nth = 0;
                do {
                    text.changeAt(++nth);
                    run(operation, text.data());
                    most = std::max(most, text.switches());
                } while (text.switches() >= nth && nth != kMaxSwitches);
            }
        }
        EXPECT_NE(most, 0u) << "the operation never read the text";
    }
};

using ChangingBytes = ChangingText<char>;
TEST_P(ChangingBytes, NeverWritesBeyondTheOutput) {
    runWithEachChange(GetParam());
}
INSTANTIATE_TEST_SUITE_P(Text, ChangingBytes, testing::ValuesIn(operations<char>()), test::caseName);

using ChangingUnits = ChangingText<wchar_t>;
TEST_P(ChangingUnits, NeverWritesBeyondTheOutput) {
    runWithEachChange(GetParam());
}
INSTANTIATE_TEST_SUITE_P(Text, ChangingUnits, testing::ValuesIn(operations<wchar_t>()), test::caseName);

}  // namespace
