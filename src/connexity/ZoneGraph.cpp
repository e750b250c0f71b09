#include <morvane/connexity/ZoneGraph.h>

#include <morvane/connexity/Conditions.h>
#include <morvane/connexity/Labelling.h>

#include "common/Dispatch.h"
#include "common/EdgeColumns.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_set>
#include <utility>
#include <vector>

namespace morvane::connexity
{

using common::IsSingleChannel;
using common::SameSize;
using common::VisitElement;

namespace
{

/// Which pairs of labels are joined: what a walk along the list of edges of a label would tell, in constant time.
class JoinedPairs
{
public:
    /// @return whether the pair was not there
    bool Insert(int one, int other)
    {
        auto const [low, high] = std::minmax(one, other);
        std::uint64_t const key = (static_cast<std::uint64_t>(low) << 32U) | static_cast<std::uint64_t>(high);
        // Along a border, the same few pairs come again and again.
        std::uint64_t & recent = m_recent[key % m_recent.size()];
        if (key == recent) return false;
        recent = key;
        return m_keys.insert(key).second;
    }

private:
    // A prime, so that both labels count. No pair is 0.
    std::array<std::uint64_t, 4093> m_recent{};
    std::unordered_set<std::uint64_t> m_keys;
};

/// The graph that is being filled from the pixels of a label image in raster order.
///
/// @tparam Asks tells whether the step from one pixel to another counts
template <class Asks>
class Contacts
{
public:
    Contacts(cv::Mat const & labels, Connexity const & connexity, Asks asks, Graph & graph)
        : m_labels(&labels)
        , m_neighbourhood(NeighbourhoodOver(connexity, labels.size()))
        , m_linearOffsets(m_neighbourhood.LinearOffsets(labels))
        , m_asks(std::move(asks))
        , m_graph(&graph)
        , m_differs(static_cast<std::size_t>(labels.cols))
    {}

    void AddOfRow(int y)
    {
        FindBorder(y);
        int const * const row = m_labels->ptr<int>(y);
        for (int x = 0; x < m_labels->cols; ++x)
        {
            if (m_differs[static_cast<std::size_t>(x)] != 0 && row[x] > 0) AddOfPixel({x, y}, row[x]);
        }
    }

private:
    /// Marks the pixels of a row that differ from a neighbour, and those near the edges, for which this is not asked.
    void FindBorder(int y)
    {
        int const columns = m_labels->cols;
        int const * const row = m_labels->ptr<int>(y);
        int const reach = std::min(m_neighbourhood.Reach(), columns);
        std::fill(m_differs.begin(), m_differs.end(), uchar{0});
        std::fill_n(m_differs.begin(), reach, uchar{1});
        std::fill_n(m_differs.rbegin(), reach, uchar{1});
        for (std::size_t index = 0; index < m_neighbourhood.Count(); ++index)
        {
            cv::Point const offset = m_neighbourhood.Offset(index);
            std::int64_t const otherY = std::int64_t{y} + offset.y;
            if (otherY < 0 || otherY >= m_labels->rows) continue;
            int const * const other = m_labels->ptr<int>(static_cast<int>(otherY));
            uchar * const differs = m_differs.data();
            for (int x = reach; x < columns - reach; ++x)
            {
                differs[x] |= static_cast<uchar>(row[x] != other[x + offset.x]);
            }
        }
    }

    void AddOfPixel(cv::Point const & from, int label)
    {
        if (m_neighbourhood.IsInterior(from))
        {
            auto const * const pixel = m_labels->ptr<uchar>(from.y) + sizeof(int) * static_cast<std::size_t>(from.x);
            for (std::size_t index = 0; index < m_linearOffsets.size(); ++index)
            {
                int const other = *reinterpret_cast<int const *>(pixel + m_linearOffsets[index]);
                AddOfPair(from, label, from + m_neighbourhood.Offset(index), other);
            }
            return;
        }
        for (std::size_t index = 0; index < m_neighbourhood.Count(); ++index)
        {
            common::FarPoint const neighbour = common::FarNeighbour(from, m_neighbourhood.Offset(index));
            if (neighbour.y < 0 || neighbour.y >= m_labels->rows) continue;
            bool const isBeside = neighbour.x < 0 || neighbour.x >= m_labels->cols;
            if (isBeside && !m_neighbourhood.WrapsInX()) continue;
            cv::Point const to(common::OppositeEdgeColumn(neighbour.x, m_labels->cols), static_cast<int>(neighbour.y));
            AddOfPair(from, label, to, m_labels->ptr<int>(to.y)[to.x]);
        }
    }

