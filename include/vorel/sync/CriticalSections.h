/// \file
/// The former location of vorel/core/CriticalSections.h.
#pragma once

#include "vorel/core/CriticalSections.h"  // IWYU pragma: export
