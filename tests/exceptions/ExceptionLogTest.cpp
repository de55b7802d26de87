/// \file
/// The diagnostic channels: the prefix of each channel, and messages of any length.

#include <cstdarg>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "support/SmallStack.h"
#include "support/TemporaryLog.h"
#include "support/Widths.h"
#include "vorel/exceptions/DebugSetting.h"
#include "vorel/exceptions/Exception.h"

namespace {

using test::TemporaryLog;
using Texts = std::vector<std::string>;
using vorel::Exception;

/// Short message lengths, and lengths around and above 8000 units, the size of the channels' buffer.
constexpr std::size_t kLengths[] = {0, 1, 7998, 7999, 8000, 8001, 10000};

template <class T>
void vDebugWith(const T* target, const T* format, ...) {
    va_list args;
    va_start(args, format);
    Exception::vDebug(target, format, args);
    va_end(args);
}

/// Tests the narrow and the wide function of each channel.
template <class T>
class ChannelTest : public testing::Test {
protected:
    static std::basic_string<T> text(std::string_view units) { return test::text<T>(units); }
};

TYPED_TEST_SUITE(ChannelTest, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(ChannelTest, WarningsAreWrittenWithoutATarget) {
    const TemporaryLog log;
    Exception::warn(this->text("token %d of %d").c_str(), 12, 40);
    Exception::swigwarn(this->text("binding %d").c_str(), 7);
    EXPECT_EQ(log.messages(), (Texts{"WARN: token 12 of 40", "WARN: binding 7"}));
}

TYPED_TEST(ChannelTest, DebugLinesNameTheirTarget) {
    const auto target = this->text("ChannelTest.Lines");
    Exception::setDebugTarget(target.c_str(), true);
    const TemporaryLog log;
    Exception::debug(target.c_str(), this->text("token %d").c_str(), 12);
    vDebugWith(target.c_str(), this->text("token %d").c_str(), 13);
    Exception::setDebugTarget(target.c_str(), false);
    Exception::debug(target.c_str(), this->text("token %d").c_str(), 14);
    vDebugWith(target.c_str(), this->text("token %d").c_str(), 15);
    EXPECT_EQ(log.messages(), (Texts{"DEBUG: ChannelTest.Lines: token 12", "DEBUG: ChannelTest.Lines: token 13"}));
}

TYPED_TEST(ChannelTest, DebugWithANullTargetWritesNothing) {
    const TypeParam* const none = nullptr;
    Exception::setDebugTarget(this->text("ChannelTest.Other").c_str(), true);
    const TemporaryLog log;
    Exception::debug(none, this->text("%s").c_str(), this->text("text").c_str());
    vDebugWith(none, this->text("text").c_str());
    EXPECT_FALSE(log.exists());
}

TYPED_TEST(ChannelTest, LogLinesBeginWithTheCallersPrefix) {
    const TemporaryLog log;
    const std::string own = log.folder().file("own.txt");
    const auto prefix = this->text("Importer 100%d");
    Exception::log(own.c_str(), 1000, prefix.c_str(), this->text("row %d").c_str(), 5);
    EXPECT_EQ(test::readLogMessages(own), Texts{"Importer 100%d: row 5"});
    EXPECT_FALSE(log.exists());
    Exception::log(nullptr, 1000, prefix.c_str(), this->text("row %d").c_str(), 6);
    Exception::log("", 1000, prefix.c_str(), this->text("row %d").c_str(), 7);
    EXPECT_EQ(log.messages(), (Texts{"Importer 100%d: row 6", "Importer 100%d: row 7"}));
}

TYPED_TEST(ChannelTest, LongMessagesAreNotTruncated) {
    const auto target = this->text("ChannelTest.Long");
    const auto format = this->text(sizeof(TypeParam) == 1 ? "%hs" : "%ls");
    Exception::setDebugTarget(target.c_str(), true);
    for (const std::size_t length : kLengths) {
        const std::string narrow(length, 'x');
        const auto message = this->text(narrow);
        const TemporaryLog log;
        Exception::warn(format.c_str(), message.c_str());
        Exception::swigwarn(format.c_str(), message.c_str());
        Exception::debug(target.c_str(), format.c_str(), message.c_str());
        vDebugWith(target.c_str(), format.c_str(), message.c_str());
        Exception::log(nullptr, 1000000, this->text("P").c_str(), format.c_str(), message.c_str());
        EXPECT_EQ(log.messages(), (Texts{"WARN: " + narrow, "WARN: " + narrow, "DEBUG: ChannelTest.Long: " + narrow,
                                         "DEBUG: ChannelTest.Long: " + narrow, "P: " + narrow}))
            << length;
    }
}

TYPED_TEST(ChannelTest, LongPrefixesAreNotTruncated) {
    for (const std::size_t length : kLengths) {
        const std::string prefix(length, 'p');
        const TemporaryLog log;
        Exception::log(nullptr, 1000000, this->text(prefix).c_str(), this->text("%s").c_str(),
                       this->text("text").c_str());
        // If the prefix is empty, the line has ": text" after its header.
        EXPECT_EQ(log.messages(), Texts{prefix + ": text"}) << length;
    }
}

TYPED_TEST(ChannelTest, NullFormatGivesAnEmptyMessageMarkedAsTruncated) {
    const TypeParam* const none = nullptr;
    const auto target = this->text("ChannelTest.Unformattable");
    Exception::setDebugTarget(target.c_str(), true);
    const TemporaryLog log;
    Exception::warn(none);
    Exception::swigwarn(none);
    Exception::debug(target.c_str(), none);
    vDebugWith(target.c_str(), none);
    Exception::log(nullptr, 1000, this->text("P").c_str(), none);
    EXPECT_EQ(log.messages(),
              (Texts{"WARN Truncated: ", "WARN Truncated: ", "DEBUG Truncated: ChannelTest.Unformattable: ",
                     "DEBUG Truncated: ChannelTest.Unformattable: ", "P Truncated: "}));
}

TYPED_TEST(ChannelTest, NullPrefixIsWrittenAsNullInParentheses) {
    const TemporaryLog log;
    const TypeParam* const none = nullptr;
    Exception::log(nullptr, 1000, none, this->text("%s").c_str(), this->text("text").c_str());
    EXPECT_EQ(log.messages(), Texts{"(null): text"});
}

// The smallest stack of a thread has 64 KB. This test gives the channels half of that.
TYPED_TEST(ChannelTest, WorksWithHalfOfASmallStack) {
    const auto target = this->text("ChannelTest.SmallStack");
    const auto message = this->text(std::string(7000, 'x'));
    const auto format = this->text(sizeof(TypeParam) == 1 ? "%hs" : "%ls");
    const auto prefix = this->text("P");
    Exception::setDebugTarget(target.c_str(), true);
    const TemporaryLog log;
    test::SmallStack::run(32'768, [&] {
        Exception::warn(format.c_str(), message.c_str());
        Exception::debug(target.c_str(), format.c_str(), message.c_str());
        Exception::log(nullptr, 1000000, prefix.c_str(), format.c_str(), message.c_str());
    });
    EXPECT_EQ(log.lines().size(), 3u);
}

TYPED_TEST(ChannelTest, TraceWritesNothing) {
    const TemporaryLog log;
    Exception::trace(this->text("%d").c_str(), 1);
    EXPECT_FALSE(log.exists());
}

TYPED_TEST(ChannelTest, SizeZeroSilencesChannelsButTheMirrorSwitchDoesNot) {
    const TemporaryLog log;
    Exception::SetMirrorErrorLog(true);
    Exception::warn(this->text("%s").c_str(), this->text("on").c_str());
    Exception::SetMirrorErrorLog(false);
    Exception::warn(this->text("%s").c_str(), this->text("off").c_str());
    Exception::SetErrorLogSize(0);
    Exception::warn(this->text("%s").c_str(), this->text("size 0").c_str());
    EXPECT_EQ(log.messages(), (Texts{"WARN: on", "WARN: off"}));
}

TEST(Diagnostics, ClassFunctionsWriteClassAndMethod) {
    Exception::setDebugTarget(L"Diagnostics.Class", true);
    const TemporaryLog log;
    const std::string own = log.folder().file("own.txt");
    Exception::warnClass(L"Parser", L"run", L"token %d", 1);
    Exception::debugClass(L"Parser", L"run", L"Diagnostics.Class", L"token %d", 2);
    Exception::logClass(nullptr, 1000, L"Note", L"Parser", L"run", L"token %d", 3);
    Exception::logClass(own.c_str(), 1000, L"Note", L"Parser", L"run", L"token %d", 4);
    EXPECT_EQ(log.messages(), (Texts{"WARN: Parser::run: token 1", "DEBUG: Parser::run: Diagnostics.Class: token 2",
                                     "Note: Parser::run: token 3"}));
    EXPECT_EQ(test::readLogMessages(own), Texts{"Note: Parser::run: token 4"});
}

TEST(Diagnostics, ClassFunctionsDoNotTruncateLongMessages) {
    Exception::setDebugTarget(L"Diagnostics.Long", true);
    for (const std::size_t length : kLengths) {
        const std::string narrow(length, 'x');
        const std::wstring message(length, L'x');
        const TemporaryLog log;
        Exception::warnClass(L"C", L"m", L"%ls", message.c_str());
        Exception::debugClass(L"C", L"m", L"Diagnostics.Long", L"%ls", message.c_str());
        Exception::logClass(nullptr, 1000000, L"P", L"C", L"m", L"%ls", message.c_str());
        EXPECT_EQ(log.messages(),
                  (Texts{"WARN: C::m: " + narrow, "DEBUG: C::m: Diagnostics.Long: " + narrow, "P: C::m: " + narrow}))
            << length;
    }
}

TEST(Diagnostics, ClassFunctionsWorkWithHalfOfASmallStack) {
    Exception::setDebugTarget(L"Diagnostics.SmallStack", true);
    const TemporaryLog log;
    test::SmallStack::run(32'768, [] {
        Exception::warnClass(L"Parser", L"run", L"%ls", L"text");
        Exception::debugClass(L"Parser", L"run", L"Diagnostics.SmallStack", L"%ls", L"text");
        Exception::logClass(nullptr, 1000, L"Note", L"Parser", L"run", L"%ls", L"text");
    });
    EXPECT_EQ(log.messages(), (Texts{"WARN: Parser::run: text", "DEBUG: Parser::run: Diagnostics.SmallStack: text",
                                     "Note: Parser::run: text"}));
}

