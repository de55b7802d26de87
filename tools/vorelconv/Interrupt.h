/// \file
/// Control-C during a conversion. The conversion stops before it reads more input, and the unfinished output file is
/// removed. If the whole input was already read, the conversion is completed.
#pragma once

namespace conv {

/// After this call, the first control-C or control-Break only sets a flag. The next control-C or control-Break ends the
/// process as usual.
void watchInterrupts() noexcept;

/// \throws tools::Failure if the flag is set.
void throwIfInterrupted();

}  // namespace conv
