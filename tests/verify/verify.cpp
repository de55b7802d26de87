/// \file
/// Runs the test programs of the archive and sums up their results. verify.cmd starts this program.
///
///     verify.exe [suite]...
///
/// The test programs are in the folder of verify.exe, and `tests.txt` in this folder lists their command lines. The
/// results are the XML files of the GoogleTest programs, and summary.html. They are written below the folder `results`
/// of the archive, or below the folder for temporary files if the archive is not writable. The exit code is 0 if cases
/// passed and none failed, 2 if the tests could not be run or summary.html could not be written, and otherwise 1.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <mutex>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <windows.h>

#include "support/ChildProcess.h"
#include "support/SystemText.h"
#include "support/Wine.h"
#include "verify/Page.h"
#include "verify/Program.h"
#include "verify/Results.h"
#include "verify/System.h"
#include "verify/TestList.h"

namespace {

namespace fs = std::filesystem;
using verify::Outcome;
using verify::Test;
using verify::TestResult;

constexpr std::size_t kOutputBytes = 8000;  // the page shows the last bytes of a longer output
constexpr unsigned int kMaxThreads = 16;

/// Whether functions for narrow text can open the path.
bool isNarrow(const std::wstring& path) {
    if (GetACP() == CP_UTF8) {
        return true;
    }
    BOOL replaced = FALSE;
    return WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, path.c_str(), -1, nullptr, 0, nullptr, &replaced) != 0 &&
           !replaced;
}

bool isAscii(const std::wstring& path) {
    return path.find_first_not_of(L" !#$%&'()+,-.0123456789:;=@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`"
                                  L"abcdefghijklmnopqrstuvwxyz{}~") == std::wstring::npos;
}

std::wstring variable(const wchar_t* name) {
    const wchar_t* const value = _wgetenv(name);
    return value ? value : L"";
}

/// Returns the path of the folder of the test programs. Some of these programs start themselves again by their narrow
/// path. So if the path has no narrow form, the function returns the short form of the path, which often has a narrow
/// form. If the short form has no narrow form either, the function throws.
fs::path programFolder() {
    std::wstring folder = test::programFolder();
    if (!isNarrow(folder)) {
        std::wstring shortForm(folder.size() + MAX_PATH, L'\0');
        shortForm.resize(GetShortPathNameW(folder.c_str(), shortForm.data(), static_cast<DWORD>(shortForm.size())));
        if (shortForm.empty() || !isNarrow(shortForm)) {
            throw std::runtime_error("the archive must be in a folder whose name has only characters of the system's "
                                     "code page, because some tests start themselves by this name");
        }
        folder = shortForm;
    }
    return folder;
}

/// A new folder for the programs' temporary files. The constructor sets the variables TEMP and TMP to this folder. The
/// destructor removes the folder. The path of the folder is ASCII, even if the name of the user is not, because the
/// tests pass the path to functions for narrow text.
class WorkFolder {
public:
    WorkFolder() {
        const std::wstring usual = fs::temp_directory_path().wstring();
        const fs::path parent = isAscii(usual) ? usual : variable(L"ProgramData");
        m_path = parent / (L"vorelCore-verify-" + std::to_wstring(GetCurrentProcessId()));
        fs::create_directories(m_path);
        for (const wchar_t* const name : {L"TEMP", L"TMP"}) {
            _wputenv_s(name, m_path.c_str());
        }
    }
    ~WorkFolder() {
        std::error_code stillOpen;
        fs::remove_all(m_path, stillOpen);
    }

    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    [[nodiscard]] const fs::path& path() const { return m_path; }

private:
    fs::path m_path;
};

/// Creates an empty folder with the name `user` for the results. `user` describes the rights of the user (see
/// UserKind).
fs::path resultFolder(const fs::path& archive, const fs::path& temporary, const wchar_t* user) {
    std::error_code error;
    for (const fs::path& parent : {archive / L"results", temporary / L"vorelCore results"}) {
        fs::path folder = parent / user;
        fs::remove_all(folder, error);
        if (fs::create_directories(folder, error) && !error) {
            return folder;
        }
    }
    throw std::runtime_error("no folder for the results is writable");
}

void writeFile(const fs::path& path, const std::string& bytes) {
    std::FILE* const file = _wfopen(path.c_str(), L"wb");
    if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size() || std::fclose(file) != 0) {
        throw std::runtime_error("cannot write the results");
    }
}

/// Runs tests on several threads, and prints a line for each test.
class Runner {
public:
    Runner(fs::path programs, fs::path work, fs::path results)
        : m_programs(std::move(programs)), m_work(std::move(work)), m_results(std::move(results)) {}

