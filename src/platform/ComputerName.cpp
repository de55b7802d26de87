#include "platform/ComputerName.h"

#include <atomic>

#include <windows.h>

namespace vorel::platform {

namespace {

enum class Memory { Empty, Filling, Filled };

constinit std::atomic<Memory> s_memory{Memory::Empty};
constinit ComputerName s_name;

}  // namespace

ComputerName ComputerName::ask() noexcept {
    ComputerName name;
    DWORD size = sizeof name.text;
    if (!GetComputerNameExA(ComputerNamePhysicalDnsHostname, name.text, &size)) {
        return {};
    }
    for (char* c = name.text; *c; ++c) {
        if (*c >= 'A' && *c <= 'Z') {
            *c = static_cast<char>(*c + ('a' - 'A'));
        }
    }
    return name;
}

ComputerName ComputerName::remembered() noexcept {
    if (s_memory.load(std::memory_order_acquire) == Memory::Filled) {
        return s_name;
    }
    const ComputerName name = ask();
    Memory expected = Memory::Empty;
    if (*name.text && s_memory.compare_exchange_strong(expected, Memory::Filling)) {
        s_name = name;
        s_memory.store(Memory::Filled, std::memory_order_release);
    }
    return name;
}

}  // namespace vorel::platform
