/// @file
/// The test of slope of a single zone.
#pragma once

#include "connexity/RegionSearch.h"

#include <morvane/connexity/QuasiFlatZones.h>

namespace morvane::quasi_flat_internals
{

/// EvaluateRegion() of a zone of which the box is known.
///
/// @param accepted whole image, `CV_8UC1`
/// @param zone the pixels in the box, `CV_8UC1`
/// @param box where they lie in the image; may be empty
/// @param image whole image
[[nodiscard]] ResultType EvaluateZone(
    cv::Mat const & accepted, cv::Mat const & zone, cv::Rect const & box, cv::Mat const & image,
    SearchLimits const & limits);

} // namespace morvane::quasi_flat_internals
