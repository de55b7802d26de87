/// \file
/// The vector instructions of the algorithms: those of the processor on x86-64, where SSE2 is part of every processor
/// and AVX2 of some, and functions with the same names and results on other processors.
#pragma once

#if defined(__AVX2__)
#include <immintrin.h>
#elif defined(__x86_64__) || defined(_M_X64)
#include <emmintrin.h>
#else
#include "algorithms/PortableSse2.h"

namespace vorel::algorithms {

using namespace portable;

}  // namespace vorel::algorithms
#endif
