#include "Ledger.h"

#include <chrono>

#include <windows.h>

namespace shared_counter {

namespace {

std::wstring wide(const std::string& ascii) {
    return {ascii.begin(), ascii.end()};
}

void* mapFile(const std::string& path, const std::string& name) {
    void* const mapping = vorel::ObtainAccessableFileMappingEx(wide(path).c_str(), PAGE_READWRITE, FILE_MAP_WRITE, 0,
                                                               sizeof(Figures), wide(name).c_str(), nullptr, nullptr);
    if (!mapping) {
        throw vorel::Exception(L"the mapping is not to be had");
    }
    return mapping;
}

}  // namespace

Ledger::Ledger(const std::string& folder, const std::string& name)
    : m_mutex(wide(name).c_str(), false, false),
      m_changed(wide("Global\\" + name + ".changed").c_str()),
      m_victimStopped(wide("Global\\" + name + ".victim").c_str()),
      m_mapping(mapFile(folder + "\\figures.bin", "Global\\" + name + ".figures")),
      m_figures(static_cast<Figures*>(MapViewOfFile(m_mapping.get(), FILE_MAP_WRITE, 0, 0, sizeof(Figures)))) {
    if (!m_figures) {
        throw vorel::Win32Exception(L"MapViewOfFile", static_cast<int>(GetLastError()));
    }
}

void Ledger::UnmapView::operator()(Figures* view) const noexcept {
    UnmapViewOfFile(view);
}

void Ledger::addOne(unsigned int process) {
    const vorel::Guard held(m_mutex);
    ++m_figures->total;
    ++m_figures->added[process];
}

void Ledger::enter(unsigned int process) {
    const vorel::Guard held(m_mutex);
    m_figures->processIds[process] = GetCurrentProcessId();
}

void Ledger::finish() {
    {
        const vorel::Guard held(m_mutex);
        ++m_figures->finished;
    }
    m_changed.signal();
}

void Ledger::stopWithTheMutexHeld() {
    m_mutex.lock(kPatienceMs, true);
    m_victimStopped.signal();
    vorel::Sleep(kPatienceMs);
}

bool Ledger::waitForFinished(long count) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatienceMs);
    // Several signals may have become one: what counts is in the figures.
    while (read().finished < count) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        m_changed.wait(1000);
    }
    return true;
}

Figures Ledger::read() {
    const vorel::Guard held(m_mutex);
    return *m_figures;
}

}  // namespace shared_counter
