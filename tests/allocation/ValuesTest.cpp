// Parses lists, splits and joins strings, and appends numbers to strings, with a failing heap. The other functions of
// include/vorel/values do not allocate memory.

#include <cstring>
#include <string>
#include <typeinfo>
#include <vector>

#include "allocation/Walker.h"
#include "support/Arrays.h"
#include "vorel/exceptions/ExceptionFamily.h"
#include "vorel/values/BooleanParsing.h"
#include "vorel/values/Comparing.h"
#include "vorel/values/Joining.h"
#include "vorel/values/ListParsing.h"
#include "vorel/values/NumberFormatting.h"
#include "vorel/values/NumberParsing.h"
#include "vorel/values/Splitting.h"

namespace {

using vorel::Array;
using vorel::BaseString;
namespace util = vorel::util;

const std::wstring kFull(15, L'x');  // fills the smallest buffer up to the terminator

void appendNumber(Attempt& attempt, void (*append)(BaseString<wchar_t>&), const wchar_t* number) {
    BaseString<wchar_t> text(kFull.c_str());
    attempt.perform([&] { append(text); });
    attempt.expectCompletedOrMemoryException();
    EXPECT_EQ(std::wstring(text.view()), attempt.completed() ? kFull + number : kFull);
}

void appendDouble(Attempt& attempt) {
    appendNumber(
        attempt, [](BaseString<wchar_t>& text) { util::appendDouble(text, -2.5); }, L"-2.5");
}

void appendInteger(Attempt& attempt) {
    appendNumber(
        attempt, [](BaseString<wchar_t>& text) { util::appendInteger(text, -25); }, L"-25");
}

void split(Attempt& attempt) {
    Array<BaseString<wchar_t>> parts = test::stringsOf<wchar_t>({L"old"});
    attempt.perform([&] { util::splitString(L"a,b,c,d,e,f,g", L",", parts); });
    attempt.expectCompletedOrMemoryException();
    EXPECT_TRUE(attempt.completed() ? parts.size() == 8 : parts.size() < 8);
    EXPECT_EQ(parts[0], L"old");
}

void splitNarrow(Attempt& attempt) {
    Array<BaseString<char>> parts = test::stringsOf<char>({"old"});
    attempt.perform([&] { util::splitString("a,b,c,d,e,f,g", ",", parts); });
    attempt.expectCompletedOrMemoryException();
    EXPECT_TRUE(attempt.completed() ? parts.size() == 8 : parts.size() < 8);
    EXPECT_EQ(parts[0], "old");
}

/// Expects the array `items` to contain `all`. The tested functions clear the array first. After a failure, the array
/// must contain the items that were read before the failure.
template <class T>
void expectItems(const Attempt& attempt, const Array<BaseString<T>>& items, std::vector<std::basic_string<T>> all) {
    if (!attempt.completed()) {
        ASSERT_LT(items.size(), all.size());
        all.resize(items.size());
    }
    EXPECT_EQ(test::textsOf(items), all);
}

void splitQuotedNarrow(Attempt& attempt) {
    Array<BaseString<char>> items = test::stringsOf<char>({"old"});
    attempt.perform([&] { util::singleCStringToMultipleCStrings(R"(a,"b""c", d ,e,f,g)", ",", items, true); });
    attempt.expectCompletedOrMemoryException();
    expectItems(attempt, items, {"a", "b\"c", "d", "e", "f", "g"});
}

void splitQuoted(Attempt& attempt) {
    Array<BaseString<wchar_t>> items = test::stringsOf<wchar_t>({L"old"});
    attempt.perform(
        [&] { util::singleStringToMultipleStrings(L"a,\"b\"\"c\", d ,\"wrong\"x,e,f,g", L",", items, true); });
    attempt.expectCompletedOrMemoryException();
    expectItems<wchar_t>(attempt, items, {L"a", L"b\"c", L"d", L"\"wrong\"x", L"e", L"f", L"g"});
}

void joinInto(Attempt& attempt) {
    const std::wstring longer(100, L'y');
    const Array<BaseString<wchar_t>> items = test::stringsOf<wchar_t>({longer, L"b,c", longer});
    const std::wstring joined = longer + L",\"b,c\"," + longer;
    BaseString<wchar_t> result(L"old");
    attempt.perform([&] { util::multipleStringsToSingleString(items, L",", result); });
    attempt.expectCompletedOrMemoryException();
    if (attempt.completed()) {
        EXPECT_EQ(result, joined.c_str());
    } else {
        EXPECT_TRUE(result == L"old" || joined.starts_with(result.view()));
    }
}

void joinToNewString(Attempt& attempt) {
    const Array<BaseString<wchar_t>> items = test::stringsOf<wchar_t>({L"a", L"b"});
    BaseString<wchar_t> result;
    attempt.perform([&] { result = util::multipleStringsToSingleString(items, L","); });
    attempt.expectCompletedOrMemoryException();
    EXPECT_EQ(result, attempt.completed() ? L"a,b" : L"");
}

void joinOneQuotedItem(Attempt& attempt) {
    const std::wstring quoted = L"\"" + std::wstring(100, L'y') + L"\"";
    const Array<BaseString<wchar_t>> items = test::stringsOf<wchar_t>({quoted});
    BaseString<wchar_t> result;
    attempt.perform([&] { util::multipleStringsToSingleString(items, L",", result); });
    attempt.expectCompletedOrMemoryException();
    EXPECT_EQ(std::wstring(result.view()), attempt.completed() ? quoted : std::wstring());
}

template <class T>
void tokenize(Attempt& attempt) {
    std::basic_string<T> text = textOf<T>("a,b,c,d,e,f,g");
    Array<T*> tokens;
    attempt.perform([&] { util::tokenizeString(text.data(), textOf<T>(",").c_str(), tokens, -1); });
    attempt.expectMemoryException({{5, 8}, {10, 8}}, {L"vorel::util::tokenizeString: Vorel exception rethrown"});
    EXPECT_TRUE(attempt.completed() ? tokens.size() == 7 : tokens.size() < 7);
}

/// Calls `read`, which appends to an array or replaces the elements of the array. After a failure, the array must
/// contain the values that were read before the failure, and the log must contain the failure.
template <class Value, class T>
void readList(Attempt& attempt, bool (*read)(const T*, Array<Value>&, bool), bool append) {
    const std::basic_string<T> text = textOf<T>("1 2 3 4 5 6 7");
    Array<Value> values;
    values.append(Value{1});
    bool result = false;
    attempt.perform([&] { result = read(text.c_str(), values, append); });
    attempt.expectCompleted();
    EXPECT_EQ(result, !attempt.allocationFailed());
    const unsigned int all = append ? 8 : 7;
    ASSERT_EQ(values.size(), result ? all : 5)
        << "after a failure, the array must contain the five values for which it had space";
    EXPECT_EQ(values[0], Value{1}) << "the existing value, or the first value that was read";
    const heap::Unwatched unwatched;
    EXPECT_EQ(attempt.logged().size(), result ? 0u : 1u);
    EXPECT_TRUE(result || attempt.logged()[0].starts_with("Vorel Error: No more memory is available: "));
}

/// Reads a text in the memory of the array's elements. The text is copied first. If the copy fails, an array to which
/// the call appends keeps its elements, and an array that the call replaces becomes empty.
template <bool Append>
void readOwnMemory(Attempt& attempt) {
    const wchar_t text[] = L"4 5 6 7";
    int elements[4];
    static_assert(sizeof text == sizeof elements);
    std::memcpy(elements, text, sizeof text);
    Array<int> values;
    for (const int element : elements) {
        values.append(element);
    }
    bool result = false;
    attempt.perform(
        [&] { result = util::stringToIntegerArray(reinterpret_cast<const wchar_t*>(values.data()), values, Append); });
    attempt.expectCompleted();
    EXPECT_EQ(result, !attempt.allocationFailed());
    if constexpr (Append) {
        EXPECT_TRUE(result ? values.size() == 8 : values.size() == 4 || values.size() == 5) << values.size();
        EXPECT_EQ(std::memcmp(values.data(), text, sizeof text), 0);
    } else {
        ASSERT_EQ(values.size(), result ? 4u : 0u);
        EXPECT_TRUE(!result || (values[0] == 4 && values[3] == 7));
    }
    const heap::Unwatched unwatched;
    EXPECT_EQ(attempt.logged().size(), result ? 0u : 1u);
}

template <class T, bool Append>
void readIntegers(Attempt& attempt) {
    readList<int, T>(attempt, &util::stringToIntegerArray, Append);
}

void readUnsigned(Attempt& attempt) {
    readList<unsigned int, wchar_t>(attempt, &util::stringToUIntegerArray, false);
}

template <class T>
void readDoubles(Attempt& attempt) {
    readList<double, T>(attempt, &util::stringToDoubleArray, false);
}

template <class T>
void readBooleans(Attempt& attempt) {
    readList<bool, T>(attempt, &util::stringToBooleanArray, false);
}

void readRanges(Attempt& attempt) {
    Array<int> starts;
    Array<int> ends;
    attempt.perform([&] { util::stringToLongRanges(L"1-2,3,4-,-5,6,7,8", starts, ends); });
    attempt.expectCompletedOrMemoryException();
    EXPECT_TRUE(attempt.completed() ? starts.size() == 7 : starts.size() < 8);
    EXPECT_TRUE(ends.size() <= starts.size());
}

/// The first message of the exception must quote the invalid item. If a request for memory failed, the first message
/// may report that memory ran out.
void readInvalidRanges(Attempt& attempt) {
    Array<int> starts;
    Array<int> ends;
    attempt.perform([&] { util::stringToLongRanges(L"1-2,7x", starts, ends); });
    EXPECT_FALSE(attempt.completed());
    if (!attempt.allocationFailed()) {
        EXPECT_EQ(attempt.thrown(), typeid(vorel::Exception).name());
        EXPECT_EQ(starts.size(), 2u) << "the array must also contain the 7 of \"7x\"";
    }
    ASSERT_FALSE(attempt.logged().empty());
    const std::string& line = attempt.logged().front();
    EXPECT_TRUE(line == "Vorel Error: Found nonnumeric text in numeric item: \"7x\"" ||
                (attempt.allocationFailed() && line.starts_with("Vorel Error: No more memory is available: ")))
        << line;
}

const std::vector<Operation>& operations() {
    static const std::vector<Operation> kOperations = {
        {"AppendDouble", appendDouble},
        {"AppendInteger", appendInteger},
        {"SplitString_Narrow", splitNarrow},
        {"SplitString_Wide", split},
        {"SplitQuoted_Narrow", splitQuotedNarrow},
        {"SplitQuoted_Wide", splitQuoted},
        {"JoinInto", joinInto},
        {"JoinToNewString", joinToNewString},
        {"JoinOneQuotedItem", joinOneQuotedItem},
        {"TokenizeString_Narrow", tokenize<char>},
        {"TokenizeString_Wide", tokenize<wchar_t>},
        {"ReadIntegers_Narrow", readIntegers<char, false>},
        {"ReadIntegers_Wide", readIntegers<wchar_t, false>},
        {"ReadIntegers_Append", readIntegers<wchar_t, true>},
        {"ReadIntegers_OwnMemory", readOwnMemory<false>},
        {"ReadIntegers_AppendOwnMemory", readOwnMemory<true>},
        {"ReadUnsigned", readUnsigned},
        {"ReadDoubles_Narrow", readDoubles<char>},
        {"ReadDoubles_Wide", readDoubles<wchar_t>},
        {"ReadBooleans_Narrow", readBooleans<char>},
        {"ReadBooleans_Wide", readBooleans<wchar_t>},
        {"ReadRanges", readRanges},
        {"ReadRanges_OfInvalidText", readInvalidRanges},
    };
    return kOperations;
}

INSTANTIATE_TEST_SUITE_P(Values, FailingHeap, underBothFailures(operations()), failingHeapName);

TEST(ValuesHeap, ScannersFormattersAndComparisonsAllocateNothing) {
    int integer = 0;
    double number = 0;
    char narrow[64];
    wchar_t wide[64];
    heap::arm(1, heap::Failure::FromThenOn);
    util::stringToInteger(L" -12 ", nullptr, true);
    util::stringToUInt64("12345678901234567890", nullptr);
    util::hexToInt(L"ff", nullptr);
    util::stringToDouble("123456789012345678901234567890.5e-10", nullptr);
    util::tryStringToInteger(L"12.0", integer);
    util::tryStringToDouble("1.5e3", number);
    util::canCoerceToInteger("012", false);
    util::canCoerceToDouble(L"1.5e3", true);
    util::stringToBoolean(L"yes", nullptr);
    util::canCoerceToBoolean("no");
    util::canCoerceToIntegerArray(L"1 2 3");
    util::doubleToString(1.5e-7, narrow, 64, util::FO_JSON);
    util::doubleToString(1e300 / 3, wide, 64, util::FO_Default);
    util::doubleToString(-1e20, narrow, 5, util::FO_Default);
    util::Int64ToStr(-5, narrow, 64);
    util::UInt64ToStr(5, wide, 3);
    static_cast<void>(util::round(2.5));
    static_cast<void>(util::doubleHashCode(2.5));
    util::strcmpAdvanced(L"a007", L"A7", util::SCMP_IgnoreCase | util::SCMP_Numeric);
    util::stringVersionAtLeast(L"1.2.3", L"1.2");
    heap::disarm();
    EXPECT_EQ(heap::requests(), 0u);
}

}  // namespace
