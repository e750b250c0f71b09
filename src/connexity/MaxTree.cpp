#include <morvane/connexity/MaxTree.h>

#include <morvane/common/Conversions.h>

#include "common/Dispatch.h"
#include "connexity/FloodedTree.h"

#include <type_traits>
#include <utility>

namespace morvane::connexity
{

namespace
{

/// Tells whether the image has the element type of the tree, and pixels.
template <class T>
bool IsImageOf(cv::Mat const & image)
{
    if (!common::IsRaster(image) || !common::IsSingleChannel(image) || image.empty()) return false;
    return common::VisitLabel(image, []<class Element> { return std::is_same_v<T, Element>; });
}

/// Moves a tree of tables into a store of nodes.
template <class Node, class A, class Tree>
void Fill(Tree const & tree, MaxTreeStore<Node> & store)
{
    auto attributes = tree.template Attributes<A>();
    for (std::size_t index = 1; index < tree.NextIndex(); ++index)
    {
        Node & node = *store.Get(store.Create());
        static_cast<A &>(node) = attributes[index];
        node.nextSibling = tree.NextSiblingOf(index);
        node.firstChild = tree.FirstChildOf(index);
        node.level = tree.LevelOf(index);
    }
}

} // namespace

template <class T, class A>
MaxTreeBuilder<T, A>::MaxTreeBuilder(cv::Mat const & image, eConnexityType connexity, cv::Mat & labels)
{
    if (!IsImageOf<T>(image)) return;
    max_tree_internals::VisitTreeIndex(image, connexity, [&]<class Index> {
        max_tree_internals::FloodedTree<T, Index> const tree(image, connexity);
        labels.create(image.size(), CV_32SC1);
        tree.ForEachRow([&](int y, Index const * nodes) {
            int * const row = labels.ptr<int>(y);
            for (int x = 0; x < labels.cols; ++x)
            {
                row[x] = common::WrapTo<int>(nodes[x]);
            }
        });
        Fill<Node, A>(tree, m_store);
        return true;
    });
}

template class MaxTreeBuilder<uchar, common::HeightAttribute>;
template class MaxTreeBuilder<uchar, common::WidthAttribute>;
template class MaxTreeBuilder<uchar, common::StrainAttribute>;
template class MaxTreeBuilder<uchar, common::MinHWAttribute>;
template class MaxTreeBuilder<uchar, common::AreaAttribute>;
template class MaxTreeBuilder<uchar, common::SqrtAreaAttribute>;

template class MaxTreeBuilder<ushort, common::HeightAttribute>;
template class MaxTreeBuilder<ushort, common::WidthAttribute>;
template class MaxTreeBuilder<ushort, common::StrainAttribute>;
template class MaxTreeBuilder<ushort, common::MinHWAttribute>;
template class MaxTreeBuilder<ushort, common::AreaAttribute>;
template class MaxTreeBuilder<ushort, common::SqrtAreaAttribute>;

template class MaxTreeBuilder<int, common::HeightAttribute>;
template class MaxTreeBuilder<int, common::WidthAttribute>;
template class MaxTreeBuilder<int, common::StrainAttribute>;
template class MaxTreeBuilder<int, common::MinHWAttribute>;
template class MaxTreeBuilder<int, common::AreaAttribute>;
template class MaxTreeBuilder<int, common::SqrtAreaAttribute>;

} // namespace morvane::connexity
