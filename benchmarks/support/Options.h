/// \file
/// The arguments that all benchmark programs accept.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace bench {

struct Options {
    std::string csv;           ///< the file for the results; if empty, they are only printed
    std::string filter;        ///< only cases whose names contain this text are run
    std::size_t rounds = 31;   ///< 1 runs each pass once, for tests of the benchmarks themselves
    unsigned long server = 0;  ///< the Linux process id of Wine's server

    [[nodiscard]] bool isQuick() const { return rounds == 1; }
    [[nodiscard]] bool selects(std::string_view name) const { return name.find(filter) != std::string_view::npos; }
};

/// Reads --csv <file>, --rounds <count> (1, or at least 15), --server <id> and a part of the names of the cases to run.
/// Sets the clock's server, and binds the thread to one processor. If an argument is invalid, prints a message and ends
/// the program with code 2.
[[nodiscard]] Options readOptions(int count, char** arguments);

}  // namespace bench
