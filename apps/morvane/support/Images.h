/// @file
/// Reading images, and saying what they are.
#pragma once

#include <opencv2/core.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace program
{

/// Reads an image as it is in the file, whatever OpenCV reads.
///
/// @throws ProgramError when the file is missing, cannot be read, is no image, or its type is refused by the library:
///         accepted are 1 to 4 channels of 8-bit unsigned, 16-bit and 32-bit integers, float and double
[[nodiscard]] cv::Mat ReadImage(std::filesystem::path const & file);

/// Reads an image that goes with another one.
///
/// @param file to read
/// @param other the image that is there already, of @p otherFile
/// @throws ProgramError as ReadImage(), and when the size is another one
[[nodiscard]] cv::Mat
ReadImageLike(std::filesystem::path const & file, cv::Mat const & other, std::filesystem::path const & otherFile);

/// Checks the number of channels. @throws ProgramError when it is none of @p accepted
void CheckChannels(std::filesystem::path const & file, cv::Mat const & image, std::vector<int> const & accepted);

/// The type in words: "CV_32FC1, 32-bit float, 1 channel".
[[nodiscard]] std::string DescribeType(int type);

/// Prints name, size, type and the share of empty pixels.
void PrintImage(std::filesystem::path const & file, cv::Mat const & image);

/// The share of pixels at which nothing was measured, 0 to 1.
[[nodiscard]] double EmptyShare(cv::Mat const & image);

} // namespace program
