/// \file
/// The secured objects: several processes open a new object at the same time. In one test, one of the processes is
/// killed during its calls.

#include <functional>
#include <string>

#include "exploration/SystemScenario.h"
#include "vorel/secure/SecuredMappings.h"
#include "vorel/secure/SecuredObjects.h"

namespace {

using exploration::Ending;
using exploration::require;
using exploration::SystemScenario;

constexpr const wchar_t* kName = L"explored";
constexpr const wchar_t* kFile = L"C:\\mapped";
constexpr unsigned long kSize = 4096;

/// Obtains an object and sets `created`. Returns the handle, or null.
using Obtain = void* (*)(bool& created);

void* obtainMutex(bool& created) {
    int isNew = 0;
    void* const mutex = vorel::ObtainAccessableMutex(0, kName, 10, 100, &isNew);
    created = isNew != 0;
    return mutex;
}

void* obtainMapping(bool& created) {
    int isNew = 0;
    void* const mapping = vorel::ObtainAccessableFileMapping(INVALID_HANDLE_VALUE, PAGE_READWRITE, FILE_MAP_WRITE, 0,
                                                             kSize, kName, &isNew);
    created = isNew != 0;
    return mapping;
}

void* obtainFileMapping(bool& created) {
    bool isFileNew = false;
    return vorel::ObtainAccessableFileMappingEx(kFile, PAGE_READWRITE, FILE_MAP_WRITE, 0, kSize, kName, &isFileNew,
                                                &created);
}

/// Whether the operation tries to open an object only once. The documentation of such an operation tells callers to
/// try again.
bool triesOnce(Obtain obtain) {
    return obtain == &obtainMapping;
}

/// Processes that obtain one object and keep it until all processes have it. If the only process that has the object is
/// killed, the object no longer exists. Just before the kill, another process may have failed to create the object,
/// because the object existed. If this process tries to open the object after the kill, it finds no object, and an
/// operation that tries only once returns null. `missed` counts these results.
class FirstOpening final : public SystemScenario {
public:
    FirstOpening(Obtain obtain, unsigned int processes, unsigned long long& missed)
        : m_obtain(obtain), m_processes(processes), m_missed(missed) {}

private:
    void start() override {
        machine().files().setScheduling(false);  // this scenario is not about files
        for (unsigned int process = 0; process < m_processes; ++process) {
            static constexpr const char* kNames[] = {"first", "second", "third"};
            task(kNames[process], process + 1, [this] {
                bool created = false;
                const bool isObtained = m_obtain(created) != nullptr;
                require(isObtained || (m_isKilled && triesOnce(m_obtain)), "a process does not get the object");
                m_missed += isObtained ? 0u : 1u;
                m_created += created ? 1u : 0u;
                ++m_ended;
                await([this] { return m_ended == m_processes; });
            });
        }
    }

    void processEnded(exploration::ProcessId) override { m_isKilled = true; }

    void check(const std::vector<Ending>& endings) override {
        for (const Ending ending : endings) {
            require(ending != Ending::Blocked || m_isKilled, "a process is blocked");
        }
        // The killed process may have created the object. If the object ended with this process, another process
        // creates the object again.
        require(m_created == 1 || (m_isKilled && m_created <= 2),
                std::to_string(m_created) + " processes created the object");
    }

    Obtain m_obtain;
    unsigned int m_processes;
    unsigned long long& m_missed;
    unsigned int m_created = 0;
    unsigned int m_ended = 0;
    bool m_isKilled = false;
};

class SecuredObjectsExploration : public exploration::ExplorationTest {};

const Obtain kObtain[] = {&obtainMutex, &obtainMapping, &obtainFileMapping};

TEST_F(SecuredObjectsExploration, AllProcessesGetTheObjectAndOneCreatesIt) {
    for (const Obtain obtain : kObtain) {
        unsigned long long missed = 0;
        explores<FirstOpening>({}, obtain, 2u, std::ref(missed));
        explores<FirstOpening>({.preemptions = 2}, obtain, 3u, std::ref(missed));
        EXPECT_EQ(missed, 0u);
    }
}

TEST_F(SecuredObjectsExploration, AfterAKillOnlyAnOperationThatTriesOnceMissesTheObject) {
    for (const Obtain obtain : kObtain) {
        unsigned long long missed = 0;
        explores<FirstOpening>({.preemptions = 2, .kills = 1}, obtain, 3u, std::ref(missed));
        EXPECT_EQ(missed != 0, triesOnce(obtain));
    }
}

}  // namespace
