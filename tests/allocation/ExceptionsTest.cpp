// Exceptions with a failing heap: texts may be truncated or missing, or a text that reports a failed conversion may
// replace them. Functions that return all messages at once may throw a `MemoryException`, except
// `getCharErrorMessageBlock`. Nothing else fails.

#include <optional>
#include <string>
#include <string_view>
#include <typeinfo>
#include <vector>

#include <windows.h>

#include "allocation/MessageTexts.h"
#include "allocation/Walker.h"
#include "support/Expect.h"
#include "support/ImportHook.h"
#include "support/WideText.h"
#include "vorel/Trail.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using vorel::Exception;
using Texts = std::vector<std::wstring>;

/// A text that is too long for the internal buffer of a message.
std::wstring_view longMessage() {
    static const std::wstring kText = longText<wchar_t>(kLongMessage);
    return kText;
}

template <class T>
struct Format;
template <>
struct Format<char> {
    static constexpr const char* kText = "%s";
};
template <>
struct Format<wchar_t> {
    static constexpr const wchar_t* kText = L"%ls";
};

template <class T, std::size_t Length>
void build(Attempt& attempt) {
    const auto text = longText<T>(Length);
    std::optional<Exception> e;
    attempt.perform([&] { e.emplace(Format<T>::kText, text.c_str()); });
    attempt.expectCompleted();
    ASSERT_TRUE(e.has_value());
    expectMessage(attempt, *e, 0, longText<wchar_t>(Length));
    expectLastLine(attempt, "Vorel Error", longText<char>(Length));
}

template <class T, std::size_t Length>
void append(Attempt& attempt) {
    const auto text = longText<T>(Length);
    Exception e(L"the first message");
    attempt.perform([&] { e.appendMessage(Format<T>::kText, text.c_str()); });
    attempt.expectCompleted();
    EXPECT_STREQ(e.what(), L"the first message") << "the existing message must remain";
    expectMessage(attempt, e, 1, longText<wchar_t>(Length));
    expectLastLine(attempt, "Vorel Error", longText<char>(Length));
}

/// The argument is a message of the exception itself. The stack of its messages grows during the call.
void appendPartOfItself(Attempt& attempt) {
    Exception e(L"a message that is longer than the smallest buffer");
    const std::wstring text = e.what();
    attempt.perform([&] { e.appendMessage(L"%ls", e.what()); });
    attempt.expectCompleted();
    EXPECT_EQ(e.what(), text);
    expectMessage(attempt, e, 1, text);
}

/// An exception with two messages, a location and the mark of `markHasTracedProtocolStateInfo`. It is constructed while
/// memory is available.
struct Original {
    Original() {
        e.setLocation(0, L"the location of the first message");
        e.appendMessage(L"%ls", L"the second message, which is longer");
        e.markHasTracedProtocolStateInfo();
    }
    vorel::TimeoutException e{L"%ls", L"the first message of the original"};
};

void expectCopy(const Attempt& attempt, const Exception& copy) {
    EXPECT_LE(copy.getMessageTotal(), 2u);
    expectMessage(attempt, copy, 0, L"the first message of the original");
    expectMessage(attempt, copy, 1, L"the second message, which is longer");
    EXPECT_TRUE(copy.hasTracedProtocolStateInfo());
}

void copied(Attempt& attempt) {
    const Original original;
    std::optional<vorel::TimeoutException> copy;
    attempt.perform([&] { copy.emplace(original.e); });
    attempt.expectCompleted();
    ASSERT_TRUE(copy.has_value());
    expectCopy(attempt, *copy);
    EXPECT_EQ(original.e.getMessageTotal(), 2u);
}

void assigned(Attempt& attempt) {
    const Original original;
    vorel::TimeoutException target(L"replaced message");
    attempt.perform([&] { target = original.e; });
    attempt.expectCompleted();
    if (target.getMessageTotal() == 2) {
        expectCopy(attempt, target);
    } else {
        EXPECT_TRUE(attempt.allocationFailed());
    }
}

/// Texts may be lost, but the exception keeps its class.
template <class Rethrow>
void expectRethrown(Attempt& attempt, const Texts& records, Rethrow&& rethrow) {
    Original original;
    attempt.perform([&] { rethrow(original.e); });
    Texts texts = {L"the first message of the original", L"the second message, which is longer"};
    texts.insert(texts.end(), records.begin(), records.end());
    const heap::Unwatched unwatched;
    EXPECT_EQ(attempt.thrown(), typeid(vorel::TimeoutException).name());
    attempt.expectThrownTexts(texts);
    if (!records.empty()) {
        EXPECT_EQ(attempt.logged(), std::vector<std::string>{"Vorel Error: " + test::narrowed(records[0])});
    }
}

