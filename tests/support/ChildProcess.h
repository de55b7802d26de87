/// \file
/// Real second processes, and events to wait for them without sleeping.
#pragma once

#include <string>
#include <vector>

#include <windows.h>

namespace test {

/// A program that stands beside the test program. It is killed when the test ends before it does.
class ChildProcess {
public:
    /// Starts `name`.exe. Arguments must not hold quotation marks.
    ChildProcess(const std::string& name, const std::vector<std::string>& arguments);
    ~ChildProcess();

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Waits for its end and returns its exit code. A test fails, and -1 comes back, when that takes longer.
    int wait(DWORD limitMs = kLimitMs);

    /// Ends it at once, wherever it stands.
    void kill();

    unsigned long id() const noexcept { return m_process.dwProcessId; }

    static constexpr DWORD kLimitMs = 60000;

private:
    PROCESS_INFORMATION m_process = {};
};

/// A named event that parent and child open by one name; signalled events stay so.
class NamedEvent {
public:
    explicit NamedEvent(const std::string& name);
    ~NamedEvent();

    NamedEvent(const NamedEvent&) = delete;
    NamedEvent& operator=(const NamedEvent&) = delete;

    void set() const;

    /// Whether it was signalled within the limit.
    bool wait(DWORD limitMs = ChildProcess::kLimitMs) const;

    /// A name that no other test has.
    static std::string freshName();

private:
    HANDLE m_handle;
};

}  // namespace test
