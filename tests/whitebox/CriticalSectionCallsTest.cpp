/// \file
/// The system calls of the locks.

#include "vorel/core/CriticalSections.h"

#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/ImportHook.h"

namespace {

using test::ImportHook;

template <class Lock>
class CriticalSectionCalls : public ::testing::Test {};

using Sections = ::testing::Types<vorel::AutoCriticalSection, vorel::ForcedCriticalSection>;
TYPED_TEST_SUITE(CriticalSectionCalls, Sections);

TYPED_TEST(CriticalSectionCalls, SystemObjectIsDeletedOnce) {
    std::vector<void*> deleted;
    const ImportHook<importedDeleteCriticalSection> destroy([&](CRITICAL_SECTION* section) {
        deleted.push_back(section);
        destroy.original(section);
    });
    void* handle = nullptr;
    {
        const TypeParam lock;
        handle = lock.getHandle();
        EXPECT_TRUE(deleted.empty());
    }
    EXPECT_EQ(deleted, std::vector<void*>{handle});
}

TYPED_TEST(CriticalSectionCalls, TryLockSucceedsOnlyIfTheSystemReturnsOne) {
    TypeParam lock;
    for (const int answer : {0, 2, -1, 1}) {
        const ImportHook<importedTryEnterCriticalSection> tryEnter([=](CRITICAL_SECTION*) { return answer; });
        EXPECT_EQ(lock.lock(0, true), answer == 1) << answer;
        EXPECT_EQ(lock.tryLock(), answer == 1) << answer;
    }
}

}  // namespace
