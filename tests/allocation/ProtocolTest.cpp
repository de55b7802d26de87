// Catching, recording and throwing on under a failing heap: the record is in the log, a caught exception ends, one that
// is thrown on keeps its class.

#include <string>
#include <typeinfo>
#include <vector>

#include "allocation/MessageTexts.h"
#include "allocation/Walker.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using vorel::Exception;
using vorel::TimeoutException;

/// What an operation does to an exception, and the record that it makes of it.
struct Step {
    const char* name;
    void (*perform)(Exception&);
    std::wstring record;
};

constexpr const wchar_t* kBefore = L"the message that was there";

void caught(Trial& trial, const Step& step) {
    TimeoutException e(kBefore);
    trial.perform([&] { step.perform(e); });
    trial.expectCompleted();
    EXPECT_EQ(e.getMessageTotal(), 0u);
    expectLastLine(trial, "Vorel Error", narrowed(step.record));
}

void recorded(Trial& trial, const Step& step) {
    TimeoutException e(kBefore);
    trial.perform([&] { step.perform(e); });
    trial.expectCompleted();
    EXPECT_STREQ(e.what(), kBefore) << "what is there stays";
    EXPECT_LE(e.getMessageTotal(), 2u);
    expectMessage(trial, e, 1, step.record);
    expectLastLine(trial, "Vorel Error", narrowed(step.record));
}

void thrownOn(Trial& trial, const Step& step) {
    TimeoutException e(kBefore);
    trial.perform([&] { step.perform(e); });
    EXPECT_EQ(trial.thrown(), typeid(TimeoutException).name());
    trial.expectThrownTexts({kBefore, step.record});
    expectLastLine(trial, "Vorel Error", narrowed(step.record));
}

void severeCaught(Trial& trial, const Step& step) {
    Exception unused;
    trial.perform([&] { step.perform(unused); });
    trial.expectCompleted();
    expectLastLine(trial, "Vorel Error", narrowed(step.record));
}

void severeThrown(Trial& trial, const Step& step) {
    Exception unused;
    trial.perform([&] { step.perform(unused); });
    trial.expectThrown(typeid(Exception).name(), {step.record});
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

const Step kThrownOn[] = {
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

/// Both messages are there already; the log gets them once more.
void mirrorAllMessages(Trial& trial) {
    Exception e(L"the first message");
    e.appendMessage(L"%ls", longText<wchar_t>(kLongMessage).c_str());
    trial.perform([&] { e.mirrorAllMessages(); });
    trial.expectCompleted();
    ASSERT_EQ(trial.logged().size(), 2u);
    EXPECT_EQ(trial.logged()[0], "Vorel Error: the first message");
    expectLastLine(trial, "Vorel Error", longText<char>(kLongMessage));
}

std::vector<Operation> operations() {
    std::vector<Operation> all = {{"MirrorAllMessages", mirrorAllMessages}};
    const auto add = [&all](const auto& steps, void (*expect)(Trial&, const Step&)) {
        for (const Step& step : steps) {
            all.push_back({step.name, [&step, expect](Trial& trial) { expect(trial, step); }});
        }
    };
    add(kCaught, caught);
    add(kRecorded, recorded);
    add(kThrownOn, thrownOn);
    add(kSevereCaught, severeCaught);
    add(kSevereThrown, severeThrown);
    return all;
}

INSTANTIATE_TEST_SUITE_P(Protocol, FailingHeap, underBothFailures(operations()), failingHeapName);

}  // namespace
