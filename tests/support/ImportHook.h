/// \file
/// Replaces functions that this program imports, by changing its import table. The static library is part of the
/// program, so its calls are replaced too; the calls of a DLL are not.
///
///     std::vector<DWORD> sleeps;
///     const test::ImportHook<importedSleep> hook([&](DWORD ms) { sleeps.push_back(ms); });
///     const test::ImportPatch patch(importedSleep, &recordingSleep);
///     const auto failing = test::failCalls<importedSetEvent>();
#pragma once

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include <io.h>
#include <process.h>
#include <sys/stat.h>
#include <windows.h>

// The entries of the import table. The name of an entry is "imported", followed by the name of its function without
// underscores and with a capital letter at the start of each part: `importedGetOsfhandle` for `_get_osfhandle`.
extern "C" {
extern decltype(&::AccessCheck) importedAccessCheck __asm__("__imp_AccessCheck");
extern decltype(&::AddAccessAllowedAce) importedAddAccessAllowedAce __asm__("__imp_AddAccessAllowedAce");
extern decltype(&::AddAccessDeniedAce) importedAddAccessDeniedAce __asm__("__imp_AddAccessDeniedAce");
extern decltype(&::AllocateAndInitializeSid) importedAllocateAndInitializeSid __asm__("__imp_AllocateAndInitializeSid");
extern decltype(&::CloseHandle) importedCloseHandle __asm__("__imp_CloseHandle");
extern decltype(&::CreateEventW) importedCreateEventW __asm__("__imp_CreateEventW");
extern decltype(&::CreateFileMappingW) importedCreateFileMappingW __asm__("__imp_CreateFileMappingW");
extern decltype(&::CreateFileW) importedCreateFileW __asm__("__imp_CreateFileW");
extern decltype(&::CreateMutexW) importedCreateMutexW __asm__("__imp_CreateMutexW");
extern decltype(&::CreateProcessA) importedCreateProcessA __asm__("__imp_CreateProcessA");
extern decltype(&::DeleteCriticalSection) importedDeleteCriticalSection __asm__("__imp_DeleteCriticalSection");
extern decltype(&::EnterCriticalSection) importedEnterCriticalSection __asm__("__imp_EnterCriticalSection");
extern decltype(&::FlsAlloc) importedFlsAlloc __asm__("__imp_FlsAlloc");
extern decltype(&::FlsFree) importedFlsFree __asm__("__imp_FlsFree");
extern decltype(&::FlsGetValue) importedFlsGetValue __asm__("__imp_FlsGetValue");
extern decltype(&::FlsSetValue) importedFlsSetValue __asm__("__imp_FlsSetValue");
extern decltype(&::FormatMessageW) importedFormatMessageW __asm__("__imp_FormatMessageW");
extern decltype(&::FreeSid) importedFreeSid __asm__("__imp_FreeSid");
extern decltype(&::GetACP) importedGetACP __asm__("__imp_GetACP");
extern decltype(&::GetComputerNameExA) importedGetComputerNameExA __asm__("__imp_GetComputerNameExA");
extern decltype(&::GetCurrentThreadId) importedGetCurrentThreadId __asm__("__imp_GetCurrentThreadId");
extern decltype(&::GetFileSizeEx) importedGetFileSizeEx __asm__("__imp_GetFileSizeEx");
extern decltype(&::GetLongPathNameW) importedGetLongPathNameW __asm__("__imp_GetLongPathNameW");
extern decltype(&::GetSystemTimeAsFileTime) importedGetSystemTimeAsFileTime __asm__("__imp_GetSystemTimeAsFileTime");
extern decltype(&::GetTickCount) importedGetTickCount __asm__("__imp_GetTickCount");
extern decltype(&::HeapAlloc) importedHeapAlloc __asm__("__imp_HeapAlloc");
extern decltype(&::HeapFree) importedHeapFree __asm__("__imp_HeapFree");
extern decltype(&::ImpersonateSelf) importedImpersonateSelf __asm__("__imp_ImpersonateSelf");
extern decltype(&::InitializeAcl) importedInitializeAcl __asm__("__imp_InitializeAcl");
extern decltype(&::InitializeSecurityDescriptor)
    importedInitializeSecurityDescriptor __asm__("__imp_InitializeSecurityDescriptor");
extern decltype(&::IsValidSecurityDescriptor)
    importedIsValidSecurityDescriptor __asm__("__imp_IsValidSecurityDescriptor");
extern decltype(&::InitializeCriticalSection)
    importedInitializeCriticalSection __asm__("__imp_InitializeCriticalSection");
extern decltype(&::LeaveCriticalSection) importedLeaveCriticalSection __asm__("__imp_LeaveCriticalSection");
extern decltype(&::LocalAlloc) importedLocalAlloc __asm__("__imp_LocalAlloc");
extern decltype(&::LocalFree) importedLocalFree __asm__("__imp_LocalFree");
extern decltype(&::LockFileEx) importedLockFileEx __asm__("__imp_LockFileEx");
extern decltype(&::MultiByteToWideChar) importedMultiByteToWideChar __asm__("__imp_MultiByteToWideChar");
extern decltype(&::OpenEventW) importedOpenEventW __asm__("__imp_OpenEventW");
extern decltype(&::OpenFileMappingW) importedOpenFileMappingW __asm__("__imp_OpenFileMappingW");
extern decltype(&::OpenMutexW) importedOpenMutexW __asm__("__imp_OpenMutexW");
extern decltype(&::OpenProcessToken) importedOpenProcessToken __asm__("__imp_OpenProcessToken");
extern decltype(&::OpenThreadToken) importedOpenThreadToken __asm__("__imp_OpenThreadToken");
extern decltype(&::ReleaseMutex) importedReleaseMutex __asm__("__imp_ReleaseMutex");
extern decltype(&::ResetEvent) importedResetEvent __asm__("__imp_ResetEvent");
extern decltype(&::RevertToSelf) importedRevertToSelf __asm__("__imp_RevertToSelf");
extern decltype(&::SetEvent) importedSetEvent __asm__("__imp_SetEvent");
extern decltype(&::SetPriorityClass) importedSetPriorityClass __asm__("__imp_SetPriorityClass");
extern decltype(&::SetSecurityDescriptorDacl)
    importedSetSecurityDescriptorDacl __asm__("__imp_SetSecurityDescriptorDacl");
extern decltype(&::SetSecurityDescriptorGroup)
    importedSetSecurityDescriptorGroup __asm__("__imp_SetSecurityDescriptorGroup");
extern decltype(&::SetSecurityDescriptorOwner)
    importedSetSecurityDescriptorOwner __asm__("__imp_SetSecurityDescriptorOwner");
extern decltype(&::SetThreadToken) importedSetThreadToken __asm__("__imp_SetThreadToken");
extern decltype(&::Sleep) importedSleep __asm__("__imp_Sleep");
extern decltype(&::SwitchToThread) importedSwitchToThread __asm__("__imp_SwitchToThread");
extern decltype(&::TryEnterCriticalSection) importedTryEnterCriticalSection __asm__("__imp_TryEnterCriticalSection");
extern decltype(&::UnlockFileEx) importedUnlockFileEx __asm__("__imp_UnlockFileEx");
extern decltype(&::WaitForSingleObject) importedWaitForSingleObject __asm__("__imp_WaitForSingleObject");
extern decltype(&::WideCharToMultiByte) importedWideCharToMultiByte __asm__("__imp_WideCharToMultiByte");

// The C runtime.
extern decltype(&::asctime_s) importedAsctimeS __asm__("__imp_asctime_s");
extern decltype(&::_close) importedClose __asm__("__imp__close");
extern decltype(&::fclose) importedFclose __asm__("__imp_fclose");
extern decltype(&::_fdopen) importedFdopen __asm__("__imp__fdopen");
extern decltype(&::fflush) importedFflush __asm__("__imp_fflush");
extern decltype(&::_get_osfhandle) importedGetOsfhandle __asm__("__imp__get_osfhandle");
extern decltype(&::_getpid) importedGetpid __asm__("__imp__getpid");
extern decltype(&::_localtime64_s) importedLocaltime64S __asm__("__imp__localtime64_s");
extern decltype(&::mbstowcs) importedMbstowcs __asm__("__imp_mbstowcs");
extern decltype(&::rename) importedRename __asm__("__imp_rename");
extern decltype(&::__stdio_common_vfprintf) importedStdioCommonVfprintf __asm__("__imp___stdio_common_vfprintf");
extern decltype(&::__stdio_common_vsprintf) importedStdioCommonVsprintf __asm__("__imp___stdio_common_vsprintf");
extern decltype(&::__stdio_common_vswprintf) importedStdioCommonVswprintf __asm__("__imp___stdio_common_vswprintf");
extern decltype(&::_sopen_s) importedSopenS __asm__("__imp__sopen_s");
extern decltype(&::_time64) importedTime64 __asm__("__imp__time64");
extern decltype(&::_unlink) importedUnlink __asm__("__imp__unlink");
extern decltype(&::wcslen) importedWcslen __asm__("__imp_wcslen");
extern decltype(&::wcstombs) importedWcstombs __asm__("__imp_wcstombs");
}

