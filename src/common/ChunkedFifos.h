/// @file
/// Many first-in, first-out queues that share their memory.
#pragma once

#include <morvane/common/LevelSet.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace morvane::common
{

/// A fixed number of FIFO queues. Items lie in chunks of one pool, so that no queue has memory of its own, and an emptied
/// chunk goes to whichever queue asks next.
///
/// @tparam kQueues how many
template <class Item, std::size_t kQueues>
class ChunkedFifos
{
public:
    /// The first queue from @p queue on that holds anything; kQueues when none does.
    [[nodiscard]] std::size_t FirstFrom(std::size_t queue) const
    {
        return std::min(m_filled.FirstFrom(queue), kQueues);
    }

    [[nodiscard]] bool IsEmpty(std::size_t queue) const { return m_ends[queue].last == kNone; }

    void Push(std::size_t queue, Item item)
    {
        Ends & ends = m_ends[queue];
        if (ends.last == kNone)
        {
            ends.first = ends.last = NewChunk();
            m_filled.Insert(queue);
        }
        else if (++ends.last % kItems == 0)
        {
            // The next place belongs to another chunk.
            std::size_t const place = NewChunk();
            m_next[ends.last / kItems - 1] = place;
            ends.last = place;
        }
        m_items[ends.last] = item;
    }

    /// Takes the first item of a queue that holds one.
    Item Pop(std::size_t queue)
    {
        Ends & ends = m_ends[queue];
        std::size_t const place = ends.first++;
        bool const isLast = place == ends.last;
        if (isLast)
        {
            m_filled.Remove(queue);
            ends.last = kNone;
        }
        if (isLast || ends.first % kItems == 0)
        {
            std::size_t const chunk = place / kItems;
            ends.first = m_next[chunk];
            m_next[chunk] = m_firstFree;
            m_firstFree = chunk;
        }
        return m_items[place];
    }

    /// An item that is soon the first of a queue that holds one, for asking ahead; or one that was.
    [[nodiscard]] Item Ahead(std::size_t queue) const
    {
        constexpr std::size_t kAhead = 16;
        std::size_t const place = m_ends[queue].first;
        return m_items[place % kItems < kItems - kAhead ? place + kAhead : place];
    }

private:
    static constexpr std::size_t kItems = 256;
    static constexpr std::size_t kNone = ~std::size_t{0};

    /// The places of the first and the last item of a queue, none for the last when it holds none.
    struct Ends
    {
        std::size_t first = 0;
        std::size_t last = kNone;
    };

    /// The first place of a free chunk.
    std::size_t NewChunk()
    {
        if (m_firstFree == kNone)
        {
            m_next.push_back(kNone);
            m_items.resize(m_items.size() + kItems);
            return (m_next.size() - 1) * kItems;
        }
        std::size_t const chunk = m_firstFree;
        m_firstFree = m_next[chunk];
        return chunk * kItems;
    }

    std::array<Ends, kQueues> m_ends{};
    /// The queues that hold anything.
    LevelSet m_filled{kQueues};
    std::vector<Item> m_items;
    /// For each chunk, the first place of the one after it in its queue, or the next one among the free.
    std::vector<std::size_t> m_next;
    std::size_t m_firstFree = kNone;
};

} // namespace morvane::common
