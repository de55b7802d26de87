/// \file
/// Runs a program with a time limit, and returns its output.
#pragma once

#include <filesystem>
#include <string>

namespace verify {

struct ProgramResult {
    unsigned long exitCode = 0;
    bool inTime = true;  ///< false if the limit was exceeded, and the program and its processes were terminated
    std::string output;  ///< the standard output and the standard error output
};

/// Runs `program` in `folder`, which must be writable, and waits for its end. `arguments` is the rest of the command
/// line, in ASCII. If processes that `program` started still run when it ends, they are terminated. Several threads may
/// call this at the same time.
/// \throws std::runtime_error if the program cannot be started, or if its output cannot be read.
ProgramResult runProgram(const std::filesystem::path& program, const std::string& arguments,
                         const std::filesystem::path& folder, unsigned long limitMs);

}  // namespace verify
