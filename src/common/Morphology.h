/// @file
/// OpenCV's morphology as this library uses it.
#pragma once

#include <opencv2/imgproc.hpp>

namespace morvane::common
{

/// A structuring element, square or inscribed in a square, anchored in its middle.
///
/// @throws cv::Exception for a shape or a size that OpenCV does not take
[[nodiscard]] inline cv::Mat StructuringElement(int shape, int size)
{
    return cv::getStructuringElement(shape, cv::Size(size, size), cv::Point(-1, -1));
}

/// One of OpenCV's morphological operations; beyond the image nothing counts.
///
/// Isolated: of a view, the morphology would else see the pixels around it in its parent.
///
/// @param dst becomes the result, of the type of @p src; may be the same matrix
/// @throws cv::Exception for types that OpenCV's morphology does not take
inline void Filter(cv::Mat const & src, cv::Mat & dst, int operation, cv::Mat const & element, int iterations = 1)
{
    cv::morphologyEx(
        src, dst, operation, element, cv::Point(-1, -1), iterations, cv::BORDER_CONSTANT | cv::BORDER_ISOLATED,
        cv::morphologyDefaultBorderValue());
}

} // namespace morvane::common
