/// \file
/// The last failure of each thread in the flat interface. Nothing here throws. When a failure cannot be stored, the
/// thread's last failure is out-of-memory with its text.
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

/// The last failures of all threads. Each is in a fiber-local slot, which frees it when the thread ends. This
/// compiler's `thread_local` is not reliable at the end of a thread, and terminates the program when memory is
/// exhausted.
class LastErrors {
public:
    LastErrors() noexcept;
    ~LastErrors();

    LastErrors(const LastErrors&) = delete;
    LastErrors& operator=(const LastErrors&) = delete;

    /// Replaces the calling thread's failure. A message of more than `kMaxUnits` units is truncated.
    void remember(vorel_status status, std::wstring_view message) const noexcept;

    /// The calling thread's last failure; null before the first one.
    [[nodiscard]] const Failure* last() const noexcept;

private:
    unsigned long m_slot;
};

inline constinit detail::StateObject<LastErrors> lastErrors;

/// Remembers a failure of the calling thread, and returns its status.
vorel_status fail(vorel_status status, std::wstring_view message) noexcept;

}  // namespace vorel::flat
