#include "vorellog/Viewer.h"

#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools_log/Records.h"

namespace {

using test::header;
using vorellog::Settings;
using vorellog::Viewer;

/// A viewer and its output.
class Viewing {
public:
    explicit Viewing(const Settings& settings = {})
        : viewer(settings, false, [this](std::string_view text) { m_written += text; }) {}

    /// Returns and clears the output.
    std::string take() { return std::exchange(m_written, {}); }

private:
    std::string m_written;

public:
    Viewer viewer;
};

TEST(ViewerTest, RecordIsShownWhenNoLineFollows) {
    Viewing viewing;
    viewing.viewer.bytes(header() + "WARN: a\r\n");
    viewing.viewer.showPending(0);
    EXPECT_EQ(viewing.take(), "");
    viewing.viewer.bytes("b\r\n");
    viewing.viewer.showPending(0);
    EXPECT_EQ(viewing.take(), "");
    viewing.viewer.showPending(0);
    EXPECT_EQ(viewing.take(), header() + "WARN: a\n    | b\n");
    viewing.viewer.showPending(0);
    EXPECT_EQ(viewing.take(), "");
}

TEST(ViewerTest, RecordIsShownWhenTheNextRecordBegins) {
    Viewing viewing;
    viewing.viewer.bytes(header() + "WARN: a\r\n" + header() + "WARN: b\r\n" + header());
    viewing.viewer.showPending(0);
    EXPECT_EQ(viewing.take(), header() + "WARN: a\n");
    EXPECT_TRUE(viewing.viewer.isWithinLine());
    viewing.viewer.finish();
    EXPECT_EQ(viewing.take(), header() + "WARN: b\n(cut) " + header() + "\n");
    EXPECT_FALSE(viewing.viewer.isWithinLine());
}

TEST(ViewerTest, EndOfFileEndsTheRecord) {
    Viewing viewing;
    viewing.viewer.bytes(header() + "WARN: ha");
    viewing.viewer.endOfFile();
    viewing.viewer.bytes("garbage\r\n");
    viewing.viewer.finish();
    EXPECT_EQ(viewing.take(), "(cut) " + header() + "WARN: ha\n(no header) garbage\n");
}

TEST(ViewerTest, OpenTrailIsShownIfNoRecordFollowsWithinTheTrailGap) {
    constexpr vorellog::LocalMs kGap = vorellog::TrailAssembler::kTrailGapMs;
    Viewing viewing({.fold = true});
    viewing.viewer.bytes(header() + "Vorel Error: a\r\n");
    viewing.viewer.showPending(1000);
    viewing.viewer.showPending(1000 + kGap);
    viewing.viewer.bytes(header() + "Vorel Error: b\r\n");
    viewing.viewer.showPending(9000 + kGap);
    EXPECT_EQ(viewing.viewer.lastInputMs(), 9000 + kGap);
    viewing.viewer.showPending(9000 + 2 * kGap);
    EXPECT_EQ(viewing.take(), "");
    viewing.viewer.showPending(9001 + 2 * kGap);
    EXPECT_EQ(viewing.take(), header() + "Vorel Error: a\n    > b\n");
}

TEST(ViewerTest, OneMatchingRecordShowsTheWholeTrail) {
    Settings settings{.fold = true};
    settings.filter.texts = {"Parser"};
    Viewing viewing(settings);
    viewing.viewer.bytes(header() + "Vorel Error: a\n" + header() +
                         "Vorel Error: Parser::run: Vorel exception caught\n" + header() + "Vorel Error: b\n" +
                         header() + "WARN: Parser\n" + header() + "WARN: c\n");
    viewing.viewer.finish();
    EXPECT_EQ(viewing.take(),
              header() + "Vorel Error: a\n    > Parser::run: Vorel exception caught\n" + header() + "WARN: Parser\n");
    EXPECT_TRUE(viewing.viewer.hasFound());
}

TEST(ViewerTest, StopsAtMaxCount) {
    Viewing viewing({.maxEntries = 2});
    viewing.viewer.bytes(header() + "a\n" + header() + "b\n");
    EXPECT_FALSE(viewing.viewer.hasEnough());
    viewing.viewer.bytes(header() + "c\n" + header() + "d\n");
    EXPECT_TRUE(viewing.viewer.hasEnough());
    viewing.viewer.finish();
    EXPECT_EQ(viewing.take(), header() + "a\n" + header() + "b\n");
}

TEST(ViewerTest, ContextIsShownAroundMatches) {
    Settings settings{.context = 1};
    settings.filter.texts = {"hit"};
    Viewing viewing(settings);
    for (const char* const text : {"a", "b", "hit 1", "hit 2", "c", "d", "e", "hit 3", "f", "g"}) {
        viewing.viewer.bytes(header() + text + "\n");
    }
    viewing.viewer.finish();
    const auto lines = [](const std::vector<std::string>& texts) {
        std::string all;
        for (const std::string& text : texts) {
            all += text == "--" ? "--\n" : header() + text + '\n';
        }
        return all;
    };
    EXPECT_EQ(viewing.take(), lines({"b", "hit 1", "hit 2", "c", "--", "e", "hit 3", "f"}));
    EXPECT_EQ(viewing.viewer.entries(), 3u);
}

TEST(ViewerTest, ContextIsShownAfterTheLastEntryThatMaxCountAllows) {
    Settings settings{.maxEntries = 1, .context = 2};
    settings.filter.texts = {"hit"};
    Viewing viewing(settings);
    viewing.viewer.bytes(header() + "hit 1\n" + header() + "a\n" + header() + "b\n");
    EXPECT_FALSE(viewing.viewer.hasEnough());  // "b" is not shown yet, because a line of its record may follow
    viewing.viewer.bytes(header() + "c\n" + header() + "d\n");
    EXPECT_TRUE(viewing.viewer.hasEnough());
    viewing.viewer.finish();
    EXPECT_EQ(viewing.take(), header() + "hit 1\n" + header() + "a\n" + header() + "b\n");
}

TEST(ViewerTest, ContextConsistsOfWholeTrails) {
    Settings settings{.fold = true, .context = 1};
    settings.filter.texts = {"hit"};
    Viewing viewing(settings);
    viewing.viewer.bytes(header() + "Vorel Error: a\n" + header() + "Vorel Error: f: Vorel exception caught\n" +
                         header() + "WARN: hit\n");
    viewing.viewer.finish();
    EXPECT_EQ(viewing.take(),
              header() + "Vorel Error: a\n    > f: Vorel exception caught\n" + header() + "WARN: hit\n");
}

TEST(ViewerTest, InvertedTextExcludesWholeTrails) {
    Settings settings{.fold = true};
    settings.filter.texts = {"Parser"};
    settings.filter.invert = true;
    Viewing viewing(settings);
    viewing.viewer.bytes(header() + "Vorel Error: a\n" + header() +
                         "Vorel Error: Parser::run: Vorel exception caught\n" + header() + "WARN: b\n");
    viewing.viewer.finish();
    EXPECT_EQ(viewing.take(), header() + "WARN: b\n");
}

TEST(ViewerTest, TailShowsTheLastEntries) {
    Viewing viewing({.tail = 2});
    viewing.viewer.bytes(header() + "a\n" + header() + "b\nfurther\n" + header() + "c\n");
    viewing.viewer.showPending(0);
    viewing.viewer.showPending(0);
    EXPECT_EQ(viewing.take(), "");
    viewing.viewer.finish();
    EXPECT_EQ(viewing.take(), header() + "b\n    | further\n" + header() + "c\n");
}

TEST(ViewerTest, FollowedTailShowsTheLastEntryAndAllLaterEntries) {
    Viewing viewing({.follow = true, .tail = 1});
    viewing.viewer.bytes(header() + "a\n" + header() + "b\n");
    viewing.viewer.showPending(0);
    EXPECT_EQ(viewing.take(), "");
    viewing.viewer.showPending(0);
    EXPECT_EQ(viewing.take(), header() + "b\n");
    viewing.viewer.bytes(header() + "c\n" + header() + "d\n" + header() + "e\n");
    viewing.viewer.showPending(0);
    viewing.viewer.showPending(0);
    EXPECT_EQ(viewing.take(), header() + "c\n" + header() + "d\n" + header() + "e\n");
}

TEST(ViewerTest, FollowedSummaryIsRedrawnOnAConsole) {
    std::string written;
    Viewer viewer(
        {.follow = true, .summary = true}, false, [&](std::string_view text) { written += text; }, 3);
    viewer.bytes(header() + "WARN: a\n" + header() + "WARN: b\n");
    viewer.showPending(5000);
    EXPECT_EQ(written, "\x1B[H\x1B[2J\x1B[3J1 record of 1 process at 2026-11-16 01:43:08\n\n");
    written.clear();
    viewer.showPending(5999);  // too early for another drawing
    EXPECT_EQ(written, "");
    viewer.showPending(6000);
    EXPECT_THAT(written, ::testing::HasSubstr("2 records"));
    written.clear();
    viewer.showPending(9000);  // no record was added since the last drawing
    EXPECT_EQ(written, "");
    viewer.finish();
    EXPECT_THAT(written, ::testing::StartsWith("2 records"));
    EXPECT_THAT(written, ::testing::HasSubstr("Steps of"));
}

TEST(ViewerTest, FollowedSummaryIsWrittenOnceIntoAPipe) {
    Viewing viewing({.follow = true, .summary = true});
    viewing.viewer.bytes(header() + "WARN: a\n");
    viewing.viewer.showPending(0);
    viewing.viewer.showPending(9000);
    EXPECT_EQ(viewing.take(), "");
    viewing.viewer.finish();
    EXPECT_THAT(viewing.take(), ::testing::StartsWith("1 record "));
}

TEST(ViewerTest, SummaryCountsMatchingRecords) {
    Settings settings{.json = true, .summary = true};
    settings.filter.prefixes = {"WARN"};
    Viewing viewing(settings);
    viewing.viewer.bytes("garbage\n" + header() + "WARN: a\n" + header() + "DEBUG: b\n");
    viewing.viewer.finish();
    EXPECT_THAT(viewing.take(), ::testing::StartsWith(R"({"type":"summary","entries":1,"records":1,"processes":1,"f)"));
    EXPECT_EQ(viewing.viewer.undecided(), 1u);
    EXPECT_TRUE(viewing.viewer.hasFound());
}

TEST(ViewerTest, NothingFoundText_NamesTheTimesOfTheLog) {
    const std::string lines = "garbage\n" + header(1, 1, "01:00:00") + "a\n" + header(1, 1, "02:00:00") + "b\n";
    struct Case {
        const char* why;
        std::string bytes;
        const char* text;
        std::optional<std::size_t> tail;
        const wchar_t* note;
    };
    const Case cases[] = {
        {"no match", lines, "other", std::nullopt,
         L"nothing found; the log has records from 2026-11-16 01:00:00 to 2026-11-16 02:00:00"},
        {"match", lines, "b", std::nullopt, L""},
        {"no records", "garbage\n", "other", std::nullopt, L""},
        {"only the end was read", lines, "other", 1, L""},
    };
    for (const bool folds : {false, true}) {
        for (const Case& c : cases) {
            Settings settings{.fold = folds, .tail = c.tail};
            settings.filter.texts = {c.text};
            Viewing viewing(settings);
            viewing.viewer.bytes(c.bytes);
            viewing.viewer.finish();
            EXPECT_EQ(viewing.viewer.nothingFoundText(), c.note) << c.why;
        }
    }
}

TEST(ViewerTest, RecordsThatDoNotMatchAreNotShown) {
    Settings settings;
    settings.filter.texts = {"else"};
    Viewing viewing(settings);
    viewing.viewer.bytes("garbage\n" + header() + "WARN: a\n");
    viewing.viewer.finish();
    EXPECT_EQ(viewing.take(), "");
    EXPECT_FALSE(viewing.viewer.hasFound());
    EXPECT_EQ(viewing.viewer.undecided(), 0u);  // the filter does not need the header that "garbage" lacks
}

}  // namespace
