#include "vorel/exceptions/Exception.h"

#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "support/Expect.h"
#include "support/TemporaryLog.h"

namespace {

using Messages = std::vector<std::wstring>;
using test::locationsOf;
using test::messagesOf;
using test::TemporaryLog;
using Texts = std::vector<std::string>;
using Wides = std::vector<std::wstring>;
using vorel::Exception;

Exception withMessages(const Messages& messages) {
    Exception e;
    for (const std::wstring& message : messages) {
        e.appendMessage(L"%ls", message.c_str());
    }
    return e;
}

// The pointer to the virtual table, the message stack, two flags and two cached texts. The layout is the same in every
// build.
static_assert(sizeof(Exception) == 8 + 24 + 8 + 16 + 16);
static_assert(!std::is_base_of_v<std::exception, Exception>);
static_assert(!std::is_nothrow_destructible_v<Exception>);

TEST(Exception, DefaultConstructorAddsNoMessageAndLogsNothing) {
    const TemporaryLog log;
    const Exception e;
    EXPECT_EQ(e.what(), nullptr);
    EXPECT_EQ(e.getMessageTotal(), 0u);
    EXPECT_STREQ(e.getErrorMessageBlock(L"; "), L"");
    EXPECT_STREQ(e.getCharErrorMessageBlock("; "), "");
    EXPECT_FALSE(e.hasTracedProtocolStateInfo());
    EXPECT_FALSE(log.exists());
}

TEST(Exception, MessageOfAWideOrNarrowFormatIsLoggedImmediately) {
    const TemporaryLog log;
    const Exception wide(L"%ls has %d", L"wide", 4);
    const Exception narrow("%s has %d", "narrow", 6);
    EXPECT_STREQ(wide.what(), L"wide has 4");
    EXPECT_STREQ(narrow.what(), L"narrow has 6");
    EXPECT_EQ(log.messages(), (Texts{"Vorel Error: wide has 4", "Vorel Error: narrow has 6"}));
}

TEST(Exception, WhatReturnsTheOldestMessage) {
    const Exception e = withMessages({L"a", L"b"});
    EXPECT_STREQ(e.what(), L"a");
}

TEST(Exception, WhatReturnsAnEmptyTextForAnEmptyMessage) {
    const Exception e(L"");
    ASSERT_NE(e.what(), nullptr);
    EXPECT_STREQ(e.what(), L"");
    EXPECT_EQ(e.getMessageTotal(), 1u);
}

TEST(Exception, GetErrorMessageReturnsAnEmptyTextForAnIndexOutOfRange) {
    const Exception e = withMessages({L"a", L"b"});
    EXPECT_STREQ(e.getErrorMessage(0), L"a");
    EXPECT_STREQ(e.getErrorMessage(1), L"b");
    EXPECT_STREQ(e.getErrorMessage(2), L"");
    EXPECT_STREQ(e.getErrorMessage(0xFFFFFFFFu), L"");
}

TEST(Exception, BlocksJoinTheMessagesOldestFirst) {
    const Exception e = withMessages({L"a", L"b", L"c"});
    EXPECT_STREQ(e.getErrorMessageBlock(L"; "), L"a; b; c");
    EXPECT_STREQ(e.getErrorMessageBlock(nullptr), L"abc");
    EXPECT_STREQ(e.getCharErrorMessageBlock("; "), "a; b; c");
    EXPECT_STREQ(e.getCharErrorMessageBlock(nullptr), "abc");
}

TEST(Exception, BlocksAreUnchangedByClearAndEmptiedByAssignment) {
    Exception e = withMessages({L"a", L"b"});
    const wchar_t* const wide = e.getErrorMessageBlock(L"; ");
    const char* const narrow = e.getCharErrorMessageBlock("; ");
    e.clear();
    EXPECT_STREQ(wide, L"a; b");
    EXPECT_STREQ(narrow, "a; b");
    const Exception other = withMessages({L"c"});
    e = other;
    EXPECT_STREQ(wide, L"");
    EXPECT_STREQ(narrow, "");
}

TEST(Exception, BlocksOfAStackThatWasClearedAreEmptyTexts) {
    Exception e = withMessages({L"a", L"b"});
    EXPECT_STREQ(e.getErrorMessageBlock(L"; "), L"a; b");
    EXPECT_STREQ(e.getCharErrorMessageBlock("; "), "a; b");
    e.clear();
    EXPECT_STREQ(e.getErrorMessageBlock(L"; "), L"");
    EXPECT_STREQ(e.getCharErrorMessageBlock("; "), "");
}

TEST(Exception, BlocksOmitLocations) {
    Exception e = withMessages({L"a"});
    e.defineLocation(L"here");
    EXPECT_STREQ(e.getErrorMessageBlock(L"; "), L"a");
    EXPECT_STREQ(e.getCharErrorMessageBlock("; "), "a");
}

TEST(Exception, CharBlockIsUtf8) {
    const Exception e = withMessages({L"\x00E9", L"\xD83D\xDE00", L"\xD800"});
    EXPECT_STREQ(e.getCharErrorMessageBlock("|"), "\xC3\xA9|\xF0\x9F\x98\x80|?");
}

TEST(Exception, DumpFillsBothVectorsInTheSameOrder) {
    Exception e = withMessages({L"a", L"b"});
    e.defineLocation(L"at b");
    Wides messages(5, L"old");
    Wides locations;
    e.dumpStack(messages, locations, false);
    EXPECT_EQ(messages, (Wides{L"a", L"b"}));
    EXPECT_EQ(locations, (Wides{L"", L"at b"}));
    EXPECT_EQ(e.getMessageTotal(), 2u);
    e.dumpStack(messages, locations, true);
    EXPECT_EQ(messages, (Wides{L"a", L"b"}));
    EXPECT_EQ(e.getMessageTotal(), 0u);
    e.dumpStack(messages, locations, true);
    EXPECT_TRUE(messages.empty());
    EXPECT_TRUE(locations.empty());
}

TEST(Exception, ClearRemovesTheMessagesAndKeepsTheFlags) {
    const TemporaryLog log;
    Exception e;
    e.setDelayedLogging(true);
    e.markHasTracedProtocolStateInfo();
    e.appendMessage(L"a");
    e.clear();
    EXPECT_EQ(e.getMessageTotal(), 0u);
    EXPECT_TRUE(e.hasTracedProtocolStateInfo());
    e.appendMessage(L"b");
    EXPECT_FALSE(log.exists());  // logging is still delayed
}

TEST(Exception, CopyingCopiesMessagesLocationsAndTheMarkButNotTheDelay) {
    const TemporaryLog log;
    Exception original;
    original.setDelayedLogging(true);
    original.markHasTracedProtocolStateInfo();
    original.appendMessage(L"a");
    original.defineLocation(L"at a");
    original.appendMessage(L"b");

    Exception copy(original);
    EXPECT_EQ(messagesOf(copy), (Messages{L"a", L"b"}));
    EXPECT_EQ(locationsOf(copy), (Wides{L"at a", L""}));
    EXPECT_TRUE(copy.hasTracedProtocolStateInfo());
    EXPECT_FALSE(log.exists());
    copy.appendMessage(L"c");
    EXPECT_EQ(log.messages(), Texts{"Vorel Error: c"});
    EXPECT_EQ(original.getMessageTotal(), 2u);
    original.clear();
}

TEST(Exception, AssignmentReplacesTheMessagesButNotTheDelay) {
    struct Case {
        Messages from;
        Messages to;
    };
    for (const Case& c : {Case{{L"a"}, {L"x", L"y", L"z"}}, Case{{L"a", L"b", L"c"}, {L"x"}}, Case{{}, {L"x"}}}) {
        Exception source = withMessages(c.from);
        source.markHasTracedProtocolStateInfo();
        Exception target = withMessages(c.to);
        const TemporaryLog log;
        target.setDelayedLogging(true);
        target = source;
        EXPECT_EQ(messagesOf(target), c.from);
        EXPECT_TRUE(target.hasTracedProtocolStateInfo());
        target.appendMessage(L"later");
        EXPECT_FALSE(log.exists());
        target.setDelayedLogging(false);
    }
}

TEST(Exception, AssignmentCopiesTheMarkOfTheSource) {
    for (const bool isSourceMarked : {false, true}) {
        for (const bool isTargetMarked : {false, true}) {
            Exception source;
            Exception target;
            if (isSourceMarked) {
                source.markHasTracedProtocolStateInfo();
            }
            if (isTargetMarked) {
                target.markHasTracedProtocolStateInfo();
            }
            target = source;
            EXPECT_EQ(target.hasTracedProtocolStateInfo(), isSourceMarked)
                << "target marked before: " << isTargetMarked;
        }
    }
}

TEST(Exception, SelfAssignmentChangesNothing) {
    Exception e = withMessages({L"a", L"b"});
    const Exception& same = e;
    e = same;
    EXPECT_EQ(messagesOf(e), (Messages{L"a", L"b"}));
}

TEST(Exception, DelayedLoggingWritesAllMessagesOnceAtDestruction) {
    const TemporaryLog log;
    {
        Exception e;
        e.setDelayedLogging(true);
        e.appendMessage(L"a");
        e.appendMessage("b");
        EXPECT_FALSE(log.exists());
    }
    EXPECT_EQ(log.messages(), (Texts{"Vorel Error: a", "Vorel Error: b"}));
}

TEST(Exception, DelayAfterConstructionWritesTheFirstMessageTwice) {
    const TemporaryLog log;
    {
        Exception e(L"a");
        e.setDelayedLogging(true);
        e.appendMessage(L"b");
    }
    EXPECT_EQ(log.messages(), (Texts{"Vorel Error: a", "Vorel Error: a", "Vorel Error: b"}));
}

TEST(Exception, MirrorAllMessagesIgnoresTheDelay) {
    Exception e = withMessages({L"a", L"b"});
    const TemporaryLog log;
    e.mirrorAllMessages();
    e.setDelayedLogging(true);
    e.mirrorAllMessages();
    e.setDelayedLogging(false);
    EXPECT_EQ(log.messages(), (Texts{"Vorel Error: a", "Vorel Error: b", "Vorel Error: a", "Vorel Error: b"}));
}

TEST(Exception, RethrowThrowsACopy) {
    Exception original(L"a");
    try {
        original.rethrow();
    } catch (Exception& thrown) {
        EXPECT_NE(&thrown, &original);
        thrown.appendMessage(L"b");
        EXPECT_EQ(messagesOf(thrown), (Messages{L"a", L"b"}));
    }
    EXPECT_EQ(messagesOf(original), Messages{L"a"});
}

TEST(Exception, BlockSeparatorMayPointIntoThePreviousBlock) {
    Exception e(L"a");
    e.appendMessage(L"b");
    e.appendMessage(L"c");
    EXPECT_STREQ(e.getErrorMessageBlock(e.getErrorMessageBlock(L"-")), L"aa-b-cba-b-cc");
    EXPECT_STREQ(e.getCharErrorMessageBlock(e.getCharErrorMessageBlock("-") + 3), "a-cb-cc");
}

}  // namespace
