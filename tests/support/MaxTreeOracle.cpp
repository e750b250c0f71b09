#include "support/MaxTreeOracle.h"

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Oracles.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>

namespace morvane::tests
{

namespace
{

using common::eAttributeType;

bool Inside(cv::Mat const & image, cv::Point point)
{
    return point.x >= 0 && point.x < image.cols && point.y >= 0 && point.y < image.rows;
}

std::size_t NumberOf(cv::Mat const & image, cv::Point point)
{
    return static_cast<std::size_t>(point.y) * static_cast<std::size_t>(image.cols) + static_cast<std::size_t>(point.x);
}

template <class Visit>
void ForEachPixel(cv::Mat const & image, Visit const & visit)
{
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            visit(cv::Point(x, y));
        }
    }
}

/// The first of the darkest pixels, row by row.
cv::Point Darkest(cv::Mat const & image)
{
    cv::Point darkest(0, 0);
    ForEachPixel(image, [&](cv::Point point) {
        if (OracleLevel(image, point) < OracleLevel(image, darkest)) darkest = point;
    });
    return darkest;
}

/// The flood, step by step.
class Flood
{
public:
    Flood(cv::Mat const & image, int connexity)
        : m_image(image)
        , m_offsets(OracleOffsets(connexity))
        , m_tree{std::vector<OracleNode>(1), cv::Mat1i(image.size(), 0)}
    {}

    OracleTree Run()
    {
        cv::Point const start = Darkest(m_image);
        m_nodeAtLevel[LevelOf(start)] = Create(start);
        Label(start, LevelOf(start));
        Push(start);
        while (!m_stacks.empty())
        {
            auto const highest = std::prev(m_stacks.end());
            cv::Point const current = highest->second.back();
            highest->second.pop_back();
            if (highest->second.empty()) m_stacks.erase(highest);
            for (cv::Point const offset : m_offsets)
            {
                if (Inside(m_image, current + offset) && Visit(current, current + offset)) break;
            }
        }
        Accumulate(1);
        return m_tree;
    }

private:
    [[nodiscard]] std::int64_t LevelOf(cv::Point point) const { return OracleLevel(m_image, point); }

    OracleNode & Node(std::size_t index) { return m_tree.nodes[index]; }

    std::size_t Create(cv::Point point)
    {
        m_tree.nodes.push_back({LevelOf(point)});
        return m_tree.nodes.size() - 1;
    }

    void Push(cv::Point point) { m_stacks[LevelOf(point)].push_back(point); }

    /// The pixel joins the open node of a level.
    void Label(cv::Point point, std::int64_t level)
    {
        std::size_t const node = m_nodeAtLevel.at(level);
        m_tree.labels(point) = static_cast<int>(node);
        Node(node).measure.Take(point);
    }

    /// Returns whether the flood climbs.
    bool Visit(cv::Point current, cv::Point neighbour)
    {
        if (m_tree.labels(neighbour) != 0) return false;
        std::int64_t const from = LevelOf(current);
        std::int64_t const level = LevelOf(neighbour);
        bool const climbs = level > from;
        if (climbs)
        {
            m_nodeAtLevel.erase(m_nodeAtLevel.upper_bound(from), m_nodeAtLevel.lower_bound(level));
            std::size_t const node = Create(neighbour);
            std::size_t const parent = m_nodeAtLevel.at(from);
            Node(node).nextSibling = Node(parent).firstChild;
            Node(parent).firstChild = node;
            m_nodeAtLevel[level] = node;
            Push(current);
        }
        else if (m_nodeAtLevel.count(level) == 0)
        {
            std::size_t const node = Create(neighbour);
            std::size_t const parent = std::prev(m_nodeAtLevel.lower_bound(level))->second;
            std::size_t const child = Node(parent).firstChild;
            Node(node).firstChild = child;
            Node(node).nextSibling = Node(child).nextSibling;
            Node(child).nextSibling = 0;
            Node(parent).firstChild = node;
            m_nodeAtLevel[level] = node;
        }
        Label(neighbour, level);
        Push(neighbour);
        return climbs;
    }

