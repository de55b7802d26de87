#include "exploration/SimulatedImports.h"

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>

#include <windows.h>

#include "exploration/Machine.h"
#include "support/ImportHook.h"

namespace exploration {

namespace {

/// The thread ids of the model's tasks are multiples of four, like the thread ids of the system.
constexpr DWORD kThreadIdStep = 4;

std::string narrowPath(const wchar_t* path) {
    std::string result;
    for (; *path; ++path) {
        result += static_cast<char>(*path);
    }
    return result;
}

std::uint64_t wide(DWORD high, DWORD low) {
    return std::uint64_t{high} << 32 | low;
}

/// Replaces an import by a function that calls `Simulated` if a model exists, and the system otherwise. `Simulated` may
/// take the original function as its second argument, to forward calls that are not for the model.
template <auto& Slot, auto Simulated>
class Import;

template <class Result, class... Arguments, Result (*&Slot)(Arguments...), auto Simulated>
class Import<Slot, Simulated> {
public:
    Import() : m_patch(Slot, &Import::call) { s_original = m_patch.original(); }

private:
    static Result WINAPI call(Arguments... arguments) {
        Machine* const machine = Machine::current();
        if (!machine) {
            return s_original(arguments...);
        }
        if constexpr (std::is_invocable_v<decltype(Simulated), Machine&, Function*, Arguments...>) {
            return Simulated(*machine, s_original, arguments...);
        } else {
            return Simulated(*machine, arguments...);
        }
    }

    using Function = Result(Arguments...);

