/// \file
/// The steps of `IsAdmin`: their arguments and their failures. On every path, the thread's impersonation must be the
/// same after the call as before the call.

#include <ostream>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/AccessList.h"
#include "support/CaseName.h"
#include "support/Handle.h"
#include "support/ImportHook.h"
#include "support/SystemText.h"
#include "support/TemporaryLog.h"
#include "vorel/secure/IsAdmin.h"
#include "whitebox/FailingStep.h"
#include "whitebox/LiveBlocks.h"

namespace {

using test::failCalls;
using test::failStep;

/// The arguments of the access check, and the contents of its security descriptor.
struct Question {
    HANDLE token = nullptr;
    DWORD desiredAccess = 0;
    std::vector<DWORD> mapping;
    DWORD revision = 0;
    test::SidBytes owner;
    test::SidBytes group;
    test::AccessList list;
};

Question questionOf(PSECURITY_DESCRIPTOR descriptor, HANDLE token, DWORD access, const GENERIC_MAPPING& mapping) {
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    BOOL defaulted = FALSE;
    PSID owner = nullptr;
    PSID group = nullptr;
    Question question;
    GetSecurityDescriptorControl(descriptor, &control, &question.revision);
    GetSecurityDescriptorOwner(descriptor, &owner, &defaulted);
    GetSecurityDescriptorGroup(descriptor, &group, &defaulted);
    question.token = token;
    question.desiredAccess = access;
    question.mapping = {mapping.GenericRead, mapping.GenericWrite, mapping.GenericExecute, mapping.GenericAll};
    question.owner = test::sidBytes(owner);
    question.group = test::sidBytes(group);
    question.list = test::accessListOf(descriptor);
    return question;
}

/// Records the system calls of `IsAdmin`, and sets the result of the access check.
class IsAdminSteps : public testing::Test {
protected:
    ~IsAdminSteps() override {
        EXPECT_EQ(m_impersonations, m_reversions);
        EXPECT_EQ(m_openTokens.size(), 0u) << "every token must be closed";
        EXPECT_EQ(m_blocks.live(), 0u);
        EXPECT_FALSE(threadHasToken());
    }

    BOOL checkSucceeds = TRUE;
    BOOL accessGranted = TRUE;
    HANDLE callersToken = nullptr;  // the thread's token before the call; null without impersonation
    int failingOpens = 0;           // number of failing attempts to open the caller's token; later attempts succeed
    bool queryFails = false;        // whether opening the thread's token for queries fails
    // The calls in their order. "keep" opens the caller's token with the rights of the process, and "keepasclient"
    // opens it with the rights of the impersonated client. The 8 in "thread8" and "process8" is TOKEN_QUERY, the access
    // with which the token is opened.
    std::string trace;
    std::vector<HANDLE> tokens;
    Question question;
    int questions = 0;

private:
    test::LiveBlocks m_blocks;
    bool m_isClient = true;  // whether a thread with a token still acts for its client
    int m_impersonations = 0;
    int m_reversions = 0;  // of the thread to itself, without the reversion from its client
    int m_keeps = 0;
    std::set<HANDLE> m_openTokens;

    bool threadHasToken() {
        HANDLE token = nullptr;
        const BOOL opened = m_openThreadToken.original(GetCurrentThread(), TOKEN_QUERY, TRUE, &token);
        const test::Handle owner(opened ? token : nullptr);
        return opened || GetLastError() != ERROR_NO_TOKEN;
    }

    void noteToken(const char* call, DWORD access, BOOL opened, HANDLE token) {
        trace += call + std::to_string(access) + " ";
        if (opened) {
            tokens.push_back(token);
            m_openTokens.insert(token);
        }
    }

    /// Opens the caller's token. Like the system, the function fails if the thread does not impersonate.
    BOOL keepToken(BOOL asSelf, PHANDLE token) {
        trace += asSelf ? "keep " : "keepasclient ";
        const bool fails = m_keeps++ < failingOpens;
        if (fails || !callersToken) {
            SetLastError(fails ? test::kFailureError : ERROR_NO_TOKEN);
            return FALSE;
        }
        *token = callersToken;
        m_openTokens.insert(callersToken);
        return TRUE;
    }

