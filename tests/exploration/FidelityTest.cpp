/// \file
/// Compares the model with the system that runs the tests.

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "exploration/Script.h"
#include "exploration/SimulatedImports.h"

namespace {

using exploration::Script;

/// A step for which Wine or a newer version of Windows differs from the documentation. The model follows the
/// documentation. See docs/platform-differences.md.
struct Difference {
    const char* call;
    const char* system;
    const char* model;
};

const Difference kDifferences[] = {
    // Under Wine, UnlockFileEx fails with ERROR_LOCK_VIOLATION instead of ERROR_NOT_LOCKED.
    {"unlock", "failed 33", "failed 158"},
    // Under Wine, a write at the handle's position succeeds, even if another handle has locked the range.
    {"print", "done", "failed errno 13"},
    // Under Wine, and on NTFS with newer versions of Windows, the name of a deleted file that is still open can be used
    // again.
    {"open", "done", "failed errno 13"},
};

bool isKnown(const std::string& step, const std::string& system, const std::string& model) {
    return std::any_of(std::begin(kDifferences), std::end(kDifferences), [&](const Difference& difference) {
        return step.find(difference.call) == 2 && system == difference.system && model == difference.model;
    });
}

TEST(Fidelity, TheModelDoesWhatTheSystemDoes) {
    const exploration::SimulatedImports imports;
    const std::vector<Script> scripts = exploration::allScripts();
    EXPECT_GE(scripts.size(), 200u);
    for (const Script& script : scripts) {
        const std::vector<std::string> system = exploration::run(script, false);
        const std::vector<std::string> model = exploration::run(script, true);
        ASSERT_EQ(system.size(), model.size());
        for (std::size_t step = 0; step < system.size(); ++step) {
            if (system[step] == model[step]) {
                continue;
            }
            if (!isKnown(script.steps[step], system[step], model[step])) {
                ADD_FAILURE() << script.name << ", step " << step + 1 << ", " << script.steps[step] << ": system "
                              << system[step] << ", model " << model[step] << "\n"
                              << testing::PrintToString(script.steps);
            }
            break;  // later steps may depend on this step
        }
    }
}

}  // namespace
