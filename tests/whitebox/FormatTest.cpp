/// \file
/// The wrapper of the runtime's print functions: bounded rendering, and the fixed buffer with its fallback to the heap.

#include "core/Format.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include <gtest/gtest.h>

#include "support/ExhaustedStreams.h"
#include "support/GuardedBuffer.h"
#include "support/ImportHook.h"
#include "support/Widths.h"
#include "vorel/core/BaseString.h"
#include "vorel/exceptions/Exception.h"

namespace {

using test::GuardedBuffer;
using vorel::baseutil::boundedFormat;
using vorel::baseutil::MessageText;

struct Free {
    void operator()(void* block) const { std::free(block); }
};

template <class T>
class Format : public ::testing::Test {
protected:
    using Text = std::basic_string<T>;

    static Text text(std::string_view units) { return test::text<T>(units); }

    struct Rendered {
        const T* result = nullptr;
        std::unique_ptr<T, Free> heap;
        bool truncated = true;  // the call must clear this
    };

    static Rendered format(GuardedBuffer<T>& buffer, const T* format, ...) {
        va_list args;
        va_start(args, format);
        Rendered rendered;
        T* heap = nullptr;
        rendered.result =
            vorel::baseutil::formatWithFallback(buffer.data(), buffer.size(), heap, rendered.truncated, format, args);
        rendered.heap.reset(heap);
        va_end(args);
        return rendered;
    }

    static int vbounded(T* buffer, std::size_t size, const T* format, ...) {
        va_list args;
        va_start(args, format);
        const int written = vorel::baseutil::vboundedFormat(buffer, size, format, args);
        va_end(args);
        return written;
    }
};

TYPED_TEST_SUITE(Format, test::CharacterTypes, test::CharacterNames);

// ---- Strings without a buffer ---------------------------------------------------------------------------------------

// To measure the length of a text, the library prints the text to the null device. Opening this device takes twenty
// times as long as rendering, so only texts of more than 512 units are measured.
TYPED_TEST(Format, FirstTextOfAString_IsMeasuredOnlyIfLongerThan512Units) {
    int closed = 0;
    const test::ImportHook<importedFclose> hook([&](std::FILE* stream) {
        ++closed;
        return hook.original(stream);
    });
    for (const int units : {0, 1, 15, 16, 511, 512, 513, 2000}) {
        closed = 0;
        vorel::BaseString<TypeParam> string;
        string.format(this->text("%*s").c_str(), units, this->text("").c_str());
        EXPECT_EQ(closed, units > 512 ? 1 : 0) << units;
        EXPECT_TRUE(string.view() == std::basic_string<TypeParam>(static_cast<std::size_t>(units), TypeParam{' '}));
    }
}

// ---- Texts that change while they are formatted ---------------------------------------------------------------------

template <class T>
using PrintHook = std::conditional_t<std::is_same_v<T, char>, test::ImportHook<importedStdioCommonVsprintf>,
                                     test::ImportHook<importedStdioCommonVswprintf>>;

/// Makes the runtime's first `failures` renderings into a buffer fail, as if the text were too long. Measuring does not
/// fail.
template <class T>
class TooLongAtFirst {
public:
    explicit TooLongAtFirst(unsigned int failures) : m_failures(failures) {}

