/// \file
/// Typed tests for narrow and wide text with one table: the texts are narrow and are widened for `wchar_t`.
///
///     TYPED_TEST_SUITE(BaseStringTest, test::CharacterTypes, test::CharacterNames);
///     EXPECT_EQ(string.view(), test::text<TypeParam>("abc"));
#pragma once

#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "support/WideText.h"

namespace test {

using CharacterTypes = ::testing::Types<char, wchar_t>;

/// The names of the two instances of a typed test.
struct CharacterNames {
    template <class T>
    static std::string GetName(int) {
        return std::is_same_v<T, char> ? "narrow" : "wide";
    }
};

}  // namespace test
