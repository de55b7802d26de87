// Secured objects under a failing heap. They are made without it; the failures are told with it, or in short where
// there is no memory for more.

#include <string>
#include <type_traits>
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

extern "C" decltype(&::InitializeAcl) importedInitializeAcl __asm__("__imp_InitializeAcl");

namespace {

using test::Handle;
using vorel::BaseString;

/// One step on the way to the security of an object fails while the result lives.
auto failingStep() {
    return test::ImportPatch(importedInitializeAcl,
                             &test::Refusal<std::remove_pointer_t<decltype(importedInitializeAcl)>>::call);
}

/// What an attempt under a name of another kind of object is told by the system.
std::wstring textOfTakenName(const std::wstring& name) {
    const heap::Unwatched unwatched;
    const Handle opened(OpenMutexW(SYNCHRONIZE, FALSE, name.c_str()));
    return test::systemText(GetLastError());
}

/// Nothing is asked of the heap.
void expectNoRequest(const Trial& trial) {
    trial.expectCompleted();
    EXPECT_EQ(trial.requests(), 0u);
}

/// The lines of the log, without the record that is there when the system's text itself found no memory.
std::vector<std::string> loggedBesidesSystemText(const Trial& trial) {
    std::vector<std::string> lines = trial.logged();
    if (lines.size() > 1 && lines[1] == "Vorel Error: vorel::util::FormatErrorMsg: Vorel exception rethrown") {
        EXPECT_TRUE(lines[0].starts_with("Vorel Error: No more memory is available: ")) << lines[0];
        lines.erase(lines.begin() + 1);
    }
    return lines;
}

/// The log tells of a request that was refused, and then `lines`.
void expectMemoryLine(const Trial& trial, const std::vector<std::string>& lines) {
    const heap::Unwatched unwatched;
    const std::vector<std::string> logged = loggedBesidesSystemText(trial);
    ASSERT_EQ(logged.size(), 1 + lines.size());
    EXPECT_TRUE(logged[0].starts_with("Vorel Error: No more memory is available: ")) << logged[0];
    for (std::size_t index = 0; index < lines.size(); ++index) {
        EXPECT_EQ(logged[index + 1], lines[index]);
    }
}

void mutex(Trial& trial) {
    const std::wstring name = test::NamedEvent::uniqueName(L"failing_heap");
    for (const int expected : {1, 0}) {
        int created = 7;
        Handle first;
        Handle second;
        trial.perform([&] {
            first = Handle(vorel::ObtainAccessableMutex(0, name.c_str(), 0, 0, expected == 1 ? &created : nullptr));
            second = Handle(vorel::ObtainAccessableMutex(0, name.c_str(), 0, 0, expected == 0 ? &created : nullptr));
        });
        expectNoRequest(trial);
        EXPECT_TRUE(first);
        EXPECT_TRUE(second);
        EXPECT_EQ(created, expected);
    }
}

void mutexOfATakenName(Trial& trial) {
    const test::NamedEvent taken(test::NamedEvent::uniqueName(L"failing_heap_taken"));
    const std::wstring reason = textOfTakenName(taken.name());
    int created = 7;
    HANDLE handle = taken.handle();
    trial.perform([&] { handle = vorel::ObtainAccessableMutex(0, taken.name().c_str(), 0, 0, &created); });
    trial.expectCompleted();
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(created, 0);
    if (trial.refused()) {
        expectMemoryLine(trial, {"WARN: Error ObtainAccessableMutex " + test::utf8(taken.name() + L", " + reason)});
    } else {
        EXPECT_EQ(trial.logged(), std::vector<std::string>{"WARN: ObtainAccessableMutex warning: OpenMutex " +
                                                           test::utf8(taken.name() + L": " + reason)});
    }
}

void event(Trial& trial) {
    const std::wstring name = test::NamedEvent::uniqueName(L"failing_heap");
    BaseString<wchar_t> text;
    Handle first;
    Handle second;
    trial.perform([&] {
        first = Handle(vorel::ObtainAccessableEvent(0, 0, name.c_str(), 0, 0, text));
        second = Handle(vorel::ObtainAccessableEvent(0, 0, name.c_str(), 0, 0, text));
    });
    expectNoRequest(trial);
    EXPECT_TRUE(first);
    EXPECT_TRUE(second);
}

/// What the caller's text has to be after a failure: `expected`, or the short one where memory was refused and there is
/// room for it.
void expectEventText(const Trial& trial, const BaseString<wchar_t>& text, bool hasRoom, const std::wstring& expected) {
    const heap::Unwatched unwatched;
    if (!trial.refused()) {
        EXPECT_EQ(text.view(), expected);
        EXPECT_EQ(trial.logged().size(), 0u);
    } else if (hasRoom || !trial.staysWithoutMemory()) {
        EXPECT_EQ(text.view(), L"ObtainAccessableMutex failed with unknown exception");
    } else {
        EXPECT_EQ(text.view(), L"");
    }
}

void eventOfATakenName(Trial& trial, BaseString<wchar_t>& text, bool hasRoom) {
    const std::wstring name = test::NamedEvent::uniqueName(L"failing_heap_taken");
    const Handle taken(CreateMutexW(nullptr, FALSE, name.c_str()));
    const Handle none(OpenEventW(SYNCHRONIZE, FALSE, name.c_str()));
    const std::wstring reason = test::systemText(GetLastError());
    HANDLE handle = taken.get();
    trial.perform([&] { handle = vorel::ObtainAccessableEvent(0, 0, name.c_str(), 0, 0, text); });
    trial.expectCompleted();
    EXPECT_EQ(handle, nullptr);
    expectEventText(trial, text, hasRoom, L"OpenEvent failed: " + reason);
    if (trial.refused()) {
        expectMemoryLine(trial, {"Vorel Error: Accessable::GetErrorMessage: Vorel exception rethrown"});
    }
}

void eventOfATakenNameWithoutRoom(Trial& trial) {
    BaseString<wchar_t> text;
    eventOfATakenName(trial, text, false);
}

void eventOfATakenNameWithRoom(Trial& trial) {
    BaseString<wchar_t> text;
    text.reserve(200, true);
    eventOfATakenName(trial, text, true);
}

// ---- A step of the security that fails ----

void mutexOfAFailingStep(Trial& trial) {
    HANDLE handle = nullptr;
    trial.perform([&] {
        const auto refused = failingStep();
        handle = vorel::ObtainAccessableMutex(0, nullptr, 0, 0, nullptr);
    });
    trial.expectCompleted();
    EXPECT_EQ(handle, nullptr);
    const heap::Unwatched unwatched;
    const std::string reason = test::utf8(test::systemText(test::kRefusal));
    if (trial.refused()) {
        expectMemoryLine(trial, {"WARN: Error ObtainAccessableMutex (null), " + reason});
    } else {
        EXPECT_EQ(trial.logged(),
                  std::vector<std::string>{"WARN: ObtainAccessableMutex: InitializeAcl failed: " + reason});
    }
}

void eventOfAFailingStep(Trial& trial) {
    BaseString<wchar_t> text;
    HANDLE handle = nullptr;
    trial.perform([&] {
        const auto refused = failingStep();
        handle = vorel::ObtainAccessableEvent(0, 0, nullptr, 0, 0, text);
    });
    trial.expectCompleted();
    EXPECT_EQ(handle, nullptr);
    expectEventText(trial, text, false,
                    L"ObtainAccessableEvent: InitializeAcl failed: " + test::systemText(test::kRefusal));
}

void mapping(Trial& trial) {
    const std::wstring name = test::NamedEvent::uniqueName(L"failing_heap");
    int created = 7;
    Handle handle;
    trial.perform([&] {
        handle = Handle(vorel::ObtainAccessableFileMapping(INVALID_HANDLE_VALUE, PAGE_READWRITE, FILE_MAP_WRITE, 0,
                                                           4096, name.c_str(), &created));
    });
    expectNoRequest(trial);
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

void mappingOfANewFile(Trial& trial) {
    const test::TemporaryFolder folder;
    const std::wstring path = folder.widePath() + L"\\a file with a name of some length.dat";
    Handle handle;
    trial.perform([&] { handle = obtainMapping(path, 4096); });
    trial.expectException(typeid(vorel::Exception).name(), {severeError(path), kRecord});
    EXPECT_EQ(static_cast<bool>(handle), trial.completed());
    EXPECT_EQ(GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES, trial.completed())
        << "no file is made before there is room for its path";
    handle.close();
    EXPECT_EQ(DeleteFileW(path.c_str()) != FALSE, trial.completed());
}

/// The attempts are used up; the memory may fail before them, or while their failure is told.
void mappingOfAnEmptyFile(Trial& trial) {
    const test::TemporaryFolder folder;
    const std::wstring path = folder.widePath() + L"\\an empty file.dat";
    Handle(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr)).close();
    Handle handle;
    trial.perform([&] { handle = obtainMapping(path, 0); });
    EXPECT_FALSE(handle);
    EXPECT_TRUE(DeleteFileW(path.c_str())) << "a handle stays open";

    const heap::Unwatched unwatched;
    const std::vector<std::string> logged = loggedBesidesSystemText(trial);
    ASSERT_EQ(logged.size(), 2u);
    EXPECT_EQ(logged[1], "Vorel Error: " + test::utf8(kRecord));
    const std::string& told = logged[0];
    const bool isMemory = told.starts_with("Vorel Error: No more memory is available: ");
    const bool isSevere = told == "Vorel Error: " + test::utf8(severeError(path));
    const bool isUsual = told.starts_with("Vorel Error: " + test::utf8(L"ObtainAccessableFileMappingEx: Opening file "
                                                                       L"mapping failed for " +
                                                                       path + L" after 50 tries: "));
    EXPECT_TRUE(isMemory || isSevere || isUsual) << told;
    EXPECT_TRUE(trial.refused() || isUsual) << told;
    EXPECT_EQ(trial.thrown(), isMemory ? typeid(vorel::MemoryException).name() : typeid(vorel::Exception).name());
}

// ---- The rest ----

void isAdmin(Trial& trial) {
    const bool expected = vorel::IsAdmin();
    bool answer = !expected;
    trial.perform([&] { answer = vorel::IsAdmin(); });
    expectNoRequest(trial);
    EXPECT_EQ(answer, expected);
}

void registerSpy(Trial& trial) {
    trial.perform([] { vorel::AllocBase::registerSpy(nullptr); });
    expectNoRequest(trial);
}

/// A client class with allocation of its own.
class Client : vorel::AllocBase {
public:
    static void* allocate() { return _alloc(100); }
    static void release(void* block) { _free(block); }
};

void classLevelAllocation(Trial& trial) {
    void* block = nullptr;
    trial.perform([&] { block = Client::allocate(); });
    trial.expectCompleted();
    EXPECT_EQ(trial.requests(), 1u);
    EXPECT_EQ(block == nullptr, trial.refused()) << "the heap's answer is passed on";
    Client::release(block);  // a block that stays is found by the walker
}

const std::vector<Operation>& securedObjects() {
    static const std::vector<Operation> kOperations = {
        {"Mutex", mutex},
        {"Mutex_OfATakenName", mutexOfATakenName},
        {"Event", event},
        {"Event_OfATakenName", eventOfATakenNameWithoutRoom},
        {"Event_OfATakenNameWithRoomForAText", eventOfATakenNameWithRoom},
        {"Mutex_OfAFailingStep", mutexOfAFailingStep},
        {"Event_OfAFailingStep", eventOfAFailingStep},
        {"Mapping", mapping},
        {"Mapping_OfANewFile", mappingOfANewFile},
        {"Mapping_OfAnEmptyFile", mappingOfAnEmptyFile},
        {"IsAdmin", isAdmin},
        {"RegisterSpy", registerSpy},
        {"ClassLevelAllocation", classLevelAllocation},
    };
    return kOperations;
}

INSTANTIATE_TEST_SUITE_P(SecuredObjects, FailingHeap, underBothFailures(securedObjects()), failingHeapName);

}  // namespace
