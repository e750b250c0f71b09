/// @file
/// Zones that grow while the sum of their values is below a budget: the order of growth decides what they hold.
#pragma once

#include <morvane/connexity/Conditions.h>

#include "common/PaddedGrid.h"
#include "common/PriorityFlood.h"
#include "connexity/ZonePlane.h"

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

namespace morvane::connexity::growth_internals
{

/// First in, first out: breadth first.
template <class T, class Index>
class OldestFirst
{
public:
    void Clear()
    {
        m_elements.clear();
        m_front = 0;
    }
    [[nodiscard]] bool IsEmpty() const { return m_front == m_elements.size(); }
    void Push(T, Index element) { m_elements.push_back(element); }
    Index Pop() { return m_elements[m_front++]; }

private:
    std::vector<Index> m_elements;
    std::size_t m_front = 0;
};

/// The lowest value first, equal ones as a heap keyed on the value alone gives them.
template <class T, class Index>
class LowestFirst
{
public:
    /// A zone ends when the heap is empty: there is nothing to clear.
    void Clear() {}
    [[nodiscard]] bool IsEmpty() const { return m_heap.IsEmpty(); }
    void Push(T value, Index element) { m_heap.Push(value, element); }
    Index Pop() { return m_heap.Pop().element; }

private:
    common::HeapQueue<T, Index, std::less<>> m_heap;
};

/// A growth (see ZonePlane) under AccumulatorConnected.
///
/// @tparam Queue decides which pixel is the next whose neighbours are asked: OldestFirst or LowestFirst
template <class T, class Index, template <class, class> class Queue>
class AccumulatorGrowth
{
public:
    AccumulatorGrowth(cv::Mat const & image, common::PaddedGrid<Index> const & grid, double budget)
        : m_values(common::PlaneOf<T>(image, grid, T{}))
        , m_steps(grid.Steps())
        , m_condition(budget)
    {}

    /// Only free neighbours are asked about: what the condition answers about others changes nothing.
    void Grow(Index seed, ZonePlane<Index> & zones)
    {
        m_queue.Clear();
        m_condition.Reset();
        Add(seed, zones);
        while (!m_queue.IsEmpty())
        {
            Index const from = m_queue.Pop();
            for (Index const step : m_steps)
            {
                Index const to = zones.PixelOf(from + step);
                if (zones.IsFree(to) && m_condition.IsConnected({}, m_values[from], {}, m_values[to], {}, T{}))
                {
                    Add(to, zones);
                }
            }
        }
    }

private:
    void Add(Index element, ZonePlane<Index> & zones)
    {
        T const value = m_values[element];
        m_condition.Add({}, value);
        m_queue.Push(value, element);
        zones.Take(element);
    }

    std::vector<T> m_values;
    std::vector<Index> m_steps;
    Exactly<AccumulatorConnected<T>> m_condition;
    Queue<T, Index> m_queue;
};

} // namespace morvane::connexity::growth_internals
