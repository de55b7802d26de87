/// \file
/// A buffer with guard units before and after it, for functions that write into the caller's storage.
///
///     test::GuardedBuffer<char> buffer(26);
///     vorel::util::asctime(&time, buffer.data(), buffer.size());   // a write past the end fails the test
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

namespace test {

/// `size` units, initialised to `kFill`.
template <class T>
class GuardedBuffer {
public:
    static constexpr T kFill = static_cast<T>(0x5A);

    explicit GuardedBuffer(std::size_t size) : m_units(size + 2 * kGuardUnits, kGuard) {
        std::fill_n(data(), size, kFill);
    }
    ~GuardedBuffer() { EXPECT_TRUE(isIntact()) << "units outside the buffer were written"; }

    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    T* data() { return m_units.data() + kGuardUnits; }
    [[nodiscard]] std::size_t size() const { return m_units.size() - 2 * kGuardUnits; }

    /// Whether no guard unit was overwritten.
    [[nodiscard]] bool isIntact() const {
        const auto isGuard = [](T unit) { return unit == kGuard; };
        return std::all_of(m_units.begin(), m_units.begin() + kGuardUnits, isGuard) &&
               std::all_of(m_units.end() - kGuardUnits, m_units.end(), isGuard);
    }

private:
    static constexpr std::ptrdiff_t kGuardUnits = 32;
    static constexpr T kGuard = static_cast<T>(0x69);

    std::vector<T> m_units;
};

}  // namespace test
