/// \file
/// Statistics that the processes of a stress test share through a mapping.
#pragma once

#include <stdexcept>
#include <string>

#include <vorel/secure/SecuredMappings.h>

#include <windows.h>

#include "support/Handle.h"

namespace test {

/// A view of the `Figures` of a run. The first object with a given name creates them, all zero.
template <class Figures>
class SharedFigures {
public:
    explicit SharedFigures(const std::wstring& name)
        : m_mapping(vorel::ObtainAccessableFileMapping(INVALID_HANDLE_VALUE, PAGE_READWRITE, FILE_MAP_WRITE, 0,
                                                       sizeof(Figures), name.c_str(), nullptr)),
          m_figures(static_cast<Figures*>(MapViewOfFile(m_mapping.get(), FILE_MAP_WRITE, 0, 0, sizeof(Figures)))) {
        if (!m_figures) {
            throw std::runtime_error("cannot map the statistics");
        }
    }
    ~SharedFigures() { UnmapViewOfFile(m_figures); }

    SharedFigures(const SharedFigures&) = delete;
    SharedFigures& operator=(const SharedFigures&) = delete;

    Figures* operator->() { return m_figures; }

private:
    Handle m_mapping;
    Figures* m_figures;
};

}  // namespace test
