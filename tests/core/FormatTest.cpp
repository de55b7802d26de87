#include "vorel/core/Format.h"

#include <cstdarg>
#include <string>

#include <gtest/gtest.h>

#include "support/ExhaustedStreams.h"
#include "support/Widths.h"

namespace {

template <class T>
int measure(const T* format, ...) {
    va_list args;
    va_start(args, format);
    const int count = vorel::util::calculateSnprintFBufferSize(format, args);
    va_end(args);
    return count;
}

template <class T>
class CalculateSnprintFBufferSize : public ::testing::Test {
protected:
    static std::basic_string<T> text(std::string_view units) { return test::text<T>(units); }
};

TYPED_TEST_SUITE(CalculateSnprintFBufferSize, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(CalculateSnprintFBufferSize, CountsUnitsWithoutTheTerminator) {
    EXPECT_EQ(measure(this->text("").c_str()), 0);
    EXPECT_EQ(measure(this->text("plain").c_str()), 5);
    EXPECT_EQ(measure(this->text("100%%").c_str()), 4);
    EXPECT_EQ(measure(this->text("%d-%s").c_str(), 12, this->text("ab").c_str()), 5);
    EXPECT_EQ(measure(this->text("%hs%ls").c_str(), "abc", L"defg"), 7);
    EXPECT_EQ(measure(this->text("%c%c").c_str(), 0, 10), 2) << "a zero and a line feed are one unit each";
    EXPECT_EQ(measure(this->text("%20.3f|").c_str(), 1.0), 21);
}

TYPED_TEST(CalculateSnprintFBufferSize, IsMinusOneForNull) {
    EXPECT_EQ(measure(static_cast<const TypeParam*>(nullptr)), -1);
}

TYPED_TEST(CalculateSnprintFBufferSize, MeasuresTextsOfAnyLength) {
    for (const int count : {1, 511, 512, 513, 4096, 7999, 8000, 100000, 3000000}) {
        const std::basic_string<TypeParam> argument(static_cast<std::size_t>(count), TypeParam{'x'});
        EXPECT_EQ(measure(this->text("%s").c_str(), argument.c_str()), count);
        EXPECT_EQ(measure(this->text("%*d").c_str(), count, 1), count);
    }
}

TYPED_TEST(CalculateSnprintFBufferSize, IsNegativeForARejectedConversion) {
    int count = 77;
    EXPECT_LT(measure(this->text("abc%n").c_str(), &count), 0);
    EXPECT_EQ(count, 77);
}

TYPED_TEST(CalculateSnprintFBufferSize, IsNegativeWithoutTheNullDevice) {
    {
        const test::ExhaustedStreams none;
        EXPECT_LT(measure(this->text("abc").c_str()), 0);
    }
    EXPECT_EQ(measure(this->text("abc").c_str()), 3);
}

TYPED_TEST(CalculateSnprintFBufferSize, ClosesTheNullDevice) {
    for (int i = 0; i < 1000; ++i) {  // about twice the maximum number of open streams
        ASSERT_EQ(measure(this->text("abc").c_str()), 3);
    }
}

TEST(CalculateSnprintFBufferSizeOfNarrowText, IsNegativeForUnconvertibleWideText) {
    EXPECT_LT(measure("%ls", L"\x4E00"), 0);
}

TEST(CalculateSnprintFBufferSizeOfWideText, CountsUnitsOfAnyValue) {
    EXPECT_EQ(measure(L"%ls \x4E00", L"\x00E4\xD83D\xDE00"), 5);
}

}  // namespace
