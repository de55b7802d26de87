// Lists, splitting, joining and appended numbers under a failing heap; and that nothing else of the values asks it.

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

const std::wstring kFull(15, L'x');  // fills the smallest buffer but for its terminator

void appendNumber(Trial& trial, void (*append)(BaseString<wchar_t>&), const wchar_t* number) {
    BaseString<wchar_t> text(kFull.c_str());
    trial.perform([&] { append(text); });
    trial.expectMemoryOrDone();
    EXPECT_EQ(std::wstring(text.view()), trial.completed() ? kFull + number : kFull);
}

void appendDouble(Trial& trial) {
    appendNumber(
        trial, [](BaseString<wchar_t>& text) { util::appendDouble(text, -2.5); }, L"-2.5");
}

void appendInteger(Trial& trial) {
    appendNumber(
        trial, [](BaseString<wchar_t>& text) { util::appendInteger(text, -25); }, L"-25");
}

void split(Trial& trial) {
    Array<BaseString<wchar_t>> parts = test::stringsOf<wchar_t>({L"old"});
    trial.perform([&] { util::splitString(L"a,b,c,d,e,f,g", L",", parts); });
    trial.expectMemoryOrDone();
    EXPECT_TRUE(trial.completed() ? parts.size() == 8 : parts.size() < 8);
    EXPECT_EQ(parts[0], L"old");
}

void splitNarrow(Trial& trial) {
    Array<BaseString<char>> parts = test::stringsOf<char>({"old"});
    trial.perform([&] { util::splitString("a,b,c,d,e,f,g", ",", parts); });
    trial.expectMemoryOrDone();
    EXPECT_TRUE(trial.completed() ? parts.size() == 8 : parts.size() < 8);
    EXPECT_EQ(parts[0], "old");
}

/// The array is emptied first, and has the items that were read before the memory ran out.
template <class T>
void expectItems(const Trial& trial, const Array<BaseString<T>>& items, std::vector<std::basic_string<T>> all) {
    if (!trial.completed()) {
        ASSERT_LT(items.size(), all.size());
        all.resize(items.size());
    }
    EXPECT_EQ(test::textsOf(items), all);
}

void splitQuotedNarrow(Trial& trial) {
    Array<BaseString<char>> items = test::stringsOf<char>({"old"});
    trial.perform([&] { util::singleCStringToMultipleCStrings(R"(a,"b""c", d ,e,f,g)", ",", items, true); });
    trial.expectMemoryOrDone();
    expectItems(trial, items, {"a", "b\"c", "d", "e", "f", "g"});
}

void splitQuoted(Trial& trial) {
    Array<BaseString<wchar_t>> items = test::stringsOf<wchar_t>({L"old"});
    trial.perform(
        [&] { util::singleStringToMultipleStrings(L"a,\"b\"\"c\", d ,\"wrong\"x,e,f,g", L",", items, true); });
    trial.expectMemoryOrDone();
    expectItems<wchar_t>(trial, items, {L"a", L"b\"c", L"d", L"\"wrong\"x", L"e", L"f", L"g"});
}

void joinInto(Trial& trial) {
    const std::wstring longer(100, L'y');
    const Array<BaseString<wchar_t>> items = test::stringsOf<wchar_t>({longer, L"b,c", longer});
    const std::wstring joined = longer + L",\"b,c\"," + longer;
    BaseString<wchar_t> result(L"old");
    trial.perform([&] { util::multipleStringsToSingleString(items, L",", result); });
    trial.expectMemoryOrDone();
    if (trial.completed()) {
        EXPECT_EQ(result, joined.c_str());
    } else {
        EXPECT_TRUE(result == L"old" || joined.starts_with(result.view()));
    }
}

void joinAnew(Trial& trial) {
    const Array<BaseString<wchar_t>> items = test::stringsOf<wchar_t>({L"a", L"b"});
    BaseString<wchar_t> result;
    trial.perform([&] { result = util::multipleStringsToSingleString(items, L","); });
    trial.expectMemoryOrDone();
    EXPECT_EQ(result, trial.completed() ? L"a,b" : L"");
}

void joinOneQuotedItem(Trial& trial) {
    const std::wstring quoted = L"\"" + std::wstring(100, L'y') + L"\"";
    const Array<BaseString<wchar_t>> items = test::stringsOf<wchar_t>({quoted});
    BaseString<wchar_t> result;
    trial.perform([&] { util::multipleStringsToSingleString(items, L",", result); });
    trial.expectMemoryOrDone();
    EXPECT_EQ(std::wstring(result.view()), trial.completed() ? quoted : std::wstring());
}

