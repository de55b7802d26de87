/// \file
/// `BaseString` with the views and hashes of the standard library, and range-based loops over `Array`.

#include <cstddef>
#include <numeric>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>

#include <gtest/gtest.h>

#include "support/Widths.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using vorel::BaseString;

template <class T>
class BaseStringViews : public testing::Test {
protected:
    using String = BaseString<T>;
    using View = std::basic_string_view<T>;

    static std::basic_string<T> text(std::string_view units) { return test::text<T>(units); }

    /// Converts its argument to a view.
    static View passed(View view) { return view; }
};

TYPED_TEST_SUITE(BaseStringViews, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(BaseStringViews, Construction_FromAViewKeepsEmbeddedZeros) {
    const auto source = this->text(std::string_view("a\0bcd", 5));
    const std::basic_string_view<TypeParam> view(source.data(), 4);
    const BaseString<TypeParam> string(view);
    EXPECT_EQ(string.length(), 4u);
    EXPECT_TRUE(string.view() == view);
    EXPECT_EQ(string.c_str()[4], TypeParam{}) << "the string is terminated, the view is not";
    EXPECT_EQ(BaseString<TypeParam>(std::basic_string_view<TypeParam>()).c_str(), nullptr);
}

TYPED_TEST(BaseStringViews, Conversion_IsImplicitOnlyToAView) {
    EXPECT_FALSE((std::is_convertible_v<std::basic_string_view<TypeParam>, BaseString<TypeParam>>))
        << "a copy must be explicit";
    EXPECT_TRUE((std::is_convertible_v<const BaseString<TypeParam>&, std::basic_string_view<TypeParam>>));
    EXPECT_TRUE((std::is_nothrow_convertible_v<const BaseString<TypeParam>&, std::basic_string_view<TypeParam>>));
}

TYPED_TEST(BaseStringViews, Assignment_OfAViewReusesTheBuffer) {
    const auto source = this->text("one two");
    BaseString<TypeParam> string(this->text("fifteen units..").c_str());
    const TypeParam* const buffer = string.c_str();
    string = std::basic_string_view<TypeParam>(source.data(), 3);
    EXPECT_TRUE(string == this->text("one").c_str());
    EXPECT_EQ(string.c_str(), buffer);
    string = this->passed(string).substr(1);
    EXPECT_TRUE(string == this->text("ne").c_str()) << "a part of itself";
    string = std::basic_string_view<TypeParam>();
    EXPECT_TRUE(string.empty());
    EXPECT_EQ(string.c_str(), buffer);
}

TYPED_TEST(BaseStringViews, Append_AcceptsViewsAndStandardStrings) {
    const auto source = this->text("one two");
    BaseString<TypeParam> string;
    string.append(std::basic_string_view<TypeParam>(source.data(), 4)) += source;
    EXPECT_TRUE(string == this->text("one one two").c_str());
    string += this->passed(string).substr(0, 3);
    EXPECT_TRUE(string == this->text("one one twoone").c_str()) << "a part of itself";
    string.append(std::basic_string_view<TypeParam>());
    EXPECT_EQ(string.length(), 14u);
}

TYPED_TEST(BaseStringViews, Conversion_ToAViewSharesTheBuffer) {
    const auto source = this->text("text");
    const BaseString<TypeParam> string(source.c_str());
    EXPECT_TRUE(this->passed(string) == source);
    EXPECT_EQ(this->passed(string).data(), string.c_str());
    EXPECT_NE(this->passed(BaseString<TypeParam>()).data(), nullptr);
    EXPECT_TRUE(string == this->passed(source));
    EXPECT_TRUE(this->passed(source) == string);
    EXPECT_TRUE(string < this->passed(this->text("texts")));
    EXPECT_EQ(std::basic_string<TypeParam>(string), source);
}

TYPED_TEST(BaseStringViews, ViewLongerThanAnyString_Throws) {
    const auto source = this->text("x");
    for (const std::size_t size : {std::size_t{0xFFFFFFFF}, std::size_t{0x100000001}}) {
        const std::basic_string_view<TypeParam> tooLong(source.data(), size);
        BaseString<TypeParam> string(source.c_str());
        EXPECT_THROW(BaseString<TypeParam>{tooLong}, vorel::MemoryException);
        EXPECT_THROW(string = tooLong, vorel::MemoryException);
        EXPECT_THROW(string.append(tooLong), vorel::MemoryException);
        EXPECT_TRUE(string == source.c_str());
    }
}

TYPED_TEST(BaseStringViews, Hash_EqualsTheHashOfTheView) {
    const BaseString<TypeParam> string(this->text("text").c_str());
    const std::hash<BaseString<TypeParam>> hash;
    EXPECT_EQ(hash(string), std::hash<std::basic_string_view<TypeParam>>()(string.view()));
    EXPECT_EQ(hash(BaseString<TypeParam>()), hash(BaseString<TypeParam>(this->text("").c_str())));

    std::unordered_map<BaseString<TypeParam>, int> counts;
    ++counts[string];
    ++counts[BaseString<TypeParam>(this->text("text").c_str())];
    EXPECT_EQ(counts.size(), 1u);
    EXPECT_EQ(counts[string], 2);
}

TEST(ArrayLoops, VisitEveryElementInOrder) {
    vorel::Array<int> numbers;
    for (int number = 1; number != 5; ++number) {
        numbers.append(number);
    }
    for (int& number : numbers) {
        number *= 10;
    }
    const vorel::Array<int>& same = numbers;
    std::string seen;
    for (const int number : same) {
        seen += std::to_string(number) + ' ';
    }
    EXPECT_EQ(seen, "10 20 30 40 ");
    EXPECT_EQ(std::accumulate(same.begin(), same.end(), 0), 100);
    for (const int number : vorel::Array<int>()) {
        ADD_FAILURE() << "an empty array has the element " << number;
    }
}

}  // namespace
