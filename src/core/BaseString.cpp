#include "vorel/core/BaseString.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <utility>

#include "algorithms/FormatSlots.h"
#include "algorithms/PageReads.h"
#include "core/Format.h"
#include "core/StringAccess.h"
#include "vorel/core/Format.h"
#include "vorel/core/Protocol.h"

namespace vorel {

namespace {

constexpr unsigned int kMinCapacity = 16;
constexpr unsigned int kGrowthStep = 0x100000;  // 1 Mi units: larger capacities are multiples of this
constexpr std::uint64_t kMaxCapacity = 0xFFFFFFFFu;

/// The size in units of the buffer on the stack for a short rendering.
constexpr unsigned int kShortText = 512;

/// A rendering may fail although the following measurement finds that the text fits into the buffer. This happens if
/// another thread shortens an argument between the rendering and the measurement. The next rendering can then succeed.
/// After this number of such failures, no further rendering is tried, because the runtime may reject the text for
/// another reason.
constexpr unsigned int kMaxFailures = 16;

/// The capacity of a new buffer for `count` units and a terminator. It does not depend on the old capacity.
constexpr std::uint64_t capacityFor(std::uint64_t count) noexcept {
    if (count < kGrowthStep) {
        return std::max(kMinCapacity, 1u << std::bit_width(count));
    }
    return ((count + 1) & ~std::uint64_t{kGrowthStep - 1}) + kGrowthStep;
}

template <class T>
unsigned int lengthOf(const T* text) noexcept {
    const std::size_t length = text ? algorithms::textLength(text) : 0;
    // If the text is too long for a string, the growth to this length fails.
    return static_cast<unsigned int>(std::min<std::size_t>(length, kMaxCapacity));
}

template <class T>
void copyUnits(T* to, const T* from, unsigned int count) noexcept {
    if (count != 0) {
        detail::moveUnits(to, from, count);
    }
}

/// Whether the format or one of its arguments points into the string that will be written. On 64-bit Windows an
/// argument list consists of 8-byte slots, one for each argument of any type, so the slots can be inspected.
template <class T>
bool readsString(const BaseString<T>& string, const T* fmt, va_list args) noexcept {
    using Access = detail::StringAccess<T>;
    if (Access::holds(string, fmt)) {
        return true;
    }
    const char* slot = args;
    for (unsigned int remaining = algorithms::countFormatSlots(fmt); remaining != 0;
         --remaining, slot += sizeof(void*)) {
        const void* value = nullptr;
        std::memcpy(&value, slot, sizeof value);
        if (Access::holds(string, value)) {
            return true;
        }
    }
    return false;
}

}  // namespace

namespace detail {

template <class T>
bool StringAccess<T>::tryReserve(BaseString<T>& string, unsigned int count, bool discard,
                                 unsigned int& capacityWanted) noexcept {
    if (count == 0) {
        if (string.m_data) {
            setLength(string, 0);
        }
        return true;
    }
    if (count < string.m_capacity) {
        // An unknown length is the largest number, so `count` replaces it, too.
        string.m_length = std::min(string.m_length, count);
        string.m_data[count] = 0;
        return true;
    }
    const std::uint64_t capacity = std::max<std::uint64_t>(capacityFor(count), string.m_capacity);
    capacityWanted = static_cast<unsigned int>(std::min(capacity, kMaxCapacity));
    T* grown = capacity <= kMaxCapacity ? static_cast<T*>(std::malloc(capacity * sizeof(T))) : nullptr;
    if (!grown) {
        return false;
    }
    if (discard) {
        string.m_length = BaseString<T>::kUnknownLength;
    } else if (string.m_data) {
        // If the length is unknown, the units are counted for this copy, but the length stays unknown, because the
        // caller may continue to write to the buffer.
        const bool known = string.m_length != BaseString<T>::kUnknownLength;
        const unsigned int length = known ? string.m_length : lengthOf(string.m_data);
        copyUnits(grown, string.m_data, std::min(length + 1, string.m_capacity));
    } else {
        grown[0] = 0;
    }
    std::free(string.m_data);
    string.m_data = grown;
    string.m_capacity = capacityWanted;
    string.m_data[count] = 0;
    return true;
}

template <class T>
bool StringAccess<T>::tryAssign(BaseString<T>& string, const T* text, unsigned int length,
                                unsigned int& capacityWanted) noexcept {
    if (length != 0 && length < string.m_capacity) {
        copyUnits(string.m_data, text, length);  // the text may lie in this buffer
        setLength(string, length);
        return true;
    }
    if (!tryReserve(string, length, true, capacityWanted)) {
        return false;
    }
    if (length != 0) {
        copyUnits(string.m_data, text, length);
        setLength(string, length);
    }
    return true;
}

template <class T>
bool StringAccess<T>::tryAssign(BaseString<T>& string, const T* text, unsigned int length) noexcept {
    unsigned int capacityWanted = 0;
    return tryAssign(string, text, length, capacityWanted);
}

template <class T>
bool StringAccess<T>::tryAssign(BaseString<T>& string, const T* text) noexcept {
    return tryAssign(string, text, lengthOf(text));
}

template struct StringAccess<char>;
template struct StringAccess<wchar_t>;

}  // namespace detail

using detail::StringAccess;

namespace {

template <class T>
void assign(BaseString<T>& string, const T* text, unsigned int length) {
    unsigned int capacityWanted = 0;
    if (!StringAccess<T>::tryAssign(string, text, length, capacityWanted)) {
        // `reserve` throws the same exception, but would first try to allocate again. If this attempt succeeded, no
        // exception would be thrown, and the string would not contain the text.
        detail::throwMemory(capacityWanted, sizeof(T));
    }
}

}  // namespace

template <class T>
BaseString<T>::BaseString(const T* text) : BaseString(text, lengthOf(text)) {}

template <class T>
BaseString<T>::BaseString(const T* text, unsigned int length) {
    if (text && length != 0) {
        copyUnits(reserve(length, true), text, length);
        m_length = length;
    }
}

template <class T>
BaseString<T>::BaseString(const BaseString& other) : BaseString(other.m_data, other.length()) {}

template <class T>
BaseString<T>& BaseString<T>::operator=(const T* text) {
    assign(*this, text, lengthOf(text));
    return *this;
}

template <class T>
BaseString<T>& BaseString<T>::operator=(const BaseString& other) {
    if (this != &other) {
        assign(*this, static_cast<const T*>(other.m_data), other.length());
    }
    return *this;
}

template <class T>
BaseString<T>& BaseString<T>::operator=(std::basic_string_view<T> text) {
    assign(*this, text.data(), countOf(text));
    return *this;
}

template <class T>
T* BaseString<T>::reserve(unsigned int count, bool discard) {
    unsigned int capacityWanted = 0;
    if (!StringAccess<T>::tryReserve(*this, count, discard, capacityWanted)) {
        detail::throwMemory(capacityWanted, sizeof(T));
    }
    return m_data;
}

// Each width has its own definition, because the declarations differ: the compiler checks narrow formats only.
template <>
BaseString<char>& BaseString<char>::format(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    vformat(fmt, args);
    va_end(args);
    return *this;
}

template <>
BaseString<wchar_t>& BaseString<wchar_t>::format(const wchar_t* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    vformat(fmt, args);
    va_end(args);
    return *this;
}

template <class T>
BaseString<T>& BaseString<T>::vformat(const T* fmt, va_list args) {
    if (!fmt) {
        return *this = BaseString();
    }
    if (m_data && readsString(*this, fmt, args)) {
        BaseString rendered;
        rendered.vformat(fmt, args);
        const unsigned int length = rendered.length();
        T* const target = length < m_capacity ? m_data : reserve(length + 1, true);
        copyUnits(target, rendered.c_str(), length);
        StringAccess<T>::setLength(*this, length);
        return *this;
    }
    if (!m_data) {
        // Most texts are short. `calculateSnprintFBufferSize`, which is called below, opens the null device and takes
        // twenty times as long as this attempt.
        T text[kShortText];
        errno = 0;
        const int written = baseutil::vboundedFormat(text, kShortText, fmt, args);
        if (written >= 0) {
            const auto length = static_cast<unsigned int>(written);
            copyUnits(reserve(length + 1, true), text, length);
            StringAccess<T>::setLength(*this, length);
            return *this;
        }
        reserve(static_cast<unsigned int>(util::calculateSnprintFBufferSize(fmt, args) + 1), true);
    }
    for (unsigned int failures = 0;;) {
        errno = 0;
        const int written = baseutil::vboundedFormat(m_data, m_capacity, fmt, args);
        if (written >= 0 && static_cast<unsigned int>(written) < m_capacity) {
            StringAccess<T>::setLength(*this, static_cast<unsigned int>(written));
            return *this;
        }
        clear();  // the partial text has no terminator
        const int needed = written >= 0 ? written : util::calculateSnprintFBufferSize(fmt, args);
        const bool fits = needed >= 0 && static_cast<unsigned int>(needed) < m_capacity;
        if (needed < 0 || (fits && ++failures == kMaxFailures)) {
            detail::throwUnableToFormat(fmt);
        }
        reserve(static_cast<unsigned int>(needed) + 1, true);
    }
}

template class BaseString<char>;
template class BaseString<wchar_t>;

static_assert(std::is_standard_layout_v<BaseString<char>> && sizeof(BaseString<char>) == 16);
static_assert(std::is_standard_layout_v<BaseString<wchar_t>> && sizeof(BaseString<wchar_t>) == 16);

}  // namespace vorel
