#include <morvane/connexity/AttributeOpening.h>

#include "common/Dispatch.h"
#include "connexity/FloodedTree.h"
#include "connexity/VisitAttribute.h"

#include <cstdint>
#include <vector>

namespace morvane::connexity
{

using namespace max_tree_internals;

namespace
{

/// The level that each node puts out: its own, or that of its parent where its attribute is below the threshold.
template <class A, class T, class Index>
std::vector<T> OutputLevels(FloodedTree<T, Index> const & tree, std::uint64_t threshold)
{
    auto const attributes = tree.template Attributes<A>();
    // What the root inherits stands at its parent, no node: 0.
    std::vector<T> levels(tree.NextIndex());
    tree.ForEachDown([&](Index node, Index parent) {
        levels[node] = attributes[node].GetValue() < threshold ? levels[parent] : tree.LevelOf(node);
    });
    return levels;
}

} // namespace

bool AttributeOpening(
    cv::Mat const & image, common::eAttributeType attribute, eConnexityType const & connexity, unsigned int threshold,
    cv::Mat & out)
{
    if (!common::IsSingleChannel(image) || !common::SameSize(image, out) || image.type() != out.type()) return false;
    if (!IsAttribute(attribute) || image.empty()) return false;
    return common::VisitLabel(image, [&]<class T> {
        return VisitTreeIndex(image, connexity, [&]<class Index> {
            FloodedTree<T, Index> const tree(image, connexity);
            VisitAttribute(attribute, [&]<class A> { tree.Project(OutputLevels<A>(tree, threshold), out); });
            return true;
        });
    });
}

} // namespace morvane::connexity
