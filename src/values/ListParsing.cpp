#include "vorel/values/ListParsing.h"

#include <string_view>

#include "algorithms/ListReading.h"
#include "core/HeldInputs.h"
#include "values/ListReaders.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace vorel {

namespace {

constexpr auto kIntegers = [](const auto* list, auto take) { return algorithms::readIntegerList(list, take); };
constexpr auto kDoubles = [](const auto* list, auto take) { return algorithms::readDoubleList(list, take); };
constexpr auto kBooleans = [](const auto* list, auto take) { return algorithms::readBooleanList(list, take); };

/// Appends the values in `text` to `values`. `read(text, take)` parses the text and calls `take` for each value.
/// Returns whether the whole text was read. A null text is an empty list.
template <class T, class Value, class Read>
bool addList(const T* text, Array<Value>& values, Read&& read) {
    return !text || read(text, [&values](auto value) { values.append(static_cast<Value>(value)); });
}

template <class T, class Value, class Read>
bool readListInValues(const T* text, Array<Value>& values, bool append, Read&& read) noexcept;

/// Appends the values in `text` to the array, or replaces the elements of the array by them. If the array cannot grow,
/// the result is false, as for invalid text. The exception for the failed allocation has then logged the reason.
template <class T, class Value, class Read>
bool readList(const T* text, Array<Value>& values, bool append, Read&& read) noexcept {
    if (detail::holds(values, text)) [[unlikely]] {
        return readListInValues(text, values, append, read);
    }
    if (!append) {
        values.clear();
    }
    try {
        return addList(text, values, read);
    } catch (const MemoryException&) {
        return false;
    }
}

/// Like `readList`, for a text in the array's own memory. Copies the text first, because the array changes.
template <class T, class Value, class Read>
bool readListInValues(const T* text, Array<Value>& values, bool append, Read&& read) noexcept {
    try {
        const BaseString<T> copy(text);
        return readList(copy.view().data(), values, append, read);
    } catch (const MemoryException&) {
        if (!append) {
            values.clear();
        }
        return false;
    }
}

}  // namespace

namespace values {

bool readIntegers(const wchar_t* text, Array<int>& values) {
    return addList(text, values, kIntegers);
}

bool readIntegers(const wchar_t* text, Array<unsigned int>& values) {
    return addList(text, values, kIntegers);
}

bool readDoubles(const wchar_t* text, Array<double>& values) {
    return addList(text, values, kDoubles);
}

bool readBooleans(const wchar_t* text, Array<bool>& values) {
    return addList(text, values, kBooleans);
}

}  // namespace values

namespace util {

bool stringToIntegerArray(const char* text, Array<int>& values, bool append) noexcept {
    return readList(text, values, append, kIntegers);
}

bool stringToIntegerArray(const wchar_t* text, Array<int>& values, bool append) noexcept {
    return readList(text, values, append, kIntegers);
}

bool stringToUIntegerArray(const wchar_t* text, Array<unsigned int>& values, bool append) noexcept {
    return readList(text, values, append, kIntegers);
}

bool stringToDoubleArray(const char* text, Array<double>& values, bool append) noexcept {
    return readList(text, values, append, kDoubles);
}

bool stringToDoubleArray(const wchar_t* text, Array<double>& values, bool append) noexcept {
    return readList(text, values, append, kDoubles);
}

bool stringToBooleanArray(const char* text, Array<bool>& values, bool append) noexcept {
    return readList(text, values, append, kBooleans);
}

bool stringToBooleanArray(const wchar_t* text, Array<bool>& values, bool append) noexcept {
    return readList(text, values, append, kBooleans);
}

bool canCoerceToIntegerArray(const char* text) noexcept {
    return !text || algorithms::coercesToIntegers(text);
}

bool canCoerceToIntegerArray(const wchar_t* text) noexcept {
    return !text || algorithms::coercesToIntegers(text);
}

void stringToLongRanges(const wchar_t* text, Array<int>& starts, Array<int>& ends) {
    if (detail::holds(starts, text) || detail::holds(ends, text)) {
        const BaseString<wchar_t> copy(text);
        stringToLongRanges(copy.view().data(), starts, ends);
        return;
    }
    starts.clear();
    ends.clear();
    if (!text) {
        return;
    }
    const std::wstring_view rejected = algorithms::readRanges(
        text, [&starts](int start) { starts.append(start); }, [&ends](int end) { ends.append(end); });
    if (!rejected.empty()) {
        const BaseString<wchar_t> item(rejected.data(), static_cast<unsigned int>(rejected.size()));
        throw Exception(L"Found nonnumeric text in numeric item: \"%ls\"", item.c_str());
    }
}

}  // namespace util

}  // namespace vorel