    /// Returns the results in the order of `tests`.
    std::vector<TestResult> run(const std::vector<Test>& tests) {
        std::vector<TestResult> results(tests.size());
        runSome(tests, results, false, std::clamp(std::thread::hardware_concurrency(), 1U, kMaxThreads));
        runSome(tests, results, true, 1);
        return results;
    }

private:
    void runSome(const std::vector<Test>& tests, std::vector<TestResult>& results, bool alone, unsigned int threads) {
        std::atomic<std::size_t> next{0};
        const auto work = [&] {
            for (std::size_t index = next++; index < tests.size(); index = next++) {
                if (tests[index].runsAlone == alone) {
                    results[index] = runTest(tests[index]);
                    report(results[index]);
                }
            }
        };
        std::vector<std::jthread> helpers;
        for (unsigned int thread = 1; thread < threads; ++thread) {
            helpers.emplace_back(work);
        }
        work();
    }

    [[nodiscard]] TestResult runTest(const Test& test) const {
        const auto begin = std::chrono::steady_clock::now();
        TestResult result;
        try {
            result = runOnce(test);
        } catch (const std::exception& e) {
            result.cases = {{.name = test.program, .outcome = Outcome::Failed, .message = verify::escaped(e.what())}};
        }
        result.name = test.name;
        result.suite = test.suite();
        result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        return result;
    }

    [[nodiscard]] TestResult runOnce(const Test& test) const {
        std::string arguments = test.arguments;
        const std::wstring file = std::wstring(test.name.begin(), test.name.end()) + L".xml";
        if (test.isGoogleTest) {
            arguments += " --gtest_output=xml:" + test.name + ".xml";
        }
        const fs::path program = m_programs / std::wstring(test.program.begin(), test.program.end());
        verify::ProgramResult run = verify::runProgram(program, arguments, m_work, test.limitMs);
        if (run.exitCode != 0 && run.output.empty() && test::wineVersion()) {
            // Wine fails to start about one of several thousand programs, so the program is started again.
            run = verify::runProgram(program, arguments, m_work, test.limitMs);
        }

        TestResult result;
        if (test.isGoogleTest && fs::exists(m_work / file)) {
            const std::string xml = verify::readBytes(m_work / file);
            result.cases = verify::readCases(xml);
            writeFile(m_results / file, xml);
        }
        const bool succeeded = run.inTime && run.exitCode == 0;
        if (!succeeded && !result.hasFailure()) {
            result.cases.push_back({.name = "the program", .outcome = Outcome::Failed, .message = endOf(run)});
        } else if (result.cases.empty() && test.isGoogleTest) {
            result.cases.push_back({.name = "the program", .outcome = Outcome::Failed, .message = "It ran no case."});
        } else if (!test.isGoogleTest) {
            result.cases.push_back({.name = "the program", .outcome = Outcome::Passed, .message = {}});
        }
        if (!test.isGoogleTest || result.hasFailure()) {
            const std::size_t skipped = run.output.size() - std::min(run.output.size(), kOutputBytes);
            result.output = verify::escaped(run.output.substr(skipped));
        }
        return result;
    }

    static std::string endOf(const verify::ProgramResult& run) {
        if (!run.inTime) {
            return "It exceeded its time limit and was terminated.";
        }
        char text[64];
        (void)std::snprintf(text, sizeof text, "It ended with the exit code 0x%lX.", run.exitCode);
        return text;
    }

    void report(const TestResult& result) {
        verify::Totals totals;
        totals.add(result);
        const std::scoped_lock lock(m_output);
        std::printf("%-50s %4u passed %8.1f s%s\n", result.name.c_str(), totals.passed, result.seconds,
                    totals.failed != 0    ? "  FAILED"
                    : totals.skipped != 0 ? "  (some skipped)"
                                          : "");
        (void)std::fflush(stdout);
    }

    fs::path m_programs;
    fs::path m_work;
    fs::path m_results;
    std::mutex m_output;
};

int verifyAll(const std::vector<std::string>& suites) {
    const fs::path programs = programFolder();
    const verify::UserKind user = verify::userKind();
    const std::vector<Test> tests = verify::readTestList(programs / L"tests.txt", suites);
    const fs::path archive = fs::path(test::programFolder()).parent_path().parent_path();
    const fs::path resultsFolder = resultFolder(archive, fs::temp_directory_path(), user.folder);
    const WorkFolder work;
    const std::vector<TestResult> results = Runner(programs, work.path(), resultsFolder).run(tests);

    verify::Totals totals;
    for (const TestResult& result : results) {
        totals.add(result);
    }
    const std::string conclusion = std::to_string(totals.passed) + " passed, " + std::to_string(totals.failed) +
                                   " failed, " + std::to_string(totals.skipped) + " skipped, on Windows " +
                                   verify::windowsBuild() + ", as " + user.phrase;
    const fs::path page = resultsFolder / L"summary.html";
    writeFile(page, verify::summaryPage(conclusion, verify::machineFacts(), results));
    std::printf("\nThe page with all results: %s\n%s\n", test::utf8(page.wstring()).c_str(), conclusion.c_str());
    return totals.failed == 0 && totals.passed != 0 ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
    SetConsoleOutputCP(CP_UTF8);
    try {
        return verifyAll({arguments + 1, arguments + count});
    } catch (const std::exception& e) {
        std::printf("The tests could not be run: %s\n", e.what());
        return 2;
    }
}
