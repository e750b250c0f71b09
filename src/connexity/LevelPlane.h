/// @file
/// The levels of an image on a padded plane, close together where the numbers of the image are far apart.
#pragma once

#include "common/PaddedGrid.h"
#include "common/ValueRange.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

namespace morvane::connexity::max_tree_internals
{

/// The pixels of an image of a narrow type are levels as they are.
template <class T, class Index>
class LevelPlane
{
public:
    using Level = T;

    LevelPlane(cv::Mat const & image, common::PaddedGrid<Index> const & grid)
        : m_levels(common::PlaneOf(image, grid, T{0}))
    {}

    [[nodiscard]] Level At(Index element) const { return m_levels[element]; }

    /// The number that a level stands for.
    [[nodiscard]] T ValueOf(Level level) const { return level; }

private:
    std::vector<T> m_levels;
};

/// The pixels of an image of wide numbers become ranks: a table with an entry for each number up to the largest one could
/// take gigabytes, and negative numbers would lie before it.
template <class Index>
class LevelPlane<int, Index>
{
public:
    using Level = std::uint32_t;

    LevelPlane(cv::Mat const & image, common::PaddedGrid<Index> const & grid)
        : LevelPlane(image, grid, common::WidenedBy<int>(image, {INT_MAX, INT_MIN}))
    {}

    [[nodiscard]] Level At(Index element) const { return m_levels[element]; }

    /// The number that a level stands for.
    [[nodiscard]] int ValueOf(Level level) const { return m_values[level]; }

private:
    static constexpr std::size_t kMostBuckets = std::size_t{1} << 18U;

    LevelPlane(cv::Mat const & image, common::PaddedGrid<Index> const & grid, common::ValueRange<int> const & values)
        : m_least(values.low)
        , m_levels(grid.Total())
    {
        // In unsigned arithmetic, as the range may pass the largest int.
        auto const range = static_cast<std::uint32_t>(values.high) - static_cast<std::uint32_t>(values.low);
        std::size_t const buckets = std::min(image.total(), kMostBuckets);
        while (range >> m_shift >= buckets)
        {
            ++m_shift;
        }
        FindValues(image, buckets);
        for (int y = 0; y < image.rows; ++y)
        {
            int const * const row = image.ptr<int>(y);
            Level * const levels = m_levels.data() + grid.RowStart(y);
            for (int x = 0; x < image.cols; ++x)
            {
                levels[x] = RankOf(row[x]);
            }
        }
    }

    /// The stretch of numbers that a number belongs to.
    [[nodiscard]] std::size_t BucketOf(int value) const
    {
        return (static_cast<std::uint32_t>(value) - static_cast<std::uint32_t>(m_least)) >> m_shift;
    }

    /// Lists the numbers of the image, each once, in rising order: dealt into buckets, then sorted in each.
    void FindValues(cv::Mat const & image, std::size_t buckets)
    {
        m_bucketEnds.assign(buckets + 1, 0);
        ForEachValue(image, [this](int value) { ++m_bucketEnds[BucketOf(value) + 1]; });
        std::partial_sum(m_bucketEnds.begin(), m_bucketEnds.end(), m_bucketEnds.begin());
        m_values.resize(image.total());
        // The start of a bucket moves to its end as the bucket fills.
        ForEachValue(image, [this](int value) { m_values[m_bucketEnds[BucketOf(value)]++] = value; });
        std::size_t start = 0;
        std::size_t count = 0;
        for (std::size_t bucket = 0; bucket < buckets; ++bucket)
        {
            auto const first = m_values.begin() + static_cast<std::ptrdiff_t>(start);
            auto const end = m_values.begin() + static_cast<std::ptrdiff_t>(m_bucketEnds[bucket]);
            start = m_bucketEnds[bucket];
            std::sort(first, end);
            auto const last = std::unique(first, end);
            count = static_cast<std::size_t>(
                std::move(first, last, m_values.begin() + static_cast<std::ptrdiff_t>(count)) - m_values.begin());
            m_bucketEnds[bucket] = count;
        }
        m_values.resize(count);
        m_values.shrink_to_fit();
    }

    template <class Visit>
    static void ForEachValue(cv::Mat const & image, Visit && visit)
    {
        for (int y = 0; y < image.rows; ++y)
        {
            std::for_each_n(image.ptr<int>(y), image.cols, visit);
        }
    }

    [[nodiscard]] Level RankOf(int value) const
    {
        std::size_t const bucket = BucketOf(value);
        std::size_t const start = bucket == 0 ? 0 : m_bucketEnds[bucket - 1];
        auto const first = m_values.begin() + static_cast<std::ptrdiff_t>(start);
        auto const end = m_values.begin() + static_cast<std::ptrdiff_t>(m_bucketEnds[bucket]);
        return static_cast<Level>(std::lower_bound(first, end, value) - m_values.begin());
    }

    int m_least;
    unsigned m_shift = 0;
    /// For each bucket, the end of its numbers.
    std::vector<std::size_t> m_bucketEnds;
    std::vector<int> m_values;
    std::vector<Level> m_levels;
};

} // namespace morvane::connexity::max_tree_internals
