#include "exploration/FileSystem.h"

#include <algorithm>

#include "exploration/Machine.h"

// A title in quotation marks names a page of the documentation of Windows.

namespace exploration {

namespace {

constexpr std::uintptr_t kFirstHandle = 0x20000000;

bool fail(DWORD error) {
    SetLastError(error);
    return false;
}

std::string label(HANDLE handle) {
    return "file handle " + std::to_string((reinterpret_cast<std::uintptr_t>(handle) - kFirstHandle) / 4);
}

}  // namespace

FileSystem::FileSystem(Machine& machine) : m_machine(machine), m_nextHandle(kFirstHandle) {}

void FileSystem::point() const {
    if (m_isScheduled) {
        schedulingPoint();
    }
}

FileSystem::Handle* FileSystem::find(HANDLE handle, DWORD access) {
    const auto found = m_handles.find(reinterpret_cast<std::uintptr_t>(handle));
    if (found == m_handles.end() || found->second.process != m_machine.process()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    if ((found->second.access & access) != access) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    return &found->second;
}

/// Whether the sharing modes of all open handles of the file include `mode`.
bool FileSystem::isShared(const File& file, DWORD mode) const {
    return std::all_of(m_handles.begin(), m_handles.end(), [&](const auto& entry) {
        return entry.second.file.get() != &file || (entry.second.sharing & mode) != 0;
    });
}

/// "Creating and Opening Files": the sharing modes of all open handles must allow the access of a new handle, and the
/// sharing mode of the new handle must allow the access of the open handles. Otherwise the call fails with
/// ERROR_SHARING_VIOLATION. A file whose deletion is pending cannot be opened.
HANDLE FileSystem::open(const std::string& path, DWORD access, DWORD sharing, DWORD disposition) {
    point();
    const auto found = m_files.find(path);
    const bool exists = found != m_files.end();
    const auto refuse = [&](DWORD error) {
        traceCall([&] { return "opens " + path + ": error " + std::to_string(error); });
        SetLastError(error);
        return INVALID_HANDLE_VALUE;
    };
    if (exists && found->second->isDeletePending) {
        return refuse(ERROR_ACCESS_DENIED);
    }
    if (exists && disposition == CREATE_NEW) {
        return refuse(ERROR_FILE_EXISTS);
    }
    if (!exists && (disposition == OPEN_EXISTING || disposition == TRUNCATE_EXISTING)) {
        return refuse(ERROR_FILE_NOT_FOUND);
    }
    const std::shared_ptr<File> file = exists ? found->second : std::make_shared<File>();
    const struct {
        DWORD access;
        DWORD sharing;
    } kRights[] = {{GENERIC_READ, FILE_SHARE_READ}, {GENERIC_WRITE, FILE_SHARE_WRITE}, {DELETE, FILE_SHARE_DELETE}};
    for (const auto& right : kRights) {
        const bool isUsed = std::any_of(m_handles.begin(), m_handles.end(), [&](const auto& entry) {
            return entry.second.file == file && (entry.second.access & right.access) != 0;
        });
        if (((access & right.access) != 0 && !isShared(*file, right.sharing)) ||
            (isUsed && (sharing & right.sharing) == 0)) {
            return refuse(ERROR_SHARING_VIOLATION);
        }
    }
    // "CreateFileW function": with OPEN_ALWAYS and CREATE_ALWAYS, the last error says whether the file existed.
    SetLastError(exists && (disposition == OPEN_ALWAYS || disposition == CREATE_ALWAYS) ? ERROR_ALREADY_EXISTS
                                                                                        : ERROR_SUCCESS);
    m_files[path] = file;
    if (disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING) {
        file->contents.clear();
    }
    const std::uintptr_t handle = m_nextHandle;
    m_nextHandle += 4;
    m_handles.emplace(handle, Handle{m_machine.process(), file, access, sharing});
    traceCall([&] { return "opens " + path + " as " + label(reinterpret_cast<HANDLE>(handle)); });
    return reinterpret_cast<HANDLE>(handle);
}

/// "LockFileEx function": if a handle has locked a range exclusively, a write to this range through another handle
/// fails with ERROR_LOCK_VIOLATION, even in the same process.
bool FileSystem::writeAt(HANDLE handle, const Handle& open, std::uint64_t position, std::string_view bytes) {
    File& file = *open.file;
    for (const Range& range : file.locks) {
        if (range.owner != handle && range.begin < position + bytes.size() && position < range.end) {
            return fail(ERROR_LOCK_VIOLATION);
        }
    }
    const std::uint64_t end = position + bytes.size();
    const std::uint64_t growth = end > file.contents.size() ? end - file.contents.size() : 0;
    if (growth > m_freeSpace) {
        return fail(ERROR_DISK_FULL);
    }
    m_freeSpace -= growth;
    file.contents.resize(std::max<std::size_t>(file.contents.size(), end));
    file.contents.replace(position, bytes.size(), bytes);
    return true;
}

bool FileSystem::append(HANDLE handle, std::string_view bytes) {
    point();
    const Handle* const open = find(handle, GENERIC_WRITE);
    const bool isWritten = open && writeAt(handle, *open, open->file->contents.size(), bytes);
    traceCall(
        [&] { return (isWritten ? "appends to " : "cannot append to ") + label(handle) + ": " + std::string(bytes); });
    return isWritten;
}

bool FileSystem::write(HANDLE handle, std::string_view bytes) {
    point();
    Handle* const open = find(handle, GENERIC_WRITE);
    if (!open || !writeAt(handle, *open, open->position, bytes)) {
        return false;
    }
    open->position += bytes.size();
    return true;
}

/// "LockFileEx function": a lock fails with ERROR_LOCK_VIOLATION if any handle, even this one, has locked a part of the
/// range. The range may be past the end of the file.
bool FileSystem::lock(HANDLE handle, std::uint64_t begin, std::uint64_t count) {
    point();
    const Handle* const open = find(handle, 0);
    if (!open) {
        return false;
    }
    std::vector<Range>& locks = open->file->locks;
    const std::uint64_t end = begin + count;
    const bool isFree = std::none_of(locks.begin(), locks.end(),
                                     [&](const Range& range) { return range.begin < end && begin < range.end; });
    traceCall([&] { return (isFree ? "locks " : "cannot lock ") + label(handle); });
    if (!isFree) {
        return fail(ERROR_LOCK_VIOLATION);
    }
    locks.push_back({handle, begin, end});
    return true;
}

/// "UnlockFileEx function": the handle must have locked exactly this range.
bool FileSystem::unlock(HANDLE handle, std::uint64_t begin, std::uint64_t count) {
    point();
    const Handle* const open = find(handle, 0);
    if (!open) {
        return false;
    }
    traceCall([&] { return "unlocks " + label(handle); });
    std::vector<Range>& locks = open->file->locks;
    const auto found = std::find_if(locks.begin(), locks.end(), [&](const Range& range) {
        return range.owner == handle && range.begin == begin && range.end == begin + count;
    });
    if (found == locks.end()) {
        return fail(ERROR_NOT_LOCKED);
    }
    locks.erase(found);
    point();
    return true;
}

/// "DeleteFileW function": ERROR_SHARING_VIOLATION if an open handle does not share deletion. Otherwise the file exists
/// until its last handle is closed, and cannot be opened in the meantime.
bool FileSystem::remove(const std::string& path) {
    point();
    const auto found = m_files.find(path);
    if (found == m_files.end()) {
        traceCall([&] { return "cannot delete " + path + ": it does not exist"; });
        return fail(ERROR_FILE_NOT_FOUND);
    }
    if (found->second->isDeletePending) {
        return fail(ERROR_ACCESS_DENIED);
    }
    if (!isShared(*found->second, FILE_SHARE_DELETE)) {
        traceCall([&] { return "cannot delete " + path + ": it is open"; });
        return fail(ERROR_SHARING_VIOLATION);
    }
    traceCall([&] { return "deletes " + path; });
    found->second->isDeletePending = true;
    closed(found->second, nullptr);
    return true;
}

/// "MoveFileExW function", without MOVEFILE_REPLACE_EXISTING: ERROR_ALREADY_EXISTS if a file has the new name,
/// ERROR_SHARING_VIOLATION if an open handle does not share deletion.
bool FileSystem::move(const std::string& from, const std::string& to) {
    point();
    const auto trace = [&](const char* result) {
        traceCall([&] { return "renames " + from + " to " + to + ": " + result; });
    };
    const auto found = m_files.find(from);
    if (found == m_files.end()) {
        trace("the file does not exist");
        return fail(ERROR_FILE_NOT_FOUND);
    }
    if (!isShared(*found->second, FILE_SHARE_DELETE)) {
        trace("the file is open");
        return fail(ERROR_SHARING_VIOLATION);
    }
    if (m_files.contains(to)) {
        trace("the new name is taken");
        return fail(ERROR_ALREADY_EXISTS);
    }
    trace("done");
    m_files[to] = found->second;
    m_files.erase(found);
    return true;
}

std::optional<std::uint64_t> FileSystem::size(HANDLE handle) const {
    const auto found = m_handles.find(reinterpret_cast<std::uintptr_t>(handle));
    if (found == m_handles.end()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return std::nullopt;
    }
    return found->second.file->contents.size();
}

/// Releases the locks of a handle that is closed. Removes the file if its deletion is pending and no handle of the file
/// is open.
void FileSystem::closed(const std::shared_ptr<File>& file, HANDLE handle) {
    std::erase_if(file->locks, [handle](const Range& range) { return range.owner == handle; });
    const bool isOpen =
        std::any_of(m_handles.begin(), m_handles.end(), [&](const auto& entry) { return entry.second.file == file; });
    if (file->isDeletePending && !isOpen) {
        std::erase_if(m_files, [&](const auto& entry) { return entry.second == file; });
    }
}

bool FileSystem::close(HANDLE handle) {
    point();
    if (!find(handle, 0)) {
        return false;
    }
    traceCall([&] { return "closes " + label(handle); });
    drop(m_handles.find(reinterpret_cast<std::uintptr_t>(handle)));
    point();
    return true;
}

FileSystem::Handles::iterator FileSystem::drop(Handles::iterator entry) {
    const std::shared_ptr<File> file = entry->second.file;
    const std::uintptr_t handle = entry->first;
    const auto next = m_handles.erase(entry);
    closed(file, reinterpret_cast<HANDLE>(handle));
    return next;
}

void FileSystem::processKilled(ProcessId process) {
    for (auto entry = m_handles.begin(); entry != m_handles.end();) {
        entry = entry->second.process == process ? drop(entry) : std::next(entry);
    }
}

void FileSystem::put(const std::string& path, std::string contents) {
    m_files[path] = std::make_shared<File>();
    m_files[path]->contents = std::move(contents);
}

std::optional<std::string> FileSystem::contents(const std::string& path) const {
    const auto found = m_files.find(path);
    return found == m_files.end() ? std::nullopt : std::optional(found->second->contents);
}

std::vector<std::string> FileSystem::paths() const {
    std::vector<std::string> result;
    for (const auto& [path, file] : m_files) {
        result.push_back(path);
    }
    return result;
}

}  // namespace exploration
