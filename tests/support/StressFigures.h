/// \file
/// Figures that processes of a stress test share through a mapping.
#pragma once

#include <stdexcept>
#include <string>

#include <vorel/secure/SecuredMappings.h>

#include <windows.h>

#include "support/Handle.h"

namespace test {

struct StressFigures {
    static constexpr unsigned int kThreads = 4;  ///< of each process
    static constexpr long long kNoEnd = 0x7FFFFFFFFFFFFFFF;

    volatile long long number;     ///< changed under the named mutex
    volatile long long lastRound;  ///< counted from 0; kNoEnd until it is known
};

/// A view of the figures of a run. The first who asks for the name creates them, all zero.
class SharedStressFigures {
public:
    explicit SharedStressFigures(const std::wstring& name)
        : m_mapping(vorel::ObtainAccessableFileMapping(INVALID_HANDLE_VALUE, PAGE_READWRITE, FILE_MAP_WRITE, 0,
                                                       sizeof(StressFigures), name.c_str(), nullptr)),
          m_figures(static_cast<StressFigures*>(
              MapViewOfFile(m_mapping.get(), FILE_MAP_WRITE, 0, 0, sizeof(StressFigures)))) {
        if (!m_figures) {
            throw std::runtime_error("no figures to be had");
        }
    }
    ~SharedStressFigures() { UnmapViewOfFile(m_figures); }

    SharedStressFigures(const SharedStressFigures&) = delete;
    SharedStressFigures& operator=(const SharedStressFigures&) = delete;

    StressFigures* operator->() { return m_figures; }

private:
    Handle m_mapping;
    StressFigures* m_figures;
};

}  // namespace test
