// Exceptions under a failing heap: texts may be cut or missing, and nothing else goes wrong.

#include <optional>
#include <string>
#include <typeinfo>
#include <vector>

#include "allocation/Walker.h"
#include "support/Expect.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using vorel::Exception;
using Texts = std::vector<std::wstring>;

constexpr std::size_t kLong = 10000;
constexpr std::size_t kCut = 7999;       // what the buffer of a message holds
constexpr std::size_t kLogBytes = 8185;  // what the buffer of a log line holds

const std::wstring kNoMemoryForText = L"Out of memory for text conversion";

/// Whether the message at `index` of `e` is `text`, or what is left of it where memory was refused.
void expectMessage(const Trial& trial, const Exception& e, unsigned int index, const std::wstring& text) {
    const heap::Unwatched unwatched;
    if (!trial.refused()) {
        ASSERT_GT(e.getMessageTotal(), index);
        EXPECT_EQ(e.getErrorMessage(index), text);
        return;
    }
    const std::wstring found = e.getErrorMessage(index);
    EXPECT_TRUE(found.empty() || found == text || found == text.substr(0, kCut) || found == kNoMemoryForText) << index;
}

/// Whether the last line of the log is `text` under `prefix`, or what is left of it where memory was refused.
void expectLastLine(const Trial& trial, const std::string& prefix, const std::string& text) {
    const heap::Unwatched unwatched;
    ASSERT_FALSE(trial.logged().empty());
    const std::string& line = trial.logged().back();
    const std::string whole = prefix + ": " + text;
    if (!trial.refused()) {
        EXPECT_EQ(line, whole);
        return;
    }
    const std::string cut = prefix + " Truncated: " + text.substr(0, kCut);
    const std::string cutByLog = prefix + ": " + text.substr(0, kLogBytes);
    const std::string noMemory = prefix + ": Out of memory for text conversion";
    EXPECT_TRUE(line == whole || line == cutByLog || line == noMemory || line == prefix + ": " ||
                (text.size() > kCut && (line == cut || line == prefix + " Truncated: ")))
        << line.substr(0, 100);
}

