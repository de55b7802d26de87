/// \file
/// Common code of all benchmarks, which measure ratios against named peers in one run.
///
/// In each round, a case times the library and each peer in turn on one processor, so that disturbances affect all of
/// them. The ratio is the peer's median divided by the library's: above 1, the library is faster.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

/// Processes all items of a case once. Returns a value that depends on every result, so that no work is optimised away.
using Pass = std::function<std::uint64_t()>;

struct Peer {
    std::string name;
    Pass pass;
};

/// The cases of one family. Each runs when it is added.
class Family {
public:
    /// Binds the thread to one processor. Arguments: --csv <file>, --rounds <count> (at least 15), and a text: only
    /// cases whose names contain it are run.
    Family(int argc, char** argv);

    /// Times `ours` and `peers`, each of which processes `items` items, and prints a line for each peer.
    void compare(const std::string& name, std::size_t items, const Pass& ours, const std::vector<Peer>& peers);

    /// Writes the CSV file, if one was requested. Returns the exit code of the program.
    [[nodiscard]] int finish() const;

private:
    struct Line {
        std::string name;
        std::string peer;
        double oursNs;
        double peerNs;
        double spread;
    };

    std::vector<Line> m_lines;
    std::string m_csv;
    std::string m_filter;
    std::size_t m_rounds = 21;
};

}  // namespace bench
