/// \file
/// Random logs with damage, forged headers and control characters. For any log, the output of the viewer contains no
/// characters that a terminal would interpret, except tabs and line feeds. A record whose header is in the middle of a
/// line is marked as mid-line.

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tools_log/Records.h"
#include "vorellog/LineSplitter.h"
#include "vorellog/Settings.h"
#include "vorellog/Viewer.h"

namespace {

using test::header;
using vorellog::Settings;

constexpr unsigned int kSeed = 20261116;
constexpr int kLogs = 3000;

// NOLINTBEGIN(misc-misleading-bidirectional): the test needs these characters
/// The pieces of a random log. Most of them have a meaning for the parser or for a terminal.
const std::vector<std::string>& pieces() {
    static const std::vector<std::string> all = {"\n",
                                                 "\r\n",
                                                 "\r",
                                                 "\t",
                                                 " ",
                                                 "[",
                                                 "]",
                                                 ": ",
                                                 "\"",
                                                 "\\",
                                                 "\x1B[2J",
                                                 "\x1B]0;t\x07",
                                                 "\x7F",
                                                 "\b",
                                                 "\v",
                                                 std::string(1, '\0'),
                                                 "\xC2\x85",
                                                 "\xC2\x9B",
                                                 "\xD8\x9C",
                                                 "\xE2\x80\x8B",
                                                 "\xE2\x80\x8F",
                                                 "\xE2\x80\xA8",
                                                 "\xE2\x80\xAE",
                                                 "\xE2\x81\xA0",
                                                 "\xE2\x81\xA6",
                                                 "\xEF\xBB\xBF",
                                                 "\xE2",
                                                 "\xE2\x80",
                                                 "\xF0\x9F\x98\x80",
                                                 "caf\xC3\xA9",
                                                 "text",
                                                 "Vorel Error",
                                                 "Vorel Error Truncated: ",
                                                 "WARN: ",
                                                 "Vorel Error: f: Vorel exception caught",
                                                 "Vorel Error: g: Vorel exception rethrown",
                                                 "Vorel Error: h: Severe error caught",
                                                 header(1),
                                                 header(2),
                                                 header(1, 7),
                                                 header(1, 4312, "23:59:59"),
                                                 "[Mon Nov 16 01:43:08 2026].045 \x1B\xE2\x80\xAE.1.2: ",
                                                 "[Mon Nov 16 01:43"};
    return all;
}
// NOLINTEND(misc-misleading-bidirectional)

std::string randomLog(std::mt19937& random) {
    std::string log;
    const auto count = random() % 60;
    for (auto index = count; index != 0; --index) {
        const auto kind = random() % 8;
        if (kind == 0) {
            log += static_cast<char>(random() % 256);
        } else if (kind == 1) {
            log += "\r\n" + header(random() % 3) + "Vorel Error: ";
        } else {
            log += pieces()[random() % pieces().size()];
        }
    }
    return log;
}

/// The output of the viewer for a log that is passed in blocks of random size.
std::string shown(const Settings& settings, std::string_view log, std::mt19937& random) {
    std::string out;
    vorellog::Viewer viewer(settings, false, [&out](std::string_view text) { out += text; });
    while (!log.empty()) {
        const std::size_t size = std::min<std::size_t>(1 + random() % 40, log.size());
        viewer.bytes(log.substr(0, size));
        log.remove_prefix(size);
        if (random() % 4 == 0) {
            viewer.showPending(static_cast<vorellog::LocalMs>(random() % 10000));
        }
    }
    viewer.finish();
    return out;
}

/// Returns the code point at `at`, or 0 if the byte at `at` is below 0xC2 and not ASCII, or if a trailing byte is
/// missing. Does not detect other invalid UTF-8, such as the byte 0xF8. Moves `at` past the bytes that were read.
unsigned int codePointAt(std::string_view text, std::size_t& at) {
    const auto lead = static_cast<unsigned char>(text[at++]);
    if (lead < 0x80) {
        return lead;
    }
    const unsigned int following = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    unsigned int codePoint = lead & (0x3FU >> following);
    for (unsigned int left = following; left != 0; --left) {
        if (lead < 0xC2 || at == text.size() || (static_cast<unsigned char>(text[at]) & 0xC0) != 0x80) {
            return 0;
        }
        codePoint = codePoint << 6 | (static_cast<unsigned char>(text[at++]) & 0x3FU);
    }
    return codePoint;
}

bool isInterpreted(unsigned int codePoint) {
    return (codePoint < 0x20 && codePoint != '\t' && codePoint != '\n') || (codePoint >= 0x7F && codePoint <= 0x9F) ||
           codePoint == 0x061C || (codePoint >= 0x200B && codePoint <= 0x200F) ||
           (codePoint >= 0x2028 && codePoint <= 0x202E) || (codePoint >= 0x2060 && codePoint <= 0x2069) ||
           codePoint == 0xFEFF;
}

bool isSafe(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        if (isInterpreted(codePointAt(text, at))) {
            return false;
        }
    }
    return true;
}

TEST(HostileLogTest, OutputIsSafeForTerminals) {
    std::vector<Settings> forms(6);
    forms[1].fold = true;
    forms[2].json = true;
    forms[3].fold = true;
    forms[3].json = true;
    forms[4].summary = true;
    forms[5].summary = true;
    forms[5].json = true;
    std::mt19937 random(kSeed);
    for (int count = 0; count != kLogs; ++count) {
        const std::string log = randomLog(random);
        for (const Settings& form : forms) {
            const std::string out = shown(form, log, random);
            ASSERT_TRUE(isSafe(out)) << "seed " << kSeed << ", log " << count << ": " << out;
            ASSERT_TRUE(!form.json || out.find('\t') == std::string::npos) << "seed " << kSeed << ", log " << count;
        }
    }
}

TEST(HostileLogTest, RecordsAreMarkedMidLineUnlessTheirHeaderStartsALine) {
    std::mt19937 random(kSeed);
    for (int count = 0; count != kLogs; ++count) {
        const std::string log = randomLog(random);
        int starts = 0;
        for (std::size_t at = 0; at < log.size(); at = std::min(log.find('\n', at), log.size()) + 1) {
            const std::string_view line = std::string_view(log).substr(at);
            starts += vorellog::parseHeader(line.substr(0, line.find('\n'))) ? 1 : 0;
        }
        int records = 0;
        vorellog::RecordReader reader([&](const vorellog::Record& record) {
            records += record.header() && record.damage() != vorellog::Damage::MidLine ? 1 : 0;
        });
        vorellog::LineSplitter splitter([&](const vorellog::Line& line) { reader.add(line); });
        splitter.add(log);
        splitter.endOfFile();
        reader.flush();
        ASSERT_EQ(records, starts) << "seed " << kSeed << ", log " << count;
    }
}

}  // namespace
