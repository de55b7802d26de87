#include "vorel/system/ProcessPriority.h"

#include <type_traits>

#include <gtest/gtest.h>

#include <windows.h>

namespace {

using vorel::util::PPC_AboveNormal;
using vorel::util::PPC_BelowNormal;
using vorel::util::PPC_Normal;
using vorel::util::ProcessPriorityClass;
using vorel::util::SetProcessPriority;

static_assert(std::is_same_v<std::underlying_type_t<ProcessPriorityClass>, int>);
static_assert(PPC_AboveNormal == 0 && PPC_Normal == 1 && PPC_BelowNormal == 2,
              "the enumeration is unscoped and has these values");

class SetProcessPriorityTest : public ::testing::Test {
protected:
    void TearDown() override { SetPriorityClass(GetCurrentProcess(), m_before); }

    /// The priority class of the process after the call.
    static DWORD classAfter(ProcessPriorityClass priority, int unused) {
        SetProcessPriority(priority, unused);
        return GetPriorityClass(GetCurrentProcess());
    }

private:
    DWORD m_before = GetPriorityClass(GetCurrentProcess());
};

TEST_F(SetProcessPriorityTest, SetsThePriorityClass) {
    EXPECT_EQ(classAfter(PPC_AboveNormal, 0), DWORD{0x8000});
    EXPECT_EQ(classAfter(PPC_Normal, 0), DWORD{0x20});
    EXPECT_EQ(classAfter(PPC_BelowNormal, 0), DWORD{0x4000});
}

TEST_F(SetProcessPriorityTest, UnknownValuesSetTheNormalClass) {
    for (const int value : {-1, 3, 0x4000, 0x7FFFFFFF}) {
        ASSERT_EQ(classAfter(PPC_BelowNormal, 0), DWORD{0x4000});
        EXPECT_EQ(classAfter(static_cast<ProcessPriorityClass>(value), 0), DWORD{0x20}) << value;
    }
}

TEST_F(SetProcessPriorityTest, SecondArgumentIsIgnored) {
    for (const int unused : {-1, 1, 0x8000}) {
        EXPECT_EQ(classAfter(PPC_BelowNormal, unused), DWORD{0x4000}) << unused;
    }
}

}  // namespace
