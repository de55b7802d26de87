/// \file
/// The library's internal access to strings: growing and filling without exceptions.

#include "core/StringAccess.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "support/Widths.h"

namespace {

using vorel::BaseString;

template <class T>
class StringAccess : public ::testing::Test {
protected:
    using Access = vorel::detail::StringAccess<T>;
};

TYPED_TEST_SUITE(StringAccess, test::CharacterTypes, test::CharacterNames);

// A large capacity is a multiple of 0x100000 units, and greater than the count plus 1, where the 1 is for the
// terminator. The largest multiple that fits into 32 bits is 0xFFF00000, so counts of 0xFFEFFFFF and more are rejected.
TYPED_TEST(StringAccess, TryReserve_RejectsACapacityBeyond32Bits) {
    for (const unsigned int count : {0xFFEFFFFFu, 0xFFF00000u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
        const auto text = test::text<TypeParam>("as it was");
        BaseString<TypeParam> string(text.c_str());
        const TypeParam* const buffer = string.c_str();
        for (const bool discard : {false, true}) {
            unsigned int capacityWanted = 0;
            EXPECT_FALSE(TestFixture::Access::tryReserve(string, count, discard, capacityWanted)) << count;
            EXPECT_EQ(capacityWanted, 0xFFFFFFFFu);
            EXPECT_EQ(string.c_str(), buffer);
            EXPECT_TRUE(string.view() == text);
        }
    }
}

TYPED_TEST(StringAccess, TryAssign_CopiesTheTextAndStoresTheLength) {
    BaseString<TypeParam> string;
    const auto text = test::text<TypeParam>("a text of more than sixteen units");
    EXPECT_TRUE(TestFixture::Access::tryAssign(string, text.c_str()));
    EXPECT_TRUE(string.view() == text);
    EXPECT_TRUE(TestFixture::Access::tryAssign(string, text.c_str(), 6));
    EXPECT_TRUE(string.view() == text.substr(0, 6));
    EXPECT_TRUE(TestFixture::Access::tryAssign(string, string.c_str() + 2, 4)) << "from the string itself";
    EXPECT_TRUE(string.view() == text.substr(2, 4));
    EXPECT_TRUE(TestFixture::Access::tryAssign(string, nullptr));
    EXPECT_TRUE(string.empty());
}

TYPED_TEST(StringAccess, SetLength_TerminatesTheTextAndStoresTheLength) {
    BaseString<TypeParam> string;
    TypeParam* const buffer = string.reserve(10, true);
    std::fill_n(buffer, 10, TypeParam{'x'});
    TestFixture::Access::setLength(string, 4);
    EXPECT_EQ(string.length(), 4u);
    EXPECT_EQ(buffer[4], TypeParam{});
}

}  // namespace
