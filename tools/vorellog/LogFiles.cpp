#include "vorellog/LogFiles.h"

#include <algorithm>
#include <utility>

#include <windows.h>

namespace vorellog {

namespace {

class DiskFile : public LogFile {
public:
    DiskFile(HANDLE handle, std::wstring path) : m_handle(handle), m_path(std::move(path)) {
        BY_HANDLE_FILE_INFORMATION information = {};
        if (!GetFileInformationByHandle(m_handle, &information)) {
            const DWORD error = GetLastError();
            CloseHandle(m_handle);
            throw tools::systemFailure(m_path, L"cannot be read", error);
        }
        m_id = {information.dwVolumeSerialNumber,
                (static_cast<unsigned long long>(information.nFileIndexHigh) << 32) | information.nFileIndexLow};
    }
    ~DiskFile() override { CloseHandle(m_handle); }

    DiskFile(const DiskFile&) = delete;
    DiskFile& operator=(const DiskFile&) = delete;

    [[nodiscard]] FileId id() const override { return m_id; }

    [[nodiscard]] unsigned long long size() const override {
        LARGE_INTEGER size = {};
        return GetFileSizeEx(m_handle, &size) ? static_cast<unsigned long long>(size.QuadPart) : 0;
    }

    std::size_t read(unsigned long long offset, char* buffer, std::size_t size) override {
        std::size_t done = 0;
        while (done != size) {
            OVERLAPPED place = {};
            place.Offset = static_cast<DWORD>(offset + done);
            place.OffsetHigh = static_cast<DWORD>((offset + done) >> 32);
            DWORD count = 0;
            const auto wanted = static_cast<DWORD>(std::min(size - done, std::size_t{1} << 24));
            if (!ReadFile(m_handle, buffer + done, wanted, &count, &place)) {
                fail(GetLastError());
                break;
            }
            if (count == 0) {
                break;
            }
            done += count;
        }
        return done;
    }

private:
    /// Throws, except at the end of the file.
    void fail(DWORD error) const {
        if (error == ERROR_LOCK_VIOLATION) {
            throw FileBusy(tools::systemFailure(m_path, L"cannot be read", error));
        }
        if (error != ERROR_HANDLE_EOF) {
            throw tools::systemFailure(m_path, L"cannot be read", error);
        }
    }

    HANDLE m_handle;
    std::wstring m_path;
    FileId m_id;
};

/// Whether the path contains "*" or "?", which are not allowed in file names.
bool hasWildcard(std::wstring_view path) noexcept {
    constexpr std::wstring_view kVerbatim = L"\\\\?\\";
    return path.find_first_of(L"*?", path.starts_with(kVerbatim) ? kVerbatim.size() : 0) != std::wstring_view::npos;
}

bool isDirectory(const std::wstring& path) noexcept {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

}  // namespace

std::unique_ptr<LogFile> DiskLogFiles::open(Which which) {
    const std::wstring& path = which == Which::Log ? m_log : m_backup;
    // Without all share modes, writers could not open or rotate the file.
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    HANDLE const handle =
        CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (handle != INVALID_HANDLE_VALUE) {
        return std::make_unique<DiskFile>(handle, path);
    }
    const DWORD error = GetLastError();
    if (hasWildcard(m_log)) {
        throw tools::Failure(m_log + L": cannot be opened: wildcards are not supported");
    }
    if (isDirectory(path)) {
        throw tools::Failure(path + L": is a folder");
    }
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) {
        return nullptr;
    }
    // Windows also denies access to a file whose deletion is pending.
    if (error == ERROR_SHARING_VIOLATION || error == ERROR_DELETE_PENDING || error == ERROR_ACCESS_DENIED) {
        throw FileBusy(tools::systemFailure(path, L"cannot be opened", error));
    }
    throw tools::systemFailure(path, L"cannot be opened", error);
}

}  // namespace vorellog
