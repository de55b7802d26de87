/// \file
/// Converts libFuzzer's input to the input of an algorithm. Choices are read from the end of the input and texts from
/// its start, so corpus files begin with their text.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include <fuzzer/FuzzedDataProvider.h>

#include "algorithms/Processor.h"
#include "support/GuardedPages.h"

namespace fuzz {

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_data(data, size) {}

    bool flag() { return m_data.ConsumeBool(); }
    std::size_t upTo(std::size_t limit) { return m_data.ConsumeIntegralInRange<std::size_t>(0, limit); }

    template <class Value>
    Value bits() {
        static_assert(std::is_integral_v<Value>);
        return m_data.ConsumeIntegral<Value>();
    }

    Placement placement() {
        constexpr Place kPlaces[] = {Place::AtEnd, Place::AtStart, Place::Across};
        return {m_data.PickValueInArray(kPlaces), bits<unsigned char>(), upTo(GuardedPages::kPage)};
    }

    std::size_t bytesLeft() { return m_data.remaining_bytes(); }

    /// The next bytes, at most `count`.
    std::string bytes(std::size_t count) { return m_data.ConsumeBytesAsString(count); }
    std::string rest() { return m_data.ConsumeRemainingBytesAsString(); }

    /// The next bytes, at most `count`, as text. The input chooses whether each unit of wide text takes two bytes or
    /// only one byte. With one byte per unit, ASCII text is found sooner.
    template <class T>
    std::basic_string<T> text(std::size_t count) {
        const bool isWidened = sizeof(T) == 1 || flag();
        return unitsOf<T>(bytes(count), isWidened ? 1 : 2);
    }
    template <class T>
    std::basic_string<T> restAsText() {
        return text<T>(bytesLeft());
    }

private:
    template <class T>
    static std::basic_string<T> unitsOf(const std::string& bytes, std::size_t bytesPerUnit) {
        std::basic_string<T> units;
        for (std::size_t at = 0; at + bytesPerUnit <= bytes.size(); at += bytesPerUnit) {
            const unsigned int low = static_cast<unsigned char>(bytes[at]);
            const unsigned int high = bytesPerUnit == 2 ? static_cast<unsigned char>(bytes[at + 1]) : 0u;
            units += static_cast<T>(high << 8 | low);
        }
        return units;
    }

    FuzzedDataProvider m_data;
};

/// The part of `text` before its first zero. An algorithm for zero-terminated text reads only this part.
template <class T>
std::basic_string<T> upToZero(std::basic_string<T> text) {
    text.resize(std::min(text.size(), text.find(T{0})));
    return text;
}

/// Runs `body` with the scalar and SSE2 algorithms, then with AVX2 if the processor has it.
template <class Body>
void withEachKernel(Body&& body) {
    static const bool hasAvx2 = vorel::algorithms::detectAvx2();
    for (const bool useAvx2 : {false, true}) {
        if (!useAvx2 || hasAvx2) {
            vorel::algorithms::Processor::setAvx2ForTests(useAvx2);
            body();
        }
    }
}

}  // namespace fuzz
