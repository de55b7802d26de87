#include <climits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

#include "support/Expect.h"
#include "support/TemporaryLog.h"
#include "support/WideText.h"
#include "vorel/exceptions/Exception.h"

namespace {

using Messages = std::vector<std::wstring>;
using test::messagesOf;
using test::TemporaryLog;
using Texts = std::vector<std::string>;
using vorel::Exception;

TEST(MessageStack, AppendedMessagesAreLoggedImmediately) {
    const TemporaryLog log;
    Exception e;
    e.appendMessage(L"wide %d", 1);
    e.appendMessage("narrow %d", 2);
    EXPECT_EQ(messagesOf(e), (Messages{L"wide 1", L"narrow 2"}));
    EXPECT_EQ(log.messages(), (Texts{"Vorel Error: wide 1", "Vorel Error: narrow 2"}));
}

TEST(MessageStack, MessagesAroundTheBufferSizeAreNotTruncated) {
    for (const unsigned int length : {0u, 1u, 7998u, 7999u, 8000u, 8001u, 10000u, 100000u}) {
        const TemporaryLog log;
        const std::wstring wide(length, L'x');
        const std::string narrow(length, 'y');
        Exception e(L"%ls", wide.c_str());
        e.appendMessage("%s", narrow.c_str());
        EXPECT_EQ(messagesOf(e), (Messages{wide, std::wstring(length, L'y')})) << length;
        EXPECT_EQ(log.messages(), (Texts{"Vorel Error: " + std::string(length, 'x'), "Vorel Error: " + narrow}))
            << length;
    }
}

TEST(MessageStack, ArgumentsMayPointIntoTheMessageStack) {
    Exception e(L"seed");
    std::wstring expected = L"seed";
    for (int round = 0; round < 40; ++round) {
        e.appendMessage(L"%ls.", e.getErrorMessage(e.getMessageTotal() - 1));
        expected += L'.';
        ASSERT_EQ(e.getErrorMessage(e.getMessageTotal() - 1), expected);
    }
    EXPECT_EQ(e.getMessageTotal(), 41u);
}

TEST(MessageStack, MessageThatCannotBeFormattedIsReplacedByAFixedText) {
    const TemporaryLog log;
    Exception e("%ls", L"\x4E00");  // no such character in the C locale
    e.appendMessage(static_cast<const wchar_t*>(nullptr));
    e.appendMessage(static_cast<const char*>(nullptr));
    const std::wstring text = L"(unable to format message)";
    EXPECT_EQ(messagesOf(e), (Messages{text, text, text}));
    const std::string line = "Vorel Error: (unable to format message)";
    EXPECT_EQ(log.messages(), (Texts{line, line, line}));
}

TEST(MessageStack, NarrowTextsUseTheEncodingOfTheLocale) {
    const TemporaryLog log;
    Exception e("\xE9");
    e.appendMessage("%s", "\xE9");
    e.defineLocation("\xE9");
    EXPECT_EQ(messagesOf(e), (Messages{L"\xE9", L"\xE9"}));
    EXPECT_EQ(test::locationsOf(e).at(1), L"\xE9");
    EXPECT_EQ(log.messages(), (Texts{"Vorel Error: \xC3\xA9", "Vorel Error: \xC3\xA9"}));
}

TEST(MessageStack, ReplacingAMessageLogsNothing) {
    Exception e(L"a");
    e.appendMessage(L"b");
    const TemporaryLog log;
    e.setErrorMessage(1, L"%ls and %ls", e.getErrorMessage(0), e.getErrorMessage(1));
    e.setErrorMessage(2, L"nowhere");
    e.setErrorMessage(UINT_MAX, L"nowhere");
    EXPECT_EQ(messagesOf(e), (Messages{L"a", L"a and b"}));
    e.setLocation(1, L"second");
    e.setErrorMessage(1, L"c");
    EXPECT_EQ(test::locationsOf(e).at(1), L"second");
    EXPECT_FALSE(log.exists());
}

TEST(MessageStack, LongReplacementsOfMessagesAreNotTruncated) {
    Exception e(L"a");
    const std::wstring text(9000, L'z');
    e.setErrorMessage(0, L"%ls", text.c_str());
    EXPECT_EQ(messagesOf(e), Messages{text});
    e.setErrorMessage(0, nullptr);
    EXPECT_EQ(messagesOf(e), Messages{L"(unable to format message)"});
}

TEST(MessageStack, SetLocationIgnoresAnIndexOutOfRange) {
    Exception e(L"a");
    e.appendMessage(L"b");
    e.setLocation(0, L"first");
    e.setLocation(2, L"nowhere");
    EXPECT_EQ(test::locationsOf(e).at(0), L"first");
    EXPECT_EQ(test::locationsOf(e).at(1), L"");
    e.setLocation(0, nullptr);
    EXPECT_EQ(test::locationsOf(e).at(0), L"");
}

TEST(MessageStack, DefineLocationSetsTheLocationOfTheNewestMessage) {
    Exception e;
    e.defineLocation(L"without a message");
    e.defineLocation("without a message");
    EXPECT_EQ(e.getMessageTotal(), 0u);
    e.appendMessage(L"a");
    e.appendMessage(L"b");
    e.defineLocation(L"wide");
    EXPECT_EQ(test::locationsOf(e).at(1), L"wide");
    e.defineLocation("narrow");
    EXPECT_EQ(test::locationsOf(e).at(1), L"narrow");
    EXPECT_EQ(test::locationsOf(e).at(0), L"");
    e.defineLocation(static_cast<const char*>(nullptr));
    EXPECT_EQ(test::locationsOf(e).at(1), L"");
}

constexpr int kAccessDenied = static_cast<int>(0x80070005);
constexpr int kOutOfMemory = static_cast<int>(0x8007000E);
constexpr int kWithoutText = static_cast<int>(0xA1234567);

/// The system's text for an HRESULT.
std::wstring systemTextOf(int hr) {
    wchar_t text[1024] = {};
    FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, static_cast<DWORD>(hr), 0, text,
                   1024, nullptr);
    return text;
}

