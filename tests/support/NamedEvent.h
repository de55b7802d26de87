/// \file
/// A named event that synchronises a test with the programs that it starts.
///
///     const test::NamedEvent held(test::NamedEvent::uniqueName(L"held"));
///     const test::NamedEvent release(test::NamedEvent::uniqueName(L"release"));
///     test::ChildProcess child(L"mutex_holder", {L"mutex=" + mutex, L"held=" + held.name(),
///                                                L"release=" + release.name(), L"log=" + logPath});
///     ASSERT_TRUE(held.wait());
///     release.set();
#pragma once

#include <atomic>
#include <stdexcept>
#include <string>
#include <utility>

#include <windows.h>

#include "support/Handle.h"

namespace test {

/// Long enough for a machine under load. A wait that takes longer has failed.
inline constexpr DWORD kGenerousMs = 30000;

/// A manual-reset event. The first object with a name creates the event, later objects open it.
class NamedEvent {
public:
    explicit NamedEvent(std::wstring name)
        : m_name(std::move(name)), m_handle(CreateEventW(nullptr, TRUE, FALSE, m_name.c_str())) {
        if (!m_handle) {
            throw std::runtime_error("cannot create an event");
        }
    }

    /// A unique name that contains the process id and a counter.
    static std::wstring uniqueName(const std::wstring& stem) {
        static std::atomic<unsigned int> count{0};
        return L"vorel_test_" + stem + L"_" + std::to_wstring(GetCurrentProcessId()) + L"_" + std::to_wstring(++count);
    }

    [[nodiscard]] const std::wstring& name() const { return m_name; }
    [[nodiscard]] HANDLE handle() const { return m_handle.get(); }

    void set() const { SetEvent(m_handle.get()); }
    void reset() const { ResetEvent(m_handle.get()); }

    /// Waits until the event is set. Returns false if the event is not set within `limitMs`.
    [[nodiscard]] bool wait(DWORD limitMs = kGenerousMs) const {
        return WaitForSingleObject(m_handle.get(), limitMs) == WAIT_OBJECT_0;
    }

private:
    std::wstring m_name;
    Handle m_handle;
};

}  // namespace test
