#include "vorel/exceptions/ExceptionFamily.h"

#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/Expect.h"
#include "support/TemporaryLog.h"
#include "vorel/core/Protocol.h"

namespace {

using Messages = std::vector<std::wstring>;
using test::expectThrows;
using test::messagesOf;
using vorel::BadParameterException;
using vorel::DataRecordTypeException;
using vorel::DiffErrorException;
using vorel::DiffException;
using vorel::DiffWarningException;
using vorel::Exception;
using vorel::InvalidIndexException;
using vorel::MemoryException;
using vorel::NotImplementedException;
using vorel::OutOfRangeException;
using vorel::PropertyAccessException;
using vorel::TimeoutException;
using vorel::Win32Exception;

template <class... Kinds>
constexpr bool addNothing = ((sizeof(Kinds) == sizeof(Exception)) && ...);

static_assert(addNothing<NotImplementedException, DataRecordTypeException, Win32Exception, MemoryException,
                         TimeoutException, PropertyAccessException, OutOfRangeException, DiffException,
                         DiffErrorException, DiffWarningException, InvalidIndexException, BadParameterException>);
static_assert(std::is_base_of_v<DiffException, DiffErrorException>);
static_assert(std::is_base_of_v<DiffException, DiffWarningException>);

struct Case {
    const char* name;
    std::function<void()> expectThrown;
    std::string message;
};

template <class Kind, class... Arguments>
Case built(const char* name, const std::string& message, Arguments... arguments) {
    return {name,
            [=] {
                expectThrows<Kind>([=] { throw Kind(arguments...); }, {{message.begin(), message.end()}});
            },
            message};
}

const std::vector<Case>& cases() {
    static const std::vector<Case> table = {
        built<NotImplementedException>("NotImplementedWide", "Interface not supported: IThing", L"IThing"),
        built<NotImplementedException>("NotImplementedNarrow", "Interface not supported: IThing", "IThing"),
        built<NotImplementedException>("NotImplementedNullWide",
                                       "Interface not supported: ", static_cast<const wchar_t*>(nullptr)),
        built<NotImplementedException>("NotImplementedNullNarrow",
                                       "Interface not supported: ", static_cast<const char*>(nullptr)),
        built<DataRecordTypeException>("DataRecordType",
                                       "The required data type is not found in the current data record."),
        built<DataRecordTypeException>("DataRecordTypeOne",
                                       R"(Data type "int" is not found in the current data record.)", "int"),
        built<DataRecordTypeException>("DataRecordTypeTwo",
                                       R"(Data types "int" and "text" were not found in the current data record.)",
                                       "int", "text"),
        built<Win32Exception>("Win32", "no such %d", L"no such %d"),
        built<Win32Exception>("Win32Code", "no such: 0xC0000005", L"no such", static_cast<int>(0xC0000005)),
        built<MemoryException>("Memory", "No more memory is available: 16 objects of size 2 requested", 16, 2),
        built<TimeoutException>("Timeout", "Operation has overrun its specified timeout limit."),
        built<TimeoutException>("TimeoutFormat", "after 5 ms", L"after %d ms", 5),
        built<PropertyAccessException>("PropertyAccess", "Property value access violation."),
        built<PropertyAccessException>("PropertyAccessFormat", "no color", L"no %ls", L"color"),
        built<OutOfRangeException>("OutOfRange", R"(Level: Index "9" out of range: [1,5])", L"Level", 1, 5, 9),
        built<OutOfRangeException>("OutOfRangeNegative", R"(Level: Index "-9" out of range: [-5,-1])", L"Level", -5, -1,
                                   -9),
        built<DiffException>("DiffWide", "1 differs", L"%d differs", 1),
        built<DiffException>("DiffNarrow", "1 differs", "%d differs", 1),
        built<DiffErrorException>("DiffErrorWide", "1 differs", L"%d differs", 1),
        built<DiffErrorException>("DiffErrorNarrow", "1 differs", "%d differs", 1),
        built<DiffWarningException>("DiffWarningWide", "1 differs", L"%d differs", 1),
        built<DiffWarningException>("DiffWarningNarrow", "1 differs", "%d differs", 1),
        built<InvalidIndexException>("InvalidIndexWide", "no 7", L"no %d", 7),
        built<InvalidIndexException>("InvalidIndexNarrow", "no 7", "no %s", "7"),
        built<BadParameterException>("BadParameter",
                                     R"(Parameter "mode" value "fast" is unrecognized; perhaps your system )"
                                     "components need updating?",
                                     L"mode", L"fast"),
    };
    return table;
}

TEST(ExceptionFamily, FirstMessageDependsOnTheClassAndIsLoggedImmediately) {
    for (const Case& c : cases()) {
        SCOPED_TRACE(c.name);
        const test::TemporaryLog log;
        c.expectThrown();
        EXPECT_EQ(log.messages(), std::vector<std::string>{"Vorel Error: " + c.message});
    }
}

TEST(ExceptionFamily, InvalidIndexMessageDependsOnTheRange) {
    struct Row {
        int index;
        int low;
        int high;
        std::wstring rest;
    };
    const std::vector<Row> rows = {
        {7, 0, 2, L"legal values are between 0 and 2"},
        {-1, -3, -2, L"legal values are between -3 and -2"},
        {4, 2, 2, L"only legal value is 2"},
        {-4, 2, 2, L"only legal value is 2"},
        {4, 0, 0, L"only legal value is 0"},
        {4, -1, -1, L"there are zero items"},
        {4, 3, 2, L"there are zero items"},
        {-5, 0, -1, L"there are zero items"},
    };
    for (const Row& row : rows) {
        const std::wstring message =
            L"An invalid index value (" + std::to_wstring(row.index) + L") has been detected; " + row.rest;
        EXPECT_EQ(messagesOf(InvalidIndexException(row.index, row.low, row.high)), Messages{message});
        if (row.low == 0) {
            EXPECT_EQ(messagesOf(InvalidIndexException(row.index, row.high)), Messages{message});
        }
    }
}

TEST(ExceptionFamily, DiffExceptionsWithoutAFormatHaveNoMessage) {
    const test::TemporaryLog log;
    EXPECT_EQ(DiffException().what(), nullptr);
    EXPECT_EQ(DiffErrorException().what(), nullptr);
    EXPECT_EQ(DiffWarningException().what(), nullptr);
    EXPECT_FALSE(log.exists());
}

/// Catches a `Kind` by its base, calls `rethrow`, and expects a `Kind` again.
template <class Kind, class Base = Exception, class... Arguments>
void expectNotSliced(Arguments... arguments) {
    expectThrows<Kind>(
        [&] {
            try {
                throw Kind(arguments...);
            } catch (Base& caught) {
                caught.rethrow();
            }
        },
        messagesOf(Kind(arguments...)));
}

TEST(ExceptionFamily, RethrowThrowsTheSameClass) {
    expectNotSliced<Exception>(L"x");
    expectNotSliced<NotImplementedException>(L"x");
    expectNotSliced<DataRecordTypeException>();
    expectNotSliced<Win32Exception>(L"x");
    expectNotSliced<MemoryException>(1, 2);
    expectNotSliced<TimeoutException>();
    expectNotSliced<PropertyAccessException>();
    expectNotSliced<OutOfRangeException>(L"x", 1, 2, 3);
    expectNotSliced<DiffException>(L"x");
    expectNotSliced<DiffErrorException>(L"x");
    expectNotSliced<DiffErrorException, DiffException>(L"x");
    expectNotSliced<DiffWarningException, DiffException>(L"x");
    expectNotSliced<InvalidIndexException>(1, 2);
    expectNotSliced<BadParameterException>(L"x", L"y");
}

TEST(ExceptionFamily, MovingCopiesTheMessages) {
    const Messages messages = {L"No more memory is available: 1 objects of size 2 requested"};
    MemoryException original(1, 2);
    MemoryException target(3, 4);
    const MemoryException moved(std::move(original));
    // NOLINTBEGIN(clang-analyzer-cplusplus.Move): the test checks the object after the move.
    EXPECT_EQ(messagesOf(moved), messages);
    EXPECT_EQ(messagesOf(original), messages);
    target = std::move(original);
    EXPECT_EQ(messagesOf(target), messages);
    EXPECT_EQ(messagesOf(original), messages);
    // NOLINTEND(clang-analyzer-cplusplus.Move)
}

/// A class that a program derives from a class of the library.
class OwnException : public TimeoutException {
public:
    OwnException() noexcept : TimeoutException(L"own") {}
    [[noreturn]] void rethrow() override { throw OwnException(*this); }
};

TEST(ExceptionFamily, LibraryRethrowsADerivedClassOfAProgramUnsliced) {
    expectThrows<OwnException>([] { vorel::detail::runRethrowing(L"Own", L"run", [] { throw OwnException(); }); },
                               {L"own", L"Own::run: Vorel exception rethrown"});
}

}  // namespace
