#include "Output.h"

#include <optional>

#include <windows.h>

#include "support/Console.h"
#include "support/Tool.h"
#include "support/Visible.h"

namespace conv {

namespace {

/// The path of an open file with all links resolved; nullopt if the system does not provide the path.
std::optional<std::wstring> finalPath(HANDLE file) {
    std::wstring path(MAX_PATH, L'\0');
    DWORD units = GetFinalPathNameByHandleW(file, path.data(), static_cast<DWORD>(path.size()), FILE_NAME_NORMALIZED);
    if (units > path.size()) {  // `units` is the required size, including the terminator
        path.resize(units);
        units = GetFinalPathNameByHandleW(file, path.data(), static_cast<DWORD>(path.size()), FILE_NAME_NORMALIZED);
    }
    if (units == 0 || units >= path.size()) {
        return std::nullopt;
    }
    path.resize(units);
    return path;
}

}  // namespace

Output::Output(const tools::Arguments& arguments) {
    const auto path = arguments.value(L"output");
    if (!path || *path == L"-") {
        m_name = L"standard output";
        return;
    }
    m_name = *path;
    m_target = m_name;
    if (!openDevice()) {
        openUnfinished();
    }
}

/// If the given name is the name of a device, opens the device and returns true. The output is written to a device
/// directly, because only a file on a disk can be replaced. If the name is the name of an existing file, stores the
/// path of the file in `m_target`, with all links resolved, or the given name if the system does not provide this path.
/// Throws `tools::Failure` if the name is the name of a folder, or of a file or device that cannot be written.
bool Output::openDevice() {
    const DWORD attributes = GetFileAttributesW(m_name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return false;
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        throw tools::Failure(m_name + L": is a folder, expected a file");
    }
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        throw tools::Failure(m_name + L": is read-only");
    }
    tools::OwnedHandle device(CreateFileW(m_name.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                          OPEN_EXISTING, 0, nullptr));
    if (!device) {
        throw tools::systemFailure(m_name, L"cannot be written");
    }
    if (GetFileType(device.get()) == FILE_TYPE_DISK) {
        m_target = finalPath(device.get()).value_or(m_name);
        return false;
    }
    m_file = std::move(device);
    return true;
}

void Output::openUnfinished() {
    constexpr unsigned int kMaxTries = 1000;
    for (unsigned int number = 0;; ++number) {
        m_unfinished =
            m_target + L".unfinished-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(number);
        m_file = tools::OwnedHandle(CreateFileW(m_unfinished.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                                CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (m_file) {
            return;
        }
        const DWORD error = GetLastError();
        if (error != ERROR_FILE_EXISTS || number == kMaxTries) {
            m_unfinished.clear();
            throw tools::systemFailure(m_name, L"cannot be created", error);
        }
    }
}

void Output::write(std::string_view bytes) {
    if (m_file) {
        tools::writeBytes(m_file.get(), bytes.data(), bytes.size(), m_name);
    } else {
        tools::writeOutput(bytes);
    }
    m_written += bytes.size();
}

void Output::commit() {
    if (!m_unfinished.empty()) {
        // The system may detect a full disk only here.
        if (!FlushFileBuffers(m_file.get()) || !m_file.close()) {
            throw tools::systemFailure(m_name, L"cannot be written");
        }
        if (!MoveFileExW(m_unfinished.c_str(), m_target.c_str(), MOVEFILE_REPLACE_EXISTING)) {
            throw tools::systemFailure(m_name, L"cannot be created or replaced");
        }
    }
    m_closed = true;
}

std::wstring Output::abandon() {
    m_closed = true;
    m_file.close();
    if (m_unfinished.empty()) {
        return m_written == 0 ? std::wstring()
                              : L"\nThe output is unfinished: it ends after " + std::to_wstring(m_written) + L" bytes.";
    }
    return DeleteFileW(m_unfinished.c_str()) ? std::wstring()
                                             : L"\nThe unfinished output remains in \"" + m_unfinished + L"\".";
}

Output::~Output() {
    if (!m_closed) {
        const std::wstring left = abandon();
        if (!left.empty()) {
            tools::writeError(tools::visibleLines(left.substr(1)) + L"\n");
        }
    }
}

}  // namespace conv
