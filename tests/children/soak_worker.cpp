/// \file
/// One process of the soak test. Until the test ends or kills it, the process writes lines to the common log, adds to
/// the common number under a named mutex, wakes one neighbour, is woken by the other neighbour, and converts texts and
/// converts them back.
///
///     run=<name> process=<number> life=<number> log=<path>
///
/// A killed process is replaced by a process with the same `process` and a new `life`.
///
/// The process counts its operations in the shared statistics. The exit code is 0 for success, 2 if a text or a number
/// changes when it is converted and converted back, and 3 for an exception.

#include <atomic>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>

#include <vorel/vorelCore.h>

#include <windows.h>

#include "stress/WriterResult.h"
#include "support/ChildArguments.h"
#include "support/Handle.h"
#include "support/SoakStats.h"

namespace {

namespace util = vorel::util;
using vorel::BaseString;

constexpr unsigned int kWarmUpRounds = 300;
constexpr unsigned int kRoundsPerSample = 64;
/// In every third round, the process logs a line while it owns the mutex, so that some processes are killed while they
/// own it.
constexpr unsigned int kRoundsPerLockedLine = 3;

void increase(volatile long long& count) {
    count = count + 1;
}

/// The private memory of the process. The function adds up the committed private regions of the address space, because
/// not every system reports the size of the private memory.
long long privateKiB() {
    SIZE_T bytes = 0;
    MEMORY_BASIC_INFORMATION region = {};
    for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region) != 0;) {
        bytes += region.State == MEM_COMMIT && region.Type == MEM_PRIVATE ? region.RegionSize : 0;
        at = static_cast<const char*>(region.BaseAddress) + region.RegionSize;
    }
    return static_cast<long long>(bytes / 1024);
}

/// The index of a new handle. The system reuses the indexes of closed handles before it extends its table of handles,
/// so the result increases in the long run if handles leak.
long long nextHandleIndex() {
    const test::Handle handle(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    return reinterpret_cast<long long>(handle.get()) / 4;
}

class SoakWorker {
public:
    explicit SoakWorker(const test::ChildArguments& arguments)
        : m_process(static_cast<unsigned int>(arguments.number("process"))),
          m_life(static_cast<unsigned int>(arguments.number("life"))),
          m_stats(arguments.wide("run") + L"_stats"),
          m_counts(m_stats->processes[m_process]),
          m_mutex((arguments.wide("run") + L"_mutex").c_str(), false, false),
          m_mine(conditionName(arguments, m_process).c_str()),
          m_neighbours(conditionName(arguments, (m_process + 1) % test::SoakStats::kProcesses).c_str()),
          m_numbers(m_life) {}

    int run() {
        std::thread sleeper([this] { waitForSignals(); });
        int result = 0;
        for (unsigned int round = 0; m_stats->atEnd == 0 && result == 0; ++round) {
            if (round % kRoundsPerLockedLine == 0) {
                const vorel::Guard held(m_mutex);
                writeLine(round);
                add();
            } else {
                writeLine(round);
                add();
            }
            m_neighbours.signal();
            result = convert() ? 0 : 2;
            if (round % kRoundsPerSample == 0 && round >= kWarmUpRounds) {
                sample();
            }
        }
        m_isEnding = true;
        sleeper.join();
        return result;
    }

private:
    static std::wstring conditionName(const test::ChildArguments& arguments, unsigned int process) {
        return arguments.wide("run") + L"_condition" + std::to_wstring(process);
    }

    void writeLine(unsigned int number) {
        const std::wstring text = test::soakLine({m_process, m_life, number});
        const auto start = std::chrono::steady_clock::now();
        vorel::Exception::warn(L"%ls", text.c_str());
        if (std::chrono::steady_clock::now() - start >= test::kMinDropTime) {
            increase(m_counts.slowLines);
        }
        increase(m_counts.lines);
    }

    void add() {
        const vorel::Guard held(m_mutex);
        increase(m_stats->number);
        increase(m_counts.additions);
    }

    /// Waits with a limit, because the neighbour may have been killed.
    void waitForSignals() {
        while (!m_isEnding) {
            if (m_mine.wait(100)) {
                increase(m_counts.wakeUps);
            }
        }
    }

    bool convert() {
        std::wstring text;
        for (std::uint64_t left = m_numbers.next() % 200; left != 0; --left) {
            const std::uint64_t choice = m_numbers.next();
            text += static_cast<wchar_t>(choice % 4 != 0 ? 0x20 + choice / 4 % 0x5F : 0xA0 + choice / 4 % 0x2000);
        }
        util::ConvertStringtoUTF8(text.c_str(), m_utf8, -1);
        util::ConvertUTF8toString(m_wide, m_utf8.c_str(), static_cast<int>(m_utf8.length()), true);
        util::urlEncode(text.c_str(), m_escaped, true, false);
        util::urlDecode(m_escaped.c_str(), m_unescaped, 0);

        m_bytes.setCount(m_utf8.length());
        std::memcpy(m_bytes.data(), m_utf8.c_str(), m_utf8.length());
        util::Base64::Encode(m_bytes, m_base64);
        const bool isDecoded = util::Base64::Decode(m_base64.c_str(), m_decoded) == 0;

        const auto number = static_cast<long long>(m_numbers.next());
        wchar_t digits[32];
        const bool isRead = util::stringToInteger64(util::Int64ToStr(number, digits, 32), nullptr, false) == number;
        if (m_wide.view() != text || m_unescaped.view() != text || !isDecoded || !isRead ||
            m_decoded.size() != m_bytes.size() || std::memcmp(m_decoded.data(), m_bytes.data(), m_bytes.size()) != 0) {
            return false;
        }
        increase(m_counts.conversions);
        return true;
    }

    void sample() {
        m_counts.memoryKiB = privateKiB();
        m_counts.handles = nextHandleIndex();
        if (m_counts.memoryKiBFirst == 0) {
            m_counts.memoryKiBFirst = m_counts.memoryKiB;
            m_counts.handlesFirst = m_counts.handles;
        }
    }

    const unsigned int m_process;
    const unsigned int m_life;
    test::SharedSoakStats m_stats;
    test::SoakCounts& m_counts;
    vorel::AutoMutex m_mutex;
    vorel::NamedCondition m_mine;
    vorel::NamedCondition m_neighbours;
    test::StressNumbers m_numbers;
    std::atomic<bool> m_isEnding{false};

    BaseString<char> m_utf8;
    BaseString<wchar_t> m_wide;
    BaseString<wchar_t> m_escaped;
    BaseString<wchar_t> m_unescaped;
    BaseString<char> m_base64;
    vorel::Array<unsigned char> m_bytes;
    vorel::Array<unsigned char> m_decoded;
};

}  // namespace

int main(int argumentCount, char** arguments) {
    try {
        const test::ChildArguments given(argumentCount, arguments);
        vorel::Exception::SetErrorLogLocation(given.text("log").c_str(), 0);
        vorel::Exception::SetErrorLogSize(-1);
        return SoakWorker(given).run();
    } catch (...) {
        return 3;
    }
}
