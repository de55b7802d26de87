#include "vorel/values/Joining.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/Arrays.h"
#include "support/RandomInputs.h"
#include "support/RandomText.h"
#include "support/TextReference.h"
#include "vorel/values/Splitting.h"

namespace {

using test::stringsOf;
using test::textsOf;
using vorel::Array;
using vorel::BaseString;
namespace util = vorel::util;
using Texts = std::vector<std::wstring>;

struct Row {
    Texts items;
    const wchar_t* delimiter;
    std::wstring joined;
};

TEST(Joining, QuotesItemsWithDelimitersOrQuotes) {
    for (const Row& row : {Row{{L"a", L"b,c", L"d\"e"}, L",", L"a,\"b,c\",\"d\"\"e\""}, Row{{L"a", L"b"}, L",", L"a,b"},
                           Row{{L"\"q\"", L"a"}, L",", L"\"\"\"q\"\"\",a"}, Row{{}, L",", L""}, Row{{L""}, L",", L""},
                           Row{{L"", L""}, L",", L","}, Row{{L"a", L"b"}, nullptr, L"ab"},
                           Row{{L"a", L"\""}, L"", L"a\"\"\"\""}, Row{{L"a, b", L"c,d"}, L", ", L"\"a, b\", c,d"}}) {
        BaseString<wchar_t> result(L"old");
        util::multipleStringsToSingleString(stringsOf(row.items), row.delimiter, result);
        EXPECT_EQ(result, row.joined.c_str());
        EXPECT_EQ(result.length(), row.joined.size());
        EXPECT_EQ(util::multipleStringsToSingleString(stringsOf(row.items), row.delimiter), row.joined.c_str());
    }
}

TEST(Joining, ListOfOneItemInQuotesIsJoinedUnchanged) {
    for (const Row& row :
         {Row{{L"\"q\""}, L",", L"\"q\""}, Row{{L"\"\""}, L",", L"\"\""}, Row{{L"\"a\"b\""}, L",", L"\"a\"b\""},
          Row{{L"\"a,b\""}, L",", L"\"a,b\""}, Row{{L"\""}, L",", L"\"\"\"\""}, Row{{L"\"a"}, L",", L"\"\"\"a\""}}) {
        EXPECT_EQ(util::multipleStringsToSingleString(stringsOf(row.items), row.delimiter), row.joined.c_str());
    }
}

/// The search for a delimiter never goes back, so a character that ends a partial match cannot start another match. For
/// example, the search does not find "ab" in "aab".
TEST(Joining, ItemIsNotQuotedIfOnlyBacktrackingFindsTheDelimiter) {
    EXPECT_EQ(util::multipleStringsToSingleString(stringsOf(Texts{L"aab", L"ab", L"xab"}), L"ab"),
              L"aabab\"ab\"ab\"xab\"");
    EXPECT_EQ(util::multipleStringsToSingleString(stringsOf(Texts{L"aaab", L"aab"}), L"aab"), L"aaabaab\"aab\"");
}

TEST(Joining, ReservesAtLeast32UnitsPerItem) {
    for (const Texts& items : {Texts{L"a"}, Texts{L"\"q\""}, Texts{L"a", L"b", L"c"}, Texts(40, L"a")}) {
        BaseString<wchar_t> result;
        util::multipleStringsToSingleString(stringsOf(items), L",", result);
        EXPECT_GT(result.capacity(), 32 * items.size());
    }
}

/// A capacity is a power of two and includes the terminator. With the terminator, 63 items need 2,017 units, which fit
/// into 2,048, and 64 items need 2,049 units, which do not.
TEST(Joining, ReservesExactly32UnitsPerItem) {
    for (const auto& [items, capacity] : {std::pair{1u, 64u}, {63u, 2048u}, {64u, 4096u}}) {
        BaseString<wchar_t> result;
        util::multipleStringsToSingleString(stringsOf(Texts(items, L"a")), L",", result);
        EXPECT_EQ(result.capacity(), capacity) << items;
    }
}

TEST(Joining, JoinsItemsOfEveryLength) {
    for (std::size_t length = 0; length < 300; ++length) {
        const std::wstring item(length, L'x');
        const std::wstring marked = item + L",";
        EXPECT_EQ(util::multipleStringsToSingleString(stringsOf(Texts{item, marked, item}), L","),
                  (item + L",\"" + marked + L"\"," + item).c_str());
    }
}

/// Random items. Some contain many quotes and delimiters, and some are longer than the 32 units reserved for an item.
Texts randomItems(test::RandomText& random) {
    Texts items(random.below(6));
    for (std::wstring& item : items) {
        const std::size_t length = random.oneIn(10) ? random.below(200) : random.below(12);
        item = test::text<wchar_t>(random.from(random.oneIn(2) ? "abcdefgh \xE4" : "ab,\"", length));
    }
    return items;
}

TEST(Joining, RandomItemsAgreeWithTheReference) {
    BaseString<wchar_t> result;
    test::forEachRandomInput(30000, [&](test::RandomText& random) {
        const Texts items = randomItems(random);
        const std::wstring delimiter = test::text<wchar_t>(random.from("ab,", random.below(4)));
        util::multipleStringsToSingleString(stringsOf(items), delimiter.c_str(), result);
        ASSERT_EQ(std::wstring(result.view()), test::joined(items, delimiter));
    });
}

TEST(Joining, SplittingRestoresTheItems) {
    test::forEachRandomInput(30000, [&](test::RandomText& random) {
        const Texts items = randomItems(random);
        const BaseString<wchar_t> text = util::multipleStringsToSingleString(stringsOf(items), L",");
        Array<BaseString<wchar_t>> again;
        util::singleStringToMultipleStrings(text.c_str(), L",", again, false);
        Texts wanted = items;
        const bool isQuotedAlready =
            items.size() == 1 && items[0].size() > 1 && items[0].front() == L'"' && items[0].back() == L'"';
        if (isQuotedAlready) {
            // The item is joined unchanged, so splitting removes its quotes if they are well-formed.
            wanted = test::splitAtAnyOf(items[0], std::wstring(L","), false);
        } else if (!wanted.empty() && wanted.back().empty()) {
            wanted.pop_back();  // the splitter does not restore an empty item at the end
        }
        ASSERT_EQ(textsOf(again), wanted);
    });
}

}  // namespace
