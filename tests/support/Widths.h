/// \file
/// For typed tests that run with `char` and with `wchar_t`. A test has each text once, as narrow text, and `test::text`
/// widens it for `wchar_t`.
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
