#include "exploration/Script.h"

#include <array>
#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <share.h>
#include <sys/stat.h>
#include <windows.h>

#include "core/Format.h"
#include "exploration/Machine.h"

namespace exploration {

namespace {

/// The words of a step. Missing words are empty.
class Words {
public:
    explicit Words(const std::string& step) {
        std::istringstream stream(step);
        for (std::string& word : m_words) {
            stream >> word;
        }
    }

    const std::string& operator[](std::size_t index) const { return m_words[index]; }

private:
    std::array<std::string, 6> m_words;
};

/// A thread that makes steps on request.
class Worker {
public:
    Worker() : m_thread([this] { loop(); }) {}
    ~Worker() { end(); }

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void run(std::function<void()> step) {
        std::unique_lock lock(m_mutex);
        m_step = std::move(step);
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return !m_step; });
    }

    void end() {
        if (m_thread.joinable()) {
            {
                const std::lock_guard lock(m_mutex);
                m_isEnding = true;
            }
            m_changed.notify_all();
            m_thread.join();
        }
    }

private:
    void loop() {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [this] { return m_step || m_isEnding; });
            if (!m_step) {
                return;
            }
            m_step();
            m_step = nullptr;
            m_changed.notify_all();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::function<void()> m_step;
    bool m_isEnding = false;
    std::thread m_thread;
};

/// A security descriptor with the rights that the library gives its objects: everyone may use the object, but the
/// access list denies everyone the rights to change its security.
class SharedDescriptor {
public:
    SharedDescriptor() {
        SID_IDENTIFIER_AUTHORITY world = SECURITY_WORLD_SID_AUTHORITY;
        AllocateAndInitializeSid(&world, 1, SECURITY_WORLD_RID, 0, 0, 0, 0, 0, 0, 0, &m_everyone);
        auto* const list = reinterpret_cast<ACL*>(m_list);
        InitializeAcl(list, sizeof m_list, ACL_REVISION);
        AddAccessDeniedAce(list, ACL_REVISION, WRITE_DAC | WRITE_OWNER, m_everyone);
        AddAccessAllowedAce(list, ACL_REVISION, GENERIC_ALL, m_everyone);
        InitializeSecurityDescriptor(&m_descriptor, SECURITY_DESCRIPTOR_REVISION);
        SetSecurityDescriptorDacl(&m_descriptor, TRUE, list, FALSE);
    }
    ~SharedDescriptor() { FreeSid(m_everyone); }

    SharedDescriptor(const SharedDescriptor&) = delete;
    SharedDescriptor& operator=(const SharedDescriptor&) = delete;

    SECURITY_ATTRIBUTES* attributes() { return &m_attributes; }

private:
    PSID m_everyone = nullptr;
    alignas(ACL) unsigned char m_list[256] = {};
    SECURITY_DESCRIPTOR m_descriptor{};
    SECURITY_ATTRIBUTES m_attributes{sizeof(SECURITY_ATTRIBUTES), &m_descriptor, FALSE};
};

/// The objects of one run of a script. Each run has its own names and files.
class Run {
public:
    explicit Run(bool isSimulated) : m_prefix(uniquePrefix()) {
        if (isSimulated) {
            m_machine = std::make_unique<Machine>();
        } else {
            char folder[MAX_PATH];
            GetTempPathA(sizeof folder, folder);
            m_folder = folder;
        }
    }
    ~Run() {
        m_workers.clear();
        if (m_machine) {
            return;
        }
        for (const auto& [slot, handle] : m_handles) {
            CloseHandle(handle);
        }
        for (const auto& [slot, stream] : m_streams) {
            std::fclose(stream);
        }
        for (const auto& [slot, descriptor] : m_descriptors) {
            _close(descriptor);
        }
        for (const char* const name : {"x", "y"}) {
            _unlink(path(name).c_str());
        }
    }

    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    std::string make(const std::string& step) {
        const Words words(step);
        const auto actor = static_cast<TaskId>(words[0].front() - 'A');
        if (words[1] == "end") {
            if (m_machine) {
                m_machine->taskEnded(actor);
            } else {
                m_workers.erase(actor);
            }
            return "ended";
        }
        std::string result;
        if (m_machine) {
            m_machine->setCaller(actor, 1);
            result = makeCall(words);
        } else {
            std::unique_ptr<Worker>& worker = m_workers[actor];
            if (!worker) {
                worker = std::make_unique<Worker>();
            }
            worker->run([&] { result = makeCall(words); });
        }
        return result;
    }

private:
    static std::string uniquePrefix() {
        static unsigned int runs = 0;
        return "vorel-probe-" + std::to_string(_getpid()) + "-" + std::to_string(GetTickCount64()) + "-" +
               std::to_string(++runs) + "-";
    }

