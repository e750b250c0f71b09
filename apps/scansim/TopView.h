/// @file
/// A scan seen from above.
#pragma once

#include "scansim/Scan.h"

#include <opencv2/core.hpp>

#include <limits>

namespace scansim
{

/// The area that a top view shows.
struct TopViewArea
{
    cv::Point2d corner; ///< least x and y, metres in the frame of the scene
    cv::Size2d extent;  ///< metres
    double cell = 0.05; ///< side of a pixel, metres
};

/// A square around a station. @param reach half of its side, metres
[[nodiscard]] TopViewArea AreaAround(Station const & station, double reach, double cell);

/// Images of a scan from above: x grows with the column, y against the row.
struct TopView
{
    cv::Mat elevation; ///< `CV_32FC1`, metres: the highest z in each cell, 0 where nothing was hit
    cv::Mat intensity; ///< `CV_16UC1`: that point's intensity, 0 where nothing was hit
};

/// Draws the top view of a scan.
///
/// @param scan the scan
/// @param area what is shown of it
/// @param ceiling points at this z or higher are left out, metres
[[nodiscard]] TopView
SeeFromAbove(Scan const & scan, TopViewArea const & area, double ceiling = std::numeric_limits<double>::infinity());

} // namespace scansim