void rethrown(Attempt& attempt) {
    expectRethrown(attempt, {}, [](Exception& e) { e.rethrow(); });
}

void rethrownByClass(Attempt& attempt) {
    expectRethrown(attempt, {L"Parser::run: Vorel exception rethrown"},
                   [](Exception& e) { e.rethrowClass(L"Parser", L"run"); });
}

void rethrownByDestructor(Attempt& attempt) {
    expectRethrown(attempt, {L"Parser::~Parser: Vorel exception rethrown"},
                   [](Exception& e) { e.rethrowDestructor(L"Parser"); });
}

void thrownThroughAFrame(Attempt& attempt) {
    expectRethrown(attempt, {L"vorel::util::run: Vorel exception rethrown"},
                   [](Exception& e) { vorel::detail::runRethrowing(L"vorel::util::run", [&] { e.rethrow(); }); });
}

void severeErrorInAFrame(Attempt& attempt) {
    attempt.perform([] { vorel::detail::runRethrowing(L"Parser", L"run", [] { throw 7; }); });
    attempt.expectThrown(typeid(Exception).name(), {L"Parser::run: Severe error thrown"});
}

void replaceMessage(Attempt& attempt) {
    Exception e(L"before");
    const auto text = longText<wchar_t>(kLongMessage);
    attempt.perform([&] { e.setErrorMessage(0, L"%ls", text.c_str()); });
    attempt.expectCompleted();
    EXPECT_TRUE(attempt.logged().empty());
    const std::wstring after = e.what();
    EXPECT_TRUE(after == text ||
                (attempt.allocationFailed() && (after == L"before" || after == text.substr(0, kTruncatedMessage))));
}

/// Replaces the location of an exception. Expects the new location, or one of `failures` if an allocation failed.
template <class Set>
void setLocation(Attempt& attempt, const Texts& failures, Set&& set) {
    Exception e(L"a message");
    e.setLocation(0, L"before");
    attempt.perform([&] { set(e); });
    attempt.expectCompleted();
    const heap::Unwatched unwatched;
    const std::wstring after = test::locationsOf(e).at(0);
    bool expected = after == L"a location with a long name";
    for (const std::wstring& failure : failures) {
        expected = expected || (attempt.allocationFailed() && after == failure);
    }
    EXPECT_TRUE(expected) << testing::PrintToString(after);
}

void wideLocation(Attempt& attempt) {
    setLocation(attempt, {L"before"}, [](Exception& e) { e.defineLocation(L"a location with a long name"); });
}

void narrowLocation(Attempt& attempt) {
    setLocation(attempt, {L"before", L"", kNoMemoryForText},
                [](Exception& e) { e.defineLocation("a location with a long name"); });
}

void wideBlock(Attempt& attempt) {
    const Original original;
    const wchar_t* const earlier = original.e.getErrorMessageBlock(L"; ");
    const wchar_t* block = nullptr;
    attempt.perform([&] { block = original.e.getErrorMessageBlock(L" | "); });
    attempt.expectMemoryException({{64, 2}, {128, 2}}, {L"Exception::getErrorMessageBlock: Vorel exception rethrown"});
    if (attempt.completed()) {
        EXPECT_STREQ(block, L"the first message of the original | the second message, which is longer");
    } else {
        EXPECT_STREQ(earlier, L"the first message of the original; the second message, which is longer");
    }
    EXPECT_EQ(original.e.getMessageTotal(), 2u);
}

void narrowBlock(Attempt& attempt) {
    const Original original;
    const std::string whole = "the first message of the original | the second message, which is longer";
    const char* block = nullptr;
    attempt.perform([&] { block = original.e.getCharErrorMessageBlock(" | "); });
    attempt.expectCompleted();
    EXPECT_TRUE(attempt.allocationFailed() ? whole.starts_with(block) : whole == block) << block;
}

