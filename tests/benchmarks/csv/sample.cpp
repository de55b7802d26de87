/// \file
/// Runs cases and peers. Some of their names must be quoted in a CSV file. Prints how often the passes of the first
/// case ran.
///
/// In the case "unsteady", each pass of the library takes twelve milliseconds in one sample and three milliseconds in
/// the next sample, in turn. In this case, a sample has four passes, or one pass with `--rounds 1`.

#include <chrono>
#include <cstdio>

#include "support/Frame.h"

namespace {

void takeMilliseconds(int count) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(count);
    while (std::chrono::steady_clock::now() < end) {}
}

}  // namespace

int main(int argc, char** argv) {
    bench::Family family(argc, argv);
    int oursCalls = 0;
    int peerCalls = 0;
    const bench::Pass ours = [&oursCalls] { return static_cast<std::uint64_t>(++oursCalls); };
    const bench::Pass peer = [&peerCalls] { return static_cast<std::uint64_t>(++peerCalls); };
    family.compare("plain", 1, ours, {{"peer", peer}});
    std::printf("calls: %d and %d\n", oursCalls, peerCalls);
    family.compare("format double, narrow", 10, ours, {{"printf(\"%.15g\", x)", peer}, {"two\r\nlines", peer}});
    family.compare("\"quoted\"", 1, ours, {{",", peer}, {"\"", peer}});
    family.compare("\xCE\xBC"
                   "s; tab\t",
                   1, ours, {{" spaces ", peer}});
    int passes = 0;
    family.compare("unsteady", 1,
                   [&passes] {
                       takeMilliseconds(passes++ / 4 % 2 == 0 ? 12 : 3);
                       return std::uint64_t{1};
                   },
                   {{"steady", [] {
                         takeMilliseconds(3);
                         return std::uint64_t{1};
                     }}});
    return family.finish();
}
