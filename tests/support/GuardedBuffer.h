/// \file
/// A buffer between guard elements.
///
///     test::GuardedBuffer<char> buffer(26);
///     fill(buffer.data(), 26);
///     EXPECT_TRUE(buffer.isIntact());   // nothing in front of it or behind it was written
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace test {

template <class T>
class GuardedBuffer {
public:
    /// `size` elements, all of them guards at first, so that what was not written can be told.
    explicit GuardedBuffer(std::size_t size) : m_elements(size + 2 * kGuards, kGuard) {}

    T* data() noexcept { return m_elements.data() + kGuards; }
    const T* data() const noexcept { return m_elements.data() + kGuards; }
    std::size_t size() const noexcept { return m_elements.size() - 2 * kGuards; }

    bool isIntact() const {
        const auto isGuard = [](T element) { return element == kGuard; };
        return std::all_of(m_elements.begin(), m_elements.begin() + kGuards, isGuard) &&
               std::all_of(m_elements.end() - kGuards, m_elements.end(), isGuard);
    }

    static constexpr T kGuard = static_cast<T>(0x5A);

private:
    static constexpr std::ptrdiff_t kGuards = 16;

    std::vector<T> m_elements;
};

}  // namespace test
