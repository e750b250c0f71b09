/// @file
/// Rules for neighbours beyond the image that differ from those of Neighbourhood: there, one that lies outside is none, or
/// lies one image width away.
#pragma once

#include <opencv2/core.hpp>

#include <algorithm>
#include <cstdint>

namespace morvane::common
{

/// A position that may lie beyond the image, in 64 bits: the largest images end where an int does.
using FarPoint = cv::Point_<std::int64_t>;

/// The position of a neighbour, inside the image or not.
[[nodiscard]] inline FarPoint FarNeighbour(cv::Point const & pixel, cv::Point const & offset)
{
    return {std::int64_t{pixel.x} + offset.x, std::int64_t{pixel.y} + offset.y};
}

/// The row of the image that is nearest to @p y.
[[nodiscard]] inline int NearestRow(std::int64_t y, int rows)
{
    return static_cast<int>(std::clamp<std::int64_t>(y, 0, rows - 1));
}

/// The column of the image that is nearest to @p x.
[[nodiscard]] inline int NearestColumn(std::int64_t x, int columns)
{
    return static_cast<int>(std::clamp<std::int64_t>(x, 0, columns - 1));
}

/// The column for @p x where the first and the last are neighbours: beyond either edge, the opposite edge column itself,
/// however far beyond.
[[nodiscard]] inline int OppositeEdgeColumn(std::int64_t x, int columns)
{
    if (x < 0) return columns - 1;
    return x >= columns ? 0 : static_cast<int>(x);
}

} // namespace morvane::common
