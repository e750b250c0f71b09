/// @file
/// Images of any kind made visible.
#pragma once

#include <opencv2/core.hpp>

namespace gallery
{

/// How the values of an image are shown.
enum class Look
{
    Grey,   ///< intensities: black to white
    Relief, ///< depths and elevations: a colour scale from dark blue over green to yellow
};

/// The range of the measured values that a preview spreads over its scale: most of them, without the outliers.
struct Stretch
{
    double low = 0.0;
    double high = 1.0;
};

/// The range between the 1st and the 99th percentile of the values that are neither 0 nor NaN; 0 to 1 if there is none.
[[nodiscard]] Stretch StretchOf(cv::Mat const & image);

/// A picture of an image.
///
/// @param image one channel of any depth, or three or four channels, which are shown as they are (8-bit) or scaled
/// @param look of one-channel images
/// @return `CV_8UC3`; pixels of one channel that are 0 have a dark neutral tone that is on no scale
[[nodiscard]] cv::Mat Preview(cv::Mat const & image, Look look);

} // namespace gallery