namespace test {

/// Replaces an import by a function.
template <class Function>
class ImportPatch {
public:
    ImportPatch(Function*& slot, Function* replacement) : m_slot(slot), m_original(slot) {
        if (!set(replacement)) {
            throw std::runtime_error("cannot write the import table");
        }
    }
    ~ImportPatch() { set(m_original); }

    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    /// The original function, for a replacement that forwards calls.
    [[nodiscard]] Function* original() const { return m_original; }

private:
    bool set(Function* function) {
        DWORD before = 0;
        if (!VirtualProtect(&m_slot, sizeof m_slot, PAGE_READWRITE, &before)) {
            return false;
        }
        m_slot = function;
        VirtualProtect(&m_slot, sizeof m_slot, before, &before);
        return true;
    }

    Function*& m_slot;
    Function* m_original;
};

/// Replaces an import by a function object, which receives every call and returns the result. Only one hook may exist
/// for an import at a time, and while the hook exists, only one thread may call the import.
template <auto& Slot>
class ImportHook;

template <class Result, class... Arguments, Result (*&Slot)(Arguments...)>
class ImportHook<Slot> {
public:
    using Body = std::function<Result(Arguments...)>;

    explicit ImportHook(Body body) : m_patch(Slot, &ImportHook::call) {
        if (m_patch.original() == &ImportHook::call) {
            throw std::logic_error("the import is already hooked");
        }
        s_body = std::move(body);
    }
    ~ImportHook() { s_body = nullptr; }

