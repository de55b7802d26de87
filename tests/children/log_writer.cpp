/// \file
/// Writes stress lines to an error log from several threads at the same time.
///
///     log=<path> limit=<bytes> writer=<number> threads=<count> lines=<per thread; 0: endless>
///     start=<event to wait for> [turn=<mutex to hold for each line>] [progress=<event>] result=<path>
///
/// Sets `progress` when every thread has written its first ten lines. The result contains the id of each thread, and
/// the lines whose calls took so long that the log may have dropped them. A writer cannot detect a dropped line in any
/// other way.

#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <windows.h>

#include <vorel/vorelCore.h>

#include "stress/WriterResult.h"
#include "support/ChildArguments.h"
#include "support/Handle.h"
#include "support/NamedEvent.h"
#include "support/StressLine.h"

namespace {

using test::ChildArguments;

constexpr unsigned int kLinesOfProgress = 10;

/// Holds a mutex, or nothing if the handle is null.
class Turn {
public:
    explicit Turn(HANDLE mutex) : m_mutex(mutex) {
        if (m_mutex) {
            WaitForSingleObject(m_mutex, INFINITE);
        }
    }
    ~Turn() {
        if (m_mutex) {
            ReleaseMutex(m_mutex);
        }
    }

    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    HANDLE m_mutex;
};

class LogWriter {
public:
    explicit LogWriter(const ChildArguments& arguments)
        : m_writer(static_cast<unsigned int>(arguments.number("writer"))),
          m_lines(static_cast<unsigned int>(arguments.number("lines"))),
          m_results(static_cast<std::size_t>(arguments.number("threads"))),
          m_threadsWithoutProgress(static_cast<unsigned int>(m_results.size())) {
        if (const std::wstring mutex = arguments.wide("turn"); !mutex.empty()) {
            m_turn = test::Handle(CreateMutexW(nullptr, FALSE, mutex.c_str()));
        }
        if (std::wstring event = arguments.wide("progress"); !event.empty()) {
            m_progress = std::make_unique<test::NamedEvent>(std::move(event));
        }
    }

    const std::vector<test::ThreadResult>& run() {
        std::vector<std::thread> threads;
        for (unsigned int index = 0; index != m_results.size(); ++index) {
            threads.emplace_back([this, index] { write(index); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        return m_results;
    }

private:
    void write(unsigned int thread) {
        test::ThreadResult& result = m_results[thread];
        result.threadId = GetCurrentThreadId();
        for (unsigned int number = 0; m_lines == 0 || number != m_lines; ++number) {
            const std::wstring text = test::stressLine({m_writer, thread, number}).wide;
            if (writeTimed(text.c_str()) >= test::kMinDropTime) {
                result.slowLines.push_back(number);
            }
            if (number + 1 == kLinesOfProgress && --m_threadsWithoutProgress == 0 && m_progress) {
                m_progress->set();
            }
        }
    }

    [[nodiscard]] std::chrono::steady_clock::duration writeTimed(const wchar_t* text) const {
        const Turn turn(m_turn.get());
        const auto start = std::chrono::steady_clock::now();
        vorel::Exception::warn(L"%ls", text);
        return std::chrono::steady_clock::now() - start;
    }

    unsigned int m_writer;
    unsigned int m_lines;
    std::vector<test::ThreadResult> m_results;
    std::atomic<unsigned int> m_threadsWithoutProgress;
    test::Handle m_turn;
    std::unique_ptr<test::NamedEvent> m_progress;
};

int writeLog(const ChildArguments& arguments) {
    vorel::Exception::SetErrorLogLocation(arguments.text("log").c_str(), 0);
    vorel::Exception::SetErrorLogSize(arguments.number("limit"));
    LogWriter writer(arguments);
    if (!test::NamedEvent(arguments.wide("start")).wait()) {
        return 1;
    }
    return test::writeResult(arguments.text("result"), writer.run()) ? 0 : 2;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    try {
        return writeLog({argumentCount, arguments});
    } catch (...) {
        return 3;
    }
}
