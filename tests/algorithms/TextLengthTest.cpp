#include "algorithms/TextLength.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "algorithms/ImplementationChoice.h"
#include "support/PageEdge.h"

namespace {

namespace algorithms = vorel::algorithms;

constexpr std::size_t kMaxLength = 300;
constexpr std::size_t kPage = 4096;

/// Chooses the implementation for this processor.
template <class T>
struct Together {
    using Unit = T;
    static constexpr char kName[] = "together";
    static constexpr bool kNeedsAvx2 = false;
    static std::size_t count(const T* text) { return algorithms::countUnits(text); }
};

template <class T>
struct Avx2 {
    using Unit = T;
    static constexpr char kName[] = "AVX2";
    static constexpr bool kNeedsAvx2 = true;
    static std::size_t count(const T* text) { return algorithms::countUnitsAvx2(text); }
};

template <class Implementation>
class UnitCount : public test::ImplementationTest<Implementation> {
protected:
    using Unit = typename Implementation::Unit;
    static constexpr std::size_t kPageUnits = kPage / sizeof(Unit);

    /// `length` units and a terminator. In wide text, one byte of every unit is zero.
    [[nodiscard]] static std::basic_string<Unit> text(std::size_t length) {
        std::basic_string<Unit> all;
        for (std::size_t at = 0; at < length; ++at) {
            all += at % 2 == 0 ? Unit{'a'} : static_cast<Unit>(0x80 << (8 * (sizeof(Unit) - 1)));
        }
        return all + Unit{};
    }

    test::PageEdge<Unit> m_edge{3 * kPageUnits};
};

using Implementations = ::testing::Types<Together<char>, Together<wchar_t>, Avx2<char>, Avx2<wchar_t>>;
TYPED_TEST_SUITE(UnitCount, Implementations, test::ImplementationNames);

TYPED_TEST(UnitCount, CountsEveryLengthAtTheEndOfAPage) {
    for (std::size_t length = 0; length <= kMaxLength; ++length) {
        ASSERT_EQ(TypeParam::count(this->m_edge.placeAtEnd(this->text(length))), length);
    }
    const std::size_t longer = this->kPageUnits + 100;
    ASSERT_EQ(TypeParam::count(this->m_edge.placeAtEnd(this->text(longer))), longer);
}

TYPED_TEST(UnitCount, CountsEveryLengthAtEveryAlignment) {
    using T = typename TypeParam::Unit;
    for (std::size_t alignment = 0; alignment < 40; ++alignment) {
        for (std::size_t length = 0; length <= kMaxLength; ++length) {
            // Zeros before the text and units after its terminator are ignored.
            T* const position =
                this->m_edge.placeAtStart(std::basic_string<T>(alignment, T{}) + this->text(length) + this->text(20)) +
                alignment;
            ASSERT_EQ(TypeParam::count(position), length) << alignment;
        }
    }
}

TYPED_TEST(UnitCount, CountsAcrossPages) {
    for (std::size_t before = 0; before <= 140; ++before) {
        for (std::size_t length = 0; length <= kMaxLength; ++length) {
            auto* const position = this->m_edge.firstElement() + this->kPageUnits - before;
            const auto text = this->text(length);
            std::copy(text.begin(), text.end(), position);
            ASSERT_EQ(TypeParam::count(position), length) << before;
        }
    }
}

}  // namespace
