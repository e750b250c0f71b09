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

    void Push(std::size_t queue, Item item)
    {
        Ends & ends = m_ends[queue];
        if (!m_filled.Contains(queue))
        {
            std::size_t const chunk = NewChunk();
            ends = {chunk, 0, chunk, 0};
            m_filled.Insert(queue);
        }
        else if (ends.lastItem == kItems)
        {
            std::size_t const chunk = NewChunk();
            m_next[ends.lastChunk] = chunk;
            ends.lastChunk = chunk;
            ends.lastItem = 0;
        }
        m_items[ends.lastChunk * kItems + ends.lastItem++] = item;
    }

    /// Takes the first item of a queue that holds one.
    Item Pop(std::size_t queue)
    {
        Ends & ends = m_ends[queue];
        Item const item = m_items[ends.firstChunk * kItems + ends.firstItem++];
        bool const isLast = ends.firstChunk == ends.lastChunk && ends.firstItem == ends.lastItem;
        if (isLast) m_filled.Remove(queue);
        if (isLast || ends.firstItem == kItems)
        {
            std::size_t const chunk = ends.firstChunk;
            ends.firstChunk = m_next[chunk];
            ends.firstItem = 0;
            m_next[chunk] = m_firstFree;
            m_firstFree = chunk;
        }
        return item;
    }

private:
    static constexpr std::size_t kItems = 128;
    static constexpr std::size_t kNone = ~std::size_t{0};

    /// Where a queue starts and ends: a chunk and a place in it.
    struct Ends
    {
        std::size_t firstChunk;
        std::size_t firstItem;
        std::size_t lastChunk;
        std::size_t lastItem;
    };

    std::size_t NewChunk()
    {
        if (m_firstFree == kNone)
        {
            m_next.push_back(kNone);
            m_items.resize(m_items.size() + kItems);
            return m_next.size() - 1;
        }
        std::size_t const chunk = m_firstFree;
        m_firstFree = m_next[chunk];
        return chunk;
    }

    std::array<Ends, kQueues> m_ends{};
    /// The queues that hold anything.
    LevelSet m_filled{kQueues};
    std::vector<Item> m_items;
    /// For each chunk, the one after it in its queue or among the free ones.
    std::vector<std::size_t> m_next;
    std::size_t m_firstFree = kNone;
};

} // namespace morvane::common
