/// @file
/// What carries values to where repeated steps end: the order in which they move, the planes, the queue.
#pragma once

#include "common/PaddedGrid.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <limits>
#include <vector>

namespace morvane::geodesy::reconstruction_internals
{

/// Values that rise under a mask.
template <class T>
struct Rising
{
    /// What comes from outside the image, the least number that is finite, as OpenCV's border has it; and the greatest.
    static constexpr T kLeast = std::numeric_limits<T>::lowest();
    static constexpr T kMost = std::numeric_limits<T>::max();

    static T Further(T one, T other) { return one < other ? other : one; }
    static T Nearer(T one, T other) { return other < one ? other : one; }
    static bool IsBehind(T one, T other) { return one < other; }
};

/// Values that fall above a mask.
template <class T>
struct Falling
{
    static constexpr T kLeast = Rising<T>::kMost;
    static constexpr T kMost = Rising<T>::kLeast;

    static T Further(T one, T other) { return other < one ? other : one; }
    static T Nearer(T one, T other) { return one < other ? other : one; }
    static bool IsBehind(T one, T other) { return other < one; }
};

/// The values and their bounds on planes with a margin into which nothing moves.
template <class Order, class T, class Index>
class Planes
{
public:
    /// @param values never beyond @p bounds
    Planes(cv::Mat const & values, cv::Mat const & bounds, common::PaddedGrid<Index> const & grid)
        : m_values(common::PlaneOf<T>(values, grid, Order::kLeast))
        , m_bounds(common::PlaneOf<T>(bounds, grid, Order::kLeast))
        , m_grid(grid)
    {}

    [[nodiscard]] T * ValuesFrom(Index element) { return m_values.data() + element; }
    [[nodiscard]] T const * BoundsFrom(Index element) const { return m_bounds.data() + element; }

    /// Carries values on, from the elements of a queue to their neighbours, and on from those that moved.
    void Propagate(std::vector<Index> queue)
    {
        T * __restrict const values = m_values.data();
        T const * const bounds = m_bounds.data();
        std::vector<Index> const & steps = m_grid.Steps();
        std::vector<Index> next;
        while (!queue.empty())
        {
            next.clear();
            for (Index const element : queue)
            {
                T const value = values[element];
                for (Index const step : steps)
                {
                    Index const neighbour = element + step;
                    T const reached = Order::Nearer(value, bounds[neighbour]);
                    if (!Order::IsBehind(values[neighbour], reached)) continue;
                    values[neighbour] = reached;
                    next.push_back(neighbour);
                }
            }
            queue.swap(next);
        }
    }

    void CopyTo(cv::Mat & image) const { common::CopyPlane(m_values, m_grid, image); }

private:
    std::vector<T> m_values;
    std::vector<T> m_bounds;
    common::PaddedGrid<Index> const & m_grid;
};

} // namespace morvane::geodesy::reconstruction_internals
