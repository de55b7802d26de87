"""Plants faults in the library, one at a time, and checks that the explorer finds each fault.

Run this script as `./dev explore --faults`, which first builds the tests. With --others, the script also runs the
other test programs (except stress and exports) for each fault, and stops at the first test that fails. The output shows
which faults only the explorer finds.
"""

import argparse
import re
import subprocess
import sys
from pathlib import Path
from typing import NamedTuple

ROOT = Path(__file__).resolve().parents[2]
PAGE = ROOT / "docs" / "reliability.md"
sys.path.insert(0, str(ROOT / "tests" / "mutation"))
from workbench import Bench, Build, TestDoesNotCompile  # noqa: E402


class Fault(NamedTuple):
    name: str
    path: str
    before: str
    after: str
    suite: str


FAULTS = [
    Fault("a waiter is counted until it holds the lock again", "src/sync/Condition.cpp",
          """        const UnGuard left(m_lock);
        { const Guard notDuringABroadcast(m_broadcastLock); }
        const Waiter counted(m_waiters);
""",
          """        const Waiter counted(m_waiters);
        const UnGuard left(m_lock);
        { const Guard notDuringABroadcast(m_broadcastLock); }
""", "ConditionExploration"),
    Fault("a waiter keeps the lock while it waits", "src/sync/Condition.cpp",
          "        const UnGuard left(m_lock);\n", "", "ConditionExploration"),
    Fault("a broadcast signals only once", "src/sync/Condition.cpp",
          "while (m_waiters > 0) {", "if (m_waiters > 0) {", "ConditionExploration"),
    Fault("a signal releases all waiters", "src/sync/Condition.cpp",
          "CreateEventW(nullptr, FALSE, FALSE, nullptr)", "CreateEventW(nullptr, TRUE, FALSE, nullptr)",
          "ConditionExploration"),
    Fault("a waiter returns without the lock", "include/vorel/core/Guard.h",
          "m_held = m_lock->lock(kTimeoutMs, true);", "m_held = m_lock->tryLock();", "ConditionExploration"),
    Fault("a critical section is entered without waiting", "src/core/CriticalSections.cpp",
          "    EnterCriticalSection(sectionOf(handle));\n", "    (void)TryEnterCriticalSection(sectionOf(handle));\n",
          "CriticalSectionsExploration"),
    Fault("a named signal releases all processes", "src/sync/NamedCondition.cpp",
          "ObtainAccessableEvent(0, 0, name", "ObtainAccessableEvent(1, 0, name", "NamedConditionExploration"),
    Fault("the owner is cleared after the release", "src/sync/AutoMutex.cpp",
          """        SetLockCount(false);  // before the release, because another thread may count its lock right after the release
        if (!ReleaseMutex(m_mutex.get())) {""",
          """        const bool isReleased = ReleaseMutex(m_mutex.get()) != FALSE;
        SetLockCount(false);
        if (!isReleased) {""", "AutoMutexExploration"),
    Fault("a thread that has ended stays recorded as the owner", "src/sync/AutoMutex.cpp",
          "    m_lockCount = 0;\n    m_lockingThreadId = 0;\n    return WAIT_OBJECT_0;", "    return WAIT_OBJECT_0;",
          "AutoMutexExploration"),
    Fault("a wait that acquires an abandoned mutex counts as failed", "src/sync/AutoMutex.cpp",
          "    m_lockingThreadId = 0;\n    return WAIT_OBJECT_0;", "    m_lockingThreadId = 0;\n    return result;",
          "AutoMutexExploration"),
    Fault("an object is not opened after its creation was refused", "src/secure/SecuredObjects.cpp",
          "        KernelHandle opened(kind.open());", "        KernelHandle opened;", "SecuredObjectsExploration"),
    Fault("a mapping is not opened after its creation was refused", "src/secure/SecuredMappings.cpp",
          "            mapping = kind.open();\n        }\n        if (mapping) {", "        }\n        if (mapping) {",
          "SecuredObjectsExploration"),
    Fault("the log is renamed before it is closed", "src/exceptions/ErrorLog.cpp",
          "    file.close();\n    (void)std::rename(path, backup.text);", "    (void)std::rename(path, backup.text);",
          "ErrorLogExploration"),
    Fault("a line is written to a log that others have locked", "src/exceptions/LogFile.cpp",
          "    m_locked = lockWholeFile(m_descriptor, true);\n    return m_locked;",
          "    m_locked = lockWholeFile(m_descriptor, true);\n    return true;", "ErrorLogExploration"),
    Fault("lines overwrite the log instead of being appended", "src/exceptions/LogFile.cpp",
          "(mode == Mode::Append ? _O_APPEND : 0)", "(mode == Mode::Append ? 0 : 0)", "ErrorLogExploration"),
    Fault("the lock of the log is released at once", "src/exceptions/LogFile.cpp",
          "    m_locked = lockWholeFile(m_descriptor, true);\n    return m_locked;",
          "    return lockWholeFile(m_descriptor, true) && lockWholeFile(m_descriptor, false);", "ErrorLogExploration"),
    Fault("a line is written after the log is unlocked", "src/exceptions/ErrorLog.cpp",
          "    (void)std::fflush(stream);\n", "", "ErrorLogExploration"),
    Fault("a writer makes only one attempt to lock the log", "src/exceptions/ErrorLog.cpp",
          "constexpr unsigned int kMaxRetries = 30;", "constexpr unsigned int kMaxRetries = 0;", "ErrorLogExploration"),
    Fault("the flag for silenced threads is stored after the lock is released", "src/exceptions/ThreadLogging.cpp",
          """        const Guard<AutoCriticalSection> held(state.silencedThreadsLock);
        auto& threads = state.silencedThreads;
        if (!silenced) {
            threads.remove(thread, thread);
        } else if (const auto found = threads.find(thread, thread); found == threads.end()) {
            threads.put(thread, thread, creationTime());
        } else {
            found.value() = creationTime();
        }
        AnyThreadLoggingDisabled.store(threads.size() != 0, std::memory_order_relaxed);""",
          """        bool anySilenced = false;
        {
            const Guard<AutoCriticalSection> held(state.silencedThreadsLock);
            auto& threads = state.silencedThreads;
            if (!silenced) {
                threads.remove(thread, thread);
            } else if (const auto found = threads.find(thread, thread); found == threads.end()) {
                threads.put(thread, thread, creationTime());
            } else {
                found.value() = creationTime();
            }
            anySilenced = threads.size() != 0;
        }
        AnyThreadLoggingDisabled.store(anySilenced, std::memory_order_relaxed);""", "TablesExploration"),
    Fault("a broadcast signals once for each thread that waited at its start", "src/sync/Condition.cpp",
          "        while (m_waiters > 0) {\n", "        for (long waiters = m_waiters; waiters > 0; --waiters) {\n",
          "ConditionExploration"),
    Fault("a released waiter clears the event", "src/sync/SystemEvent.cpp",
          "    return WaitForSingleObject(event.get(), static_cast<DWORD>(timeoutMs)) == WAIT_OBJECT_0;\n",
          """    if (WaitForSingleObject(event.get(), static_cast<DWORD>(timeoutMs)) != WAIT_OBJECT_0) {
        return false;
    }
    ResetEvent(event.get());
    return true;
""", "ConditionExploration"),
    Fault("an object that is gone before it is opened is not created again", "src/secure/SecuredObjects.cpp",
          "        if (attempt >= retries) {", "        if (attempt >= retries || GetLastError() == ERROR_FILE_NOT_FOUND) {",
          "SecuredObjectsExploration"),
    Fault("an opened mapping is reported as created", "src/secure/SecuredMappings.cpp",
          """            mapping = kind.open();
        }
        if (mapping) {""",
          """            mapping = kind.open();
            mappingCreated = mapping && wasNew();
        }
        if (mapping) {""", "SecuredObjectsExploration"),
]


