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
                                                               sizeof(Counts), wide(name).c_str(), nullptr, nullptr);
    if (!mapping) {
        throw vorel::Exception(L"the file mapping cannot be created");
    }
    return mapping;
}

}  // namespace

Ledger::Ledger(const std::string& folder, const std::string& name)
    : m_mutex(wide(name).c_str(), false, false),
      m_changed(wide("Global\\" + name + ".changed").c_str()),
      m_victimStopped(wide("Global\\" + name + ".victim").c_str()),
      m_mapping(mapFile(folder + "\\counts.bin", "Global\\" + name + ".counts")),
      m_counts(static_cast<Counts*>(MapViewOfFile(m_mapping.get(), FILE_MAP_WRITE, 0, 0, sizeof(Counts)))) {
    if (!m_counts) {
        throw vorel::Win32Exception(L"MapViewOfFile", static_cast<int>(GetLastError()));
    }
}

void Ledger::UnmapView::operator()(Counts* view) const noexcept {
    UnmapViewOfFile(view);
}

void Ledger::addOne(unsigned int process) {
    const vorel::Guard held(m_mutex);
    ++m_counts->total;
    ++m_counts->added[process];
}

void Ledger::enter(unsigned int process) {
    const vorel::Guard held(m_mutex);
    m_counts->processIds[process] = GetCurrentProcessId();
}

void Ledger::finish() {
    {
        const vorel::Guard held(m_mutex);
        ++m_counts->finished;
    }
    m_changed.signal();
}

void Ledger::stopWithTheMutexHeld() {
    m_mutex.lock(kTimeoutMs, true);
    m_victimStopped.signal();
    vorel::Sleep(kTimeoutMs);
}

bool Ledger::waitForFinished(long count) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kTimeoutMs);
    // A condition keeps only one signal, so check the shared count.
    while (read().finished < count) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        m_changed.wait(1000);
    }
    return true;
}

Counts Ledger::read() {
    const vorel::Guard held(m_mutex);
    return *m_counts;
}

}  // namespace shared_counter
