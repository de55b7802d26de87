// Secured objects, `IsAdmin` and `AllocBase` with a failing heap. The functions of secured objects allocate memory only
// to create a mapping of a named file, and to report a failure. If the report cannot be allocated, a shorter text is
// reported.

#include <string>
#include <typeinfo>
#include <vector>

#include <windows.h>

#include "allocation/Walker.h"
#include "support/Handle.h"
#include "support/ImportHook.h"
#include "support/NamedEvent.h"
#include "support/SystemText.h"
#include "support/TemporaryLog.h"
#include "vorel/core/MemoryAccounting.h"
#include "vorel/exceptions/ExceptionFamily.h"
#include "vorel/secure/IsAdmin.h"
#include "vorel/secure/SecuredMappings.h"
#include "vorel/secure/SecuredObjects.h"

namespace {

using test::Handle;
using vorel::BaseString;

/// Makes calls of `InitializeAcl` fail until the returned object is destroyed. The library calls this function when it
/// creates the security descriptor of an object.
auto failingStep() {
    return test::failCalls<importedInitializeAcl>();
}

/// The system's error text for opening a mutex with the name of an object of another kind.
std::wstring textOfNameInUse(const std::wstring& name) {
    const heap::Unwatched unwatched;
    const Handle opened(OpenMutexW(SYNCHRONIZE, FALSE, name.c_str()));
    return test::systemText(GetLastError());
}

/// Expects that the call completed and requested no memory.
void expectNoRequest(const Attempt& attempt) {
    attempt.expectCompleted();
    EXPECT_EQ(attempt.requests(), 0u);
}

/// The lines of the log. If the first request that failed was for the system's text, the record that `FormatErrorMsg`
/// adds to the exception is omitted.
std::vector<std::string> loggedBesidesSystemText(const Attempt& attempt) {
    std::vector<std::string> lines = attempt.logged();
    if (lines.size() > 1 && lines[1] == "Vorel Error: vorel::util::FormatErrorMsg: Vorel exception rethrown") {
        EXPECT_TRUE(lines[0].starts_with("Vorel Error: No more memory is available: ")) << lines[0];
        lines.erase(lines.begin() + 1);
    }
    return lines;
}

/// Expects a line about the failed request, then `lines`.
void expectMemoryLine(const Attempt& attempt, const std::vector<std::string>& lines) {
    const heap::Unwatched unwatched;
    const std::vector<std::string> logged = loggedBesidesSystemText(attempt);
    ASSERT_EQ(logged.size(), 1 + lines.size());
    EXPECT_TRUE(logged[0].starts_with("Vorel Error: No more memory is available: ")) << logged[0];
    for (std::size_t index = 0; index < lines.size(); ++index) {
        EXPECT_EQ(logged[index + 1], lines[index]);
    }
}

void mutex(Attempt& attempt) {
    const std::wstring name = test::NamedEvent::uniqueName(L"failing_heap");
    for (const int expected : {1, 0}) {
        int created = 7;
        Handle first;
        Handle second;
        attempt.perform([&] {
            first = Handle(vorel::ObtainAccessableMutex(0, name.c_str(), 0, 0, expected == 1 ? &created : nullptr));
            second = Handle(vorel::ObtainAccessableMutex(0, name.c_str(), 0, 0, expected == 0 ? &created : nullptr));
        });
        expectNoRequest(attempt);
        EXPECT_TRUE(first);
        EXPECT_TRUE(second);
        EXPECT_EQ(created, expected);
    }
}

void mutexOfNameInUse(Attempt& attempt) {
    const test::NamedEvent taken(test::NamedEvent::uniqueName(L"failing_heap_taken"));
    const std::wstring reason = textOfNameInUse(taken.name());
    int created = 7;
    HANDLE handle = taken.handle();
    attempt.perform([&] { handle = vorel::ObtainAccessableMutex(0, taken.name().c_str(), 0, 0, &created); });
    attempt.expectCompleted();
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(created, 0);
    if (attempt.allocationFailed()) {
        expectMemoryLine(attempt, {"WARN: Error ObtainAccessableMutex " + test::utf8(taken.name() + L", " + reason)});
    } else {
        EXPECT_EQ(attempt.logged(), std::vector<std::string>{"WARN: ObtainAccessableMutex warning: OpenMutex " +
                                                             test::utf8(taken.name() + L": " + reason)});
    }
}

void event(Attempt& attempt) {
    const std::wstring name = test::NamedEvent::uniqueName(L"failing_heap");
    BaseString<wchar_t> text;
    Handle first;
    Handle second;
    attempt.perform([&] {
        first = Handle(vorel::ObtainAccessableEvent(0, 0, name.c_str(), 0, 0, text));
        second = Handle(vorel::ObtainAccessableEvent(0, 0, name.c_str(), 0, 0, text));
    });
    expectNoRequest(attempt);
    EXPECT_TRUE(first);
    EXPECT_TRUE(second);
}

/// Expects `expected` as the caller's text if no request failed. Otherwise expects a fixed short text, or an empty text
/// if the short text cannot be stored either.
void expectEventText(const Attempt& attempt, const BaseString<wchar_t>& text, bool hasCapacity,
                     const std::wstring& expected) {
    const heap::Unwatched unwatched;
    if (!attempt.allocationFailed()) {
        EXPECT_EQ(text.view(), expected);
        EXPECT_EQ(attempt.logged().size(), 0u);
    } else if (hasCapacity || !attempt.memoryStaysExhausted()) {
        EXPECT_EQ(text.view(), L"ObtainAccessableMutex failed with unknown exception");
    } else {
        EXPECT_EQ(text.view(), L"");
    }
}

void eventOfNameInUse(Attempt& attempt, BaseString<wchar_t>& text, bool hasCapacity) {
    const std::wstring name = test::NamedEvent::uniqueName(L"failing_heap_taken");
    const Handle taken(CreateMutexW(nullptr, FALSE, name.c_str()));
    const Handle none(OpenEventW(SYNCHRONIZE, FALSE, name.c_str()));
    const std::wstring reason = test::systemText(GetLastError());
    HANDLE handle = taken.get();
    attempt.perform([&] { handle = vorel::ObtainAccessableEvent(0, 0, name.c_str(), 0, 0, text); });
    attempt.expectCompleted();
    EXPECT_EQ(handle, nullptr);
    expectEventText(attempt, text, hasCapacity, L"OpenEvent failed: " + reason);
    if (attempt.allocationFailed()) {
        expectMemoryLine(attempt, {"Vorel Error: Accessable::GetErrorMessage: Vorel exception rethrown"});
    }
}

void eventOfNameInUseWithoutCapacity(Attempt& attempt) {
    BaseString<wchar_t> text;
    eventOfNameInUse(attempt, text, false);
}

void eventOfNameInUseWithCapacity(Attempt& attempt) {
    BaseString<wchar_t> text;
    text.reserve(200, true);
    eventOfNameInUse(attempt, text, true);
}

// ---- Failing steps in the creation of the security descriptor ----

void mutexOfFailingStep(Attempt& attempt) {
    HANDLE handle = nullptr;
    attempt.perform([&] {
        const auto failure = failingStep();
        handle = vorel::ObtainAccessableMutex(0, nullptr, 0, 0, nullptr);
    });
    attempt.expectCompleted();
    EXPECT_EQ(handle, nullptr);
    const heap::Unwatched unwatched;
    const std::string reason = test::utf8(test::systemText(test::kFailureError));
    if (attempt.allocationFailed()) {
        expectMemoryLine(attempt, {"WARN: Error ObtainAccessableMutex (null), " + reason});
    } else {
        EXPECT_EQ(attempt.logged(),
                  std::vector<std::string>{"WARN: ObtainAccessableMutex: InitializeAcl failed: " + reason});
    }
}

void eventOfFailingStep(Attempt& attempt) {
    BaseString<wchar_t> text;
    HANDLE handle = nullptr;
    attempt.perform([&] {
        const auto failure = failingStep();
        handle = vorel::ObtainAccessableEvent(0, 0, nullptr, 0, 0, text);
    });
    attempt.expectCompleted();
    EXPECT_EQ(handle, nullptr);
    expectEventText(attempt, text, false,
                    L"ObtainAccessableEvent: InitializeAcl failed: " + test::systemText(test::kFailureError));
}

// ---- Mappings without a file ----

void mapping(Attempt& attempt) {
    const std::wstring name = test::NamedEvent::uniqueName(L"failing_heap");
    int created = 7;
    Handle handle;
    attempt.perform([&] {
        handle = Handle(vorel::ObtainAccessableFileMapping(INVALID_HANDLE_VALUE, PAGE_READWRITE, FILE_MAP_WRITE, 0,
                                                           4096, name.c_str(), &created));
    });
    expectNoRequest(attempt);
    EXPECT_TRUE(handle);
    EXPECT_EQ(created, 1);
}

// ---- Mappings of named files ----

std::wstring severeError(const std::wstring& path) {
    return L"ObtainAccessableFileMappingEx: Severe Error while opening " + path;
}

const std::wstring kRecord = L"Accessable::ObtainAccessableFileMappingEx: Vorel exception rethrown";

Handle obtainMapping(const std::wstring& path, DWORD size) {
    return Handle(vorel::ObtainAccessableFileMappingEx(path.c_str(), PAGE_READWRITE, FILE_MAP_WRITE, 0, size, nullptr,
                                                       nullptr, nullptr));
}

void mappingOfNewFile(Attempt& attempt) {
    const test::TemporaryFolder folder;
    const std::wstring path = folder.widePath() + L"\\a file with a long name.dat";
    Handle handle;
    attempt.perform([&] { handle = obtainMapping(path, 4096); });
    attempt.expectException(typeid(vorel::Exception).name(), {severeError(path), kRecord});
    EXPECT_EQ(static_cast<bool>(handle), attempt.completed());
    EXPECT_EQ(GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES, attempt.completed())
        << "the file must be created only after the path has been stored";
    handle.close();
    EXPECT_EQ(DeleteFileW(path.c_str()) != FALSE, attempt.completed());
}

/// All attempts to map an empty file fail. Memory may run out before the attempts, or while their failure is reported.
void mappingOfEmptyFile(Attempt& attempt) {
    const test::TemporaryFolder folder;
    const std::wstring path = folder.widePath() + L"\\an empty file.dat";
    Handle(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr)).close();
    Handle handle;
    attempt.perform([&] { handle = obtainMapping(path, 0); });
    EXPECT_FALSE(handle);
    EXPECT_TRUE(DeleteFileW(path.c_str())) << "the call must have closed every handle of the file";

