/// \file
/// The library's handler for invalid parameters of runtime functions. The library never replaces an existing handler,
/// and the start-up code of MinGW-w64 installs a handler in every program. So the tests first remove that handler.

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <io.h>

#include "support/ChildProcess.h"
#include "support/RejectedFormats.h"
#include "support/TemporaryLog.h"

// The runtime exports this function, but not every compiler's headers declare it.
extern "C" __declspec(dllimport) _invalid_parameter_handler
    __cdecl _set_thread_local_invalid_parameter_handler(_invalid_parameter_handler handler);

namespace {

using test::TemporaryLog;
using Texts = std::vector<std::string>;

/// Sets the handler of the program. Null means none. The destructor sets the previous handler again.
class HandlerInstalled {
public:
    explicit HandlerInstalled(_invalid_parameter_handler handler) : m_before(_set_invalid_parameter_handler(handler)) {}
    ~HandlerInstalled() { _set_invalid_parameter_handler(m_before); }

private:
    _invalid_parameter_handler m_before;
};

void __cdecl otherHandler(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int, std::uintptr_t) {}

int s_calls = 0;

void __cdecl countCall(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int, std::uintptr_t) {
    ++s_calls;
}

/// Removes the handler of the program. The temporary log then sets the log's location, so the library installs its own
/// handler, and each test begins with that handler.
class InvalidParameter : public testing::Test {
protected:
    static _invalid_parameter_handler handler() { return _get_invalid_parameter_handler(); }

    const HandlerInstalled m_none{nullptr};
    const TemporaryLog m_log;
};

TEST_F(InvalidParameter, HandlerLogsLocationAndExpression) {
    ASSERT_NE(handler(), nullptr);
    handler()(L"size > 0", L"copy", L"memory.cpp", 12, 0);
    EXPECT_EQ(m_log.messages(), Texts{"WARN: Invalid parameter detected: memory.cpp::copy(12): size > 0"});
}

TEST_F(InvalidParameter, HandlerLogsNothingWithoutDetails) {
    handler()(nullptr, nullptr, nullptr, 0, 0);
    EXPECT_FALSE(m_log.exists());
}

TEST_F(InvalidParameter, HandlerLogsIfAnyDetailIsKnown) {
    handler()(L"size > 0", nullptr, nullptr, 0, 0);
    handler()(nullptr, L"copy", nullptr, 0, 0);
    handler()(nullptr, nullptr, L"memory.cpp", 0, 0);
    const std::vector<std::string> messages = m_log.messages();
    ASSERT_EQ(messages.size(), 3u);
    for (const std::string& message : messages) {
        EXPECT_EQ(message.rfind("WARN: Invalid parameter detected: ", 0), 0u) << message;
    }
}

TEST_F(InvalidParameter, RuntimeFunctionReturnsItsOwnError) {
    errno = 0;
    // cppcheck-suppress invalidFunctionArg; the test needs an invalid argument
    EXPECT_EQ(_close(-5), -1);
    EXPECT_EQ(errno, EBADF);
    char small[2];
    EXPECT_NE(strcpy_s(small, sizeof small, "too long"), 0);
}

TEST_F(InvalidParameter, RejectedFormatDoesNotCallTheHandlersOfTheProgram) {
    for (const test::RejectedFormat& format : test::kRejectedFormats) {
        SCOPED_TRACE(format.name);
        s_calls = 0;
        const HandlerInstalled ofTheProgram(&countCall);
        const _invalid_parameter_handler before = _set_thread_local_invalid_parameter_handler(&countCall);
        format.use();
        EXPECT_EQ(_set_thread_local_invalid_parameter_handler(before), &countCall)
            << "the handler of the thread must be restored";
        EXPECT_EQ(s_calls, 0);
    }
}

TEST_F(InvalidParameter, RejectedFormatDoesNotEndAProgramWithoutAHandler) {
    for (std::size_t number = 0; number < std::size(test::kRejectedFormats); ++number) {
        EXPECT_EQ(
            test::runChild(L"rejected_format", {std::to_wstring(number)}, {.directory = m_log.folder().widePath()}), 0u)
            << test::kRejectedFormats[number].name;
    }
}

TEST_F(InvalidParameter, ExistingHandlerIsNotReplaced) {
    const HandlerInstalled another(&otherHandler);
    m_log.use();
    EXPECT_EQ(handler(), &otherHandler);
}

TEST_F(InvalidParameter, SettingTheLocationInstallsARemovedHandlerAgain) {
    const _invalid_parameter_handler ours = handler();
    const HandlerInstalled none(nullptr);
    m_log.use();
    EXPECT_EQ(handler(), ours);
}

TEST_F(InvalidParameter, SettingTheFirstLocationInstallsTheHandlerAndUnloadingRemovesIt) {
    EXPECT_EQ(test::runChild(L"handler_at_unload", {L"ours"}, {.directory = m_log.folder().widePath()}), 0u);
}

TEST_F(InvalidParameter, UnloadingDoesNotRemoveTheHandlerOfTheProgram) {
    EXPECT_EQ(test::runChild(L"handler_at_unload", {L"own"}, {.directory = m_log.folder().widePath()}), 0u);
}

}  // namespace
