/// @file
/// Raster sweeps for elements of 3 by 3: forward, backward, and a queue of what they leave.
#pragma once

#include "common/BitImage.h"
#include "geodesy/Propagation.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace morvane::geodesy::reconstruction_internals
{

/// Sweeps the planes forward and backward.
///
/// @tparam kDiagonal whether the corners of the element belong to it, as in a rectangle, or not, as in a cross
template <class Order, class T, class Index, bool kDiagonal>
class Sweeps
{
public:
    Sweeps(Planes<Order, T, Index> & planes, common::PaddedGrid<Index> const & grid, cv::Size size)
        : m_planes(planes)
        , m_grid(grid)
        , m_size(size)
    {}

    /// Sweeps. @return the elements from which a value can still move on
    std::vector<Index> Run()
    {
        for (int y = 0; y < m_size.height; ++y)
        {
            Index const start = m_grid.RowStart(y);
            T const * const bounds = m_planes.BoundsFrom(start);
            T * const values = m_planes.ValuesFrom(start);
            TakeFrom(m_planes.ValuesFrom(m_grid.RowStart(y - 1)), bounds, values);
            T carried = Order::kLeast;
            for (int x = 0; x < m_size.width; ++x)
            {
                carried = Order::Nearer(Order::Further(values[x], carried), bounds[x]);
                values[x] = carried;
            }
        }
        return RunBackward();
    }

private:
    std::vector<Index> RunBackward()
    {
        std::vector<Index> queue;
        common::BitImage movers(1, m_size.width);
        // What can be moved to, the most where nothing can: of the row below and of this one, with a margin.
        auto const width = static_cast<std::size_t>(m_size.width);
        std::vector<T> below(width + 2, Order::kMost);
        std::vector<T> here(width + 2, Order::kMost);
        for (int y = m_size.height - 1; y >= 0; --y)
        {
            Index const start = m_grid.RowStart(y);
            T const * const bounds = m_planes.BoundsFrom(start);
            T * const values = m_planes.ValuesFrom(start);
            TakeFrom(m_planes.ValuesFrom(m_grid.RowStart(y + 1)), bounds, values);
            T carried = Order::kLeast;
            for (int x = m_size.width - 1; x >= 0; --x)
            {
                carried = Order::Nearer(Order::Further(values[x], carried), bounds[x]);
                values[x] = carried;
            }
            FindRoom(values, bounds, here.data() + 1);
            FindMovers(values, here.data() + 1, below.data() + 1, movers.Row(0));
            for (int word = 0; word < movers.WordsPerRow(); ++word)
            {
                Index const first = start + static_cast<Index>(word) * common::BitImage::kWordBits;
                common::ForEachBit(
                    movers.Row(0)[word], [&](int bit) { queue.push_back(first + static_cast<Index>(bit)); });
            }
            here.swap(below);
        }
        return queue;
    }

    /// Moves the values of a row as far as those of the row beside it bring them.
    void TakeFrom(T const * beside, T const * bounds, T * __restrict values) const
    {
        for (int x = 0; x < m_size.width; ++x)
        {
            T value = Order::Further(values[x], beside[x]);
            if constexpr (kDiagonal) value = Order::Further(value, Order::Further(beside[x - 1], beside[x + 1]));
            values[x] = Order::Nearer(value, bounds[x]);
        }
    }

    void FindRoom(T const * values, T const * bounds, T * __restrict room) const
    {
        for (int x = 0; x < m_size.width; ++x)
        {
            room[x] = Order::IsBehind(values[x], bounds[x]) ? values[x] : Order::kMost;
        }
    }

    /// Marks the pixels whose value can move to the right or down.
    void FindMovers(T const * values, T const * room, T const * below, common::BitImage::Word * bits) const
    {
        common::FillBits(m_size.width, bits, [values, room, below](int x) {
            T nearest = Order::Nearer(room[x + 1], below[x]);
            if constexpr (kDiagonal) nearest = Order::Nearer(nearest, Order::Nearer(below[x - 1], below[x + 1]));
            return Order::IsBehind(nearest, values[x]);
        });
    }

    Planes<Order, T, Index> & m_planes;
    common::PaddedGrid<Index> const & m_grid;
    cv::Size m_size;
};

} // namespace morvane::geodesy::reconstruction_internals
