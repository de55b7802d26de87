/// \file
/// The summary page: one HTML file without links to others.
#pragma once

#include <string>
#include <vector>

#include "verify/Results.h"

namespace verify {

/// Returns the page in UTF-8. It is also well-formed XML. `conclusion` and `facts` are not escaped yet; `facts` has a
/// line for each.
std::string summaryPage(const std::string& conclusion, const std::string& facts,
                        const std::vector<TestResult>& results);

}  // namespace verify
