#include "Progress.h"

#include <windows.h>

#include "support/Console.h"
#include "support/Text.h"

namespace conv {

namespace {

constexpr unsigned long long kFirstMs = 1000;
constexpr unsigned long long kBetweenMs = 200;
constexpr int kLineColumns = 50;

}  // namespace

Progress::Progress(std::optional<std::uint64_t> total, bool toStandardOutput) noexcept
    : m_total(total),
      m_enabled(tools::isConsole(tools::Stream::Error) &&
                !(toStandardOutput && tools::isConsole(tools::Stream::Output))),
      m_nextMs(GetTickCount64() + kFirstMs) {}

Progress::~Progress() {
    if (m_shown) {
        tools::writeError(L"\r" + std::wstring(kLineColumns, L' ') + L"\r");
    }
}

void Progress::report(std::uint64_t done) {
    if (!m_enabled || GetTickCount64() < m_nextMs) {
        return;
    }
    m_nextMs = GetTickCount64() + kBetweenMs;
    m_shown = true;
    constexpr double kMebibyte = 1024.0 * 1024.0;
    const double doneMebibytes = static_cast<double>(done) / kMebibyte;
    std::wstring line = tools::formatted(L"%.1f MiB", doneMebibytes);
    if (m_total && *m_total != 0) {
        const double totalMebibytes = static_cast<double>(*m_total) / kMebibyte;
        line += tools::formatted(L" of %.1f MiB, %.0f %%", totalMebibytes, 100.0 * doneMebibytes / totalMebibytes);
    }
    line.resize(kLineColumns, L' ');
    tools::writeError(L"\r" + line);
}

}  // namespace conv
