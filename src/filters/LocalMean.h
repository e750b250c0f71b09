/// @file
/// Mean and deviation in a sliding window.
#pragma once

#include <opencv2/core.hpp>

namespace morvane::filters::window_internals
{

/// Writes mean and population standard deviation of the window around each pixel that is not 0.
///
/// @param grey `CV_8UC1`
/// @param half of the window's side, above 0
/// @param mean, stdDev `CV_32FC1` of the size of @p grey; what is not written keeps its value
void WriteMeans(cv::Mat const & grey, int half, cv::Mat & mean, cv::Mat & stdDev);

} // namespace morvane::filters::window_internals
