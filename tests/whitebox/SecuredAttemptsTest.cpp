/// \file
/// How mutexes and events are created or opened, and how failed attempts are repeated: the order of the system calls
/// and their arguments.

#include <climits>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/Handle.h"
#include "support/ImportHook.h"
#include "support/NamedEvent.h"
#include "support/SystemText.h"
#include "support/TemporaryLog.h"
#include "vorel/secure/SecuredObjects.h"
#include "whitebox/LiveBlocks.h"
#include "whitebox/SharedAttributes.h"

namespace {

using Texts = std::vector<std::string>;

/// A real handle. A simulated call returns it if the call must succeed.
HANDLE someHandle() {
    return CreateSemaphoreW(nullptr, 0, 1, nullptr);
}

struct MutexCase {
    using Create = test::ImportHook<importedCreateMutexW>;
    using Open = test::ImportHook<importedOpenMutexW>;
    static constexpr DWORD kOpenAccess = 0x100000;

    HANDLE obtain(const wchar_t* name, int retries, int sleepMs) {
        return vorel::ObtainAccessableMutex(0, name, retries, sleepMs, &created);
    }
    void expectFailedOpen(const std::wstring& name, DWORD error, const test::TemporaryLog& log) const {
        EXPECT_EQ(log.messages(), Texts{"WARN: ObtainAccessableMutex warning: OpenMutex " + test::utf8(name) + ": " +
                                        test::utf8(test::systemText(error))});
        EXPECT_EQ(created, 0);
    }
    void expectNew(bool isNew) const { EXPECT_EQ(created, isNew ? 1 : 0); }

    int created = 7;
};

struct EventCase {
    using Create = test::ImportHook<importedCreateEventW>;
    using Open = test::ImportHook<importedOpenEventW>;
    static constexpr DWORD kOpenAccess = 0x100002;

    HANDLE obtain(const wchar_t* name, int retries, int sleepMs) {
        return vorel::ObtainAccessableEvent(0, 0, name, retries, sleepMs, text);
    }
    void expectFailedOpen(const std::wstring&, DWORD error, const test::TemporaryLog& log) const {
        EXPECT_EQ(text.view(), L"OpenEvent failed: " + test::systemText(error));
        EXPECT_FALSE(log.exists());
    }
    void expectNew(bool) const { EXPECT_EQ(text.view(), L"before"); }

    vorel::BaseString<wchar_t> text{L"before"};
};

constexpr int kNever = -1;

/// The attempt in which creating the object succeeds, and the attempt in which opening it succeeds, counted from 0.
struct Script {
    int createdIn = kNever;
    int openedIn = kNever;
};

/// Simulates a system whose calls succeed as the script says, and records the calls.
template <class Case>
class ObtainingObject : public testing::Test {
protected:
    HANDLE obtain(int retries, int sleepMs) { return object.obtain(name.c_str(), retries, sleepMs); }

    /// Starts a new script, and resets the count of attempts.
    void follow(const Script& next) {
        m_script = next;
        m_creations = 0;
        m_openings = 0;
        trace.clear();
    }

