/// @file
/// Zones that grow from seeds, one after the other, over what the zones before them have left free: on a padded plane, with
/// the queue that decides the order of growth.
#pragma once

#include <morvane/common/Conversions.h>
#include <morvane/connexity/Conditions.h>
#include <morvane/connexity/Connexity.h>

#include "common/Dispatch.h"
#include "common/PaddedGrid.h"
#include "common/PriorityFlood.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

namespace morvane::connexity::growth_internals
{

/// First in, first out: breadth first.
template <class Index>
class OldestFirst
{
public:
    void Clear()
    {
        m_elements.clear();
        m_front = 0;
    }
    [[nodiscard]] bool IsEmpty() const { return m_front == m_elements.size(); }
    void Push(Index element) { m_elements.push_back(element); }
    Index Pop() { return m_elements[m_front++]; }

private:
    std::vector<Index> m_elements;
    std::size_t m_front = 0;
};

/// Last in, first out: needs the least memory, for conditions under which the order makes no difference.
template <class Index>
class NewestFirst
{
public:
    void Clear() { m_elements.clear(); }
    [[nodiscard]] bool IsEmpty() const { return m_elements.empty(); }
    void Push(Index element) { m_elements.push_back(element); }
    Index Pop()
    {
        Index const element = m_elements.back();
        m_elements.pop_back();
        return element;
    }

private:
    std::vector<Index> m_elements;
};

/// The lowest value first, equal ones as a heap keyed on the value alone gives them.
template <class T, class Index>
class LowestFirst
{
public:
    explicit LowestFirst(std::vector<T> const & values)
        : m_values(&values)
    {}

    /// A zone ends when the heap is empty: there is nothing to clear.
    void Clear() {}
    [[nodiscard]] bool IsEmpty() const { return m_heap.IsEmpty(); }
    void Push(Index element) { m_heap.Push((*m_values)[element], element); }
    Index Pop() { return m_heap.Pop().element; }

private:
    std::vector<T> const * m_values;
    common::HeapQueue<T, Index, std::less<>> m_heap;
};

/// A condition, asked about elements of a padded plane of values.
///
/// @tparam Condition one of the conditions that do not look at positions
template <class T, class Condition>
class AskValues
{
public:
    AskValues(std::vector<T> const & values, double bound)
        : m_values(&values)
        , m_condition(bound)
    {}

    template <class Index>
    void Open(Index seed)
    {
        m_condition.Reset();
        m_seedValue = (*m_values)[seed];
    }

    template <class Index>
    void Add(Index element)
    {
        m_condition.Add({}, (*m_values)[element]);
    }

    template <class Index>
    [[nodiscard]] bool MayJoin(Index from, Index to)
    {
        return m_condition.IsConnected({}, (*m_values)[from], {}, (*m_values)[to], {}, m_seedValue);
    }

private:
    std::vector<T> const * m_values;
    Exactly<Condition> m_condition;
    T m_seedValue{};
};

/// Both must allow the step.
template <class First, class Second>
class AskBoth
{
public:
    AskBoth(First first, Second second)
        : m_first(std::move(first))
        , m_second(std::move(second))
    {}

    template <class Index>
    void Open(Index seed)
    {
        m_first.Open(seed);
        m_second.Open(seed);
    }

    template <class Index>
    void Add(Index element)
    {
        m_first.Add(element);
        m_second.Add(element);
    }

    template <class Index>
    [[nodiscard]] bool MayJoin(Index from, Index to)
    {
        return m_first.MayJoin(from, to) && m_second.MayJoin(from, to);
    }

private:
    First m_first;
    Second m_second;
};

/// A padded plane that holds the number of the zone of each pixel, 0 where there is none yet.
template <class Index>
class ZonePlane
{
public:
    ZonePlane(common::PaddedGrid<Index> const & grid, bool wrapsInX, cv::Size size)
        : m_grid(&grid)
        , m_size(size)
        , m_zones(grid.Total(), kOutside)
    {
        Index const margin = grid.Margin();
        for (int y = 0; y < size.height; ++y)
        {
            Index * const row = m_zones.data() + grid.RowStart(y);
            std::fill_n(row, size.width, Index{0});
            if (!wrapsInX) continue;
            std::fill_n(row - margin, margin, kAcross);
            std::fill_n(row + size.width, margin, kAcross);
        }
    }

