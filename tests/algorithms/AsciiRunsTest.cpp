#include "algorithms/AsciiRuns.h"

#include <algorithm>
#include <limits>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "support/PageEdge.h"

namespace {

using vorel::algorithms::narrowAsciiRun;
using vorel::algorithms::widenAsciiRun;

constexpr std::size_t kMaxLength = 70;
constexpr std::size_t kAlignments = 32;
constexpr std::size_t kGuards = 33;  // guard elements after the output: more than the widest store writes

/// The conversion of bytes to units and the conversion of units to bytes share one set of tests.
struct Widening {
    using From = unsigned char;
    using To = wchar_t;
    static constexpr From kStops[] = {0x00, 0x80, 0xFF};
    static std::size_t run(const From* from, std::size_t count, To* to) { return widenAsciiRun(from, count, to); }
};
struct Narrowing {
    using From = wchar_t;
    using To = unsigned char;
    // Zero, units above 0x7F (some contain an ASCII byte), and units at the limits of a saturating conversion to
    // bytes.
    static constexpr From kStops[] = {0x0000, 0x0080, 0x00FF, 0x0100, 0x4100, 0x7FFF, 0x8000, 0x8041, 0xD841, 0xFFFF};
    static std::size_t run(const From* from, std::size_t count, To* to) { return narrowAsciiRun(from, count, to); }
};

template <class Direction>
class AsciiRunsTest : public testing::Test {
public:
    using From = typename Direction::From;
    using To = typename Direction::To;
    using Text = std::basic_string<From>;

    /// The values 0x01 to 0x7F, repeated.
    static Text ascii(std::size_t count, std::size_t start = 0) {
        Text text;
        for (std::size_t index = 0; index < count; ++index) {
            text += static_cast<From>(1 + (start + index) % 0x7F);
        }
        return text;
    }

    /// Runs the algorithm on the first `count` elements of `from`. Expects that the first `expected` elements are in
    /// the output, and that nothing else is written.
    void expectRun(const From* from, std::size_t count, std::size_t expected, std::size_t alignment) {
        static constexpr To kGuard = 0x5A;
        static To memory[kAlignments + kMaxLength + kGuards];
        std::fill(std::begin(memory), std::end(memory), kGuard);
        To* to = memory + alignment;
        EXPECT_EQ(Direction::run(from, count, to), expected);
        EXPECT_TRUE(std::equal(from, from + expected, to)) << "the output must contain the run";
        EXPECT_TRUE(std::all_of(memory, to, [](To unit) { return unit == kGuard; }))
            << "nothing may be written before the output";
        EXPECT_TRUE(std::all_of(to + expected, std::end(memory), [](To unit) { return unit == kGuard; }))
            << "nothing may be written after the run";
    }

    test::PageEdge<From> m_edge{4096};
};

struct DirectionNames {
    template <class Direction>
    static std::string GetName(int) {
        return std::is_same_v<Direction, Widening> ? "widening" : "narrowing";
    }
};

using Directions = testing::Types<Widening, Narrowing>;
TYPED_TEST_SUITE(AsciiRunsTest, Directions, DirectionNames);

TYPED_TEST(AsciiRunsTest, Run_CopiesEveryLengthAtEveryAlignment) {
    for (std::size_t length = 0; length <= kMaxLength; ++length) {
        for (std::size_t alignment = 0; alignment < kAlignments; ++alignment) {
            SCOPED_TRACE(testing::Message() << "length " << length << ", alignment " << alignment);
            // The elements after the first `length` elements are also ASCII, so only the count ends the run.
            const auto text = this->ascii(length + kAlignments, alignment);
            this->expectRun(this->m_edge.placeAtStart(this->ascii(alignment) + text) + alignment, length, length,
                            alignment);
        }
    }
}

TYPED_TEST(AsciiRunsTest, Run_StopsAtAZeroOrNonAsciiAtEveryPosition) {
    for (const auto stop : TypeParam::kStops) {
        for (std::size_t length = 1; length <= kMaxLength; ++length) {
            for (std::size_t position = 0; position < length; ++position) {
                SCOPED_TRACE(testing::Message()
                             << "element " << unsigned{stop} << " at " << position << " of " << length);
                const std::size_t alignment = (length * 7 + position) % kAlignments;
                auto text = this->ascii(alignment + length);
                text[alignment + position] = stop;
                this->expectRun(this->m_edge.placeAtStart(text) + alignment, length, position, alignment);
            }
        }
    }
}

TYPED_TEST(AsciiRunsTest, Run_ReadsNoPageAfterTheText) {
    for (std::size_t length = 0; length <= kMaxLength; ++length) {
        SCOPED_TRACE(length);
        this->expectRun(this->m_edge.placeAtEnd(this->ascii(length)), length, length, 0);
    }
}

TYPED_TEST(AsciiRunsTest, Run_WithoutABoundReadsNoPageAfterTheZero) {
    for (std::size_t length = 0; length <= kMaxLength; ++length) {
        SCOPED_TRACE(length);
        auto text = this->ascii(length);
        text += typename TypeParam::From{0};
        this->expectRun(this->m_edge.placeAtEnd(text), static_cast<std::size_t>(-1), length, 0);
    }
}

TYPED_TEST(AsciiRunsTest, Run_ReadsNothingBeforeItsStart) {
    for (std::size_t length = 0; length <= kMaxLength; ++length) {
        SCOPED_TRACE(length);
        this->expectRun(this->m_edge.placeAtStart(this->ascii(length)), length, length, 0);
    }
}

TYPED_TEST(AsciiRunsTest, Run_CopiesExactly01To7F) {
    using Element = typename TypeParam::From;
    for (unsigned int value = 0; value <= std::numeric_limits<Element>::max(); ++value) {
        const bool ascii = value >= 0x01 && value <= 0x7F;
        // The value is tested first inside a block of sixteen elements, and then as a text of one element.
        auto text = this->ascii(48);
        text[20] = static_cast<Element>(value);
        typename TypeParam::To block[48];
        ASSERT_EQ(TypeParam::run(text.data(), 48, block), ascii ? 48u : 20u) << value;
        ASSERT_EQ(TypeParam::run(text.data() + 20, 1, block), ascii ? 1u : 0u) << value;
    }
}

}  // namespace
