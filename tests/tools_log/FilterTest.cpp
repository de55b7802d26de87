#include "vorellog/Filter.h"

#include <string>

#include <gtest/gtest.h>

#include "tools_log/Records.h"

namespace {

using test::header;
using test::recordOf;
using test::recordsOf;
using vorellog::Filter;
using vorellog::FilterChoices;
using vorellog::LocalMs;

constexpr LocalMs kTime = 1794793388000;  // 2026-11-16 01:43:08

TEST(FilterTest, Choices) {
    const std::string line = header(9876, 4312) + "WARN: order 7 is late";
    struct Case {
        const char* why;
        FilterChoices choices;
        bool matches;
    };
    const Case cases[] = {
        {"none at all", {}, true},
        {"the process", {.processes = {4312}}, true},
        {"another process", {.processes = {431}}, false},
        {"one of two processes", {.processes = {1, 4312}}, true},
        {"the thread", {.threads = {9876}}, true},
        {"the process's number as a thread", {.threads = {4312}}, false},
        {"process and thread", {.processes = {4312}, .threads = {9876}}, true},
        {"process, but another thread", {.processes = {4312}, .threads = {1}}, false},
        {"the prefix", {.prefixes = {"WARN"}}, true},
        {"the prefix in small letters", {.prefixes = {"warn"}}, true},
        {"the start of the prefix", {.prefixes = {"WAR"}}, false},
        {"more than the prefix", {.prefixes = {"WARN:"}}, false},
        {"no prefix", {.prefixes = {""}}, false},
        {"one of two prefixes", {.prefixes = {"DEBUG", "WARN"}}, true},
        {"a text", {.texts = {"order 7"}}, true},
        {"a text across prefix and message", {.texts = {"N: o"}}, true},
        {"a text of the header", {.texts = {"host7"}}, false},
        {"a text in other letters", {.texts = {"ORDER"}}, false},
        {"a text in other letters, which do not matter", {.texts = {"ORDER"}, .ignoreCase = true}, true},
        {"another text", {.texts = {"order 8"}, .ignoreCase = true}, false},
        {"one of two texts", {.texts = {"order 8", "late"}}, true},
        {"the empty text", {.texts = {""}}, true},
        {"the empty text, in any letters", {.texts = {""}, .ignoreCase = true}, true},
        {"from its time on", {.from = kTime}, true},
        {"from a millisecond later", {.from = kTime + 1}, false},
        {"up to its time", {.to = kTime}, false},
        {"up to a millisecond later", {.to = kTime + 1}, true},
        {"within", {.from = kTime - 5, .to = kTime + 5}, true},
        {"damaged only", {.damagedOnly = true}, false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Filter(c.choices).matches(recordOf(line)), c.matches) << c.why;
    }
}

TEST(FilterTest, TheEmptyPrefixTakesMessagesWithoutOne) {
    EXPECT_TRUE(Filter({.prefixes = {""}}).matches(recordOf(header() + "text")));
}

TEST(FilterTest, ATruncatedMessageHasThePrefixOfAWholeOne) {
    EXPECT_TRUE(Filter({.prefixes = {"vorel error"}}).matches(recordOf(header() + "Vorel Error Truncated: text")));
}

TEST(FilterTest, AllLinesOfAMessageAreSearched) {
    const auto records = recordsOf({header() + "WARN: one", "two"});
    ASSERT_EQ(records.size(), 1u);
    EXPECT_TRUE(Filter({.texts = {"two"}}).matches(records.front()));
}

TEST(FilterTest, WithoutAHeaderOnlyTheTextCanBeLookedFor) {
    const auto record = recordOf("WARN: garbage");
    for (const FilterChoices& choices :
         {FilterChoices{.processes = {0}}, FilterChoices{.threads = {0}}, FilterChoices{.prefixes = {"WARN"}},
          FilterChoices{.prefixes = {""}}, FilterChoices{.from = 0}, FilterChoices{.to = kTime}}) {
        EXPECT_FALSE(Filter(choices).matches(record));
        EXPECT_TRUE(Filter(choices).needsHeader());
    }
    for (const FilterChoices& choices :
         {FilterChoices{}, FilterChoices{.texts = {"WARN: g"}}, FilterChoices{.damagedOnly = true}}) {
        EXPECT_TRUE(Filter(choices).matches(record));
        EXPECT_FALSE(Filter(choices).needsHeader());
    }
}

TEST(FilterTest, ADamagedRecordHasTheHeaderThatIsLeft) {
    const auto records = recordsOf({header(1) + "WARN: ha" + header(2) + "WARN: b"});
    ASSERT_EQ(records.size(), 2u);
    const Filter filter({.threads = {1}, .damagedOnly = true});
    EXPECT_TRUE(filter.matches(records[0]));
    EXPECT_FALSE(filter.matches(records[1]));
}

}  // namespace
