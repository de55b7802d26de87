/// \file
/// Detects processor features beyond the 64-bit x86 baseline.
#pragma once

#if defined(_MSC_VER) && !defined(__clang__)
#include <immintrin.h>
#include <intrin.h>
#endif

namespace vorel::algorithms {

/// Whether AVX2 is usable: the processor supports it and the system saves its registers.
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

/// Detected once, when the library is loaded. It is false before that, which selects the scalar and SSE2 algorithms.
/// Only tests change it, to compare the algorithms.
inline bool s_useAvx2 = detectAvx2();

}  // namespace vorel::algorithms
