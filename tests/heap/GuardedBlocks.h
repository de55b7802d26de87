/// \file
/// A heap that finds what the runtime's would pass over. Each block ends where an inaccessible page begins, so that the
/// first byte read or written too far faults; the page in front of it is inaccessible too, and what lies between that
/// page and the block is filled and looked at when the block comes back. The end is exact for any type: the size of a
/// block is a multiple of the alignment of what it holds.
///
/// A block that was given back becomes inaccessible. Beyond the first 20,000 of a program, that is too slow: small
/// blocks are overwritten instead, and looked at before their place is used again. It is not, before 8,192 others were.
///
/// A fault is explained on stderr before it ends the program: "heap: read 0 bytes behind the end of a block of 10
/// bytes". A block that comes back twice, or with a changed fill, is explained the same way, and aborts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace heap::blocks {

/// The number of blocks that were handed out and have not come back.
std::size_t live() noexcept;

/// Waits until no more than `count` blocks are live: a thread that has ended may not have given back all it had yet.
/// False when that does not come to pass.
bool waitForLive(std::size_t count) noexcept;

/// A number that grows with every block that is handed out.
std::uint64_t serial() noexcept;

/// The sizes in bytes of the live blocks that were handed out after `serial`, for a message: "24, 8"; of many the
/// first.
std::string sizesSince(std::uint64_t serial);

}  // namespace heap::blocks
