/// @file
/// Walks inside a zone of a label image that measure how far its pixels are: the longest path from three of them.
#pragma once

#include <morvane/common/Neighbourhood.h>

#include <opencv2/core.hpp>

#include <cstddef>
#include <span>
#include <vector>

namespace morvane::connexity::geodesic_internals
{

/// The ends of a path, and the pixels on it.
struct LongestPath
{
    cv::Point first;
    cv::Point second;
    double length;
};

/// What the walks over one label image share: zones do not touch each other's part.
class WalkPlane
{
public:
    /// @param labels `CV_32SC1`, whose pixels may change between walks
    explicit WalkPlane(cv::Mat labels);

private:
    friend class GeodesicWalk;

    cv::Mat m_labels;
    /// 1 where a walk has been; 0 everywhere between walks.
    cv::Mat1b m_visited;
    common::Neighbourhood m_neighbourhood;
    std::vector<std::ptrdiff_t> m_labelOffsets;
    std::vector<std::ptrdiff_t> m_visitedOffsets;
};

/// Walks breadth first over the pixels of one number, 8-connected. One instance for each thread.
class GeodesicWalk
{
public:
    explicit GeodesicWalk(WalkPlane & plane)
        : m_plane(&plane)
    {}

    /// The longest path as three walks find it, however long it is.
    ///
    /// @param pixels all pixels of one number, in raster order, at least one
    [[nodiscard]] LongestPath FindLongestPath(std::span<cv::Point const> pixels);

    /// The same as it is found when distances are counted in 16 bits: too long a path ends outside the pixels.
    ///
    /// @param pixels as for FindLongestPath()
    [[nodiscard]] LongestPath CountLongestPath(std::span<cv::Point const> pixels);

    /// Walks from a pixel to all that can be reached.
    ///
    /// @return these pixels, level by level, until the next walk
    [[nodiscard]] std::span<cv::Point const> Reach(cv::Point const & start);

    /// The distances of the pixels of the last walk: 1 for its start.
    [[nodiscard]] std::span<int const> Distances() const { return m_distances; }

private:
    struct Farthest
    {
        cv::Point pixel;
        int distance;
    };

    [[nodiscard]] Farthest FindFarthest(cv::Point const & start);
    /// @param from by value: the queue may move
    void Visit(cv::Point from, int label);

    WalkPlane * m_plane;
    std::vector<cv::Point> m_queue;
    std::vector<int> m_distances;
};

} // namespace morvane::connexity::geodesic_internals
