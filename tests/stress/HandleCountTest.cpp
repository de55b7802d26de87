/// \file
/// Each operation that opens handles must close them. The test runs the operation many times. Afterwards, the system
/// must count about as many handles of this process as before.

#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

#include "support/CaseName.h"
#include "support/Handle.h"
#include "support/NamedEvent.h"
#include "support/TemporaryLog.h"
#include "support/Wine.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/secure/IsAdmin.h"
#include "vorel/secure/SecuredMappings.h"
#include "vorel/secure/SecuredObjects.h"
#include "vorel/sync/AutoMutex.h"
#include "vorel/sync/Condition.h"
#include "vorel/sync/CriticalSections.h"
#include "vorel/sync/NamedCondition.h"

namespace {

using test::Handle;
using vorel::Exception;

constexpr int kRounds = 1000;
/// The system may open some handles, too, but fewer than one handle for every ten rounds.
constexpr DWORD kSystemHandles = kRounds / 10;

std::wstring objectName() {
    static const std::wstring name = test::NamedEvent::uniqueName(L"handle_count");
    return name;
}

struct Operation {
    const char* name;
    void (*run)();

    friend void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }
};

void obtainMutex() {
    const Handle mutex(vorel::ObtainAccessableMutex(0, objectName().c_str(), 0, 0, nullptr));
    const Handle same(vorel::ObtainAccessableMutex(0, objectName().c_str(), 0, 0, nullptr));
    EXPECT_TRUE(mutex && same);
}

void failToObtainEvent() {
    vorel::BaseString<wchar_t> text;
    const Handle mutex(CreateMutexW(nullptr, FALSE, objectName().c_str()));
    EXPECT_EQ(vorel::ObtainAccessableEvent(0, 0, objectName().c_str(), 0, 0, text), nullptr);
}

void obtainFileMapping() {
    static const test::TemporaryFolder folder;
    const Handle mapping(vorel::ObtainAccessableFileMappingEx((folder.widePath() + L"\\mapped.dat").c_str(),
                                                              PAGE_READWRITE, FILE_MAP_WRITE, 0, 4096,
                                                              objectName().c_str(), nullptr, nullptr));
    EXPECT_TRUE(mapping);
}

void askForAdministrator() {
    (void)vorel::IsAdmin();
}

void useNamedMutex() {
    vorel::AutoMutex mutex(objectName().c_str(), false, false);
    EXPECT_TRUE(mutex.lock(0, true));
    mutex.unlock();
}

void useConditions() {
    vorel::ForcedCriticalSection lock;
    const vorel::Condition condition(lock);
    const vorel::NamedCondition named(objectName().c_str());
}

void writeToTheLog() {
    Exception::warn("text");
}

void rotateTheLog() {
    const test::TemporaryLog log(1);
    Exception::warn("moved");
    Exception::warn("kept");
}

const Operation kOperations[] = {
    {"ObtainMutex", obtainMutex},
    {"FailToObtainEvent", failToObtainEvent},
    {"ObtainFileMapping", obtainFileMapping},
    {"AskForAdministrator", askForAdministrator},
    {"UseNamedMutex", useNamedMutex},
    {"UseConditions", useConditions},
    {"WriteToTheLog", writeToTheLog},
    {"RotateTheLog", rotateTheLog},
};

DWORD handleCount() {
    DWORD count = 0;
    EXPECT_TRUE(GetProcessHandleCount(GetCurrentProcess(), &count));
    return count;
}

class HandleCount : public testing::TestWithParam<Operation> {
    const test::TemporaryLog log{-1};
};

TEST_P(HandleCount, DoesNotGrow) {
    GetParam().run();  // the system may keep handles that the first call opened
    const DWORD before = handleCount();
    if (before == 0) {
        ASSERT_NE(test::wineVersion(), nullptr);
        GTEST_SKIP() << "Wine does not count handles";
    }
    for (int round = 0; round < kRounds; ++round) {
        GetParam().run();
    }
    EXPECT_LT(handleCount(), before + kSystemHandles);
}

INSTANTIATE_TEST_SUITE_P(Each, HandleCount, testing::ValuesIn(kOperations), test::caseName);

TEST(HandleCounting, CountsEveryOpenHandle) {
    const DWORD before = handleCount();
    if (before == 0) {
        ASSERT_NE(test::wineVersion(), nullptr);
        GTEST_SKIP() << "Wine does not count handles";
    }
    std::vector<Handle> events(kSystemHandles);
    for (Handle& event : events) {
        event = Handle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    }
    EXPECT_GE(handleCount(), before + kSystemHandles);
}

}  // namespace
