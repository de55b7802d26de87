/// \file
/// The summary page, which is one HTML file without links to other files.
#pragma once

#include <string>
#include <vector>

#include "verify/Results.h"

namespace verify {

/// Returns the page in UTF-8. It is also well-formed XML. The function escapes `conclusion` and `facts`.
/// `facts` has a line for each fact.
std::string summaryPage(const std::string& conclusion, const std::string& facts,
                        const std::vector<TestResult>& results);

}  // namespace verify
