// Changes debug targets, the location of the log and a thread's switch for logging, and logs a warning, while the heap
// fails. A setting is changed completely or not at all. The only exception is a location that is set from a wide path
// (see `wideLocation`).

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

/// Returns a new name in each call. The library keeps the names of all targets, so a name that was already used would
/// not be stored again.
template <class T>
std::basic_string<T> newTarget() {
    static unsigned int count = 0;
    return textOf<T>(("a target with a long name " + std::to_string(++count)).c_str());
}

template <class T>
void setDebugTarget(Attempt& attempt) {
    const heap::Unwatched kept;
    const std::basic_string<T> target = newTarget<T>();
    attempt.perform([&] { Exception::setDebugTarget(target.c_str(), true); });
    attempt.expectMemoryException({{static_cast<unsigned int>(target.size() + 1), sizeof(T)}},
                                  {L"Exception::setDebugTarget: Vorel exception rethrown"});
    EXPECT_EQ(Exception::isDebugTargetActive(target.c_str()), attempt.completed());
    if (attempt.completed()) {
        Exception::setDebugTarget(target.c_str(), false);
    }
}

std::string location() {
    return *reveal(test::ErrorLogLocation());
}

void narrowLocation(Attempt& attempt) {
    const std::string before = location();
    attempt.perform([] { Exception::SetErrorLogLocation("another.txt", 0); });
    attempt.expectCompleted();
    EXPECT_EQ(attempt.requests(), 0u);
    EXPECT_EQ(location(), "another.txt");
    Exception::SetErrorLogLocation(before.c_str(), 0);
}

/// If the path cannot be converted, the location becomes the error text of the conversion, or empty if that text cannot
/// be stored either.
void wideLocation(Attempt& attempt) {
    const std::string before = location();
    attempt.perform([] { Exception::SetErrorLogLocation(L"another file.txt", 0); });
    attempt.expectCompleted();
    const std::string after = location();
    Exception::SetErrorLogLocation(before.c_str(), 0);
    if (!attempt.allocationFailed()) {
        EXPECT_EQ(after, "another file.txt");
    } else {
        EXPECT_TRUE(after == "Out of memory in text conversion" || after.empty()) << after;
    }
}

void disableLogging(Attempt& attempt) {
    attempt.perform([] { Exception::DisableThreadErrorLogging(true); });
    const bool isSilenced = Exception::IsThreadErrorLoggingDisabled();
    Exception::DisableThreadErrorLogging(false);
    attempt.expectCompleted();
    EXPECT_EQ(attempt.logged().size(), 0u) << "the call must log nothing";
    EXPECT_EQ(isSilenced, !attempt.allocationFailed());
}

void enableLogging(Attempt& attempt) {
    Exception::DisableThreadErrorLogging(true);
    attempt.perform([] { Exception::DisableThreadErrorLogging(false); });
    const bool isSilenced = Exception::IsThreadErrorLoggingDisabled();
    Exception::DisableThreadErrorLogging(false);
    attempt.expectCompleted();
    EXPECT_EQ(isSilenced, attempt.allocationFailed());
}

/// The warning about an invalid parameter of a runtime function is logged completely, even if every allocation fails.
void warnOfInvalidParameter(Attempt& attempt) {
    const test::ParameterHandler handler = reveal(test::InvalidParameterHandler());
    attempt.perform([&] { handler(L"count > 0", L"read", L"file.c", 7, 0); });
    attempt.expectCompleted();
    EXPECT_EQ(attempt.logged(),
              std::vector<std::string>{"WARN: Invalid parameter detected: file.c::read(7): count > 0"});
}

const std::vector<Operation>& operations() {
    static const std::vector<Operation> kOperations = {
        {"SetDebugTarget_Narrow", setDebugTarget<char>},     {"SetDebugTarget_Wide", setDebugTarget<wchar_t>},
        {"SetErrorLogLocation_Narrow", narrowLocation},      {"SetErrorLogLocation_Wide", wideLocation},
        {"DisableThreadErrorLogging", disableLogging},       {"EnableThreadErrorLogging", enableLogging},
        {"InvalidParameterHandler", warnOfInvalidParameter},
    };
    return kOperations;
}

INSTANTIATE_TEST_SUITE_P(LogSettings, FailingHeap, underBothFailures(operations()), failingHeapName);

}  // namespace
