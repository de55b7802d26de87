// Lists of ranges: the separators, ranges without a start or an end, and invalid items.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Arrays.h"
#include "support/Expect.h"
#include "support/ListReference.h"
#include "support/RandomInputs.h"
#include "support/RandomText.h"
#include "support/Shape.h"
#include "support/Widths.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/values/ListParsing.h"

namespace {

using test::valuesOf;
using vorel::Array;
using vorel::Exception;
namespace util = vorel::util;

std::wstring messageFor(const std::wstring& item) {
    return L"Found nonnumeric text in numeric item: \"" + item + L"\"";
}

struct Row {
    const wchar_t* text;
    std::vector<int> starts;
    std::vector<int> ends;
    const wchar_t* invalidItem = nullptr;  ///< the invalid item, or null if no exception is expected
};

/// Parses a row into arrays that already contain numbers, which the parser must remove.
void expectRow(const Row& row) {
    Array<int> starts = test::arrayOf<int>({99, 98});
    Array<int> ends = test::arrayOf<int>({97});
    if (row.invalidItem) {
        test::expectThrows<Exception>([&] { util::stringToLongRanges(row.text, starts, ends); },
                                      {messageFor(row.invalidItem)});
    } else {
        util::stringToLongRanges(row.text, starts, ends);
    }
    EXPECT_EQ(valuesOf(starts), row.starts) << (row.text ? row.text : L"null");
    EXPECT_EQ(valuesOf(ends), row.ends) << (row.text ? row.text : L"null");
}

TEST(ListParsingRanges, RangeIsOneNumberOrTwoNumbersInAnyOrder) {
    for (const Row& row :
         {Row{L"7", {7}, {7}}, Row{L"1-5,7", {1, 7}, {5, 7}}, Row{L"+3", {3}, {3}}, Row{L"0", {0}, {0}},
          Row{L"9-3", {9}, {3}}, Row{L"+1-+2", {1}, {2}}, Row{L"1-5,2-6,3-7", {1, 2, 3}, {5, 6, 7}}}) {
        expectRow(row);
    }
}

TEST(ListParsingRanges, MissingStartOrEndIsMinusOne) {
    for (const Row& row : {Row{L"-5", {-1}, {5}}, Row{L"5-", {5}, {-1}}, Row{L"-", {-1}, {-1}},
                           Row{L"-,-", {-1, -1}, {-1, -1}}, Row{L" 3 - 9 , 12-", {3, 12}, {9, -1}},
                           Row{L"12 - ", {12}, {-1}}, Row{L" - 12", {-1}, {12}}, Row{L" - ", {-1}, {-1}}}) {
        expectRow(row);
    }
}

TEST(ListParsingRanges, OnlyTheFirstMinusIsASeparator) {
    // The first minus separates the two numbers, even if the first number is missing. A minus directly before the
    // digits of the second number is its sign.
    for (const Row& row : {Row{L"--5", {-1}, {-5}}, Row{L"3--5", {3}, {-5}}, Row{L"3- -5", {3}, {-5}},
                           Row{L"--", {-1}, {0}}, Row{L"5--", {5}, {0}}, Row{L"1-2-3", {1}, {2}, L"1-2-3"},
                           Row{L"-1-2", {-1}, {1}, L"-1-2"}, Row{L"---5", {-1}, {0}, L"---5"}}) {
        expectRow(row);
    }
}

TEST(ListParsingRanges, WhiteSpaceIsIgnored) {
    for (const Row& row : {Row{L" \t\r\n4 \t\r\n", {4}, {4}}, Row{L"\u00A04\u00A0,\u00A0\u00A0", {4}, {4}},
                           Row{L"\t1\u00A0-\r\n2\t", {1}, {2}}, Row{L"+ ", {0}, {0}}}) {
        expectRow(row);
    }
}

TEST(ListParsingRanges, EmptyItemsAreSkipped) {
    for (const Row& row : {Row{nullptr, {}, {}}, Row{L"", {}, {}}, Row{L" ", {}, {}}, Row{L",", {}, {}},
                           Row{L" , \t,\u00A0", {}, {}}, Row{L",,4,", {4}, {4}}, Row{L"1,,2", {1, 2}, {1, 2}}}) {
        expectRow(row);
    }
}

TEST(ListParsingRanges, NumbersWrapAroundAt32Bits) {
    constexpr int kSmallest = -2147483647 - 1;
    for (const Row& row : {Row{L"4294967297", {1}, {1}}, Row{L"4294967297-4294967298", {1}, {2}},
                           Row{L"2147483648", {kSmallest}, {kSmallest}}}) {
        expectRow(row);
    }
}

TEST(ListParsingRanges, InvalidItemIsReportedAndEarlierRangesAreKept) {
    for (const Row& row :
         {Row{L"1-a", {1}, {0}, L"1-a"}, Row{L"2, 1-a ", {2, 1}, {2, 0}, L"1-a"},
          Row{L"1-5,\t 3 - 4x\u00A0,6", {1, 3}, {5, 4}, L"3 - 4x"}, Row{L"a-1", {0}, {}, L"a-1"},
          Row{L"7,5a-1,8", {7, 5}, {7}, L"5a-1"}, Row{L"a", {0}, {0}, L"a"}, Row{L"5x,6", {5}, {5}, L"5x"},
          Row{L"1 2", {1}, {1}, L"1 2"}, Row{L"1.5", {1}, {1}, L"1.5"}, Row{L"1;2", {1}, {1}, L"1;2"},
          Row{L"++1", {0}, {0}, L"++1"}, Row{L"\"1,2\"", {0}, {0}, L"\"1"},  // quotes have no meaning
          Row{L"-a", {-1}, {0}, L"-a"}, Row{L"a-", {0}, {}, L"a-"}, Row{L"%s%n", {0}, {0}, L"%s%n"}}) {
        expectRow(row);
    }
}

TEST(ListParsingRanges, InvalidItemsOfAnyLengthAreReported) {
    const std::wstring item = std::wstring(20000, L'1') + L"x";
    Array<int> starts;
    Array<int> ends;
    test::expectThrows<Exception>([&] { util::stringToLongRanges((L"3-4, " + item + L" ,5").c_str(), starts, ends); },
                                  {messageFor(item)});
    EXPECT_EQ(starts.size(), 2u);
    EXPECT_EQ(ends.size(), 2u);
}

/// Disables logging for a test that throws many exceptions.
class QuietLog {
public:
    QuietLog() : m_before(Exception::IsThreadErrorLoggingDisabled()) { Exception::DisableThreadErrorLogging(true); }
    ~QuietLog() { Exception::DisableThreadErrorLogging(m_before); }

