/// @file
/// The tidying of label images, pixel by pixel.
#pragma once

#include <opencv2/core.hpp>

namespace morvane::tests
{

/// What Erode3x3Segmentation() must make of an image.
[[nodiscard]] cv::Mat OracleErodedZones(cv::Mat const & labels);

/// What FillWS3x3WithLum() must make of an image.
[[nodiscard]] cv::Mat OracleFilledLines(cv::Mat const & luminance, cv::Mat const & labels);

} // namespace morvane::tests