std::string narrowed(const std::wstring& text) {
    return {text.begin(), text.end()};
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
void build(Trial& trial) {
    const auto text = longText<T>(Length);
    std::optional<Exception> e;
    trial.perform([&] { e.emplace(Format<T>::kText, text.c_str()); });
    trial.expectCompleted();
    ASSERT_TRUE(e.has_value());
    expectMessage(trial, *e, 0, longText<wchar_t>(Length));
    expectLastLine(trial, "Vorel Error", longText<char>(Length));
}

template <class T, std::size_t Length>
void append(Trial& trial) {
    const auto text = longText<T>(Length);
    Exception e(L"the first message");
    trial.perform([&] { e.appendMessage(Format<T>::kText, text.c_str()); });
    trial.expectCompleted();
    EXPECT_STREQ(e.what(), L"the first message") << "what is there stays";
    expectMessage(trial, e, 1, longText<wchar_t>(Length));
    expectLastLine(trial, "Vorel Error", longText<char>(Length));
}

/// The argument lies in the very stack that is about to grow.
void appendPartOfItself(Trial& trial) {
    Exception e(L"a message that is longer than the smallest buffer");
    const std::wstring text = e.what();
    trial.perform([&] { e.appendMessage(L"%ls", e.what()); });
    trial.expectCompleted();
    EXPECT_EQ(e.what(), text);
    expectMessage(trial, e, 1, text);
}

/// An exception with two messages, their locations and the mark, built while memory is to be had.
struct Original {
    Original() {
        e.setLocation(0, L"the place of the first message");
        e.appendMessage(L"%ls", L"the second message, which is longer");
        e.markHasTracedProtocolStateInfo();
    }
    vorel::TimeoutException e{L"%ls", L"the first message of the original"};
};

void expectCopy(const Trial& trial, const Exception& copy) {
    EXPECT_LE(copy.getMessageTotal(), 2u);
    expectMessage(trial, copy, 0, L"the first message of the original");
    expectMessage(trial, copy, 1, L"the second message, which is longer");
    EXPECT_TRUE(copy.hasTracedProtocolStateInfo());
}

void copied(Trial& trial) {
    const Original original;
    std::optional<vorel::TimeoutException> copy;
    trial.perform([&] { copy.emplace(original.e); });
    trial.expectCompleted();
    ASSERT_TRUE(copy.has_value());
    expectCopy(trial, *copy);
    EXPECT_EQ(original.e.getMessageTotal(), 2u);
}

void assigned(Trial& trial) {
    const Original original;
    vorel::TimeoutException target(L"what is replaced");
    trial.perform([&] { target = original.e; });
    trial.expectCompleted();
    if (target.getMessageTotal() == 2) {
        expectCopy(trial, target);
    } else {
        EXPECT_TRUE(trial.refused());
    }
}

/// Whatever is lost on the way, the class is not.
template <class Rethrow>
void passedOn(Trial& trial, const Texts& records, Rethrow&& rethrow) {
    Original original;
    trial.perform([&] { rethrow(original.e); });
    Texts texts = {L"the first message of the original", L"the second message, which is longer"};
    texts.insert(texts.end(), records.begin(), records.end());
    const heap::Unwatched unwatched;
    EXPECT_EQ(trial.thrown(), typeid(vorel::TimeoutException).name());
    trial.expectThrownTexts(texts);
    if (!records.empty()) {
        EXPECT_EQ(trial.logged(), std::vector<std::string>{"Vorel Error: " + narrowed(records[0])});
    }
}

void rethrown(Trial& trial) {
    passedOn(trial, {}, [](Exception& e) { e.rethrow(); });
}

void rethrownByClass(Trial& trial) {
    passedOn(trial, {L"Parser::run: Vorel exception rethrown"},
             [](Exception& e) { e.rethrowClass(L"Parser", L"run"); });
}

void rethrownByDestructor(Trial& trial) {
    passedOn(trial, {L"Parser::~Parser: Vorel exception rethrown"},
             [](Exception& e) { e.rethrowDestructor(L"Parser"); });
}

void thrownThroughAFrame(Trial& trial) {
    passedOn(trial, {L"vorel::util::run: Vorel exception rethrown"},
             [](Exception& e) { vorel::detail::guarded(L"vorel::util::run", [&] { e.rethrow(); }); });
}

void caughtByClass(Trial& trial) {
    Exception e(L"a message");
    trial.perform([&] { e.catchClass(L"Parser", L"run"); });
    trial.expectCompleted();
    EXPECT_EQ(e.getMessageTotal(), 0u);
    expectLastLine(trial, "Vorel Error", "Parser::run: Vorel exception caught");
}

void severeErrorThrown(Trial& trial) {
    trial.perform([] { Exception::throwSevereClass(L"Parser", L"run"); });
    trial.expectThrown(typeid(Exception).name(), {L"Parser::run: Severe error thrown"});
}

void severeErrorCaught(Trial& trial) {
    trial.perform([] { Exception::catchSevereGeneric(L"%ls-%d", L"Parser", 7); });
    trial.expectCompleted();
    expectLastLine(trial, "Vorel Error", "Parser-7: Severe error caught");
}

void severeErrorInAFrame(Trial& trial) {
    trial.perform([] { vorel::detail::guarded(L"Parser", L"run", [] { throw 7; }); });
    trial.expectThrown(typeid(Exception).name(), {L"Parser::run: Severe error thrown"});
}

void replaceMessage(Trial& trial) {
    Exception e(L"before");
    const auto text = longText<wchar_t>(kLong);
    trial.perform([&] { e.setErrorMessage(0, L"%ls", text.c_str()); });
    trial.expectCompleted();
    EXPECT_TRUE(trial.logged().empty());
    const std::wstring after = e.what();
    EXPECT_TRUE(after == text || (trial.refused() && (after == L"before" || after == text.substr(0, kCut))));
}

/// Sets a location on an exception that has one, and expects it, or `failures`.
template <class Set>
void setLocation(Trial& trial, const Texts& failures, Set&& set) {
    Exception e(L"a message");
    e.setLocation(0, L"before");
    trial.perform([&] { set(e); });
    trial.expectCompleted();
    const heap::Unwatched unwatched;
    const std::wstring after = test::locationsOf(e).at(0);
    bool expected = after == L"a place with a name of some length";
    for (const std::wstring& failure : failures) {
        expected = expected || (trial.refused() && after == failure);
    }
    EXPECT_TRUE(expected) << testing::PrintToString(after);
}

void wideLocation(Trial& trial) {
    setLocation(trial, {L"before"}, [](Exception& e) { e.defineLocation(L"a place with a name of some length"); });
}

void narrowLocation(Trial& trial) {
    setLocation(trial, {L"before", L"", kNoMemoryForText},
                [](Exception& e) { e.defineLocation("a place with a name of some length"); });
}

void wideBlock(Trial& trial) {
    const Original original;
    const wchar_t* block = nullptr;
    trial.perform([&] { block = original.e.getErrorMessageBlock(L" | "); });
    trial.expectMemoryException({{64, 2}, {128, 2}});
    if (trial.completed()) {
        EXPECT_STREQ(block, L"the first message of the original | the second message, which is longer");
    }
    EXPECT_EQ(original.e.getMessageTotal(), 2u);
}

void narrowBlock(Trial& trial) {
    const Original original;
    const std::string whole = "the first message of the original | the second message, which is longer";
    const char* block = nullptr;
    trial.perform([&] { block = original.e.getCharErrorMessageBlock(" | "); });
    trial.expectCompleted();
    EXPECT_TRUE(trial.refused() ? whole.starts_with(block) : whole == block) << block;
}

void dumpedStack(Trial& trial) {
    Original original;
    Texts messages;
    Texts locations;
    trial.perform([&] { original.e.dumpStack(messages, locations, true); });
    trial.expectBadAlloc();
    if (trial.completed()) {
        EXPECT_EQ(messages, (Texts{L"the first message of the original", L"the second message, which is longer"}));
        EXPECT_EQ(locations, (Texts{L"the place of the first message", L""}));
    }
    EXPECT_EQ(original.e.getMessageTotal(), trial.completed() ? 0u : 2u);
}

/// Kept out of the log, where the line end within the system's text would stand.
void systemError(Trial& trial) {
    Exception e(L"a message");
    e.setDelayedLogging(true);
    trial.perform([&] { e.addHRESULTErrorToStack(5); });
    trial.expectCompleted();
    EXPECT_STREQ(e.what(), L"a message");
    const std::wstring added = e.getErrorMessage(1);
    EXPECT_TRUE(added.starts_with(L"HRESULT: 5 - ") || (trial.refused() && added.empty()));
    e.clear();
}

/// What was delayed is logged at the end, by a destructor that has no memory either.
void delayedLogging(Trial& trial) {
    std::optional<Exception> e;
    e.emplace();
    e->setDelayedLogging(true);
    e->appendMessage("%s", "a delayed message");
    trial.perform([&] { e.reset(); });
    trial.expectCompleted();
    expectLastLine(trial, "Vorel Error", "a delayed message");
}

void memoryException(Trial& trial) {
    trial.perform([] { throw vorel::MemoryException(7, 4); });
    trial.expectThrown(typeid(vorel::MemoryException).name(),
                       {L"No more memory is available: 7 objects of size 4 requested"});
}

const std::vector<Operation>& operations() {
    static const std::vector<Operation> kOperations = {
        {"Build_NarrowShort", build<char, 20>},
        {"Build_WideShort", build<wchar_t, 20>},
        {"Build_NarrowLong", build<char, kLong>},
        {"Build_WideLong", build<wchar_t, kLong>},
        {"Build_MemoryException", memoryException},
        {"Append_NarrowShort", append<char, 20>},
        {"Append_WideShort", append<wchar_t, 20>},
        {"Append_NarrowLong", append<char, kLong>},
        {"Append_WideLong", append<wchar_t, kLong>},
        {"Append_PartOfItself", appendPartOfItself},
        {"Copy", copied},
        {"Assign", assigned},
        {"Rethrow", rethrown},
        {"RethrowClass", rethrownByClass},
        {"RethrowDestructor", rethrownByDestructor},
        {"Frame", thrownThroughAFrame},
        {"Frame_OfASevereError", severeErrorInAFrame},
        {"CatchClass", caughtByClass},
        {"ThrowSevere", severeErrorThrown},
        {"CatchSevere", severeErrorCaught},
        {"SetErrorMessage", replaceMessage},
        {"DefineLocation_Wide", wideLocation},
        {"DefineLocation_Narrow", narrowLocation},
        {"ErrorMessageBlock_Wide", wideBlock},
        {"ErrorMessageBlock_Narrow", narrowBlock},
        {"DumpStack", dumpedStack},
        {"AddHRESULT", systemError},
        {"DelayedLogging", delayedLogging},
    };
    return kOperations;
}

INSTANTIATE_TEST_SUITE_P(Exceptions, FailingHeap, underBothFailures(operations()), failingHeapName);

/// The block for a long message is the first thing that a message asks for.
template <class T>
void expectCutMessage() {
    const auto text = longText<T>(kLong);
    const test::TemporaryLog log;
    heap::arm(1, heap::Failure::Once);
    const Exception e(Format<T>::kText, text.c_str());
    heap::disarm();
    EXPECT_EQ(test::messagesOf(e), Texts{longText<wchar_t>(kCut)});
    EXPECT_EQ(log.messages(), std::vector<std::string>{"Vorel Error Truncated: " + longText<char>(kCut)});
}

TEST(LongMessage, IsCutAndMarkedWhenItsBlockAloneIsRefused) {
    expectCutMessage<wchar_t>();
    expectCutMessage<char>();
}

TEST(LongMessage, IsCutWithoutAMarkWhenItReplacesAnother) {
    const test::TemporaryLog log;
    Exception e(L"before");
    const std::wstring text = longText<wchar_t>(kLong);
    heap::arm(1, heap::Failure::Once);
    e.setErrorMessage(0, L"%ls", text.c_str());
    heap::disarm();
    EXPECT_EQ(test::messagesOf(e), Texts{text.substr(0, kCut)});
    EXPECT_EQ(log.messages(), std::vector<std::string>{"Vorel Error: before"});
}

TEST(ThreadLogging, KeepsTheThreadsChoiceWithoutMemory) {
    const test::TemporaryLog log;
    heap::arm(1, heap::Failure::FromThenOn);
    Exception::DisableThreadErrorLogging(true);
    heap::disarm();
    EXPECT_NE(heap::refusals(), 0u);
    EXPECT_FALSE(Exception::IsThreadErrorLoggingDisabled());
    EXPECT_TRUE(log.messages().empty()) << "and says nothing";
}

}  // namespace
