/// \file
/// The former location of vorel/core/Guard.h.
#pragma once

#include "vorel/core/Guard.h"  // IWYU pragma: export
