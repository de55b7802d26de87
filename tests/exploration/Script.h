/// \file
/// Short scripts of system calls, to compare the model with a system. Each step is made by one of three threads, A, B
/// or C, in the order of the script. No step waits. In most steps, the word after the call is a slot, which is
/// the script's name for a handle.
///
///     A mutex m owned       creates a mutex that A owns
///     B wait m              258, WAIT_TIMEOUT
///     A end                 the thread ends
///     B wait m              128, WAIT_ABANDONED
#pragma once

#include <string>
#include <vector>

namespace exploration {

struct Script {
    std::string name;
    std::vector<std::string> steps;
};

/// The scripts for comparing the model with a system: scripts for each rule of the model, and random scripts.
std::vector<Script> allScripts();

/// Makes the steps of a script on the real system, or, if `isSimulated`, on a new model of it. Returns a line for each
/// step: its result and its error, for example "1" or "failed 5".
std::vector<std::string> run(const Script& script, bool isSimulated);

}  // namespace exploration
