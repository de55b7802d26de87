/// \file
/// The last failure of each thread in the flat interface. No function here throws. If memory for a failure cannot be
/// allocated, the thread's last failure becomes VOREL_ERROR_OUT_OF_MEMORY with a fixed message. If the system has no
/// free fiber-local slot, or cannot set the slot's value, nothing is recorded. Also, nothing is recorded during the
/// loading and the unloading of the library.
#pragma once

#include <cstddef>
#include <string_view>

#include "core/LibraryState.h"
#include "vorel/flat/Status.h"

namespace vorel::flat {

struct Failure {
    static constexpr std::size_t kMaxUnits = 500;

    [[nodiscard]] std::wstring_view message() const noexcept { return {text, length}; }

    vorel_status status = VOREL_OK;
    std::size_t length = 0;
    wchar_t text[kMaxUnits] = {};
};

/// The last failures of all threads. Each thread has its failure in a fiber-local slot. The slot's callback frees the
/// failure when the thread ends. If a thread runs fibers, each fiber has its own failure. `thread_local` is not used
/// for two reasons. With some compilers, the destructors of thread-local variables do not run reliably when a thread
/// ends. If no memory is available for such a variable, the program is terminated.
class LastErrors {
public:
    LastErrors() noexcept;
    ~LastErrors();

    LastErrors(const LastErrors&) = delete;
    LastErrors& operator=(const LastErrors&) = delete;

    /// Replaces the calling thread's failure. A message of more than `kMaxUnits` units is truncated.
    void remember(vorel_status status, std::wstring_view message) const noexcept;

    /// The calling thread's last failure; null if none has been recorded.
    [[nodiscard]] const Failure* last() const noexcept;

private:
    unsigned long m_slot;
};

inline constinit detail::StateObject<LastErrors> lastErrors;

/// Stores the calling thread's last failure, and returns `status`.
vorel_status fail(vorel_status status, std::wstring_view message) noexcept;

}  // namespace vorel::flat
