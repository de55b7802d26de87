/// \file
/// The last error after `KernelHandle::close()`, if the system call changes the last error or fails.

#include "vorel/core/KernelHandle.h"

#include <gtest/gtest.h>

#include <windows.h>

#include "support/ImportHook.h"

namespace {

using vorel::detail::KernelHandle;

constexpr DWORD kErrorBefore = 1234;

HANDLE makeEvent() {
    return CreateEventW(nullptr, TRUE, FALSE, nullptr);
}

TEST(KernelHandleSteps, SuccessfulCloseDoesNotChangeTheLastError) {
    const test::ImportHook<importedCloseHandle> close([&](HANDLE handle) {
        const BOOL isClosed = close.original(handle);
        SetLastError(ERROR_SUCCESS);
        return isClosed;
    });
    KernelHandle owner(makeEvent());
    SetLastError(kErrorBefore);
    const bool isClosed = owner.close();
    const DWORD error = GetLastError();
    EXPECT_TRUE(isClosed);
    EXPECT_EQ(error, kErrorBefore);
}

TEST(KernelHandleSteps, FailedCloseSetsTheLastError) {
    const auto failing = test::failCalls<importedCloseHandle>();
    HANDLE const event = makeEvent();
    KernelHandle owner(event);
    SetLastError(kErrorBefore);
    const bool isClosed = owner.close();
    const DWORD error = GetLastError();
    EXPECT_FALSE(isClosed);
    EXPECT_EQ(error, test::kFailureError);
    failing.original()(event);
}

}  // namespace
