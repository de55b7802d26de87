/// \file
/// The heap of a test program. It serves every `malloc`, `calloc`, `realloc` and `free` of the library and of the
/// tests, and the global `new` and `delete`, except for over-aligned types. It can make requests fail, and it counts
/// the blocks in use.
///
/// It does not serve the requests of the C runtime itself (streams, locales). It serves the requests of the compiler's
/// runtime (thrown objects) only in the guarded build, which links the compiler's runtime statically.
///
///     heap::watch();                       // starts counting blocks
///     heap::arm(3, heap::Failure::Once);   // the third request after this call fails
///     …
///     heap::disarm();
///     EXPECT_EQ(heap::heldBlocks(), 0u);
///
/// Not thread-safe.
#pragma once

#include <cstddef>

namespace heap {

/// Which requests fail: only the n-th request, or the n-th and all later requests.
enum class Failure { Once, FromThenOn };

/// Starts counting: forgets all blocks, and then counts each new block until it is freed. If more than 4096 counted
/// blocks are in use, the program is aborted.
void watch() noexcept;
void stopWatching() noexcept;
std::size_t heldBlocks() noexcept;

/// While an object of this class exists, new blocks are not counted. Use it for blocks that a test keeps after
/// `stopWatching`.
class Unwatched {
public:
    Unwatched() noexcept;
    ~Unwatched();

    Unwatched(const Unwatched&) = delete;
    Unwatched& operator=(const Unwatched&) = delete;

private:
    bool m_before;
};

/// Makes the `nth` request (from 1) after this call fail, and with `Failure::FromThenOn` also all later requests, until
/// `disarm` is called.
void arm(unsigned int nth, Failure failure) noexcept;
void disarm() noexcept;

/// The number of requests and of failed requests from the last `arm` to `disarm`.
unsigned int requests() noexcept;
unsigned int failedRequests() noexcept;

}  // namespace heap
