/// \file
/// Short scripts of system calls, to compare the model with a system. A step consists of a thread (A, B or C), the call
/// that this thread makes, and the arguments of the call. The steps are made one after another, and no step blocks. In
/// most steps, the word after the call is a slot, which is the script's name for a handle.
///
///     A mutex m owned       creates a mutex that A owns
///     B wait m              returns 258 (WAIT_TIMEOUT)
///     A end                 ends the thread A
///     B wait m              returns 128 (WAIT_ABANDONED)
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
/// step: its result, for example "done" or "258", or its error, for example "failed 5".
std::vector<std::string> run(const Script& script, bool isSimulated);

}  // namespace exploration
