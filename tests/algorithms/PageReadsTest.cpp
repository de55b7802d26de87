#include "algorithms/PageReads.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/PageEdge.h"

namespace {

using vorel::algorithms::textLength;

constexpr std::size_t kMaxLength = 70;
constexpr std::size_t kPage = 4096;

class TextLength : public ::testing::TestWithParam<char> {
protected:
    /// `length` times the byte of the test, and a terminator.
    [[nodiscard]] static std::string text(std::size_t length) { return std::string(length, GetParam()) + '\0'; }

    test::PageEdge<char> m_edge{2 * kPage};
};

TEST_P(TextLength, CountsEveryLengthAtTheEndOfAPage) {
    for (std::size_t length = 0; length <= kMaxLength; ++length) {
        EXPECT_EQ(textLength(m_edge.placeAtEnd(text(length))), length);
    }
    EXPECT_EQ(textLength(m_edge.placeAtEnd(text(kPage + 100))), kPage + 100);
}

TEST_P(TextLength, CountsEveryLengthAtEveryAlignment) {
    for (std::size_t alignment = 0; alignment < 32; ++alignment) {
        for (std::size_t length = 0; length <= kMaxLength; ++length) {
            // Zeros before the text and units after its terminator are ignored.
            char* const position =
                m_edge.placeAtStart(std::string(alignment, '\0') + text(length) + text(20)) + alignment;
            ASSERT_EQ(textLength(position), length) << alignment;
        }
    }
}

TEST_P(TextLength, CountsAcrossPages) {
    for (std::size_t before = 0; before <= kMaxLength; ++before) {
        for (std::size_t length = 0; length <= kMaxLength; ++length) {
            char* const position = m_edge.firstElement() + kPage - before;
            text(length).copy(position, length + 1);
            ASSERT_EQ(textLength(position), length) << before;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OfBytes, TextLength, ::testing::Values('\x01', 'a', '\x7F', '\x80', '\xFF'),
                         [](const testing::TestParamInfo<char>& byte) {
                             return std::to_string(static_cast<unsigned char>(byte.param));
                         });

}  // namespace
