#include "support/GraphOracle.h"

#include "support/AllTypes.h"
#include "support/Oracles.h"

#include <boost/graph/adjacency_list.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>

namespace morvane::tests
{

namespace
{

/// The edge at an index in words.
std::string EdgeText(std::vector<PlainEdge> const & edges, std::size_t index)
{
    if (index >= edges.size()) return "none";
    PlainEdge const & edge = edges[index];
    return std::to_string(edge.source) + " to " + std::to_string(edge.target) + (edge.weight ? " weighing true" : "");
}

/// The first place where two lists of edges differ; for lists that do.
::testing::AssertionResult EdgesDiffer(std::vector<PlainEdge> const & actual, std::vector<PlainEdge> const & expected)
{
    std::size_t index = 0;
    while (index < actual.size() && index < expected.size() && actual[index] == expected[index])
    {
        ++index;
    }
    return ::testing::AssertionFailure() << "edge " << index << ": actual " << EdgeText(actual, index) << ", expected "
                                         << EdgeText(expected, index);
}

/// The low 32 bits, read with a sign.
int Low32(std::int64_t value)
{
    return static_cast<int>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(value)));
}

/// The bound as an integer type holds it: cut to 32 bits, of which the low ones stay. What does not fit 32 bits reads as
/// their smallest number.
int BoundOf(double delta, int depth)
{
    double const cut = std::trunc(delta);
    bool const fits = cut >= -2147483648.0 && cut <= 2147483647.0;
    int const whole = fits ? static_cast<int>(cut) : std::numeric_limits<int>::min();
    if (depth == CV_8U) return static_cast<int>(static_cast<unsigned>(whole) % 256U);
    int const low = static_cast<int>(static_cast<unsigned>(whole) % 65536U);
    if (depth == CV_16U) return low;
    if (depth == CV_16S) return low > 32767 ? low - 65536 : low;
    return whole;
}

template <class T>
bool Passes(Border border, T difference, T bound)
{
    return border == Border::Within ? difference <= bound : difference > bound;
}

template <class T>
bool FloatsPass(Border border, T one, T other, double delta)
{
    T const difference = one > other ? one - other : other - one;
    return Passes(border, difference, static_cast<T>(delta));
}

bool ValuesPass(Border border, double one, double other, int depth, double delta)
{
    if (depth == CV_64F) return FloatsPass(border, one, other, delta);
    if (depth == CV_32F) return FloatsPass(border, static_cast<float>(one), static_cast<float>(other), delta);
    auto const larger = static_cast<std::int64_t>(std::max(one, other));
    auto const smaller = static_cast<std::int64_t>(std::min(one, other));
    return Passes(border, Low32(larger - smaller), BoundOf(delta, depth));
}

} // namespace

PlainGraph ReadGraph(connexity::Graph const & graph)
{
    auto const & boostGraph = graph.BoostGraph();
    auto const plainEdge = [&](auto const & edge) {
        return PlainEdge{
            static_cast<int>(boost::source(edge, boostGraph)), static_cast<int>(boost::target(edge, boostGraph)),
            boost::get(boost::edge_weight, boostGraph, edge)};
    };
    PlainGraph plain;
    auto const [firstVertex, lastVertex] = boost::vertices(boostGraph);
    for (auto vertex = firstVertex; vertex != lastVertex; ++vertex)
    {
        plain.names.push_back(boost::get(boost::vertex_name, boostGraph, *vertex));
        auto & outEdges = plain.outEdges.emplace_back();
        auto const [first, last] = boost::out_edges(*vertex, boostGraph);
        std::transform(first, last, std::back_inserter(outEdges), plainEdge);
    }
    auto const [first, last] = boost::edges(boostGraph);
    std::transform(first, last, std::back_inserter(plain.edges), plainEdge);
    return plain;
}

::testing::AssertionResult EqualGraphs(connexity::Graph const & actual, PlainGraph const & expected)
{
    PlainGraph const plain = ReadGraph(actual);
    if (plain.names.size() != expected.names.size() || actual.VertexCount() != expected.names.size())
    {
        return ::testing::AssertionFailure() << "actual vertices " << plain.names.size() << ", counted "
                                             << actual.VertexCount() << ", expected " << expected.names.size();
    }
    if (actual.EdgeCount() != plain.edges.size())
    {
        return ::testing::AssertionFailure() << actual.EdgeCount() << " edges counted of " << plain.edges.size();
    }
    if (plain.edges != expected.edges) return EdgesDiffer(plain.edges, expected.edges) << ", of all edges";
    for (std::size_t vertex = 0; vertex < plain.names.size(); ++vertex)
    {
        if (plain.names[vertex] != expected.names[vertex])
        {
            return ::testing::AssertionFailure() << "name of vertex " << vertex << " is " << plain.names[vertex]
                                                 << ", expected " << expected.names[vertex];
        }
        if (plain.outEdges[vertex] != expected.outEdges[vertex])
        {
            return EdgesDiffer(plain.outEdges[vertex], expected.outEdges[vertex]) << ", of vertex " << vertex;
        }
    }
    return ::testing::AssertionSuccess();
}

