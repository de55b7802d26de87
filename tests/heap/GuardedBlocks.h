/// \file
/// A heap that detects errors that the runtime's heap misses. Blocks of more than 256 MiB come from the runtime's heap.
/// Each smaller block ends at an inaccessible page, so the first access past the end faults. The page before the block
/// is inaccessible, too. If there are bytes between that page and the block, the last 256 of them are filled with a
/// pattern, which is checked when the block is freed. A block ends exactly where the inaccessible page begins. The
/// contents of the block are aligned nevertheless, because the size of the block is a multiple of their alignment.
///
/// A freed block becomes inaccessible. If a program frees many small blocks (of at most one page), making each block
/// inaccessible is too slow. So after the first 20,000 small blocks, a freed small block is overwritten with a pattern
/// instead. The pattern is checked before the page of such a block is reused or released. The page is reused only after
/// at least 8,192 other small blocks were freed. If 16,384 freed small blocks wait for reuse and another one is freed,
/// the page of the oldest of them is released.
///
/// If an access faults, the heap prints an explanation to stderr, such as "heap: read at offset 10 of a block of 10
/// bytes", and the fault ends the program. If a block is freed again before its page is reused, if no block starts at a
/// freed address, or if a check finds that the pattern before a block or in a freed block has changed, the heap prints
/// an explanation and aborts the program.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace heap::blocks {

/// The number of live blocks, which are allocated and not freed. The functions of this file do not count blocks that
/// come from the runtime's heap.
std::size_t live() noexcept;

/// Waits until at most `count` blocks are live, because the last blocks of a thread may be freed shortly after the
/// thread was joined. Returns false after 5 seconds.
bool waitForLive(std::size_t count) noexcept;

/// The number of the last allocated block. Blocks are numbered in the order of their allocation.
std::uint64_t serial() noexcept;

/// The sizes in bytes of the live blocks with numbers above `serial`, for a message: "24, 8". At most 20 sizes.
std::string sizesSince(std::uint64_t serial);

}  // namespace heap::blocks
