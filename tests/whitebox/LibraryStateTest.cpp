/// \file
/// What the library creates at load: that it is there, and its order. It is destroyed in reverse, so that nothing
/// outlives what it uses.
// test-runner: one process per case

#include "LibraryState.h"

#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using vorel::detail::libraryState;
using vorel::detail::LibraryState;

TEST(LibraryState, IsThereOnceTheProgramRuns) {
    EXPECT_NE(libraryState(), nullptr);
    EXPECT_EQ(libraryState(), libraryState());
}

TEST(LibraryState, IsCreatedInItsOrder) {
    LibraryState& state = *libraryState();
    const auto place = [](const auto& member) { return static_cast<const void*>(std::addressof(member)); };
    const std::vector<const void*> places = {
        place(state.spyLock),          place(state.base64Tables),    place(state.narrowDebugTargets),
        place(state.wideDebugTargets), place(state.silencedThreads), place(state.silencedThreadsLock),
        place(state.LogSettingsLock),  place(state.codePageNames),   place(state.codeMapLock),
    };
    EXPECT_THAT(places, ::testing::WhenSortedBy(std::less<>(), ::testing::ElementsAreArray(places)));
}

TEST(LibraryState, TablesStartWith31Buckets) {
    const LibraryState& state = *libraryState();
    EXPECT_EQ(state.silencedThreads.bucketCount(), 31u);
    EXPECT_EQ(state.codePageNames.bucketCount(), 31u);
    EXPECT_EQ(state.silencedThreads.size(), 0u);
}

static_assert(std::is_same_v<decltype(LibraryState::narrowDebugTargets), vorel::DebugTargets<char, vorel::NoLock>>);
static_assert(std::is_same_v<decltype(LibraryState::wideDebugTargets), vorel::DebugTargets<wchar_t, vorel::NoLock>>);
static_assert(std::is_same_v<decltype(LibraryState::LogSettingsLock), vorel::ForcedCriticalSection>);
static_assert(std::is_same_v<decltype(LibraryState::silencedThreadsLock), vorel::AutoCriticalSection>);
static_assert(std::is_same_v<decltype(LibraryState::spyLock), vorel::AutoCriticalSection>);
static_assert(std::is_same_v<decltype(LibraryState::codeMapLock), vorel::AutoCriticalSection>);

}  // namespace
