/// \file
/// What both conditions do with the event that they stand on.
#pragma once

#include "vorel/core/KernelHandle.h"

namespace vorel::detail {

/// Sets the event.
/// \throws Exception "Failed to set event."
void setEvent(const KernelHandle& event);

/// Waits for up to `timeoutMs` milliseconds (-1: without limit); true only when the event was signalled.
bool waitForEvent(const KernelHandle& event, int timeoutMs);

}  // namespace vorel::detail