PlainGraph OracleGraph(cv::Mat const & labels, int connexity, PixelQuestion const & passes)
{
    int largest = 0;
    for (int y = 0; y < labels.rows; ++y)
    {
        for (int x = 0; x < labels.cols; ++x)
        {
            largest = std::max(largest, labels.at<int>(y, x));
        }
    }
    PlainGraph graph;
    graph.names.resize(static_cast<std::size_t>(largest) + 1, 0);
    graph.outEdges.resize(static_cast<std::size_t>(largest) + 1);
    for (int y = 0; y < labels.rows; ++y)
    {
        for (int x = 0; x < labels.cols; ++x)
        {
            int const label = labels.at<int>(y, x);
            if (label <= 0) continue;
            for (cv::Point const & offset : OracleOffsets(connexity))
            {
                cv::Point q(x + offset.x, y + offset.y);
                if (q.y < 0 || q.y >= labels.rows) continue;
                if (q.x < 0)
                {
                    if (!OracleWraps(connexity)) continue;
                    q.x = labels.cols - 1;
                }
                else if (q.x >= labels.cols)
                {
                    if (!OracleWraps(connexity)) continue;
                    q.x = 0;
                }
                int const other = labels.at<int>(q);
                if (other < 1 || other == label) continue;
                if (!passes({x, y}, q)) continue;
                auto & list = graph.outEdges[static_cast<std::size_t>(label)];
                if (std::any_of(list.begin(), list.end(), [&](PlainEdge const & edge) { return edge.target == other; }))
                {
                    continue;
                }
                graph.edges.push_back({label, other, false});
                list.push_back({label, other, false});
                graph.outEdges[static_cast<std::size_t>(other)].push_back({other, label, false});
            }
        }
    }
    return graph;
}

PixelQuestion DeltaQuestion(Border border, cv::Mat const & image, double delta)
{
    auto const element = [image](cv::Point p) {
        return ElementAt(image, p.y, p.x / image.channels(), p.x % image.channels());
    };
    return [=, depth = image.depth()](cv::Point pixel, cv::Point neighbour) {
        return ValuesPass(border, element(pixel), element(neighbour), depth, delta);
    };
}

bool CallExtract(
    Border border, cv::Mat const & image, cv::Mat const & labels, int connexity, double delta, connexity::Graph & graph)
{
    switch (border)
    {
    case Border::Within:
        return connexity::ExtractGraphWithDeltaConnectedCondition(image, labels, Shape(connexity), delta, graph);
    case Border::Beyond:
        return connexity::ExtractGraphWithDeltaNoConnectedCondition(image, labels, Shape(connexity), delta, graph);
    default:
        return connexity::ExtractGraph(labels, Shape(connexity), graph);
    }
}

connexity::Graph Extracted(Border border, cv::Mat const & image, cv::Mat const & labels, int connexity, double delta)
{
    connexity::Graph graph = StrangeGraph();
    EXPECT_TRUE(CallExtract(border, image, labels, connexity, delta, graph));
    return graph;
}

connexity::Graph Extracted(cv::Mat const & labels, int connexity)
{
    return Extracted(Border::Any, {}, labels, connexity, 0.0);
}

connexity::Graph StrangeGraph()
{
    connexity::Graph graph;
    graph.Resize(7);
    for (int vertex = 0; vertex < 7; ++vertex)
    {
        boost::put(boost::vertex_name, graph.BoostGraph(), static_cast<std::size_t>(vertex), 100 - 30 * vertex);
    }
    graph.AddEdge(0, 1, true);
    graph.AddEdge(6, 2, false);
    graph.AddEdge(2, 6, true);
    graph.AddEdge(3, 3, true);
    graph.AddEdge(1, 2, false);
    return graph;
}

Joints JointsOf(connexity::Graph const & graph)
{
    Joints joints;
    for (PlainEdge const & edge : ReadGraph(graph).edges)
    {
        joints.emplace_back(edge.source, edge.target);
    }
    return joints;
}

} // namespace morvane::tests
