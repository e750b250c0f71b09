/// @file
/// The flood of labels over a grey image, cheapest pixel first.
#pragma once

#include <opencv2/core.hpp>

namespace morvane::connexity::flooding_internals
{

/// Floods, see Flooding().
///
/// @param image `CV_8UC1`
/// @param markers `CV_32SC1` of the same size
/// @return whether anything was flooded
bool FloodGrey(cv::Mat const & image, cv::Mat & markers);

} // namespace morvane::connexity::flooding_internals
