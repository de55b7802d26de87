/// \file
/// The former location of vorel/core/ThreadSafety.h.
#pragma once

#include "vorel/core/ThreadSafety.h"  // IWYU pragma: export
