// What GCC's and clang's -fstack-protector refer to: the value that each guarded function keeps on its stack and
// compares before it returns, and what happens when it was overwritten. The compiler's own library for this opens the
// system's random number generator while the DLL is loaded, which takes longer than everything else that the DLL does
// then, and ends the process with an exit code of its own. Here the value is made of what another process cannot know,
// as Microsoft's runtime does it, and a process that fails ends as Windows expects it.

#if defined(__GNUC__)

#include <cstdint>

#include <windows.h>

// The compiler's names.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl51-cpp,readability-identifier-naming)
extern "C" {

extern std::uintptr_t __stack_chk_guard;
// Until the constructor below has run.
std::uintptr_t __stack_chk_guard = 0x2B992DDFA232F300;

[[noreturn]] void __stack_chk_fail();

void __stack_chk_fail() {
    // __fastfail(FAST_FAIL_STACK_COOKIE_CHECK_FAILURE): ends the process at once, since no handler can be trusted.
    __asm__ volatile("int $0x29" : : "c"(2));
    __builtin_unreachable();
}
}

namespace {

// Before every constructor that could call a guarded function.
__attribute__((constructor(101), no_stack_protector)) void makeGuard() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    LARGE_INTEGER counter;
    QueryPerformanceCounter(&counter);
    std::uint64_t value = (static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime) ^
                          static_cast<std::uint64_t>(counter.QuadPart) ^ __builtin_ia32_rdtsc() ^
                          (static_cast<std::uint64_t>(GetCurrentThreadId()) << 32 | GetCurrentProcessId()) ^
                          reinterpret_cast<std::uintptr_t>(&counter) ^ reinterpret_cast<std::uintptr_t>(&makeGuard);
    // Spread over all bits: the finalizer of MurmurHash3 (Austin Appleby).
    value = (value ^ value >> 33) * 0xFF51AFD7ED558CCD;
    value = (value ^ value >> 33) * 0xC4CEB9FE1A85EC53;
    // The first byte in memory is a terminator, so that a string function that runs over cannot write the value back.
    __stack_chk_guard = (value ^ value >> 33) & ~std::uint64_t{0xFF};
}

}  // namespace
// NOLINTEND(bugprone-reserved-identifier,cert-dcl51-cpp,readability-identifier-naming)

#endif