template <class T>
void tokenize(Trial& trial) {
    std::basic_string<T> text = textOf<T>("a,b,c,d,e,f,g");
    Array<T*> tokens;
    trial.perform([&] { util::tokenizeString(text.data(), textOf<T>(",").c_str(), tokens, -1); });
    trial.expectMemoryException({{5, 8}, {10, 8}}, {L"vorel::util::tokenizeString: Vorel exception rethrown"});
    EXPECT_TRUE(trial.completed() ? tokens.size() == 7 : tokens.size() < 7);
}

/// Behind what the array holds, or in its place; what was read before the failure stays, and the log names it.
template <class Value, class T>
void readList(Trial& trial, bool (*read)(const T*, Array<Value>&, bool), bool append) {
    const std::basic_string<T> text = textOf<T>("1 2 3 4 5 6 7");
    Array<Value> values;
    values.append(Value{1});
    bool result = false;
    trial.perform([&] { result = read(text.c_str(), values, append); });
    trial.expectCompleted();
    EXPECT_EQ(result, !trial.refused());
    const unsigned int all = append ? 8 : 7;
    ASSERT_EQ(values.size(), result ? all : 5) << "there was room for five";
    EXPECT_EQ(values[0], Value{1}) << "what was there, or was read first";
    const heap::Unwatched unwatched;
    EXPECT_EQ(trial.logged().size(), result ? 0u : 1u);
    EXPECT_TRUE(result || trial.logged()[0].starts_with("Vorel Error: No more memory is available: "));
}

template <class T, bool Append>
void readIntegers(Trial& trial) {
    readList<int, T>(trial, &util::stringToIntegerArray, Append);
}

void readUnsigned(Trial& trial) {
    readList<unsigned int, wchar_t>(trial, &util::stringToUIntegerArray, false);
}

template <class T>
void readDoubles(Trial& trial) {
    readList<double, T>(trial, &util::stringToDoubleArray, false);
}

template <class T>
void readBooleans(Trial& trial) {
    readList<bool, T>(trial, &util::stringToBooleanArray, false);
}

void readRanges(Trial& trial) {
    Array<int> starts;
    Array<int> ends;
    trial.perform([&] { util::stringToLongRanges(L"1-2,3,4-,-5,6,7,8", starts, ends); });
    trial.expectMemoryOrDone();
    EXPECT_TRUE(trial.completed() ? starts.size() == 7 : starts.size() < 8);
    EXPECT_TRUE(ends.size() <= starts.size());
}

/// The failure quotes the item; without memory for that, it is one of memory.
void readWrongRanges(Trial& trial) {
    Array<int> starts;
    Array<int> ends;
    trial.perform([&] { util::stringToLongRanges(L"1-2,7x", starts, ends); });
    EXPECT_FALSE(trial.completed());
    if (!trial.refused()) {
        EXPECT_EQ(trial.thrown(), typeid(vorel::Exception).name());
        EXPECT_EQ(starts.size(), 2u) << "the number in front of the text was read";
    }
    ASSERT_FALSE(trial.logged().empty());
    const std::string& told = trial.logged().front();
    EXPECT_TRUE(told == "Vorel Error: Found nonnumeric text in numeric item: \"7x\"" ||
                (trial.refused() && told.starts_with("Vorel Error: No more memory is available: ")))
        << told;
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
        {"JoinAnew", joinAnew},
        {"JoinOneQuotedItem", joinOneQuotedItem},
        {"TokenizeString_Narrow", tokenize<char>},
        {"TokenizeString_Wide", tokenize<wchar_t>},
        {"ReadIntegers_Narrow", readIntegers<char, false>},
        {"ReadIntegers_Wide", readIntegers<wchar_t, false>},
        {"ReadIntegers_Behind", readIntegers<wchar_t, true>},
        {"ReadUnsigned", readUnsigned},
        {"ReadDoubles_Narrow", readDoubles<char>},
        {"ReadDoubles_Wide", readDoubles<wchar_t>},
        {"ReadBooleans_Narrow", readBooleans<char>},
        {"ReadBooleans_Wide", readBooleans<wchar_t>},
        {"ReadRanges", readRanges},
        {"ReadRanges_OfAWrongText", readWrongRanges},
    };
    return kOperations;
}

INSTANTIATE_TEST_SUITE_P(Values, FailingHeap, underBothFailures(operations()), failingHeapName);

TEST(ValuesHeap, ScannersFormattersAndComparisonsAskForNothing) {
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
