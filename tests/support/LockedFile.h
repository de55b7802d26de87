/// \file
/// A file that is locked as a whole, as a writer locks the log.
#pragma once

#include <stdexcept>
#include <string>

#include <windows.h>

#include "support/Handle.h"

namespace test {

/// Opens the file, creates it if it is missing, and holds the lock until `unlock` or destruction.
class LockedFile {
public:
    explicit LockedFile(const std::string& path)
        : m_file(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS, 0,
                             nullptr)) {
        OVERLAPPED fromStart = {};
        if (!m_file || !LockFileEx(m_file.get(), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, MAXDWORD,
                                   MAXDWORD, &fromStart)) {
            throw std::runtime_error("cannot lock the file");
        }
    }

    void unlock() { m_file.close(); }

private:
    Handle m_file;
};

}  // namespace test