    ImportHook(const ImportHook&) = delete;
    ImportHook& operator=(const ImportHook&) = delete;

    /// Calls the original function.
    // NOLINTNEXTLINE(modernize-use-nodiscard): not every function has a result
    Result original(Arguments... arguments) const { return m_patch.original()(arguments...); }

private:
    static Result WINAPI call(Arguments... arguments) { return s_body(arguments...); }

    static inline Body s_body;
    ImportPatch<Result(Arguments...)> m_patch;
};

/// The last error that a call sets if a test lets the call fail. Nothing else in a test sets this code.
inline constexpr DWORD kFailureError = ERROR_DISK_FULL;

/// A function that fails: it returns null, false or 0, and sets the last error to `kFailureError`.
template <class Function>
struct FailingCall;

template <class Result, class... Arguments>
struct FailingCall<Result(Arguments...)> {
    static Result WINAPI call(Arguments...) {
        SetLastError(kFailureError);
        return Result{};
    }
};

/// Makes every call of an import fail until the returned object is destroyed. The import must report a failure by null,
/// false or 0. This function and the failing calls allocate no memory.
template <auto& Slot>
[[nodiscard]] auto failCalls() {
    using Function = std::remove_pointer_t<std::remove_reference_t<decltype(Slot)>>;
    return ImportPatch<Function>(Slot, &FailingCall<Function>::call);
}

}  // namespace test
