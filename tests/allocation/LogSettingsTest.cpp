// Settings of the log and of its channels under a failing heap: a setting is made, or it is as it was.

#include <string>
#include <typeinfo>
#include <vector>

#include "allocation/Walker.h"
#include "support/PrivateMember.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/Exception.h"

namespace test {

struct ErrorLogLocation : PrivateMember<ErrorLogLocation, char (*)[1024]> {};
template struct Reveal<ErrorLogLocation, &vorel::Exception::ErrorLogLocation>;

using ParameterHandler = void (*)(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int,
                                  std::uintptr_t) noexcept;
struct InvalidParameterHandler : PrivateMember<InvalidParameterHandler, ParameterHandler> {};
template struct Reveal<InvalidParameterHandler, &vorel::Exception::Invalid_Parameter_Handler>;

}  // namespace test

namespace {

using vorel::Exception;

/// The name of a target that no run before has switched on: what the library knows of a target, it keeps.
template <class T>
std::basic_string<T> freshTarget() {
    static unsigned int count = 0;
    return textOf<T>(("a target with a name of some length " + std::to_string(++count)).c_str());
}

template <class T>
void setDebugTarget(Trial& trial) {
    const heap::Unwatched kept;
    const std::basic_string<T> target = freshTarget<T>();
    trial.perform([&] { Exception::setDebugTarget(target.c_str(), true); });
    trial.expectMemoryException({{static_cast<unsigned int>(target.size() + 1), sizeof(T)}},
                                {L"Exception::setDebugTarget: Vorel exception rethrown"});
    EXPECT_EQ(Exception::isDebugTargetActive(target.c_str()), trial.completed());
    if (trial.completed()) {
        Exception::setDebugTarget(target.c_str(), false);
    }
}

std::string location() {
    return *reveal(test::ErrorLogLocation());
}

void narrowLocation(Trial& trial) {
    const std::string before = location();
    trial.perform([] { Exception::SetErrorLogLocation("another.txt", 0); });
    trial.expectCompleted();
    EXPECT_EQ(trial.requests(), 0u);
    EXPECT_EQ(location(), "another.txt");
    Exception::SetErrorLogLocation(before.c_str(), 0);
}

/// A path that finds no room sets the text of the failure, or none when that has no room either.
void wideLocation(Trial& trial) {
    const std::string before = location();
    trial.perform([] { Exception::SetErrorLogLocation(L"another file.txt", 0); });
    trial.expectCompleted();
    const std::string after = location();
    Exception::SetErrorLogLocation(before.c_str(), 0);
    if (!trial.refused()) {
        EXPECT_EQ(after, "another file.txt");
    } else {
        EXPECT_TRUE(after == "Out of memory in text conversion" || after.empty()) << after;
    }
}

void silenceAThread(Trial& trial) {
    trial.perform([] { Exception::DisableThreadErrorLogging(true); });
    const bool isSilenced = Exception::IsThreadErrorLoggingDisabled();
    Exception::DisableThreadErrorLogging(false);
    trial.expectCompleted();
    EXPECT_EQ(trial.logged().size(), 0u) << "and says nothing";
    EXPECT_EQ(isSilenced, !trial.refused());
}

void admitAThread(Trial& trial) {
    Exception::DisableThreadErrorLogging(true);
    trial.perform([] { Exception::DisableThreadErrorLogging(false); });
    const bool isSilenced = Exception::IsThreadErrorLoggingDisabled();
    Exception::DisableThreadErrorLogging(false);
    trial.expectCompleted();
    EXPECT_EQ(isSilenced, trial.refused());
}

/// The warning for an invalid parameter of the runtime's functions needs memory for its text only.
void warnOfAParameter(Trial& trial) {
    const test::ParameterHandler handler = reveal(test::InvalidParameterHandler());
    trial.perform([&] { handler(L"count > 0", L"read", L"file.c", 7, 0); });
    trial.expectCompleted();
    EXPECT_EQ(trial.logged(), std::vector<std::string>{"WARN: Invalid parameter detected: file.c::read(7): count > 0"});
}

const std::vector<Operation>& operations() {
    static const std::vector<Operation> kOperations = {
        {"SetDebugTarget_Narrow", setDebugTarget<char>}, {"SetDebugTarget_Wide", setDebugTarget<wchar_t>},
        {"SetErrorLogLocation_Narrow", narrowLocation},  {"SetErrorLogLocation_Wide", wideLocation},
        {"DisableThreadErrorLogging", silenceAThread},   {"EnableThreadErrorLogging", admitAThread},
        {"InvalidParameterHandler", warnOfAParameter},
    };
    return kOperations;
}

INSTANTIATE_TEST_SUITE_P(LogSettings, FailingHeap, underBothFailures(operations()), failingHeapName);

}  // namespace
