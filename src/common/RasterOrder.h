/// @file
/// Images whose pixels meet by their place in raster order, whatever their rows and columns.
#pragma once

#include <opencv2/core.hpp>

#include <cstddef>

namespace morvane::common
{

/// Copies the first @p pixels pixels of an image, in raster order, to the first pixels of another of the same type.
///
/// @param pixels not more than either image has; neither may be empty where it is not 0
void CopyInRasterOrder(cv::Mat const & from, cv::Mat & to, std::size_t pixels);

/// The image itself where it has the size; else a new one of that size, filled in raster order as far as both go.
[[nodiscard]] cv::Mat InSize(cv::Size size, cv::Mat const & image);

} // namespace morvane::common