    void Accumulate(std::size_t node)
    {
        for (std::size_t child = Node(node).firstChild; child != 0; child = Node(child).nextSibling)
        {
            Node(child).parent = node;
            Accumulate(child);
            Node(node).measure.Merge(Node(child).measure);
        }
    }

    cv::Mat m_image;
    std::vector<cv::Point> m_offsets;
    OracleTree m_tree;
    std::map<std::int64_t, std::vector<cv::Point>> m_stacks;
    std::map<std::int64_t, std::size_t> m_nodeAtLevel;
};

/// The pixels of at least a level that paths of such pixels join to a first one.
std::vector<cv::Point> ComponentAt(
    cv::Mat const & image, std::vector<cv::Point> const & offsets, cv::Point first, std::int64_t level,
    cv::Mat1b & visited)
{
    std::vector<cv::Point> component{first};
    visited(first) = 1;
    for (std::size_t next = 0; next < component.size(); ++next)
    {
        for (cv::Point const offset : offsets)
        {
            cv::Point const neighbour = component[next] + offset;
            if (!Inside(image, neighbour) || visited(neighbour) != 0) continue;
            if (OracleLevel(image, neighbour) < level) continue;
            visited(neighbour) = 1;
            component.push_back(neighbour);
        }
    }
    return component;
}

/// The numbers that an image is made of: neighbours, or any up to the largest.
std::vector<double> Palette(Random & random, int depth, int levels)
{
    std::map<int, double> const largest{{CV_8U, 255}, {CV_16U, 65535}, {CV_16S, 32767}, {CV_32S, 2147483647}};
    bool const isSparse = random.Chance(0.4);
    int const first = random.Below(2);
    std::vector<double> palette{0.0, largest.at(depth)};
    palette.reserve(palette.size() + static_cast<std::size_t>(levels));
    if (!isSparse) palette.clear();
    for (int level = 0; level < levels; ++level)
    {
        palette.push_back(isSparse ? std::floor(random.Unit() * largest.at(depth)) : std::min(first + level, 255));
    }
    return palette;
}

/// Goes down from a node with what its parent puts out.
void Descend(
    OracleTree const & tree, eAttributeType attribute, std::uint64_t threshold, std::size_t node,
    std::int64_t inherited, std::vector<std::int64_t> & levels)
{
    bool const fails = OracleValue(tree.nodes[node].measure, attribute) < threshold;
    levels[node] = fails ? inherited : tree.nodes[node].level;
    for (std::size_t child = tree.nodes[node].firstChild; child != 0; child = tree.nodes[child].nextSibling)
    {
        Descend(tree, attribute, threshold, child, levels[node], levels);
    }
}

} // namespace

std::int64_t OracleLevel(cv::Mat const & image, cv::Point point)
{
    auto const level = static_cast<std::int64_t>(ElementAt(image, point.y, point.x));
    return image.depth() == CV_16S && level < 0 ? level + 65536 : level;
}

double OracleBits(std::int64_t number, int depth)
{
    std::int64_t const range = std::int64_t{1} << (8 * CV_ELEM_SIZE1(depth));
    std::int64_t const bits = ((number % range) + range) % range;
    bool const isSigned = depth == CV_16S || depth == CV_32S;
    return static_cast<double>(isSigned && bits >= range / 2 ? bits - range : bits);
}

void OracleMeasure::Take(cv::Point point)
{
    Merge({point.x, point.x, point.y, point.y, 1});
}

void OracleMeasure::Merge(OracleMeasure const & other)
{
    bool const isFirst = area == 0;
    left = isFirst ? other.left : std::min(left, other.left);
    right = isFirst ? other.right : std::max(right, other.right);
    top = isFirst ? other.top : std::min(top, other.top);
    bottom = isFirst ? other.bottom : std::max(bottom, other.bottom);
    area += other.area;
}