    const heap::Unwatched unwatched;
    const std::vector<std::string> logged = loggedBesidesSystemText(attempt);
    ASSERT_EQ(logged.size(), 2u);
    EXPECT_EQ(logged[1], "Vorel Error: " + test::utf8(kRecord));
    const std::string& line = logged[0];
    const bool isMemory = line.starts_with("Vorel Error: No more memory is available: ");
    const bool isSevere = line == "Vorel Error: " + test::utf8(severeError(path));
    const bool isExpected =
        line.starts_with("Vorel Error: " + test::utf8(L"ObtainAccessableFileMappingEx: Opening file "
                                                      L"mapping failed for " +
                                                      path + L" after 50 tries: "));
    EXPECT_TRUE(isMemory || isSevere || isExpected) << line;
    EXPECT_TRUE(attempt.allocationFailed() || isExpected) << line;
    EXPECT_EQ(attempt.thrown(), isMemory ? typeid(vorel::MemoryException).name() : typeid(vorel::Exception).name());
}

// ---- Other functions ----

void isAdmin(Attempt& attempt) {
    const bool expected = vorel::IsAdmin();
    bool answer = !expected;
    attempt.perform([&] { answer = vorel::IsAdmin(); });
    expectNoRequest(attempt);
    EXPECT_EQ(answer, expected);
}

