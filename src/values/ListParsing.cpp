#include "vorel/values/ListParsing.h"

#include <string_view>

#include "kernels/ListReading.h"
#include "kernels/RangeReading.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace vorel::util {

namespace {

/// Empties a list unless it is to be added to, and fills it by `read(text, take)`. A null text has no values. A list
/// that cannot grow was not read to its end, and that is all that its readers tell; the error log has the reason.
template <class T, class Value, class Read>
bool readList(const T* text, Array<Value>& values, bool append, Read&& read) noexcept {
    if (!append) {
        values.clear();
    }
    try {
        return !text || read(text, [&values](auto value) { values.append(static_cast<Value>(value)); });
    } catch (const MemoryException&) {
        return false;
    }
}

template <class T, class Value>
bool readIntegers(const T* text, Array<Value>& values, bool append) noexcept {
    return readList(text, values, append,
                    [](const T* list, auto take) { return kernels::readIntegerList(list, take); });
}

template <class T>
bool readDoubles(const T* text, Array<double>& values, bool append) noexcept {
    return readList(text, values, append, [](const T* list, auto take) { return kernels::readDoubleList(list, take); });
}

template <class T>
bool readBooleans(const T* text, Array<bool>& values, bool append) noexcept {
    return readList(text, values, append,
                    [](const T* list, auto take) { return kernels::readBooleanList(list, take); });
}

}  // namespace

bool stringToIntegerArray(const char* text, Array<int>& values, bool append) noexcept {
    return readIntegers(text, values, append);
}

bool stringToIntegerArray(const wchar_t* text, Array<int>& values, bool append) noexcept {
    return readIntegers(text, values, append);
}

bool stringToUIntegerArray(const wchar_t* text, Array<unsigned int>& values, bool append) noexcept {
    return readIntegers(text, values, append);
}

bool stringToDoubleArray(const char* text, Array<double>& values, bool append) noexcept {
    return readDoubles(text, values, append);
}

bool stringToDoubleArray(const wchar_t* text, Array<double>& values, bool append) noexcept {
    return readDoubles(text, values, append);
}

bool stringToBooleanArray(const char* text, Array<bool>& values, bool append) noexcept {
    return readBooleans(text, values, append);
}

bool stringToBooleanArray(const wchar_t* text, Array<bool>& values, bool append) noexcept {
    return readBooleans(text, values, append);
}

bool canCoerceToIntegerArray(const char* text) noexcept {
    return !text || kernels::coercesToIntegers(text);
}

bool canCoerceToIntegerArray(const wchar_t* text) noexcept {
    return !text || kernels::coercesToIntegers(text);
}

void stringToLongRanges(const wchar_t* text, Array<int>& starts, Array<int>& ends) {
    starts.clear();
    ends.clear();
    if (!text) {
        return;
    }
    const std::wstring_view refused = kernels::readRanges(
        text, [&starts](int start) { starts.append(start); }, [&ends](int end) { ends.append(end); });
    if (!refused.empty()) {
        const BaseString<wchar_t> item(refused.data(), static_cast<unsigned int>(refused.size()));
        throw Exception(L"Found nonnumeric text in numeric item: \"%ls\"", item.c_str());
    }
}

}  // namespace vorel::util