TEST(MessageStack, HresultAddsTheTextOfTheSystemAndLogsAClosingLine) {
    for (const auto& [hr, digits] : {std::pair(kAccessDenied, L"80070005"), std::pair(kOutOfMemory, L"8007000E")}) {
        const TemporaryLog log;
        Exception e;
        e.addHRESULTErrorToStack(hr);
        const std::wstring text = systemTextOf(hr);
        ASSERT_NE(text, L"");
        const std::wstring message = std::wstring(L"HRESULT: ") + digits + L" - " + text;
        EXPECT_EQ(messagesOf(e), Messages{message});
        // The system's text ends with a line break. The runtime writes the line feed in this line break as CR LF.
        const std::string content = test::readFileBytes(log.path()).value_or("");
        const std::string line = test::narrowed(message.substr(0, message.find_first_of(L"\r\n")));
        const std::string prefix = "AddHRESULTErrorToStack: ";
        const std::size_t first = content.find(prefix);
        EXPECT_EQ(content.compare(first, prefix.size() + line.size(), prefix + line), 0) << content;
        const std::size_t second = content.find(prefix, first + 1);
        EXPECT_EQ(content.substr(second), prefix + "\r\n") << "there must be exactly one closing line";
    }
}

TEST(MessageStack, HresultThatAddsNoMessageStillLogsTheClosingLine) {
    for (const int hr : {0, static_cast<int>(E_FAIL)}) {
        const TemporaryLog log;
        Exception e;
        e.addHRESULTErrorToStack(hr);
        EXPECT_EQ(e.getMessageTotal(), 0u);
        EXPECT_EQ(log.messages(), Texts{"AddHRESULTErrorToStack: "});
    }
}

TEST(MessageStack, UnknownHresultIsOnlyLogged) {
    ASSERT_EQ(systemTextOf(kWithoutText), L"");
    const TemporaryLog log;
    Exception e;
    e.addHRESULTErrorToStack(kWithoutText);
    EXPECT_EQ(e.getMessageTotal(), 0u);
    EXPECT_EQ(log.messages(), (Texts{"AddHRESULTErrorToStack: HR not found", "AddHRESULTErrorToStack: "}));
}

TEST(MessageStack, DelayedExceptionLogsOnlyUnknownHresults) {
    const TemporaryLog log;
    Exception e;
    e.setDelayedLogging(true);
    e.addHRESULTErrorToStack(0);
    e.addHRESULTErrorToStack(kAccessDenied);
    EXPECT_FALSE(log.exists());
    e.addHRESULTErrorToStack(kWithoutText);
    EXPECT_EQ(log.messages(), Texts{"AddHRESULTErrorToStack: HR not found"});
    EXPECT_EQ(e.getMessageTotal(), 1u);
    e.setDelayedLogging(false);
}

}  // namespace
