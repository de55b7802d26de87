/// \file
/// The exception classes, one for each kind of failure. The comment of a constructor is usually the first message of
/// the exception. A constructor with the parameter `fmt` renders the first message from the caller's format. The first
/// message is logged at once. No derived class adds a field. `rethrow()` throws an exception of the same class. Moving
/// an exception copies it.
#pragma once

#include "vorel/exceptions/Exception.h"

namespace vorel {

/// An interface that is not supported.
class VOREL_API NotImplementedException : public Exception {
public:
    /// "Interface not supported: %ls" with `name`; a null name prints as nothing.
    explicit NotImplementedException(const wchar_t* name) noexcept;
    explicit NotImplementedException(const char* name) noexcept;
    [[noreturn]] void rethrow() override;
};

/// A data record that does not have the required type.
class VOREL_API DataRecordTypeException : public Exception {
public:
    /// "The required data type is not found in the current data record."
    DataRecordTypeException() noexcept;

    /// "Data type \"%hs\" is not found in the current data record."
    explicit DataRecordTypeException(const char* type) noexcept;

    /// "Data types \"%hs\" and \"%hs\" were not found in the current data record."
    DataRecordTypeException(const char* type1, const char* type2) noexcept;
    [[noreturn]] void rethrow() override;
};

/// A failed system call.
class VOREL_API Win32Exception : public Exception {
public:
    /// `text`, unchanged.
    explicit Win32Exception(const wchar_t* text) noexcept;

    /// "%ls: 0x%X" with `text` and the system's error `code`.
    Win32Exception(const wchar_t* text, int code) noexcept;
    [[noreturn]] void rethrow() override;
};

/// A failed allocation.
class VOREL_API MemoryException : public Exception {
public:
    /// "No more memory is available: %d objects of size %d requested"; `size` in bytes.
    MemoryException(int count, int size) noexcept;
    [[noreturn]] void rethrow() override;
};

/// A time limit that has passed.
class VOREL_API TimeoutException : public Exception {
public:
    /// "Operation has overrun its specified timeout limit."
    TimeoutException() noexcept;
    explicit TimeoutException(const wchar_t* fmt, ...) noexcept;
    [[noreturn]] void rethrow() override;
};

/// A property that must not be read or set.
class VOREL_API PropertyAccessException : public Exception {
public:
    /// "Property value access violation."
    PropertyAccessException() noexcept;
    explicit PropertyAccessException(const wchar_t* fmt, ...) noexcept;
    [[noreturn]] void rethrow() override;
};

/// An index outside a named range.
class VOREL_API OutOfRangeException : public Exception {
public:
    /// "%ls: Index \"%d\" out of range: [%d,%d]" with `name`, `index`, `low` and `high`. By design, `index` is the last
    /// argument, but is printed before the limits.
    OutOfRangeException(const wchar_t* name, int low, int high, int index) noexcept;
    [[noreturn]] void rethrow() override;
};

/// The result of a comparison. A default-constructed object has no message.
class VOREL_API DiffException : public Exception {
public:
    /// Creates an exception without a message, or with a rendered one.
    DiffException() noexcept;
    explicit DiffException(const wchar_t* fmt, ...) noexcept;
    VOREL_PRINTF(2, 3) explicit DiffException(const char* fmt, ...) noexcept;
    [[noreturn]] void rethrow() override;
};

/// A difference that is an error.
class VOREL_API DiffErrorException : public DiffException {
public:
    /// Creates an exception without a message, or with a rendered one.
    DiffErrorException() noexcept;
    explicit DiffErrorException(const wchar_t* fmt, ...) noexcept;
    VOREL_PRINTF(2, 3) explicit DiffErrorException(const char* fmt, ...) noexcept;
    [[noreturn]] void rethrow() override;
};

/// A difference that is a warning.
class VOREL_API DiffWarningException : public DiffException {
public:
    /// Creates an exception without a message, or with a rendered one.
    DiffWarningException() noexcept;
    explicit DiffWarningException(const wchar_t* fmt, ...) noexcept;
    VOREL_PRINTF(2, 3) explicit DiffWarningException(const char* fmt, ...) noexcept;
    [[noreturn]] void rethrow() override;
};

/// An index outside a sequence.
class VOREL_API InvalidIndexException : public Exception {
public:
    /// If `high` is above `low`: "An invalid index value (%d) has been detected; legal values are between %d and %d".
    /// If `high` and `low` are equal and not negative: "An invalid index value (%d) has been detected; only legal value
    /// is %d". Otherwise: "An invalid index value (%d) has been detected; there are zero items".
    InvalidIndexException(int index, int low, int high) noexcept;

    /// The same with a `low` of 0 and a `high` of `last`, which is the count minus one.
    InvalidIndexException(int index, int last) noexcept;
    explicit InvalidIndexException(const wchar_t* fmt, ...) noexcept;
    VOREL_PRINTF(2, 3) explicit InvalidIndexException(const char* fmt, ...) noexcept;
    [[noreturn]] void rethrow() override;

private:
    void SetMessage(int index, int low, int high) noexcept;
};

/// A parameter with an unknown value.
class VOREL_API BadParameterException : public Exception {
public:
    /// "Parameter \"%ls\" value \"%ls\" is unrecognized; perhaps your system components need updating?"
    BadParameterException(const wchar_t* name, const wchar_t* value) noexcept;
    [[noreturn]] void rethrow() override;
};

}  // namespace vorel
