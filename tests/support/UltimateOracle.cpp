#include "support/UltimateOracle.h"

#include <morvane/connexity/UltimateAttributeOpening.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace morvane::tests
{

namespace
{

using common::eAttributeType;

/// A limit, which counts as a huge one when it is negative.
std::uint64_t Limit(int limit)
{
    return static_cast<std::uint64_t>(std::int64_t{limit});
}

/// Do a node and its child count as one step?
bool Merged(UltimateForm const & form, std::uint64_t parent, std::uint64_t child)
{
    if (!form.delta) return parent == child;
    return (parent > child ? parent - child : child - parent) < Limit(*form.delta);
}

bool Accepted(UltimateForm const & form, std::uint64_t value)
{
    return !form.maxAttribute || value < Limit(*form.maxAttribute);
}

/// A size plus one, both in an integer depth.
std::int64_t StoredSize(std::uint64_t value, int depth)
{
    auto const cut = static_cast<std::int64_t>(OracleBits(static_cast<std::int64_t>(value), depth));
    return static_cast<std::int64_t>(OracleBits(cut + 1, depth));
}

/// The components around a pixel, number 0 the whole image.
class Path
{
public:
    Path(OraclePaths const & paths, std::size_t pixel, eAttributeType attribute, UltimateForm const & form)
        : m_form(form)
    {
        for (std::size_t const component : paths.ofPixel[pixel])
        {
            m_levels.push_back(paths.components[component].level);
            m_values.push_back(OracleValue(paths.components[component].measure, attribute));
        }
    }

    [[nodiscard]] std::size_t Count() const { return m_levels.size(); }

    /// The largest residue among those that count, up to before a component.
    [[nodiscard]] std::int64_t BestBefore(std::size_t end) const
    {
        std::int64_t best = 0;
        for (std::size_t index = 1; index < end; ++index)
        {
            if (Accepted(m_form, m_values[index])) best = std::max(best, Residue(index));
        }
        return best;
    }

    /// The component whose size is stored, 0 for none.
    [[nodiscard]] std::size_t SizeGiver() const
    {
        for (std::size_t index = Count() - 1; index > 0; --index)
        {
            if (!Accepted(m_form, m_values[index])) return 0;
            if (!Improves(index)) continue;
            while (index > 1 && IsMerged(index) && Improves(index - 1))
            {
                --index;
            }
            return index;
        }
        return 0;
    }

    [[nodiscard]] std::uint64_t Value(std::size_t index) const { return m_values[index]; }

private:
    [[nodiscard]] bool IsMerged(std::size_t index) const
    {
        return Merged(m_form, m_values[index - 1], m_values[index]);
    }

    /// The height over what surrounds the outermost component that is merged with it.
    [[nodiscard]] std::int64_t Residue(std::size_t index) const
    {
        std::size_t outermost = index;
        while (outermost > 1 && IsMerged(outermost))
        {
            --outermost;
        }
        return m_levels[index] - m_levels[outermost - 1];
    }

    [[nodiscard]] bool Improves(std::size_t index) const
    {
        return Accepted(m_form, m_values[index]) && Residue(index) > BestBefore(index);
    }

    UltimateForm m_form;
    std::vector<std::int64_t> m_levels;
    std::vector<std::uint64_t> m_values;
};

/// The descent with a residue, the best one and its size for each node.
class Descent
{
public:
    Descent(
        OracleTree const & tree, eAttributeType attribute, UltimateForm const & form, cv::Mat const & image, int depth)
        : best(tree.nodes.size())
        , sizes(tree.nodes.size())
        , m_tree(tree)
        , m_attribute(attribute)
        , m_form(form)
        , m_residues(tree.nodes.size())
        , m_imageDepth(image.depth())
        , m_depth(depth)
    {
        for (std::size_t child = tree.nodes[1].firstChild; child != 0; child = tree.nodes[child].nextSibling)
        {
            bool const improved = Step(child, 1, std::nullopt);
            GoBelow(child, improved);
        }
    }

    std::vector<std::int64_t> best;
    std::vector<std::int64_t> sizes;

private:
    void GoBelow(std::size_t parent, bool improved)
    {
        for (std::size_t child = m_tree.nodes[parent].firstChild; child != 0; child = m_tree.nodes[child].nextSibling)
        {
            bool const childImproved = Step(child, parent, improved);
            GoBelow(child, childImproved);
        }
    }

    /// Returns whether the best residue grew. @param improved whether that of the parent did, none below the root
    bool Step(std::size_t child, std::size_t parent, std::optional<bool> improved)
    {
        std::uint64_t const value = OracleValue(m_tree.nodes[child].measure, m_attribute);
        bool const merged = Merged(m_form, OracleValue(m_tree.nodes[parent].measure, m_attribute), value);
        std::int64_t residue = m_tree.nodes[child].level - m_tree.nodes[parent].level;
        if (merged) residue += m_residues[parent];
        m_residues[child] = Cut(residue);
        best[child] = best[parent];
        sizes[child] = sizes[parent];
        if (!Accepted(m_form, value))
        {
            sizes[child] = 0;
            return false;
        }
        if (m_residues[child] <= best[child]) return false;
        best[child] = m_residues[child];
        if (!(improved && *improved && merged)) sizes[child] = StoredSize(value, m_depth);
        return true;
    }

    /// A residue in the type of the levels.
    [[nodiscard]] std::int64_t Cut(std::int64_t residue) const
    {
        int const depth = m_imageDepth == CV_16S ? CV_16U : m_imageDepth;
        return static_cast<std::int64_t>(OracleBits(residue, depth));
    }

    OracleTree const & m_tree;
    eAttributeType m_attribute;
    UltimateForm m_form;
    std::vector<std::int64_t> m_residues;
    int m_imageDepth;
    int m_depth;
};

Ultimate Zeros(cv::Mat const & image, int depth)
{
    return {cv::Mat::zeros(image.size(), image.type()), cv::Mat::zeros(image.size(), CV_MAKETYPE(depth, 1))};
}

void Store(Ultimate & images, int y, int x, std::int64_t residue, std::int64_t size)
{
    SetElement(images.residues, y, x, 0, OracleBits(residue, images.residues.depth()));
    SetElement(images.attributes, y, x, 0, OracleBits(size, images.attributes.depth()));
}

} // namespace

bool CallUltimate(
    UltimateForm const & form, cv::Mat const & image, eAttributeType attribute, int connexity, cv::Mat & residues,
    cv::Mat & attributes)
{
    connexity::eConnexityType const shape = Shape(connexity);
    if (form.delta)
    {
        return connexity::UltimateAttributeOpening(
            image, attribute, *form.delta, shape, form.maxAttribute.value(), residues, attributes);
    }
    if (form.maxAttribute)
    {
        return connexity::UltimateAttributeOpening(image, attribute, shape, *form.maxAttribute, residues, attributes);
    }
    return connexity::UltimateAttributeOpening(image, attribute, shape, residues, attributes);
}

Ultimate OracleUltimate(
    cv::Mat const & image, OraclePaths const & paths, eAttributeType attribute, UltimateForm const & form, int depth)
{
    Ultimate images = Zeros(image, depth);
    std::size_t pixel = 0;
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            Path const path(paths, pixel++, attribute, form);
            if (path.Count() == 0) continue;
            std::size_t const giver = path.SizeGiver();
            Store(images, y, x, path.BestBefore(path.Count()), giver == 0 ? 0 : StoredSize(path.Value(giver), depth));
        }
    }
    return images;
}

Ultimate OracleUltimate(
    cv::Mat const & image, OracleTree const & tree, eAttributeType attribute, UltimateForm const & form, int depth)
{
    Descent const descent(tree, attribute, form, image, depth);
    Ultimate images = Zeros(image, depth);
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            auto const node = static_cast<std::size_t>(tree.labels(y, x));
            Store(images, y, x, descent.best[node], descent.sizes[node]);
        }
    }
    return images;
}

std::string Describe(UltimateForm const & form)
{
    std::string text = form.delta ? "delta " + std::to_string(*form.delta) : "no delta";
    return text + (form.maxAttribute ? ", largest " + std::to_string(*form.maxAttribute) : ", no largest");
}

} // namespace morvane::tests
