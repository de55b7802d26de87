#include "support/TemporaryLog.h"

#include "support/WideText.h"

#include <atomic>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <windows.h>

using vorel::Exception;

namespace test {

namespace {

/// The size limit is accessible only from a derived class.
struct LogSettings : Exception {
    static long long& sizeLimit() { return CurrentLogSize; }
};

/// The path of the current `TemporaryLog`; empty if there is none.
std::string& currentPath() {
    static std::string path;
    return path;
}

/// Converts a name unit by unit, because `std::filesystem` of this toolchain cannot convert narrow paths with the UCRT.
/// All names must be ASCII, so the path of the folder for temporary files must be ASCII, too.
std::filesystem::path asPath(const std::string& name) {
    return widened(name);
}

std::string uniqueName() {
    static std::atomic<unsigned int> count{0};
    return "vorel_test_" + std::to_string(GetCurrentProcessId()) + "_" + std::to_string(++count);
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
    char parent[MAX_PATH + 1];
    if (GetTempPathA(sizeof parent, parent) == 0) {
        throw std::runtime_error("cannot find the folder for temporary files");
    }
    m_path = parent + uniqueName();
    // An earlier process with the same id may have been terminated before it removed the folder.
    std::filesystem::remove_all(asPath(m_path));
    std::filesystem::create_directories(asPath(m_path));
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(asPath(m_path), ignored);
}

TemporaryLog::TemporaryLog(long long sizeLimitBytes)
    : m_path(m_folder.file("errors.txt")),
      m_pathBefore(std::exchange(currentPath(), m_path)),
      m_sizeLimitBefore(LogSettings::sizeLimit()),
      m_mirrorBefore(Exception::GetMirrorErrorLog()),
      m_silencedBefore(Exception::IsThreadErrorLoggingDisabled()) {
    use();
    LogSettings::sizeLimit() = sizeLimitBytes;
    Exception::SetMirrorErrorLog(false);
    Exception::DisableThreadErrorLogging(false);
}

TemporaryLog::~TemporaryLog() {
    currentPath() = m_pathBefore;
    Exception::SetErrorLogLocation(m_pathBefore.c_str(), 0);
    LogSettings::sizeLimit() = m_sizeLimitBefore;
    Exception::SetMirrorErrorLog(m_mirrorBefore);
    Exception::DisableThreadErrorLogging(m_silencedBefore);
}

void TemporaryLog::use() const {
    Exception::SetErrorLogLocation(m_path.c_str(), 0);
}

bool TemporaryLog::exists() const {
    return std::filesystem::exists(asPath(m_path));
}

long long TemporaryLog::size() const {
    std::error_code missing;
    const std::uintmax_t bytes = std::filesystem::file_size(asPath(m_path), missing);
    return missing ? 0 : static_cast<long long>(bytes);
}

std::vector<std::string> TemporaryLog::takeMessages() {
    std::vector<std::string> result = messages();
    remove();
    return result;
}

void TemporaryLog::remove() {
    std::filesystem::remove(asPath(m_path));
}

long long currentLogSize() {
    return LogSettings::sizeLimit();
}

}  // namespace test
