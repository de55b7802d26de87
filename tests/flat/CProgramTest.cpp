#include "flat/CProgram.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "sync/ObjectNames.h"

namespace {

TEST(FlatInterface, CanBeUsedFromC) {
    const std::wstring name = test::uniqueName(L"flat_c");
    const std::vector<std::uint16_t> units(name.c_str(), name.c_str() + name.size() + 1);
    const char* const failure = firstFailureInC(units.data());
    EXPECT_EQ(failure, nullptr) << failure;
}

}  // namespace
