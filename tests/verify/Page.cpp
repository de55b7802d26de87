#include "verify/Page.h"

#include <cstdio>
#include <map>

namespace verify {

namespace {

constexpr const char* kStyle =
    "body{font:15px/1.5 system-ui,sans-serif;max-width:60em;margin:2em auto;padding:0 1em}"
    "table{border-collapse:collapse}th,td{border-bottom:1px solid #ccc;padding:.2em 1em .2em 0;text-align:left}"
    "pre{background:#f4f4f4;padding:.5em;overflow:auto}.passed{color:#176f2c}.failed{color:#b3261e}";

std::string row(const std::vector<std::string>& cells, const char* tag = "td") {
    std::string text = "<tr>";
    for (const std::string& cell : cells) {
        text += std::string("<") + tag + ">" + cell + "</" + tag + ">";
    }
    return text + "</tr>\n";
}

std::string tableOfSuites(const std::vector<TestResult>& results) {
    struct Suite {
        Totals totals;
        double seconds = 0;
    };
    std::map<std::string, Suite> suites;
    for (const TestResult& result : results) {
        suites[result.suite].totals.add(result);
        suites[result.suite].seconds += result.seconds;
    }
    std::string text = "<table>\n" + row({"Suite", "Passed", "Failed", "Skipped", "Seconds"}, "th");
    for (const auto& [name, suite] : suites) {
        char seconds[32];
        (void)std::snprintf(seconds, sizeof seconds, "%.1f", suite.seconds);
        text += row({name, std::to_string(suite.totals.passed), std::to_string(suite.totals.failed),
                     std::to_string(suite.totals.skipped), seconds});
    }
    return text + "</table>\n";
}

/// A section with the cases of one outcome, or an empty text if no case has this outcome. The section of failed cases
/// also contains the end of the output of each program with a failed case.
std::string section(const char* title, Outcome outcome, const std::vector<TestResult>& results) {
    std::string text;
    for (const TestResult& result : results) {
        for (const CaseResult& c : result.cases) {
            if (c.outcome == outcome) {
                text += "<h3>" + result.name + ": " + c.name + "</h3>\n<pre>" + c.message + "</pre>\n";
            }
        }
        if (outcome == Outcome::Failed && result.hasFailure() && !result.output.empty()) {
            text += "<p>The end of the output of " + result.name + ":</p>\n<pre>" + result.output + "</pre>\n";
        }
    }
    return text.empty() ? text : std::string("<h2>") + title + "</h2>\n" + text;
}

/// The end of the output of each successful program that is not a GoogleTest program.
std::string reports(const std::vector<TestResult>& results) {
    std::string text;
    for (const TestResult& result : results) {
        if (!result.hasFailure() && !result.output.empty()) {
            text += "<h2>" + result.name + "</h2>\n<pre>" + result.output + "</pre>\n";
        }
    }
    return text;
}

}  // namespace

std::string summaryPage(const std::string& conclusion, const std::string& facts,
                        const std::vector<TestResult>& results) {
    Totals totals;
    for (const TestResult& result : results) {
        totals.add(result);
    }
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\"/>\n<title>vorelCore: " +
           escaped(conclusion) + "</title>\n<style>" + kStyle +
           "</style>\n</head>\n<body>\n<h1>vorelCore</h1>\n<p class=\"" + (totals.failed == 0 ? "passed" : "failed") +
           "\"><strong>" + escaped(conclusion) + "</strong></p>\n<pre>" + escaped(facts) + "</pre>\n" +
           section("Failed", Outcome::Failed, results) + "<h2>Suites</h2>\n" + tableOfSuites(results) +
           section("Skipped", Outcome::Skipped, results) + reports(results) + "</body>\n</html>\n";
}

}  // namespace verify
