#include "vorellog/InputDecoder.h"

#include <algorithm>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/Tool.h"

namespace {

using vorellog::Encoding;
using vorellog::encodingOf;
using vorellog::InputDecoder;
using namespace std::string_view_literals;

/// The output of a decoder. "|" marks the end of a file, "?" a gap.
class Text : public vorellog::LogSink {
public:
    std::string text;
    void bytes(std::string_view bytes) override { text += bytes; }
    void endOfFile() override { text += '|'; }
    void gap() override { text += '?'; }
};

/// Decodes `bytes` in pieces of `size` bytes.
std::string decoded(std::string_view bytes, std::size_t size) {
    Text sink;
    InputDecoder decoder(sink, L"a.log");
    while (!bytes.empty()) {
        decoder.bytes(bytes.substr(0, size));
        bytes.remove_prefix(std::min(size, bytes.size()));
    }
    decoder.endOfFile();
    return sink.text;
}

// printf '[Mon a\n' | gzip -n
constexpr std::string_view kGzip =
    "\x1F\x8B\x08\x00\x00\x00\x00\x00\x00\x03\x8B\xF6\xCD\xCF\x53\x48\xE4\x02\x00\x35\xEE\x9D\x6B\x07\x00\x00\x00"sv;

TEST(InputDecoderTest, EveryEncodingIsDecoded) {
    struct Case {
        std::string_view bytes;
        std::string_view text;
        const char* why;
    };
    const std::string twice = std::string(kGzip) + std::string(kGzip);
    const std::string padded = twice + std::string(5, '\0');
    const Case cases[] = {
        {"", "|", "empty"},
        {"a", "a|", "shorter than the bytes that show the encoding"},
        {"[Mon a\r\n", "[Mon a\r\n|", "plain"},
        {"\xEF\xBB\xBF[Mon", "[Mon|", "byte-order mark before UTF-8"},
        {"\xEF\xBB\xBF", "|", "only a byte-order mark"},
        {"a\xEF\xBB\xBF.", "a\xEF\xBB\xBF.|", "a byte-order mark within the text is kept"},
        {"\xFF\xFE[\0\xE9\0\x3D\xD8\x00\xDE\n\0"sv, "[\xC3\xA9\xF0\x9F\x98\x80\n|", "UTF-16, little endian"},
        {"\xFE\xFF\0[\0\xE9\xD8\x3D\xDE\x00\0\n"sv, "[\xC3\xA9\xF0\x9F\x98\x80\n|", "UTF-16, big endian"},
        {"[\0M\0o\0"sv, "[Mo|", "UTF-16 without a byte-order mark, little endian"},
        {"\0[\0M\0o"sv, "[Mo|", "UTF-16 without a byte-order mark, big endian"},
        {"[\0M\0o"sv, "[M\xEF\xBF\xBD|", "half a code unit at the end"},
        {"[\0\x3D\xD8"sv, "[\xEF\xBF\xBD|", "half a surrogate pair at the end"},
        {kGzip, "[Mon a\n|", "gzip"},
        {twice, "[Mon a\n[Mon a\n|", "two gzip members"},
        {padded, "[Mon a\n[Mon a\n|", "zero bytes after gzip data"},
    };
    for (const Case& c : cases) {
        for (const std::size_t size : {1U, 2U, 3U, 5U, 1000U}) {
            EXPECT_EQ(decoded(c.bytes, size), c.text) << c.why << ", in pieces of " << size;
        }
    }
}

TEST(InputDecoderTest, TruncatedOrDamagedGzipDataIsAFailure) {
    Text sink;
    InputDecoder decoder(sink, L"a.log");
    decoder.bytes(kGzip.substr(0, kGzip.size() - 9));
    EXPECT_THROW(decoder.endOfFile(), tools::Failure);
    EXPECT_EQ(sink.text.back(), '|');
    std::string damaged(kGzip);
    damaged[kGzip.size() - 6] = 'x';  // in the checksum
    EXPECT_THROW(decoder.bytes(damaged), tools::Failure);
}

TEST(InputDecoderTest, StoppingEarlyIsNoFailure) {
    struct Case {
        std::string_view bytes;
        std::string_view text;
        const char* why;
    };
    const Case cases[] = {
        {kGzip.substr(0, kGzip.size() - 9), "[Mon a\n|", "gzip data without its end"},
        {"[\0M\0o"sv, "[M|", "half a code unit"},
        {"ab", "|", "the encoding is not known yet"},
    };
    for (const Case& c : cases) {
        Text sink;
        InputDecoder decoder(sink, L"a.log");
        decoder.bytes(c.bytes);
        decoder.stop();
        EXPECT_EQ(sink.text, c.text) << c.why;
        decoder.bytes("plain");
        decoder.endOfFile();
        EXPECT_EQ(sink.text, std::string(c.text) + "plain|") << c.why;
    }
}

TEST(InputDecoderTest, EncodingIsDetectedAtTheStartOfEachFile) {
    Text sink;
    InputDecoder decoder(sink, L"a.log");
    decoder.bytes(kGzip);
    decoder.endOfFile();
    decoder.bytes("\xEF\xBB\xBFplain");
    decoder.gap();
    decoder.endOfFile();
    decoder.startWithin();
    decoder.bytes("\xEF\xBB\xBFplain");
    EXPECT_EQ(sink.text, "[Mon a\n|plain?|\xEF\xBB\xBFplain");
}

TEST(InputDecoderTest, LongGzipDataIsDecodedCompletely) {
    // Ten stored blocks of the maximum size.
    std::string stored("\x1F\x8B\x08\x00\x00\x00\x00\x00\x00\x03\x00\xFF\xFF\x00\x00", 15);
    stored += std::string(0xFFFF, 'a');
    Text sink;
    InputDecoder decoder(sink, L"a.log");
    for (int block = 0; block != 10; ++block) {
        decoder.bytes(block == 0 ? std::string_view(stored) : std::string_view(stored).substr(10));
    }
    EXPECT_EQ(sink.text, std::string(std::size_t{10} * 0xFFFF, 'a'));
}

TEST(InputDecoderTest, EncodingOf_DetectsTheEncoding) {
    EXPECT_EQ(encodingOf("[Mon"), Encoding::Plain);
    EXPECT_EQ(encodingOf(""), Encoding::Plain);
    EXPECT_EQ(encodingOf("\x1F\x8B\x08\x00"sv), Encoding::Gzip);
    EXPECT_EQ(encodingOf("[\0M\0"sv), Encoding::Utf16LittleEndian);
    EXPECT_EQ(encodingOf("\0[\0M"sv), Encoding::Utf16BigEndian);
}

}  // namespace
