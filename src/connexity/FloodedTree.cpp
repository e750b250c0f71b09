#include "connexity/FloodedTree.h"

#include <morvane/common/LevelSet.h>

#include <algorithm>
#include <limits>
#include <optional>

namespace morvane::connexity::max_tree_internals
{

using common::LevelSet;

/// The flood that makes the nodes.
template <class T, class Index>
class FloodedTree<T, Index>::Flood
{
public:
    Flood(FloodedTree & tree, cv::Mat const & image)
        : m_tree(tree)
        , m_levels(image, tree.m_grid)
        , m_histogram(Histogram())
        , m_queue(m_histogram)
        , m_nodeAtLevel(m_histogram.size())
        , m_open(m_histogram.size())
    {}

    void Run()
    {
        Index pixel = FirstLowest();
        Level level = m_levels.At(pixel);
        m_tree.m_labels[pixel] = Open(level);
        std::vector<Index> const & steps = m_tree.m_grid.Steps();
        for (;;)
        {
            std::optional<Index> const higher = Visit(pixel, level, steps);
            if (higher)
            {
                // The neighbour would be pushed and taken again at once, as the highest that waits.
                m_queue.Push(level, pixel);
                pixel = *higher;
                level = m_levels.At(pixel);
                continue;
            }
            if (m_queue.IsEmpty()) return;
            level = m_queue.Top();
            pixel = m_queue.Pop(level);
        }
    }

private:
    [[nodiscard]] std::vector<std::size_t> Histogram() const
    {
        std::vector<std::size_t> histogram;
        m_tree.ForEachRow([&](int y, Index const *) {
            Index const start = m_tree.m_grid.RowStart(y);
            for (int x = 0; x < m_tree.m_size.width; ++x)
            {
                std::size_t const level = m_levels.At(start + static_cast<Index>(x));
                if (level >= histogram.size()) histogram.resize(level + 1);
                ++histogram[level];
            }
        });
        return histogram;
    }

    /// The first pixel, row by row, of the lowest level.
    [[nodiscard]] Index FirstLowest() const
    {
        Index first = m_tree.m_grid.RowStart(0);
        m_tree.ForEachRow([&](int y, Index const *) {
            Index const start = m_tree.m_grid.RowStart(y);
            for (int x = 0; x < m_tree.m_size.width; ++x)
            {
                Index const pixel = start + static_cast<Index>(x);
                if (m_levels.At(pixel) < m_levels.At(first)) first = pixel;
            }
        });
        return first;
    }

    /// Labels the neighbours of a pixel and lets them wait. @return the first that is higher, if any, labelled
    std::optional<Index> Visit(Index pixel, Level level, std::vector<Index> const & steps)
    {
        for (Index const step : steps)
        {
            Index const neighbour = pixel + step;
            if (m_tree.m_labels[neighbour] != 0) continue;
            Level const other = m_levels.At(neighbour);
            if (other > level)
            {
                m_tree.m_labels[neighbour] = Climb(level, other);
                return neighbour;
            }
            Index const node = m_nodeAtLevel[other];
            m_tree.m_labels[neighbour] = node != 0 ? node : InsertAt(other);
            m_queue.Push(other, neighbour);
        }
        return std::nullopt;
    }

    /// Makes a node that is open at its level.
    Index Open(Level level)
    {
        Index const node = m_tree.Create(m_levels.ValueOf(level));
        m_nodeAtLevel[level] = node;
        m_open.Insert(level);
        return node;
    }

    /// Opens a node at @p level, above the open one at @p from. Those in between are of other branches.
    Index Climb(Level from, Level level)
    {
        std::size_t between = m_open.FirstFrom(std::size_t{from} + 1);
        for (; between < level; between = m_open.FirstFrom(between + 1))
        {
            m_nodeAtLevel[between] = 0;
            m_open.Remove(between);
        }
        Index const node = Open(level);
        Index const parent = m_nodeAtLevel[from];
        m_tree.m_parents[node] = parent;
        m_tree.m_nextSiblings[node] = m_tree.m_firstChildren[parent];
        m_tree.m_firstChildren[parent] = node;
        return node;
    }

    /// Opens a node at @p level, between the next lower open one and the branch that the flood is on.
    Index InsertAt(Level level)
    {
        // The root is lower.
        Index const parent = m_nodeAtLevel[m_open.LastUpTo(std::size_t{level} - 1)];
        Index const node = Open(level);
        Index const child = m_tree.m_firstChildren[parent];
        m_tree.m_firstChildren[node] = child;
        m_tree.m_nextSiblings[node] = m_tree.m_nextSiblings[child];
        m_tree.m_nextSiblings[child] = 0;
        m_tree.m_firstChildren[parent] = node;
        m_tree.m_parents[child] = node;
        m_tree.m_parents[node] = parent;
        return node;
    }

    FloodedTree & m_tree;
    Plane m_levels;
    std::vector<std::size_t> m_histogram;
    LevelQueue<Level, Index> m_queue;
    /// For each level, the node that the flood is in at that level, or was in on another branch above.
    std::vector<Index> m_nodeAtLevel;
    LevelSet m_open;
};

template <class T, class Index>
FloodedTree<T, Index>::FloodedTree(cv::Mat const & image, eConnexityType connexity)
    : m_size(image.size())
    , m_grid(NeighbourhoodOver(Connexity(connexity), image.size()), image.size())
    , m_labels(m_grid.Total(), std::numeric_limits<Index>::max())
{
    for (int y = 0; y < m_size.height; ++y)
    {
        std::fill_n(m_labels.data() + m_grid.RowStart(y), m_size.width, Index{0});
    }
    Create(0);
    Flood(*this, image).Run();
}

template <class T, class Index>
Index FloodedTree<T, Index>::Create(T level)
{
    m_levels.push_back(level);
    m_parents.push_back(0);
    m_firstChildren.push_back(0);
    m_nextSiblings.push_back(0);
    return static_cast<Index>(m_levels.size() - 1);
}

template class FloodedTree<uchar, std::uint32_t>;
template class FloodedTree<ushort, std::uint32_t>;
template class FloodedTree<int, std::uint32_t>;
template class FloodedTree<uchar, std::uint64_t>;
template class FloodedTree<ushort, std::uint64_t>;
template class FloodedTree<int, std::uint64_t>;

} // namespace morvane::connexity::max_tree_internals
