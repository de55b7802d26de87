/// \file
/// The memory layout of a string. Other modules rely on this layout.
#pragma once

#include <cstring>

#include "vorel/core/BaseString.h"

namespace test {

template <class T>
struct StringFields {
    T* data;
    unsigned int capacity;
    unsigned int length;
};

template <class T>
StringFields<T> fieldsOf(const vorel::BaseString<T>& string) {
    static_assert(sizeof(StringFields<T>) == sizeof string);
    StringFields<T> fields;
    std::memcpy(&fields, static_cast<const void*>(&string), sizeof fields);
    return fields;
}

template <class T>
void setFields(vorel::BaseString<T>& string, const StringFields<T>& fields) {
    std::memcpy(static_cast<void*>(&string), &fields, sizeof fields);
}

/// The capacity of a string after `reserve(count, …)` has enlarged its buffer, for counts below 1,048,576.
inline unsigned int capacityFor(unsigned int count) {
    unsigned int capacity = 16;
    while (capacity <= count) {
        capacity *= 2;
    }
    return capacity;
}

/// Whether the string has cached its length.
template <class T>
bool knowsLength(const vorel::BaseString<T>& string) {
    return fieldsOf(string).length != vorel::BaseString<T>::kUnknownLength;
}

}  // namespace test
