#include "support/TemporaryFolder.h"

#include <atomic>
#include <fstream>
#include <sstream>
#include <utility>

#include <windows.h>

namespace test {

namespace {

/// Removes the files of a folder, and the folder; what is still open stays behind.
void removeFolder(const std::string& path) {
    WIN32_FIND_DATAA found = {};
    const HANDLE search = FindFirstFileA((path + "\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        DeleteFileA((path + "\\" + found.cFileName).c_str());
    } while (FindNextFileA(search, &found));
    FindClose(search);
    RemoveDirectoryA(path.c_str());
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
    static std::atomic<unsigned int> s_count{0};
    char temporary[MAX_PATH] = {};
    GetTempPathA(MAX_PATH, temporary);
    m_path = temporary;
    m_path += "vorel-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++s_count);
    removeFolder(m_path);  // a process of the same id may have left one behind
    CreateDirectoryA(m_path.c_str(), nullptr);
}

TemporaryFolder::~TemporaryFolder() {
    removeFolder(m_path);
}

bool fileExists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void removeFile(const std::string& path) {
    DeleteFileA(path.c_str());
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return std::move(content).str();
}

void writeFile(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}

}  // namespace test
