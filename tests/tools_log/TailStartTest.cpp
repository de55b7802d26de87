/// \file
/// Tests of `findTailStart`, which finds the part at the end of a log that contains the entries for --tail.

#include "vorellog/TailStart.h"

#include <algorithm>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "tools_log/Records.h"

namespace {

using test::header;
using vorellog::FileId;
using vorellog::findTailStart;
using vorellog::LogFile;
using vorellog::LogFiles;
using vorellog::Settings;

class Bytes : public LogFile {
public:
    Bytes(const std::string& bytes, unsigned long long& read) : m_bytes(bytes), m_read(read) {}
    [[nodiscard]] FileId id() const override { return {1, 2}; }
    [[nodiscard]] unsigned long long size() const override { return m_bytes.size(); }
    std::size_t read(unsigned long long offset, char* buffer, std::size_t size) override {
        const std::size_t count = m_bytes.copy(buffer, size, std::min<std::size_t>(offset, m_bytes.size()));
        m_read += count;
        return count;
    }

private:
    const std::string& m_bytes;
    unsigned long long& m_read;
};

/// A log without a backup.
class Files : public LogFiles {
public:
    std::string bytes;
    unsigned long long read = 0;

    std::unique_ptr<LogFile> open(Which which) override {
        return which == Which::Log && !bytes.empty() ? std::make_unique<Bytes>(bytes, read) : nullptr;
    }
};

std::string linesOf(std::size_t count, const std::string& text) {
    std::string lines;
    for (std::size_t line = 0; line != count; ++line) {
        lines += header() + text + "\n";
    }
    return lines;
}

TEST(TailStartTest, ReadsOnlyTheEnd) {
    Files files;
    files.bytes = linesOf(200000, "WARN: a");
    const auto start = findTailStart(files, {.tail = 100});
    ASSERT_TRUE(start);
    EXPECT_EQ(start->log, (FileId{1, 2}));
    EXPECT_EQ(files.bytes.compare(start->offset, header().size(), header()), 0);
    EXPECT_EQ(files.bytes[start->offset - 1], '\n');
    EXPECT_GE(files.bytes.size() - start->offset, 100 * (header().size() + 8));
    EXPECT_LT(files.read, files.bytes.size() / 10);
}

TEST(TailStartTest, PartGrowsUntilItContainsEnoughMatches) {
    Files files;
    files.bytes = linesOf(3, "WARN: hit") + linesOf(10000, "WARN: a");
    const std::size_t early = files.bytes.size();
    files.bytes = linesOf(60000, "WARN: b") + files.bytes;
    Settings settings{.tail = 2};
    settings.filter.texts = {"hit"};
    const auto start = findTailStart(files, settings);
    ASSERT_TRUE(start);
    EXPECT_LE(start->offset, files.bytes.size() - early);
    settings.tail = 4;
    EXPECT_FALSE(findTailStart(files, settings));
}

// With --fold, the part must contain 1,000 additional entries. Trails that begin before the part are incomplete, and
// the additional entries usually keep these trails out of the shown entries.
TEST(TailStartTest, Fold_RequiresAdditionalEntriesInThePart) {
    Files files;
    files.bytes = linesOf(20000, "Vorel Error: f: Vorel exception caught");
    const auto plain = findTailStart(files, {.tail = 3500});
    const auto folded = findTailStart(files, {.fold = true, .tail = 2500});
    ASSERT_TRUE(plain);
    ASSERT_TRUE(folded);
    EXPECT_EQ(folded->offset, plain->offset);
}

TEST(TailStartTest, SomeLogsMustBeReadFromTheStart) {
    Files files;
    EXPECT_FALSE(findTailStart(files, {.tail = 1})) << "no log";
    files.bytes = linesOf(10, "WARN: a");
    EXPECT_FALSE(findTailStart(files, {.tail = 1})) << "a small log";
    files.bytes = linesOf(20000, "WARN: a");
    EXPECT_FALSE(findTailStart(files, {})) << "no --tail";
    files.bytes = std::string(2000000, 'x');
    EXPECT_FALSE(findTailStart(files, {.tail = 1})) << "no record";
    files.bytes = "\xFF\xFE" + linesOf(20000, "WARN: a");
    EXPECT_FALSE(findTailStart(files, {.tail = 1})) << "UTF-16";
}

}  // namespace
