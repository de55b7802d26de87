// If memory for a line of the log cannot be allocated, the line is rendered in pieces, which together are the whole
// line.

#include "exceptions/LogLine.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "heap/CountingHeap.h"

namespace {

using vorel::detail::LogLine;

TEST(LogLine, PiecesTogetherContainTheWholeLine) {
    std::wstring text;
    std::string utf8;
    for (int count = 0; count != 900; ++count) {
        text += L"\x20AC";
        utf8 += "\xE2\x82\xAC";
    }
    static char pieces[10000];
    // A line is rendered in a buffer of 1024 bytes on the stack. Depending on `prefixBytes`, header and prefix together
    // end before, at or after the end of this buffer.
    for (std::size_t prefixBytes = 900; prefixBytes != 1100; ++prefixBytes) {
        const std::string prefix(prefixBytes, 'p');
        std::size_t size = 0;
        int count = 0;
        heap::arm(1, heap::Failure::FromThenOn);
        LogLine line(prefix.c_str(), text.c_str(), false);
        do {
            const std::size_t bytes = std::strlen(line.piece());
            std::memcpy(pieces + size, line.piece(), bytes);
            size += bytes;
            ++count;
        } while (line.next());
        heap::disarm();
        const std::string complete(pieces, size);
        EXPECT_EQ(complete.front(), '[');
        EXPECT_TRUE(complete.ends_with(": " + prefix + utf8 + "\n")) << prefixBytes;
        EXPECT_GE(count, 4) << prefixBytes;
    }
}

}  // namespace
