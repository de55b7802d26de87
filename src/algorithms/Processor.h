/// \file
/// Processor features beyond the 64-bit x86 baseline, and whether the algorithms use them.
#pragma once

namespace vorel::algorithms {

/// Whether AVX2 is usable: the processor supports it and the system saves its registers.
bool detectAvx2() noexcept;

/// Selects between the AVX2 algorithms and the algorithms that every processor supports.
class Processor {
public:
    /// Whether the AVX2 algorithms are used. This is detected once, when the library is loaded. Before that, the result
    /// is false.
#if defined(__x86_64__) || defined(_M_X64)
    [[nodiscard]] static bool usesAvx2() noexcept {
        return s_usesAvx2;
    }
#else
    // A constant, so that no code refers to the AVX2 algorithms, which are not compiled.
    [[nodiscard]] static constexpr bool usesAvx2() noexcept {
        return false;
    }
#endif

    /// For tests that compare the algorithms. Do not call this function while another thread runs an algorithm. Do not
    /// pass true if AVX2 is not usable.
    static void setAvx2ForTests(bool use) noexcept {
        s_usesAvx2 = use;
    }

private:
    static bool s_usesAvx2;
};

}  // namespace vorel::algorithms
