/// \file
/// Kills processes while they write. Each killed process may leave at most one partial line. All other processes
/// must continue to write.

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "stress/LogWriters.h"
#include "support/LogText.h"
#include "support/TemporaryLog.h"

namespace {

using test::LogWriters;
using test::StressLineId;

/// The complete stress lines of a log, and the number of its lines that begin with a partial line.
struct Remains {
    std::vector<StressLineId> complete;
    unsigned int torn = 0;
};

/// Reads a log in which a line may directly follow a partial line, because a partial line has no line end.
Remains readRemains(const std::string& path, const LogWriters& writers) {
    constexpr std::string_view kEnd = "\r\n";
    Remains remains;
    const std::string bytes = test::readFileBytes(path).value_or("");
    for (std::string_view rest = bytes; !rest.empty();) {
        const std::size_t length = rest.find(kEnd);
        std::string_view line = rest.substr(0, length);
        rest.remove_prefix(length == std::string_view::npos ? rest.size() : length + kEnd.size());
        StressLineId id;
        bool complete = test::isCompleteLine(line, writers, id);
        remains.torn += complete ? 0u : 1u;
        while (!complete && !line.empty()) {
            const std::size_t start = line.find('[', 1);
            line.remove_prefix(start == std::string_view::npos ? line.size() : start);
            complete = test::isCompleteLine(line, writers, id);
        }
        if (complete) {
            remains.complete.push_back(id);
        }
    }
    return remains;
}

TEST(KilledWriterTest, SurvivorsLoseNoLineWhenOtherWritersAreKilled) {
    constexpr unsigned int kSurvivors = 3;
    constexpr unsigned int kVictims = 3;
    constexpr unsigned int kLinesPerThread = 200;
    constexpr unsigned int kRounds = 3;
    unsigned int torn = 0;
    for (unsigned int round = 0; round != kRounds; ++round) {
        SCOPED_TRACE(testing::Message() << "round " << round);
        const test::TemporaryLog log;
        LogWriters writers(log, -1);
        writers.add(kSurvivors, kLinesPerThread);
        writers.add(kVictims, test::kEndless);
        writers.go();
        ASSERT_TRUE(writers.waitForProgress());
        for (unsigned int victim = kSurvivors; victim != kSurvivors + kVictims; ++victim) {
            writers.all()[victim].process->terminate();
        }
        ASSERT_TRUE(writers.finish());

        const Remains remains = readRemains(log.path(), writers);
        test::expectAllLines(writers, remains.complete);
        EXPECT_LE(remains.torn, kVictims);
        torn += remains.torn;
    }
    RecordProperty("TornLines", static_cast<int>(torn));
}

}  // namespace
