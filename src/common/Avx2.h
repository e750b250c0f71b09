/// @file
/// Functions compiled for processors with AVX2, beside the same ones for those without.
///
/// A loop is written once, in a function marked MORVANE_INLINED, and compiled twice: inside a plain function and inside one
/// marked MORVANE_AVX2; what the compiler does not find by itself stands there in intrinsics, under MORVANE_HAS_AVX2. Which
/// of the two runs is decided by HasAvx2(). No fused multiply-add comes in by this: results are
/// the same.
#pragma once

#include <opencv2/core.hpp>

#if defined(__GNUC__) && defined(__x86_64__)
#include <immintrin.h>

#define MORVANE_HAS_AVX2 1 // NOLINT(cppcoreguidelines-macro-usage)
#define MORVANE_AVX2                                                                                                   \
    __attribute__((target("avx2"))) // NOLINT(cppcoreguidelines-macro-usage): an attribute has no other form
#define MORVANE_INLINED __attribute__((always_inline)) inline // NOLINT(cppcoreguidelines-macro-usage)
#else
#define MORVANE_HAS_AVX2 0
#define MORVANE_AVX2
#define MORVANE_INLINED inline
#endif

namespace morvane::common
{

/// Tells whether functions marked MORVANE_AVX2 may run on this machine.
[[nodiscard]] inline bool HasAvx2()
{
    return MORVANE_HAS_AVX2 != 0 && cv::checkHardwareSupport(CV_CPU_AVX2);
}

} // namespace morvane::common
