/// \file
/// A model of the parts of Windows that the locks, the conditions, the secured objects and the log use. It follows the
/// documentation of Windows. In the .cpp files, the comment of a rule contains the title of the page that has the rule.
/// Calls that open, wait for, change or close a shared object or a file are scheduling points, and so are calls that
/// enter or leave a critical section. Calls outside of a task are not scheduling points.
///
/// A call that fails sets the last error, as in the system.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include <windows.h>

#include "exploration/FileSystem.h"
#include "exploration/RuntimeFiles.h"
#include "exploration/Scheduler.h"

namespace exploration {

/// The "task" of calls outside of all tasks.
inline constexpr TaskId kNoTask = ~0u;

/// Makes a scheduling point if the caller is a task.
void schedulingPoint();

/// Records a call for the trace of a failure. `text()` is the line that describes the call.
template <class Text>
void traceCall(const Text& text) {
    if (Scheduler* const scheduler = Scheduler::running(); scheduler && scheduler->isTracing()) {
        scheduler->trace(text());
    }
}

/// An event, a mutex or a file mapping.
struct KernelObject {
    enum class Kind { Event, Mutex, Mapping };

    /// A waiting task. A release gives the object to a waiter at once, so a task that begins to wait later cannot
    /// acquire it.
    struct Waiter {
        TaskId task;
        std::optional<DWORD> result;
    };

    Kind kind;
    std::wstring name;
    DWORD refused = 0;  ///< rights that the access list denies to everyone
    std::list<std::shared_ptr<Waiter>> waiters;

    bool isManualReset = false;
    bool isSignalled = false;

    TaskId owner = kNoTask;
    unsigned int recursion = 0;
    bool isAbandoned = false;
};

class Machine {
public:
    Machine();
    ~Machine();

    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    /// The model that the calling thread created; null if there is none. Without a model, calls go to the system.
    static Machine* current() noexcept;

    /// Sets the task and the process in whose name calls outside of all tasks are made. Scripts, and the setup of a
    /// scenario, make such calls.
    void setCaller(TaskId task, ProcessId process);
    [[nodiscard]] TaskId task() const;
    [[nodiscard]] ProcessId process() const;

    // ---- Events, mutexes and mappings ----

    HANDLE createEvent(const SECURITY_ATTRIBUTES* attributes, bool isManualReset, bool isSignalled,
                       const wchar_t* name);
    HANDLE createMutex(const SECURITY_ATTRIBUTES* attributes, bool isOwned, const wchar_t* name);
    HANDLE createMapping(const SECURITY_ATTRIBUTES* attributes, HANDLE file, std::uint64_t size, const wchar_t* name);
    HANDLE open(KernelObject::Kind kind, DWORD access, const wchar_t* name);
    bool setEvent(HANDLE handle);
    bool resetEvent(HANDLE handle);
    bool releaseMutex(HANDLE handle);
    DWORD wait(HANDLE handle, DWORD milliseconds);

    /// Closes a handle of this model, and returns whether it was open. Does nothing for a handle of the system, and
    /// returns nullopt.
    std::optional<bool> close(HANDLE handle);

    // ---- Critical sections ----

    void initialize(CRITICAL_SECTION* address);
    void destroy(CRITICAL_SECTION* address);
    void enter(CRITICAL_SECTION* address);
    bool tryEnter(CRITICAL_SECTION* address);
    void leave(CRITICAL_SECTION* address);

    // ---- Ends of tasks and processes ----

    void taskEnded(TaskId task);
    void processKilled(ProcessId process, const std::vector<TaskId>& tasks);

    // ---- For the properties of scenarios ----

    /// Allows tasks to leave a critical section that they do not own, and only counts these calls. By default, such a
    /// call ends the schedule with a failure.
    void countMisuse() { m_isMisuseCounted = true; }
    [[nodiscard]] unsigned int misuses() const { return m_misuses; }

    FileSystem& files() { return m_files; }
    RuntimeFiles& runtime() { return m_runtime; }
    [[nodiscard]] std::size_t handleCount() const { return m_handles.size(); }
    [[nodiscard]] bool holds(const void* address) const;
    [[nodiscard]] std::size_t heldSections() const;

    /// The number of waits that returned WAIT_ABANDONED, and the number of waits that an auto-reset event released.
    [[nodiscard]] std::size_t abandonedWaits() const { return m_abandonedWaits; }
    [[nodiscard]] std::size_t givenCount() const { return m_given; }

private:
    struct Handle {
        ProcessId process;
        std::shared_ptr<KernelObject> object;
        DWORD access;
    };

    struct Section {
        TaskId owner = kNoTask;
        unsigned int recursion = 0;
        unsigned int waiters = 0;
    };

    HANDLE create(KernelObject object, const SECURITY_ATTRIBUTES* attributes, DWORD access);
    HANDLE add(std::shared_ptr<KernelObject> object, DWORD access);
    Handle* find(HANDLE handle, KernelObject::Kind kind, DWORD access);
    std::shared_ptr<KernelObject> named(const std::wstring& name);
    bool take(KernelObject& object, TaskId task, DWORD& result);
    void release(KernelObject& object);
    void abandon(TaskId task);
    Section& section(const CRITICAL_SECTION* address);
    std::string label(HANDLE handle) const;

    FileSystem m_files;
    RuntimeFiles m_runtime;
    std::map<std::uintptr_t, Handle> m_handles;
    std::map<std::wstring, std::weak_ptr<KernelObject>> m_names;
    std::vector<std::weak_ptr<KernelObject>> m_objects;
    std::unordered_map<const void*, Section> m_sections;
    std::unordered_set<const void*> m_destroyedSections;
    std::uintptr_t m_nextHandle;
    std::size_t m_abandonedWaits = 0;
    std::size_t m_given = 0;
    bool m_isMisuseCounted = false;
    unsigned int m_misuses = 0;
    TaskId m_caller = kNoTask;
    ProcessId m_callingProcess = 0;
};

}  // namespace exploration
