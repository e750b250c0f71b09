/// @file
/// The flood that takes the pixel of the first priority next, and the queues it may take it from.
#pragma once

#include "common/PaddedGrid.h"

#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace morvane::common
{

/// An element in a queue.
template <class Key, class Index>
struct QueueEntry
{
    Key key;
    Index element;
};

/// A binary heap keyed on the value alone: `Comes(a, b)` tells whether key a comes before key b. Entries of equal keys
/// leave in the order of std::pop_heap.
template <class Key, class Index, class Comes>
class HeapQueue
{
public:
    using Entry = QueueEntry<Key, Index>;

    [[nodiscard]] bool IsEmpty() const { return m_entries.empty(); }

    void Push(Key key, Index element)
    {
        m_entries.push_back({key, element});
        std::push_heap(m_entries.begin(), m_entries.end(), Later());
    }

    Entry Pop()
    {
        std::pop_heap(m_entries.begin(), m_entries.end(), Later());
        Entry const first = m_entries.back();
        m_entries.pop_back();
        return first;
    }

private:
    struct Later
    {
        bool operator()(Entry const & one, Entry const & other) const { return Comes()(other.key, one.key); }
    };

    std::vector<Entry> m_entries;
};

/// A queue in which entries with the key of the entry that was taken last do not wait behind others. For floods whose
/// result does not depend on the order of equal keys, and whose keys never come before the last one taken.
template <class Queue, class Key, class Index>
class EqualFirstQueue
{
public:
    using Entry = QueueEntry<Key, Index>;

    [[nodiscard]] bool IsEmpty() const { return m_equal.empty() && m_others.IsEmpty(); }

    void Push(Key key, Index element)
    {
        if (m_last && key == *m_last)
        {
            m_equal.push_back(element);
        }
        else
        {
            m_others.Push(key, element);
        }
    }

    Entry Pop()
    {
        if (!m_equal.empty())
        {
            Entry const entry{*m_last, m_equal.back()};
            m_equal.pop_back();
            return entry;
        }
        Entry const entry = m_others.Pop();
        m_last = entry.key;
        return entry;
    }

private:
    Queue m_others;
    std::vector<Index> m_equal;
    std::optional<Key> m_last;
};

/// A bucket for each of 256 keys. Entries of equal keys leave last in, first out.
///
/// @tparam kSmallestFirst or the largest
template <class Index, bool kSmallestFirst>
class ByteQueue
{
public:
    using Entry = QueueEntry<uchar, Index>;

    [[nodiscard]] bool IsEmpty() const { return m_count == 0; }

    void Push(uchar key, Index element)
    {
        int const bucket = kSmallestFirst ? key : kLast - key;
        m_buckets[static_cast<std::size_t>(bucket)].push_back(element);
        m_first = std::min(m_first, bucket);
        ++m_count;
    }

    Entry Pop()
    {
        while (m_buckets[static_cast<std::size_t>(m_first)].empty())
        {
            ++m_first;
        }
        std::vector<Index> & bucket = m_buckets[static_cast<std::size_t>(m_first)];
        Index const element = bucket.back();
        bucket.pop_back();
        --m_count;
        return {static_cast<uchar>(kSmallestFirst ? m_first : kLast - m_first), element};
    }

private:
    static constexpr int kLast = 255;

    std::array<std::vector<Index>, kLast + 1> m_buckets;
    int m_first = kLast;
    std::size_t m_count = 0;
};

/// Where each element of a padded plane stands in a priority flood.
template <class Index>
class FloodStates
{
public:
    /// All pixels untouched.
    FloodStates(PaddedGrid<Index> const & grid, bool wrapsInX, cv::Size size)
        : m_states(grid.Total(), kDone)
    {
        Index const margin = grid.Margin();
        for (int y = 0; y < size.height; ++y)
        {
            uchar * const row = m_states.data() + grid.RowStart(y);
            std::fill_n(row, size.width, kUntouched);
            if (!wrapsInX) continue;
            std::fill_n(row - margin, margin, kAcross);
            std::fill_n(row + size.width, margin, kAcross);
        }
    }

    /// Enters an element into the queue.
    void Touch(Index element) { m_states[element] = kDone; }

    [[nodiscard]] bool IsUntouched(Index element) const { return m_states[element] == kUntouched; }

    /// Is the element one of the margin that stands for a pixel across the seam?
    [[nodiscard]] bool IsAcross(Index element) const { return m_states[element] == kAcross; }

private:
    static constexpr uchar kUntouched = 0;
    static constexpr uchar kDone = 1; ///< in the queue, or out of it again, or outside the image
    static constexpr uchar kAcross = 2;

    std::vector<uchar> m_states;
};

/// Takes entries from @p queue until it is empty; each untouched neighbour of a taken element is touched and enters the
/// queue with the key `reach(neighbour, key)`, in the order of the offsets. Every element enters at most once.
template <class Index, class Queue, class Reach>
void PriorityFlood(PaddedGrid<Index> const & grid, FloodStates<Index> & states, Queue & queue, Reach && reach)
{
    std::vector<Index> const & steps = grid.Steps();
    while (!queue.IsEmpty())
    {
        auto const [key, element] = queue.Pop();
        for (Index const step : steps)
        {
            Index neighbour = element + step;
            if (states.IsAcross(neighbour)) neighbour = grid.Across(neighbour);
            if (!states.IsUntouched(neighbour)) continue;
            states.Touch(neighbour);
            queue.Push(reach(neighbour, key), neighbour);
        }
    }
}

} // namespace morvane::common
