#include "algorithms/Processor.h"

#include <cstddef>

#if defined(_MSC_VER) && defined(_M_X64)
#include <immintrin.h>
#include <intrin.h>
#elif defined(__x86_64__)
#include <cpuid.h>
#endif

namespace vorel::algorithms {

namespace {

#if defined(_MSC_VER) && defined(_M_X64)

/// The register EBX (`index` 1) or ECX (`index` 2) after the instruction CPUID; 0 if the processor does not support
/// `leaf`.
unsigned int cpuid(int leaf, std::size_t index) noexcept {
    int registers[4] = {};
    __cpuid(registers, 0);
    if (leaf > registers[0]) {
        return 0;
    }
    __cpuidex(registers, leaf, 0);
    return static_cast<unsigned int>(registers[index]);
}

unsigned int savedRegisters() noexcept {
    return static_cast<unsigned int>(_xgetbv(0));
}

#elif defined(__x86_64__)

unsigned int cpuid(unsigned int leaf, std::size_t index) noexcept {
    unsigned int registers[4] = {};
    __get_cpuid_count(leaf, 0, &registers[0], &registers[1], &registers[2], &registers[3]);
    return registers[index];
}

/// Uses assembly, because code with the intrinsic function must be compiled for processors with XSAVE.
unsigned int savedRegisters() noexcept {
    unsigned int low = 0;
    unsigned int high = 0;
    asm("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

#endif

}  // namespace

// Does not use GCC's own detection, __builtin_cpu_supports, because that function would add a list of all processors
// and features to the library, about 5 KB.
bool detectAvx2() noexcept {
#if defined(__x86_64__) || defined(_M_X64)
    constexpr std::size_t kB = 1;
    constexpr std::size_t kC = 2;
    constexpr unsigned int kSystemSaves = 1u << 27;
    constexpr unsigned int kWideRegisters = 6;
    constexpr unsigned int kAvx2 = 1u << 5;
    return (cpuid(1, kC) & kSystemSaves) != 0 && (savedRegisters() & kWideRegisters) == kWideRegisters &&
           (cpuid(7, kB) & kAvx2) != 0;
#else
    return false;
#endif
}

bool Processor::s_usesAvx2 = detectAvx2();

}  // namespace vorel::algorithms
