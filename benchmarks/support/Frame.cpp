#include "support/Frame.h"

#include <windows.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace bench {

namespace {

constexpr std::size_t kFewestRounds = 15;

/// A pass is repeated until a sample takes at least this long, because of the clock's resolution.
constexpr double kShortestSampleNs = 1e6;

/// Receives each result: the compiler cannot remove a volatile store.
volatile std::uint64_t s_result = 0;

void bindToOneProcessor() {
    DWORD_PTR mine = 0;
    DWORD_PTR system = 0;
    if (GetProcessAffinityMask(GetCurrentProcess(), &mine, &system) && mine != 0) {
        SetThreadAffinityMask(GetCurrentThread(), std::bit_floor(mine));
    }
}

double timeNs(const Pass& pass, std::size_t repeats) {
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t repeat = 0; repeat < repeats; ++repeat) {
        s_result = pass();
    }
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
}

/// The quantile of the samples at `share`, from 0 to 1.
double quantile(std::vector<double> samples, double share) {
    const auto position =
        samples.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(samples.size() - 1));
    std::nth_element(samples.begin(), position, samples.end());
    return *position;
}

double median(const std::vector<double>& samples) {
    return quantile(samples, 0.5);
}

/// A pass and its samples: nanoseconds per item.
class Contender {
public:
    Contender(const Pass& pass, std::size_t items) : m_pass(pass), m_items(items) {
        while (timeNs(m_pass, m_repeats) < kShortestSampleNs) {
            m_repeats *= 2;
        }
    }

    void sample() { m_samples.push_back(timeNs(m_pass, m_repeats) / static_cast<double>(m_repeats * m_items)); }

    [[nodiscard]] const std::vector<double>& samples() const { return m_samples; }

private:
    const Pass& m_pass;
    std::size_t m_items;
    std::size_t m_repeats = 1;
    std::vector<double> m_samples;
};

/// The spread of the ratios of single rounds: their interquartile range divided by their median.
double spreadOf(const std::vector<double>& ours, const std::vector<double>& peer) {
    std::vector<double> ratios(ours.size());
    std::transform(peer.begin(), peer.end(), ours.begin(), ratios.begin(), std::divides<>());
    return (quantile(ratios, 0.75) - quantile(ratios, 0.25)) / median(ratios);
}

}  // namespace

Family::Family(int argc, char** argv) {
    for (int at = 1; at < argc; ++at) {
        const std::string_view argument = argv[at];
        const bool hasValue = at + 1 < argc;
        if (argument == "--csv" && hasValue) {
            m_csv = argv[++at];
        } else if (argument == "--rounds" && hasValue) {
            m_rounds = std::max<std::size_t>(kFewestRounds, std::strtoul(argv[++at], nullptr, 10));
        } else {
            m_filter = argument;
        }
    }
    bindToOneProcessor();
    std::printf("%-38s %-26s %10s %10s %7s %7s\n", "case", "peer", "ours ns", "peer ns", "ratio", "spread");
}

void Family::compare(const std::string& name, std::size_t items, const Pass& ours, const std::vector<Peer>& peers) {
    if (name.find(m_filter) == std::string::npos) {
        return;
    }
    Contender first(ours, items);
    std::vector<Contender> others;
    others.reserve(peers.size());
    for (const Peer& peer : peers) {
        others.emplace_back(peer.pass, items);
    }
    for (std::size_t round = 0; round < m_rounds; ++round) {
        first.sample();
        for (Contender& other : others) {
            other.sample();
        }
    }
    for (std::size_t peer = 0; peer < peers.size(); ++peer) {
        const std::vector<double>& samples = others[peer].samples();
        const Line line = {name, peers[peer].name, median(first.samples()), median(samples),
                           spreadOf(first.samples(), samples)};
        std::printf("%-38s %-26s %10.2f %10.2f %7.2f %6.1f%%\n", line.name.c_str(), line.peer.c_str(), line.oursNs,
                    line.peerNs, line.peerNs / line.oursNs, line.spread * 100);
        m_lines.push_back(line);
    }
    static_cast<void>(std::fflush(stdout));
}

int Family::finish() const {
    if (m_csv.empty()) {
        return EXIT_SUCCESS;
    }
    std::FILE* const file = std::fopen(m_csv.c_str(), "w");
    if (!file) {
        std::perror(m_csv.c_str());
        return EXIT_FAILURE;
    }
    std::fputs("case,peer,ours_ns,peer_ns,ratio,spread\n", file);
    for (const Line& line : m_lines) {
        std::fprintf(file, "%s,%s,%.3f,%.3f,%.3f,%.3f\n", line.name.c_str(), line.peer.c_str(), line.oursNs,
                     line.peerNs, line.peerNs / line.oursNs, line.spread);
    }
    return std::fclose(file) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace bench
