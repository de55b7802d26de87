#include "vorel/exceptions/ExceptionFamily.h"

namespace vorel {

NotImplementedException::NotImplementedException(const wchar_t* name) noexcept
    : Exception(L"Interface not supported: %ls", name ? name : L"") {}

NotImplementedException::NotImplementedException(const char* name) noexcept
    : Exception(L"Interface not supported: %hs", name ? name : "") {}

DataRecordTypeException::DataRecordTypeException() noexcept
    : Exception(L"The required data type is not found in the current data record.") {}

DataRecordTypeException::DataRecordTypeException(const char* type) noexcept
    : Exception(L"Data type \"%hs\" is not found in the current data record.", type) {}

DataRecordTypeException::DataRecordTypeException(const char* type1, const char* type2) noexcept
    : Exception(L"Data types \"%hs\" and \"%hs\" were not found in the current data record.", type1, type2) {}

Win32Exception::Win32Exception(const wchar_t* text) noexcept : Exception(L"%ls", text) {}

Win32Exception::Win32Exception(const wchar_t* text, int code) noexcept
    : Exception(L"%ls: 0x%X", text, static_cast<unsigned int>(code)) {}

MemoryException::MemoryException(int count, int size) noexcept
    : Exception(L"No more memory is available: %d objects of size %d requested", count, size) {}

TimeoutException::TimeoutException() noexcept : Exception(L"Operation has overrun its specified timeout limit.") {}

PropertyAccessException::PropertyAccessException() noexcept : Exception("Property value access violation.") {}

OutOfRangeException::OutOfRangeException(const wchar_t* name, int low, int high, int index) noexcept
    : Exception(L"%ls: Index \"%d\" out of range: [%d,%d]", name, index, low, high) {}

DiffException::DiffException() noexcept = default;

DiffErrorException::DiffErrorException() noexcept = default;

DiffWarningException::DiffWarningException() noexcept = default;

BadParameterException::BadParameterException(const wchar_t* name, const wchar_t* value) noexcept
    : Exception(L"Parameter \"%ls\" value \"%ls\" is unrecognized; perhaps your system components need updating?", name,
                value) {}

InvalidIndexException::InvalidIndexException(int index, int low, int high) noexcept {
    SetMessage(index, low, high);
}

InvalidIndexException::InvalidIndexException(int index, int last) noexcept : InvalidIndexException(index, 0, last) {}

void InvalidIndexException::SetMessage(int index, int low, int high) noexcept {
    if (high > low) {
        appendMessage(L"An invalid index value (%d) has been detected; legal values are between %d and %d", index, low,
                      high);
    } else if (high == low && low >= 0) {
        appendMessage(L"An invalid index value (%d) has been detected; only legal value is %d", index, low);
    } else {
        appendMessage(L"An invalid index value (%d) has been detected; there are zero items", index);
    }
}

// Constructors with a caller's format.

TimeoutException::TimeoutException(const wchar_t* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    SetMessageOnStack(fmt, args);
    va_end(args);
}

PropertyAccessException::PropertyAccessException(const wchar_t* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    SetMessageOnStack(fmt, args);
    va_end(args);
}

DiffException::DiffException(const wchar_t* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    SetMessageOnStack(fmt, args);
    va_end(args);
}

DiffException::DiffException(const char* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    SetMessageOnStack(fmt, args);
    va_end(args);
}

DiffErrorException::DiffErrorException(const wchar_t* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    SetMessageOnStack(fmt, args);
    va_end(args);
}

DiffErrorException::DiffErrorException(const char* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    SetMessageOnStack(fmt, args);
    va_end(args);
}

DiffWarningException::DiffWarningException(const wchar_t* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    SetMessageOnStack(fmt, args);
    va_end(args);
}

DiffWarningException::DiffWarningException(const char* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    SetMessageOnStack(fmt, args);
    va_end(args);
}

InvalidIndexException::InvalidIndexException(const wchar_t* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    SetMessageOnStack(fmt, args);
    va_end(args);
}

InvalidIndexException::InvalidIndexException(const char* fmt, ...) noexcept {
    va_list args;
    va_start(args, fmt);
    SetMessageOnStack(fmt, args);
    va_end(args);
}

// Each class rethrows its own type.

void NotImplementedException::rethrow() {
    throw NotImplementedException(*this);
}

void DataRecordTypeException::rethrow() {
    throw DataRecordTypeException(*this);
}

void Win32Exception::rethrow() {
    throw Win32Exception(*this);
}

void MemoryException::rethrow() {
    throw MemoryException(*this);
}

void TimeoutException::rethrow() {
    throw TimeoutException(*this);
}

void PropertyAccessException::rethrow() {
    throw PropertyAccessException(*this);
}

void OutOfRangeException::rethrow() {
    throw OutOfRangeException(*this);
}

void DiffException::rethrow() {
    throw DiffException(*this);
}

void DiffErrorException::rethrow() {
    throw DiffErrorException(*this);
}

void DiffWarningException::rethrow() {
    throw DiffWarningException(*this);
}

void InvalidIndexException::rethrow() {
    throw InvalidIndexException(*this);
}

void BadParameterException::rethrow() {
    throw BadParameterException(*this);
}

}  // namespace vorel