    const test::ImportHook<importedImpersonateSelf> m_impersonate{[this](SECURITY_IMPERSONATION_LEVEL level) {
        trace += "impersonate ";
        EXPECT_EQ(level, SecurityImpersonation);
        EXPECT_TRUE(!callersToken || !m_isClient) << "a client may lack the right to open the token of the process";
        const BOOL done = m_impersonate.original(level);
        m_impersonations += done ? 1 : 0;
        return done;
    }};
    const test::ImportHook<importedRevertToSelf> m_revert{[this] {
        trace += "revert ";
        if (callersToken && m_isClient) {
            m_isClient = false;
            return TRUE;
        }
        ++m_reversions;
        return m_revert.original();
    }};
    const test::ImportHook<importedOpenThreadToken> m_openThreadToken{
        [this](HANDLE thread, DWORD access, BOOL asSelf, PHANDLE token) {
            EXPECT_EQ(thread, GetCurrentThread());
            if (access == TOKEN_IMPERSONATE) {
                return keepToken(asSelf, token);
            }
            EXPECT_FALSE(asSelf);
            if (queryFails) {
                trace += "thread8 ";
                SetLastError(test::kFailureError);
                return FALSE;
            }
            const BOOL opened = m_openThreadToken.original(thread, access, asSelf, token);
            noteToken("thread", access, opened, *token);
            return opened;
        }};
    const test::ImportHook<importedSetThreadToken> m_setToken{[this](PHANDLE thread, HANDLE token) {
        EXPECT_EQ(thread, nullptr) << "null means the calling thread";
        EXPECT_EQ(token, callersToken);
        EXPECT_TRUE(m_openTokens.contains(token));
        trace += "restore ";
        m_isClient = true;
        return TRUE;
    }};
    const test::ImportHook<importedOpenProcessToken> m_openProcessToken{
        [this](HANDLE process, DWORD access, PHANDLE token) {
            EXPECT_EQ(process, GetCurrentProcess());
            const BOOL opened = m_openProcessToken.original(process, access, token);
            noteToken("process", access, opened, *token);
            return opened;
        }};
    const test::ImportHook<importedCloseHandle> m_close{[this](HANDLE handle) {
        m_openTokens.erase(handle);
        return m_close.original(handle);
    }};
    const test::ImportHook<importedAccessCheck> m_check{
        [this](PSECURITY_DESCRIPTOR descriptor, HANDLE token, DWORD access, PGENERIC_MAPPING mapping,
               PPRIVILEGE_SET privileges, LPDWORD privilegesSize, LPDWORD granted, LPBOOL allowed) {
            ++questions;
            EXPECT_TRUE(m_openTokens.contains(token));
            EXPECT_TRUE(IsValidSecurityDescriptor(descriptor));
            EXPECT_NE(privileges, nullptr);
            EXPECT_GE(*privilegesSize, DWORD{sizeof(PRIVILEGE_SET)});
            question = questionOf(descriptor, token, access, *mapping);
            *granted = accessGranted ? access : 0;
            *allowed = accessGranted;
            return checkSucceeds;
        }};
};

TEST_F(IsAdminSteps, IsTrueIfTheAccessIsGranted) {
    EXPECT_TRUE(vorel::IsAdmin());
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(trace, "keep impersonate thread8 revert ") << "opens the thread's token with TOKEN_QUERY";
}

TEST_F(IsAdminSteps, IsFalseIfTheAccessIsDenied) {
    accessGranted = FALSE;
    EXPECT_FALSE(vorel::IsAdmin());
    EXPECT_EQ(questions, 1);
}

TEST_F(IsAdminSteps, IsFalseIfTheAccessCheckFails) {
    checkSucceeds = FALSE;
    EXPECT_FALSE(vorel::IsAdmin());
    EXPECT_EQ(questions, 1);
}

TEST_F(IsAdminSteps, ChecksReadAccessToAnObjectOfAdministrators) {
    EXPECT_TRUE(vorel::IsAdmin());
    EXPECT_EQ(question.token, tokens.at(0));
    EXPECT_EQ(question.desiredAccess, 1u);
    EXPECT_EQ(question.mapping, (std::vector<DWORD>{1, 2, 0, 3}));
    EXPECT_EQ(question.revision, 1u);
    EXPECT_EQ(question.owner, test::administrators());
    EXPECT_EQ(question.group, test::administrators());
    EXPECT_TRUE(question.list.present);
    EXPECT_FALSE(question.list.defaulted);
    EXPECT_EQ(question.list.revision, 2);
    EXPECT_EQ(question.list.sizeBytes, 16 + 16);
    EXPECT_EQ(question.list.entries, std::vector{test::allowed(3, test::administrators())});
}

// ---- Tokens ----

BOOL WINAPI findNoThreadToken(HANDLE, DWORD, BOOL, PHANDLE token) {
    *token = nullptr;
    SetLastError(ERROR_NO_TOKEN);
    return FALSE;
}

TEST_F(IsAdminSteps, UsesTheTokenOfTheProcessIfTheThreadHasNone) {
    const test::ImportPatch patch(importedOpenThreadToken, &findNoThreadToken);
    EXPECT_TRUE(vorel::IsAdmin());
    EXPECT_EQ(trace, "impersonate process8 revert ");
    EXPECT_EQ(question.token, tokens.at(0));
}

TEST_F(IsAdminSteps, IsFalseIfTheTokenOfTheProcessCannotBeOpened) {
    const test::ImportPatch patch(importedOpenThreadToken, &findNoThreadToken);
    const auto failing = failCalls<importedOpenProcessToken>();
    EXPECT_FALSE(vorel::IsAdmin());
    EXPECT_EQ(questions, 0);
}

TEST_F(IsAdminSteps, IsFalseIfTheTokenOfTheThreadCannotBeOpened) {
    queryFails = true;
    EXPECT_FALSE(vorel::IsAdmin());
    EXPECT_EQ(trace, "keep impersonate thread8 revert ");
    EXPECT_EQ(questions, 0);
}

TEST_F(IsAdminSteps, FailedImpersonationIsNotReverted) {
    const auto failing = failCalls<importedImpersonateSelf>();
    EXPECT_FALSE(vorel::IsAdmin());
    EXPECT_EQ(trace, "keep ");
    EXPECT_EQ(questions, 0);
}

// ---- Impersonation of the caller ----

class IsAdminOfAnImpersonatingThread : public IsAdminSteps {
protected:
    IsAdminOfAnImpersonatingThread() { callersToken = m_token.get(); }

