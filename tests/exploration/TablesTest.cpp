/// \file
/// State of the library that several threads change: the table of silenced threads, and the spy on allocations. The
/// debug targets are not tested here, because their functions make no system call and so have no scheduling point.

#include "exploration/SystemScenario.h"
#include "vorel/core/MemoryAccounting.h"
#include "vorel/exceptions/Exception.h"

namespace {

using exploration::Ending;
using exploration::require;
using exploration::SystemScenario;
using vorel::Exception;

/// Threads that switch their logging off and on. Each thread must read only its own setting.
class SilencedThreads final : public SystemScenario {
public:
    explicit SilencedThreads(unsigned int threads) : m_threads(threads) {}

private:
    void start() override {
        for (unsigned int thread = 0; thread < m_threads; ++thread) {
            task("thread", 1, [] {
                require(!Exception::IsThreadErrorLoggingDisabled(), "the logging of a new thread is disabled");
                Exception::DisableThreadErrorLogging(true);
                require(Exception::IsThreadErrorLoggingDisabled(),
                        "the logging is still enabled after it was disabled");
                Exception::DisableThreadErrorLogging(false);
                require(!Exception::IsThreadErrorLoggingDisabled(),
                        "the logging is still disabled after it was enabled");
            });
        }
    }

    void check(const std::vector<Ending>& endings) override {
        require(endings == std::vector(endings.size(), Ending::Finished), "a thread is blocked");
        require(machine().heldSections() == 0, "a lock stays held");
    }

    unsigned int m_threads;
};

class Spy final : public vorel::AllocSpy {
    void allocated(void*, unsigned long long) override {}
    void freed(void*) override {}
    void report(vorel::MemAllocInfo&) override {}
};

struct Registry : vorel::AllocBase {
    using AllocBase::registeredSpy;
};

/// Two threads that each register a spy. One of the spies stays registered.
class Spies final : public SystemScenario {
    void start() override {
        for (Spy& spy : m_spies) {
            task("thread", 1, [&spy] { vorel::AllocBase::registerSpy(&spy); });
        }
    }

    void check(const std::vector<Ending>& endings) override {
        const vorel::AllocSpy* const last = Registry::registeredSpy();
        vorel::AllocBase::registerSpy(nullptr);
        require(endings == std::vector(endings.size(), Ending::Finished), "a thread is blocked");
        require(last == &m_spies[0] || last == &m_spies[1], "no spy is registered");
        require(machine().heldSections() == 0, "a lock stays held");
    }

    Spy m_spies[2];
};

class TablesExploration : public exploration::ExplorationTest {};

TEST_F(TablesExploration, AThreadReadsOnlyItsOwnSetting) {
    explores<SilencedThreads>({.preemptions = 3}, 2u);
    explores<SilencedThreads>({.preemptions = 2}, 3u);
}

TEST_F(TablesExploration, OneOfTwoSpiesStaysRegistered) {
    explores<Spies>({});
}

}  // namespace
