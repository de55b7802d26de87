/// \file
/// The records that handlers add to an exception, and the effect of each kind of handler. A frame, such as
/// `detail::runRethrowing`, runs a function and handles its exceptions. DestructorProtocolTest.cpp tests destructors.

#include "vorel/core/Protocol.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/Expect.h"
#include "support/TemporaryLog.h"
#include "support/WideText.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/exceptions/ExceptionFamily.h"
#include "vorel/exceptions/RecordFormats.h"

namespace {

using Messages = std::vector<std::wstring>;
using test::expectThrows;
using test::messagesOf;
using test::TemporaryLog;
using Texts = std::vector<std::string>;
using vorel::Exception;
using vorel::InvalidIndexException;
using vorel::MemoryException;
using vorel::TimeoutException;
namespace detail = vorel::detail;

TEST(Protocol, RecordFormatsForClientsAreFixed) {
    struct Case {
        const wchar_t* format;
        const wchar_t* text;
    };
    const Case cases[] = {
        {vorel::vexCatchVorel, L"%ls: Vorel exception caught"},
        {vorel::vexCatchClassVorel, L"%ls::%ls: Vorel exception caught"},
        {vorel::vexCatchSevere, L"%ls: Severe error caught"},
        {vorel::vexCatchClassSevere, L"%ls::%ls: Severe error caught"},
        {vorel::vexCatchAndThrowVorel, L"%ls: Vorel exception rethrown"},
        {vorel::vexCatchAndThrowClassVorel, L"%ls::%ls: Vorel exception rethrown"},
        {vorel::vexCatchAndThrowSevere, L"%ls: Severe error thrown"},
        {vorel::vexCatchAndThrowClassSevere, L"%ls::%ls: Severe error thrown"},
        {vorel::vexDestructorCaught, L"%ls::~%ls: Vorel exception suppressed"},
        {vorel::vexDestructorThrown, L"%ls::~%ls: Vorel exception rethrown"},
        {vorel::vexDestructorSevereCaught, L"%ls::~%ls: Severe error suppressed"},
        {vorel::vexDestructorSevereThrown, L"%ls::~%ls: Severe error thrown"},
        {vorel::vexTestFailed, L"%ls: TestAndThrow test failed"},
    };
    for (const Case& c : cases) {
        EXPECT_STREQ(c.format, c.text);
    }
}

/// A way to handle an exception, and the record that it adds. A handler that takes `auto&` also handles exceptions that
/// were caught by const reference.
struct Handling {
    template <class Handle>
    Handling(Handle handler, std::string added) : handle(handler), record(std::move(added)) {
        if constexpr (std::is_invocable_v<Handle, const Exception&>) {
            handleConst = handler;
        }
    }

