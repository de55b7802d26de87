/// \file
/// Common code of the benchmarks that measure ratios against named peers in one run.
///
/// In each round, a case times the library and each peer in turn on one processor, so that disturbances affect all of
/// them. The state of the caches at the start of a pass depends on the pass before, so each round starts with a
/// different pass than the previous round. The ratio is the peer's median divided by the library's median. If the ratio
/// is above 1, the library is faster.
///
/// The spread is the interquartile range of the ratios of the rounds, divided by their median. Each peer has
/// its own spread. If any spread of a case is above 20 %, the case is measured again, up to three times in total.
/// The worst spread of each measurement is compared, and the best measurement is kept. Results whose spread is still
/// above 20 % are marked, and `finish` prints a warning.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "support/Options.h"
#include "support/Pass.h"

namespace bench {

struct Peer {
    std::string name;
    Pass pass;
};

/// The cases of one family. Each case runs when it is added.
class Family {
public:
    /// Reads the arguments that `Options.h` describes.
    Family(int argc, char** argv);

    /// Times `ours` and `peers`, and prints a line for each peer. Each pass must process `items` items. Results are
    /// nanoseconds per item. Does nothing if the options do not select the case `name`.
    void compare(const std::string& name, std::size_t items, const Pass& ours, const std::vector<Peer>& peers);

    /// Prints a warning if results are marked, and writes the CSV file if one was requested. Returns the exit code of
    /// the program.
    [[nodiscard]] int finish() const;

private:
    struct Line {
        std::string name;
        std::string peer;
        double oursNs;
        double peerNs;
        double spread;
    };

    /// Runs all rounds of a case once. Returns a line for each peer.
    [[nodiscard]] std::vector<Line> measure(const std::string& name, std::size_t items, const Pass& ours,
                                            const std::vector<Peer>& peers) const;

    Options m_options;
    std::vector<Line> m_lines;
};

}  // namespace bench
