/// @file
/// One pass of non-local means.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

#include <cstddef>
#include <vector>

namespace morvane::filters::nlmeans_internals
{

/// What follows from the two sizes.
struct NLMeansParameters
{
    static constexpr std::size_t kTableSize = 8192;

    /// @param patchSize, searchSize from 0 on; even ones are raised by 1
    MORVANE_EXPORT NLMeansParameters(int patchSize, int searchSize);

    std::vector<float> weightTable; ///< exp(-i * tableStep) for the kTableSize exponents i
    int margin;                     ///< pixels nearer to a border than this are not filtered
    int patchRadius;                ///< the patch has 2 * patchRadius + 1 pixels a side
    int searchRadius;               ///< the search square likewise
    float tableStep;                ///< of the exponent
    float patchNormalisation;       ///< one over the pixels of a patch
};

/// One pass on one thread.
///
/// @tparam T element type of @p src: uchar, ushort, short, int
/// @param parameters sizes and weights
/// @param src one channel of type T
/// @param h strength in grey levels
/// @param dst becomes the filtered image; may be @p src
/// @param centreBlend 0 to 1: how far the weight of the pixel itself goes from the largest one around it to 1
/// @return true
template <class T>
MORVANE_EXPORT bool
NLMeansPass(NLMeansParameters const & parameters, cv::Mat const & src, float h, cv::Mat & dst, float centreBlend);

/// One pass on OpenCV's threads, with the same result.
template <class T>
MORVANE_EXPORT bool NLMeansPassParallel(
    NLMeansParameters const & parameters, cv::Mat const & src, float h, cv::Mat & dst, float centreBlend);

} // namespace morvane::filters::nlmeans_internals
