/// @file
/// Where repeated geodesic steps end, without taking each of them.
///
/// The image in which repeating a step ends is fixed by the marker, the mask and the element: at each pixel the best of
/// what any path of steps can bring there. So it may be reached in any order. Raster sweeps carry values along whole
/// rows, and a queue carries on what the sweeps left.
///
/// Source: L. Vincent, "Morphological grayscale reconstruction in image analysis: applications and efficient algorithms",
/// 1993.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

namespace morvane::geodesy::reconstruction_internals
{

/// Which way values move.
enum class Direction
{
    Rise, ///< dilations of the marker under the mask
    Fall, ///< erosions of the marker above the mask
};

/// Tells whether the order of steps cannot show in an image: not with a NaN, which a comparison may keep or drop by its
/// place in a row, nor with a negative zero, which is as large as 0. Nor are there steps for a depth that OpenCV's
/// morphology does not take.
[[nodiscard]] MORVANE_EXPORT bool HasFixedPoint(cv::Mat const & image);

/// The image in which repeated steps end.
///
/// @param marker, mask of one size and type, for both of which HasFixedPoint() holds; not empty
/// @param shape code of `cv::getStructuringElement`
/// @return a new image
/// @throws cv::Exception for a shape or a size that OpenCV does not take
[[nodiscard]] MORVANE_EXPORT cv::Mat
FixedPoint(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Size kernelSize, Direction direction);

} // namespace morvane::geodesy::reconstruction_internals
