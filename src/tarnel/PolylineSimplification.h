/// @file
/// Polylines with fewer points.
#pragma once

#include <Eigen/Core>

#include <map>

namespace tarnel
{

/// Points in the order of their keys, such as the length of the way to each.
using Polyline = std::map<int, Eigen::Vector2d>;

/// Keeps as many points of a polyline as it takes for none of the others to lie further than a tolerance from what is
/// left.
///
/// The first and the last point stay. Between two that stay, the one that is farthest from the straight segment between
/// them stays, too, if it is further away than the tolerance; of several, the first.
///
/// @param in any number of points
/// @param tolerance in the unit of the coordinates; below 0 all points stay
/// @param out becomes the points that stay, with their keys; may be @p in
/// @return true; false, with @p out untouched, when the tolerance is NaN or a coordinate is not a finite number
///
/// Cost: O(points^2) at the most, O(points log points) on the average. One thread.
///
/// Source: U. Ramer, "An iterative procedure for the polygonal approximation of plane curves", 1972; D. Douglas and T.
/// Peucker, "Algorithms for the reduction of the number of points required to represent a digitized line", 1973.
[[nodiscard]] bool RDP_2DPolylineSimplification(Polyline const & in, double tolerance, Polyline & out);

} // namespace tarnel
