/// \file
/// The steps of the question for administrators: what each is given, what happens when it fails, and that the thread
/// is itself again on every way out.

#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/AccessList.h"
#include "support/Handle.h"
#include "vorel/secure/IsAdmin.h"
#include "whitebox/SecurityCalls.h"

extern "C" {
extern decltype(&::ImpersonateSelf) importedImpersonateSelf __asm__("__imp_ImpersonateSelf");
extern decltype(&::RevertToSelf) importedRevertToSelf __asm__("__imp_RevertToSelf");
extern decltype(&::OpenProcessToken) importedOpenProcessToken __asm__("__imp_OpenProcessToken");
extern decltype(&::SetSecurityDescriptorGroup)
    importedSetSecurityDescriptorGroup __asm__("__imp_SetSecurityDescriptorGroup");
extern decltype(&::SetSecurityDescriptorOwner)
    importedSetSecurityDescriptorOwner __asm__("__imp_SetSecurityDescriptorOwner");
extern decltype(&::IsValidSecurityDescriptor)
    importedIsValidSecurityDescriptor __asm__("__imp_IsValidSecurityDescriptor");
extern decltype(&::AccessCheck) importedAccessCheck __asm__("__imp_AccessCheck");
}

namespace {

using test::refuse;

/// What the last step was asked.
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

bool threadHasToken() {
    HANDLE token = nullptr;
    const test::Handle owner(OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token) ? token : nullptr);
    return static_cast<bool>(owner) || GetLastError() != ERROR_NO_TOKEN;
}

/// Watches over the calls and answers the last one.
class IsAdminSteps : public testing::Test {
protected:
    ~IsAdminSteps() override {
        EXPECT_EQ(m_impersonations, m_reversions);
        EXPECT_EQ(m_openTokens.size(), 0u) << "a token stays open";
        EXPECT_EQ(m_blocks.live(), 0u);
        EXPECT_FALSE(threadHasToken());
    }

    BOOL checkSucceeds = TRUE;
    BOOL accessGranted = TRUE;
    std::string trace;
    std::vector<HANDLE> tokens;
    Question question;
    int questions = 0;

private:
    test::LiveBlocks m_blocks;
    int m_impersonations = 0;
    int m_reversions = 0;
    std::set<HANDLE> m_openTokens;

    void noteToken(const char* call, DWORD access, BOOL opened, HANDLE token) {
        trace += call + std::to_string(access) + " ";
        if (opened) {
            tokens.push_back(token);
            m_openTokens.insert(token);
        }
    }

    const test::ImportHook<importedImpersonateSelf> m_impersonate{[this](SECURITY_IMPERSONATION_LEVEL level) {
        EXPECT_EQ(level, SecurityImpersonation);
        const BOOL done = m_impersonate.original(level);
        m_impersonations += done ? 1 : 0;
        return done;
    }};
    const test::ImportHook<importedRevertToSelf> m_revert{[this] {
        ++m_reversions;
        return m_revert.original();
    }};
    const test::ImportHook<importedOpenThreadToken> m_openThreadToken{
        [this](HANDLE thread, DWORD access, BOOL asSelf, PHANDLE token) {
            EXPECT_EQ(thread, GetCurrentThread());
            const BOOL opened = m_openThreadToken.original(thread, access, asSelf, token);
            noteToken("thread", access, opened, *token);
            return opened;
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

TEST_F(IsAdminSteps, WhoeverIsGrantedTheAccessIsOne) {
    EXPECT_TRUE(vorel::IsAdmin());
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(trace, "thread8 ") << "the thread's token, to be queried";
}

TEST_F(IsAdminSteps, WhoeverIsNotIsNone) {
    accessGranted = FALSE;
    EXPECT_FALSE(vorel::IsAdmin());
    EXPECT_EQ(questions, 1);
}

TEST_F(IsAdminSteps, AnAnswerThatFailedCountsForNothing) {
    checkSucceeds = FALSE;
    EXPECT_FALSE(vorel::IsAdmin());
    EXPECT_EQ(questions, 1);
}

TEST_F(IsAdminSteps, TheQuestionIsForReadingWhatOnlyAdministratorsMay) {
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

TEST_F(IsAdminSteps, AThreadWithoutATokenGoesByThatOfItsProcess) {
    const test::ImportPatch patch(importedOpenThreadToken, &findNoThreadToken);
    EXPECT_TRUE(vorel::IsAdmin());
    EXPECT_EQ(trace, "process8 ");
    EXPECT_EQ(question.token, tokens.at(0));
}

TEST_F(IsAdminSteps, AProcessWhoseTokenIsRefusedHasNoAdministrator) {
    const test::ImportPatch patch(importedOpenThreadToken, &findNoThreadToken);
    const auto refused = refuse(importedOpenProcessToken);
    EXPECT_FALSE(vorel::IsAdmin());
    EXPECT_EQ(questions, 0);
}

TEST_F(IsAdminSteps, AThreadWhoseTokenIsRefusedAsksNobodyElse) {
    const auto refused = refuse(importedOpenThreadToken);
    EXPECT_FALSE(vorel::IsAdmin());
    EXPECT_EQ(trace, "");
    EXPECT_EQ(questions, 0);
}

TEST_F(IsAdminSteps, WithoutImpersonationNothingIsRevertedOrAsked) {
    const auto refused = refuse(importedImpersonateSelf);
    EXPECT_FALSE(vorel::IsAdmin());
    EXPECT_EQ(trace, "");
    EXPECT_EQ(questions, 0);
}

// ---- Each other step ----

struct Step {
    const char* name;
    std::shared_ptr<void> (*refused)();

    friend void PrintTo(const Step& step, std::ostream* out) { *out << step.name; }
};

const Step kSteps[] = {
    {"AllocateAndInitializeSid", [] { return refuse(importedAllocateAndInitializeSid); }},
    {"LocalAlloc", [] { return refuse(importedLocalAlloc); }},
    {"InitializeAcl", [] { return refuse(importedInitializeAcl); }},
    {"AddAccessAllowedAce", [] { return refuse(importedAddAccessAllowedAce); }},
    {"InitializeSecurityDescriptor", [] { return refuse(importedInitializeSecurityDescriptor); }},
    {"SetSecurityDescriptorDacl", [] { return refuse(importedSetSecurityDescriptorDacl); }},
    {"SetSecurityDescriptorGroup", [] { return refuse(importedSetSecurityDescriptorGroup); }},
    {"SetSecurityDescriptorOwner", [] { return refuse(importedSetSecurityDescriptorOwner); }},
    {"IsValidSecurityDescriptor", [] { return refuse(importedIsValidSecurityDescriptor); }},
};

class IsAdminStep : public IsAdminSteps, public testing::WithParamInterface<Step> {};

TEST_P(IsAdminStep, ThatFailsMeansNoAdministrator) {
    const auto refused = GetParam().refused();
    EXPECT_FALSE(vorel::IsAdmin());
    EXPECT_EQ(questions, 0);
    EXPECT_EQ(tokens.size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Each, IsAdminStep, testing::ValuesIn(kSteps),
                         [](const auto& step) { return std::string(step.param.name); });

}  // namespace
