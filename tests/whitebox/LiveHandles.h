/// \file
/// Counts the open handles of mutexes, events, files, file mappings and thread tokens, including the handles that the
/// test program itself has opened. The library must be linked statically, because the calls of a DLL cannot be hooked.
#pragma once

#include <cstddef>
#include <set>

#include <windows.h>

#include "support/ImportHook.h"

namespace test {

/// The number of open handles of the process that the system reports, or 0 if the system reports no number.
inline DWORD reportedHandles() {
    DWORD count = 0;
    return GetProcessHandleCount(GetCurrentProcess(), &count) ? count : 0;
}

/// Tracks the handles that the hooked system calls return, until the handles are closed.
class LiveHandles {
public:
    [[nodiscard]] std::size_t live() const { return m_live.size(); }
    [[nodiscard]] int opened() const { return m_opened; }

private:
    HANDLE note(HANDLE handle) {
        // cppcheck-suppress knownConditionTrueFalse; both values mean failure
        if (handle && handle != INVALID_HANDLE_VALUE) {
            m_live.insert(handle);
            ++m_opened;
        }
        return handle;
    }

    std::set<HANDLE> m_live;
    int m_opened = 0;

    const ImportHook<importedCreateMutexW> m_createMutex{
        [this](auto... arguments) { return note(m_createMutex.original(arguments...)); }};
    const ImportHook<importedOpenMutexW> m_openMutex{
        [this](auto... arguments) { return note(m_openMutex.original(arguments...)); }};
    const ImportHook<importedCreateEventW> m_createEvent{
        [this](auto... arguments) { return note(m_createEvent.original(arguments...)); }};
    const ImportHook<importedOpenEventW> m_openEvent{
        [this](auto... arguments) { return note(m_openEvent.original(arguments...)); }};
    const ImportHook<importedCreateFileW> m_createFile{
        [this](auto... arguments) { return note(m_createFile.original(arguments...)); }};
    const ImportHook<importedCreateFileMappingW> m_createMapping{
        [this](auto... arguments) { return note(m_createMapping.original(arguments...)); }};
    const ImportHook<importedOpenFileMappingW> m_openMapping{
        [this](auto... arguments) { return note(m_openMapping.original(arguments...)); }};
    const ImportHook<importedOpenThreadToken> m_openThreadToken{
        [this](HANDLE thread, DWORD access, BOOL asSelf, PHANDLE token) {
            const BOOL done = m_openThreadToken.original(thread, access, asSelf, token);
            note(done ? *token : nullptr);
            return done;
        }};
    const ImportHook<importedCloseHandle> m_close{[this](HANDLE handle) {
        m_live.erase(handle);
        return m_close.original(handle);
    }};
};

}  // namespace test