    static inline Function* s_original = nullptr;
    test::ImportPatch<Function> m_patch;
};

constexpr auto kCreateEvent = [](Machine& machine, SECURITY_ATTRIBUTES* attributes, BOOL isManualReset,
                                 BOOL isSignalled, const wchar_t* name) {
    return machine.createEvent(attributes, isManualReset != FALSE, isSignalled != FALSE, name);
};
constexpr auto kOpenEvent = [](Machine& machine, DWORD access, BOOL, const wchar_t* name) {
    return machine.open(KernelObject::Kind::Event, access, name);
};
constexpr auto kSetEvent = [](Machine& machine, HANDLE event) -> BOOL { return machine.setEvent(event); };
constexpr auto kResetEvent = [](Machine& machine, HANDLE event) -> BOOL { return machine.resetEvent(event); };
constexpr auto kCreateMutex = [](Machine& machine, SECURITY_ATTRIBUTES* attributes, BOOL isOwned, const wchar_t* name) {
    return machine.createMutex(attributes, isOwned != FALSE, name);
};
constexpr auto kOpenMutex = [](Machine& machine, DWORD access, BOOL, const wchar_t* name) {
    return machine.open(KernelObject::Kind::Mutex, access, name);
};
constexpr auto kReleaseMutex = [](Machine& machine, HANDLE mutex) -> BOOL { return machine.releaseMutex(mutex); };
constexpr auto kWait = [](Machine& machine, HANDLE object, DWORD milliseconds) {
    return machine.wait(object, milliseconds);
};
constexpr auto kCreateFileMapping = [](Machine& machine, HANDLE file, SECURITY_ATTRIBUTES* attributes, DWORD,
                                       DWORD sizeHigh, DWORD sizeLow, const wchar_t* name) {
    return machine.createMapping(attributes, file, wide(sizeHigh, sizeLow), name);
};
constexpr auto kOpenFileMapping = [](Machine& machine, DWORD access, BOOL, const wchar_t* name) {
    return machine.open(KernelObject::Kind::Mapping, access, name);
};
constexpr auto kCreateFile = [](Machine& machine, const wchar_t* path, DWORD access, DWORD sharing,
                                SECURITY_ATTRIBUTES*, DWORD disposition, DWORD, HANDLE) {
    return machine.files().open(narrowPath(path), access, sharing, disposition);
};
/// Every path of the model is its own long form.
constexpr auto kGetLongPathName = [](Machine&, const wchar_t* path, wchar_t* longPath, DWORD size) -> DWORD {
    const std::wstring text(path);
    if (text.size() >= size) {
        return static_cast<DWORD>(text.size() + 1);
    }
    text.copy(longPath, text.size());
    longPath[text.size()] = 0;
    return static_cast<DWORD>(text.size());
};
constexpr auto kSleep = [](Machine&, DWORD milliseconds) {
    if (Scheduler::isInTask()) {
        traceCall([&] { return "Sleep " + std::to_string(milliseconds); });
        Scheduler::running()->sleep(milliseconds);
    }
};
constexpr auto kSwitchToThread = [](Machine&) -> BOOL {
    if (Scheduler::isInTask()) {
        Scheduler::running()->sleep(0);
    }
    return TRUE;
};
constexpr auto kGetCurrentThreadId = [](Machine& machine) -> DWORD { return (machine.task() + 1) * kThreadIdStep; };
constexpr auto kInitializeCriticalSection = [](Machine& machine, CRITICAL_SECTION* section) {
    machine.initialize(section);
};
constexpr auto kDeleteCriticalSection = [](Machine& machine, CRITICAL_SECTION* section) { machine.destroy(section); };
constexpr auto kEnterCriticalSection = [](Machine& machine, CRITICAL_SECTION* section) { machine.enter(section); };
constexpr auto kTryEnterCriticalSection = [](Machine& machine, CRITICAL_SECTION* section) -> BOOL {
    return machine.tryEnter(section);
};
constexpr auto kLeaveCriticalSection = [](Machine& machine, CRITICAL_SECTION* section) { machine.leave(section); };
constexpr auto kLockFile = [](Machine& machine, HANDLE file, DWORD, DWORD, DWORD sizeLow, DWORD sizeHigh,
                              OVERLAPPED* start) -> BOOL {
    return machine.files().lock(file, wide(start->OffsetHigh, start->Offset), wide(sizeHigh, sizeLow));
};
constexpr auto kUnlockFile = [](Machine& machine, HANDLE file, DWORD, DWORD sizeLow, DWORD sizeHigh,
                                OVERLAPPED* start) -> BOOL {
    return machine.files().unlock(file, wide(start->OffsetHigh, start->Offset), wide(sizeHigh, sizeLow));
};
constexpr auto kGetFileSize = [](Machine& machine, HANDLE file, LARGE_INTEGER* size) -> BOOL {
    const std::optional<std::uint64_t> found = machine.files().size(file);
    size->QuadPart = static_cast<LONGLONG>(found.value_or(0));
    return found.has_value();
};
constexpr auto kCloseHandle = [](Machine& machine, HANDLE handle) -> BOOL {
    return machine.close(handle).value_or(false);
};

}  // namespace

// ---- The C runtime --------------------------------------------------------------------------------------------------

// A stream that does not belong to the model belongs to the test framework. Calls with such a stream are forwarded to
// the runtime.

constexpr auto kOpenDescriptor = [](Machine& machine, int* descriptor, const char* path, int flags, int sharing,
                                    int) -> errno_t {
    return machine.runtime().open(*descriptor, path, flags, sharing);
};
constexpr auto kGetHandle = [](Machine& machine, int descriptor) {
    return reinterpret_cast<std::intptr_t>(machine.runtime().handle(descriptor));
};
constexpr auto kClose = [](Machine& machine, int descriptor) { return machine.runtime().close(descriptor); };
constexpr auto kOpenStream = [](Machine& machine, int descriptor, const char*) {
    return machine.runtime().stream(descriptor);
};
constexpr auto kUnlink = [](Machine& machine, const char* path) { return machine.runtime().remove(path); };
constexpr auto kRename = [](Machine& machine, const char* from, const char* to) {
    return machine.runtime().rename(from, to);
};
constexpr auto kGetProcessId = [](Machine& machine) { return static_cast<int>(machine.process()); };
constexpr auto kFlush = [](Machine& machine, auto* original, std::FILE* stream) {
    return machine.runtime().owns(stream) ? machine.runtime().flush(stream) : original(stream);
};
constexpr auto kCloseStream = [](Machine& machine, auto* original, std::FILE* stream) {
    return machine.runtime().owns(stream) ? machine.runtime().close(stream) : original(stream);
};
constexpr auto kPrint = [](Machine& machine, auto* original, unsigned long long options, std::FILE* stream,
                           const char* format, _locale_t locale, va_list args) {
    if (!machine.runtime().owns(stream)) {
        return original(options, stream, format, locale, args);
    }
    char text[16 * 1024];
    const int length = __stdio_common_vsprintf(options, text, sizeof text, format, locale, args);
    machine.runtime().print(stream, text);
    return length;
};

struct SimulatedImports::Patches {
    std::tuple<Import<importedCreateEventW, kCreateEvent>, Import<importedOpenEventW, kOpenEvent>,
               Import<importedSetEvent, kSetEvent>, Import<importedResetEvent, kResetEvent>,
               Import<importedCreateMutexW, kCreateMutex>, Import<importedOpenMutexW, kOpenMutex>,
               Import<importedReleaseMutex, kReleaseMutex>, Import<importedWaitForSingleObject, kWait>,
               Import<importedCreateFileMappingW, kCreateFileMapping>,
               Import<importedOpenFileMappingW, kOpenFileMapping>, Import<importedCreateFileW, kCreateFile>,
               Import<importedGetLongPathNameW, kGetLongPathName>, Import<importedSleep, kSleep>,
               Import<importedSwitchToThread, kSwitchToThread>, Import<importedGetCurrentThreadId, kGetCurrentThreadId>,
               Import<importedInitializeCriticalSection, kInitializeCriticalSection>,
               Import<importedDeleteCriticalSection, kDeleteCriticalSection>,
               Import<importedEnterCriticalSection, kEnterCriticalSection>,
               Import<importedTryEnterCriticalSection, kTryEnterCriticalSection>,
               Import<importedLeaveCriticalSection, kLeaveCriticalSection>, Import<importedCloseHandle, kCloseHandle>,
               Import<importedLockFileEx, kLockFile>, Import<importedUnlockFileEx, kUnlockFile>,
               Import<importedGetFileSizeEx, kGetFileSize>, Import<importedSopenS, kOpenDescriptor>,
               Import<importedGetOsfhandle, kGetHandle>, Import<importedClose, kClose>,
               Import<importedFdopen, kOpenStream>, Import<importedUnlink, kUnlink>, Import<importedRename, kRename>,
               Import<importedGetpid, kGetProcessId>, Import<importedFflush, kFlush>,
               Import<importedFclose, kCloseStream>, Import<importedStdioCommonVfprintf, kPrint>>
        imports;
};

SimulatedImports::SimulatedImports() : m_patches(std::make_unique<Patches>()) {}

SimulatedImports::~SimulatedImports() = default;

}  // namespace exploration
