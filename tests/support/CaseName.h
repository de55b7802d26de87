/// \file
/// The names of the cases of a parametrised test: the member `name` of each row of its table.
///
///     INSTANTIATE_TEST_SUITE_P(Each, LockLeaks, testing::ValuesIn(kCycles), test::caseName);
#pragma once

#include <string>

namespace test {

inline constexpr auto caseName = [](const auto& info) { return std::string(info.param.name); };

}  // namespace test
