#include "vorellog/Viewer.h"

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

TEST(ViewerTest, NextRecordCompletesThePreviousOne) {
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

TEST(ViewerTest, OpenTrailIsShownAfterTheGap) {
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

TEST(ViewerTest, SummaryCountsMatchingRecords) {
    Settings settings{.json = true, .summary = true};
    settings.filter.prefixes = {"WARN"};
    Viewing viewing(settings);
    viewing.viewer.bytes("garbage\n" + header() + "WARN: a\n" + header() + "DEBUG: b\n");
    viewing.viewer.finish();
    EXPECT_THAT(viewing.take(), ::testing::StartsWith(R"({"type":"summary","entries":1,"records":1,"f)"));
    EXPECT_EQ(viewing.viewer.undecided(), 1u);
    EXPECT_TRUE(viewing.viewer.hasFound());
}

TEST(ViewerTest, NoMatchingRecord) {
    Settings settings;
    settings.filter.texts = {"else"};
    Viewing viewing(settings);
    viewing.viewer.bytes("garbage\n" + header() + "WARN: a\n");
    viewing.viewer.finish();
    EXPECT_EQ(viewing.take(), "");
    EXPECT_FALSE(viewing.viewer.hasFound());
    EXPECT_EQ(viewing.viewer.undecided(), 0u);  // the filter checked its text
}

}  // namespace
