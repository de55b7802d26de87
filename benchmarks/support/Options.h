/// \file
/// The arguments that all benchmark programs accept.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace bench {

struct Options {
    std::string csv;           ///< the file for the results; if empty, the results are only printed
    std::string filter;        ///< only cases whose names contain this text are run; empty: all cases
    std::size_t rounds = 31;   ///< if 1, each pass runs only once; the tests of the benchmarks use 1
    unsigned long server = 0;  ///< the Linux process id of Wine's server; 0 if it was not given

    [[nodiscard]] bool isQuick() const { return rounds == 1; }
    [[nodiscard]] bool selects(std::string_view name) const { return name.find(filter) != std::string_view::npos; }
};

/// Reads --csv <file>, --rounds <count>, --server <id>, and a filter: only cases whose names contain the filter are
/// run. The last of several filters counts. A number of rounds from 2 to 14 becomes 15 without a message. Passes the
/// process id of Wine's server to the clock, and binds the thread to one processor. If an argument is invalid, prints a
/// message and ends the program with code 2.
[[nodiscard]] Options readOptions(int count, char** arguments);

}  // namespace bench
