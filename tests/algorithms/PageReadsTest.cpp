#include "algorithms/PageReads.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/PageEdge.h"
#include "support/Widths.h"

namespace {

using vorel::algorithms::textLength;

constexpr std::size_t kMaxLength = 70;
constexpr std::size_t kPage = 4096;

template <class T>
class TextLength : public ::testing::Test {
protected:
    using Text = std::basic_string<T>;

    /// The units that the texts consist of. In some units, one byte is 0.
    static std::vector<T> units() {
        std::vector<T> all = {T{1}, T{'a'}, T{0x7F}, static_cast<T>(0x80), static_cast<T>(0xFF)};
        if constexpr (sizeof(T) == 2) {
            all.insert(all.end(), {T{0x0100}, T{0x8000}, T{0xFF00}, T{0xFFFF}});
        }
        return all;
    }

    /// `length` times `unit`, and a terminator.
    static Text text(std::size_t length, T unit) { return Text(length, unit) + T{}; }

    test::PageEdge<T> m_edge{2 * kPage};
};

TYPED_TEST_SUITE(TextLength, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(TextLength, CountsEveryLengthAtTheEndOfAPage) {
    for (const TypeParam unit : this->units()) {
        for (std::size_t length = 0; length <= kMaxLength; ++length) {
            EXPECT_EQ(textLength(this->m_edge.placeAtEnd(this->text(length, unit))), length);
        }
        EXPECT_EQ(textLength(this->m_edge.placeAtEnd(this->text(kPage + 100, unit))), kPage + 100);
    }
}

TYPED_TEST(TextLength, CountsEveryLengthAtEveryAlignment) {
    for (const TypeParam unit : this->units()) {
        for (std::size_t alignment = 0; alignment < 32; ++alignment) {
            for (std::size_t length = 0; length <= kMaxLength; ++length) {
                // Zeros before the text and units after its terminator are ignored.
                TypeParam* const position =
                    this->m_edge.placeAtStart(std::basic_string<TypeParam>(alignment, TypeParam{}) +
                                              this->text(length, unit) + this->text(20, unit)) +
                    alignment;
                ASSERT_EQ(textLength(position), length) << alignment;
            }
        }
    }
}

TYPED_TEST(TextLength, CountsAcrossPages) {
    constexpr std::size_t kUnitsOfPage = kPage / sizeof(TypeParam);
    for (const TypeParam unit : this->units()) {
        for (std::size_t before = 0; before <= kMaxLength; ++before) {
            for (std::size_t length = 0; length <= kMaxLength; ++length) {
                TypeParam* const position = this->m_edge.firstElement() + kUnitsOfPage - before;
                this->text(length, unit).copy(position, length + 1);
                ASSERT_EQ(textLength(position), length) << before;
            }
        }
    }
}

}  // namespace
