/// \file
/// The destructor protocol: a failure at the end of an object is thrown on, unless another exception unwinds the stack
/// already. Then it is recorded, and ends.

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

/// An object whose end does what it was told.
class EndsWith {
public:
    explicit EndsWith(Action action) : m_action(std::move(action)) {}
    ~EndsWith() noexcept(false) { m_action(); }

private:
    Action m_action;
};

/// Runs `action` at the end of an object, while nothing unwinds the stack.
void runAtEnd(const Action& action) {
    const EndsWith object(action);
}

/// Runs `action` at the end of an object, while an exception of the program unwinds the stack; that one has to arrive.
void runWhileUnwinding(const Action& action) {
    try {
        const EndsWith object(action);
        throw std::runtime_error("on its way");
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "on its way");
        return;
    }
    ADD_FAILURE() << "the exception on its way got lost";
}

void endWithTimeout() {
    detail::guardedDestructor(L"Parser", [] { throw TimeoutException(L"late"); });
}

void endWithSevereError() {
    detail::guardedDestructor(L"Parser", [] { throw 5; });
}

TEST(DestructorProtocol, OutsideOfUnwindingAFailureIsThrownOnAsItsClass) {
    const TemporaryLog log;
    expectThrows<TimeoutException>([] { runAtEnd(endWithTimeout); },
                                   {L"late", L"Parser::~Parser: Vorel exception rethrown"});
    EXPECT_EQ(log.messages(), (Texts{"Vorel Error: late", "Vorel Error: Parser::~Parser: Vorel exception rethrown"}));
}

TEST(DestructorProtocol, WhileUnwindingAFailureIsRecordedAndSuppressed) {
    const TemporaryLog log;
    runWhileUnwinding(endWithTimeout);
    EXPECT_EQ(log.messages(), (Texts{"Vorel Error: late", "Vorel Error: Parser::~Parser: Vorel exception suppressed"}));
}

TEST(DestructorProtocol, OutsideOfUnwindingASevereErrorIsThrownAsAFreshException) {
    const TemporaryLog log;
    expectThrows<Exception>([] { runAtEnd(endWithSevereError); }, {L"Parser::~Parser: Severe error thrown"});
    EXPECT_EQ(log.messages(), Texts{"Vorel Error: Parser::~Parser: Severe error thrown"});
}

TEST(DestructorProtocol, WhileUnwindingASevereErrorIsRecordedAndSuppressed) {
    const TemporaryLog log;
    runWhileUnwinding(endWithSevereError);
    EXPECT_EQ(log.messages(), Texts{"Vorel Error: Parser::~Parser: Severe error suppressed"});
}

TEST(DestructorProtocol, WithoutAFailureTheFrameDoesNothing) {
    const TemporaryLog log;
    const Action end = [] { detail::guardedDestructor(L"Parser", [] {}); };
    runAtEnd(end);
    runWhileUnwinding(end);
    EXPECT_FALSE(log.exists());
}

/// A handler of the protocol that the destructor spells out by itself.
void endByHand(const Action& fail) {
    try {
        fail();
    } catch (Exception& e) {
        e.rethrowDestructor(L"Parser");
    } catch (...) {
        Exception::throwSevereDestructor(L"Parser");
    }
}

TEST(DestructorProtocol, HandWrittenHandlersBehaveAsTheFrame) {
    const Action failByMemory = [] { throw MemoryException(1, 2); };
    const Action failByNumber = [] { throw 5; };
    const TemporaryLog log;
    expectThrows<MemoryException>(
        [&] { runAtEnd([&] { endByHand(failByMemory); }); },
        {L"No more memory is available: 1 objects of size 2 requested", L"Parser::~Parser: Vorel exception rethrown"});
    runWhileUnwinding([&] { endByHand(failByMemory); });
    expectThrows<Exception>([&] { runAtEnd([&] { endByHand(failByNumber); }); },
                            {L"Parser::~Parser: Severe error thrown"});
    runWhileUnwinding([&] { endByHand(failByNumber); });
    const std::string memory = "Vorel Error: No more memory is available: 1 objects of size 2 requested";
    EXPECT_EQ(log.messages(), (Texts{memory, "Vorel Error: Parser::~Parser: Vorel exception rethrown", memory,
                                     "Vorel Error: Parser::~Parser: Vorel exception suppressed",
                                     "Vorel Error: Parser::~Parser: Severe error thrown",
                                     "Vorel Error: Parser::~Parser: Severe error suppressed"}));
}

TEST(DestructorProtocol, ASuppressedExceptionKeepsItsMessagesAndItsRecord) {
    runWhileUnwinding([] {
        Exception e(L"late");
        e.rethrowDestructor(L"Parser");
        EXPECT_EQ(test::messagesOf(e),
                  (std::vector<std::wstring>{L"late", L"Parser::~Parser: Vorel exception suppressed"}));
    });
}

TEST(DestructorProtocol, AHandledExceptionDoesNotCountAsUnwinding) {
    try {
        throw std::runtime_error("handled already");
    } catch (const std::runtime_error&) {
        expectThrows<TimeoutException>([] { runAtEnd(endWithTimeout); },
                                       {L"late", L"Parser::~Parser: Vorel exception rethrown"});
    }
}

TEST(DestructorProtocol, AnExceptionOfTheLibraryCountsAsUnwinding) {
    const TemporaryLog log;
    expectThrows<MemoryException>(
        [] {
            const EndsWith object(endWithTimeout);
            detail::throwMemory(1, 2);
        },
        {L"No more memory is available: 1 objects of size 2 requested"});
    EXPECT_EQ(log.messages().back(), "Vorel Error: Parser::~Parser: Vorel exception suppressed");
}

}  // namespace
