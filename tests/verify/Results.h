/// \file
/// The results of a test program, which are the outcomes of its cases.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace verify {

enum class Outcome { Passed, Failed, Skipped };

/// The result of a case. The texts are escaped, so they can be written into an XML or HTML file.
struct CaseResult {
    std::string name;  ///< such as "Array.GrowsByHalf"
    Outcome outcome;
    std::string message;  ///< the text of the failures, or the reason why the case was skipped
};

/// The result of a test, which is one start of a test program.
struct TestResult {
    std::string name;
    std::string suite;
    double seconds = 0;
    std::vector<CaseResult> cases;
    std::string output;  ///< the end of the program's output, escaped; empty if a GoogleTest program succeeded

    [[nodiscard]] bool hasFailure() const;
};

/// The number of cases with each outcome.
struct Totals {
    unsigned int passed = 0;
    unsigned int failed = 0;
    unsigned int skipped = 0;

    void add(const TestResult& result);
};

/// Reads the cases of an XML file that GoogleTest has written. Cases that did not run are not returned.
std::vector<CaseResult> readCases(std::string_view xml);

/// `bytes` as UTF-8 text for an XML or HTML file. Special characters are escaped, invalid sequences are replaced, and
/// carriage returns are removed. Other characters that XML does not allow become question marks: characters below
/// U+0020 except tabs and line feeds, U+FFFE and U+FFFF.
std::string escaped(std::string_view bytes);

}  // namespace verify
