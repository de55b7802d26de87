/// \file
/// Operations on the event of a condition.
#pragma once

#include "vorel/core/KernelHandle.h"

namespace vorel::detail {

/// Sets the event.
/// \throws Exception "Failed to set event."
void setEvent(const KernelHandle& event);

/// Waits for at most `timeoutMs` milliseconds (-1: no limit). Returns true only if the event was signalled.
bool waitForEvent(const KernelHandle& event, int timeoutMs);

}  // namespace vorel::detail
