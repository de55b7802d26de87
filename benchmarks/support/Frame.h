/// \file
/// The frame of every benchmark: ratios against named peers, measured in one run.
///
/// A case times ours and each of its peers in turn within each round, on one processor, so that whatever disturbs the
/// machine disturbs all of them. The ratio is that of the medians: above 1, ours is the faster one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

/// One pass over all items of a case. What it returns depends on every result, so that no work can be left out.
using Pass = std::function<std::uint64_t()>;

struct Peer {
    std::string name;
    Pass pass;
};

/// The cases of one family, run as they are added.
class Family {
public:
    /// Binds the thread to one processor. The arguments: --csv <file>, --rounds <count> (15 at least), and a text that
    /// the names of the cases to run must hold.
    Family(int argc, char** argv);

    /// Times `ours` and the `peers` over `items` items, and prints a line for each peer.
    void compare(const std::string& name, std::size_t items, const Pass& ours, const std::vector<Peer>& peers);

    /// Writes the file; the result of the program.
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
