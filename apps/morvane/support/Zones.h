/// @file
/// What commands do with zones beside making them.
#pragma once

#include <opencv2/core.hpp>

#include <optional>
#include <vector>

namespace program
{

/// The largest label of an image, 0 where none is above it.
[[nodiscard]] int LargestLabel(cv::Mat const & labels);

/// Gives the zones of fewer than @p area pixels the label 0 and numbers the others anew, in the same order.
///
/// @param area least number of pixels
/// @param labels `CV_32SC1`, dense from 1
void DropSmallZones(int area, cv::Mat & labels);

/// For each label from 0 to the largest, a place to write it: the pixel of its zone that is nearest to the zone's centre
/// of gravity, the first in raster order; none for 0 and for labels that do not occur.
///
/// @param labels `CV_32SC1`; zones are positive
[[nodiscard]] std::vector<std::optional<cv::Point>> PlacesOf(cv::Mat const & labels);

} // namespace program
