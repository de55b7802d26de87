/// \file
/// `Pass`: the work that a benchmark repeats and times.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

namespace bench {

/// A function that processes all items of a case once. Work is not optimised away if the return value depends on it,
/// or if it changes memory that the function does not own.
///
/// The loop of `repeat` is compiled together with the function. So a repetition adds less than a nanosecond to the
/// time of the function, and short functions can be measured. The compiler cannot assume anything about memory between
/// two repetitions.
class Pass {
public:
    template <class Function>
    requires(!std::same_as<Function, Pass> && std::is_invocable_r_v<std::uint64_t, Function&>)
        // NOLINTNEXTLINE(google-explicit-constructor): functions are passed where a pass is expected.
        Pass(Function function)
        : m_repeat([function = std::move(function)](std::size_t count) mutable {
              std::uint64_t result = 0;
              for (std::size_t repeat = 0; repeat != count; ++repeat) {
                  result = function();
                  asm volatile("" : : "r"(result) : "memory");
              }
              return result;
          }) {}

    std::uint64_t operator()() const { return m_repeat(1); }

    /// Runs the function `count` times.
    void repeat(std::size_t count) const { m_repeat(count); }

private:
    std::function<std::uint64_t(std::size_t)> m_repeat;
};

}  // namespace bench
