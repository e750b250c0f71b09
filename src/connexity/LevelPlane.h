/// @file
/// The levels of an image on a padded plane, close together where the numbers of the image are far apart.
#pragma once

#include "common/PaddedGrid.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
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
    {
        m_values.reserve(image.total());
        for (int y = 0; y < image.rows; ++y)
        {
            m_values.insert(m_values.end(), image.ptr<int>(y), image.ptr<int>(y) + image.cols);
        }
        std::sort(m_values.begin(), m_values.end());
        m_values.erase(std::unique(m_values.begin(), m_values.end()), m_values.end());
        m_values.shrink_to_fit();
        m_levels.resize(grid.Total());
        for (int y = 0; y < image.rows; ++y)
        {
            int const * const row = image.ptr<int>(y);
            Level * const levels = m_levels.data() + grid.RowStart(y);
            for (int x = 0; x < image.cols; ++x)
            {
                levels[x] =
                    static_cast<Level>(std::lower_bound(m_values.begin(), m_values.end(), row[x]) - m_values.begin());
            }
        }
    }

    [[nodiscard]] Level At(Index element) const { return m_levels[element]; }

    /// The number that a level stands for.
    [[nodiscard]] int ValueOf(Level level) const { return m_values[level]; }

private:
    std::vector<int> m_values;
    std::vector<Level> m_levels;
};

} // namespace morvane::connexity::max_tree_internals
