/// \file
/// Statistics that the processes of a stress test share through a mapping.
#pragma once

#include <stdexcept>
#include <string>

#include <vorel/secure/SecuredMappings.h>

#include <windows.h>

#include "support/Handle.h"

namespace test {

/// A view of the statistics that the processes of a run share. The first object with a name creates the statistics,
/// in which all numbers are 0. While an object with this name exists in any process, further objects open them.
template <class Stats>
class SharedStats {
public:
    explicit SharedStats(const std::wstring& name)
        : m_mapping(vorel::ObtainAccessableFileMapping(INVALID_HANDLE_VALUE, PAGE_READWRITE, FILE_MAP_WRITE, 0,
                                                       sizeof(Stats), name.c_str(), nullptr)),
          m_stats(static_cast<Stats*>(MapViewOfFile(m_mapping.get(), FILE_MAP_WRITE, 0, 0, sizeof(Stats)))) {
        if (!m_stats) {
            throw std::runtime_error("cannot map the statistics");
        }
    }
    ~SharedStats() { UnmapViewOfFile(m_stats); }

    SharedStats(const SharedStats&) = delete;
    SharedStats& operator=(const SharedStats&) = delete;

    Stats* operator->() { return m_stats; }

private:
    Handle m_mapping;
    Stats* m_stats;
};

}  // namespace test