TEST(Diagnostics, ClassFunctionsWriteNullNamesAsNullInParentheses) {
    Exception::setDebugTarget(L"Diagnostics.NullNames", true);
    const TemporaryLog log;
    Exception::warnClass(nullptr, L"m", L"text");
    Exception::logClass(nullptr, 1000, L"P", L"C", nullptr, L"text");
    Exception::debugClass(nullptr, nullptr, L"Diagnostics.NullNames", L"text");
    EXPECT_EQ(log.messages(), (Texts{"WARN: (null)::m: text", "P: C::(null): text",
                                     "DEBUG: (null)::(null): Diagnostics.NullNames: text"}));
}

TEST(Diagnostics, LongClassMethodAndTargetNamesAreNotTruncated) {
    Exception::setDebugTarget(std::wstring(8000, L't').c_str(), true);
    for (const std::size_t length : {1u, 3990u, 3994u, 3995u, 3996u, 8000u, 20000u}) {
        const std::wstring name(length, L'n');
        const std::string shown = std::string(length, 'n') + "::" + std::string(length, 'n') + ": ";
        const TemporaryLog log;
        Exception::warnClass(name.c_str(), name.c_str(), L"text");
        Exception::warnClass(name.c_str(), name.c_str(), L"%ls", std::wstring(9000, L'x').c_str());
        Exception::debugClass(name.c_str(), name.c_str(), std::wstring(8000, L't').c_str(), L"text");
        EXPECT_EQ(log.messages(), (Texts{"WARN: " + shown + "text", "WARN: " + shown + std::string(9000, 'x'),
                                         "DEBUG: " + shown + std::string(8000, 't') + ": text"}))
            << length;
    }
}