def length_of(output):
    """The number of decisions of the failing schedule; None if no schedule failed."""
    decisions = re.search(r"^decisions:((?: \d+)*)$", output, re.MULTILINE)
    return len(decisions[1].split()) if decisions else None


def found_by_others(bench, build):
    """The first test that finds the planted fault, or the file that does not compile; None if all pass."""
    for program in build.programs.values():
        if program.name == "exploration":
            continue
        try:
            has_changed = bench.build(program)
        except TestDoesNotCompile as error:
            return f"does not compile: {error}"
        failed = bench.run(program, "*") if has_changed else None
        if failed:
            return f"{program.name}.{failed}"
    return None


def main():
    parser = argparse.ArgumentParser(prog="./dev explore --faults", description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("name", nargs="?", default="", help="plant only the faults whose names contain this text")
    parser.add_argument("--others", action="store_true",
                        help="for each fault, also search the other test programs for a test that finds the fault")
    parser.add_argument("--check", action="store_true", help="only check that the faults can be planted and are documented")
    options = parser.parse_args()
    for fault in FAULTS:
        if (ROOT / fault.path).read_text().count(fault.before) != 1:
            sys.exit(f"{fault.path} must contain this text exactly once:\n{fault.before}")
        if f"| {fault.name} |" not in PAGE.read_text():
            sys.exit(f"{PAGE} must list this fault: {fault.name}")
    if options.check:
        return False
    build = Build(ROOT, ROOT / "build" / "release")
    bench = Bench(build, ROOT / "build" / "exploration")
    program = build.programs["exploration"]
    faults = [fault for fault in FAULTS if options.name in fault.name]
    missed = 0
    try:
        for fault in faults:
            text = (ROOT / fault.path).read_text()
            bench.put(fault.path, text.replace(fault.before, fault.after))
            if not bench.build(program):
                sys.exit(f"{fault.name}: the fault does not change the code")
            failed = bench.run(program, f"{fault.suite}.*")
            missed += not failed
            length = length_of(bench.output())
            found = f"found by {failed}" + (f", schedule of {length} decision{'s'[:length != 1]}" if length else "") if failed else "NOT FOUND"
            print(f"{fault.name}: {found}", flush=True)
            if options.others:
                print(f"    other tests: {found_by_others(bench, build) or 'do not find the fault'}", flush=True)
    finally:
        bench.close()
    print(f"{len(faults) - missed} of {len(faults)} faults found")
    return missed != 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except subprocess.CalledProcessError as error:
        sys.exit(str(error))