std::uint64_t OracleValue(OracleMeasure const & measure, eAttributeType attribute)
{
    auto const width = static_cast<std::uint64_t>(std::int64_t{measure.right} - measure.left) + 1;
    auto const height = static_cast<std::uint64_t>(std::int64_t{measure.bottom} - measure.top) + 1;
    switch (attribute)
    {
    case common::eAttributeHeight:
        return height;
    case common::eAttributeWidth:
        return width;
    case common::eAttributeStrain:
        return std::max(width, height);
    case common::eAttributeMinHW:
        return std::min(width, height);
    case common::eAttributeArea:
        return measure.area;
    case common::eAttributeSqrtArea:
        break;
    }
    return static_cast<std::uint64_t>(std::sqrt(static_cast<float>(measure.area)));
}

OracleTree OracleFlood(cv::Mat const & image, int connexity)
{
    return Flood(image, connexity).Run();
}

OraclePaths OracleDecompose(cv::Mat const & image, int connexity)
{
    std::vector<cv::Point> const offsets = OracleOffsets(connexity);
    OraclePaths paths{{}, std::vector<std::vector<std::size_t>>(image.total())};
    std::map<std::int64_t, std::vector<cv::Point>> levels;
    cv::Mat1b reached(image.size(), uchar{0});
    cv::Point const start = Darkest(image);
    for (cv::Point const point : ComponentAt(image, offsets, start, OracleLevel(image, start), reached))
    {
        levels[OracleLevel(image, point)].push_back(point);
    }
    for (auto const & [level, points] : levels)
    {
        cv::Mat1b visited(image.size(), uchar{0});
        for (cv::Point const point : points)
        {
            if (visited(point) != 0) continue;
            paths.components.push_back({level});
            for (cv::Point const member : ComponentAt(image, offsets, point, level, visited))
            {
                paths.components.back().measure.Take(member);
                paths.ofPixel[NumberOf(image, member)].push_back(paths.components.size() - 1);
            }
        }
    }
    return paths;
}

cv::Mat
OracleOpening(cv::Mat const & image, OraclePaths const & paths, eAttributeType attribute, unsigned int threshold)
{
    cv::Mat out(image.size(), image.type(), cv::Scalar(0));
    ForEachPixel(image, [&](cv::Point point) {
        for (std::size_t const component : paths.ofPixel[NumberOf(image, point)])
        {
            if (OracleValue(paths.components[component].measure, attribute) < threshold) continue;
            SetElement(out, point.y, point.x, 0, OracleBits(paths.components[component].level, image.depth()));
        }
    });
    return out;
}

cv::Mat OracleOpening(cv::Mat const & image, OracleTree const & tree, eAttributeType attribute, unsigned int threshold)
{
    std::vector<std::int64_t> levels(tree.nodes.size());
    Descend(tree, attribute, threshold, 1, 0, levels);
    cv::Mat out(image.size(), image.type());
    ForEachPixel(image, [&](cv::Point point) {
        std::int64_t const level = levels[static_cast<std::size_t>(tree.labels(point))];
        SetElement(out, point.y, point.x, 0, OracleBits(level, image.depth()));
    });
    return out;
}

cv::Mat HillyImage(Random & random, cv::Size size, int depth, int levels)
{
    std::vector<double> const palette = Palette(random, depth, levels);
    auto const anyLevel = [&] {
        return palette[static_cast<std::size_t>(random.Below(static_cast<int>(palette.size())))];
    };
    cv::Mat image(size, CV_MAKETYPE(depth, 1), cv::Scalar(anyLevel()));
    for (int blot = random.Below(12); blot > 0; --blot)
    {
        cv::Rect const place(
            random.Below(size.width), random.Below(size.height), 1 + random.Below(size.width),
            1 + random.Below(size.height));
        image(place & cv::Rect(cv::Point(), size)).setTo(anyLevel());
    }
    double const noise = random.Chance(0.3) ? 1.0 : random.Unit() * 0.3;
    ForEachPixel(image, [&](cv::Point point) {
        if (random.Chance(noise)) SetElement(image, point.y, point.x, 0, anyLevel());
    });
    return image;
}

std::string TreeCase(cv::Mat const & image, int connexity)
{
    return Case(image.type(), image.size(), connexity);
}

} // namespace morvane::tests
