/// @file
/// The max-tree of an image: the connected components of its upper level sets, each inside the next lower one.
///
/// A node is a component at the level at which it appears. The tree is that of a flood from the darkest pixel with a
/// hierarchical queue: nodes are numbered as the flood makes them, and the children of a node stand in the order that the
/// flood leaves, the last one made first.
///
/// Source: P. Salembier, A. Oliveras and L. Garrido, "Antiextensive connected operators for image and sequence
/// processing", 1998; repeated visits as in D. Nister and H. Stewenius, "Linear time maximally stable extremal regions",
/// 2008.
#pragma once

#include <morvane/Export.h>
#include <morvane/common/Criterion.h>
#include <morvane/common/LevelSet.h>
#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace morvane::connexity
{

/// A node of a max-tree. Its criterion measures the whole component, all pixels of higher levels inside it included.
///
/// @tparam T element type of the image: `uchar`, `ushort` (also for `CV_16S`) or `int`
/// @tparam A attribute class
template <class T, class A>
class MaxTreeNode : public common::AttributeCriterion<A>
{
public:
    std::uint64_t nextSibling = 0; ///< index of the next child of the same parent, 0 for none
    std::uint64_t firstChild = 0;  ///< index of the first child, 0 for none
    T level = 0;                   ///< the level at which the component appears
};

/// The owner of the nodes of a tree. Nodes are numbered from 1 and never removed.
template <class Node>
class MaxTreeStore
{
public:
    /// The index of the root.
    [[nodiscard]] std::uint64_t Root() const { return m_root; }

    /// One more than the last index.
    [[nodiscard]] std::uint64_t NextIndex() const { return m_nextIndex; }

    /// The node of an index, null where there is none. The pointer stays good as long as the store.
    [[nodiscard]] Node * Get(std::uint64_t index) { return IsNode(index) ? &At(index) : nullptr; }
    /// @copydoc Get(std::uint64_t)
    [[nodiscard]] Node const * Get(std::uint64_t index) const { return IsNode(index) ? &At(index) : nullptr; }

    /// Makes a node. @return its index
    std::uint64_t Create()
    {
        if (m_nextIndex >> kBlockBits == m_blocks.size())
        {
            m_blocks.push_back(std::make_unique<Node[]>(std::size_t{1} << kBlockBits));
        }
        return m_nextIndex++;
    }

    /// Tells which node is the root.
    void SetRoot(std::uint64_t index) { m_root = index; }

private:
    static constexpr unsigned kBlockBits = 17;

    [[nodiscard]] bool IsNode(std::uint64_t index) const
    {
        return index != 0 && index < m_nextIndex && index >> kBlockBits < m_blocks.size();
    }

    [[nodiscard]] Node & At(std::uint64_t index) const
    {
        return m_blocks[index >> kBlockBits][index & ((std::uint64_t{1} << kBlockBits) - 1)];
    }

    std::vector<std::unique_ptr<Node[]>> m_blocks;
    std::uint64_t m_nextIndex = 1;
    std::uint64_t m_root = 1;
};

/// The hierarchical queue of a flood: a stack for each level, of a capacity that is known beforehand.
///
/// @tparam T of a level
/// @tparam Entry what stands for a pixel; by default its column in the lower half and its row in the upper one
template <class T, class Entry = std::uint64_t>
class LevelQueue
{
public:
    /// @param histogram for each level from 0 on, how many pixels can wait there at once
    explicit LevelQueue(std::vector<std::size_t> const & histogram)
        : m_levels(histogram.size())
        , m_waiting(histogram.size())
    {
        std::size_t start = 0;
        for (std::size_t level = 0; level < histogram.size(); ++level)
        {
            m_levels[level] = {start, start};
            start += histogram[level];
        }
        m_entries = std::make_unique_for_overwrite<Entry[]>(start);
    }

    /// Does no pixel wait?
    [[nodiscard]] bool IsEmpty() const { return m_count == 0; }

    /// The highest level at which a pixel waits; there must be one.
    [[nodiscard]] T Top()
    {
        m_top = m_waiting.LastUpTo(m_top);
        return static_cast<T>(m_top);
    }

    /// Lets a pixel wait. No more may wait at a level than its histogram has.
    void Push(T level, Entry entry)
    {
        auto const index = static_cast<std::size_t>(level);
        Stack & stack = m_levels[index];
        if (stack.top == stack.bottom) m_waiting.Insert(index);
        m_entries[stack.top++] = entry;
        ++m_count;
        m_top = std::max(m_top, index);
    }

    /// Takes the pixel that came last at a level at which one waits.
    Entry Pop(T level)
    {
        auto const index = static_cast<std::size_t>(level);
        Stack & stack = m_levels[index];
        --m_count;
        --stack.top;
        if (stack.top == stack.bottom) m_waiting.Remove(index);
        return m_entries[stack.top];
    }

private:
    /// The entries of a level, from the bottom to before the top.
    struct Stack
    {
        std::size_t bottom = 0;
        std::size_t top = 0;
    };

    std::vector<Stack> m_levels;
    std::unique_ptr<Entry[]> m_entries;
    /// The levels at which a pixel waits.
    common::LevelSet m_waiting;
    std::size_t m_count = 0;
    /// At or above all of them.
    std::size_t m_top = 0;
};

/// Builds the max-tree of an image, with the attribute of each node.
///
/// A connexity that wraps is used without its wrap.
///
/// @tparam T `uchar` for `CV_8U`, `ushort` for `CV_16U` and `CV_16S`, `int` for `CV_32S` images
/// @tparam A one of the six attribute classes
///
/// @code
/// using namespace morvane;
/// cv::Mat labels;
/// connexity::MaxTreeBuilder<uchar, common::AreaAttribute> const tree(image, connexity::eConnexity8, labels);
/// std::uint64_t const pixels = tree.Store().Get(tree.Store().Root())->GetValue();
/// @endcode
template <class T, class A>
class MORVANE_EXPORT MaxTreeBuilder
{
public:
    /// The nodes of the tree.
    using Node = MaxTreeNode<T, A>;

    /// Builds the tree.
    ///
    /// @param image rows x cols, one channel of the depth that goes with @p T, not negative: a negative `CV_16S` pixel
    ///        counts as its bits in `CV_16U`, a negative `CV_32S` pixel as the low level that it is. An image of another
    ///        type, or without pixels, gives a store without nodes.
    /// @param connexity the neighbourhood; with a value outside the enumeration nothing but the first of the darkest
    ///        pixels is reached, and the others get label 0
    /// @param labels made `CV_32SC1` of the size of the image where it is not; each pixel gets the index of its node,
    ///        truncated to 32 bits
    /// @throws std::bad_alloc when memory runs out
    ///
    /// Cost: O(pixels), for `CV_32S` O(pixels log pixels). One thread. `image` and `labels` may be the same matrix.
    MaxTreeBuilder(cv::Mat const & image, eConnexityType connexity, cv::Mat & labels);

    /// The finished tree.
    [[nodiscard]] MaxTreeStore<Node> & Store() { return m_store; }
    /// @copydoc Store()
    [[nodiscard]] MaxTreeStore<Node> const & Store() const { return m_store; }

private:
    MaxTreeStore<Node> m_store;
};

extern template class MaxTreeBuilder<uchar, common::HeightAttribute>;
extern template class MaxTreeBuilder<uchar, common::WidthAttribute>;
extern template class MaxTreeBuilder<uchar, common::StrainAttribute>;
extern template class MaxTreeBuilder<uchar, common::MinHWAttribute>;
extern template class MaxTreeBuilder<uchar, common::AreaAttribute>;
extern template class MaxTreeBuilder<uchar, common::SqrtAreaAttribute>;
extern template class MaxTreeBuilder<ushort, common::HeightAttribute>;
extern template class MaxTreeBuilder<ushort, common::WidthAttribute>;
extern template class MaxTreeBuilder<ushort, common::StrainAttribute>;
extern template class MaxTreeBuilder<ushort, common::MinHWAttribute>;
extern template class MaxTreeBuilder<ushort, common::AreaAttribute>;
extern template class MaxTreeBuilder<ushort, common::SqrtAreaAttribute>;
extern template class MaxTreeBuilder<int, common::HeightAttribute>;
extern template class MaxTreeBuilder<int, common::WidthAttribute>;
extern template class MaxTreeBuilder<int, common::StrainAttribute>;
extern template class MaxTreeBuilder<int, common::MinHWAttribute>;
extern template class MaxTreeBuilder<int, common::AreaAttribute>;
extern template class MaxTreeBuilder<int, common::SqrtAreaAttribute>;

} // namespace morvane::connexity