    [[nodiscard]] unsigned int renderings() const { return m_renderings; }

private:
    unsigned int m_failures;
    unsigned int m_renderings = 0;
    PrintHook<T> m_print{[this](unsigned long long options, T* buffer, std::size_t size, const T* format,
                                _locale_t locale, va_list args) {
        return ++m_renderings <= m_failures ? -1 : m_print.original(options, buffer, size, format, locale, args);
    }};
};

TYPED_TEST(Format, String_IsRenderedAgainIfTheTextDidNotFitButThenBecameShorter) {
    for (const unsigned int failures : {1u, 2u, 15u}) {
        vorel::BaseString<TypeParam> string(this->text("text before").c_str());
        const TooLongAtFirst<TypeParam> changing(failures);
        string.format(this->text("%02d").c_str(), 12);
        EXPECT_TRUE(string.view() == this->text("12")) << failures;
        EXPECT_EQ(string.capacity(), 16u);
        EXPECT_EQ(changing.renderings(), failures + 1);
    }
}

TYPED_TEST(Format, String_ThrowsAndIsEmptyAfter16FailedRenderingsOfATextThatFits) {
    vorel::BaseString<TypeParam> string(this->text("text before").c_str());
    const TooLongAtFirst<TypeParam> changing(16);
    try {
        string.format(this->text("%02d").c_str(), 12);
        ADD_FAILURE() << "no exception was thrown";
    } catch (const vorel::Exception& e) {
        EXPECT_EQ(std::wstring_view(e.what()).substr(0, 23), L"Unable to format: %02d ");
    }
    EXPECT_TRUE(string.empty());
}

// ---- Bounded rendering ----------------------------------------------------------------------------------------------

// If a text fills the buffer exactly, it is rendered without a terminator.
TYPED_TEST(Format, BoundedFormat_ReturnsTheLengthOrMinusOneIfTheTextDoesNotFit) {
    const auto format = this->text("%d:%s");
    const auto argument = this->text("abcdefgh");
    const auto expected = this->text("12:abcdefgh");
    for (std::size_t size = 0; size <= expected.size() + 3; ++size) {
        GuardedBuffer<TypeParam> buffer(size);
        const int written = boundedFormat(buffer.data(), size, format.c_str(), 12, argument.c_str());
        if (size == 0) {
            continue;  // the runtime only counts
        }
        if (size < expected.size()) {
            EXPECT_EQ(written, -1) << size;
            continue;
        }
        EXPECT_EQ(written, static_cast<int>(expected.size())) << size;
        EXPECT_EQ(std::basic_string_view<TypeParam>(buffer.data(), expected.size()), expected) << size;
        if (size > expected.size()) {
            EXPECT_EQ(buffer.data()[expected.size()], TypeParam{}) << size;
        }
    }
}

TYPED_TEST(Format, VboundedFormat_RendersAnArgumentList) {
    GuardedBuffer<TypeParam> buffer(5);
    EXPECT_EQ(this->vbounded(buffer.data(), 5, this->text("%d%s").c_str(), 7, this->text("abc").c_str()), 4);
    EXPECT_EQ(buffer.data(), this->text("7abc"));
    EXPECT_EQ(this->vbounded(buffer.data(), 5, this->text("%d%s").c_str(), 7, this->text("abcd").c_str()), 5);
    EXPECT_EQ(this->vbounded(buffer.data(), 5, this->text("%d%s").c_str(), 7, this->text("abcde").c_str()), -1);
}

TYPED_TEST(Format, BoundedFormat_ReturnsMinusOneForAnInvalidFormat) {
    GuardedBuffer<TypeParam> buffer(20);
    int count = 77;
    EXPECT_EQ(boundedFormat(buffer.data(), 20, this->text("a%n").c_str(), &count), -1);
    EXPECT_EQ(count, 77);
}

TEST(FormatOfNarrowText, BoundedFormat_ReturnsMinusOneForUnconvertibleWideText) {
    GuardedBuffer<char> buffer(20);
    EXPECT_EQ(boundedFormat(buffer.data(), 20, "%ls", L"\x4E00"), -1);
}

TEST(FormatOfWideText, PercentSRendersAWideArgument) {
    wchar_t buffer[20];
    EXPECT_EQ(boundedFormat(buffer, 20, L"%s|%hs|%ls", L"a", "b", L"c"), 5);
    EXPECT_STREQ(buffer, L"a|b|c");
}

TEST(FormatOfNarrowText, StreamPrint_RendersToAStream) {
    std::FILE* const stream = std::tmpfile();
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(vorel::baseutil::streamPrint(stream, "[%hs] %d", "time", 42), 9);
    std::rewind(stream);
    char text[20] = {};
    EXPECT_EQ(std::fread(text, 1, sizeof text, stream), 9u);
    EXPECT_STREQ(text, "[time] 42");
    std::fclose(stream);
}

// ---- The fixed buffer and the heap ----------------------------------------------------------------------------------

TYPED_TEST(Format, FormatWithFallback_UsesTheBufferIfTextAndTerminatorFit) {
    constexpr std::size_t kSize = 12;
    for (std::size_t length = 0; length < kSize; ++length) {
        GuardedBuffer<TypeParam> buffer(kSize);
        const std::basic_string<TypeParam> argument(length, TypeParam{'x'});
        const auto rendered = this->format(buffer, this->text("%s").c_str(), argument.c_str());
        ASSERT_EQ(rendered.result, buffer.data()) << length;
        EXPECT_EQ(rendered.result, argument);
        EXPECT_EQ(rendered.heap, nullptr);
        EXPECT_FALSE(rendered.truncated);
        EXPECT_EQ(buffer.data()[kSize - 1], TypeParam{}) << "the last unit of the buffer is always a terminator";
    }
}

TYPED_TEST(Format, FormatWithFallback_RendersTextsThatDoNotFitTheBufferOnTheHeap) {
    constexpr std::size_t kSize = 12;
    for (const std::size_t length : {kSize, kSize + 1, std::size_t{100}, std::size_t{100000}}) {
        GuardedBuffer<TypeParam> buffer(kSize);
        const std::basic_string<TypeParam> argument(length, TypeParam{'x'});
        const auto rendered = this->format(buffer, this->text("%s").c_str(), argument.c_str());
        ASSERT_NE(rendered.heap, nullptr) << length;
        EXPECT_EQ(rendered.result, rendered.heap.get());
        EXPECT_EQ(rendered.result, argument);
        EXPECT_FALSE(rendered.truncated);
    }
}

TYPED_TEST(Format, FormatWithFallback_ReturnsNullForAnInvalidFormat) {
    GuardedBuffer<TypeParam> buffer(12);
    int count = 77;
    const auto rendered = this->format(buffer, this->text("%n").c_str(), &count);
    EXPECT_EQ(rendered.result, nullptr);
    EXPECT_EQ(rendered.heap, nullptr);
    EXPECT_FALSE(rendered.truncated);
}

TYPED_TEST(Format, FormatWithFallback_ReturnsNullIfATextThatDoesNotFitCannotBeMeasured) {
    const test::ExhaustedStreams none;
    GuardedBuffer<TypeParam> buffer(12);
    EXPECT_EQ(this->format(buffer, this->text("%020d").c_str(), 1).result, nullptr);
    EXPECT_EQ(this->format(buffer, this->text("%d").c_str(), 1).result, buffer.data())
        << "a text that fits the buffer is not measured";
}

// ---- Messages -------------------------------------------------------------------------------------------------------

template <class T>
bool liesIn(const MessageText<T>& message, const T* text) {
    const auto* const object = reinterpret_cast<const char*>(&message);
    const auto* const address = reinterpret_cast<const char*>(text);
    return address >= object && address < object + sizeof message;
}

TYPED_TEST(Format, MessageText_StoresMoreThan7999UnitsOnTheHeap) {
    for (const std::size_t length : {std::size_t{0}, std::size_t{1}, std::size_t{7999}, std::size_t{8000},
                                     std::size_t{10000}, std::size_t{200000}}) {
        const std::basic_string<TypeParam> argument(length, TypeParam{'m'});
        MessageText<TypeParam> message;
        message.renderf(this->text("%s").c_str(), argument.c_str());
        ASSERT_NE(message.text(), nullptr) << length;
        EXPECT_TRUE(message.text() == argument) << length;
        EXPECT_FALSE(message.truncated());
        EXPECT_EQ(liesIn(message, message.text()), length <= 7999) << length;
    }
}

TYPED_TEST(Format, MessageText_IsNullWithoutARenderedText) {
    EXPECT_EQ(MessageText<TypeParam>().text(), nullptr);
    int count = 77;
    MessageText<TypeParam> message;
    message.renderf(this->text("%n").c_str(), &count);
    EXPECT_EQ(message.text(), nullptr);
    EXPECT_FALSE(message.truncated());
}

TYPED_TEST(Format, MessageText_ThatChangesAfterMeasuringIsRenderedIfItStillFits) {
    struct Case {
        std::size_t units;  // the length of the argument after the measurement
        bool isRendered;
    };
    constexpr std::size_t kMeasured = 10000;
    for (const Case& c :
         {Case{0, true}, Case{1, true}, Case{9999, true}, Case{10000, true}, Case{10001, false}, Case{10002, false}}) {
        std::basic_string<TypeParam> argument(kMeasured + 10, TypeParam{'m'});
        argument[kMeasured] = 0;
        const PrintHook<TypeParam> print([&](unsigned long long options, TypeParam* buffer, std::size_t size,
                                             const TypeParam* format, _locale_t locale, va_list args) {
            if (size > kMeasured) {  // the buffer on the heap
                argument[kMeasured] = TypeParam{'m'};
                argument[c.units] = 0;
            }
            return print.original(options, buffer, size, format, locale, args);
        });
        // The library renders a plain "%s" itself. For "%-s", it calls the hooked function.
        MessageText<TypeParam> message;
        message.renderf(this->text("%-s").c_str(), argument.c_str());
        EXPECT_FALSE(message.truncated());
        if (c.isRendered) {
            ASSERT_NE(message.text(), nullptr) << c.units;
            EXPECT_EQ(std::basic_string_view<TypeParam>(message.text()).size(), c.units);
        } else {
            EXPECT_EQ(message.text(), nullptr) << c.units;
        }
    }
}

// If a message and its prefixes fit into the buffer together, no memory is allocated.
TYPED_TEST(Format, MessageText_ComposesMoreThan7999UnitsOnTheHeap) {
    for (const std::size_t units : {std::size_t{2}, std::size_t{7998}, std::size_t{7999}, std::size_t{8000}}) {
        const auto front = this->text(": ");
        const std::basic_string<TypeParam> back(units - front.size(), TypeParam{'m'});
        MessageText<TypeParam> message;
        message.compose({front}, back);
        EXPECT_TRUE(message.text() == front + back) << units;
        EXPECT_FALSE(message.truncated());
        EXPECT_EQ(liesIn(message, message.text()), units <= 7999) << units;
    }
}

}  // namespace
