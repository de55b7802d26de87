// Support for -fstack-protector of GCC and clang. Each protected function keeps a guard value on its stack, and checks
// that value before it returns. This file provides the guard value, and the function that is called if the value was
// overwritten. The compiler's own support library has two disadvantages. It opens the system's random number generator
// while the DLL is loaded, and this takes longer than the rest of the load. It also ends the process with an exit code
// of its choice. Here the guard value is computed as in Microsoft's runtime, from times, ids and addresses that another
// process cannot know exactly. An overwritten value ends the process with the status that Windows defines for it.

#if defined(__GNUC__)

#include <cstdint>

#include <windows.h>

// The compiler requires these names.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl51-cpp,readability-identifier-naming)
extern "C" {

extern std::uintptr_t __stack_chk_guard;
// The value until `makeGuard` runs.
std::uintptr_t __stack_chk_guard = 0x2B992DDFA232F300;

[[noreturn]] void __stack_chk_fail();

void __stack_chk_fail() {
    // __fastfail(FAST_FAIL_STACK_COOKIE_CHECK_FAILURE): ends the process at once, because no handler can be trusted.
#if defined(__x86_64__)
    __asm__ volatile("int $0x29" : : "c"(2));
#else
    register int code __asm__("w0") = 2;
    __asm__ volatile("brk #0xF003" : : "r"(code));
#endif
    __builtin_unreachable();
}
}

namespace {

/// A counter of the processor, which another process cannot predict exactly.
inline std::uint64_t processorTicks() {
#if defined(__x86_64__)
    return __builtin_ia32_rdtsc();
#else
    std::uint64_t ticks = 0;
    __asm__ volatile("mrs %0, cntvct_el0" : "=r"(ticks));
    return ticks;
#endif
}

// Runs before every constructor that could call a protected function.
__attribute__((constructor(101), no_stack_protector)) void makeGuard() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    LARGE_INTEGER counter;
    QueryPerformanceCounter(&counter);
    std::uint64_t value = (static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime) ^
                          static_cast<std::uint64_t>(counter.QuadPart) ^ processorTicks() ^
                          (static_cast<std::uint64_t>(GetCurrentThreadId()) << 32 | GetCurrentProcessId()) ^
                          reinterpret_cast<std::uintptr_t>(&counter) ^ reinterpret_cast<std::uintptr_t>(&makeGuard);
    // Mixes all bits of the value with the finalizer of MurmurHash3 (Austin Appleby).
    value = (value ^ value >> 33) * 0xFF51AFD7ED558CCD;
    value = (value ^ value >> 33) * 0xC4CEB9FE1A85EC53;
    // The first byte in memory is a terminator, so a string function that overruns a buffer cannot restore the value.
    __stack_chk_guard = (value ^ value >> 33) & ~std::uint64_t{0xFF};
}

}  // namespace
// NOLINTEND(bugprone-reserved-identifier,cert-dcl51-cpp,readability-identifier-naming)

#endif
