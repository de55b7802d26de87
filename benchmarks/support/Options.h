/// \file
/// The arguments that all benchmark programs accept.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace bench {

struct Options {
    std::string csv;           ///< where the results are written; empty: only printed
    std::string filter;        ///< only cases whose names contain it are run
    std::size_t rounds = 31;   ///< 1: each pass runs once, for tests of the benchmarks themselves
    unsigned long server = 0;  ///< the Linux process id of Wine's server

    [[nodiscard]] bool isQuick() const { return rounds == 1; }
    [[nodiscard]] bool selects(std::string_view name) const { return name.find(filter) != std::string_view::npos; }
};

/// Reads --csv <file>, --rounds <count> (1, or at least 15), --server <id> and a part of the names of cases. Sets the
/// clock's server, and binds the thread to one processor. Ends the program with code 2 and a text if an argument is
/// wrong.
[[nodiscard]] Options readOptions(int count, char** arguments);

}  // namespace bench
