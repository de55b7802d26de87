#include "support/ChildProcess.h"

#include <stdexcept>

#include "support/StartProgram.h"

namespace test {

namespace {

constexpr DWORD kTerminatedByTest = 0xDEAD;

/// Quotes `argument` so that the child's `argv` contains it unchanged. Each quotation mark gets a backslash, and the
/// backslashes before a quotation mark are doubled.
std::wstring quoted(const std::wstring& argument) {
    std::wstring result = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t unit : argument) {
        if (unit == L'"') {
            result.append(backslashes + 1, L'\\');
        }
        backslashes = unit == L'\\' ? backslashes + 1 : 0;
        result += unit;
    }
    result.append(backslashes, L'\\');
    return result + L'"';
}

}  // namespace

std::wstring programFolder() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.rfind(L'\\') + 1);
}

ChildProcess::ChildProcess(const std::wstring& program, const std::vector<std::wstring>& arguments,
                           const ChildOptions& options) {
    const std::wstring path = programFolder() + program + L".exe";
    std::wstring commandLine = quoted(path);
    for (const std::wstring& argument : arguments) {
        commandLine += L' ' + quoted(argument);
    }
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    const bool hasStreams = options.input || options.output || options.error;
    if (hasStreams) {
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = options.input;
        startup.hStdOutput = options.output;
        startup.hStdError = options.error;
    }
    PROCESS_INFORMATION started = {};
    const BOOL created = startProgram([&] {
        std::wstring writable = commandLine;  // the system may change the command line
        const BOOL inherits = options.inheritHandles || hasStreams;
        const wchar_t* const directory = options.directory.empty() ? nullptr : options.directory.c_str();
        return options.token ? CreateProcessAsUserW(options.token, path.c_str(), writable.data(), nullptr, nullptr,
                                                    inherits, 0, nullptr, directory, &startup, &started)
                             : CreateProcessW(path.c_str(), writable.data(), nullptr, nullptr, inherits, 0, nullptr,
                                              directory, &startup, &started);
    });
    if (!created) {
        throw std::runtime_error("cannot start a child program, error " + std::to_string(GetLastError()));
    }
    const Handle thread(started.hThread);
    m_process = Handle(started.hProcess);
    m_processId = started.dwProcessId;
}

ChildProcess::~ChildProcess() {
    terminate();
}

bool ChildProcess::wait(DWORD limitMs) const {
    return WaitForSingleObject(m_process.get(), limitMs) == WAIT_OBJECT_0;
}

void ChildProcess::terminate() {
    if (m_process && !wait(0)) {
        TerminateProcess(m_process.get(), kTerminatedByTest);
        (void)wait();
    }
}

std::optional<DWORD> ChildProcess::exitCode() const {
    DWORD code = 0;
    if (!wait(0) || !GetExitCodeProcess(m_process.get(), &code)) {
        return std::nullopt;
    }
    return code;
}

std::optional<DWORD> runChild(const std::wstring& program, const std::vector<std::wstring>& arguments,
                              const ChildOptions& options) {
    const ChildProcess child(program, arguments, options);
    (void)child.wait();
    return child.exitCode();
}

}  // namespace test