    const test::TemporaryLog log;

private:
    const test::Handle m_token{CreateSemaphoreW(nullptr, 0, 1, nullptr)};  // any valid handle
};

struct ImpersonationCase {
    const char* name;
    int failingOpens;
    bool queryFails;
    bool accessGranted;
    const char* trace;

    friend void PrintTo(const ImpersonationCase& rule, std::ostream* out) { *out << rule.name; }
};

const ImpersonationCase kImpersonationCases[] = {
    {"AccessGranted", 0, false, true, "keep revert impersonate thread8 revert restore "},
    {"AccessDenied", 0, false, false, "keep revert impersonate thread8 revert restore "},
    {"TokenCannotBeOpenedForQueries", 0, true, false, "keep revert impersonate thread8 revert restore "},
    {"OnlyTheImpersonatedClientMayOpenTheToken", 1, false, true,
     "keep keepasclient revert impersonate thread8 revert restore "},
    {"CallersTokenCannotBeOpened", 2, false, false, "keep keepasclient "},
};

class IsAdminKeepsTheImpersonation : public IsAdminOfAnImpersonatingThread,
                                     public testing::WithParamInterface<ImpersonationCase> {};

TEST_P(IsAdminKeepsTheImpersonation, OnEveryPath) {
    const ImpersonationCase& rule = GetParam();
    failingOpens = rule.failingOpens;
    queryFails = rule.queryFails;
    accessGranted = rule.accessGranted;
    EXPECT_EQ(vorel::IsAdmin(), rule.accessGranted);
    EXPECT_EQ(trace, rule.trace);
    EXPECT_FALSE(log.exists());
}

INSTANTIATE_TEST_SUITE_P(Each, IsAdminKeepsTheImpersonation, testing::ValuesIn(kImpersonationCases), test::caseName);

TEST_F(IsAdminOfAnImpersonatingThread, KeepsTheTokenIfTheThreadCannotImpersonateItsProcess) {
    const auto failing = failCalls<importedImpersonateSelf>();
    EXPECT_FALSE(vorel::IsAdmin());
    EXPECT_EQ(trace, "keep revert restore ");
    EXPECT_FALSE(log.exists());
}

TEST_F(IsAdminOfAnImpersonatingThread, KeepsTheTokenIfTheThreadCannotRevert) {
    const auto failing = failCalls<importedRevertToSelf>();
    EXPECT_FALSE(vorel::IsAdmin());
    EXPECT_EQ(trace, "keep ");
}

TEST_F(IsAdminOfAnImpersonatingThread, FailureToRestoreTheTokenIsLogged) {
    const auto failing = failCalls<importedSetThreadToken>();
    EXPECT_FALSE(vorel::IsAdmin());
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(log.messages(), std::vector<std::string>{"WARN: IsAdmin: SetThreadToken failed: " +
                                                       test::utf8(test::systemText(test::kFailureError))});
}

// ---- Failures of the other steps ----

const test::FailingStep kSteps[] = {
    {"AllocateAndInitializeSid", failStep<importedAllocateAndInitializeSid>},
    {"LocalAlloc", failStep<importedLocalAlloc>},
    {"InitializeAcl", failStep<importedInitializeAcl>},
    {"AddAccessAllowedAce", failStep<importedAddAccessAllowedAce>},
    {"InitializeSecurityDescriptor", failStep<importedInitializeSecurityDescriptor>},
    {"SetSecurityDescriptorDacl", failStep<importedSetSecurityDescriptorDacl>},
    {"SetSecurityDescriptorGroup", failStep<importedSetSecurityDescriptorGroup>},
    {"SetSecurityDescriptorOwner", failStep<importedSetSecurityDescriptorOwner>},
    {"IsValidSecurityDescriptor", failStep<importedIsValidSecurityDescriptor>},
};

class IsAdminStep : public IsAdminSteps, public testing::WithParamInterface<test::FailingStep> {};

TEST_P(IsAdminStep, FailureReturnsFalse) {
    const auto failing = GetParam().fail();
    EXPECT_FALSE(vorel::IsAdmin());
    EXPECT_EQ(questions, 0);
    EXPECT_EQ(trace, "keep impersonate thread8 revert ");
}

INSTANTIATE_TEST_SUITE_P(Each, IsAdminStep, testing::ValuesIn(kSteps), test::caseName);

}  // namespace
