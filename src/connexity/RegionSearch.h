/// @file
/// The search for the base surface of a height image.
#pragma once

#include <opencv2/core.hpp>

namespace morvane::quasi_flat_internals
{

/// What the caller of the search chooses.
struct SearchLimits
{
    int areaLimit;     ///< pixels that a zone must exceed to be accepted without a test
    int radius;        ///< pixels around the mask within which zones are tested
    double pixelSize;  ///< side of a pixel in the unit of the heights
    double slopeRatio; ///< largest height over distance
};

/// Adds the base surface to a mask.
///
/// @param image the heights as they were measured
/// @param filtered the heights in which the zones were found
/// @param labels the zones, `CV_32SC1`; their rims are cleared
/// @param mask `CV_8UC1`, all 0
/// @return see QuasiFlatZonesPropagation()
[[nodiscard]] bool MaskBaseSurface(
    cv::Mat const & image, cv::Mat const & filtered, SearchLimits const & limits, cv::Mat & labels, cv::Mat & mask);

} // namespace morvane::quasi_flat_internals
