#include "vorel/core/KernelHandle.h"

#include <memory>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include <windows.h>

namespace {

using vorel::detail::KernelHandle;

static_assert(sizeof(KernelHandle) == sizeof(HANDLE));
static_assert(!std::is_copy_constructible_v<KernelHandle> && !std::is_copy_assignable_v<KernelHandle>);
static_assert(std::is_nothrow_move_constructible_v<KernelHandle> && std::is_nothrow_move_assignable_v<KernelHandle>);
static_assert(!std::is_convertible_v<void*, KernelHandle>, "taking ownership must be explicit");

constexpr DWORD kSomeError = 1234;

HANDLE makeEvent() {
    return CreateEventW(nullptr, TRUE, FALSE, nullptr);
}

bool isOpen(HANDLE handle) {
    DWORD flags = 0;
    return GetHandleInformation(handle, &flags) != FALSE;
}

/// The value of a handle that was already closed.
HANDLE closedHandle() {
    HANDLE handle = makeEvent();
    CloseHandle(handle);
    // cppcheck-suppress deallocret; the test needs an invalid handle
    return handle;
}

TEST(KernelHandle, Default_OwnsNothing) {
    const KernelHandle none;
    EXPECT_EQ(none.get(), nullptr);
    EXPECT_FALSE(none);
    const KernelHandle ofNull(nullptr);
    EXPECT_FALSE(ofNull);
}

TEST(KernelHandle, Destructor_ClosesTheHandle) {
    HANDLE const event = makeEvent();
    {
        const KernelHandle owner(event);
        EXPECT_TRUE(owner);
        EXPECT_EQ(owner.get(), event);
        EXPECT_TRUE(isOpen(event));
    }
    EXPECT_FALSE(isOpen(event));
}

TEST(KernelHandle, Close_ClosesTheHandleOnce) {
    HANDLE const event = makeEvent();
    KernelHandle owner(event);
    EXPECT_TRUE(owner.close());
    EXPECT_FALSE(isOpen(event));
    EXPECT_FALSE(owner);
    EXPECT_EQ(owner.get(), nullptr);
    SetLastError(kSomeError);
    EXPECT_TRUE(owner.close()) << "nothing is left to close";
    EXPECT_EQ(GetLastError(), kSomeError);
}

TEST(KernelHandle, Close_DoesNotChangeTheLastError) {
    KernelHandle owner(makeEvent());
    SetLastError(kSomeError);
    const bool closed = owner.close();
    const DWORD error = GetLastError();
    EXPECT_TRUE(closed);
    EXPECT_EQ(error, kSomeError);
}

TEST(KernelHandle, Destructor_DoesNotChangeTheLastError) {
    for (const bool owning : {true, false}) {
        auto owner = std::make_unique<KernelHandle>(owning ? makeEvent() : nullptr);
        SetLastError(kSomeError);
        std::destroy_at(owner.get());
        const DWORD error = GetLastError();
        EXPECT_EQ(error, kSomeError) << owning;
        std::construct_at(owner.get());
    }
}

TEST(KernelHandle, Close_OfAnInvalidHandleSetsTheLastErrorAndEmptiesTheOwner) {
    KernelHandle owner(closedHandle());
    SetLastError(kSomeError);
    const bool closed = owner.close();
    const DWORD error = GetLastError();
    EXPECT_FALSE(closed);
    EXPECT_EQ(error, DWORD{ERROR_INVALID_HANDLE});
    EXPECT_FALSE(owner) << "a second attempt might close a reused handle";
    EXPECT_TRUE(owner.close());
}

TEST(KernelHandle, Release_ReturnsTheOpenHandle) {
    HANDLE const event = makeEvent();
    {
        KernelHandle owner(event);
        EXPECT_EQ(owner.release(), event);
        EXPECT_FALSE(owner);
        EXPECT_EQ(owner.release(), nullptr);
    }
    EXPECT_TRUE(isOpen(event));
    CloseHandle(event);
}

TEST(KernelHandle, Move_TransfersTheHandle) {
    HANDLE const event = makeEvent();
    KernelHandle first(event);
    {
        const KernelHandle second(std::move(first));
        EXPECT_EQ(second.get(), event);
        EXPECT_FALSE(first);
        EXPECT_TRUE(isOpen(event));
    }
    EXPECT_FALSE(isOpen(event));
}

TEST(KernelHandle, Assignment_ClosesTheOldHandle) {
    HANDLE const oldEvent = makeEvent();
    HANDLE const newEvent = makeEvent();
    KernelHandle owner(oldEvent);
    owner = KernelHandle(newEvent);
    EXPECT_EQ(owner.get(), newEvent);
    EXPECT_TRUE(isOpen(newEvent));
    EXPECT_FALSE(isOpen(oldEvent));
}

TEST(KernelHandle, Assignment_OfAnEmptyOwnerClosesTheHandle) {
    HANDLE const event = makeEvent();
    KernelHandle owner(event);
    owner = KernelHandle();
    EXPECT_FALSE(owner);
    EXPECT_FALSE(isOpen(event));
}

TEST(KernelHandle, Assignment_ToItselfKeepsTheHandle) {
    HANDLE const event = makeEvent();
    KernelHandle owner(event);
    KernelHandle& same = owner;
    owner = std::move(same);
    EXPECT_EQ(owner.get(), event);
    EXPECT_TRUE(isOpen(event));
}

}  // namespace
