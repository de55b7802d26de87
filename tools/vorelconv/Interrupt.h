/// \file
/// Control-C while a conversion runs: it ends at the next block, so that no unfinished file stays behind.
#pragma once

namespace conv {

/// From now on the first control-C (or control-Break) only sets a mark; the next one ends the process as usual.
void watchInterrupts() noexcept;

/// \throws tools::Failure when the mark is set.
void throwIfInterrupted();

}  // namespace conv
