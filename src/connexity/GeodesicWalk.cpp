#include "connexity/GeodesicWalk.h"

#include <morvane/connexity/Connexity.h>
#include <morvane/connexity/GeodesicMeasures.h>
#include <morvane/geodesy/GeodesicOperators.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace morvane::connexity::geodesic_internals
{

namespace
{

/// From here on, what is counted in 16 bits saturates: what is not reached has one more than the longest distance.
constexpr int kSaturatedLength = std::numeric_limits<ushort>::max() - 1;

/// The pixel that is nearest to the middle of the box.
cv::Point NearestToMiddle(std::span<cv::Point const> pixels, cv::Rect const & box)
{
    cv::Point const middle(box.x + box.width / 2, box.y + box.height / 2);
    auto const squaredDistance = [&](cv::Point const & pixel) {
        std::int64_t const dx = pixel.x - middle.x;
        std::int64_t const dy = pixel.y - middle.y;
        return dx * dx + dy * dy;
    };
    return *std::min_element(pixels.begin(), pixels.end(), [&](cv::Point const & one, cv::Point const & other) {
        return squaredDistance(one) < squaredDistance(other);
    });
}

cv::Rect BoxOf(std::span<cv::Point const> pixels)
{
    auto const [left, right] = std::minmax_element(
        pixels.begin(), pixels.end(), [](cv::Point const & one, cv::Point const & other) { return one.x < other.x; });
    auto const [top, bottom] = std::minmax_element(
        pixels.begin(), pixels.end(), [](cv::Point const & one, cv::Point const & other) { return one.y < other.y; });
    return {cv::Point(left->x, top->y), cv::Point(right->x + 1, bottom->y + 1)};
}

/// A pixel, and how far it is.
using Distant = std::pair<cv::Point, double>;

/// The pixel that is farthest from another in a region, with distances that are counted in 16 bits.
Distant FarthestInRegion(cv::Mat const & region, cv::Point const & start)
{
    cv::Mat seed = cv::Mat::zeros(region.size(), CV_16UC1);
    seed.at<ushort>(start) = 1;
    cv::Mat distance;
    // Of one type and size, the images cannot be refused.
    static_cast<void>(geodesy::GeodesicDistance(seed, region, cv::MORPH_RECT, distance));
    Distant farthest;
    cv::minMaxLoc(distance, nullptr, &farthest.second, nullptr, &farthest.first);
    return farthest;
}

/// The longest path where the counting saturates: what is outside seems farther than all that is inside.
LongestPath FindSaturatedPath(std::span<cv::Point const> pixels)
{
    cv::Rect const box = BoxOf(pixels);
    cv::Point const start = NearestToMiddle(pixels, box);
    cv::Mat region = cv::Mat::zeros(box.size(), CV_16UC1);
    for (cv::Point const & pixel : pixels)
    {
        region.at<ushort>(pixel - box.tl()) = 1;
    }
    Distant const end = FarthestInRegion(region, start - box.tl());
    Distant const first = FarthestInRegion(region, end.first);
    Distant const second = FarthestInRegion(region, first.first);
    return {first.first + box.tl(), second.first + box.tl(), second.second};
}

} // namespace

WalkPlane::WalkPlane(cv::Mat labels)
    : m_labels(std::move(labels))
    , m_visited(m_labels.size(), uchar{0})
    , m_neighbourhood(NeighbourhoodOver(Connexity(eConnexity8), m_labels.size()))
    , m_labelOffsets(m_neighbourhood.LinearOffsets(m_labels))
    , m_visitedOffsets(m_neighbourhood.LinearOffsets(m_visited))
{}

LongestPath GeodesicWalk::FindLongestPath(std::span<cv::Point const> pixels)
{
    cv::Point const start = NearestToMiddle(pixels, BoxOf(pixels));
    Farthest const end = FindFarthest(start);
    Farthest const first = FindFarthest(end.pixel);
    Farthest const second = FindFarthest(first.pixel);
    return {first.pixel, second.pixel, static_cast<double>(second.distance)};
}

LongestPath GeodesicWalk::CountLongestPath(std::span<cv::Point const> pixels)
{
    LongestPath const path = FindLongestPath(pixels);
    // Of the three walks, the last is the longest.
    return path.length < kSaturatedLength ? path : FindSaturatedPath(pixels);
}

GeodesicWalk::Farthest GeodesicWalk::FindFarthest(cv::Point const & start)
{
    auto const pixels = Reach(start);
    int const distance = m_distances.back();
    // Of the last level, the first in raster order.
    auto const level = std::lower_bound(m_distances.begin(), m_distances.end(), distance);
    auto const first = pixels.begin() + (level - m_distances.begin());
    cv::Point const pixel = *std::min_element(first, pixels.end(), [](cv::Point const & one, cv::Point const & other) {
        return one.y < other.y || (one.y == other.y && one.x < other.x);
    });
    return {pixel, distance};
}

std::span<cv::Point const> GeodesicWalk::Reach(cv::Point const & start)
{
    int const label = m_plane->m_labels.at<int>(start);
    m_queue.assign(1, start);
    m_distances.assign(1, 1);
    m_plane->m_visited(start) = 1;
    for (std::size_t front = 0; front < m_queue.size(); ++front)
    {
        Visit(m_queue[front], label);
        m_distances.resize(m_queue.size(), m_distances[front] + 1);
    }
    for (cv::Point const & pixel : m_queue)
    {
        m_plane->m_visited(pixel) = 0;
    }
    return m_queue;
}

void GeodesicWalk::Visit(cv::Point from, int label)
{
    common::Neighbourhood const & neighbourhood = m_plane->m_neighbourhood;
    auto const take = [&](cv::Point const & to, int toLabel, uchar & visited) {
        if (toLabel != label || visited != 0) return;
        visited = 1;
        m_queue.push_back(to);
    };
    if (neighbourhood.IsInterior(from))
    {
        auto const * const label0 = reinterpret_cast<uchar const *>(m_plane->m_labels.ptr<int>(from.y) + from.x);
        uchar * const visited0 = m_plane->m_visited[from.y] + from.x;
        for (std::size_t index = 0; index < neighbourhood.Count(); ++index)
        {
            take(
                from + neighbourhood.Offset(index),
                *reinterpret_cast<int const *>(label0 + m_plane->m_labelOffsets[index]),
                visited0[m_plane->m_visitedOffsets[index]]);
        }
        return;
    }
    for (std::size_t index = 0; index < neighbourhood.Count(); ++index)
    {
        if (auto const to = neighbourhood.Neighbour(from, index))
        {
            take(*to, m_plane->m_labels.at<int>(*to), m_plane->m_visited(*to));
        }
    }
}

bool GeodesicPath(std::vector<cv::Point> const & points, cv::Point & first, cv::Point & second, double & length)
{
    if (points.empty()) return false;
    cv::Rect const box = BoxOf(points);
    cv::Mat region = cv::Mat::zeros(box.size(), CV_32SC1);
    std::vector<cv::Point> pixels;
    pixels.reserve(points.size());
    for (cv::Point const & point : points)
    {
        pixels.push_back(point - box.tl());
        region.at<int>(pixels.back()) = 1;
    }
    WalkPlane plane(region);
    LongestPath const path = GeodesicWalk(plane).CountLongestPath(pixels);
    first = path.first + box.tl();
    second = path.second + box.tl();
    length = path.length;
    return true;
}

} // namespace morvane::connexity::geodesic_internals
