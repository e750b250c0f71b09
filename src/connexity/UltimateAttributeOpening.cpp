#include <morvane/connexity/UltimateAttributeOpening.h>

#include <morvane/common/Conversions.h>

#include "common/Dispatch.h"
#include "connexity/FloodedTree.h"
#include "connexity/VisitAttribute.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <type_traits>
#include <vector>

namespace morvane::connexity
{

using common::WrapTo;
using namespace max_tree_internals;

namespace
{

/// Two nodes count as one below this difference of their attributes; sizes count below this one.
struct Limits
{
    std::uint64_t delta = 1;
    std::optional<std::uint64_t> maxAttribute;
};

/// A limit as it is compared: a negative one is larger than everything.
std::uint64_t Widened(int limit)
{
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(limit));
}

/// A sum or a difference that stays in its type, wrapping.
template <class T>
T Wrapped(std::uint64_t value)
{
    return WrapTo<T>(value);
}

/// What is found at each node on the way down from the root, where everything is 0.
template <class T, class Out>
struct Residues
{
    explicit Residues(std::size_t nodes)
        : own(nodes)
        , best(nodes)
        , attributes(nodes)
        , improved(nodes)
    {}

    std::vector<T> own;          ///< against the parent
    std::vector<T> best;         ///< the largest from the root to the node
    std::vector<Out> attributes; ///< what the best one measures, plus one
    std::vector<uchar> improved; ///< whether the node's own became the best
};

/// The step from a node to its child.
template <class T, class Out, class Tree, class A>
class Step
{
public:
    Step(
        Tree const & tree, std::vector<Accumulator<A>> const & measured, Limits const & limits,
        Residues<T, Out> & residues)
        : m_tree(tree)
        , m_measured(measured)
        , m_limits(limits)
        , m_residues(residues)
    {}

    void operator()(std::size_t child, std::size_t parent) const
    {
        std::uint64_t const value = m_measured[child].GetValue();
        std::uint64_t const parentValue = m_measured[parent].GetValue();
        std::uint64_t const difference = value < parentValue ? parentValue - value : value - parentValue;
        bool const merged = difference < m_limits.delta;

        T residue = Wrapped<T>(Bits(m_tree.LevelOf(child)) - Bits(m_tree.LevelOf(parent)));
        if (merged) residue = Wrapped<T>(Bits(residue) + Bits(m_residues.own[parent]));
        m_residues.own[child] = residue;
        m_residues.best[child] = m_residues.best[parent];
        m_residues.attributes[child] = m_residues.attributes[parent];

        if (m_limits.maxAttribute && value >= *m_limits.maxAttribute)
        {
            m_residues.attributes[child] = 0;
            return;
        }
        if (residue <= m_residues.best[child]) return;
        m_residues.best[child] = residue;
        m_residues.improved[child] = 1;
        // A residue that grows through merged nodes keeps the size of the first one. The root has none to grow from.
        bool const keepsSize = merged && m_residues.improved[parent] != 0;
        if (!keepsSize) m_residues.attributes[child] = Wrapped<Out>(Bits(WrapTo<Out>(value)) + 1);
    }

private:
    /// A number whose sums and differences wrap.
    template <class Number>
    static std::uint64_t Bits(Number number)
    {
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(number));
    }

    Tree const & m_tree;
    std::vector<Accumulator<A>> const & m_measured;
    Limits const & m_limits;
    Residues<T, Out> & m_residues;
};

template <class T, class Out>
bool Open(
    cv::Mat const & image, common::eAttributeType attribute, eConnexityType connexity, Limits const & limits,
    cv::Mat & residueImage, cv::Mat & attributeImage)
{
    return VisitTreeIndex(image, connexity, [&]<class Index> {
        using Tree = FloodedTree<T, Index>;
        Tree const tree(image, connexity);
        Residues<T, Out> residues(tree.NextIndex());
        VisitAttribute(attribute, [&]<class A> {
            auto const measured = tree.template Attributes<A>();
            Step<T, Out, Tree, A> const step(tree, measured, limits, residues);
            tree.ForEachDown([&](Index node, Index parent) {
                if (parent != 0) step(node, parent);
            });
        });
        tree.Project(residues.best, residueImage);
        tree.Project(residues.attributes, attributeImage);
        return true;
    });
}

bool OpenWithin(
    cv::Mat const & image, common::eAttributeType attribute, eConnexityType connexity, Limits const & limits,
    cv::Mat & residues, cv::Mat & attributes)
{
    if (!common::IsSingleChannel(image) || !common::SameSize(image, residues, attributes)) return false;
    if (image.type() != residues.type() || !IsAttribute(attribute) || image.empty()) return false;
    return common::VisitLabel(attributes, [&]<class Out> {
        return common::VisitLabel(
            image, [&]<class T> { return Open<T, Out>(image, attribute, connexity, limits, residues, attributes); });
    });
}

} // namespace

bool UltimateAttributeOpening(
    cv::Mat const & image, common::eAttributeType attribute, eConnexityType const & connexity, cv::Mat & residues,
    cv::Mat & attributes)
{
    return OpenWithin(image, attribute, connexity, {}, residues, attributes);
}

bool UltimateAttributeOpening(
    cv::Mat const & image, common::eAttributeType attribute, eConnexityType const & connexity, int maxAttribute,
    cv::Mat & residues, cv::Mat & attributes)
{
    return OpenWithin(image, attribute, connexity, {1, Widened(maxAttribute)}, residues, attributes);
}

bool UltimateAttributeOpening(
    cv::Mat const & image, common::eAttributeType attribute, int delta, eConnexityType const & connexity,
    int maxAttribute, cv::Mat & residues, cv::Mat & attributes)
{
    return OpenWithin(image, attribute, connexity, {Widened(delta), Widened(maxAttribute)}, residues, attributes);
}

} // namespace morvane::connexity
