#include "vorellog/RecordFilter.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "tools_log/Records.h"

namespace {

using test::header;
using test::recordOf;
using test::recordsOf;
using vorellog::FilterChoices;
using vorellog::LocalMs;
using vorellog::RecordFilter;

constexpr LocalMs kTime = 1794793388000;  // 2026-11-16 01:43:08

TEST(RecordFilterTest, RecordMatchesIfAllKindsOfChoicesMatch) {
    const std::string line = header(9876, 4312) + "WARN: order 7 is late";
    struct Case {
        const char* why;
        FilterChoices choices;
        bool matches;
    };
    const Case cases[] = {
        {"no choices", {}, true},
        {"matching process", {.processes = {{4312}}}, true},
        {"matching process and host", {.processes = {{4312, "host7"}}}, true},
        {"host in another case", {.processes = {{4312, "HOST7"}}}, true},
        {"another host", {.processes = {{4312, "host8"}}}, false},
        {"start of the host", {.processes = {{4312, "host"}}}, false},
        {"empty host", {.processes = {{4312, ""}}}, false},
        {"another process of the host", {.processes = {{431, "host7"}}}, false},
        {"another process", {.processes = {{431}}}, false},
        {"one of two processes", {.processes = {{1}, {4312}}}, true},
        {"matching thread", {.threads = {9876}}, true},
        {"the process id as a thread id", {.threads = {4312}}, false},
        {"matching process and thread", {.processes = {{4312}}, .threads = {9876}}, true},
        {"matching process, another thread", {.processes = {{4312}}, .threads = {1}}, false},
        {"matching prefix", {.prefixes = {"WARN"}}, true},
        {"prefix in lower case", {.prefixes = {"warn"}}, true},
        {"start of the prefix", {.prefixes = {"WAR"}}, false},
        {"prefix with colon", {.prefixes = {"WARN:"}}, false},
        {"empty prefix", {.prefixes = {""}}, false},
        {"one of two prefixes", {.prefixes = {"DEBUG", "WARN"}}, true},
        {"matching text", {.texts = {"order 7"}}, true},
        {"text across prefix and message", {.texts = {"N: o"}}, true},
        {"text in the header", {.texts = {"host7"}}, false},
        {"text in another case", {.texts = {"ORDER"}}, false},
        {"text in another case, case ignored", {.texts = {"ORDER"}, .ignoreCase = true}, true},
        {"another text", {.texts = {"order 8"}, .ignoreCase = true}, false},
        {"one of two texts", {.texts = {"order 8", "late"}}, true},
        {"empty text", {.texts = {""}}, true},
        {"empty text, case ignored", {.texts = {""}, .ignoreCase = true}, true},
        {"from the time of the record", {.from = kTime}, true},
        {"from a millisecond after the record", {.from = kTime + 1}, false},
        {"to the time of the record", {.to = kTime}, false},
        {"to a millisecond after the record", {.to = kTime + 1}, true},
        {"between two times", {.from = kTime - 5, .to = kTime + 5}, true},
        {"damaged only", {.damagedOnly = true}, false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(RecordFilter(c.choices).matches(recordOf(line)), c.matches) << c.why;
    }
}

TEST(RecordFilterTest, RecordMatchesIfATextOrAPatternMatches) {
    const auto pattern = std::make_shared<vorellog::Pattern>("order \\d", false);
    const auto other = std::make_shared<vorellog::Pattern>("^order", false);
    const auto record = recordOf(header() + "WARN: order 7 is late");
    EXPECT_TRUE(RecordFilter({.patterns = {pattern}}).matches(record));
    EXPECT_FALSE(RecordFilter({.patterns = {other}}).matches(record));
    EXPECT_TRUE(RecordFilter({.texts = {"x"}, .patterns = {other, pattern}}).matches(record));
    EXPECT_TRUE(RecordFilter({.texts = {"late"}, .patterns = {other}}).matches(record));
    EXPECT_FALSE(RecordFilter({.processes = {{1}}, .patterns = {pattern}}).matches(record));
}

TEST(RecordFilterTest, InvertDoesNotApplyToProcesses) {
    const auto record = recordOf(header(1, 2) + "WARN: order 7");
    EXPECT_FALSE(RecordFilter({.texts = {"order"}, .invert = true}).matches(record));
    EXPECT_TRUE(RecordFilter({.texts = {"other"}, .invert = true}).matches(record));
    EXPECT_FALSE(RecordFilter({.processes = {{1}}, .texts = {"other"}, .invert = true}).matches(record));
    EXPECT_TRUE(RecordFilter({.processes = {{2}}, .texts = {"other"}, .invert = true}).matches(record));
    EXPECT_FALSE(RecordFilter({.texts = {"other", "order"}, .invert = true}).matches(record));
}

TEST(RecordFilterTest, EmptyPrefixMatchesMessagesWithoutPrefix) {
    EXPECT_TRUE(RecordFilter({.prefixes = {""}}).matches(recordOf(header() + "text")));
}

TEST(RecordFilterTest, PrefixMatchesMessagesMarkedAsTruncated) {
    EXPECT_TRUE(
        RecordFilter({.prefixes = {"vorel error"}}).matches(recordOf(header() + "Vorel Error Truncated: text")));
}

TEST(RecordFilterTest, TextIsSearchedInAllLines) {
    const auto records = recordsOf({header() + "WARN: one", "two"});
    ASSERT_EQ(records.size(), 1u);
    EXPECT_TRUE(RecordFilter({.texts = {"two"}}).matches(records.front()));
}

TEST(RecordFilterTest, RecordsWithoutHeaderMatchUnlessAChoiceNeedsAHeader) {
    const auto record = recordOf("WARN: garbage");
    for (const FilterChoices& choices :
         {FilterChoices{.processes = {{0}}}, FilterChoices{.threads = {0}}, FilterChoices{.prefixes = {"WARN"}},
          FilterChoices{.prefixes = {""}}, FilterChoices{.from = 0}, FilterChoices{.to = kTime}}) {
        EXPECT_FALSE(RecordFilter(choices).matches(record));
        EXPECT_TRUE(RecordFilter(choices).needsHeader());
    }
    for (const FilterChoices& choices :
         {FilterChoices{}, FilterChoices{.texts = {"WARN: g"}}, FilterChoices{.damagedOnly = true}}) {
        EXPECT_TRUE(RecordFilter(choices).matches(record));
        EXPECT_FALSE(RecordFilter(choices).needsHeader());
    }
}

TEST(RecordFilterTest, DamagedRecordsMatchByTheirHeader) {
    const auto records = recordsOf({header(1) + "WARN: ha" + header(2) + "WARN: b"});
    ASSERT_EQ(records.size(), 2u);
    const RecordFilter filter({.threads = {1}, .damagedOnly = true});
    EXPECT_TRUE(filter.matches(records[0]));
    EXPECT_FALSE(filter.matches(records[1]));
}

}  // namespace