    void AddOfPair(cv::Point const & from, int label, cv::Point const & to, int other)
    {
        if (other == label || other < 1 || !m_asks(from, to) || !m_pairs.Insert(label, other)) return;
        m_graph->AddEdge(static_cast<std::size_t>(label), static_cast<std::size_t>(other), false);
    }

    cv::Mat const * m_labels;
    common::Neighbourhood m_neighbourhood;
    std::vector<std::ptrdiff_t> m_linearOffsets;
    Asks m_asks;
    Graph * m_graph;
    std::vector<uchar> m_differs;
    JoinedPairs m_pairs;
};

int LargestLabel(cv::Mat const & labels)
{
    int largest = 0;
    // There is no row to point at.
    if (labels.empty()) return largest;
    for (int y = 0; y < labels.rows; ++y)
    {
        int const * const row = labels.ptr<int>(y);
        for (int x = 0; x < labels.cols; ++x)
        {
            largest = std::max(largest, row[x]);
        }
    }
    return largest;
}

bool AreZones(cv::Mat const & labels)
{
    return common::IsRaster(labels) && labels.type() == CV_32SC1;
}

template <class Asks>
bool FillGraph(cv::Mat const & labels, eConnexityType type, Asks asks, Graph & graph)
{
    graph.Clear();
    graph.Resize(static_cast<std::size_t>(LargestLabel(labels)) + 1);
    if (labels.empty()) return true;
    Contacts<Asks> contacts(labels, Connexity(type), std::move(asks), graph);
    for (int y = 0; y < labels.rows; ++y)
    {
        contacts.AddOfRow(y);
    }
    return true;
}

/// Fills the graph with the contacts at which a condition on the values of an image holds.
///
/// @tparam Condition DeltaConnected or DeltaNoConnected
template <template <class> class Condition>
bool FillGraphWhere(cv::Mat const & image, cv::Mat const & labels, eConnexityType type, double delta, Graph & graph)
{
    if (!AreZones(labels) || !SameSize(image, labels)) return false;
    return VisitElement(image, [&]<class T> {
        auto asks = [&image,
                     condition = Exactly<Condition<T>>(delta)](cv::Point const & from, cv::Point const & to) mutable {
            T const value = image.ptr<T>(from.y)[from.x];
            return condition.IsConnected(from, value, to, image.ptr<T>(to.y)[to.x], from, value);
        };
        return FillGraph(labels, type, std::move(asks), graph);
    });
}

} // namespace

bool ExtractGraph(cv::Mat const & labels, eConnexityType const & connexity, Graph & graph)
{
    if (!AreZones(labels)) return false;
    return FillGraph(
        labels, connexity, [](cv::Point const &, cv::Point const &) { return true; }, graph);
}

bool ExtractGraphWithDeltaConnectedCondition(
    cv::Mat const & image, cv::Mat const & labels, eConnexityType const & connexity, double delta, Graph & graph)
{
    return FillGraphWhere<DeltaConnected>(image, labels, connexity, delta, graph);
}

bool ExtractGraphWithDeltaNoConnectedCondition(
    cv::Mat const & image, cv::Mat const & labels, eConnexityType const & connexity, double delta, Graph & graph)
{
    return FillGraphWhere<DeltaNoConnected>(image, labels, connexity, delta, graph);
}

bool LabelFlatZonesWithGraph(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels)
{
    // No graph is built, as nobody would see it: only the labels leave.
    return IsSingleChannel(image) && LabelFlatZones(image, connexity, labels);
}

} // namespace morvane::connexity
