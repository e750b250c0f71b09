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

/// Reads an image of one channel in which nothing measured is a plain 0, see WithoutNaN().
///
/// @throws ProgramError as ReadImage() and CheckChannels()
[[nodiscard]] cv::Mat ReadScalars(std::filesystem::path const & file);

/// ReadScalars() for an image that goes with another one. @throws ProgramError as ReadScalars() and ReadImageLike()
[[nodiscard]] cv::Mat
ReadScalarsLike(std::filesystem::path const & file, cv::Mat const & other, std::filesystem::path const & otherFile);

/// Reads an image of labels, converted to `CV_32SC1`.
///
/// @throws ProgramError as ReadImage() and CheckChannels(), and when the image does not hold integers
[[nodiscard]] cv::Mat ReadLabels(std::filesystem::path const & file);

/// Checks that labels are few enough for tables of them: dense as the program makes them, and not any numbers.
///
/// @param labels `CV_32SC1`
/// @throws ProgramError when a label is larger than the number of pixels
void CheckDenseLabels(std::filesystem::path const & file, cv::Mat const & labels);

/// Checks that an image has the size of another one. @throws ProgramError when it has not
void CheckSize(
    std::filesystem::path const & file, cv::Mat const & image, cv::Mat const & other,
    std::filesystem::path const & otherFile);

/// Checks the depth. @throws ProgramError when it is none of @p accepted
void CheckDepth(std::filesystem::path const & file, cv::Mat const & image, std::vector<int> const & accepted);

/// Checks that something is left of an image when both of its sides are halved, rounding down, again and again.
///
/// @param count how many times, 0 to kMostHalvings
/// @throws ProgramError when nothing is
void CheckHalvings(std::filesystem::path const & file, cv::Mat const & image, int count);

/// No side can be halved more often.
inline constexpr int kMostHalvings = 30;

/// The depths that OpenCV's morphology takes.
[[nodiscard]] std::vector<int> const & MorphologyDepths();

/// The depths that geodesy::OverBuild() and geodesy::UnderBuild() take.
[[nodiscard]] std::vector<int> const & PriorityFloodDepths();

/// The image with 0 in place of NaN, for which many operators have no place, and of negative zeros: both count as
/// nothing measured elsewhere.
[[nodiscard]] cv::Mat WithoutNaN(cv::Mat const & image);

/// Checks the number of channels. @throws ProgramError when it is none of @p accepted
void CheckChannels(std::filesystem::path const & file, cv::Mat const & image, std::vector<int> const & accepted);

/// The size in words: "640 x 480", columns first.
[[nodiscard]] std::string DescribeSize(cv::Mat const & image);

/// The type in words: "CV_32FC1, 32-bit float, 1 channel".
[[nodiscard]] std::string DescribeType(int type);

/// Prints name, size, type and the share of empty pixels.
void PrintImage(std::filesystem::path const & file, cv::Mat const & image);

/// The share of pixels at which nothing was measured, 0 to 1.
[[nodiscard]] double EmptyShare(cv::Mat const & image);

} // namespace program
