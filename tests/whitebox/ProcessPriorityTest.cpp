/// \file
/// `SetProcessPriority` when the system call fails or throws.

#include "vorel/system/ProcessPriority.h"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <windows.h>

#include "support/Expect.h"
#include "support/ImportHook.h"
#include "support/TemporaryLog.h"
#include "vorel/exceptions/Exception.h"

namespace {

using test::ImportHook;
using vorel::Exception;
using vorel::util::SetProcessPriority;

void lower() {
    SetProcessPriority(vorel::util::PPC_BelowNormal, 0);
}

TEST(ProcessPriority, FailureOfTheSystemCallIsIgnored) {
    const test::TemporaryLog log;
    int calls = 0;
    const ImportHook<importedSetPriorityClass> failing([&](HANDLE, DWORD) {
        ++calls;
        return FALSE;
    });
    EXPECT_NO_THROW(lower());
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(log.exists());
}

TEST(ProcessPriority, ExceptionsAreRecordedWithTheNameOfTheOperation) {
    {
        const ImportHook<importedSetPriorityClass> broken([](HANDLE, DWORD) -> BOOL { throw Exception(L"broken"); });
        test::expectThrows<Exception>(lower, {L"broken", L"vorel::util::SetProcessPriority: Vorel exception rethrown"});
    }
    const ImportHook<importedSetPriorityClass> throwing(
        [](HANDLE, DWORD) -> BOOL { throw std::runtime_error("not of the library"); });
    test::expectThrows<Exception>(lower, {L"vorel::util::SetProcessPriority: Severe error thrown"});
}

}  // namespace