    /// Grows the next zone from a seed, unless a zone has taken it. The condition is asked about free neighbours only: what
    /// it answers about others changes nothing.
    template <class Queue, class Asks>
    void Grow(Index seed, Queue & queue, Asks & asks)
    {
        if (m_zones[seed] != 0) return;
        ++m_count;
        queue.Clear();
        asks.Open(seed);
        m_zones[seed] = m_count;
        queue.Push(seed);
        asks.Add(seed);
        std::vector<Index> const & steps = m_grid->Steps();
        while (!queue.IsEmpty())
        {
            Index const from = queue.Pop();
            for (Index const step : steps)
            {
                Index to = from + step;
                if (m_zones[to] == kAcross) to = m_grid->Across(to);
                if (m_zones[to] != 0 || !asks.MayJoin(from, to)) continue;
                asks.Add(to);
                queue.Push(to);
                m_zones[to] = m_count;
            }
        }
    }

    /// Grows a zone from each free pixel in raster order.
    template <class Queue, class Asks>
    void GrowAll(Queue queue, Asks asks)
    {
        for (int y = 0; y < m_size.height; ++y)
        {
            Index const first = m_grid->RowStart(y);
            Index const last = first + static_cast<Index>(m_size.width);
            for (Index seed = first; seed != last; ++seed)
            {
                Grow(seed, queue, asks);
            }
        }
    }

    /// Grows a zone from each of the seeds that lies inside the image and is free.
    template <class Queue, class Asks>
    void GrowFrom(std::vector<cv::Point> const & seeds, Queue queue, Asks asks)
    {
        cv::Rect const image({}, m_size);
        for (cv::Point const & seed : seeds)
        {
            if (image.contains(seed)) Grow(m_grid->RowStart(seed.y) + static_cast<Index>(seed.x), queue, asks);
        }
    }

    /// Writes the numbers into an image of labels, in which they wrap.
    void WriteTo(cv::Mat & labels) const
    {
        // Of several channels, the labels leave some untouched.
        if (labels.channels() > 1) labels.setTo(cv::Scalar::all(0.0));
        common::VisitLabel(labels, [&]<class Label> {
            for (int y = 0; y < m_size.height; ++y)
            {
                Index const * const row = m_zones.data() + m_grid->RowStart(y);
                std::transform(row, row + m_size.width, labels.ptr<Label>(y), common::WrapTo<Label, Index>);
            }
            return true;
        });
    }

private:
    // Larger than the number of any zone, where there is a margin.
    static constexpr Index kAcross = std::numeric_limits<Index>::max();
    static constexpr Index kOutside = kAcross - 1;

    common::PaddedGrid<Index> const * m_grid;
    cv::Size m_size;
    std::vector<Index> m_zones;
    Index m_count = 0;
};

/// Prepares an empty plane of zones over an image of @p size, lets @p grow fill it (called with the grid and the plane), and
/// writes the zones to @p labels.
///
/// @return true
template <class Grow>
bool LabelGrownZones(cv::Size size, eConnexityType type, cv::Mat & labels, Grow const & grow)
{
    common::Neighbourhood const neighbourhood = NeighbourhoodOver(Connexity(type), size);
    return common::VisitIndex(neighbourhood, size, [&]<class Index> {
        common::PaddedGrid<Index> const grid(neighbourhood, size);
        ZonePlane<Index> zones(grid, neighbourhood.WrapsInX(), size);
        grow(grid, zones);
        zones.WriteTo(labels);
        return true;
    });
}

} // namespace morvane::connexity::growth_internals
