/// \file
/// What the processor can do beyond the instructions that every 64-bit one has.
#pragma once

#if defined(_MSC_VER) && !defined(__clang__)
#include <immintrin.h>
#include <intrin.h>
#endif

namespace vorel::kernels {

/// Whether AVX2 may be used: the processor has it, and the system saves its registers.
inline bool detectAvx2() noexcept {
#if defined(_MSC_VER) && !defined(__clang__)
    int registers[4] = {};
    __cpuid(registers, 1);
    constexpr int kSystemSaves = 1 << 27;
    constexpr unsigned long long kWideRegisters = 6;
    if ((registers[2] & kSystemSaves) == 0 || (_xgetbv(0) & kWideRegisters) != kWideRegisters) {
        return false;
    }
    __cpuidex(registers, 7, 0);
    return (registers[1] & 1 << 5) != 0;
#else
    return __builtin_cpu_supports("avx2") != 0;
#endif
}

/// Asked once, when the library is loaded; false before that: then the plain kernels do the work. Only tests change it,
/// to see both ways give the same.
inline bool s_useAvx2 = detectAvx2();

}  // namespace vorel::kernels