void registerSpy(Attempt& attempt) {
    attempt.perform([] { vorel::AllocBase::registerSpy(nullptr); });
    expectNoRequest(attempt);
}

/// A client class that uses the class-level allocation.
class Client : vorel::AllocBase {
public:
    static void* allocate() { return _alloc(100); }
    static void release(void* block) { _free(block); }
};

void classLevelAllocation(Attempt& attempt) {
    void* block = nullptr;
    attempt.perform([&] { block = Client::allocate(); });
    attempt.expectCompleted();
    EXPECT_EQ(attempt.requests(), 1u);
    EXPECT_EQ(block == nullptr, attempt.allocationFailed()) << "the function must return the result of the heap";
    Client::release(block);  // otherwise the walker would report a leak
}

const std::vector<Operation>& securedObjects() {
    static const std::vector<Operation> kOperations = {
        {"Mutex", mutex},
        {"Mutex_OfNameInUse", mutexOfNameInUse},
        {"Event", event},
        {"Event_OfNameInUse", eventOfNameInUseWithoutCapacity},
        {"Event_OfNameInUseWithCapacityForText", eventOfNameInUseWithCapacity},
        {"Mutex_WhoseSecurityCannotBeCreated", mutexOfFailingStep},
        {"Event_WhoseSecurityCannotBeCreated", eventOfFailingStep},
        {"Mapping", mapping},
        {"Mapping_OfNewFile", mappingOfNewFile},
        {"Mapping_OfEmptyFile", mappingOfEmptyFile},
        {"IsAdmin", isAdmin},
        {"RegisterSpy", registerSpy},
        {"ClassLevelAllocation", classLevelAllocation},
    };
    return kOperations;
}

INSTANTIATE_TEST_SUITE_P(SecuredObjects, FailingHeap, underBothFailures(securedObjects()), failingHeapName);

}  // namespace
