/// \file
/// Debug targets: named switches in two separate sets, one for narrow and one for wide names.

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <windows.h>

#include "support/TemporaryLog.h"
#include "support/Together.h"
#include "support/Widths.h"
#include "vorel/exceptions/Exception.h"

namespace {

using test::TemporaryLog;
using vorel::Exception;

template <class T>
class DebugTargetsTest : public testing::Test {
protected:
    static void set(std::string_view name, bool active) {
        Exception::setDebugTarget(test::text<T>(name).c_str(), active);
    }
    static bool isActive(std::string_view name) { return Exception::isDebugTargetActive(test::text<T>(name).c_str()); }
};

TYPED_TEST_SUITE(DebugTargetsTest, test::CharacterTypes, test::CharacterNames);

TYPED_TEST(DebugTargetsTest, TargetIsActiveWhileSwitchedOn) {
    EXPECT_FALSE(this->isActive("DT.OnOff"));
    for (int round = 0; round < 2; ++round) {
        this->set("DT.OnOff", true);
        EXPECT_TRUE(this->isActive("DT.OnOff"));
        this->set("DT.OnOff", true);
        EXPECT_TRUE(this->isActive("DT.OnOff"));
        this->set("DT.OnOff", false);
        EXPECT_FALSE(this->isActive("DT.OnOff"));
    }
}

TYPED_TEST(DebugTargetsTest, NamesMatchExactly) {
    this->set("DT.Exact", true);
    for (const char* const other : {"dt.exact", "DT.EXACT", "DT.Exac", "DT.Exactly", "DT.Exact ", "", "*", "all"}) {
        EXPECT_FALSE(this->isActive(other)) << other;
    }
    EXPECT_TRUE(this->isActive("DT.Exact"));
}

TYPED_TEST(DebugTargetsTest, EmptyNameIsAValidName) {
    EXPECT_FALSE(this->isActive(""));
    this->set("", true);
    EXPECT_TRUE(this->isActive(""));
    this->set("", false);
    EXPECT_FALSE(this->isActive(""));
}

TYPED_TEST(DebugTargetsTest, NamesAreCopied) {
    auto name = test::text<TypeParam>("DT.Copy");
    Exception::setDebugTarget(name.c_str(), true);
    name[0] = 'X';
    EXPECT_TRUE(this->isActive("DT.Copy"));
    EXPECT_FALSE(this->isActive("XT.Copy"));
}

TYPED_TEST(DebugTargetsTest, NullNameIsIgnored) {
    const TypeParam* const none = nullptr;
    this->set("DT.Null", true);
    Exception::setDebugTarget(none, true);
    Exception::setDebugTarget(none, false);
    EXPECT_FALSE(Exception::isDebugTargetActive(none));
    EXPECT_TRUE(this->isActive("DT.Null"));
}

TYPED_TEST(DebugTargetsTest, ManyTargetsAreIndependent) {
    const auto nameOf = [](int index) { return "DT.Many" + std::to_string(index); };
    for (int index = 0; index < 100; ++index) {
        this->set(nameOf(index), index % 3 == 0);
    }
    for (int index = 0; index < 100; ++index) {
        EXPECT_EQ(this->isActive(nameOf(index)), index % 3 == 0) << index;
    }
}

TYPED_TEST(DebugTargetsTest, AnyThreadMaySetAndTestTargets) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 5;
    constexpr int kNames = 100;  // few, because names are never removed, and the guarded heap is limited
    std::atomic<int> wrong{0};
    for (int round = 0; round < kRounds; ++round) {
        const auto nameOf = [round](int index, int thread) {
            return "DT.Any" + std::to_string(round) + "." + std::to_string(index) + "." + std::to_string(thread);
        };
        test::runTogether(kThreads, [&](int thread) {
            for (int index = 0; index < kNames; ++index) {
                this->set(nameOf(index, thread), true);
                wrong += !this->isActive(nameOf(index, thread));
                this->set(nameOf(index, kThreads), true);  // the name that all threads set
                wrong += !this->isActive(nameOf(index, kThreads));
                this->set(nameOf(index, thread), index % 2 == 0);
            }
        });
        for (int index = 0; index < kNames; ++index) {
            for (int thread = 0; thread <= kThreads; ++thread) {
                wrong += this->isActive(nameOf(index, thread)) != (index % 2 == 0 || thread == kThreads);
            }
        }
    }
    EXPECT_EQ(wrong, 0);
}

/// Clears the flag that says whether any target was ever switched on; the destructor restores it.
class FlagCleared {
public:
    FlagCleared() : m_before(vorel::DebugTargetsUsed.exchange(false)) {}
    ~FlagCleared() { vorel::DebugTargetsUsed = m_before; }

    FlagCleared(const FlagCleared&) = delete;
    FlagCleared& operator=(const FlagCleared&) = delete;

private:
    bool m_before;
};

