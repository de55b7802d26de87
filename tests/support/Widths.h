/// \file
/// Tests that run for narrow and for wide text from one table: texts are written narrow, and widened where the test
/// runs for `wchar_t`.
///
///     TYPED_TEST_SUITE(BaseStringTest, test::CharacterTypes, test::CharacterNames);
///     EXPECT_EQ(string.view(), test::text<TypeParam>("abc"));
#pragma once

#include <string>
#include <string_view>
#include <type_traits>

#include <gtest/gtest.h>

namespace test {

using CharacterTypes = ::testing::Types<char, wchar_t>;

/// Names the two instances of a typed test.
struct CharacterNames {
    template <class T>
    static std::string GetName(int) {
        return std::is_same_v<T, char> ? "narrow" : "wide";
    }
};

/// `units` in the character type of the test; each byte becomes the unit of the same value.
template <class T>
std::basic_string<T> text(std::string_view units) {
    std::basic_string<T> result;
    for (const char unit : units) {
        result += static_cast<T>(static_cast<unsigned char>(unit));
    }
    return result;
}

}  // namespace test
