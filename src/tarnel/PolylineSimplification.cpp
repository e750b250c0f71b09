#include "tarnel/PolylineSimplification.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace tarnel
{

namespace
{

/// How far a point is from a segment, which may be a point. Exactly 0 on it where the coordinates are integers.
double DistanceToSegment(Eigen::Vector2d const & point, Eigen::Vector2d const & start, Eigen::Vector2d const & end)
{
    Eigen::Vector2d const along = end - start;
    Eigen::Vector2d const from = point - start;
    double const squaredLength = along.squaredNorm();
    double const place = from.dot(along);
    if (place <= 0.0) return from.norm();
    if (place >= squaredLength) return (point - end).norm();
    return std::abs(along.x() * from.y() - along.y() * from.x()) / std::sqrt(squaredLength);
}

} // namespace

bool RDP_2DPolylineSimplification(Polyline const & in, double tolerance, Polyline & out)
{
    bool const isFinite = !std::isnan(tolerance) && std::all_of(in.begin(), in.end(), [](auto const & entry) {
        return entry.second.allFinite();
    });
    if (!isFinite) return false;
    std::vector<Polyline::value_type> const points(in.begin(), in.end());
    std::vector<bool> stays(points.size(), false);
    std::vector<std::pair<std::size_t, std::size_t>> open;
    if (!points.empty())
    {
        stays.front() = true;
        stays.back() = true;
        open.emplace_back(0, points.size() - 1);
    }
    while (!open.empty())
    {
        auto const [first, last] = open.back();
        open.pop_back();
        double largest = tolerance;
        std::size_t farthest = first;
        for (std::size_t index = first + 1; index < last; ++index)
        {
            double const distance = DistanceToSegment(points[index].second, points[first].second, points[last].second);
            if (distance <= largest) continue;
            largest = distance;
            farthest = index;
        }
        if (farthest == first) continue;
        stays[farthest] = true;
        open.emplace_back(first, farthest);
        open.emplace_back(farthest, last);
    }
    Polyline kept;
    for (std::size_t index = 0; index < points.size(); ++index)
    {
        if (stays[index]) kept.insert(points[index]);
    }
    out = std::move(kept);
    return true;
}

} // namespace tarnel