TEST(DebugTargets, NoTargetIsLookedUpWhileTheFlagIsCleared) {
    const TemporaryLog log;
    Exception::setDebugTarget("DT.Flag", true);
    Exception::setDebugTarget(L"DT.Flag", true);
    EXPECT_TRUE(vorel::DebugTargetsUsed);
    {
        const FlagCleared cleared;
        EXPECT_FALSE(Exception::isDebugTargetActive("DT.Flag"));
        EXPECT_FALSE(Exception::isDebugTargetActive(L"DT.Flag"));
        Exception::debug("DT.Flag", "%d", 1);
        Exception::debug(L"DT.Flag", L"%d", 2);
        Exception::debugClass(L"C", L"m", L"DT.Flag", L"%d", 3);
    }
    EXPECT_FALSE(log.exists());
    Exception::debug("DT.Flag", "%d", 4);
    Exception::debug(L"DT.Flag", L"%d", 5);
    Exception::debugClass(L"C", L"m", L"DT.Flag", L"%d", 6);
    EXPECT_EQ(log.messages(),
              (std::vector<std::string>{"DEBUG: DT.Flag: 4", "DEBUG: DT.Flag: 5", "DEBUG: C::m: DT.Flag: 6"}));
    Exception::setDebugTarget("DT.Flag", false);
    Exception::setDebugTarget(L"DT.Flag", false);
}

TEST(DebugTargets, InlineFunctionsCanBeCalledByAddress) {
    const TemporaryLog log;
    Exception::setDebugTarget(L"DT.Address", true);
    bool (*volatile isActive)(const wchar_t*) noexcept = &Exception::isDebugTargetActive;
    void (*volatile debug)(const wchar_t*, const wchar_t*, ...) noexcept = &Exception::debug;
    EXPECT_TRUE(isActive(L"DT.Address"));
    debug(L"DT.Address", L"%d and %ls", 7, L"eight");
    EXPECT_EQ(log.messages(), std::vector<std::string>{"DEBUG: DT.Address: 7 and eight"});
    Exception::setDebugTarget(L"DT.Address", false);
}

TEST(DebugTargets, NarrowAndWideNamesAreIndependent) {
    Exception::setDebugTarget("DT.NarrowOnly", true);
    EXPECT_TRUE(Exception::isDebugTargetActive("DT.NarrowOnly"));
    EXPECT_FALSE(Exception::isDebugTargetActive(L"DT.NarrowOnly"));
    Exception::setDebugTarget(L"DT.WideOnly", true);
    EXPECT_TRUE(Exception::isDebugTargetActive(L"DT.WideOnly"));
    EXPECT_FALSE(Exception::isDebugTargetActive("DT.WideOnly"));
    const TemporaryLog log;
    Exception::debug(L"DT.NarrowOnly", L"text");
    Exception::debug("DT.WideOnly", "text");
    EXPECT_FALSE(log.exists());
}

TEST(DebugTargets, WideNamesAreComparedByWholeUnits) {
    Exception::setDebugTarget(L"DT.\x0141", true);  // the low byte is 'A'
    EXPECT_FALSE(Exception::isDebugTargetActive(L"DT.A"));
    EXPECT_TRUE(Exception::isDebugTargetActive(L"DT.\x0141"));
}

/// Milliseconds since 1601. The log shows the last three digits.
std::uint64_t nowMs() {
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    return (std::uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime) / 10000;
}

/// While the object exists, the target "LogsIncludeMsecs" is switched on.
class Milliseconds {
public:
    Milliseconds() { Exception::setDebugTarget(L"LogsIncludeMsecs", true); }
    ~Milliseconds() { Exception::setDebugTarget(L"LogsIncludeMsecs", false); }
};

TEST(DebugTargets, WideMillisecondsTargetAddsMillisecondsToEveryLine) {
    const TemporaryLog log;
    std::uint64_t before = 0;
    std::uint64_t after = 0;
    {
        const Milliseconds shown;
        before = nowMs();
        Exception::warn("with");
        after = nowMs();
        const Exception e(L"with");
    }
    Exception::warn("without");
    const std::vector<test::LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 3u);
    ASSERT_TRUE(lines[0].milliseconds && lines[1].milliseconds);
    EXPECT_FALSE(lines[2].milliseconds);
    const std::uint64_t shown = std::stoul(*lines[0].milliseconds);
    EXPECT_LE((shown + 1000 - before % 1000) % 1000, after - before) << shown;
}

TEST(DebugTargets, NarrowMillisecondsTargetAddsNothing) {
    Exception::setDebugTarget("LogsIncludeMsecs", true);
    const TemporaryLog log;
    Exception::warn("without");
    Exception::setDebugTarget("LogsIncludeMsecs", false);
    ASSERT_EQ(log.lines().size(), 1u);
    EXPECT_FALSE(log.lines()[0].milliseconds);
}

}  // namespace
