/// \file
/// The heap of a test program: every `malloc`, `calloc`, `realloc`, `free` of the library and of the tests, and the
/// global `new` and `delete`, pass through here. It can refuse requests, and it knows which blocks are still held.
///
/// The runtime's own requests (streams, locales) do not, nor those of the compiler's runtime (thrown objects), except
/// in the guarded build, which has that runtime inside the program.
///
///     heap::watch();                       // from here on blocks are counted
///     heap::arm(3, heap::Failure::Once);   // the third request from here on is refused
///     …
///     heap::disarm();
///     EXPECT_EQ(heap::heldBlocks(), 0u);
///
/// For one thread.
#pragma once

#include <cstddef>

namespace heap {

/// Which requests are refused: the n-th one alone, or it and all that follow.
enum class Failure { Once, FromThenOn };

/// Forgets all blocks, and counts those that are handed out from here on until they come back.
void watch() noexcept;
void stopWatching() noexcept;
std::size_t heldBlocks() noexcept;

/// While one lives, new blocks are not counted: for what a test remembers beyond its watch.
class Unwatched {
public:
    Unwatched() noexcept;
    ~Unwatched();

    Unwatched(const Unwatched&) = delete;
    Unwatched& operator=(const Unwatched&) = delete;

private:
    bool m_before;
};

/// Refuses the `nth` request (from 1) that is made before `disarm`.
void arm(unsigned int nth, Failure failure) noexcept;
void disarm() noexcept;

/// Requests, and refused ones, since the heap was armed last.
unsigned int requests() noexcept;
unsigned int refusals() noexcept;

}  // namespace heap