    /// The result of a call: its value, or the error.
    static std::string shown(bool succeeded, const std::string& value = "done") {
        return succeeded ? value : "failed " + std::to_string(GetLastError());
    }

    static std::string shownRuntime(bool succeeded, const std::string& value = "done") {
        return succeeded ? value : "failed errno " + std::to_string(errno);
    }

    std::string keep(const std::string& slot, HANDLE handle) {
        if (handle == nullptr || handle == INVALID_HANDLE_VALUE) {
            return shown(false);
        }
        const DWORD error = GetLastError();
        drop(slot);
        m_handles[slot] = handle;
        return error == ERROR_ALREADY_EXISTS ? "existed" : "done";
    }

    void drop(const std::string& slot) {
        if (const auto found = m_handles.find(slot); found != m_handles.end()) {
            CloseHandle(found->second);
            m_handles.erase(found);
        }
    }

    [[nodiscard]] HANDLE handle(const std::string& slot) const {
        const auto found = m_handles.find(slot);
        if (found != m_handles.end()) {
            return found->second;
        }
        const auto descriptor = m_descriptors.find(slot);
        return descriptor == m_descriptors.end() ? nullptr
                                                 : reinterpret_cast<HANDLE>(_get_osfhandle(descriptor->second));
    }

    [[nodiscard]] std::wstring objectName(const std::string& name) const {
        const std::string full = m_prefix + name;
        return {full.begin(), full.end()};
    }

    [[nodiscard]] std::string path(const std::string& name) const { return m_folder + m_prefix + name; }

    std::string makeCall(const Words& words);
    std::string makeObjectCall(const Words& words);
    std::string makeFileCall(const Words& words);

    std::unique_ptr<Machine> m_machine;
    std::map<TaskId, std::unique_ptr<Worker>> m_workers;
    std::string m_prefix;
    std::string m_folder;
    std::map<std::string, HANDLE> m_handles;
    std::map<std::string, int> m_descriptors;
    std::map<std::string, std::FILE*> m_streams;
    SharedDescriptor m_shared;
};

std::string Run::makeCall(const Words& words) {
    SetLastError(ERROR_SUCCESS);
    errno = 0;
    const std::string result = makeObjectCall(words);
    return result.empty() ? makeFileCall(words) : result;
}

std::string Run::makeObjectCall(const Words& words) {
    const std::string& call = words[1];
    const std::string& slot = words[2];
    const std::string& kind = words[3];
    const std::string& name = words[4];
    const std::string& security = words[5];
    const std::wstring full = objectName(name);
    const wchar_t* const objectText = name.empty() ? nullptr : full.c_str();
    SECURITY_ATTRIBUTES* const attributes = security.empty() ? nullptr : m_shared.attributes();
    if (call == "event") {
        const BOOL isManual = kind == "manual" || kind == "manual-set";
        return keep(slot, CreateEventW(attributes, isManual, kind == "set" || kind == "manual-set", objectText));
    }
    if (call == "mutex") {
        return keep(slot, CreateMutexW(attributes, kind == "owned", objectText));
    }
    if (call == "mapping") {
        return keep(slot, CreateFileMappingW(INVALID_HANDLE_VALUE, attributes, PAGE_READWRITE, 0,
                                             kind == "empty" ? 0 : 4096, objectText));
    }
    if (call == "open-event") {
        return keep(slot, OpenEventW(SYNCHRONIZE | EVENT_MODIFY_STATE, FALSE, objectName(kind).c_str()));
    }
    if (call == "open-mutex") {
        return keep(slot, OpenMutexW(SYNCHRONIZE, FALSE, objectName(kind).c_str()));
    }
    if (call == "open-mapping") {
        return keep(slot, OpenFileMappingW(FILE_MAP_WRITE, FALSE, objectName(kind).c_str()));
    }
    if (call == "set") {
        return shown(SetEvent(handle(slot)) != FALSE);
    }
    if (call == "reset") {
        return shown(ResetEvent(handle(slot)) != FALSE);
    }
    if (call == "release") {
        return shown(ReleaseMutex(handle(slot)) != FALSE);
    }
    if (call == "wait") {
        const DWORD result = WaitForSingleObject(handle(slot), 0);
        return shown(result != WAIT_FAILED, std::to_string(result));
    }
    if (call == "close") {
        if (const auto found = m_handles.find(slot); found != m_handles.end()) {
            const bool isClosed = CloseHandle(found->second) != FALSE;
            m_handles.erase(found);
            return shown(isClosed);
        }
    }
    return "";
}

