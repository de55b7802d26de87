/// \file
/// Support for inputs that lie in the memory of an output of the same call. Where the library allows this, the result
/// is the same as for separate memory (docs/aliasing.md).
#pragma once

#include <cstdint>
#include <utility>

#include "core/StringAccess.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"

namespace vorel::detail {

/// Whether `address` lies in the memory of `output`, which is released when the output grows.
template <class T>
bool holds(const BaseString<T>& output, const void* address) noexcept {
    return StringAccess<T>::holds(output, address);
}

template <class T>
bool holds(const Array<T>& output, const void* address) noexcept {
    return reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(output.data()) <
           std::uintptr_t{output.allocated()} * sizeof(T);
}

/// If `input` lies in the memory of `output`, the constructor takes that memory, which leaves `output` empty. The
/// destructor releases the memory.
template <class Output>
class HeldInput {
public:
    HeldInput(Output& output, const void* input) {
        if (holds(output, input)) [[unlikely]] {
            takeMemory(output);
        }
    }

private:
    /// This function is not inlined, so that the constructor is short enough to be inlined.
    [[gnu::noinline]] void takeMemory(Output& output) { m_memory = std::exchange(output, Output()); }

    Output m_memory;
};

/// Runs `write()` and returns its result. `write` replaces the content of `output`. If `input` lies in `output`,
/// `write` starts with an empty output, and the old memory is released after `write`.
template <class Output, class Write>
decltype(auto) replacing(Output& output, const void* input, Write&& write) {
    const HeldInput<Output> held(output, input);
    return std::forward<Write>(write)();
}

}  // namespace vorel::detail
