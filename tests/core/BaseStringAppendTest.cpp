/// \file
/// `BaseString::append`: which units it writes for texts of many lengths, sources that overlap the destination, and
/// strings whose length field is `kUnknownLength`.

#include <algorithm>
#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "core/StringFields.h"
#include "support/Widths.h"
#include "vorel/core/BaseString.h"

namespace {

using vorel::BaseString;

template <class T>
class BaseStringAppend : public ::testing::Test {};

TYPED_TEST_SUITE(BaseStringAppend, test::CharacterTypes, test::CharacterNames);

template <class T>
void expectText(const BaseString<T>& string, const std::basic_string<T>& expected) {
    EXPECT_EQ(test::fieldsOf(string).length, expected.size());
    EXPECT_TRUE(string.view() == expected);
    EXPECT_EQ(string.c_str()[expected.size()], T{});
}

/// A string in a buffer of 256 units. The units after the terminator are 'z'.
template <class T>
BaseString<T> inLargeBuffer(const std::basic_string<T>& text) {
    BaseString<T> string;
    string.reserve(255, true);
    std::fill_n(string.data(), 256, T{'z'});
    string = text.c_str();
    return string;
}

TYPED_TEST(BaseStringAppend, AppendCounted_EveryLengthWritesTheTextAndItsTerminatorOnly) {
    using Text = std::basic_string<TypeParam>;
    for (std::size_t before = 0; before <= 20; ++before) {
        for (std::size_t count = 1; count <= 70; ++count) {
            Text added;
            for (std::size_t unit = 0; unit < count; ++unit) {
                added += static_cast<TypeParam>('0' + unit);
            }
            const Text start(before, TypeParam{'A'});
            BaseString<TypeParam> string = inLargeBuffer(start);
            string.append(added.data(), static_cast<unsigned int>(count));
            expectText(string, start + added);
            ASSERT_EQ(Text(string.c_str() + before + count + 1, string.c_str() + 256),
                      Text(255 - before - count, TypeParam{'z'}))
                << count << " units appended to " << before;
        }
    }
}

TYPED_TEST(BaseStringAppend, AppendPartOfItself_CopiesEveryLengthWithoutGrowth) {
    for (std::size_t length = 1; length <= 70; ++length) {
        for (std::size_t count = 1; count <= length; ++count) {
            std::basic_string<TypeParam> expected;
            for (std::size_t unit = 0; unit < length; ++unit) {
                expected += static_cast<TypeParam>('0' + unit);
            }
            BaseString<TypeParam> string = inLargeBuffer(expected);
            string.append(string.c_str() + length - count, static_cast<unsigned int>(count));
            expected.append(std::basic_string<TypeParam>(expected, length - count));
            ASSERT_TRUE(string.view() == expected) << "the last " << count << " of " << length << " units";
        }
    }
}

/// The source begins within the string's text and ends after the terminator of this text. So the appended units
/// overwrite a part of the source.
TYPED_TEST(BaseStringAppend, AppendOverlappingSource_AppendsTheSourceAsItWasBeforeTheCall) {
    for (const unsigned int count : {2u, 3u, 5u, 8u, 12u, 17u, 33u, 60u}) {
        BaseString<TypeParam> string = inLargeBuffer(test::text<TypeParam>("abc"));
        std::basic_string<TypeParam> source(string.c_str() + 2, count);
        string.append(string.c_str() + 2, count);
        expectText(string, test::text<TypeParam>("abc") + source);
    }
}

TYPED_TEST(BaseStringAppend, Append_FirstCountsTheUnitsIfTheLengthIsUnknown) {
    const auto unknown = [](const std::basic_string<TypeParam>& text) {
        BaseString<TypeParam> string = inLargeBuffer(text);
        auto fields = test::fieldsOf(string);
        fields.length = 0xFFFFFFFFu;
        test::setFields(string, fields);
        return string;
    };
    BaseString<TypeParam> string = unknown(test::text<TypeParam>("ab"));
    expectText(string.append(TypeParam{'c'}), test::text<TypeParam>("abc"));
    string = unknown(test::text<TypeParam>("ab"));
    expectText(string.append(test::text<TypeParam>("cd").c_str(), 2), test::text<TypeParam>("abcd"));
    string = unknown(test::text<TypeParam>("ab"));
    expectText(string.append(string), test::text<TypeParam>("abab"));
}

TYPED_TEST(BaseStringAppend, AppendNothing_WritesNothing) {
    BaseString<TypeParam> string = inLargeBuffer(test::text<TypeParam>("abcdef"));
    auto fields = test::fieldsOf(string);
    fields.length = 3;
    test::setFields(string, fields);
    const TypeParam* const null = nullptr;
    string.append(test::text<TypeParam>("x").c_str(), 0)
        .append(null, 4)
        .append(null)
        .append(test::text<TypeParam>("").c_str());
    EXPECT_EQ(string.length(), 3u);
    EXPECT_EQ(string.c_str()[3], TypeParam{'d'});
}

TYPED_TEST(BaseStringAppend, AppendUnit_AppendsAtEveryLengthAndGrowsTheBuffer) {
    BaseString<TypeParam> string;
    std::basic_string<TypeParam> expected;
    for (unsigned int length = 0; length < 300; ++length) {
        const auto unit = static_cast<TypeParam>('0' + length % 64);
        string.append(unit);
        expected += unit;
        expectText(string, expected);
        ASSERT_EQ(string.capacity(), test::capacityFor(length + 1)) << length;
    }
}

}  // namespace
