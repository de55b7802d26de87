// Time, clocks, error texts, process priority, the thread-safety switch and memory accounting with a failing heap. An
// exception for an invalid argument keeps its class and is logged completely, even if its texts cannot be stored.

#include <ctime>
#include <string>
#include <typeinfo>
#include <vector>

#include <windows.h>

#include "allocation/Walker.h"
#include "support/SystemText.h"
#include "vorel/core/MemoryAccounting.h"
#include "vorel/core/ThreadSafety.h"
#include "vorel/exceptions/ExceptionFamily.h"
#include "vorel/system/ErrorText.h"
#include "vorel/system/ProcessPriority.h"
#include "vorel/system/Time.h"

namespace {

using vorel::BaseString;
namespace util = vorel::util;

constexpr int kCode = ERROR_ACCESS_DENIED;

/// Returns the capacity, in units, of a string that contains `units` units: the smallest power of two that has space
/// for the units and the terminator, but at least 16.
unsigned int roundedUp(std::size_t units) {
    unsigned int capacity = 16;
    while (capacity < units + 1) {
        capacity *= 2;
    }
    return capacity;
}

/// Expects the system's text for `kCode`, or an empty text if a request for memory failed.
void formatErrorMsg(Attempt& attempt) {
    BaseString<wchar_t> text;
    attempt.perform([&] { util::FormatErrorMsg(kCode, text); });
    attempt.expectMemoryException({{roundedUp(test::systemText(kCode).size()), 2}},
                                  {L"vorel::util::FormatErrorMsg: Vorel exception rethrown"});
    EXPECT_EQ(text.view(), attempt.completed() ? test::systemText(kCode) : L"");
}

void formatNoError(Attempt& attempt) {
    BaseString<wchar_t> text;
    attempt.perform([&] { util::FormatErrorMsg(0, text); });
    attempt.expectMemoryException({{16, 2}}, {L"vorel::util::FormatErrorMsg: Vorel exception rethrown"});
    EXPECT_EQ(text.view(), attempt.completed() ? L"No Error" : L"");
}

void getLastErrorMsg(Attempt& attempt) {
    BaseString<wchar_t> text;
    bool result = false;
    attempt.perform([&] {
        SetLastError(kCode);
        result = util::GetLastErrorMsg(text);
    });
    attempt.expectMemoryException({{roundedUp(test::systemText(kCode).size()), 2}},
                                  {L"vorel::util::FormatErrorMsg: Vorel exception rethrown",
                                   L"vorel::util::GetLastErrorMsg: Vorel exception rethrown"});
    EXPECT_EQ(result, attempt.completed());
}

void timeAndClocks(Attempt& attempt) {
    const long long time = 1'000'000'000;
    std::tm parts{};
    char text[26] = {};
    attempt.perform([&] {
        util::localtime(&time, &parts);
        util::gmtime(&time, &parts);
        util::asctime(&parts, text, sizeof text);
        util::ctime(&time, text, sizeof text);
        util::getmicrotime();
        util::getMillisecondsUTC();
        static_cast<void>(util::getMillisecondCount());
        static_cast<void>(util::getMicrotimeFromProcessorCycles(util::getProcessorCycles(), 7));
        util::SetProcessPriority(util::PPC_Normal, 0);
        vorel::Sleep(0);
        vorel::EnableThreadSafety(true);
        vorel::EnableThreadSafety(false);
    });
    attempt.expectCompleted();
    EXPECT_EQ(attempt.requests(), 0u);
}

void memoryAccounting(Attempt& attempt) {
    int block = 0;
    attempt.perform([&] {
        vorel::LeakDetector detector("narrow", true);
        vorel::LeakDetector other(L"wide", true);
        detector.Add(&block, "here");
        detector.Add(&block, L"here");
        detector.SetName("another").Sub(&block);
        other.SetName(L"another").Sub(&block);
        vorel::LeakDetector::ResetClass();
        vorel::MemAllocInfo info;
        info.clear();
    });
    attempt.expectCompleted();
    EXPECT_EQ(attempt.requests(), 0u);
}

/// A call with invalid arguments, and the messages of its exception.
struct InvalidCall {
    const char* name;
    void (*make)();
    Attempt::Messages messages;
};

const InvalidCall kInvalidCalls[] = {
    {"LocalTimeWithoutResult",
     [] {
         const long long time = 0;
         util::localtime(&time, nullptr);
     },
     {L"pLocalTime is null", L"vorel::util::localtime: Vorel exception rethrown"}},
    {"GmTimeWithoutResult",
     [] {
         const long long time = 0;
         util::gmtime(&time, nullptr);
     },
     {L"pGMTime is null", L"vorel::util::gmtime: Vorel exception rethrown"}},
    {"AscTimeWithoutBuffer",
     [] { util::asctime(nullptr, nullptr, 26); },
     {L"buffer is null", L"vorel::util::asctime: Vorel exception rethrown"}},
    {"CTimeWithSmallBuffer",
     [] {
         char text[4];
         const long long time = 0;
         util::ctime(&time, text, sizeof text);
     },
     {L"buffer must be at least 26 characters long, actual size = 4", L"vorel::util::ctime: Vorel exception rethrown"}},
};

void expectFailure(Attempt& attempt, const InvalidCall& what) {
    attempt.perform([&] { what.make(); });
    attempt.expectThrown(typeid(vorel::Exception).name(), what.messages);
}

std::vector<Operation> operations() {
    std::vector<Operation> all = {
        {"FormatErrorMsg", formatErrorMsg},     {"FormatErrorMsg_OfNoError", formatNoError},
        {"GetLastErrorMsg", getLastErrorMsg},   {"TimeAndClocks", timeAndClocks},
        {"MemoryAccounting", memoryAccounting},
    };
    for (const InvalidCall& what : kInvalidCalls) {
        all.push_back({what.name, [&what](Attempt& attempt) { expectFailure(attempt, what); }});
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(System, FailingHeap, underBothFailures(operations()), failingHeapName);

}  // namespace
