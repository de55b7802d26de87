#include "vorellog/Settings.h"

#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Tool.h"

namespace {

using ::testing::ElementsAre;
using vorellog::Colours;
using vorellog::Settings;
using vorellog::settingsOf;
using vorellog::showsColours;
using Given = std::vector<std::wstring>;

constexpr vorellog::LocalMs kNow = 1794793388000;  // 2026-11-16 01:43:08
constexpr vorellog::LocalMs kZone = 2 * vorellog::kHour;

Settings settings(const Given& given) {
    return settingsOf(tools::parse(vorellog::syntax(), given), {kNow, kNow - kZone});
}

TEST(SettingsTest, Defaults) {
    const Settings s = settings({});
    EXPECT_THAT(s.paths, ElementsAre(L"C:\\TalvenorError.txt"));
    EXPECT_FALSE(s.follow || s.fold || s.json || s.summary || s.maxEntries || s.filter.damagedOnly);
    EXPECT_EQ(s.colours, Colours::Auto);
}

TEST(SettingsTest, OptionsSetTheirFields) {
    const Settings s =
        settings({L"-f",        L"-p",    L"77",     L"--process=78", L"-t9",  L"-P",         L"error",
                  L"--prefix",  L"Own: ", L"--from", L"1h",           L"--to", L"2026-11-16", L"-e",
                  L"caf\u00E9", L"-i",    L"-d",     L"-m",           L"5",    L"-Fj",        L"--color=always",
                  L"my.log"});
    EXPECT_THAT(s.paths, ElementsAre(L"my.log"));
    EXPECT_TRUE(s.follow && s.fold && s.json && s.filter.ignoreCase && s.filter.damagedOnly);
    EXPECT_THAT(s.filter.threads, ElementsAre(9ul));
    EXPECT_THAT(s.filter.prefixes, ElementsAre("Vorel Error", "Own"));
    EXPECT_THAT(s.filter.texts, ElementsAre("caf\xC3\xA9"));
    EXPECT_EQ(s.filter.from, kNow - 3600000);
    EXPECT_EQ(s.filter.to, 1794873600000);  // the start of the next day
    EXPECT_EQ(s.maxEntries, 5u);
    EXPECT_EQ(s.colours, Colours::Always);
    EXPECT_EQ(settings({L"-m1"}).maxEntries, 1u);
    EXPECT_EQ(settings({L"--color", L"never"}).colours, Colours::Never);
    EXPECT_EQ(settings({L"--color", L"auto"}).colours, Colours::Auto);
    EXPECT_TRUE(settings({L"-s"}).summary);
    EXPECT_FALSE(settings({L"-s"}).top);
    const Settings folded = settings({L"-sF", L"--top", L"3"});
    EXPECT_TRUE(folded.summary && folded.fold);
    EXPECT_EQ(folded.top, 3u);
}

TEST(SettingsTest, ProcessOptionMayNameAHost) {
    struct Case {
        const wchar_t* value;
        unsigned long id;
        std::optional<std::string> host;
    };
    const Case cases[] = {
        {L"77", 77, std::nullopt},    {L"4294967295", 4294967295, std::nullopt},
        {L"app3.9870", 9870, "app3"}, {L"caf\u00E9.1", 1, "caf\xC3\xA9"},
        {L".4312", 4312, ""},
    };
    for (const Case& c : cases) {
        const auto processes = settings({L"-p", L"5", L"--process", c.value}).filter.processes;
        ASSERT_EQ(processes.size(), 2u);
        EXPECT_EQ(processes[1].id, c.id);
        EXPECT_EQ(processes[1].host, c.host);
    }
}

TEST(SettingsTest, PrefixErrorSelectsThePrefixOfExceptions) {
    for (const wchar_t* const value : {L"error", L"Error", L"ERROR", L"eRRor: "}) {
        EXPECT_THAT(settings({L"-P", value}).filter.prefixes, ElementsAre("Vorel Error"));
    }
    EXPECT_THAT(settings({L"-P", L"errors", L"-P", L"vorel error"}).filter.prefixes,
                ElementsAre("errors", "vorel error"));
}

TEST(SettingsTest, FromAndToWithTheSameMinuteSelectThatMinute) {
    const Settings s = settings({L"--from", L"2026-11-16 01:43", L"--to", L"2026-11-16 01:43"});
    EXPECT_EQ(*s.filter.to - *s.filter.from, vorellog::kMinute);
}

TEST(SettingsTest, SuggestsOptionsForOptionNamesOfOtherPrograms) {
    struct Case {
        const wchar_t* typed;
        const wchar_t* option;
    };
    const Case cases[] = {{L"since", L"from"}, {L"until", L"to"}, {L"grep", L"text"}};
    for (const Case& c : cases) {
        try {
            (void)settings({L"--" + std::wstring(c.typed), L"1h"});
            ADD_FAILURE() << "accepted --" << testing::PrintToString(c.typed);
        } catch (const tools::UsageError& error) {
            EXPECT_EQ(error.text(),
                      L"unknown option --" + std::wstring(c.typed) + L"; did you mean --" + c.option + L"?");
        }
    }
}

TEST(SettingsTest, InvalidCommandLines) {
    const Given cases[] = {{L"-p", L"x"},
                           {L"-p", L""},
                           {L"-p", L"4294967296"},
                           {L"-p", L"-1"},
                           {L"-p", L"app3."},
                           {L"-p", L"app3"},
                           {L"-p", L"app3.4294967296"},
                           {L"-p", L"host7.4312.9876"},
                           {L"-t", L"1.5"},
                           {L"-m", L"many"},
                           {L"-m", L"0"},
                           {L"--from", L"soon"},
                           {L"--to", L""},
                           {L"--from", L"2026-11-16 01:44", L"--to", L"2026-11-16 01:43"},
                           {L"--from", L"today", L"--to", L"yesterday"},

                           {L"--color", L"red"},
                           {L"-s", L"-m", L"1"},
                           {L"--top", L"3"},
                           {L"-s", L"--top", L"0"},
                           {L"-f", L"one.log", L"two.log"},
                           {L"--unknown"},
                           {L"-E", L"("},
                           {L"-E", L"(?<=a)b"},
                           {L"-v"},
                           {L"-s", L"-n", L"1"},
                           {L"-s", L"-C", L"1"},
                           {L"-j", L"-C", L"1"},
                           {L"-n", L"1", L"-m", L"1"},
                           {L"-n", L"1", L"-C", L"1"},
                           {L"-n", L"0"},
                           {L"-C", L"10001"},
                           {L"-f", L"-"},
                           {L"--report", L"a", L"-s"},
                           {L"--report", L"a", L"-f"},
                           {L"--report", L"a", L"-j"},
                           {L"--report", L"a", L"-m1"},
                           {L"--report", L"a", L"-n1"},
                           {L"--report", L"a", L"-C1"},
                           {L"--time-zone", L"CET"}};
    for (const Given& given : cases) {
        EXPECT_THROW(settings(given), tools::UsageError) << testing::PrintToString(given);
    }
}

TEST(SettingsTest, OptionsThatSelectAndShowEntries) {
    const Settings s = settings({L"-v", L"-E", L"a+", L"-E", L"b", L"-C", L"3", L"one.log", L"-", L"two.log"});
    EXPECT_TRUE(s.filter.invert);
    EXPECT_EQ(s.filter.patterns.size(), 2u);
    EXPECT_FALSE(s.filter.patterns[0]->isIn("A"));
    EXPECT_EQ(s.context, 3u);
    EXPECT_THAT(s.paths, ElementsAre(L"one.log", L"-", L"two.log"));
    EXPECT_EQ(settings({L"-n", L"4", L"-f"}).tail, 4u);
    EXPECT_TRUE(settings({L"-i", L"-E", L"a"}).filter.patterns[0]->isIn("A"));
    EXPECT_TRUE(settings({L"-sfF"}).summary);
    EXPECT_EQ(settings({L"--report", L"a.html"}).report, L"a.html");
    EXPECT_TRUE(settings({L"--report", L"a.html"}).fold);
}

TEST(SettingsTest, TimeZoneOfTheLog) {
    // The local time is 01:43:08. In UTC, it is 23:43:08 of the day before.
    EXPECT_EQ(settings({L"--from", L"0s"}).filter.from, kNow);
    EXPECT_EQ(settings({L"--from", L"0s", L"--time-zone", L"Z"}).filter.from, kNow - kZone);
    EXPECT_EQ(settings({L"--from", L"0s", L"--time-zone=-01:30"}).filter.from, kNow - kZone - 90 * vorellog::kMinute);
    EXPECT_EQ(settings({L"--from", L"2026-11-16T01:43:08Z", L"--time-zone", L"+02:00"}).filter.from, kNow + kZone);
    EXPECT_EQ(settings({L"--to", L"yesterday", L"--time-zone", L"Z"}).filter.to,
              kNow - 6188000 - vorellog::kDay);  // the start of 2026-11-15
}

TEST(SettingsTest, ColourChoices) {
    struct Case {
        Colours choice;
        bool console;
        bool noColor;
        bool shown;
    };
    const Case cases[] = {{Colours::Auto, true, false, true},
                          {Colours::Auto, true, true, false},
                          {Colours::Auto, false, false, false},
                          {Colours::Always, false, true, true},
                          {Colours::Never, true, false, false}};
    for (const Case& c : cases) {
        EXPECT_EQ(showsColours(c.choice, c.console, c.noColor), c.shown);
    }
}

}  // namespace
