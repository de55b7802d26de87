// Every exception class with a failing heap. Constructing an exception logs its message, if it has one. Rethrowing an
// exception throws the exception's own class.

#include <optional>
#include <string>
#include <typeinfo>
#include <vector>

#include "allocation/MessageTexts.h"
#include "allocation/Walker.h"
#include "support/WideText.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace {

/// Adds two operations for a constructor of `E`: constructing and rethrowing the exception. `text` is the message of
/// the exception, or is empty if the exception has no message.
template <class E, class Make>
void add(std::vector<Operation>& all, const std::string& name, const std::wstring& text, Make make) {
    all.push_back({name + "_Construct", [=](Attempt& attempt) {
                       std::optional<E> e;
                       attempt.perform([&] { make(e); });
                       attempt.expectCompleted();
                       ASSERT_TRUE(e.has_value());
                       if (text.empty()) {
                           EXPECT_EQ(e->getMessageTotal(), 0u);
                           EXPECT_EQ(attempt.logged().size(), 0u);
                       } else {
                           expectMessage(attempt, *e, 0, text);
                           expectLastLine(attempt, "Vorel Error", test::narrowed(text));
                       }
                   }});
    all.push_back({name + "_Rethrow", [=](Attempt& attempt) {
                       std::optional<E> e;
                       make(e);
                       attempt.perform([&] { e->rethrow(); });
                       EXPECT_EQ(attempt.thrown(), typeid(E).name());
                       EXPECT_EQ(attempt.logged().size(), 0u);
                       attempt.expectThrownTexts(text.empty() ? Attempt::Messages() : Attempt::Messages{text});
                   }});
}

/// The constructor with a wide format, and the constructor with a narrow format if the class has one.
template <class E>
void addFormatted(std::vector<Operation>& all, const std::string& name) {
    add<E>(all, name + "_Wide", L"wide text, 7", [](auto& e) { e.emplace(L"%ls, %d", L"wide text", 7); });
    if constexpr (std::is_constructible_v<E, const char*, const char*, int>) {
        add<E>(all, name + "_Narrow", L"narrow text, 7", [](auto& e) { e.emplace("%s, %d", "narrow text", 7); });
    }
}

void addIndexFailures(std::vector<Operation>& all) {
    const std::wstring detected = L"An invalid index value (7) has been detected; ";
    add<vorel::InvalidIndexException>(all, "InvalidIndex_Range", detected + L"legal values are between 1 and 3",
                                      [](auto& e) { e.emplace(7, 1, 3); });
    add<vorel::InvalidIndexException>(all, "InvalidIndex_Last", detected + L"only legal value is 0",
                                      [](auto& e) { e.emplace(7, 0); });
    addFormatted<vorel::InvalidIndexException>(all, "InvalidIndex");
    add<vorel::OutOfRangeException>(all, "OutOfRange", L"rows: Index \"9\" out of range: [1,3]",
                                    [](auto& e) { e.emplace(L"rows", 1, 3, 9); });
}

void addDifferences(std::vector<Operation>& all) {
    const auto nothing = [](auto& e) { e.emplace(); };
    add<vorel::DiffException>(all, "Diff", L"", nothing);
    add<vorel::DiffErrorException>(all, "DiffError", L"", nothing);
    add<vorel::DiffWarningException>(all, "DiffWarning", L"", nothing);
    addFormatted<vorel::DiffException>(all, "Diff");
    addFormatted<vorel::DiffErrorException>(all, "DiffError");
    addFormatted<vorel::DiffWarningException>(all, "DiffWarning");
}

void addRecordTypes(std::vector<Operation>& all) {
    using vorel::DataRecordTypeException;
    add<DataRecordTypeException>(all, "DataRecordType",
                                 L"The required data type is not found in the current data record.",
                                 [](auto& e) { e.emplace(); });
    add<DataRecordTypeException>(all, "DataRecordType_One",
                                 L"Data type \"int\" is not found in the current data record.",
                                 [](auto& e) { e.emplace("int"); });
    add<DataRecordTypeException>(all, "DataRecordType_Two",
                                 L"Data types \"int\" and \"bool\" were not found in the current data record.",
                                 [](auto& e) { e.emplace("int", "bool"); });
}

std::vector<Operation> operations() {
    std::vector<Operation> all;
    const auto nothing = [](auto& e) { e.emplace(); };
    add<vorel::NotImplementedException>(all, "NotImplemented_Wide", L"Interface not supported: IParser",
                                        [](auto& e) { e.emplace(L"IParser"); });
    add<vorel::NotImplementedException>(all, "NotImplemented_Narrow", L"Interface not supported: IParser",
                                        [](auto& e) { e.emplace("IParser"); });
    add<vorel::Win32Exception>(all, "Win32", L"a system call", [](auto& e) { e.emplace(L"a system call"); });
    add<vorel::Win32Exception>(all, "Win32_Code", L"a system call: 0x1F",
                               [](auto& e) { e.emplace(L"a system call", 31); });
    add<vorel::MemoryException>(all, "Memory", L"No more memory is available: 7 objects of size 4 requested",
                                [](auto& e) { e.emplace(7, 4); });
    add<vorel::TimeoutException>(all, "Timeout", L"Operation has overrun its specified timeout limit.", nothing);
    addFormatted<vorel::TimeoutException>(all, "Timeout");
    add<vorel::PropertyAccessException>(all, "PropertyAccess", L"Property value access violation.", nothing);
    addFormatted<vorel::PropertyAccessException>(all, "PropertyAccess");
    add<vorel::BadParameterException>(
        all, "BadParameter",
        L"Parameter \"mode\" value \"x\" is unrecognized; perhaps your system components need updating?",
        [](auto& e) { e.emplace(L"mode", L"x"); });
    addRecordTypes(all);
    addIndexFailures(all);
    addDifferences(all);
    return all;
}

INSTANTIATE_TEST_SUITE_P(Family, FailingHeap, underBothFailures(operations()), failingHeapName);

}  // namespace
