/// \file
/// Reads `tests.txt`, the list of the test programs that are in the same archive as verify.exe.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace verify {

/// A test of the list: one start of a program.
struct Test {
    std::string name;      ///< "core.ArrayTest"; the part before the first period is the name of the suite
    std::string program;   ///< the file name of the program
    bool isGoogleTest;     ///< whether the program writes its results to a file; if not, its exit code is the result
    bool runsAlone;        ///< whether no other test may run at the same time
    unsigned int limitMs;  ///< a program that runs longer has failed
    std::string arguments;

    [[nodiscard]] std::string suite() const { return name.substr(0, name.find('.')); }
};

/// Reads the list, which contains a test per line. Tabs separate the fields of a line. Only tests of `suites` are
/// returned, or all tests if `suites` is empty.
/// \throws std::exception if the list cannot be opened, a line is damaged, or a suite does not exist.
std::vector<Test> readTestList(const std::filesystem::path& path, const std::vector<std::string>& suites);

/// The bytes of a file, up to the first read error.
/// \throws std::runtime_error if the file cannot be opened.
std::string readBytes(const std::filesystem::path& path);

}  // namespace verify