void dumpedStack(Attempt& attempt) {
    Original original;
    Texts messages = {L"old"};
    Texts locations = {L"old"};
    attempt.perform([&] { original.e.dumpStack(messages, locations, true); });
    attempt.expectMemoryException({{2, sizeof(std::wstring)}}, {L"Exception::dumpStack: Vorel exception rethrown"});
    if (attempt.completed()) {
        EXPECT_EQ(messages, (Texts{L"the first message of the original", L"the second message, which is longer"}));
        EXPECT_EQ(locations, (Texts{L"the location of the first message", L""}));
    } else {
        EXPECT_EQ(messages, Texts{L"old"});
        EXPECT_EQ(locations, Texts{L"old"});
    }
    EXPECT_EQ(original.e.getMessageTotal(), attempt.completed() ? 0u : 2u);
}

/// The test does not log the system's text. The text contains a line end, so it would be two lines of the log.
void systemError(Attempt& attempt) {
    Exception e(L"a message");
    e.setDelayedLogging(true);
    attempt.perform([&] { e.addHRESULTErrorToStack(5); });
    attempt.expectCompleted();
    EXPECT_STREQ(e.what(), L"a message");
    const std::wstring added = e.getErrorMessage(1);
    EXPECT_TRUE(added.starts_with(L"HRESULT: 5 - ") || (attempt.allocationFailed() && added.empty()));
    e.clear();
}

/// A text of the system that needs a separate block. If the block cannot be allocated, the text is truncated and
/// marked.
void longSystemError(Attempt& attempt) {
    const test::ImportHook<importedFormatMessageW> format(
        [](DWORD, const void*, DWORD, DWORD, wchar_t* buffer, DWORD, va_list*) {
            const std::wstring_view source = longMessage();
            // cppcheck-suppress LocalAllocCalled; as the system does
            auto* const text = static_cast<wchar_t*>(LocalAlloc(LPTR, (source.size() + 1) * sizeof(wchar_t)));
            source.copy(text, source.size());
            *reinterpret_cast<wchar_t**>(buffer) = text;
            return static_cast<DWORD>(source.size());
        });
    Exception e;
    attempt.perform([&] { e.addHRESULTErrorToStack(5); });
    attempt.expectCompleted();
    const heap::Unwatched unwatched;
    const std::string whole = "HRESULT: 5 - " + test::narrowed(std::wstring(longMessage()));
    ASSERT_EQ(attempt.logged().size(), 2u);
    EXPECT_EQ(attempt.logged()[1], "AddHRESULTErrorToStack: ");  // the call ends with a line that has only the prefix
    const std::string& line = attempt.logged()[0];
    const std::string plain = "AddHRESULTErrorToStack: ";
    if (!attempt.allocationFailed()) {
        EXPECT_EQ(line, plain + whole);
        return;
    }
    EXPECT_TRUE(line == plain + whole ||
                line == "AddHRESULTErrorToStack Truncated: " + whole.substr(0, kTruncatedMessage))
        << line.substr(0, 100);
}

/// The destructor logs the delayed messages, while the heap may fail.
void delayedLogging(Attempt& attempt) {
    std::optional<Exception> e;
    e.emplace();
    e->setDelayedLogging(true);
    e->appendMessage("%s", "a delayed message");
    attempt.perform([&] { e.reset(); });
    attempt.expectCompleted();
    expectLastLine(attempt, "Vorel Error", "a delayed message");
}

const std::vector<Operation>& operations() {
    static const std::vector<Operation> kOperations = {
        {"Construct_NarrowShort", build<char, 20>},
        {"Construct_WideShort", build<wchar_t, 20>},
        {"Construct_NarrowLong", build<char, kLongMessage>},
        {"Construct_WideLong", build<wchar_t, kLongMessage>},
        {"Append_NarrowShort", append<char, 20>},
        {"Append_WideShort", append<wchar_t, 20>},
        {"Append_NarrowLong", append<char, kLongMessage>},
        {"Append_WideLong", append<wchar_t, kLongMessage>},
        {"Append_OwnMessage", appendPartOfItself},
        {"Copy", copied},
        {"Assign", assigned},
        {"Rethrow", rethrown},
        {"RethrowClass", rethrownByClass},
        {"RethrowDestructor", rethrownByDestructor},
        {"RethrowThroughFrame", thrownThroughAFrame},
        {"SevereErrorInFrame", severeErrorInAFrame},
        {"SetErrorMessage", replaceMessage},
        {"DefineLocation_Wide", wideLocation},
        {"DefineLocation_Narrow", narrowLocation},
        {"ErrorMessageBlock_Wide", wideBlock},
        {"ErrorMessageBlock_Narrow", narrowBlock},
        {"DumpStack", dumpedStack},
        {"AddHRESULT", systemError},
        {"AddHRESULT_Long", longSystemError},
        {"DelayedLogging", delayedLogging},
    };
    return kOperations;
}

