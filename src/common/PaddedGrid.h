/// @file
/// A plane with a margin around the pixels, on which a walk needs no question about borders.
#pragma once

#include <morvane/common/Neighbourhood.h>

#include <opencv2/core.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

namespace morvane::common
{

/// A neighbourhood laid over a plane that is as much larger than the image as its offsets reach, so that every neighbour
/// of every pixel is an element of the plane. The walk marks the margin as it marks what it is not to enter.
///
/// @tparam Index numbers the elements of the plane: `std::uint32_t` where it is large enough, see VisitIndex()
template <class Index>
class PaddedGrid
{
public:
    PaddedGrid(Neighbourhood const & neighbourhood, cv::Size size)
        : m_size(size)
        , m_margin(ReachOf(neighbourhood))
        , m_stride(static_cast<Index>(size.width) + 2 * m_margin)
    {
        for (std::size_t index = 0; index < neighbourhood.Count(); ++index)
        {
            cv::Point const offset = neighbourhood.Offset(index);
            // Wraps for steps back, and back again when it is added.
            m_steps.push_back(
                static_cast<Index>(static_cast<Index>(offset.y) * m_stride + static_cast<Index>(offset.x)));
        }
    }

    /// The number of elements of the plane.
    [[nodiscard]] std::size_t Total() const
    {
        return (static_cast<std::size_t>(m_size.height) + 2 * static_cast<std::size_t>(m_margin)) * m_stride;
    }

    /// How many elements lie beside each row, on either side, and rows above and below the image.
    [[nodiscard]] Index Margin() const { return m_margin; }

    /// The element of the first pixel of row @p y; those of the others follow.
    [[nodiscard]] Index RowStart(int y) const { return (static_cast<Index>(y) + m_margin) * m_stride + m_margin; }

    /// What is added to an element to reach its neighbours, in the order of the offsets.
    [[nodiscard]] std::vector<Index> const & Steps() const { return m_steps; }

    /// For an element of the margin beside the rows, the element of the pixel that it stands for where the first and the
    /// last column are neighbours; the element itself where there is none.
    [[nodiscard]] Index Across(Index element) const
    {
        Index const column = element % m_stride;
        auto const width = static_cast<Index>(m_size.width);
        bool const isLeft = column < m_margin;
        Index const other = isLeft ? column + width : column - width;
        bool const isInside = other >= m_margin && other < m_margin + width;
        return isInside ? element - column + other : element;
    }

private:
    static Index ReachOf(Neighbourhood const & neighbourhood)
    {
        int reach = 0;
        for (std::size_t index = 0; index < neighbourhood.Count(); ++index)
        {
            cv::Point const offset = neighbourhood.Offset(index);
            reach = std::max({reach, std::abs(offset.x), std::abs(offset.y)});
        }
        return static_cast<Index>(reach);
    }

    cv::Size m_size;
    Index m_margin;
    Index m_stride;
    std::vector<Index> m_steps;
};

/// The pixels of an image on a padded plane.
template <class T, class Index>
[[nodiscard]] std::vector<T> PlaneOf(cv::Mat const & image, PaddedGrid<Index> const & grid, T margin)
{
    std::vector<T> plane(grid.Total(), margin);
    for (int y = 0; y < image.rows; ++y)
    {
        std::copy_n(image.ptr<T>(y), image.cols, plane.data() + grid.RowStart(y));
    }
    return plane;
}

/// The pixels of a padded plane in an image of the grid's size.
template <class T, class Index>
void CopyPlane(std::vector<T> const & plane, PaddedGrid<Index> const & grid, cv::Mat & image)
{
    for (int y = 0; y < image.rows; ++y)
    {
        std::copy_n(plane.data() + grid.RowStart(y), image.cols, image.ptr<T>(y));
    }
}

/// Calls @p leaf with the type that numbers the elements of a grid: 32 bits where they do, which is half the memory
/// traffic.
template <class Leaf>
auto VisitIndex(Neighbourhood const & neighbourhood, cv::Size size, Leaf && leaf)
{
    std::size_t const total = PaddedGrid<std::uint64_t>(neighbourhood, size).Total();
    if (total <= std::numeric_limits<std::uint32_t>::max()) return leaf.template operator()<std::uint32_t>();
    return leaf.template operator()<std::uint64_t>();
}

} // namespace morvane::common
