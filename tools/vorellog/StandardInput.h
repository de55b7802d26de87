/// \file
/// Reads a log from standard input.
#pragma once

#include "vorellog/InputDecoder.h"
#include "vorellog/Viewer.h"

namespace vorellog {

/// Passes standard input to `decoder`, until the input ends or `viewer` has enough entries. After each block of bytes,
/// `viewer` shows the new entries.
/// \throws tools::Failure if standard input cannot be read, or if the input is compressed and is damaged or ends early.
void readStandardInput(InputDecoder& decoder, Viewer& viewer);

}  // namespace vorellog
