#include "vorellog/LogLine.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/LogText.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/Exception.h"

namespace {

using vorellog::findNextHeader;
using vorellog::LogBody;
using vorellog::parseBody;
using vorellog::parseHeader;

constexpr vorellog::LocalMs kTime = 1794793388000;  // 2026-11-16 01:43:08

TEST(LogLineTest, ParseHeader_ReturnsTheFieldsOfAHeader) {
    struct Case {
        std::string_view line;
        vorellog::LocalMs timeMs;
        bool hasMilliseconds;
        std::string_view host;
        unsigned long processId;
        unsigned long threadId;
        std::string_view body;
    };
    const Case cases[] = {
        {"[Mon Nov 16 01:43:08 2026] host7.4312.9876: WARN: text", kTime, false, "host7", 4312, 9876, "WARN: text"},
        {"[Mon Nov 16 01:43:08 2026].007 host7.4312.9876: WARN: text", kTime + 7, true, "host7", 4312, 9876,
         "WARN: text"},
        {"[Mon Nov 16 01:43:08 2026] .4312.9876: x", kTime, false, "", 4312, 9876, "x"},
        {"[Mon Nov 16 01:43:08 2026] a.b.c.1.2: x", kTime, false, "a.b.c", 1, 2, "x"},
        {"[Mon Nov 16 01:43:08 2026] 10.0.0.1.1.2: x", kTime, false, "10.0.0.1", 1, 2, "x"},
        {"[Mon Nov 16 01:43:08 2026] h.4294967295.4294967295: ", kTime, false, "h", 4294967295, 4294967295, ""},
        {"[Mon Nov 16 01:43:08 2026] h.1.2:  two: colons: ", kTime, false, "h", 1, 2, " two: colons: "},
    };
    for (const Case& c : cases) {
        const auto header = parseHeader(c.line);
        ASSERT_TRUE(header) << c.line;
        EXPECT_EQ(header->timeMs, c.timeMs) << c.line;
        EXPECT_EQ(header->hasMilliseconds, c.hasMilliseconds) << c.line;
        EXPECT_EQ(c.line.substr(header->hostAt, header->hostSize), c.host) << c.line;
        EXPECT_EQ(header->processId, c.processId) << c.line;
        EXPECT_EQ(header->threadId, c.threadId) << c.line;
        EXPECT_EQ(c.line.substr(header->bodyAt), c.body) << c.line;
    }
}

TEST(LogLineTest, ParseHeader_RejectsInvalidHeaders) {
    for (const std::string_view line : {"",
                                        "[",
                                        "text",
                                        "Mon Nov 16 01:43:08 2026] host7.4312.9876: x",
                                        "[Mon Nov 16 01:43:08 2026]",
                                        "[Mon Nov 16 01:43:08 2026] ",
                                        "[Mon Nov 16 01:43:08 2026]host7.4312.9876: x",
                                        "[Mon Nov 16 01:43:08 2026] host7.4312.9876:x",
                                        "[Mon Nov 16 01:43:08 2026] host7.4312.9876:",
                                        "[Mon Nov 16 01:43:08 2026] host7.4312: x",
                                        "[Mon Nov 16 01:43:08 2026] 4312.9876: x",
                                        "[Mon Nov 16 01:43:08 2026] host7.4312.98x6: x",
                                        "[Mon Nov 16 01:43:08 2026] host7..9876: x",
                                        "[Mon Nov 16 01:43:08 2026] host7.4312.: x",
                                        "[Mon Nov 16 01:43:08 2026] host7.-1.9876: x",
                                        "[Mon Nov 16 01:43:08 2026] host7.4312.4294967296: x",
                                        "[Mon Nov 16 01:43:08 2026] ho st.1.2: x",
                                        "[Mon Nov 16 01:43:08 2026].45 host7.4312.9876: x",
                                        "[Mon Nov 16 01:43:08 2026].04x host7.4312.9876: x",
                                        "[Mon Nov 16 01:43:08 2026].0455 host7.4312.9876: x",
                                        "[Mon Nov 36 01:43:08 2026] host7.4312.9876: x",
                                        "[Mon Nov 16 01:43:08 2026) host7.4312.9876: x"}) {
        EXPECT_FALSE(parseHeader(line)) << line;
    }
}

TEST(LogLineTest, ParseHeader_RejectsIncompleteHeaders) {
    constexpr std::string_view kHeader = "[Mon Nov 16 01:43:08 2026].045 host7.4312.9876: ";
    for (std::size_t size = 0; size != kHeader.size(); ++size) {
        EXPECT_FALSE(parseHeader(kHeader.substr(0, size))) << size;
    }
    EXPECT_TRUE(parseHeader(kHeader));
}

TEST(LogLineTest, ParseBody_SeparatesPrefixAndMessage) {
    struct Case {
        std::string_view body;
        std::string_view prefix;
        bool truncated;
        std::string_view message;
    };
    const Case cases[] = {
        {"WARN: text", "WARN", false, "text"},
        {"Vorel Error: A::b: text", "Vorel Error", false, "A::b: text"},
        {"Vorel Error Truncated: text", "Vorel Error", true, "text"},
        {"AddHRESULTErrorToStack: ", "AddHRESULTErrorToStack", false, ""},
        {"no colon", "", false, "no colon"},
        {"colon:without space", "", false, "colon:without space"},
        {"colon:", "", false, "colon:"},
        {": text", "", false, "text"},
        {"", "", false, ""},
    };
    for (const Case& c : cases) {
        const LogBody body = parseBody(c.body);
        EXPECT_EQ(body.prefix, c.prefix) << c.body;
        EXPECT_EQ(body.truncated, c.truncated) << c.body;
        EXPECT_EQ(body.message, c.message) << c.body;
    }
}

TEST(LogLineTest, FindNextHeader_IgnoresAHeaderAtTheStart) {
    const std::string header = "[Mon Nov 16 01:43:08 2026] host7.4312.9876: ";
    EXPECT_EQ(findNextHeader(header + "text"), std::string_view::npos);
    EXPECT_EQ(findNextHeader("half a l" + header + "text"), 8u);
    EXPECT_EQ(findNextHeader(header + "ha[lf" + header + "text"), header.size() + 5);
    EXPECT_EQ(findNextHeader("[[[" + header), 3u);
    EXPECT_EQ(findNextHeader("[Mon Nov 16 01:4" + header + header), 16u);
    EXPECT_EQ(findNextHeader(header + "[Mon Nov 16 01:43:08 2026] host7"), std::string_view::npos);
    EXPECT_EQ(findNextHeader(""), std::string_view::npos);
}

TEST(LogLineTest, ParseHeader_AgreesWithAnIndependentParserOnLinesOfTheLibrary) {
    const test::TemporaryLog log;
    vorel::Exception::warn("low on paper");
    vorel::Exception::log(log.path().c_str(), -1, "custom prefix", "text: %d", 7);
    const vorel::Exception failure(L"line %d is not a number", 7);
    const std::vector<std::string> lines = test::readLines(log.path());
    ASSERT_EQ(lines.size(), 3u);
    for (const std::string& line : lines) {
        const auto expected = test::parseLogLine(line);
        const auto header = parseHeader(line);
        ASSERT_TRUE(expected && header) << line;
        EXPECT_EQ(header->timeMs, vorellog::parseLogTime(expected->time)) << line;
        EXPECT_EQ(line.substr(header->hostAt, header->hostSize), expected->computer) << line;
        EXPECT_EQ(header->processId, expected->processId) << line;
        EXPECT_EQ(header->threadId, expected->threadId) << line;
        EXPECT_EQ(line.substr(header->bodyAt), expected->message) << line;
    }
    EXPECT_EQ(parseBody(std::string_view(lines[1]).substr(parseHeader(lines[1])->bodyAt)).prefix, "custom prefix");
}

}  // namespace
