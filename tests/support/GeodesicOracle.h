/// @file
/// Geodesic steps pixel by pixel, and the distance by counting dilations.
#pragma once

#include "support/RandomImages.h"

#include <opencv2/core.hpp>

#include <array>
#include <cstddef>
#include <string>

namespace morvane::tests
{

/// The codes of cv::getStructuringElement().
inline constexpr std::array kElementShapes{0, 1, 2};
/// Codes that no structuring element has.
inline constexpr std::array kStrangeElementShapes{-1, 7, 99, -1000};

/// The depths that OpenCV dilates and erodes, and those that it does not.
inline constexpr std::array kDilatedDepths{CV_8U, CV_16U, CV_16S, CV_32F, CV_64F};
inline constexpr std::array kUndilatedDepths{CV_8S, CV_32S, CV_16F};

/// One geodesic dilation by plain loops; no pixel may be NaN or infinite.
[[nodiscard]] cv::Mat OracleGeoDilate(cv::Mat const & marker, cv::Mat const & mask, int shape, int kernelSize);

/// One geodesic erosion by 3 by 3, likewise.
[[nodiscard]] cv::Mat OracleGeoErode(cv::Mat const & marker, cv::Mat const & mask, int shape);

/// The distance, made of dilations that are counted in the type of the images.
[[nodiscard]] cv::Mat OracleDistance(cv::Mat const & marker, cv::Mat const & mask, int shape);

/// The same by a queue and the number of dilations that would have been counted, for paths of thousands of steps.
[[nodiscard]] cv::Mat OracleDistanceByQueue(cv::Mat const & marker, cv::Mat const & mask, int shape);

/// How many dilations are counted.
[[nodiscard]] std::size_t OracleCountedDilations(cv::Mat const & marker, cv::Mat const & mask, int shape);

/// The lowest finite number of a depth that is dilated.
[[nodiscard]] double LowestOf(int depth);

/// The highest one.
[[nodiscard]] double HighestOf(int depth);

/// A random image of finite numbers, extremes of the type among them. There is
/// no negative zero, as which zero of two is the larger is not said.
[[nodiscard]] cv::Mat FiniteImage(Random & random, cv::Size size, int type);

/// A line for SCOPED_TRACE.
[[nodiscard]] inline std::string StepCase(cv::Mat const & image, int shape)
{
    return cv::typeToString(image.type()) + ", rows " + std::to_string(image.rows) + ", columns " +
           std::to_string(image.cols) + ", shape " + std::to_string(shape);
}

} // namespace morvane::tests
