/// \file
/// A race between several threads or processes, which are called parties. In each round, all parties open the same new
/// named mapping of a file at the same time.
#pragma once

#include <string>
#include <utility>

#include <windows.h>

#include <vorel/exceptions/Exception.h>
#include <vorel/secure/SecuredMappings.h>

#include "support/Handle.h"
#include "support/NamedEvent.h"

namespace test {

/// A view of a mapping with two counters, which all parties share.
class SharedCounters {
public:
    explicit SharedCounters(Handle mapping)
        : m_mapping(std::move(mapping)),
          m_view(m_mapping ? MapViewOfFile(m_mapping.get(), FILE_MAP_WRITE, 0, 0, 0) : nullptr) {}
    ~SharedCounters() {
        if (m_view) {
            UnmapViewOfFile(m_view);
        }
    }

    SharedCounters(const SharedCounters&) = delete;
    SharedCounters& operator=(const SharedCounters&) = delete;

    explicit operator bool() const { return m_view != nullptr; }

    [[nodiscard]] volatile long& first() const { return static_cast<volatile long*>(m_view)[0]; }
    [[nodiscard]] volatile long& second() const { return static_cast<volatile long*>(m_view)[1]; }

private:
    Handle m_mapping;
    void* m_view;
};

struct MappingRace {
    std::wstring name;    ///< the prefix of the names of all mappings
    std::wstring folder;  ///< the folder of the files
    long parties;
    int rounds;
};

/// Runs one party of the race, and returns the number of correct rounds. In a correct round, this party opens a
/// mapping, all parties open the same mapping, and exactly one party creates it. The parties wait in a loop until all
/// parties have arrived, so that they start a round at almost the same time. Each of these waits lasts at most 30
/// seconds.
inline int runMappingRace(const MappingRace& race) {
    constexpr DWORD kSize = 4096;
    const SharedCounters meeting(Handle(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, kSize,
                                                           (race.name + L"_meeting").c_str())));
    long awaited = 0;  // the number of arrivals after which all parties continue
    const auto waitForAll = [&] {
        const ULONGLONG end = GetTickCount64() + kGenerousMs;
        awaited += race.parties;
        InterlockedIncrement(&meeting.first());
        while (meeting.first() < awaited && GetTickCount64() < end) {
            SwitchToThread();
        }
    };
    const auto open = [&](const std::wstring& round, bool& isNew) {
        try {
            const std::wstring path = race.folder + L"\\" + round + L".dat";
            return Handle(vorel::ObtainAccessableFileMappingEx(path.c_str(), PAGE_READWRITE, FILE_MAP_WRITE, 0, kSize,
                                                               (race.name + L"_" + round).c_str(), nullptr, &isNew));
        } catch (const vorel::Exception&) {
            return Handle();
        }
    };

    int good = 0;
    for (int round = 0; meeting && round != race.rounds; ++round) {
        waitForAll();
        bool isNew = false;
        const SharedCounters opened(open(std::to_wstring(round), isNew));
        if (opened) {
            InterlockedIncrement(&opened.first());
            InterlockedExchangeAdd(&opened.second(), isNew ? 1 : 0);
        }
        waitForAll();
        good += opened && opened.first() == race.parties && opened.second() == 1 ? 1 : 0;
    }
    return good;
}

}  // namespace test
