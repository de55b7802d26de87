/// \file
/// Four processes write one error log.
///
///     shared_log [--limit=<bytes>] [<UTF-8 text file>...]
///
/// The program starts four copies of itself. Each copy converts every line of the files to wide text and back. For each
/// damaged line, the copy logs an exception with its trail. It also logs warnings and debug lines. Each copy writes a
/// report, which the parent compares with the log. The parent then prints a summary.
///
/// The exit code is 1 if a line of the log is torn, if the log does not match the reports, or if the program or a copy
/// failed. A file may declare its damaged lines (see README.md). The exit code is also 1 if a copy found other damaged
/// lines than the file declares or than another copy found. It is 2 if a file cannot be read.
///
/// `--limit` is the size above which the log is moved to its backup. With a small limit, the oldest records are lost.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

#include <vorel/vorelCore.h>

#include "Report.h"
#include "Summary.h"
#include "Worker.h"
#include "support/Files.h"
#include "support/LogReader.h"
#include "support/Processes.h"

namespace shared_log {

namespace {

constexpr unsigned int kWorkers = 4;
constexpr std::string_view kWorkerOption = "--worker=";
constexpr std::string_view kLimitOption = "--limit=";

struct CommandLine {
    unsigned long worker = 0;  ///< 0 for the parent
    long long limit = vorel::Exception::LargeErrorLogSize;
    std::string folder;  ///< of the log and the reports: the first argument of a worker after the options
    std::vector<std::string> files;
};

CommandLine parse(const std::vector<std::string>& arguments) {
    CommandLine result;
    for (const std::string& argument : arguments) {
        if (argument.starts_with(kWorkerOption)) {
            result.worker = std::strtoul(argument.c_str() + kWorkerOption.size(), nullptr, 10);
        } else if (argument.starts_with(kLimitOption)) {
            result.limit = std::strtoll(argument.c_str() + kLimitOption.size(), nullptr, 10);
        } else if (result.worker != 0 && result.folder.empty()) {
            result.folder = argument;
        } else {
            result.files.push_back(argument);
        }
    }
    if (result.files.empty()) {
        result.files = {"README.md", "examples/shared_log/damaged.txt"};
    }
    return result;
}

std::string logPathIn(const std::string& folder) {
    return folder + "\\shared_log.txt";
}

/// The name of the start line (see Processes.h): the name of the folder, because the folder is unique for each run.
std::string startLineName(const std::string& folder) {
    return folder.substr(folder.find_last_of('\\') + 1);
}

int runWorker(const CommandLine& options) {
    vorel::Exception::setDebugTarget(L"LogsIncludeMsecs", true);
    vorel::Exception::setDebugTarget(L"SharedLog", true);
    vorel::Exception::SetErrorLogLocation(logPathIn(options.folder).c_str(), options.limit);
    if (!examples::StartLine(startLineName(options.folder)).lineUp()) {
        return EXIT_FAILURE;
    }
    const Report report = Worker().run(options.files);
    return writeReport(reportPath(options.folder, options.worker), report) ? EXIT_SUCCESS : EXIT_FAILURE;
}

/// Starts the workers, waits for them, and collects their reports.
Run runWorkers(const CommandLine& options) {
    const std::string program = examples::programPath();
    const std::string folder = examples::createFolderBeside(program, "shared_log");
    const examples::StartLine startLine(startLineName(folder));
    std::vector<examples::Handle> workers;
    for (unsigned int number = 1; number <= kWorkers; ++number) {
        std::vector<std::string> arguments{std::string(kWorkerOption) + std::to_string(number),
                                           std::string(kLimitOption) + std::to_string(options.limit), folder};
        arguments.insert(arguments.end(), options.files.begin(), options.files.end());
        workers.push_back(examples::startProcess(program, arguments));
    }
    if (!startLine.start(kWorkers)) {
        throw vorel::TimeoutException(L"the workers were not ready in time");
    }
    Run run{logPathIn(folder), options.files, {}};
    for (unsigned int number = 1; number <= kWorkers; ++number) {
        Report& report = run.workers.emplace_back();
        if (examples::exitCodeOf(workers[number - 1]) != EXIT_SUCCESS ||
            !readReport(reportPath(folder, number), report) || report.files.size() != options.files.size()) {
            throw vorel::Exception(L"worker %u failed or wrote no complete report", number);
        }
    }
    return run;
}

int runParent(const CommandLine& options) {
    for (const std::string& file : options.files) {
        if (!examples::readFile(file)) {
            (void)std::fprintf(stderr, "shared_log: cannot read %s\n", file.c_str());
            return 2;
        }
    }
    vorel::Exception::SetErrorLogSize(0);  // the parent writes nothing to a log
    std::printf("%u processes check the same %zu files and write one log.\n\n", kWorkers, options.files.size());
    const Run run = runWorkers(options);
    return printSummary(run, examples::readLog(run.logPath)) ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

}  // namespace shared_log

int main(int argumentCount, char** arguments) {
    try {
        const auto options = shared_log::parse({arguments + 1, arguments + argumentCount});
        return options.worker != 0 ? shared_log::runWorker(options) : shared_log::runParent(options);
    } catch (const vorel::Exception& e) {
        (void)std::fprintf(stderr, "shared_log: %s\n", e.getCharErrorMessageBlock("; "));
    } catch (const std::exception& e) {
        (void)std::fprintf(stderr, "shared_log: %s\n", e.what());
    }
    return EXIT_FAILURE;
}
