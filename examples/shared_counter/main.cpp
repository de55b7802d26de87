/// \file
/// Four processes add to one number under a named mutex. One of them is killed while it holds the mutex. The next
/// process that gets the mutex writes a warning to the log, and the remaining processes finish.
///
///     shared_counter
///
/// The exit code is 0 if the number is correct, the remaining processes succeeded, and the log contains exactly one
/// record, which is about the abandoned mutex.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

#include <vorel/vorelCore.h>

#include "Ledger.h"
#include "support/LogReader.h"
#include "support/Processes.h"

namespace shared_counter {

namespace {

std::string logPathIn(const std::string& folder) {
    return folder + "\\shared_counter.txt";
}

/// A name that is unique among all running copies of the program.
std::string runName(unsigned long parentId) {
    return "shared_counter-" + std::to_string(parentId);
}

void prepareLog(const std::string& folder) {
    vorel::Exception::setDebugTarget(L"LogsIncludeMsecs", true);  // readLog() expects milliseconds
    vorel::Exception::SetErrorLogLocation(logPathIn(folder).c_str(), vorel::Exception::LargeErrorLogSize);
}

int runWorker(unsigned int process, const std::string& folder, const std::string& name) {
    prepareLog(folder);
    Ledger ledger(folder, name);
    ledger.enter(process);
    for (unsigned int round = 0; round != kRounds; ++round) {
        if (process == kVictim && round == kRounds / 2) {
            ledger.stopWithTheMutexHeld();
        }
        ledger.addOne(process);
    }
    ledger.finish();
    return EXIT_SUCCESS;
}

/// The warnings about the abandoned mutex.
std::vector<examples::Record> abandonedRecords(const examples::Log& log) {
    std::vector<examples::Record> found;
    for (const examples::Record& record : log.records) {
        if (record.kind == examples::Kind::Warning && record.message.find("WAIT_ABANDONED") != std::string::npos) {
            found.push_back(record);
        }
    }
    return found;
}

bool printResult(const Counts& counts, const examples::Log& log) {
    bool right = true;
    long long expected = 0;
    std::printf("  process      added\n");
    for (unsigned int process = 0; process != kProcesses; ++process) {
        const unsigned int rounds = process == kVictim ? kRounds / 2 : kRounds;
        std::printf("  %-10lu %7lld%s\n", counts.processIds[process], counts.added[process],
                    process == kVictim ? "  killed while it held the mutex" : "");
        right = right && counts.added[process] == rounds;
        expected += rounds;
    }
    right = right && counts.total == expected;
    std::printf("  total      %7lld  of %lld\n\nThe log\n", counts.total, expected);
    const std::vector<examples::Record> abandoned = abandonedRecords(log);
    for (const examples::Record& record : abandoned) {
        std::printf("  process %lu: %s\n", record.processId, record.message.c_str());
    }
    right = right && abandoned.size() == 1 && log.records.size() == 1 && log.unreadable.empty();
    std::printf("\nResult: %s\n", right ? "the other processes finished, and the number is correct" : "failed");
    return right;
}

int runParent() {
    const std::string program = examples::programPath();
    const std::string folder = examples::createFolderBeside(program, "shared_counter");
    const std::string name = runName(GetCurrentProcessId());
    std::printf("%u processes add one to a shared number %u times each.\n\n", kProcesses, kRounds);
    prepareLog(folder);
    Ledger ledger(folder, name);
    std::vector<examples::Handle> workers;
    for (unsigned int process = 0; process != kProcesses; ++process) {
        workers.push_back(examples::startProcess(program, {std::to_string(process), folder, name}));
    }
    if (!ledger.waitForVictim()) {
        throw vorel::TimeoutException(L"the process to be killed did not complete half of its rounds");
    }
    TerminateProcess(workers[kVictim].get(), EXIT_FAILURE);
    if (!ledger.waitForFinished(kProcesses - 1)) {
        throw vorel::TimeoutException(L"the other processes did not finish");
    }
    bool allWell = true;
    for (unsigned int process = 0; process != kProcesses; ++process) {
        allWell =
            examples::exitCodeOf(workers[process]) == (process == kVictim ? EXIT_FAILURE : EXIT_SUCCESS) && allWell;
    }
    return printResult(ledger.read(), examples::readLog(logPathIn(folder))) && allWell ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

}  // namespace shared_counter

int main(int argumentCount, char** arguments) {
    try {
        return argumentCount == 4
                   ? shared_counter::runWorker(static_cast<unsigned int>(std::strtoul(arguments[1], nullptr, 10)),
                                               arguments[2], arguments[3])
                   : shared_counter::runParent();
    } catch (const vorel::Exception& e) {
        (void)std::fprintf(stderr, "shared_counter: %s\n", e.getCharErrorMessageBlock("; "));
    } catch (const std::exception& e) {
        (void)std::fprintf(stderr, "shared_counter: %s\n", e.what());
    }
    return EXIT_FAILURE;
}
