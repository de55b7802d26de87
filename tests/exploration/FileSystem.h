/// \file
/// A model of files: names, sharing modes, locks of byte ranges, deleting and renaming. A call that fails sets the last
/// error.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

#include "exploration/Scheduler.h"

namespace exploration {

class Machine;

class FileSystem {
public:
    explicit FileSystem(Machine& machine);

    /// Opens the file with FILE_SHARE_ modes and a disposition of `CreateFileW`. Of the rights in `access`, only
    /// GENERIC_READ, GENERIC_WRITE and DELETE have an effect.
    HANDLE open(const std::string& path, DWORD access, DWORD sharing, DWORD disposition);

    /// Appends to the file, or writes at the handle's position.
    bool append(HANDLE handle, std::string_view bytes);
    bool write(HANDLE handle, std::string_view bytes);

    /// Locks a range exclusively and without waiting, or unlocks it.
    bool lock(HANDLE handle, std::uint64_t begin, std::uint64_t count);
    bool unlock(HANDLE handle, std::uint64_t begin, std::uint64_t count);

    bool remove(const std::string& path);
    bool move(const std::string& from, const std::string& to);

    /// The size of an open file.
    [[nodiscard]] std::optional<std::uint64_t> size(HANDLE handle) const;

    bool close(HANDLE handle);
    [[nodiscard]] bool owns(HANDLE handle) const {
        return m_handles.contains(reinterpret_cast<std::uintptr_t>(handle));
    }

    void processKilled(ProcessId process);

    // ---- For scenarios ----

    /// Sets whether calls are scheduling points (default: true). A scenario that is not about files sets false.
    void setScheduling(bool isScheduled) { m_isScheduled = isScheduled; }

    /// Sets the free space of the disk to `bytes`.
    void setFreeSpace(std::uint64_t bytes) { m_freeSpace = bytes; }

    void put(const std::string& path, std::string contents);
    [[nodiscard]] std::optional<std::string> contents(const std::string& path) const;
    [[nodiscard]] std::vector<std::string> paths() const;
    [[nodiscard]] std::size_t openCount() const { return m_handles.size(); }

private:
    struct Range {
        HANDLE owner;
        std::uint64_t begin;
        std::uint64_t end;
    };

    struct File {
        std::string contents;
        std::vector<Range> locks;
        bool isDeletePending = false;
    };

    struct Handle {
        ProcessId process;
        std::shared_ptr<File> file;
        DWORD access;
        DWORD sharing;
        std::uint64_t position = 0;
    };

    using Handles = std::map<std::uintptr_t, Handle>;

    void point() const;
    Handle* find(HANDLE handle, DWORD access);
    bool writeAt(HANDLE handle, const Handle& open, std::uint64_t position, std::string_view bytes);
    [[nodiscard]] bool isShared(const File& file, DWORD mode) const;
    void closed(const std::shared_ptr<File>& file, HANDLE handle);
    Handles::iterator drop(Handles::iterator entry);

    Machine& m_machine;
    std::map<std::string, std::shared_ptr<File>> m_files;
    Handles m_handles;
    std::uintptr_t m_nextHandle;
    std::uint64_t m_freeSpace = ~std::uint64_t{0};
    bool m_isScheduled = true;
};

}  // namespace exploration
