/// @file
/// The square in which an image is turned.
#pragma once

#include <morvane/common/Conversions.h>

#include <opencv2/core.hpp>

#include <cmath>

namespace morvane::algorithm
{

/// The length of an image's diagonal in pixels, rounded.
[[nodiscard]] inline int DiagonalOf(cv::Size const & size)
{
    double const squares = std::pow(size.height, 2.0) + std::pow(size.width, 2.0);
    return common::TruncateTo<int>(std::floor(std::sqrt(squares) + 0.5));
}

/// The side of the square: the diagonal, made odd.
[[nodiscard]] inline int SideOfSquare(cv::Size const & size)
{
    int const diagonal = DiagonalOf(size);
    return diagonal % 2 == 0 ? diagonal + 1 : diagonal;
}

/// Where the image lies in the square.
[[nodiscard]] inline cv::Rect PlaceInSquare(cv::Size const & size)
{
    int const side = SideOfSquare(size);
    // The diagonal is no shorter than a side, so that the halves are rounded down.
    return {(side - size.width) / 2, (side - size.height) / 2, size.width, size.height};
}

} // namespace morvane::algorithm
