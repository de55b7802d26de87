#include "flat/Call.h"

#include <new>

#include "flat/LastError.h"
#include "vorel/exceptions/ExceptionFamily.h"

namespace vorel::flat {

namespace {

/// Stores the first message of a library exception as the thread's last failure, and logs that `function` has caught
/// the exception. If the exception has no message, for example because memory ran out, `fallbackMessage` is stored
/// instead.
vorel_status end(Exception& exception, vorel_status status, const wchar_t* fallbackMessage,
                 const wchar_t* function) noexcept {
    const wchar_t* const message = exception.what();
    fail(status, message && *message ? message : fallbackMessage);
    exception.catchMessage(function);
    return status;
}

vorel_status endSevere(vorel_status status, const wchar_t* message, const wchar_t* function) noexcept {
    fail(status, message);
    Exception::catchSevere(function);
    return status;
}

}  // namespace

vorel_status statusOfCurrentException(const wchar_t* function, vorel_status fallbackStatus) noexcept {
    constexpr const wchar_t* kNoMemory = L"No more memory is available";
    try {
        throw;  // cppcheck-suppress rethrowNoCurrentException; called in a handler
    } catch (const ArgumentError& error) {
        return fail(error.status, error.message);
    } catch (MemoryException& e) {
        return end(e, VOREL_ERROR_OUT_OF_MEMORY, kNoMemory, function);
    } catch (Exception& e) {
        return end(e, fallbackStatus, L"The operation failed", function);
    } catch (const std::bad_alloc&) {
        return endSevere(VOREL_ERROR_OUT_OF_MEMORY, kNoMemory, function);
    } catch (...) {
        return endSevere(VOREL_ERROR_INTERNAL, L"The operation failed for an unknown reason", function);
    }
}

}  // namespace vorel::flat
