#include "vorellog/MessageGroups.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools_log/Records.h"

namespace {

using test::header;
using test::recordOf;
using ::testing::ElementsAre;
using vorellog::MessageGroups;
using vorellog::ProcessSet;
using vorellog::ProcessTable;
using vorellog::Trail;

std::vector<std::string> messagesOf(const MessageGroups& groups) {
    std::vector<std::string> messages;
    for (const MessageGroups::Group* const group : groups.sorted()) {
        messages.push_back(std::to_string(group->entries.records) + ' ' + group->prefix + ": " +
                           std::string(group->message));
    }
    return messages;
}

TEST(MessageGroupsTest, GroupsAreSortedByCountAndThenByRecency) {
    MessageGroups groups;
    for (const char* const clock : {"01:00:01", "01:00:00"}) {
        groups.add(recordOf(header(1, 1, clock) + "WARN: often " + clock), 0);
    }
    groups.add(recordOf(header(1, 1, "01:00:00") + "WARN: early"), 0);
    groups.add(recordOf(header(1, 1, "01:00:02") + "WARN: late"), 0);
    groups.add(recordOf(header(1, 1, "01:00:02") + "DEBUG: late"), 0);
    EXPECT_THAT(messagesOf(groups),
                ElementsAre("2 WARN: often #:#:#", "1 DEBUG: late", "1 WARN: late", "1 WARN: early"));
    const MessageGroups::Group& often = *groups.sorted().front();
    EXPECT_EQ(often.entries.lastMs - often.entries.firstMs, 1000);
    EXPECT_EQ(often.writer, "host7.1.1");
    EXPECT_EQ(often.example, "often 01:00:01");
}

TEST(MessageGroupsTest, EachProcessOfAGroupIsCountedOnce) {
    MessageGroups groups;
    for (const vorellog::ProcessNumber process : {7U, 7U, 64U, 7U, 65U}) {
        groups.add(recordOf(header() + "WARN: a"), process);
    }
    EXPECT_EQ(groups.sorted().front()->processes.size(), 3u);
    EXPECT_FALSE(groups.sorted().front()->processes.hasOthers());
}

TEST(MessageGroupsTest, LongTextsOfAGroupAreShortened) {
    MessageGroups groups;
    groups.add(recordOf(header() + std::string(60, 'p') + ": " + std::string(2000, 'm')), 0);
    const MessageGroups::Group& group = *groups.sorted().front();
    EXPECT_EQ(group.prefix, std::string(MessageGroups::kMaxPrefixBytes, 'p') + "...");
    EXPECT_EQ(group.example, std::string(MessageGroups::kMaxExampleBytes, 'm') + "...");
    EXPECT_EQ(group.message.substr(0, 3), "mmm");
}

TEST(MessageGroupsTest, RecordsBeyondTheGroupLimitAreCountedAsUngrouped) {
    MessageGroups groups;
    const auto add = [&](std::size_t number) {
        std::string name;  // letters only, because digits are replaced in the message of a group
        for (; number != 0; number /= 10) {
            name += static_cast<char>('g' + number % 10);
        }
        groups.add(recordOf(header() + "WARN: " + name), 0);
    };
    for (std::size_t number = 1; number <= MessageGroups::kMaxGroups + 3; ++number) {
        add(number);
    }
    add(1);
    EXPECT_EQ(groups.size(), MessageGroups::kMaxGroups);
    EXPECT_EQ(groups.ungrouped(), 3u);
    EXPECT_EQ(groups.sorted().front()->entries.records, 2u);
}

TEST(MessageGroupsTest, TrailsAreComparedUpToTheLimit) {
    const auto trailOf = [](std::size_t size, const std::string& last) {
        Trail trail;
        trail.records.assign(size, recordOf(header() + "Vorel Error: f: Vorel exception rethrown"));
        trail.records.push_back(recordOf(header() + "Vorel Error: " + last));
        trail.isException = true;
        return trail;
    };
    MessageGroups groups;
    groups.add(trailOf(MessageGroups::kMaxTrail, "a"), 0);
    groups.add(trailOf(MessageGroups::kMaxTrail, "b"), 0);
    EXPECT_EQ(groups.size(), 2u);
    EXPECT_EQ(groups.sorted().front()->trail.size(), MessageGroups::kMaxTrail);
    groups.add(trailOf(MessageGroups::kMaxTrail + 1, "a"), 0);
    groups.add(trailOf(MessageGroups::kMaxTrail + 1, "b"), 0);  // differs from the previous trail only beyond the limit
    EXPECT_EQ(groups.size(), 3u);
}

TEST(MessageGroupsTest, FormOfAMessageLeavesTheEarlierPartsOfTheKeyIntact) {
    const std::string message = "1.23456789abc6";  // a number and a hexadecimal word
    MessageGroups groups;
    groups.add(recordOf(header() + message), 0);
    groups.add(recordOf(header() + "WARN: " + message), 0);
    Trail trail;
    trail.records = {recordOf(header() + "Vorel Error: a b c d"), recordOf(header() + "Vorel Error: " + message)};
    trail.isException = true;
    groups.add(trail, 0);
    EXPECT_THAT(messagesOf(groups), ElementsAre("1 : ##", "1 Vorel Error: a b c d", "1 WARN: ##"));
    EXPECT_THAT(groups.sorted()[1]->trail, ElementsAre("##"));
}

/// Records with different messages. The hashes of their keys are divisible by `divisor`.
std::vector<vorellog::Record> recordsByHash(std::size_t count, std::size_t divisor) {
    std::vector<vorellog::Record> records;
    std::string name;
    for (std::size_t number = 1; records.size() != count; ++number) {
        name.assign("WARN\n");  // the start of the key of each group
        for (std::size_t rest = number; rest != 0; rest /= 20) {
            name += static_cast<char>('g' + rest % 20);
        }
        if (std::hash<std::string_view>()(name) % divisor == 0) {
            records.push_back(recordOf(header() + "WARN: " + name.substr(5)));
        }
    }
    return records;
}

/// Adds the records five times to new groups, and measures the time. Returns the shortest time of three such runs.
std::chrono::nanoseconds timeOfAdding(const std::vector<vorellog::Record>& records) {
    auto shortest = std::chrono::nanoseconds::max();
    for (int count = 0; count != 3; ++count) {
        MessageGroups groups;
        const auto start = std::chrono::steady_clock::now();
        for (int repetition = 0; repetition != 5; ++repetition) {
            for (const vorellog::Record& record : records) {
                groups.add(record, 0);
            }
        }
        shortest = std::min<std::chrono::nanoseconds>(shortest, std::chrono::steady_clock::now() - start);
        EXPECT_EQ(groups.size(), records.size());
    }
    return shortest;
}

TEST(MessageGroupsTest, MessagesWithCollidingHashesAreNotMuchSlower) {
    constexpr std::size_t kCount = 5000;
    constexpr std::size_t kBuckets = 5087;  // the buckets of a hash table of libstdc++ with kCount elements
    const auto usual = timeOfAdding(recordsByHash(kCount, 1));
    const auto colliding = timeOfAdding(recordsByHash(kCount, kBuckets));
    EXPECT_LT(colliding.count(), 8 * usual.count());  // a hash table would take more than 20 times as long
}

TEST(ProcessSetTest, ProcessesBeyondTheLimitAreCountedAsOneProcess) {
    ProcessSet set;
    set.add(3, true);
    set.add(ProcessTable::kOthers, true);
    set.add(ProcessTable::kOthers, true);
    EXPECT_EQ(set.size(), 2u);
    EXPECT_TRUE(set.hasOthers());
    set.add(5, false);   // fits into the only 64-bit word of the set
    set.add(64, false);  // would need a second word, so the process is counted as one of the others
    EXPECT_EQ(set.size(), 3u);
    EXPECT_EQ(set.sizeBytes(), 8u);
}

TEST(ProcessTableTest, ProcessesAreNumberedByHostAndId) {
    ProcessTable table;
    const auto numberOf = [&](const std::string& line) {
        const vorellog::Record record = recordOf(line);
        return table.numberOf(record, *record.header());
    };
    EXPECT_EQ(numberOf(header(1, 7)), 0u);
    EXPECT_EQ(numberOf(header(2, 7)), 0u);
    EXPECT_EQ(numberOf(header(1, 8)), 1u);
    EXPECT_EQ(numberOf("[Mon Nov 16 01:43:08 2026] other.7.1: a"), 2u);
    EXPECT_EQ(numberOf("[Mon Nov 16 01:43:08 2026] .7.1: a"), 3u);
    EXPECT_EQ(table.nameOf(1), "host7.8");
    EXPECT_EQ(table.nameOf(3), ".7");
    EXPECT_EQ(table.size(), 4u);
}

TEST(ProcessTableTest, ProcessesAboveTheLimitShareOneNumber) {
    ProcessTable table;
    for (std::size_t process = 0; process != ProcessTable::kMaxProcesses; ++process) {
        vorellog::LogHeader each;
        each.processId = static_cast<unsigned long>(process);
        ASSERT_EQ(table.numberOf({}, each), process);
    }
    vorellog::LogHeader another;
    another.processId = ProcessTable::kMaxProcesses;
    EXPECT_EQ(table.numberOf({}, another), ProcessTable::kOthers);
    another.processId = 0;
    EXPECT_EQ(table.numberOf({}, another), 0u);
}

}  // namespace
