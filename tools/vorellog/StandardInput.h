/// \file
/// Reads a log from standard input.
#pragma once

#include "vorellog/InputDecoder.h"
#include "vorellog/Viewer.h"

namespace vorellog {

/// Passes standard input to `decoder` up to its end, or until `viewer` has enough. After each piece, `viewer` shows the
/// new entries.
/// \throws tools::Failure if standard input cannot be read, or its compressed data is damaged or ends early.
void readStandardInput(InputDecoder& decoder, Viewer& viewer);

}  // namespace vorellog
