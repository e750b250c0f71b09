/// @file
/// Rules for neighbours beyond the image that differ from those of Neighbourhood: there, one that lies outside is none, or
/// lies one image width away.
#pragma once

#include <opencv2/core.hpp>

#include <algorithm>

namespace morvane::common
{

/// The row of the image that is nearest to @p y.
[[nodiscard]] inline int NearestRow(int y, int rows)
{
    return std::clamp(y, 0, rows - 1);
}

/// The column of the image that is nearest to @p x.
[[nodiscard]] inline int NearestColumn(int x, int columns)
{
    return std::clamp(x, 0, columns - 1);
}

/// The column for @p x where the first and the last are neighbours: beyond either edge, the opposite edge column itself,
/// however far beyond.
[[nodiscard]] inline int OppositeEdgeColumn(int x, int columns)
{
    if (x < 0) return columns - 1;
    return x >= columns ? 0 : x;
}

} // namespace morvane::common
