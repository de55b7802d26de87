/// \file
/// The heap of a test program. It serves every `malloc`, `calloc`, `realloc` and `free` of the library and of the
/// tests, and the global `new` and `delete`. It can make requests fail, and it counts the blocks in use.
///
/// It does not serve the C runtime's own requests (streams, locales), nor those of the compiler's runtime (thrown
/// objects). In the guarded build the compiler's runtime is linked statically, so its requests come here too.
///
///     heap::watch();                       // starts counting blocks
///     heap::arm(3, heap::Failure::Once);   // the third request from now on fails
///     …
///     heap::disarm();
///     EXPECT_EQ(heap::heldBlocks(), 0u);
///
/// Not thread-safe.
#pragma once

#include <cstddef>

namespace heap {

/// Which requests fail: only the n-th one, or the n-th one and all after it.
enum class Failure { Once, FromThenOn };

/// Forgets all blocks, and counts the blocks that are allocated from now on until they are freed.
void watch() noexcept;
void stopWatching() noexcept;
std::size_t heldBlocks() noexcept;

/// While an object exists, new blocks are not counted. For blocks that a test keeps after `stopWatching`.
class Unwatched {
public:
    Unwatched() noexcept;
    ~Unwatched();

    Unwatched(const Unwatched&) = delete;
    Unwatched& operator=(const Unwatched&) = delete;

private:
    bool m_before;
};

/// Makes the `nth` request (from 1) before `disarm` fail.
void arm(unsigned int nth, Failure failure) noexcept;
void disarm() noexcept;

/// The number of requests and of failed requests since the last `arm`.
unsigned int requests() noexcept;
unsigned int failedRequests() noexcept;

}  // namespace heap
