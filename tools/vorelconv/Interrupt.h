/// \file
/// Control-C during a conversion. The conversion stops at the next block and removes the unfinished output file.
#pragma once

namespace conv {

/// After this call, the first control-C or control-Break only sets a flag. The next control-C or control-Break ends the
/// process as usual.
void watchInterrupts() noexcept;

/// \throws tools::Failure if the flag is set.
void throwIfInterrupted();

}  // namespace conv
