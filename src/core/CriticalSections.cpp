#include "vorel/core/CriticalSections.h"

#include <cstdlib>

#include <windows.h>

#include "vorel/core/Protocol.h"
#include "vorel/core/ThreadSafety.h"

namespace vorel {

namespace {

CRITICAL_SECTION* sectionOf(void* handle) noexcept {
    return static_cast<CRITICAL_SECTION*>(handle);
}

void* createSection() {
    void* const handle = std::malloc(sizeof(CRITICAL_SECTION));
    if (!handle) {
        detail::throwFailure(L"malloc failed");
    }
    InitializeCriticalSection(sectionOf(handle));
    return handle;
}

void destroySection(void*& handle) noexcept {
    if (handle) {
        DeleteCriticalSection(sectionOf(handle));
        std::free(handle);
        // The reference is volatile, because otherwise the compiler may remove a store to an object whose lifetime
        // ends.
        void* volatile& stored = handle;
        stored = nullptr;
    }
}

// The next two functions are not marked noexcept, because the compiler would then add an exception handler to each of
// them. The system's functions never throw.

bool enterSection(void* handle, unsigned int timeout) {
    if (!handle) {
        return true;
    }
    if (timeout == 0) {
        return TryEnterCriticalSection(sectionOf(handle)) == 1;
    }
    EnterCriticalSection(sectionOf(handle));
    return true;
}

void leaveSection(void* handle) {
    if (handle) {
        LeaveCriticalSection(sectionOf(handle));
    }
}

}  // namespace

AutoCriticalSection::AutoCriticalSection() : m_handle(createSection()) {}

AutoCriticalSection::~AutoCriticalSection() {
    destroySection(m_handle);
}

bool AutoCriticalSection::lock(unsigned int timeout, bool flag) {
    return ThreadSafetyEnabledCount == 0 || lockImpl(timeout, flag);
}

bool AutoCriticalSection::tryLock() {
    return ThreadSafetyEnabledCount == 0 || lockImpl(0, false);
}

void AutoCriticalSection::unlock() {
    if (ThreadSafetyEnabledCount != 0) {
        unlockImpl();
    }
}

bool AutoCriticalSection::lockImpl(unsigned int timeout, bool) {
    return enterSection(m_handle, timeout);
}

void AutoCriticalSection::unlockImpl() {
    leaveSection(m_handle);
}

ForcedCriticalSection::ForcedCriticalSection() : m_handle(createSection()) {}

ForcedCriticalSection::~ForcedCriticalSection() {
    destroySection(m_handle);
}

bool ForcedCriticalSection::lock(unsigned int timeout, bool) {
    return enterSection(m_handle, timeout);
}

bool ForcedCriticalSection::tryLock() {
    return lock(0, false);
}

void ForcedCriticalSection::unlock() {
    leaveSection(m_handle);
}

}  // namespace vorel
