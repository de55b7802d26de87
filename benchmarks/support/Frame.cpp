#include "support/Frame.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "support/Clock.h"
#include "support/CsvFile.h"
#include "support/Sampler.h"
#include "support/Statistics.h"

namespace bench {

namespace {

constexpr double kMaxSpread = 0.2;
constexpr int kMaxAttempts = 3;

/// The largest spread of any line.
template <class Lines>
double worstSpread(const Lines& lines) {
    double worst = 0;
    for (const auto& line : lines) {
        worst = std::max(worst, line.spread);
    }
    return worst;
}

}  // namespace

Family::Family(int argc, char** argv) : m_options(readOptions(argc, argv)) {
    std::printf("Nanoseconds are %s.\n", describe(Clock::Processor));
    std::printf("%-44s %-30s %10s %10s %7s %7s\n", "case", "peer", "ours ns", "peer ns", "ratio", "spread");
}

void Family::compare(const std::string& name, std::size_t items, const Pass& ours, const std::vector<Peer>& peers) {
    if (!m_options.selects(name)) {
        return;
    }
    std::vector<Line> best = measure(name, items, ours, peers);
    for (int attempt = 1; attempt != kMaxAttempts && worstSpread(best) > kMaxSpread; ++attempt) {
        std::vector<Line> lines = measure(name, items, ours, peers);
        if (worstSpread(lines) < worstSpread(best)) {
            best = std::move(lines);
        }
    }
    for (const Line& line : best) {
        std::printf("%-44s %-30s %10.2f %10.2f %7.2f %6.1f%%%s\n", line.name.c_str(), line.peer.c_str(), line.oursNs,
                    line.peerNs, line.peerNs / line.oursNs, line.spread * 100, line.spread > kMaxSpread ? " !" : "");
        m_lines.push_back(line);
    }
    static_cast<void>(std::fflush(stdout));
}

std::vector<Family::Line> Family::measure(const std::string& name, std::size_t items, const Pass& ours,
                                          const std::vector<Peer>& peers) const {
    const Calibration calibration = m_options.isQuick() ? Calibration::None : Calibration::ByTimeAndPasses;
    std::vector<Sampler> samplers;
    samplers.emplace_back(ours, items, Clock::Processor, calibration);
    for (const Peer& peer : peers) {
        samplers.emplace_back(peer.pass, items, Clock::Processor, calibration);
    }
    for (std::size_t round = 0; round != m_options.rounds; ++round) {
        for (std::size_t turn = 0; turn != samplers.size(); ++turn) {
            samplers[(round + turn) % samplers.size()].sample();
        }
    }
    std::vector<Line> lines;
    const std::vector<double>& oursNs = samplers.front().samples();
    for (std::size_t peer = 0; peer != peers.size(); ++peer) {
        const std::vector<double>& peerNs = samplers[peer + 1].samples();
        lines.push_back({name, peers[peer].name, median(oursNs), median(peerNs), spreadOfRatios(oursNs, peerNs)});
    }
    return lines;
}

int Family::finish() const {
    const auto unsteady =
        std::count_if(m_lines.begin(), m_lines.end(), [](const Line& line) { return line.spread > kMaxSpread; });
    if (unsteady != 0) {
        std::fprintf(stderr,
                     "Warning: the spread of %d of %d results is above %.0f %% (marked !). Measure them again "
                     "while nothing else runs.\n",
                     static_cast<int>(unsteady), static_cast<int>(m_lines.size()), kMaxSpread * 100);
    }
    if (m_options.csv.empty()) {
        return EXIT_SUCCESS;
    }
    std::string text = csvLine({"case", "peer", "ours_ns", "peer_ns", "ratio", "spread"});
    for (const Line& line : m_lines) {
        text += csvLine({csvField(line.name), csvField(line.peer), csvField(line.oursNs), csvField(line.peerNs),
                         csvField(line.peerNs / line.oursNs), csvField(line.spread)});
    }
    return writeFile(m_options.csv, text) ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace bench
