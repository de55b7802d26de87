#include "exploration/Machine.h"

#include <algorithm>

// A title in quotation marks names a page of the documentation of Windows. Only where a comment says so, the quotation
// marks contain a sentence of such a page.

namespace exploration {

namespace {

// Thread-local, because threads that the runtime or the system starts must use the real system.
thread_local Machine* s_current = nullptr;

/// The handles of the model are larger than any handle that the system assigns. Pseudo handles, such as
/// INVALID_HANDLE_VALUE, are even larger.
constexpr std::uintptr_t kFirstHandle = 0x10000000;

std::string narrow(const std::wstring& text) {
    std::string result;
    for (const wchar_t unit : text) {
        result += static_cast<char>(unit);
    }
    return result;
}

/// The rights that the entries of an access list deny. "Order of ACEs in a DACL": a denial takes effect only if it
/// comes before the entries that allow the rights. This function assumes that the denials come first.
DWORD refusedRights(const SECURITY_ATTRIBUTES* attributes) {
    if (!attributes || !attributes->lpSecurityDescriptor) {
        return 0;
    }
    BOOL isPresent = FALSE;
    BOOL isDefault = FALSE;
    ACL* list = nullptr;
    if (!GetSecurityDescriptorDacl(attributes->lpSecurityDescriptor, &isPresent, &list, &isDefault) || !list) {
        return 0;
    }
    DWORD refused = 0;
    for (DWORD index = 0; index < list->AceCount; ++index) {
        void* entry = nullptr;
        if (GetAce(list, index, &entry) && static_cast<ACE_HEADER*>(entry)->AceType == ACCESS_DENIED_ACE_TYPE) {
            refused |= static_cast<ACCESS_DENIED_ACE*>(entry)->Mask;
        }
    }
    return refused;
}

}  // namespace

void schedulingPoint() {
    if (Scheduler::isInTask()) {
        Scheduler::running()->point();
    }
}

Machine::Machine() : m_files(*this), m_runtime(m_files), m_nextHandle(kFirstHandle) {
    s_current = this;
}

Machine::~Machine() {
    s_current = nullptr;
}

Machine* Machine::current() noexcept {
    return s_current;
}

void Machine::setCaller(TaskId task, ProcessId process) {
    m_caller = task;
    m_callingProcess = process;
}

TaskId Machine::task() const {
    return Scheduler::isInTask() ? Scheduler::running()->task() : m_caller;
}

ProcessId Machine::process() const {
    return Scheduler::isInTask() ? Scheduler::running()->process() : m_callingProcess;
}

// ---- Handles --------------------------------------------------------------------------------------------------------

HANDLE Machine::add(std::shared_ptr<KernelObject> object, DWORD access) {
    const std::uintptr_t handle = m_nextHandle;
    m_nextHandle += 4;
    m_handles.emplace(handle, Handle{process(), std::move(object), access});
    return reinterpret_cast<HANDLE>(handle);
}

Machine::Handle* Machine::find(HANDLE handle, KernelObject::Kind kind, DWORD access) {
    const auto found = m_handles.find(reinterpret_cast<std::uintptr_t>(handle));
    if (found == m_handles.end() || found->second.process != process() || found->second.object->kind != kind) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    if ((found->second.access & access) != access) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    return &found->second;
}

std::shared_ptr<KernelObject> Machine::named(const std::wstring& name) {
    const auto found = m_names.find(name);
    return found == m_names.end() ? nullptr : found->second.lock();
}

std::string Machine::label(HANDLE handle) const {
    const auto found = m_handles.find(reinterpret_cast<std::uintptr_t>(handle));
    const std::string number = std::to_string((reinterpret_cast<std::uintptr_t>(handle) - kFirstHandle) / 4);
    if (found == m_handles.end()) {
        return "handle " + number;
    }
    const KernelObject& object = *found->second.object;
    const char* const kinds[] = {"event ", "mutex ", "mapping "};
    return kinds[static_cast<int>(object.kind)] + (object.name.empty() ? number : narrow(object.name));
}

std::optional<bool> Machine::close(HANDLE handle) {
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    if (value < kFirstHandle) {
        return std::nullopt;
    }
    if (m_files.owns(handle)) {
        return m_files.close(handle);
    }
    schedulingPoint();
    traceCall([&] { return "CloseHandle " + label(handle); });
    const auto found = m_handles.find(value);
    if (found == m_handles.end() || found->second.process != process()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return false;
    }
    m_handles.erase(found);
    return true;
}

// ---- Events, mutexes, mappings --------------------------------------------------------------------------------------

/// "CreateMutexW function": an existing object with the name is opened with the rights of a new object, here `access`,
/// and the last error is ERROR_ALREADY_EXISTS. If the name belongs to an object of another type, the function fails
/// with ERROR_INVALID_HANDLE.
HANDLE Machine::create(KernelObject object, const SECURITY_ATTRIBUTES* attributes, DWORD access) {
    if (!object.name.empty()) {
        if (std::shared_ptr<KernelObject> existing = named(object.name)) {
            if (existing->kind != object.kind) {
                SetLastError(ERROR_INVALID_HANDLE);
                return nullptr;
            }
            if ((existing->refused & access) != 0) {
                SetLastError(ERROR_ACCESS_DENIED);
                return nullptr;
            }
            SetLastError(ERROR_ALREADY_EXISTS);
            return add(std::move(existing), access);
        }
    }
    object.refused = refusedRights(attributes);
    auto created = std::make_shared<KernelObject>(std::move(object));
    if (!created->name.empty()) {
        m_names[created->name] = created;
    }
    m_objects.push_back(created);
    SetLastError(ERROR_SUCCESS);
    return add(std::move(created), access);
}

HANDLE Machine::createEvent(const SECURITY_ATTRIBUTES* attributes, bool isManualReset, bool isSignalled,
                            const wchar_t* name) {
    schedulingPoint();
    KernelObject event{};
    event.kind = KernelObject::Kind::Event;
    event.name = name ? name : L"";
    event.isManualReset = isManualReset;
    event.isSignalled = isSignalled;
    HANDLE const handle = create(std::move(event), attributes, EVENT_ALL_ACCESS);
    traceCall([&] { return "CreateEvent: " + (handle ? label(handle) : "refused"); });
    return handle;
}

HANDLE Machine::createMutex(const SECURITY_ATTRIBUTES* attributes, bool isOwned, const wchar_t* name) {
    schedulingPoint();
    KernelObject mutex{};
    mutex.kind = KernelObject::Kind::Mutex;
    mutex.name = name ? name : L"";
    if (isOwned) {
        mutex.owner = task();
        mutex.recursion = 1;
    }
    HANDLE const handle = create(std::move(mutex), attributes, MUTEX_ALL_ACCESS);
    traceCall([&] { return "CreateMutex: " + (handle ? label(handle) : "refused"); });
    return handle;
}

/// "CreateFileMappingW function": without a file, or with an empty file, the size must not be 0. The call
/// requests rights that include the "Standard Access Rights", such as WRITE_DAC.
HANDLE Machine::createMapping(const SECURITY_ATTRIBUTES* attributes, HANDLE file, std::uint64_t size,
                              const wchar_t* name) {
    schedulingPoint();
    if (size == 0 && m_files.size(file).value_or(0) == 0) {
        SetLastError(file == INVALID_HANDLE_VALUE ? ERROR_INVALID_PARAMETER : ERROR_FILE_INVALID);
        return nullptr;
    }
    KernelObject mapping{};
    mapping.kind = KernelObject::Kind::Mapping;
    mapping.name = name ? name : L"";
    HANDLE const handle = create(std::move(mapping), attributes, STANDARD_RIGHTS_REQUIRED | SECTION_MAP_WRITE);
    traceCall([&] { return "CreateFileMapping: " + (handle ? label(handle) : "refused"); });
    return handle;
}

/// "OpenMutexW function": ERROR_FILE_NOT_FOUND if no object has this name.
HANDLE Machine::open(KernelObject::Kind kind, DWORD access, const wchar_t* name) {
    schedulingPoint();
    std::shared_ptr<KernelObject> object = named(name);
    if (!object) {
        traceCall([&] { return "opens " + narrow(name) + ": not found"; });
        SetLastError(ERROR_FILE_NOT_FOUND);
        return nullptr;
    }
    if (object->kind != kind) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    if ((object->refused & access) != 0) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    HANDLE const handle = add(std::move(object), access);
    traceCall([&] { return "opens " + label(handle); });
    return handle;
}

/// "SetEvent function": an auto-reset event remains signalled until one waiting thread is released. Setting a signalled
/// event has no effect.
bool Machine::setEvent(HANDLE handle) {
    schedulingPoint();
    Handle* const found = find(handle, KernelObject::Kind::Event, EVENT_MODIFY_STATE);
    if (!found) {
        return false;
    }
    traceCall([&] { return "SetEvent " + label(handle); });
    const std::shared_ptr<KernelObject> event = found->object;
    event->isSignalled = true;
    release(*event);
    schedulingPoint();
    return true;
}

bool Machine::resetEvent(HANDLE handle) {
    schedulingPoint();
    Handle* const found = find(handle, KernelObject::Kind::Event, EVENT_MODIFY_STATE);
    if (!found) {
        return false;
    }
    traceCall([&] { return "ResetEvent " + label(handle); });
    found->object->isSignalled = false;
    return true;
}

/// "ReleaseMutex function": ERROR_NOT_OWNER if the thread does not own the mutex. The owner must release the mutex
/// once for each of its waits.
bool Machine::releaseMutex(HANDLE handle) {
    schedulingPoint();
    Handle* const found = find(handle, KernelObject::Kind::Mutex, 0);
    if (!found) {
        return false;
    }
    traceCall([&] { return "ReleaseMutex " + label(handle); });
    const std::shared_ptr<KernelObject> mutex = found->object;
    if (mutex->owner != task() || mutex->recursion == 0) {
        SetLastError(ERROR_NOT_OWNER);
        return false;
    }
    if (--mutex->recursion == 0) {
        mutex->owner = kNoTask;
        release(*mutex);
    }
    schedulingPoint();
    return true;
}

/// Gives the object to `task` if the event is signalled, or if the mutex is free or already belongs to `task`. Returns
/// whether `task` got the object. If so, `result` is the result of the wait.
bool Machine::take(KernelObject& object, TaskId task, DWORD& result) {
    result = WAIT_OBJECT_0;
    if (object.kind == KernelObject::Kind::Event) {
        if (!object.isSignalled) {
            return false;
        }
        object.isSignalled = object.isManualReset;
        m_given += object.isManualReset ? 0u : 1u;
        return true;
    }
    if (object.owner != kNoTask && object.owner != task) {
        return false;
    }
    // "Mutex Objects": the first wait for an abandoned mutex returns WAIT_ABANDONED, and makes the waiting thread the
    // owner of the mutex.
    result = object.isAbandoned ? WAIT_ABANDONED : WAIT_OBJECT_0;
    m_abandonedWaits += object.isAbandoned ? 1u : 0u;
    object.isAbandoned = false;
    object.owner = task;
    ++object.recursion;
    return true;
}

/// Gives a released object to waiters. The scheduler chooses the waiters, because the page "Mutex Objects" says: "Do
/// not assume a first-in, first-out (FIFO) order."
void Machine::release(KernelObject& object) {
    while (!object.waiters.empty()) {
        const auto chosen =
            std::next(object.waiters.begin(),
                      static_cast<std::ptrdiff_t>(
                          Scheduler::running() ? Scheduler::running()->choose(object.waiters.size()) : 0));
        const std::shared_ptr<KernelObject::Waiter> waiter = *chosen;
        DWORD result = 0;
        if (!take(object, waiter->task, result)) {
            return;
        }
        waiter->result = result;
        object.waiters.erase(chosen);
    }
}

/// "WaitForSingleObject function".
DWORD Machine::wait(HANDLE handle, DWORD milliseconds) {
    schedulingPoint();
    const auto found = m_handles.find(reinterpret_cast<std::uintptr_t>(handle));
    if (found == m_handles.end() || found->second.process != process()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
    if ((found->second.access & SYNCHRONIZE) == 0) {
        SetLastError(ERROR_ACCESS_DENIED);
        return WAIT_FAILED;
    }
    const std::shared_ptr<KernelObject> object = found->second.object;
    DWORD result = WAIT_TIMEOUT;
    if (take(*object, task(), result)) {
        traceCall([&] { return "WaitForSingleObject " + label(handle) + ": " + std::to_string(result); });
        return result;
    }
    if (milliseconds == 0 || !Scheduler::isInTask()) {
        traceCall([&] { return "WaitForSingleObject " + label(handle) + ": timeout"; });
        return WAIT_TIMEOUT;
    }
    traceCall([&] { return "WaitForSingleObject " + label(handle) + ": waits"; });
    const auto waiter = std::make_shared<KernelObject::Waiter>(KernelObject::Waiter{task(), std::nullopt});
    object->waiters.push_back(waiter);
    Scheduler::running()->block([waiter] { return waiter->result.has_value(); },
                                milliseconds == INFINITE ? std::nullopt : std::optional<Tick>(milliseconds));
    if (!waiter->result) {
        object->waiters.remove(waiter);
        waiter->result = WAIT_TIMEOUT;
    }
    traceCall([&] { return "WaitForSingleObject " + label(handle) + " returns " + std::to_string(*waiter->result); });
    return *waiter->result;
}

// ---- Ends of tasks and processes ------------------------------------------------------------------------------------

/// "Mutex Objects": a mutex whose owner ended without releasing it is abandoned.
void Machine::abandon(TaskId task) {
    for (const std::weak_ptr<KernelObject>& reference : m_objects) {
        const std::shared_ptr<KernelObject> object = reference.lock();
        if (!object) {
            continue;
        }
        object->waiters.remove_if([task](const auto& waiter) { return waiter->task == task; });
        if (object->owner == task && object->recursion != 0) {
            object->owner = kNoTask;
            object->recursion = 0;
            object->isAbandoned = true;
            release(*object);
        }
    }
}

void Machine::taskEnded(TaskId task) {
    abandon(task);
}

/// "Terminating a Process": the handles of the process are closed. "LockFileEx function": its locks of files are
/// released.
void Machine::processKilled(ProcessId process, const std::vector<TaskId>& tasks) {
    for (const TaskId task : tasks) {
        abandon(task);
    }
    std::erase_if(m_sections, [&tasks](const auto& entry) {
        return std::find(tasks.begin(), tasks.end(), entry.second.owner) != tasks.end();
    });
    std::erase_if(m_handles, [process](const auto& entry) { return entry.second.process == process; });
    m_files.processKilled(process);
}

}  // namespace exploration
