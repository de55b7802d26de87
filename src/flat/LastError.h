/// \file
/// What the flat interface remembers of the last failure of each thread. Nothing in here throws, and without memory a
/// failure still has its status and a text.
#pragma once

#include <cstddef>
#include <string_view>

#include "core/LibraryState.h"
#include "vorel/flat/Status.h"

namespace vorel::flat {

struct Failure {
    static constexpr std::size_t kMostUnits = 500;

    [[nodiscard]] std::wstring_view message() const noexcept { return {text, length}; }

    vorel_status status = VOREL_OK;
    std::size_t length = 0;
    wchar_t text[kMostUnits] = {};
};

/// The failures of all threads. Each has its own in a slot of the system, which gives it back at the thread's end: this
/// compiler's `thread_local` is not reliable there, and ends the program when there is no memory.
class LastErrors {
public:
    LastErrors() noexcept;
    ~LastErrors();

    LastErrors(const LastErrors&) = delete;
    LastErrors& operator=(const LastErrors&) = delete;

    /// Replaces the calling thread's failure; of a text that is too long the beginning stays.
    void remember(vorel_status status, std::wstring_view message) const noexcept;

    /// The calling thread's failure, null before the first.
    [[nodiscard]] const Failure* last() const noexcept;

private:
    unsigned long m_slot;
};

inline constinit detail::StateObject<LastErrors> lastErrors;

/// Remembers a failure of the calling thread, and returns its status.
vorel_status fail(vorel_status status, std::wstring_view message) noexcept;

}  // namespace vorel::flat
