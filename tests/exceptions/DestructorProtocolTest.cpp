/// \file
/// The destructor protocol. A failing destructor rethrows, unless the stack is already unwinding. During unwinding it
/// records the failure and suppresses it. The frame `detail::runDestructor` runs the code of a destructor in this way.

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Expect.h"
#include "support/TemporaryLog.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

using test::expectThrows;
using test::TemporaryLog;
using Texts = std::vector<std::string>;
using vorel::Exception;
using vorel::MemoryException;
using vorel::TimeoutException;
namespace detail = vorel::detail;

using Action = std::function<void()>;

/// Runs an action in its destructor.
class RunsAtDestruction {
public:
    explicit RunsAtDestruction(Action action) : m_action(std::move(action)) {}
    ~RunsAtDestruction() noexcept(false) { m_action(); }

private:
    Action m_action;
};

/// Runs `action` in a destructor outside of unwinding.
void runInDestructor(const Action& action) {
    const RunsAtDestruction object(action);
}

/// Runs `action` in a destructor while a std::runtime_error unwinds the stack. Expects that this error is caught
/// afterwards.
void runWhileUnwinding(const Action& action) {
    try {
        const RunsAtDestruction object(action);
        throw std::runtime_error("first failure");
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "first failure");
        return;
    }
    ADD_FAILURE() << "the first exception was not caught";
}

void destroyWithTimeout() {
    detail::runDestructor(L"Parser", [] { throw TimeoutException(L"late"); });
}

void destroyWithSevereError() {
    detail::runDestructor(L"Parser", [] { throw 5; });
}

TEST(DestructorProtocol, OutsideOfUnwindingAFailureIsRethrownAsItsClass) {
    const TemporaryLog log;
    expectThrows<TimeoutException>([] { runInDestructor(destroyWithTimeout); },
                                   {L"late", L"Parser::~Parser: Vorel exception rethrown"});
    EXPECT_EQ(log.messages(), (Texts{"Vorel Error: late", "Vorel Error: Parser::~Parser: Vorel exception rethrown"}));
}

TEST(DestructorProtocol, WhileUnwindingAFailureIsRecordedAndSuppressed) {
    const TemporaryLog log;
    runWhileUnwinding(destroyWithTimeout);
    EXPECT_EQ(log.messages(), (Texts{"Vorel Error: late", "Vorel Error: Parser::~Parser: Vorel exception suppressed"}));
}

TEST(DestructorProtocol, OutsideOfUnwindingASevereErrorIsThrownAsANewException) {
    const TemporaryLog log;
    expectThrows<Exception>([] { runInDestructor(destroyWithSevereError); }, {L"Parser::~Parser: Severe error thrown"});
    EXPECT_EQ(log.messages(), Texts{"Vorel Error: Parser::~Parser: Severe error thrown"});
}

TEST(DestructorProtocol, WhileUnwindingASevereErrorIsRecordedAndSuppressed) {
    const TemporaryLog log;
    runWhileUnwinding(destroyWithSevereError);
    EXPECT_EQ(log.messages(), Texts{"Vorel Error: Parser::~Parser: Severe error suppressed"});
}

TEST(DestructorProtocol, WithoutAFailureTheFrameDoesNothing) {
    const TemporaryLog log;
    const Action end = [] { detail::runDestructor(L"Parser", [] {}); };
    runInDestructor(end);
    runWhileUnwinding(end);
    EXPECT_FALSE(log.exists());
}

/// Runs `fail` with handwritten handlers instead of the frame.
void handleByHand(const Action& fail) {
    try {
        fail();
    } catch (Exception& e) {
        e.rethrowDestructor(L"Parser");
    } catch (...) {
        Exception::throwSevereDestructor(L"Parser");
    }
}

TEST(DestructorProtocol, HandWrittenHandlersBehaveLikeTheFrame) {
    const Action failByMemory = [] { throw MemoryException(1, 2); };
    const Action failByNumber = [] { throw 5; };
    const TemporaryLog log;
    expectThrows<MemoryException>(
        [&] { runInDestructor([&] { handleByHand(failByMemory); }); },
        {L"No more memory is available: 1 objects of size 2 requested", L"Parser::~Parser: Vorel exception rethrown"});
    runWhileUnwinding([&] { handleByHand(failByMemory); });
    expectThrows<Exception>([&] { runInDestructor([&] { handleByHand(failByNumber); }); },
                            {L"Parser::~Parser: Severe error thrown"});
    runWhileUnwinding([&] { handleByHand(failByNumber); });
    const std::string memory = "Vorel Error: No more memory is available: 1 objects of size 2 requested";
    EXPECT_EQ(log.messages(), (Texts{memory, "Vorel Error: Parser::~Parser: Vorel exception rethrown", memory,
                                     "Vorel Error: Parser::~Parser: Vorel exception suppressed",
                                     "Vorel Error: Parser::~Parser: Severe error thrown",
                                     "Vorel Error: Parser::~Parser: Severe error suppressed"}));
}

TEST(DestructorProtocol, SuppressedExceptionContainsItsMessagesAndTheRecord) {
    runWhileUnwinding([] {
        Exception e(L"late");
        e.rethrowDestructor(L"Parser");
        EXPECT_EQ(test::messagesOf(e),
                  (std::vector<std::wstring>{L"late", L"Parser::~Parser: Vorel exception suppressed"}));
    });
}

TEST(DestructorProtocol, HandledExceptionDoesNotCountAsUnwinding) {
    try {
        throw std::runtime_error("already handled");
    } catch (const std::runtime_error&) {
        expectThrows<TimeoutException>([] { runInDestructor(destroyWithTimeout); },
                                       {L"late", L"Parser::~Parser: Vorel exception rethrown"});
    }
}

TEST(DestructorProtocol, LibraryExceptionCountsAsUnwinding) {
    const TemporaryLog log;
    expectThrows<MemoryException>(
        [] {
            const RunsAtDestruction object(destroyWithTimeout);
            detail::throwMemory(1, 2);
        },
        {L"No more memory is available: 1 objects of size 2 requested"});
    EXPECT_EQ(log.messages().back(), "Vorel Error: Parser::~Parser: Vorel exception suppressed");
}

}  // namespace
