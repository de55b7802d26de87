// Time, clocks, error texts and memory accounting under a failing heap; and failures of misuse, which keep their class
// and their record in the log when there is no memory for their texts.

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

/// The capacity of a string that has to hold `units` and a terminator: a power of two, 16 at least.
unsigned int roundedUp(std::size_t units) {
    unsigned int capacity = 16;
    while (capacity < units + 1) {
        capacity *= 2;
    }
    return capacity;
}

/// The text is the one asked for; without memory for it, there is none.
void formatErrorMsg(Trial& trial) {
    BaseString<wchar_t> text;
    trial.perform([&] { util::FormatErrorMsg(kCode, text); });
    trial.expectMemoryException({{roundedUp(test::systemText(kCode).size()), 2}},
                                {L"vorel::util::FormatErrorMsg: Vorel exception rethrown"});
    EXPECT_EQ(text.view(), trial.completed() ? test::systemText(kCode) : L"");
}

void formatNoError(Trial& trial) {
    BaseString<wchar_t> text;
    trial.perform([&] { util::FormatErrorMsg(0, text); });
    trial.expectMemoryException({{16, 2}}, {L"vorel::util::FormatErrorMsg: Vorel exception rethrown"});
    EXPECT_EQ(text.view(), trial.completed() ? L"No Error" : L"");
}

void getLastErrorMsg(Trial& trial) {
    BaseString<wchar_t> text;
    bool result = false;
    trial.perform([&] {
        SetLastError(kCode);
        result = util::GetLastErrorMsg(text);
    });
    trial.expectMemoryException({{roundedUp(test::systemText(kCode).size()), 2}},
                                {L"vorel::util::FormatErrorMsg: Vorel exception rethrown",
                                 L"vorel::util::GetLastErrorMsg: Vorel exception rethrown"});
    EXPECT_EQ(result, trial.completed());
}

void timeAndClocks(Trial& trial) {
    const long long time = 1'000'000'000;
    std::tm parts{};
    char text[26] = {};
    trial.perform([&] {
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
    trial.expectCompleted();
    EXPECT_EQ(trial.requests(), 0u);
}

void memoryAccounting(Trial& trial) {
    int block = 0;
    trial.perform([&] {
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
    trial.expectCompleted();
    EXPECT_EQ(trial.requests(), 0u);
}

/// What a caller did wrong, and the exception with its records.
struct Misuse {
    const char* name;
    void (*make)();
    Trial::Messages messages;
};

const Misuse kMisuses[] = {
    {"LocalTimeWithoutAResult",
     [] {
         const long long time = 0;
         util::localtime(&time, nullptr);
     },
     {L"pLocalTime is null", L"vorel::util::localtime: Vorel exception rethrown"}},
    {"GmTimeWithoutAResult",
     [] {
         const long long time = 0;
         util::gmtime(&time, nullptr);
     },
     {L"pGMTime is null", L"vorel::util::gmtime: Vorel exception rethrown"}},
    {"AscTimeWithoutABuffer",
     [] { util::asctime(nullptr, nullptr, 26); },
     {L"buffer is null", L"vorel::util::asctime: Vorel exception rethrown"}},
    {"CTimeWithoutRoom",
     [] {
         char text[4];
         const long long time = 0;
         util::ctime(&time, text, sizeof text);
     },
     {L"buffer must be at least 26 characters long, actual size = 4", L"vorel::util::ctime: Vorel exception rethrown"}},
};

void misuse(Trial& trial, const Misuse& what) {
    trial.perform([&] { what.make(); });
    trial.expectThrown(typeid(vorel::Exception).name(), what.messages);
}

std::vector<Operation> operations() {
    std::vector<Operation> all = {
        {"FormatErrorMsg", formatErrorMsg},     {"FormatErrorMsg_OfNone", formatNoError},
        {"GetLastErrorMsg", getLastErrorMsg},   {"TimeAndClocks", timeAndClocks},
        {"MemoryAccounting", memoryAccounting},
    };
    for (const Misuse& what : kMisuses) {
        all.push_back({what.name, [&what](Trial& trial) { misuse(trial, what); }});
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(System, FailingHeap, underBothFailures(operations()), failingHeapName);

}  // namespace
