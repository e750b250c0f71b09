/// @file
/// The max-tree as the operators use it: nodes as parallel tables, and a flood that makes them.
#pragma once

#include <morvane/common/Attributes.h>
#include <morvane/connexity/Connexity.h>
#include <morvane/connexity/MaxTree.h>

#include "common/PaddedGrid.h"
#include "connexity/LevelPlane.h"

#include <opencv2/core.hpp>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace morvane::connexity::max_tree_internals
{

/// An attribute in a table: final, as what has no virtual destructor is only destroyed as itself.
template <class A>
struct Accumulator final : A
{};

/// A max-tree. Nodes are numbered from 1, the root first; 0 is none.
///
/// @tparam T `uchar`, `ushort` or `int`
/// @tparam Index numbers the nodes and the elements of a padded plane
template <class T, class Index>
class FloodedTree
{
public:
    /// Floods an image that has pixels, of the element type.
    FloodedTree(cv::Mat const & image, eConnexityType connexity);

    /// One more than the last node.
    [[nodiscard]] std::size_t NextIndex() const { return m_levels.size(); }

    [[nodiscard]] T LevelOf(std::size_t node) const { return m_levels[node]; }
    [[nodiscard]] Index FirstChildOf(std::size_t node) const { return m_firstChildren[node]; }
    [[nodiscard]] Index NextSiblingOf(std::size_t node) const { return m_nextSiblings[node]; }

    /// Calls @p visit with each node and its parent, parents before their children, the root first.
    template <class Visit>
    void ForEachDown(Visit && visit) const
    {
        Index node = kRoot;
        while (node != 0)
        {
            visit(node, m_parents[node]);
            Index next = m_firstChildren[node];
            while (next == 0 && node != 0)
            {
                next = m_nextSiblings[node];
                node = m_parents[node];
            }
            node = next;
        }
    }

    /// Calls @p visit with each node but the root and its parent, children before their parents.
    template <class Visit>
    void ForEachUp(Visit && visit) const
    {
        Index node = DeepestFirst(kRoot);
        while (node != kRoot)
        {
            visit(node, m_parents[node]);
            Index const next = m_nextSiblings[node];
            node = next != 0 ? DeepestFirst(next) : m_parents[node];
        }
    }

    /// The attribute of each node, of its whole component. Pixels that the flood does not reach count for node 0.
    template <class A>
    [[nodiscard]] std::vector<Accumulator<A>> Attributes() const
    {
        std::vector<Accumulator<A>> attributes(NextIndex());
        for (int y = 0; y < m_size.height; ++y)
        {
            Index const * const labels = m_labels.data() + m_grid.RowStart(y);
            for (int x = 0; x < m_size.width; ++x)
            {
                attributes[labels[x]].AddPixel(x, y, 0);
            }
        }
        ForEachUp([&](Index node, Index parent) { attributes[parent].Merge(attributes[node]); });
        return attributes;
    }

    /// Writes to each pixel the entry of its node.
    template <class Entry>
    void Project(std::vector<Entry> const & table, cv::Mat & image) const
    {
        for (int y = 0; y < m_size.height; ++y)
        {
            Index const * const labels = m_labels.data() + m_grid.RowStart(y);
            auto * const row = image.ptr<Entry>(y);
            for (int x = 0; x < m_size.width; ++x)
            {
                row[x] = table[labels[x]];
            }
        }
    }

    /// Calls @p write with each row and the nodes of its pixels.
    template <class Write>
    void ForEachRow(Write && write) const
    {
        for (int y = 0; y < m_size.height; ++y)
        {
            write(y, m_labels.data() + m_grid.RowStart(y));
        }
    }

private:
    using Plane = LevelPlane<T, Index>;
    using Level = typename Plane::Level;

    static constexpr Index kRoot = 1;

    class Flood;

    Index Create(T level);

    [[nodiscard]] Index DeepestFirst(Index node) const
    {
        while (m_firstChildren[node] != 0)
        {
            node = m_firstChildren[node];
        }
        return node;
    }

    cv::Size m_size;
    common::PaddedGrid<Index> m_grid;
    /// The node of each pixel, anything but 0 on the margin.
    std::vector<Index> m_labels;
    std::vector<T> m_levels;
    std::vector<Index> m_parents;
    std::vector<Index> m_firstChildren;
    std::vector<Index> m_nextSiblings;
};

/// Calls @p leaf with the type that numbers nodes and elements, for an image with a neighbourhood.
template <class Leaf>
auto VisitTreeIndex(cv::Mat const & image, eConnexityType connexity, Leaf && leaf)
{
    return common::VisitIndex(NeighbourhoodOver(Connexity(connexity), image.size()), image.size(), leaf);
}

} // namespace morvane::connexity::max_tree_internals
