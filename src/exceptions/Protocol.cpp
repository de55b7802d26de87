/// \file
/// The functions that throw exceptions for the core, and the exception handlers of the exported operations.

#include "vorel/core/Protocol.h"

#include <cerrno>
#include <cstring>

#include "core/Format.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace vorel::detail {

void throwMemory(unsigned int count, std::size_t size) {
    throw MemoryException(static_cast<int>(count), static_cast<int>(size));
}

void throwInvalidIndex(unsigned int index, unsigned int count) {
    throw InvalidIndexException(static_cast<int>(index), static_cast<int>(count - 1));
}

void throwFailure(const wchar_t* message) {
    throw Exception(L"%ls", message);
}

void throwUnableToFormat(const char* fmt) {
    throw Exception(L"Unable to format: %hs (%hs)", fmt, std::strerror(errno));
}

void throwUnableToFormat(const wchar_t* fmt) {
    throw Exception(L"Unable to format: %ls (%hs)", fmt, std::strerror(errno));
}

void rethrowWithRecord(const wchar_t* location) {
    try {
        throw;
    } catch (Exception& e) {
        e.rethrowMessage(location);
    } catch (...) {
        Exception::throwSevere(location);
    }
}

void rethrowWithRecord(const wchar_t* className, const wchar_t* operation) {
    try {
        throw;
    } catch (Exception& e) {
        e.rethrowClass(className, operation);
    } catch (...) {
        Exception::throwSevereClass(className, operation);
    }
}

void rethrowFromDestructor(const wchar_t* className) {
    try {
        throw;
    } catch (Exception& e) {
        e.rethrowDestructor(className);
    } catch (...) {
        Exception::throwSevereDestructor(className);
    }
}

void logAndSwallow(const wchar_t* location) noexcept {
    try {
        throw;
    } catch (Exception& e) {
        e.catchMessage(location);
    } catch (...) {
        Exception::catchSevere(location);
    }
}

}  // namespace vorel::detail
