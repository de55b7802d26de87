/// \file
/// The vector instructions of the algorithms. On x86-64 they are the compiler's functions. Every such processor has
/// SSE2, and some have AVX2. For other processors they are functions with the same names and results.
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
