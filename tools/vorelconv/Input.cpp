#include "Input.h"

#include <algorithm>
#include <cstring>

#include <windows.h>

#include "support/Console.h"
#include "support/Text.h"
#include "support/Tool.h"

namespace conv {

namespace {

/// Whether an error means the end of the input: the system reports the end of a pipe as an error.
bool meansEnd(DWORD error) {
    return error == ERROR_BROKEN_PIPE || error == ERROR_HANDLE_EOF;
}

}  // namespace

Input::Input(const tools::Arguments& arguments) {
    const auto& operands = arguments.operands();
    if (const auto text = arguments.value(L"text")) {
        if (!operands.empty()) {
            throw tools::UsageError(L"--text and the file \"" + operands.front() + L"\" cannot both be the input");
        }
        m_name = L"--text";
        m_pending = tools::toUtf8(*text);
        m_size = m_pending.size();
    } else if (operands.empty() || operands.front() == L"-") {
        m_name = L"standard input";
        m_handle = tools::streamHandle(tools::Stream::Input);
        m_isConsole = tools::isConsole(tools::Stream::Input);
    } else {
        open(operands.front());
    }
    LARGE_INTEGER size = {};
    if (m_handle && GetFileType(m_handle) == FILE_TYPE_DISK && GetFileSizeEx(m_handle, &size)) {
        m_size = static_cast<std::uint64_t>(size.QuadPart);
    }
}

void Input::open(const std::wstring& path) {
    m_name = path;
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        throw tools::Failure(path + L": is a folder, expected a file");
    }
    m_file = tools::OwnedHandle(CreateFileW(path.c_str(), GENERIC_READ,
                                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                            OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!m_file) {
        throw tools::systemFailure(path, L"cannot be opened");
    }
    m_handle = m_file.get();
}

std::size_t Input::read(char* buffer, std::size_t size) {
    if (m_isConsole && m_pending.empty()) {
        return readConsole(buffer, size);
    }
    if (!m_handle || m_isConsole) {
        const std::size_t count = std::min(size, m_pending.size());
        std::memcpy(buffer, m_pending.data(), count);
        m_pending.erase(0, count);
        return count;
    }
    constexpr std::size_t kMaxBytes = std::size_t{1} << 30;
    DWORD count = 0;
    if (!ReadFile(m_handle, buffer, static_cast<DWORD>(std::min(size, kMaxBytes)), &count, nullptr)) {
        const DWORD error = GetLastError();
        if (!meansEnd(error)) {
            throw tools::systemFailure(m_name, L"cannot be read", error);
        }
    }
    return count;
}

/// Reads up to 1,025 units of one line. Then returns the first bytes; `m_pending` keeps the others. If nothing is read,
/// or the units begin with control-Z, the input ends.
std::size_t Input::readConsole(char* buffer, std::size_t size) {
    constexpr wchar_t kControlZ = 0x1A;
    wchar_t line[1025];
    DWORD units = 0;
    const auto readMore = [&](std::size_t maxUnits) {
        DWORD count = 0;
        if (!ReadConsoleW(m_handle, line + units, static_cast<DWORD>(maxUnits), &count, nullptr)) {
            throw tools::systemFailure(m_name, L"cannot be read");
        }
        units += count;
    };
    readMore(std::size(line) - 1);
    if (units != 0 && IS_HIGH_SURROGATE(line[units - 1])) {  // a line ends with a line feed, so it has another unit
        readMore(1);
    }
    if (units == 0 || line[0] == kControlZ) {
        return 0;
    }
    m_pending = tools::toUtf8({line, units});
    return read(buffer, size);
}

}  // namespace conv
