#include "vorel/secure/IsAdmin.h"

#include <future>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "secure/PeerResult.h"
#include "secure/SecondUser.h"
#include "support/AccessList.h"
#include "support/ChildProcess.h"
#include "support/Handle.h"

namespace {

/// Asks the system whether the process belongs to the administrators.
bool isMember() {
    test::SidBytes administrators = test::administrators();
    BOOL member = FALSE;
    EXPECT_TRUE(CheckTokenMembership(nullptr, administrators.data(), &member));
    return member != FALSE;
}

/// Whether the calling thread impersonates a user.
bool isImpersonating() {
    HANDLE token = nullptr;
    const BOOL opened = OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token);
    const DWORD error = GetLastError();
    const test::Handle owner(opened ? token : nullptr);
    EXPECT_TRUE(opened || error == ERROR_NO_TOKEN);
    return opened != FALSE;
}

TEST(IsAdmin, AgreesWithTheMembershipOfTheProcess) {
    EXPECT_EQ(vorel::IsAdmin(), isMember());
}

TEST(IsAdmin, IsTrueForAnAdministrator) {
    if (!isMember()) {
        GTEST_SKIP() << "the user that runs the tests is not an administrator";
    }
    EXPECT_TRUE(vorel::IsAdmin());
}

TEST(IsAdmin, IsFalseInAProcessWithoutTheRightsOfAdministrators) {
    const test::Handle token = test::restrictedToken({test::administrators()});
    test::ChildOptions options;
    options.token = token.get();
    EXPECT_EQ(test::runChild(L"secured_peer", {L"task=admin"}, options), test::kPeerObtained);
}

TEST(IsAdmin, DoesNotStartImpersonation) {
    ASSERT_FALSE(isImpersonating());
    (void)vorel::IsAdmin();
    EXPECT_FALSE(isImpersonating());
}

/// Identifies the token of a thread. A duplicate of the token has another identity.
struct ThreadToken {
    LUID id;
    SECURITY_IMPERSONATION_LEVEL level;

    friend bool operator==(const ThreadToken& left, const ThreadToken& right) {
        return left.id.LowPart == right.id.LowPart && left.id.HighPart == right.id.HighPart &&
               left.level == right.level;
    }
};

ThreadToken threadToken() {
    HANDLE token = nullptr;
    EXPECT_TRUE(OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token));
    const test::Handle owner(token);
    TOKEN_STATISTICS statistics{};
    DWORD size = 0;
    EXPECT_TRUE(GetTokenInformation(token, TokenStatistics, &statistics, sizeof statistics, &size));
    return {statistics.TokenId, statistics.ImpersonationLevel};
}

TEST(IsAdmin, DoesNotChangeTheImpersonationOfTheThread) {
    const bool expected = isMember();
    for (const SECURITY_IMPERSONATION_LEVEL level :
         {SecurityIdentification, SecurityImpersonation, SecurityDelegation}) {
        ASSERT_TRUE(ImpersonateSelf(level));
        const ThreadToken before = threadToken();
        ASSERT_EQ(before.level, level);
        EXPECT_EQ(vorel::IsAdmin(), expected);
        EXPECT_TRUE(threadToken() == before);
        ASSERT_TRUE(RevertToSelf());
    }
}

TEST(IsAdmin, CanBeCalledOnManyThreads) {
    const bool expected = isMember();
    std::vector<std::future<bool>> answers;
    for (int thread = 0; thread < 4; ++thread) {
        answers.push_back(std::async(std::launch::async, [expected] {
            bool same = true;
            for (int round = 0; round < 100; ++round) {
                same = vorel::IsAdmin() == expected && !isImpersonating() && same;
            }
            return same;
        }));
    }
    for (std::future<bool>& answer : answers) {
        EXPECT_TRUE(answer.get());
    }
}

}  // namespace
