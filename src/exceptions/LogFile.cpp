#include "exceptions/LogFile.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>
#include <windows.h>

#include "platform/IgnoreInvalidParameters.h"

namespace vorel::detail {

bool lockWholeFile(int fileDescriptor, bool lock) noexcept {
    if (fileDescriptor < 0) {
        return false;
    }
    const platform::IgnoreInvalidParameters silent;
    const std::intptr_t handleValue = _get_osfhandle(fileDescriptor);
    if (handleValue == -1 || handleValue == -2) {  // not a descriptor, or a descriptor without a file
        return false;
    }
    void* const handle = reinterpret_cast<void*>(handleValue);
    constexpr DWORD kWhole = 0xFFFFFFFF;
    OVERLAPPED fromStart = {};
    return lock ? LockFileEx(handle, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, kWhole, kWhole,
                             &fromStart) != 0
                : UnlockFileEx(handle, 0, kWhole, kWhole, &fromStart) != 0;
}

BackupName::BackupName(const char* path) noexcept {
    constexpr std::size_t kMaxPathBytes = 1018;
    const std::size_t length = std::min(std::strlen(path), kMaxPathBytes);
    std::memcpy(text, path, length);
    std::strcpy(text + length, ".001");
}

LogFile::LogFile(const char* path, Mode mode) noexcept {
    // If a child process inherited the file, the file could not be renamed.
    const int flags = _O_WRONLY | _O_CREAT | _O_NOINHERIT | (mode == Mode::Append ? _O_APPEND : 0);
    if (_sopen_s(&m_descriptor, path, flags, _SH_DENYNO, _S_IREAD | _S_IWRITE) != 0) {
        m_descriptor = -1;
    }
}

bool LogFile::tryLock() noexcept {
    m_locked = lockWholeFile(m_descriptor, true);
    return m_locked;
}

bool LogFile::isLargerThan(long long limit) const noexcept {
    // This call is faster than the runtime's `_fstat64`, which also queries the times of the file.
    LARGE_INTEGER size = {};
    return GetFileSizeEx(reinterpret_cast<void*>(_get_osfhandle(m_descriptor)), &size) != 0 &&
           size.QuadPart <= INT_MAX && size.QuadPart > limit;
}

std::FILE* LogFile::stream() noexcept {
    if (!m_stream) {
        m_stream = _fdopen(m_descriptor, "a");
    }
    return m_stream;
}

void LogFile::close() noexcept {
    if (!isOpen()) {
        return;
    }
    if (m_locked) {
        lockWholeFile(m_descriptor, false);
        m_locked = false;
    }
    if (m_stream) {
        (void)std::fclose(m_stream);  // closes the descriptor too
    } else {
        _close(m_descriptor);
    }
    m_stream = nullptr;
    m_descriptor = -1;
}

}  // namespace vorel::detail
