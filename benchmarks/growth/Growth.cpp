#include "Growth.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "Rise.h"
#include "support/CsvFile.h"
#include "support/Sampler.h"
#include "support/Statistics.h"

namespace bench {

namespace {

/// The maximum number of elements if `--rounds 1` is given.
constexpr std::size_t kMaxQuickCount = 100;

/// The passes are sampled until there are `kFewestSamples` samples and `kShortestNs` have elapsed, or until
/// `kLongestNs` have elapsed. A quick run takes one sample.
constexpr std::size_t kFewestSamples = 5;
constexpr double kShortestNs = 1e8;
constexpr double kLongestNs = 5e9;

/// The size of the largest cache of the processor; 0 if the system does not report the caches.
std::size_t largestCacheBytes() {
    std::array<SYSTEM_LOGICAL_PROCESSOR_INFORMATION, 256> entries = {};
    DWORD bytes = sizeof entries;
    std::size_t largest = 0;
    if (GetLogicalProcessorInformation(entries.data(), &bytes)) {
        for (std::size_t at = 0; at != bytes / sizeof entries[0]; ++at) {
            if (entries[at].Relationship == RelationCache) {
                largest = std::max<std::size_t>(largest, entries[at].Cache.Size);
            }
        }
    }
    return largest;
}

/// Returns `numbers`, in a quick run without the numbers above `kMaxQuickCount`.
std::vector<std::size_t> allowed(std::vector<std::size_t> numbers, const Options& options) {
    if (options.isQuick()) {
        std::erase_if(numbers, [](std::size_t number) { return number > kMaxQuickCount; });
    }
    return numbers;
}

/// Samples both steps alternately, and returns their medians in nanoseconds per item.
std::pair<double, double> costsOf(const Step& ours, const Step& peer, Clock clock, bool isQuick) {
    const Calibration calibration = isQuick ? Calibration::None : Calibration::ByTime;
    Sampler first(ours.pass, ours.items, clock, calibration);
    Sampler second(peer.pass, peer.items, clock, calibration);
    const double start = clockNs(Clock::Elapsed);
    for (std::size_t sample = 1;; ++sample) {
        first.sample();
        second.sample();
        const double elapsedNs = clockNs(Clock::Elapsed) - start;
        if (isQuick || elapsedNs > kLongestNs || (sample >= kFewestSamples && elapsedNs > kShortestNs)) {
            return {median(first.samples()), median(second.samples())};
        }
    }
}

const char* markOf(double rise) {
    return rise > kMaxRise ? " *" : "";
}

void printWorst(const char* where, const Rise& ours, const Rise& peers) {
    if (ours.count() > 1) {
        std::printf("%-34s ours %.2f%s, peer %.2f%s\n", where, ours.worst(), markOf(ours.worst()), peers.worst(),
                    markOf(peers.worst()));
    }
}

}  // namespace

std::vector<std::size_t> numbersUpTo(std::size_t largest) {
    std::vector<std::size_t> numbers;
    for (std::size_t power = 1; power <= largest; power *= 10) {
        for (const std::size_t number : {power, 2 * power, 5 * power}) {
            if (number <= largest) {
                numbers.push_back(number);
            }
        }
    }
    return numbers;
}

Growth::Growth(Options options) : m_options(std::move(options)), m_cacheBytes(largestCacheBytes()) {
    std::printf("Nanoseconds per element are %s; nanoseconds per line of the error log are\n"
                "elapsed time. The largest cache has %.0f MiB. * marks a cost of more than %.1f times the cost for a\n"
                "smaller number of elements. Costs within and beyond the caches are compared separately.\n",
                describe(Clock::Processor), static_cast<double>(m_cacheBytes) / (1 << 20), kMaxRise);
}

void Growth::measure(const Work& work) {
    if (!m_options.selects(work.name)) {
        return;
    }
    std::printf("\n%s, compared with: %s\n", work.name.c_str(), work.peerName.c_str());
    std::array<Rise, 2> ours;  // index 0: costs within the caches; index 1: costs beyond the caches
    std::array<Rise, 2> peers;
    for (const std::size_t elements : allowed(work.numbers, m_options)) {
        const Line line = measureOne(work, elements);
        const std::size_t where = line.isBeyondCaches ? 1 : 0;
        std::printf("%12zu %-21s ours %9.2f%-2s  peer %9.2f%-2s\n", elements,
                    line.isBeyondCaches ? "beyond the caches" : "", line.oursNs, markOf(ours[where].add(line.oursNs)),
                    line.peerNs, markOf(peers[where].add(line.peerNs)));
        static_cast<void>(std::fflush(stdout));
        m_lines.push_back(line);
    }
    printWorst("worst rise within the caches", ours[0], peers[0]);
    printWorst("worst rise beyond the caches", ours[1], peers[1]);
}

Growth::Line Growth::measureOne(const Work& work, std::size_t elements) const {
    const auto [oursNs, peerNs] = costsOf(work.ours(elements), work.peer(elements), work.clock, m_options.isQuick());
    return {work.name, elements, elements * work.bytesPerElement > m_cacheBytes, oursNs, work.peerName, peerNs};
}

int Growth::finish() const {
    if (m_options.csv.empty()) {
        return EXIT_SUCCESS;
    }
    std::string text = csvLine({"case", "elements", "beyond_caches", "ours_ns", "peer", "peer_ns"});
    for (const Line& line : m_lines) {
        text += csvLine({csvField(line.name), std::to_string(line.elements), line.isBeyondCaches ? "yes" : "no",
                         csvField(line.oursNs), csvField(line.peer), csvField(line.peerNs)});
    }
    return writeFile(m_options.csv, text) ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace bench
