/// \file
/// A file that somebody else has locked: over its whole range, as a writer of the log does it.
#pragma once

#include <stdexcept>
#include <string>

#include <windows.h>

#include "support/Handle.h"

namespace test {

/// Opens the file, created if missing, and holds the lock until `unlock` or the end of the object.
class LockedFile {
public:
    explicit LockedFile(const std::string& path)
        : m_file(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS, 0,
                             nullptr)) {
        OVERLAPPED fromStart = {};
        if (!m_file || !LockFileEx(m_file.get(), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, MAXDWORD,
                                   MAXDWORD, &fromStart)) {
            throw std::runtime_error("the file could not be locked");
        }
    }

    void unlock() { m_file.close(); }

private:
    Handle m_file;
};

}  // namespace test
