/// @file
/// What the commands share that fit planes to points.
#pragma once

#include <CLI/CLI.hpp>
#include <opencv2/core.hpp>

#include <string>

namespace program
{

/// Declares the option `--scale F`, a number above 0 by which lengths are multiplied.
///
/// @param arguments of the command
/// @param scale left as it is where the option is not given
/// @param lengths what is multiplied, for the help
void DeclareLengthScale(CLI::App & arguments, double & scale, std::string const & lengths);

/// An image of lengths, multiplied and in another depth; 0 where it was NaN or is not finite.
///
/// @param image one channel
/// @param depth `CV_32F` or `CV_64F`
/// @param scale the factor
[[nodiscard]] cv::Mat ScaledLengths(cv::Mat const & image, int depth, double scale);

/// 255 where any channel of an image is not 0: `CV_8UC1`.
[[nodiscard]] cv::Mat1b IsAnyChannelSet(cv::Mat const & image);

/// Prints what may help when no window of all has a plane.
void PrintAdviceOnScale();

} // namespace program
