/// \file
/// A folder of a test's own, that goes with all it holds.
///
/// Paths are narrow text: this toolchain's std::filesystem cannot convert them under the universal runtime.
#pragma once

#include <string>

namespace test {

class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const noexcept { return m_path; }

    /// The path of a file in the folder.
    std::string file(const std::string& name) const { return m_path + "\\" + name; }

private:
    std::string m_path;
};

bool fileExists(const std::string& path);
void removeFile(const std::string& path);

/// The content of a file, byte for byte; empty when it is not there.
std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& content);

}  // namespace test
