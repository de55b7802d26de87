#include "verify/Program.h"

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <system_error>

#include <windows.h>

#include "support/Handle.h"
#include "support/StartProgram.h"
#include "verify/TestList.h"

namespace verify {

namespace {

using test::Handle;

/// Locked while the inheritable handles for a child exist. A child inherits all inheritable handles of this process, so
/// the handles for two children must not exist at the same time.
std::mutex inheritedHandles;

Handle inheritableFile(const wchar_t* path, DWORD access, DWORD disposition) {
    SECURITY_ATTRIBUTES inherited{.nLength = sizeof inherited, .lpSecurityDescriptor = nullptr, .bInheritHandle = TRUE};
    return Handle(CreateFileW(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, disposition, 0, nullptr));
}

/// A new job. The system terminates the processes of the job when the last handle of the job is closed.
Handle newJob() {
    Handle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
}

/// Starts the program in `job`. The program has no input, and writes both output streams to the file `output`.
Handle start(const std::filesystem::path& program, const std::string& arguments, const std::filesystem::path& folder,
             const std::filesystem::path& output, const Handle& job) {
    const std::wstring commandLine =
        L"\"" + program.wstring() + L"\" " + std::wstring(arguments.begin(), arguments.end());
    const std::scoped_lock lock(inheritedHandles);
    const Handle written = inheritableFile(output.c_str(), GENERIC_WRITE, CREATE_ALWAYS);
    const Handle nothing = inheritableFile(L"NUL", GENERIC_READ, OPEN_EXISTING);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = nothing.get();
    startup.hStdOutput = written.get();
    startup.hStdError = written.get();
    PROCESS_INFORMATION started{};
    const BOOL created = test::startProgram([&] {
        std::wstring writable = commandLine;  // CreateProcessW may change the text
        return CreateProcessW(program.c_str(), writable.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr,
                              folder.c_str(), &startup, &started);
    });
    if (!created) {
        throw std::runtime_error("cannot be started, error " + std::to_string(GetLastError()));
    }
    const Handle thread(started.hThread);
    AssignProcessToJobObject(job.get(), started.hProcess);
    ResumeThread(started.hThread);
    return Handle(started.hProcess);
}

}  // namespace

ProgramResult runProgram(const std::filesystem::path& program, const std::string& arguments,
                         const std::filesystem::path& folder, unsigned long limitMs) {
    static std::atomic<unsigned int> count{0};
    const std::filesystem::path output = folder / (L"output-" + std::to_wstring(++count) + L".txt");
    ProgramResult result;
    {
        const Handle job = newJob();
        const Handle process = start(program, arguments, folder, output, job);
        result.inTime = WaitForSingleObject(process.get(), limitMs) == WAIT_OBJECT_0;
        if (!result.inTime) {
            TerminateJobObject(job.get(), 1);
            WaitForSingleObject(process.get(), INFINITE);
        }
        GetExitCodeProcess(process.get(), &result.exitCode);
    }
    result.output = readBytes(output);
    std::error_code stillOpen;
    std::filesystem::remove(output, stillOpen);
    return result;
}

}  // namespace verify