INSTANTIATE_TEST_SUITE_P(Exceptions, FailingHeap, underBothFailures(operations()), failingHeapName);

/// The first allocation for a long message is the block for its text.
template <class T>
void expectTruncatedMessage() {
    const auto text = longText<T>(kLongMessage);
    const test::TemporaryLog log;
    heap::arm(1, heap::Failure::Once);
    const Exception e(Format<T>::kText, text.c_str());
    heap::disarm();
    EXPECT_EQ(test::messagesOf(e), Texts{longText<wchar_t>(kTruncatedMessage)});
    EXPECT_EQ(log.messages(), std::vector<std::string>{"Vorel Error Truncated: " + longText<char>(kTruncatedMessage)});
}

TEST(LongMessage, IsTruncatedAndMarkedIfOnlyItsBlockCannotBeAllocated) {
    expectTruncatedMessage<wchar_t>();
    expectTruncatedMessage<char>();
}

TEST(LongMessage, IsTruncatedWithoutMarkIfItReplacesAMessageAndItsBlockCannotBeAllocated) {
    const test::TemporaryLog log;
    Exception e(L"before");
    const std::wstring text = longText<wchar_t>(kLongMessage);
    heap::arm(1, heap::Failure::Once);
    e.setErrorMessage(0, L"%ls", text.c_str());
    heap::disarm();
    EXPECT_EQ(test::messagesOf(e), Texts{text.substr(0, kTruncatedMessage)});
    EXPECT_EQ(log.messages(), std::vector<std::string>{"Vorel Error: before"});
}

// A narrow message is converted directly into its entry of the message stack. So a message needs only two blocks: the
// stack, and the text of the entry.
TEST(NarrowMessage, NeedsBlocksOnlyForTheStackAndItsText) {
    const Texts noTexts;
    const struct {
        unsigned int failing;
        Texts messages;
        std::string logged;
    } cases[] = {
        {1, noTexts, "a short message"},
        {2, {kNoMemoryForText}, "Out of memory for text conversion"},
        {3, {L"a short message"}, "a short message"},
    };
    for (const auto& c : cases) {
        const test::TemporaryLog log;
        heap::arm(c.failing, heap::Failure::Once);
        const Exception e("%s", "a short message");
        const unsigned int failed = heap::failedRequests();
        heap::disarm();
        EXPECT_EQ(failed, c.failing <= 2 ? 1u : 0u);
        EXPECT_EQ(test::messagesOf(e), c.messages) << c.failing;
        EXPECT_EQ(log.messages(), std::vector<std::string>{"Vorel Error: " + c.logged}) << c.failing;
    }
}

/// Builds the text of all messages repeatedly. Each time, another request fails. The result must contain all messages,
/// or a `MemoryException` must be thrown.
template <class T>
void expectWholeTrail(std::basic_string_view<T> expected) {
    const test::TemporaryLog log;
    Exception e(L"first, longer than the smallest buffer");
    e.appendMessage(L"second, longer than the smallest buffer");
    unsigned int failing = 1;
    for (bool completed = false; !completed; ++failing) {
        ASSERT_LT(failing, 20u);
        heap::arm(failing, heap::Failure::Once);
        try {
            const vorel::BaseString<T> trail = vorel::detail::trailOf<T>(e);
            completed = heap::failedRequests() == 0;
            heap::disarm();
            EXPECT_TRUE(completed) << "request " << failing << " failed, and nothing was thrown";
            EXPECT_TRUE(trail.view() == expected);
        } catch (const vorel::MemoryException&) {
            heap::disarm();
        }
        EXPECT_EQ(e.getMessageTotal(), 2u);
    }
    EXPECT_GT(failing, 3u) << "the text grows, so it needs several requests";
}

TEST(Trail, ContainsAllMessagesOrThrows) {
    expectWholeTrail<wchar_t>(L"first, longer than the smallest buffer; second, longer than the smallest buffer");
    expectWholeTrail<char>("first, longer than the smallest buffer; second, longer than the smallest buffer");
}

}  // namespace
