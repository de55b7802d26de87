/// \file
/// How the library installs and removes its invalid-parameter handler, and counts the installations.

#include "exceptions/InvalidParameter.h"

#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/PrivateMember.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/Exception.h"

namespace test {

struct InvalidParameterHandler
    : PrivateMember<InvalidParameterHandler,
                    void (*)(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int, std::uintptr_t) noexcept> {};
template struct Reveal<InvalidParameterHandler, &vorel::Exception::Invalid_Parameter_Handler>;

}  // namespace test

namespace {

using test::TemporaryLog;
using Texts = std::vector<std::string>;
using vorel::detail::installInvalidParameterHandler;
using vorel::detail::invalidParameterHandlerInstallations;
using vorel::detail::SetCurrentIPH;

void otherHandler(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int, std::uintptr_t) {}

_invalid_parameter_handler current() {
    return _get_invalid_parameter_handler();
}

/// Removes the handler of the program. The destructor sets that handler again.
class InvalidParameterInside : public testing::Test {
protected:
    InvalidParameterInside() : m_before(_set_invalid_parameter_handler(nullptr)) {}
    ~InvalidParameterInside() override { _set_invalid_parameter_handler(m_before); }

    /// The library's handler.
    const _invalid_parameter_handler m_ours = reveal(test::InvalidParameterHandler());

private:
    _invalid_parameter_handler m_before;
};

TEST_F(InvalidParameterInside, LibraryHandlerIsInstalledIfNoHandlerIsInstalled) {
    installInvalidParameterHandler(m_ours);
    EXPECT_EQ(current(), m_ours);
    installInvalidParameterHandler(m_ours);
    EXPECT_EQ(current(), m_ours);
}

TEST_F(InvalidParameterInside, HandlerOtherThanTheLibrarysIsNotInstalled) {
    installInvalidParameterHandler(m_ours);
    installInvalidParameterHandler(&otherHandler);
    EXPECT_EQ(current(), m_ours);
    _set_invalid_parameter_handler(nullptr);
    installInvalidParameterHandler(&otherHandler);
    EXPECT_EQ(current(), nullptr);
}

TEST_F(InvalidParameterInside, ExistingHandlerIsNotReplaced) {
    _set_invalid_parameter_handler(&otherHandler);
    installInvalidParameterHandler(m_ours);
    EXPECT_EQ(current(), &otherHandler);
}

TEST_F(InvalidParameterInside, GuardRemovesOnlyTheLibraryHandler) {
    installInvalidParameterHandler(m_ours);
    { const SetCurrentIPH guard; }
    EXPECT_EQ(current(), nullptr);
    { const SetCurrentIPH guard; }
    EXPECT_EQ(current(), nullptr);
    _set_invalid_parameter_handler(&otherHandler);
    { const SetCurrentIPH guard; }
    EXPECT_EQ(current(), &otherHandler);
}

TEST_F(InvalidParameterInside, InstallationsAreCounted) {
    const unsigned int before = invalidParameterHandlerInstallations();
    struct Step {
        const char* why;
        void (*run)(_invalid_parameter_handler ours);
        unsigned int installations;
    };
    const Step steps[] = {
        {"the library's handler is installed", [](auto ours) { installInvalidParameterHandler(ours); }, 1},
        {"the installed handler is installed again", [](auto ours) { installInvalidParameterHandler(ours); }, 2},
        {"a handler other than the library's is not installed",
         [](auto) { installInvalidParameterHandler(&otherHandler); }, 2},
        {"the program's handler is not replaced",
         [](auto ours) {
             _set_invalid_parameter_handler(&otherHandler);
             installInvalidParameterHandler(ours);
         },
         2},
        {"the guard does not remove the program's handler", [](auto) { const SetCurrentIPH guard; }, 2},
        {"the guard removes the library's handler",
         [](auto ours) {
             _set_invalid_parameter_handler(ours);
             const SetCurrentIPH guard;
         },
         1},
        {"the guard finds no handler", [](auto) { const SetCurrentIPH guard; }, 1},
        {"the library's handler is installed after its removal",
         [](auto ours) { installInvalidParameterHandler(ours); }, 2},
    };
    for (const Step& step : steps) {
        step.run(m_ours);
        EXPECT_EQ(invalidParameterHandlerInstallations() - before, step.installations) << step.why;
    }
}

TEST_F(InvalidParameterInside, HandlerLogsOnlyIfTheRuntimePassesDetails) {
    const TemporaryLog log;
    m_ours(nullptr, nullptr, nullptr, 7, 0);
    EXPECT_FALSE(log.exists());
    m_ours(L"x != 0", L"divide", L"math.cpp", 7, 0);
    EXPECT_EQ(log.messages(), Texts{"WARN: Invalid parameter detected: math.cpp::divide(7): x != 0"});
}

TEST_F(InvalidParameterInside, HandlerLogsNothingForASilencedThread) {
    const TemporaryLog log;
    vorel::Exception::DisableThreadErrorLogging(true);
    m_ours(L"x != 0", L"divide", L"math.cpp", 7, 0);
    EXPECT_FALSE(log.exists());
}

}  // namespace
