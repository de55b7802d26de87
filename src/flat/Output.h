/// \file
/// The rule for outputs of the flat interface (vorelCoreC.h): if the buffer is too small, the length is set, but
/// nothing is written to the buffer.
#pragma once

#include <cstddef>
#include <cstring>
#include <span>

#include "flat/Call.h"
#include "flat/LastError.h"
#include "vorel/flat/Status.h"

namespace vorel::flat {

/// Whether the arguments describe an output: `length` must not be null, and a null buffer must have a capacity of 0.
inline bool isOutput(const void* buffer, std::size_t capacity, const std::size_t* length) noexcept {
    return length && (buffer || capacity == 0);
}

enum class Terminator {
    None,
    Zero,  ///< a zero after the last unit, if the capacity allows it
};

/// Copies `units` to `buffer` if they fit, and always sets `*length`. `Rule` says whether a terminator follows. A
/// failure is not stored as the thread's last failure.
template <Terminator Rule, class Unit, class Source>
vorel_status copyUnits(std::span<const Source> units, Unit* buffer, std::size_t capacity,
                       std::size_t* length) noexcept {
    static_assert(sizeof(Unit) == sizeof(Source));
    *length = units.size();
    if (units.size() > capacity) {
        return VOREL_ERROR_BUFFER_TOO_SMALL;
    }
    if (!units.empty()) {
        std::memcpy(buffer, units.data(), units.size() * sizeof(Unit));
    }
    if constexpr (Rule == Terminator::Zero) {
        if (units.size() < capacity) {
            buffer[units.size()] = 0;
        }
    }
    return VOREL_OK;
}

/// An output of the caller.
template <class Unit, Terminator Rule>
class Output {
public:
    /// \throws ArgumentError if the arguments do not describe an output.
    Output(Unit* buffer, std::size_t capacity, std::size_t* length)
        : m_buffer(buffer), m_capacity(capacity), m_length(length) {
        if (!isOutput(buffer, capacity, length)) {
            throw ArgumentError{VOREL_ERROR_INVALID_ARGUMENT, L"An output is null"};
        }
    }

    /// Writes an `Array` or a view of a text. If the buffer is too small, returns VOREL_ERROR_BUFFER_TOO_SMALL, and
    /// stores this failure as the thread's last failure.
    template <class Sequence>
    [[nodiscard]] vorel_status write(const Sequence& units) const noexcept {
        const vorel_status status =
            copyUnits<Rule>(std::span(units.data(), units.size()), m_buffer, m_capacity, m_length);
        return status == VOREL_OK ? status : fail(status, L"The output buffer is too small");
    }

private:
    Unit* m_buffer;
    std::size_t m_capacity;
    std::size_t* m_length;
};

using TextOutput = Output<vorel_char16, Terminator::Zero>;
using Utf8Output = Output<char, Terminator::Zero>;

/// A list of values.
template <class Value>
using ValuesOutput = Output<Value, Terminator::None>;

/// Binary data.
class BytesOutput : public Output<unsigned char, Terminator::None> {
public:
    BytesOutput(void* buffer, std::size_t capacity, std::size_t* length)
        : Output(static_cast<unsigned char*>(buffer), capacity, length) {}
};

}  // namespace vorel::flat
