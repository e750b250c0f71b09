/// @file
/// A scan from above without gaps.
#pragma once

#include <opencv2/core.hpp>

namespace gallery
{

/// Heights above the ground in metres, 0 where it is lower: empty pixels take the height of the nearest that is measured,
/// then single outliers go.
///
/// @param elevation `CV_32FC1`, metres above the datum, 0 where nothing was measured
[[nodiscard]] cv::Mat SurfaceOf(cv::Mat const & elevation);

} // namespace gallery
