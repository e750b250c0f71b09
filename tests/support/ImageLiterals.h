/// @file
/// Images drawn as text, and comparisons that print both images when they differ.
#pragma once

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <initializer_list>
#include <string_view>

namespace morvane::tests
{

/// A drawing: one string for each row, one character for each pixel. '.' and '0' are 0, '1' to '9' themselves,
/// 'a' to 'z' 10 to 35, 'A' to 'Z' 36 to 61.
using Drawing = std::initializer_list<std::string_view>;

/// The image of a drawing; every channel of a pixel has the drawn value. @throws std::invalid_argument for rows of
/// different lengths and other characters
[[nodiscard]] cv::Mat Draw(Drawing const & rows, int type);

/// The image of a drawing with pixels of type @p Pixel, an element type or a cv::Vec.
template <class Pixel>
[[nodiscard]] cv::Mat Draw(Drawing const & rows)
{
    return Draw(rows, cv::traits::Type<Pixel>::value);
}

/// The `CV_32S` image of a drawing.
[[nodiscard]] cv::Mat DrawLabels(Drawing const & rows);

/// Tells whether two images have the same size, type and bytes; the message shows both around the first difference.
[[nodiscard]] ::testing::AssertionResult EqualImages(cv::Mat const & actual, cv::Mat const & expected);

/// Expects equal sizes, types and bytes.
void ExpectEqualImages(cv::Mat const & actual, cv::Mat const & expected);

/// Expects the drawn values, in whichever one-channel type @p actual has.
void ExpectDrawn(cv::Mat const & actual, Drawing const & expected);

/// Tells whether two label images split the image into the same zones, whatever the labels are called; 0 is no zone in
/// both.
[[nodiscard]] ::testing::AssertionResult SamePartition(cv::Mat const & actual, cv::Mat const & expected);

/// The element of @p image at row @p y, column @p x and channel @p channel; exact for every element type, the bits
/// of a half-precision one.
[[nodiscard]] double ElementAt(cv::Mat const & image, int y, int x, int channel = 0);

/// Fills the pixels of @p image, of any type, with bytes @p byte; what lies between the rows of a view stays.
void FillBytes(cv::Mat & image, uchar byte);

/// Stores @p value, which the element type must hold.
void SetElement(cv::Mat & image, int y, int x, int channel, double value);

} // namespace morvane::tests