    std::function<void(Exception&)> handle;
    std::function<void(const Exception&)> handleConst;
    std::string record;
};

const std::vector<Handling>& catches() {
    static const std::vector<Handling> table = {
        {[](auto& e) { e.catchMessage(L"load"); }, "load: Vorel exception caught"},
        {[](auto& e) { e.catchClass(L"Parser", L"run"); }, "Parser::run: Vorel exception caught"},
        {[](auto& e) { e.catchGeneric(L"row %d of %ls", 7, L"t"); }, "row 7 of t: Vorel exception caught"},
        {[](auto& e) { e.catchGeneric(nullptr); }, "(unable to format message): Vorel exception caught"},
    };
    return table;
}

const std::vector<Handling>& rethrows() {
    static const std::vector<Handling> table = {
        {[](auto& e) { e.rethrowMessage(L"load"); }, "load: Vorel exception rethrown"},
        {[](auto& e) { e.rethrowClass(L"Parser", L"run"); }, "Parser::run: Vorel exception rethrown"},
        {[](auto& e) { e.rethrowGeneric(L"row %d of %ls", 7, L"t"); }, "row 7 of t: Vorel exception rethrown"},
        {[](auto& e) { e.rethrowGeneric(nullptr); }, "(unable to format message): Vorel exception rethrown"},
    };
    return table;
}

const std::vector<Handling>& appends() {
    static const std::vector<Handling> table = {
        {[](Exception& e) { e.appendCaughtClass(L"Parser", L"run"); }, "Parser::run: Vorel exception caught"},
        {[](Exception& e) { e.appendSevereCaught(L"load"); }, "load: Severe error caught"},
        {[](Exception& e) { e.appendSevereCaughtClass(L"Parser", L"run"); }, "Parser::run: Severe error caught"},
        {[](Exception& e) { e.appendCaughtAndThrownClass(L"Parser", L"run"); },
         "Parser::run: Vorel exception rethrown"},
        {[](Exception& e) { e.appendSevereCaughtAndThrownClass(L"Parser", L"run"); },
         "Parser::run: Severe error thrown"},
    };
    return table;
}

TEST(Protocol, CatchingLogsTheRecordAndRemovesTheMessages) {
    for (const Handling& c : catches()) {
        Exception e(L"first");
        e.appendMessage(L"second");
        const TemporaryLog log;
        c.handle(e);
        EXPECT_EQ(e.getMessageTotal(), 0u) << c.record;
        EXPECT_EQ(log.messages(), Texts{"Vorel Error: " + c.record});
    }
}

TEST(Protocol, CatchingADelayedExceptionLogsNothing) {
    const TemporaryLog log;
    {
        Exception e;
        e.setDelayedLogging(true);
        e.appendMessage(L"first");
        e.catchClass(L"Parser", L"run");
    }
    EXPECT_FALSE(log.exists());
}

TEST(Protocol, RethrowingAddsTheRecordAndKeepsTheClass) {
    for (const Handling& c : rethrows()) {
        MemoryException e(3, 8);
        const TemporaryLog log;
        expectThrows<MemoryException>(
            [&] { c.handle(e); },
            {L"No more memory is available: 3 objects of size 8 requested", test::widened(c.record)});
        EXPECT_EQ(log.messages(), Texts{"Vorel Error: " + c.record});
    }
}

TEST(Protocol, CatchingAConstExceptionLogsTheRecordAndKeepsTheMessages) {
    for (const bool delayed : {false, true}) {
        for (const Handling& c : catches()) {
            const TemporaryLog log;
            {
                Exception e;
                e.setDelayedLogging(true);
                e.appendMessage(L"first");
                e.setDelayedLogging(delayed);
                c.handleConst(e);
                EXPECT_EQ(messagesOf(e), Messages{L"first"}) << c.record;
            }
            Texts lines = {"Vorel Error: " + c.record};
            if (delayed) {
                lines.emplace_back("Vorel Error: first");  // by the destructor
            }
            EXPECT_EQ(log.messages(), lines);
        }
    }
}

TEST(Protocol, RethrowingAConstExceptionThrowsACopyOfItsClassWithTheRecord) {
    for (const Handling& c : rethrows()) {
        MemoryException e(3, 8);
        const std::wstring message = L"No more memory is available: 3 objects of size 8 requested";
        const TemporaryLog log;
        expectThrows<MemoryException>([&] { c.handleConst(e); }, {message, test::widened(c.record)});
        EXPECT_EQ(messagesOf(e), Messages{message}) << c.record;
        EXPECT_EQ(log.messages(), Texts{"Vorel Error: " + c.record});
    }
}

TEST(Protocol, AppendingARecordNeitherCatchesNorThrows) {
    for (const Handling& c : appends()) {
        Exception e(L"first");
        const TemporaryLog log;
        c.handle(e);
        EXPECT_EQ(messagesOf(e), (Messages{L"first", test::widened(c.record)}));
        EXPECT_EQ(log.messages(), Texts{"Vorel Error: " + c.record});
    }
}

TEST(Protocol, CatchingASevereErrorOnlyLogs) {
    const TemporaryLog log;
    Exception::catchSevere(L"load");
    Exception::catchSevereClass(L"Parser", L"run");
    Exception::catchSevereGeneric(L"row %d", 7);
    EXPECT_EQ(log.messages(),
              (Texts{"Vorel Error: load: Severe error caught", "Vorel Error: Parser::run: Severe error caught",
                     "Vorel Error: row 7: Severe error caught"}));
}

TEST(Protocol, ThrowSevereThrowsANewException) {
    const TemporaryLog log;
    expectThrows<Exception>([] { Exception::throwSevere(L"load"); }, {L"load: Severe error thrown"});
    expectThrows<Exception>([] { Exception::throwSevereClass(L"Parser", L"run"); },
                            {L"Parser::run: Severe error thrown"});
    expectThrows<Exception>([] { Exception::throwSevereGeneric(L"row %d", 7); }, {L"row 7: Severe error thrown"});
    EXPECT_EQ(log.messages(),
              (Texts{"Vorel Error: load: Severe error thrown", "Vorel Error: Parser::run: Severe error thrown",
                     "Vorel Error: row 7: Severe error thrown"}));
}

TEST(Protocol, LocationsMayContainPercentSignsAndHaveAnyLength) {
    const std::wstring location = L"100%s %n " + std::wstring(9000, L'x');
    Exception e(L"first");
    e.appendSevereCaught(location.c_str());
    EXPECT_EQ(e.getErrorMessage(1), location + L": Severe error caught");
    expectThrows<Exception>([&] { Exception::throwSevereGeneric(L"%ls", location.c_str()); },
                            {location + L": Severe error thrown"});
}

TEST(Protocol, EachFrameAddsARecord) {
    const TemporaryLog log;
    const auto innermost = [] { detail::throwFailure(L"100% broken"); };
    const auto inner = [&] { detail::runRethrowing(L"vorel::util::inner", innermost); };
    const auto outer = [&] { detail::runRethrowing(L"Outer", L"run", inner); };
    expectThrows<Exception>(outer, {L"100% broken", L"vorel::util::inner: Vorel exception rethrown",
                                    L"Outer::run: Vorel exception rethrown"});
    EXPECT_EQ(log.messages(),
              (Texts{"Vorel Error: 100% broken", "Vorel Error: vorel::util::inner: Vorel exception rethrown",
                     "Vorel Error: Outer::run: Vorel exception rethrown"}));
}

TEST(Protocol, FrameReturnsTheResultOfItsFunction) {
    int value = 7;
    EXPECT_EQ(detail::runRethrowing(L"f", [] { return 5; }), 5);
    EXPECT_EQ(&detail::runRethrowing(L"C", L"f", [&]() -> int& { return value; }), &value);
}

TEST(Protocol, FrameConvertsOtherExceptionsToSevereErrors) {
    for (const std::function<void()>& fail : {std::function<void()>([] { throw 5; }), std::function<void()>([] {
                                                  throw std::runtime_error("not of the library");
                                              })}) {
        expectThrows<Exception>([&] { detail::runRethrowing(L"load", fail); }, {L"load: Severe error thrown"});
        expectThrows<Exception>([&] { detail::runRethrowing(L"Parser", L"run", fail); },
                                {L"Parser::run: Severe error thrown"});
    }
}

TEST(Protocol, NoThrowFrameLogsAndSuppressesEveryException) {
    const TemporaryLog log;
    detail::runNoThrow(L"load", [] {});
    EXPECT_FALSE(log.exists());
    detail::runNoThrow(L"load", [] { throw TimeoutException(L"late"); });
    detail::runNoThrow(L"load", [] { throw 5; });
    EXPECT_EQ(log.messages(), (Texts{"Vorel Error: late", "Vorel Error: load: Vorel exception caught",
                                     "Vorel Error: load: Severe error caught"}));
}

TEST(Protocol, CoreFunctionsThrowTheDocumentedClasses) {
    expectThrows<MemoryException>([] { detail::throwMemory(16, 2); },
                                  {L"No more memory is available: 16 objects of size 2 requested"});
    expectThrows<InvalidIndexException>(
        [] { detail::throwInvalidIndex(7, 3); },
        {L"An invalid index value (7) has been detected; legal values are between 0 and 2"});
    expectThrows<InvalidIndexException>([] { detail::throwInvalidIndex(7, 1); },
                                        {L"An invalid index value (7) has been detected; only legal value is 0"});
    expectThrows<InvalidIndexException>([] { detail::throwInvalidIndex(0, 0); },
                                        {L"An invalid index value (0) has been detected; there are zero items"});
}

TEST(Protocol, LibraryExceptionsCanBeCaughtByClassAndByBase) {
    EXPECT_THROW(detail::throwInvalidIndex(7, 3), InvalidIndexException);
    EXPECT_THROW(detail::throwInvalidIndex(7, 3), Exception);
    EXPECT_THROW(Exception::throwSevere(L"load"), Exception);
    try {
        detail::throwMemory(1, 2);
    } catch (const InvalidIndexException&) {
        ADD_FAILURE() << "the exception was caught as an unrelated class";
    } catch (const MemoryException& e) {
        EXPECT_STREQ(e.what(), L"No more memory is available: 1 objects of size 2 requested");
    }
}

/// A class whose `rethrow` returns, although `rethrow` of the base class never returns.
struct Returning : Exception {
    using Exception::Exception;
    void rethrow() override {}
};

TEST(Protocol, TheBaseIsThrownIfAnOverriddenRethrowReturns) {
    for (const Handling& c : rethrows()) {
        Returning e(L"first");
        expectThrows<Exception>([&] { c.handleConst(e); }, {L"first", test::widened(c.record)});
        expectThrows<Exception>([&] { c.handle(e); }, {L"first", test::widened(c.record)});
    }
}

TEST(Protocol, CopyOfADelayedExceptionLogsItsRecordsImmediately) {
    const TemporaryLog log;
    try {
        try {
            Exception delayed;
            delayed.setDelayedLogging(true);
            delayed.appendMessage(L"a");
            delayed.rethrowMessage(L"load");  // throws a copy; the delayed object is destroyed and logs
        } catch (Exception& copy) {
            copy.rethrowClass(L"Parser", L"run");
        }
    } catch (const Exception& e) {
        EXPECT_EQ(messagesOf(e),
                  (Messages{L"a", L"load: Vorel exception rethrown", L"Parser::run: Vorel exception rethrown"}));
    }
    EXPECT_EQ(log.messages(), (Texts{"Vorel Error: a", "Vorel Error: load: Vorel exception rethrown",
                                     "Vorel Error: Parser::run: Vorel exception rethrown"}));
}

}  // namespace
