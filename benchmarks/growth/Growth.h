/// \file
/// Measures how the cost of one element depends on the number of elements.
///
/// With few elements, the fixed part of the work dominates, so the cost of one element first falls. The cost rises when
/// the data no longer fits into the processor's caches. Otherwise the cost should be constant, because twice the
/// elements should take twice the time. The peers do the same work, so their costs show the effect of the machine.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "support/Clock.h"
#include "support/Options.h"
#include "support/Pass.h"

namespace bench {

/// A pass and the number of items that it processes; the cost is the time per item.
struct Step {
    Pass pass;
    std::size_t items;
};

/// A function that prepares the step for a number of elements.
using Steps = std::function<Step(std::size_t elements)>;

/// A case: work of the library, and the same work of a peer.
struct Work {
    std::string name;
    std::vector<std::size_t> numbers;  ///< the numbers of elements, in ascending order
    std::size_t bytesPerElement;       ///< memory that a pass accesses for each element
    Steps ours;
    std::string peerName;
    Steps peer;
    Clock clock = Clock::Processor;
};

/// 1, 2, 5, 10, 20, 50 … up to `largest`.
[[nodiscard]] std::vector<std::size_t> numbersUpTo(std::size_t largest);

/// Runs the cases of the growth family, and keeps their results.
class Growth {
public:
    explicit Growth(Options options);

    /// Times the work for each of its numbers of elements, and prints a line for each number. A cost is marked if it is
    /// more than 1.5 times the cost for a smaller number of elements. A cost within the caches is not compared with a
    /// cost beyond the caches. With `--rounds 1`, numbers above 100 are omitted. If the filter does not select the
    /// case, the function does nothing.
    void measure(const Work& work);

    /// Writes the CSV file, if one was requested. Returns the exit code of the program.
    [[nodiscard]] int finish() const;

private:
    struct Line {
        std::string name;
        std::size_t elements;
        bool isBeyondCaches;
        double oursNs;
        std::string peer;
        double peerNs;
    };

    [[nodiscard]] Line measureOne(const Work& work, std::size_t elements) const;

    Options m_options;
    std::size_t m_cacheBytes;
    std::vector<Line> m_lines;
};

}  // namespace bench