    QuietLog(const QuietLog&) = delete;
    QuietLog& operator=(const QuietLog&) = delete;

private:
    bool m_before;
};

/// A random list of valid and invalid ranges.
std::string rangesText(test::RandomText& random) {
    std::string text;
    for (std::size_t items = random.below(5); items != 0; --items) {
        text += random.from(" \t\xA0", random.oneIn(4) ? random.below(3) : 0);
        text += random.digits(random.below(random.oneIn(8) ? 30 : 4));
        text += random.from("-+ ", random.below(3));
        text += random.digits(random.below(4));
        text += random.from("x.\"9- \n", random.oneIn(8) ? 1 : 0);
        text += random.oneIn(6) ? "" : ",";
    }
    return text;
}

TEST(ListParsingRanges, RandomTextsAgreeWithTheReference) {
    const QuietLog quiet;
    test::forEachRandomInput(20000, [&](test::RandomText& random) {
        const std::wstring text = test::text<wchar_t>(rangesText(random));
        const std::string shape = test::shapeOf(std::wstring_view(text));
        const test::Ranges wanted = test::readRanges(shape);
        Array<int> starts;
        Array<int> ends;
        std::string message;
        try {
            util::stringToLongRanges(text.c_str(), starts, ends);
        } catch (const Exception& e) {
            message = test::shapeOf(std::wstring_view(e.what()));
        }
        const bool isRange = wanted.rejected.empty();
        EXPECT_EQ(message,
                  isRange ? "" : test::shapeOf(std::wstring_view(messageFor(test::text<wchar_t>(wanted.rejected)))));
        EXPECT_EQ(valuesOf(starts), wanted.starts);
        EXPECT_EQ(valuesOf(ends), wanted.ends);
        EXPECT_FALSE(HasFailure()) << '"' << shape << '"';
    });
}

}  // namespace
