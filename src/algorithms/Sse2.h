/// \file
/// The functions (intrinsics) through which the algorithms use vector instructions. On x86-64, the compiler provides
/// these functions; every x86-64 processor has SSE2, and some have AVX2. For other processors, PortableSse2.h defines
/// functions with the names and results of the SSE2 functions.
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
