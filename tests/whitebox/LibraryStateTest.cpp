/// \file
/// The objects that the library creates at load, and their order. They are destroyed in reverse order, so that no
/// object is used after it is destroyed.
// test-runner: one process per case

#include "LibraryState.h"

#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/SpyLock.h"
#include "exceptions/InvalidParameter.h"
#include "exceptions/LogState.h"
#include "exceptions/ThreadLogging.h"
#include "flat/LastError.h"
#include "text/Base64State.h"
#include "text/CodePageState.h"

namespace {

using vorel::detail::CodePageState;
using vorel::detail::LogState;
using vorel::detail::spyLock;

TEST(LibraryState, ExistsOnceTheProgramRuns) {
    EXPECT_TRUE(vorel::detail::libraryStateExists());
    EXPECT_NE(spyLock.get(), nullptr);
    EXPECT_EQ(spyLock.get(), spyLock.get());
}

TEST(LibraryState, CreatesItsObjectsInFixedOrder) {
    std::vector<const void*> objects;
    for (const vorel::detail::StateEntry& entry : vorel::detail::stateEntries()) {
        objects.push_back(entry.object);
    }
    EXPECT_THAT(objects, ::testing::ElementsAre(&spyLock, &vorel::detail::base64Tables, &vorel::detail::logState,
                                                &vorel::detail::codePageState, &vorel::flat::lastErrors,
                                                &vorel::detail::silencedThreadEnds,
                                                &vorel::detail::currentInvalidParameterHandler));
}

TEST(LibraryState, CreatesTheMembersOfAnObjectInFixedOrder) {
    const auto place = [](const auto& member) { return static_cast<const void*>(std::addressof(member)); };
    const LogState& log = *vorel::detail::logState.get();
    const std::vector<const void*> members = {
        place(log.narrowDebugTargets),  place(log.wideDebugTargets), place(log.silencedThreads),
        place(log.silencedThreadsLock), place(log.LogSettingsLock),
    };
    EXPECT_THAT(members, ::testing::WhenSortedBy(std::less<>(), ::testing::ElementsAreArray(members)));
    const CodePageState& pages = *vorel::detail::codePageState.get();
    EXPECT_LT(place(pages.codePageNames), place(pages.codeMapLock));
}

TEST(LibraryState, TablesStartWith31Buckets) {
    const LogState& log = *vorel::detail::logState.get();
    EXPECT_EQ(log.silencedThreads.bucketCount(), 31u);
    EXPECT_EQ(log.silencedThreads.size(), 0u);
    EXPECT_EQ(vorel::detail::codePageState.get()->codePageNames.bucketCount(), 31u);
}

static_assert(std::is_same_v<decltype(LogState::narrowDebugTargets), vorel::DebugTargets<char, vorel::NoLock>>);
static_assert(std::is_same_v<decltype(LogState::wideDebugTargets), vorel::DebugTargets<wchar_t, vorel::NoLock>>);
static_assert(std::is_same_v<decltype(LogState::LogSettingsLock), vorel::ForcedCriticalSection>);
static_assert(std::is_same_v<decltype(LogState::silencedThreadsLock), vorel::AutoCriticalSection>);
static_assert(std::is_same_v<decltype(spyLock.get()), vorel::AutoCriticalSection*>);
static_assert(std::is_same_v<decltype(CodePageState::codeMapLock), vorel::AutoCriticalSection>);

}  // namespace
