/// \file
/// The summary page, which is one HTML file without links to other files.
#pragma once

#include <string>
#include <vector>

#include "verify/Results.h"

namespace verify {

/// Returns the page as UTF-8 text, which is also well-formed XML. `facts` contains one fact per line. The function
/// escapes `conclusion` and `facts`; the texts of `results` must be escaped already.
std::string summaryPage(const std::string& conclusion, const std::string& facts,
                        const std::vector<TestResult>& results);

}  // namespace verify
