/// \file
/// Logging by a global object that is created before the global objects of the library, and destroyed after them. The
/// first call in the object's constructor creates the library's state. In the object's destructor, the state no longer
/// exists. Only a program that links the static library can have such an object.

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

#include "core/LibraryState.h"
#include "support/ChildProcess.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/Exception.h"

namespace {

using Texts = std::vector<std::string>;
using vorel::Exception;

constexpr wchar_t kSwitch[] = L"--log-first-and-last";

/// Logs to "errors.txt" and "late.txt" in the current directory if the command line has the switch.
class FirstAndLast {
public:
    FirstAndLast() : m_active(std::wcsstr(GetCommandLineW(), kSwitch) != nullptr) {
        if (m_active) {
            Exception::SetErrorLogLocation("errors.txt", 0);
            logAll("first");
        }
    }
    ~FirstAndLast() {
        if (m_active) {
            Exception::SetErrorLogSize(100000);
            _set_invalid_parameter_handler(nullptr);
            Exception::SetErrorLogLocation("late.txt", 0);
            logAll("last");
            Exception::warn("invalid-parameter handler: %s", _get_invalid_parameter_handler() ? "installed" : "none");
        }
    }

private:
    static void logAll(const char* when) {
        const Exception e("%s, state: %s", when, vorel::detail::libraryStateExists() ? "created" : "destroyed");
        Exception::setDebugTarget("Late", true);
        Exception::debug("Late", "target: %s", when);
        Exception::DisableThreadErrorLogging(true);
        Exception::warn("%s, silenced: %d", when, Exception::IsThreadErrorLoggingDisabled());
        Exception::DisableThreadErrorLogging(false);
    }

    bool m_active;
};

// 101 is the lowest priority number that programs may use, and objects with low numbers are created first. So this
// object is created before the global objects of the library, and destroyed after them.
__attribute__((init_priority(101))) const FirstAndLast s_firstAndLast;

TEST(LateLogging, WorksBeforeAndAfterTheLifetimeOfTheLibrarysGlobalObjects) {
    const test::TemporaryFolder folder;
    EXPECT_EQ(
        test::runChild(L"vorel_whitebox_tests", {L"--gtest_filter=-*", kSwitch}, {.directory = folder.widePath()}), 0u);
    EXPECT_EQ(test::readLogMessages(folder.file("errors.txt")),
              (Texts{"Vorel Error: first, state: created", "DEBUG: Late: target: first"}));
    EXPECT_EQ(test::readLogMessages(folder.file("late.txt")),
              (Texts{"Vorel Error: last, state: destroyed", "WARN: last, silenced: 0",
                     "WARN: invalid-parameter handler: none"}));
}

}  // namespace
