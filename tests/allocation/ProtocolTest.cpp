// Catching, recording and rethrowing with a failing heap: the record is logged, a caught exception loses its messages
// and is not thrown again, and a rethrown exception keeps its class.

#include <string>
#include <typeinfo>
#include <vector>

#include "allocation/MessageTexts.h"
#include "allocation/Walker.h"
#include "support/WideText.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using vorel::Exception;
using vorel::TimeoutException;

/// An operation on an exception, and the record that it adds.
struct Step {
    const char* name;
    void (*perform)(Exception&);
    std::wstring record;
};

constexpr const wchar_t* kBefore = L"the existing message";

void caught(Attempt& attempt, const Step& step) {
    TimeoutException e(kBefore);
    attempt.perform([&] { step.perform(e); });
    attempt.expectCompleted();
    EXPECT_EQ(e.getMessageTotal(), 0u);
    expectLastLine(attempt, "Vorel Error", test::narrowed(step.record));
}

void recorded(Attempt& attempt, const Step& step) {
    TimeoutException e(kBefore);
    attempt.perform([&] { step.perform(e); });
    attempt.expectCompleted();
    EXPECT_STREQ(e.what(), kBefore) << "the existing message must remain";
    EXPECT_LE(e.getMessageTotal(), 2u);
    expectMessage(attempt, e, 1, step.record);
    expectLastLine(attempt, "Vorel Error", test::narrowed(step.record));
}

void rethrown(Attempt& attempt, const Step& step) {
    TimeoutException e(kBefore);
    attempt.perform([&] { step.perform(e); });
    EXPECT_EQ(attempt.thrown(), typeid(TimeoutException).name());
    attempt.expectThrownTexts({kBefore, step.record});
    expectLastLine(attempt, "Vorel Error", test::narrowed(step.record));
}

void severeCaught(Attempt& attempt, const Step& step) {
    Exception unused;
    attempt.perform([&] { step.perform(unused); });
    attempt.expectCompleted();
    expectLastLine(attempt, "Vorel Error", test::narrowed(step.record));
}

void severeThrown(Attempt& attempt, const Step& step) {
    Exception unused;
    attempt.perform([&] { step.perform(unused); });
    attempt.expectThrown(typeid(Exception).name(), {step.record});
}

const Step kCaught[] = {
    {"CatchMessage", [](Exception& e) { e.catchMessage(L"run"); }, L"run: Vorel exception caught"},
    {"CatchClass", [](Exception& e) { e.catchClass(L"Parser", L"run"); }, L"Parser::run: Vorel exception caught"},
    {"CatchGeneric", [](Exception& e) { e.catchGeneric(L"%ls-%d", L"Parser", 7); },
     L"Parser-7: Vorel exception caught"},
};

const Step kRecorded[] = {
    {"AppendCaughtClass", [](Exception& e) { e.appendCaughtClass(L"Parser", L"run"); },
     L"Parser::run: Vorel exception caught"},
    {"AppendSevereCaught", [](Exception& e) { e.appendSevereCaught(L"run"); }, L"run: Severe error caught"},
    {"AppendSevereCaughtClass", [](Exception& e) { e.appendSevereCaughtClass(L"Parser", L"run"); },
     L"Parser::run: Severe error caught"},
    {"AppendCaughtAndThrownClass", [](Exception& e) { e.appendCaughtAndThrownClass(L"Parser", L"run"); },
     L"Parser::run: Vorel exception rethrown"},
    {"AppendSevereCaughtAndThrownClass", [](Exception& e) { e.appendSevereCaughtAndThrownClass(L"Parser", L"run"); },
     L"Parser::run: Severe error thrown"},
};

const Step kRethrown[] = {
    {"RethrowMessage", [](Exception& e) { e.rethrowMessage(L"run"); }, L"run: Vorel exception rethrown"},
    {"RethrowGeneric", [](Exception& e) { e.rethrowGeneric(L"%ls-%d", L"Parser", 7); },
     L"Parser-7: Vorel exception rethrown"},
};

const Step kSevereCaught[] = {
    {"CatchSevere", [](Exception&) { Exception::catchSevere(L"run"); }, L"run: Severe error caught"},
    {"CatchSevereClass", [](Exception&) { Exception::catchSevereClass(L"Parser", L"run"); },
     L"Parser::run: Severe error caught"},
    {"CatchSevereGeneric", [](Exception&) { Exception::catchSevereGeneric(L"%ls-%d", L"Parser", 7); },
     L"Parser-7: Severe error caught"},
};

const Step kSevereThrown[] = {
    {"ThrowSevere", [](Exception&) { Exception::throwSevere(L"run"); }, L"run: Severe error thrown"},
    {"ThrowSevereClass", [](Exception&) { Exception::throwSevereClass(L"Parser", L"run"); },
     L"Parser::run: Severe error thrown"},
    {"ThrowSevereGeneric", [](Exception&) { Exception::throwSevereGeneric(L"%ls-%d", L"Parser", 7); },
     L"Parser-7: Severe error thrown"},
    {"ThrowSevereDestructor", [](Exception&) { Exception::throwSevereDestructor(L"Parser"); },
     L"Parser::~Parser: Severe error thrown"},
};

/// The exception has already logged both messages. They are logged again.
void mirrorAllMessages(Attempt& attempt) {
    Exception e(L"the first message");
    e.appendMessage(L"%ls", longText<wchar_t>(kLongMessage).c_str());
    attempt.perform([&] { e.mirrorAllMessages(); });
    attempt.expectCompleted();
    ASSERT_EQ(attempt.logged().size(), 2u);
    EXPECT_EQ(attempt.logged()[0], "Vorel Error: the first message");
    expectLastLine(attempt, "Vorel Error", longText<char>(kLongMessage));
}

std::vector<Operation> operations() {
    std::vector<Operation> all = {{"MirrorAllMessages", mirrorAllMessages}};
    const auto add = [&all](const auto& steps, void (*expect)(Attempt&, const Step&)) {
        for (const Step& step : steps) {
            all.push_back({step.name, [&step, expect](Attempt& attempt) { expect(attempt, step); }});
        }
    };
    add(kCaught, caught);
    add(kRecorded, recorded);
    add(kRethrown, rethrown);
    add(kSevereCaught, severeCaught);
    add(kSevereThrown, severeThrown);
    return all;
}

INSTANTIATE_TEST_SUITE_P(Protocol, FailingHeap, underBothFailures(operations()), failingHeapName);

}  // namespace
