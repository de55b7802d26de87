#include "support/ChildProcess.h"

#include <atomic>

#include <gtest/gtest.h>

namespace test {

namespace {

/// The folder of the test program, with a backslash at its end.
std::string programFolder() {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    const std::string program = path;
    return program.substr(0, program.rfind('\\') + 1);
}

}  // namespace

ChildProcess::ChildProcess(const std::string& name, const std::vector<std::string>& arguments) {
    const std::string program = programFolder() + name + ".exe";
    std::string commandLine = "\"" + program + "\"";
    for (const std::string& argument : arguments) {
        commandLine += " \"" + argument + "\"";
    }
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    if (!CreateProcessA(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &m_process)) {
        ADD_FAILURE() << "cannot start " << program << ": " << GetLastError();
    }
}

ChildProcess::~ChildProcess() {
    if (m_process.hProcess) {
        if (WaitForSingleObject(m_process.hProcess, 0) == WAIT_TIMEOUT) {
            kill();
        }
        CloseHandle(m_process.hThread);
        CloseHandle(m_process.hProcess);
    }
}

int ChildProcess::wait(DWORD limitMs) {
    DWORD exitCode = 0;
    if (WaitForSingleObject(m_process.hProcess, limitMs) != WAIT_OBJECT_0 ||
        !GetExitCodeProcess(m_process.hProcess, &exitCode)) {
        ADD_FAILURE() << "a child process did not end in time";
        return -1;
    }
    return static_cast<int>(exitCode);
}

void ChildProcess::kill() {
    TerminateProcess(m_process.hProcess, 99);
    WaitForSingleObject(m_process.hProcess, kLimitMs);
}

NamedEvent::NamedEvent(const std::string& name) : m_handle(CreateEventA(nullptr, TRUE, FALSE, name.c_str())) {}

NamedEvent::~NamedEvent() {
    CloseHandle(m_handle);
}

void NamedEvent::set() const {
    SetEvent(m_handle);
}

bool NamedEvent::wait(DWORD limitMs) const {
    return WaitForSingleObject(m_handle, limitMs) == WAIT_OBJECT_0;
}

std::string NamedEvent::freshName() {
    static std::atomic<unsigned int> s_count{0};
    return "vorel-test-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++s_count);
}

}  // namespace test