TEST(Diagnostics, ClassFunctionsMarkTheMessageOfANullFormatAsTruncated) {
    Exception::setDebugTarget(L"Diagnostics.Unformattable", true);
    const TemporaryLog log;
    Exception::warnClass(L"C", L"m", nullptr);
    Exception::debugClass(L"C", L"m", L"Diagnostics.Unformattable", nullptr);
    Exception::logClass(nullptr, 1000, L"P", L"C", L"m", nullptr);
    EXPECT_EQ(
        log.messages(),
        (Texts{"WARN Truncated: C::m: ", "DEBUG Truncated: C::m: Diagnostics.Unformattable: ", "P Truncated: C::m: "}));
}

TEST(Diagnostics, NarrowFormatWithUnconvertibleArgumentGivesAnEmptyMessage) {
    const TemporaryLog log;
    Exception::warn("%ls", L"\x4E00");  // no such character in the C locale
    Exception::warn("%s%ls", std::string(9000, 'x').c_str(), L"\x4E00");
    EXPECT_EQ(log.messages(), (Texts{"WARN Truncated: ", "WARN Truncated: "}));
}

TEST(Diagnostics, NarrowTextsUseTheEncodingOfTheLocale) {
    Exception::setDebugTarget("\xE9", true);
    const TemporaryLog log;
    Exception::warn("%s", "\xE9");
    Exception::debug("\xE9", "text");
    Exception::log(nullptr, 1000, L"\xE9", L"text");
    Exception::log(nullptr, 1000, L"\x4E00", L"text");
    EXPECT_EQ(log.messages(),
              (Texts{"WARN: \xC3\xA9", "DEBUG: \xC3\xA9: text", "\xE9: text", "Error in text conversion: text"}));
    Exception::setDebugTarget("\xE9", false);
}

TEST(Diagnostics, DebugClassWritesNothingIfItsTargetIsNotActive) {
    Exception::setDebugTarget(L"Diagnostics.Needed", true);
    Exception::setDebugTarget(L"Diagnostics.Needed", false);
    const TemporaryLog log;
    Exception::debugClass(L"C", L"m", L"Diagnostics.Needed", L"text");
    Exception::debugClass(L"C", L"m", L"Diagnostics.NeverNamed", L"text");
    Exception::debugClass(L"C", L"m", nullptr, L"text");
    EXPECT_FALSE(log.exists());
}

TEST(Diagnostics, TraceOfClassesAndStacksWritesNothing) {
    const TemporaryLog log;
    Exception::traceClass(L"C", L"m", L"%d", 1);
    Exception::traceCallStack(nullptr);
    Exception::traceCallStack(stderr);
    EXPECT_FALSE(log.exists());
}

TEST(Diagnostics, DebugSettingIsOffAtLoadAndHasNoEffect) {
    EXPECT_FALSE(vorel::util::g_DebugSetting);
    vorel::util::g_DebugSetting = true;
    const TemporaryLog log;
    Exception::debug("Diagnostics.Setting", "text");
    vorel::util::g_DebugSetting = false;
    EXPECT_FALSE(log.exists());
}

}  // namespace
