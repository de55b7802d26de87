#include "Processes.h"

#include <array>

#include <windows.h>

#include <vorel/vorelCore.h>

namespace examples {

namespace {

constexpr DWORD kTimeoutMs = 120000;

Handle ownedOrThrow(HANDLE handle, const wchar_t* call) {
    if (!handle) {
        throw vorel::Win32Exception(call, static_cast<int>(GetLastError()));
    }
    return Handle(handle);
}

}  // namespace

std::string programPath() {
    std::array<char, MAX_PATH> path{};
    const DWORD length = GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0 || length == path.size()) {
        throw vorel::Exception(L"the path of the program is not available");
    }
    return {path.data(), length};
}

std::string createFolderBeside(const std::string& program, const std::string& name) {
    const std::string stem = program.substr(0, program.find_last_of("\\/") + 1) + name + '-';
    for (unsigned int number = 1;; ++number) {
        std::string folder = stem + std::to_string(number);
        if (CreateDirectoryA(folder.c_str(), nullptr)) {
            return folder;
        }
        if (GetLastError() != ERROR_ALREADY_EXISTS) {
            throw vorel::Win32Exception(L"CreateDirectory", static_cast<int>(GetLastError()));
        }
    }
}

void CloseHandleOf::operator()(void* handle) const noexcept {
    CloseHandle(handle);
}

StartLine::StartLine(const std::string& name)
    : m_ready(ownedOrThrow(CreateSemaphoreA(nullptr, 0, 1000, (name + ".ready").c_str()), L"CreateSemaphore")),
      m_go(ownedOrThrow(CreateEventA(nullptr, TRUE, FALSE, (name + ".go").c_str()), L"CreateEvent")) {}

bool StartLine::lineUp() const {
    ReleaseSemaphore(m_ready.get(), 1, nullptr);
    return WaitForSingleObject(m_go.get(), kTimeoutMs) == WAIT_OBJECT_0;
}

bool StartLine::start(unsigned int workers) const {
    for (unsigned int ready = 0; ready != workers; ++ready) {
        if (WaitForSingleObject(m_ready.get(), kTimeoutMs) != WAIT_OBJECT_0) {
            return false;
        }
    }
    return SetEvent(m_go.get()) != FALSE;
}

Handle startProcess(const std::string& program, const std::vector<std::string>& arguments) {
    std::string commandLine = '"' + program + '"';
    for (const std::string& argument : arguments) {
        commandLine += " \"" + argument + '"';
    }
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    if (!CreateProcessA(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &started)) {
        throw vorel::Win32Exception(L"CreateProcess", static_cast<int>(GetLastError()));
    }
    CloseHandle(started.hThread);
    return Handle(started.hProcess);
}

unsigned long exitCodeOf(const Handle& process) {
    if (WaitForSingleObject(process.get(), kTimeoutMs) != WAIT_OBJECT_0) {
        TerminateProcess(process.get(), 1);
        WaitForSingleObject(process.get(), kTimeoutMs);
    }
    DWORD code = 1;
    GetExitCodeProcess(process.get(), &code);
    return code;
}

}  // namespace examples
