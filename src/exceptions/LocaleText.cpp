#include "exceptions/LocaleText.h"

#include <algorithm>
#include <cstdlib>

#include "algorithms/AsciiRuns.h"
#include "algorithms/PageReads.h"
#include "core/StringAccess.h"
#include "vorel/core/Protocol.h"

namespace vorel::detail {

namespace {

/// A length that no string can have, so growing to it fails.
constexpr std::size_t kTooLong = 0xFFFFFFFF;

/// The parameters of one direction. `kMaxPerUnit` is the maximum number of target units for one source unit.
struct ToWide {
    static constexpr std::size_t kMaxPerUnit = 1;
    static constexpr const wchar_t* kContext = L"vorel::Exception - mbs2wcs";
    static constexpr const wchar_t* kInvalid = L"Error in text conversion";
    static constexpr const wchar_t* kNoMemory = L"Out of memory for text conversion";

    static std::size_t convert(wchar_t* target, const char* source, std::size_t capacity) {
        return std::mbstowcs(target, source, capacity);
    }
};

struct ToNarrow {
    static constexpr std::size_t kMaxPerUnit = 4;
    static constexpr const wchar_t* kContext = L"vorel::Exception - wcs2mbs";
    static constexpr const char* kInvalid = "Error in text conversion";
    static constexpr const char* kNoMemory = "Out of memory in text conversion";

    static std::size_t convert(char* target, const wchar_t* source, std::size_t capacity) {
        return std::wcstombs(target, source, capacity);
    }
};

/// Converts directly into the buffer of `target`.
template <class Direction, class From, class To>
void convert(const From* source, BaseString<To>& target) noexcept {
    runNoThrow(Direction::kContext, [&] {
        target.clear();
        if (!source || !*source) {
            return;
        }
        const std::size_t length = algorithms::textLength(source);
        const std::size_t capacity = length * Direction::kMaxPerUnit + 1;
        const auto reserved = static_cast<unsigned int>(std::min(capacity - 1, kTooLong));
        unsigned int notAllocated = 0;
        if (!StringAccess<To>::tryReserve(target, reserved, true, notAllocated)) {
            target = Direction::kNoMemory;
            return;
        }
        // ASCII is the same in every locale.
        if (algorithms::copyAsciiRun(source, length, target.data()) == length) {
            StringAccess<To>::setLength(target, static_cast<unsigned int>(length));
            return;
        }
        const std::size_t converted = Direction::convert(target.data(), source, capacity);
        if (converted == static_cast<std::size_t>(-1)) {
            StringAccess<To>::setLength(target, 0);  // so the result is empty if the next assignment fails
            target = Direction::kInvalid;
            return;
        }
        StringAccess<To>::setLength(target, static_cast<unsigned int>(std::min(converted, capacity - 1)));
    });
}

}  // namespace

void mbs2wcs(const char* source, BaseString<wchar_t>& target) noexcept {
    convert<ToWide>(source, target);
}

void wcs2mbs(const wchar_t* source, BaseString<char>& target) noexcept {
    convert<ToNarrow>(source, target);
}

}  // namespace vorel::detail