std::string Run::makeFileCall(const Words& words) {
    const std::string& call = words[1];
    const std::string& slot = words[2];
    const std::string& first = words[3];
    const std::string& second = words[4];
    const auto descriptor = m_descriptors.find(slot);
    const auto stream = m_streams.find(slot);
    if (call == "open") {  // open <slot> <file> append|write
        int opened = -1;
        const int flags = _O_WRONLY | _O_CREAT | _O_NOINHERIT | (second == "append" ? _O_APPEND : 0);
        const int error = _sopen_s(&opened, path(first).c_str(), flags, _SH_DENYNO, _S_IREAD | _S_IWRITE);
        if (error != 0) {
            errno = error;
            return shownRuntime(false);
        }
        if (descriptor != m_descriptors.end()) {
            _close(descriptor->second);
        }
        m_descriptors[slot] = opened;
        return "done";
    }
    if (call == "read") {  // read <slot> <file> all|none|no-delete: the sharing mode
        const std::string file = path(first);
        const DWORD sharing = second == "all"    ? FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE
                              : second == "none" ? 0
                                                 : FILE_SHARE_READ | FILE_SHARE_WRITE;
        return keep(slot, CreateFileW(std::wstring(file.begin(), file.end()).c_str(), GENERIC_READ, sharing, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
    }
    if (call == "lock" || call == "unlock") {
        OVERLAPPED start{};
        const BOOL isDone =
            call == "lock"
                ? LockFileEx(handle(slot), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, ~0u, ~0u, &start)
                : UnlockFileEx(handle(slot), 0, ~0u, ~0u, &start);
        return shown(isDone != FALSE);
    }
    if (call == "size") {
        LARGE_INTEGER size{};
        const bool isKnown = GetFileSizeEx(handle(slot), &size) != FALSE;
        return shown(isKnown, std::to_string(size.QuadPart));
    }
    if (call == "print") {  // print <slot> <text>
        if (descriptor == m_descriptors.end()) {
            return "no file";
        }
        std::FILE* const file = _fdopen(descriptor->second, "a");
        m_descriptors.erase(descriptor);
        vorel::baseutil::streamPrint(file, "%hs\n", first.c_str());  // the library prints with this function
        const bool isWritten = std::fflush(file) == 0;
        std::string result = shownRuntime(isWritten);
        m_streams[slot] = file;
        return result;
    }
    if (call == "delete") {
        return shownRuntime(_unlink(path(slot).c_str()) == 0);
    }
    if (call == "move") {  // move <file> <file>
        return shownRuntime(std::rename(path(slot).c_str(), path(first).c_str()) == 0);
    }
    if (call == "close") {
        if (stream != m_streams.end()) {
            const bool isClosed = std::fclose(stream->second) == 0;
            m_streams.erase(stream);
            return shownRuntime(isClosed);
        }
        if (descriptor != m_descriptors.end()) {
            const bool isClosed = _close(descriptor->second) == 0;
            m_descriptors.erase(descriptor);
            return shownRuntime(isClosed);
        }
        return "not open";
    }
    throw std::logic_error("unknown step: " + call);
}

}  // namespace

std::vector<std::string> run(const Script& script, bool isSimulated) {
    Run objects(isSimulated);
    std::vector<std::string> results;
    for (const std::string& step : script.steps) {
        results.push_back(objects.make(step));
    }
    return results;
}

}  // namespace exploration
