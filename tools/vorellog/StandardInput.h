/// \file
/// Reads a log from standard input.
#pragma once

#include "vorellog/Follower.h"
#include "vorellog/Viewer.h"

namespace vorellog {

/// Passes standard input to `sink` up to its end. After each piece, `viewer` shows the new entries.
/// \throws tools::Failure if standard input cannot be read.
void readStandardInput(LogSink& sink, Viewer& viewer);

}  // namespace vorellog
