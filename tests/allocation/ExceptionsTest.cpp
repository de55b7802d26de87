// Exceptions under a failing heap: texts may be cut or missing, and nothing else goes wrong.

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
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/ExceptionFamily.h"

extern "C" {
extern decltype(&::FormatMessageW) importedFormatMessage __asm__("__imp_FormatMessageW");
}

namespace {

using vorel::Exception;
using Texts = std::vector<std::wstring>;

/// More than the buffer of a message holds.
std::wstring_view longWords() {
    static const std::wstring kWords = longText<wchar_t>(kLongMessage);
    return kWords;
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

void severeErrorInAFrame(Trial& trial) {
    trial.perform([] { vorel::detail::guarded(L"Parser", L"run", [] { throw 7; }); });
    trial.expectThrown(typeid(Exception).name(), {L"Parser::run: Severe error thrown"});
}

void replaceMessage(Trial& trial) {
    Exception e(L"before");
    const auto text = longText<wchar_t>(kLongMessage);
    trial.perform([&] { e.setErrorMessage(0, L"%ls", text.c_str()); });
    trial.expectCompleted();
    EXPECT_TRUE(trial.logged().empty());
    const std::wstring after = e.what();
    EXPECT_TRUE(after == text || (trial.refused() && (after == L"before" || after == text.substr(0, kCutMessage))));
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
    const wchar_t* const earlier = original.e.getErrorMessageBlock(L"; ");
    const wchar_t* block = nullptr;
    trial.perform([&] { block = original.e.getErrorMessageBlock(L" | "); });
    trial.expectMemoryException({{64, 2}, {128, 2}}, {L"Exception::getErrorMessageBlock: Vorel exception rethrown"});
    if (trial.completed()) {
        EXPECT_STREQ(block, L"the first message of the original | the second message, which is longer");
    } else {
        EXPECT_STREQ(earlier, L"the first message of the original; the second message, which is longer");
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
    Texts messages = {L"old"};
    Texts locations = {L"old"};
    trial.perform([&] { original.e.dumpStack(messages, locations, true); });
    trial.expectMemoryException({{2, sizeof(std::wstring)}}, {L"Exception::dumpStack: Vorel exception rethrown"});
    if (trial.completed()) {
        EXPECT_EQ(messages, (Texts{L"the first message of the original", L"the second message, which is longer"}));
        EXPECT_EQ(locations, (Texts{L"the place of the first message", L""}));
    } else {
        EXPECT_EQ(messages, Texts{L"old"});
        EXPECT_EQ(locations, Texts{L"old"});
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

/// Words of the system that need a block of their own: without it they are cut, and marked.
void longSystemError(Trial& trial) {
    const test::ImportHook<importedFormatMessage> format(
        [](DWORD, const void*, DWORD, DWORD, wchar_t* place, DWORD, va_list*) {
            const std::wstring_view words = longWords();
            // cppcheck-suppress LocalAllocCalled; where the system has its words
            auto* const text = static_cast<wchar_t*>(LocalAlloc(LPTR, (words.size() + 1) * sizeof(wchar_t)));
            words.copy(text, words.size());
            *reinterpret_cast<wchar_t**>(place) = text;
            return static_cast<DWORD>(words.size());
        });
    Exception e;
    trial.perform([&] { e.addHRESULTErrorToStack(5); });
    trial.expectCompleted();
    const heap::Unwatched unwatched;
    const std::string whole = "HRESULT: 5 - " + narrowed(std::wstring(longWords()));
    ASSERT_EQ(trial.logged().size(), 2u);
    EXPECT_EQ(trial.logged()[1], "AddHRESULTErrorToStack: ");
    const std::string& line = trial.logged()[0];
    const std::string plain = "AddHRESULTErrorToStack: ";
    if (!trial.refused()) {
        EXPECT_EQ(line, plain + whole);
        return;
    }
    EXPECT_TRUE(line == plain + whole || line == "AddHRESULTErrorToStack Truncated: " + whole.substr(0, kCutMessage))
        << line.substr(0, 100);
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

const std::vector<Operation>& operations() {
    static const std::vector<Operation> kOperations = {
        {"Build_NarrowShort", build<char, 20>},
        {"Build_WideShort", build<wchar_t, 20>},
        {"Build_NarrowLong", build<char, kLongMessage>},
        {"Build_WideLong", build<wchar_t, kLongMessage>},
        {"Append_NarrowShort", append<char, 20>},
        {"Append_WideShort", append<wchar_t, 20>},
        {"Append_NarrowLong", append<char, kLongMessage>},
        {"Append_WideLong", append<wchar_t, kLongMessage>},
        {"Append_PartOfItself", appendPartOfItself},
        {"Copy", copied},
        {"Assign", assigned},
        {"Rethrow", rethrown},
        {"RethrowClass", rethrownByClass},
        {"RethrowDestructor", rethrownByDestructor},
        {"Frame", thrownThroughAFrame},
        {"Frame_OfASevereError", severeErrorInAFrame},
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

/// The block for a long message is the first thing that a message asks for.
template <class T>
void expectCutMessage() {
    const auto text = longText<T>(kLongMessage);
    const test::TemporaryLog log;
    heap::arm(1, heap::Failure::Once);
    const Exception e(Format<T>::kText, text.c_str());
    heap::disarm();
    EXPECT_EQ(test::messagesOf(e), Texts{longText<wchar_t>(kCutMessage)});
    EXPECT_EQ(log.messages(), std::vector<std::string>{"Vorel Error Truncated: " + longText<char>(kCutMessage)});
}

TEST(LongMessage, IsCutAndMarkedWhenItsBlockAloneIsRefused) {
    expectCutMessage<wchar_t>();
    expectCutMessage<char>();
}

TEST(LongMessage, IsCutWithoutAMarkWhenItReplacesAnother) {
    const test::TemporaryLog log;
    Exception e(L"before");
    const std::wstring text = longText<wchar_t>(kLongMessage);
    heap::arm(1, heap::Failure::Once);
    e.setErrorMessage(0, L"%ls", text.c_str());
    heap::disarm();
    EXPECT_EQ(test::messagesOf(e), Texts{text.substr(0, kCutMessage)});
    EXPECT_EQ(log.messages(), std::vector<std::string>{"Vorel Error: before"});
}

}  // namespace