    const std::wstring name = test::NamedEvent::uniqueName(L"attempts");
    const test::TemporaryLog log;
    Case object;
    DWORD createError = ERROR_ACCESS_DENIED;  // the last error after a creation
    std::string trace;
    DWORD openAccess = 0;
    std::vector<std::wstring> names;
    test::SharedAttributes attributes;

private:
    Script m_script;
    int m_creations = 0;
    int m_openings = 0;
    const typename Case::Create m_create{[this](LPSECURITY_ATTRIBUTES given, auto... rest) -> HANDLE {
        trace += "create ";
        attributes = test::sharedAttributes(given);
        names.emplace_back(std::get<sizeof...(rest) - 1>(std::tuple(rest...)));
        const bool succeeds = m_creations++ == m_script.createdIn;
        HANDLE const handle = succeeds ? someHandle() : nullptr;
        SetLastError(createError);
        return handle;
    }};
    const typename Case::Open m_open{[this](DWORD access, BOOL inherited, LPCWSTR asked) -> HANDLE {
        trace += inherited ? "inherited " : "open ";
        openAccess = access;
        names.emplace_back(asked);
        const bool succeeds = m_openings++ == m_script.openedIn;
        HANDLE const handle = succeeds ? someHandle() : nullptr;
        SetLastError(test::kFailureError + static_cast<DWORD>(m_openings));
        return handle;
    }};
    const test::ImportHook<importedSleep> m_sleep{
        [this](DWORD milliseconds) { trace += "sleep" + std::to_string(milliseconds) + " "; }};
};

using Cases = ::testing::Types<MutexCase, EventCase>;
TYPED_TEST_SUITE(ObtainingObject, Cases);

TYPED_TEST(ObtainingObject, WithoutRetriesTriesOnceAndNeverSleeps) {
    for (const int retries : {0, -1, INT_MIN}) {
        this->follow({});
        EXPECT_EQ(this->obtain(retries, 20), nullptr);
        EXPECT_EQ(this->trace, "create open ") << retries;
    }
}

TYPED_TEST(ObtainingObject, SleepsBetweenAttemptsUntilNoRetryIsLeft) {
    EXPECT_EQ(this->obtain(3, 20), nullptr);
    EXPECT_EQ(this->trace, "create open sleep20 create open sleep20 create open sleep20 create open ");
    this->object.expectFailedOpen(this->name, test::kFailureError + 4, this->log);
}

TYPED_TEST(ObtainingObject, SleepsForTheGivenTime) {
    EXPECT_EQ(this->obtain(1, 0), nullptr);
    EXPECT_EQ(this->trace, "create open sleep0 create open ");
    this->follow({});
    EXPECT_EQ(this->obtain(1, 600000), nullptr);
    EXPECT_EQ(this->trace, "create open sleep600000 create open ");
}

TYPED_TEST(ObtainingObject, StopsAfterTheFirstCallThatReturnsAHandle) {
    struct Row {
        Script script;
        const char* trace;
    };
    const Row rows[] = {
        {{0, kNever}, "create "},
        {{kNever, 0}, "create open "},
        {{1, kNever}, "create open sleep5 create "},
        {{kNever, 1}, "create open sleep5 create open "},
        {{2, kNever}, "create open sleep5 create open sleep5 create "},
        {{kNever, 2}, "create open sleep5 create open sleep5 create open "},
    };
    for (const Row& row : rows) {
        this->follow(row.script);
        const test::Handle handle(this->obtain(2, 5));
        EXPECT_TRUE(handle);
        EXPECT_EQ(this->trace, row.trace);
        this->object.expectNew(row.script.createdIn != kNever);
    }
    EXPECT_FALSE(this->log.exists()) << "failed attempts before a success must not be logged";
}

TYPED_TEST(ObtainingObject, ExistingObjectIsNotReportedAsNew) {
    this->follow({0, kNever});
    this->createError = ERROR_ALREADY_EXISTS;
    const test::Handle handle(this->obtain(0, 0));
    EXPECT_TRUE(handle);
    EXPECT_EQ(this->trace, "create ");
    this->object.expectNew(false);
}

TYPED_TEST(ObtainingObject, LastErrorOtherThanAlreadyExistsIsIgnoredAfterASuccess) {
    this->follow({0, kNever});
    this->createError = ERROR_FILE_EXISTS;
    const test::Handle handle(this->obtain(0, 0));
    EXPECT_TRUE(handle);
    this->object.expectNew(true);
}

TYPED_TEST(ObtainingObject, ReportsTheErrorOfTheFailedOpeningNotOfTheFailedCreation) {
    this->createError = ERROR_ALREADY_EXISTS;
    EXPECT_EQ(this->obtain(0, 0), nullptr);
    this->object.expectFailedOpen(this->name, test::kFailureError + 1, this->log);
}

TYPED_TEST(ObtainingObject, ObjectIsSharedAndHandleIsNotInherited) {
    EXPECT_EQ(this->obtain(0, 0), nullptr);
    EXPECT_EQ(this->attributes, test::SharedAttributes::expected());
    EXPECT_EQ(this->openAccess, TypeParam::kOpenAccess);
    EXPECT_EQ(this->names, (std::vector{this->name, this->name})) << "the name is used unchanged";
}

TYPED_TEST(ObtainingObject, FreesEveryBlockOnEveryPath) {
    for (const Script& script : {Script{0, kNever}, Script{kNever, 0}, Script{}}) {
        this->follow(script);
        const test::LiveBlocks blocks;
        const test::Handle handle(this->obtain(1, 0));
        EXPECT_EQ(blocks.live(), 0u);
        EXPECT_GE(blocks.allocations(), 2);
    }
}

// ---- Arguments that only mutexes or only events have ----

TEST(ObtainingMutex, InitialOwnerIsPassedToTheSystem) {
    for (const int owner : {0, 1, 2}) {
        int given = -1;
        const test::ImportHook<importedCreateMutexW> create([&](LPSECURITY_ATTRIBUTES, BOOL initialOwner, LPCWSTR) {
            given = initialOwner;
            return someHandle();
        });
        const test::Handle mutex(vorel::ObtainAccessableMutex(owner, nullptr, 0, 0, nullptr));
        EXPECT_TRUE(mutex);
        EXPECT_EQ(given, owner);
    }
}

TEST(ObtainingEvent, ManualResetAndInitialStateArePassedToTheSystem) {
    for (const int manualReset : {0, 1}) {
        for (const int initialState : {0, 1}) {
            int reset = -1;
            int state = -1;
            const test::ImportHook<importedCreateEventW> create(
                [&](LPSECURITY_ATTRIBUTES, BOOL givenReset, BOOL givenState, LPCWSTR) {
                    reset = givenReset;
                    state = givenState;
                    return someHandle();
                });
            vorel::BaseString<wchar_t> text;
            const test::Handle event(vorel::ObtainAccessableEvent(manualReset, initialState, nullptr, 0, 0, text));
            EXPECT_TRUE(event);
            EXPECT_EQ(reset, manualReset);
            EXPECT_EQ(state, initialState);
        }
    }
}

// ---- Security descriptor ----

TEST(SharedSecurity, DescriptorIsBuiltWithFixedArgumentsInFixedOrder) {
    std::vector<std::string> calls;
    const auto note = [&calls](const char* call, DWORD first, DWORD second) {
        calls.push_back(std::string(call) + " " + std::to_string(first) + " " + std::to_string(second));
    };
    const test::ImportHook<importedLocalAlloc> allocate([&](UINT flags, SIZE_T size) -> HLOCAL {
        note("LocalAlloc", flags, static_cast<DWORD>(size));
        return allocate.original(flags, size);
    });
    const test::ImportHook<importedInitializeAcl> initializeAcl([&](PACL acl, DWORD size, DWORD revision) {
        note("InitializeAcl", size, revision);
        return initializeAcl.original(acl, size, revision);
    });
    const test::ImportHook<importedAddAccessDeniedAce> deny([&](PACL acl, DWORD revision, DWORD mask, PSID sid) {
        note("AddAccessDeniedAce", revision, mask);
        return deny.original(acl, revision, mask, sid);
    });
    const test::ImportHook<importedAddAccessAllowedAce> allow([&](PACL acl, DWORD revision, DWORD mask, PSID sid) {
        note("AddAccessAllowedAce", revision, mask);
        return allow.original(acl, revision, mask, sid);
    });
    const test::ImportHook<importedInitializeSecurityDescriptor> initialize(
        [&](PSECURITY_DESCRIPTOR descriptor, DWORD revision) {
            note("InitializeSecurityDescriptor", revision, 0);
            return initialize.original(descriptor, revision);
        });
    const test::ImportHook<importedSetSecurityDescriptorDacl> setList(
        [&](PSECURITY_DESCRIPTOR descriptor, BOOL present, PACL acl, BOOL defaulted) {
            note("SetSecurityDescriptorDacl", static_cast<DWORD>(present), static_cast<DWORD>(defaulted));
            return setList.original(descriptor, present, acl, defaulted);
        });
    const test::Handle mutex(vorel::ObtainAccessableMutex(0, nullptr, 0, 0, nullptr));
    EXPECT_TRUE(mutex);
    // The list has 56 bytes: 8 for its header, and for each of its two entries 12 for the entry and 12 for the
    // identifier of Everyone. LPTR requests memory that is filled with zeros.
    const std::vector<std::string> expected = {
        "LocalAlloc " + std::to_string(LPTR) + " 56",
        "InitializeAcl 56 2",
        "AddAccessDeniedAce 2 786432",
        "AddAccessAllowedAce 2 268435456",
        "InitializeSecurityDescriptor 1 0",
        "SetSecurityDescriptorDacl 1 0",
    };
    EXPECT_EQ(calls, expected);
}

}  // namespace
