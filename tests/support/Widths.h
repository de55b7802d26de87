/// \file
/// Typed tests for narrow and wide text with one table: the texts are narrow and are widened for `wchar_t`.
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

/// The names of the two instances of a typed test.
struct CharacterNames {
    template <class T>
    static std::string GetName(int) {
        return std::is_same_v<T, char> ? "narrow" : "wide";
    }
};

/// `units` in the character type of the test. Each byte becomes a unit of the same value.
template <class T>
std::basic_string<T> text(std::string_view units) {
    std::basic_string<T> result;
    for (const char unit : units) {
        result += static_cast<T>(static_cast<unsigned char>(unit));
    }
    return result;
}

}  // namespace test
