/// \file
/// Compares the model of the explorer with the system that runs this program. Runs scripts of calls on both. If the
/// results of a script differ, prints its steps up to the first step with different results. Run this program on a new
/// version of Windows or Wine. If the results of all calls that the library makes are equal, the explorer's results are
/// valid for this version.

#include <cstdio>
#include <string>
#include <vector>

#include "exploration/Script.h"
#include "exploration/SimulatedImports.h"

int main() {
    const exploration::SimulatedImports imports;
    std::size_t steps = 0;
    std::size_t differences = 0;
    const std::vector<exploration::Script> scripts = exploration::allScripts();
    for (const exploration::Script& script : scripts) {
        const std::vector<std::string> system = exploration::run(script, false);
        const std::vector<std::string> model = exploration::run(script, true);
        bool differs = false;
        for (std::size_t step = 0; step < system.size(); ++step, ++steps) {
            // Later steps of a script may depend on the first step that differs.
            if (system[step] != model[step] && !differs) {
                differs = true;
                ++differences;
                std::printf("%s\n", script.name.c_str());
                for (std::size_t before = 0; before <= step; ++before) {
                    std::printf("    %-28s system: %-18s model: %s\n", script.steps[before].c_str(),
                                system[before].c_str(), model[before].c_str());
                }
            }
        }
    }
    std::printf("%zu scripts, %zu steps: %zu scripts with a difference\n", scripts.size(), steps, differences);
    return 0;
}
