// The graph of numbered vertices: what it holds, in which order, and what Boost's algorithms find in it.
#include <morvane/common/Graph.h>
#include <morvane/connexity/ZoneGraph.h>

#include "support/GraphOracle.h"

#include <boost/graph/connected_components.hpp>
#include <boost/graph/graph_traits.hpp>
#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace morvane::common
{

namespace
{

using connexity::Graph;
using tests::EqualGraphs;
using tests::PlainGraph;
using tests::ReadGraph;

static_assert(std::is_same_v<Graph, Graph_T<int, bool, 0, boost::vertex_name_t, boost::edge_weight_t>>);
static_assert(
    std::is_same_v<
        Graph::Boost, boost::adjacency_list<
                          boost::listS, boost::vecS, boost::undirectedS, boost::property<boost::vertex_name_t, int>,
                          boost::property<boost::edge_weight_t, bool>>>);

PlainGraph Expected(std::vector<int> names, std::vector<tests::PlainEdge> edges)
{
    PlainGraph plain{std::move(names), {}, std::move(edges)};
    plain.outEdges.resize(plain.names.size());
    for (auto const & [source, target, weight] : plain.edges)
    {
        plain.outEdges[static_cast<std::size_t>(source)].push_back({source, target, weight});
        plain.outEdges[static_cast<std::size_t>(target)].push_back({target, source, weight});
    }
    return plain;
}

TEST(Graph, IsEmptyAtFirst)
{
    Graph const graph;
    EXPECT_EQ(graph.VertexCount(), 0U);
    EXPECT_EQ(graph.EdgeCount(), 0U);
    EXPECT_TRUE(EqualGraphs(graph, {}));
    EXPECT_FALSE(graph.HasEdge(0, 0));
}

TEST(Graph, NewVerticesHaveTheValue0AndNoEdges)
{
    Graph graph;
    graph.Resize(3);
    EXPECT_TRUE(EqualGraphs(graph, Expected({0, 0, 0}, {})));
    boost::put(boost::vertex_name, graph.BoostGraph(), 1U, 9);
    graph.AddEdge(1, 2, true);
    graph.Resize(5);
    EXPECT_TRUE(EqualGraphs(graph, Expected({0, 9, 0, 0, 0}, {{1, 2, true}})));
}

TEST(Graph, EdgesAreListedInTheOrderInWhichTheyCame)
{
    Graph graph;
    graph.Resize(4);
    graph.AddEdge(2, 3, false);
    graph.AddEdge(3, 0, true);
    graph.AddEdge(1, 3, false);
    graph.AddEdge(3, 2, true);
    EXPECT_EQ(graph.VertexCount(), 4U);
    EXPECT_EQ(graph.EdgeCount(), 4U);
    PlainGraph const expected{
        {0, 0, 0, 0},
        {{{0, 3, true}},
         {{1, 3, false}},
         {{2, 3, false}, {2, 3, true}},
         {{3, 2, false}, {3, 0, true}, {3, 1, false}, {3, 2, true}}},
        {{2, 3, false}, {3, 0, true}, {1, 3, false}, {3, 2, true}}};
    EXPECT_TRUE(EqualGraphs(graph, expected));
}

TEST(Graph, HasAnEdgeInBothDirections)
{
    Graph graph;
    graph.Resize(5);
    graph.AddEdge(3, 1, false);
    graph.AddEdge(0, 3, false);
    for (std::size_t u = 0; u < 5; ++u)
    {
        for (std::size_t v = 0; v < 5; ++v)
        {
            bool const isFirst = (u == 3 && v == 1) || (u == 1 && v == 3);
            bool const isSecond = (u == 0 && v == 3) || (u == 3 && v == 0);
            EXPECT_EQ(graph.HasEdge(u, v), isFirst || isSecond) << u << ", " << v;
        }
    }
}

TEST(Graph, HasNoEdgeAtVerticesThatDoNotExist)
{
    Graph graph;
    graph.Resize(2);
    graph.AddEdge(0, 1, false);
    constexpr std::size_t farthest = std::numeric_limits<std::size_t>::max();
    for (std::size_t const vertex : {std::size_t{2}, std::size_t{3}, farthest})
    {
        EXPECT_FALSE(graph.HasEdge(vertex, 0));
        EXPECT_FALSE(graph.HasEdge(1, vertex));
        EXPECT_FALSE(graph.HasEdge(vertex, vertex));
    }
}

TEST(Graph, VertexMayBeJoinedWithItself)
{
    Graph graph;
    graph.Resize(2);
    EXPECT_FALSE(graph.HasEdge(1, 1));
    graph.AddEdge(1, 1, true);
    EXPECT_TRUE(graph.HasEdge(1, 1));
    EXPECT_FALSE(graph.HasEdge(0, 0));
    EXPECT_EQ(graph.EdgeCount(), 1U);
}

TEST(Graph, ClearRemovesEdgesAndVertices)
{
    Graph graph = tests::StrangeGraph();
    graph.Clear();
    EXPECT_TRUE(EqualGraphs(graph, {}));
    graph.Resize(7);
    EXPECT_TRUE(EqualGraphs(graph, Expected({0, 0, 0, 0, 0, 0, 0}, {}))) << "something of the old graph came back";
}

TEST(Graph, VerticesThatLeaveTakeTheirEdgesWithThem)
{
    Graph graph;
    graph.Resize(5);
    for (std::size_t vertex = 0; vertex < 5; ++vertex)
    {
        boost::put(boost::vertex_name, graph.BoostGraph(), vertex, static_cast<int>(10 * vertex));
    }
    graph.AddEdge(0, 4, true);
    graph.AddEdge(2, 1, true);
    graph.AddEdge(4, 4, false);
    graph.AddEdge(3, 0, false);
    graph.AddEdge(0, 1, false);
    graph.Resize(4);
    EXPECT_TRUE(EqualGraphs(graph, Expected({0, 10, 20, 30}, {{2, 1, true}, {3, 0, false}, {0, 1, false}})));
    graph.Resize(2);
    EXPECT_TRUE(EqualGraphs(graph, Expected({0, 10}, {{0, 1, false}})));
    graph.Resize(3);
    EXPECT_TRUE(EqualGraphs(graph, Expected({0, 10, 0}, {{0, 1, false}}))) << "a vertex came back with its old value";
    graph.Resize(0);
    EXPECT_TRUE(EqualGraphs(graph, {}));
}

TEST(Graph, CopiesAreDeepAndKeepEveryOrder)
{
    Graph const original = tests::StrangeGraph();
    PlainGraph const content = ReadGraph(original);
    // A copy, and one over a graph that held something else.
    Graph copy(original);
    EXPECT_TRUE(EqualGraphs(copy, content));
    Graph assigned;
    assigned.Resize(9);
    assigned.AddEdge(8, 1, true);
    assigned = original;
    EXPECT_TRUE(EqualGraphs(assigned, content));

    copy.AddEdge(0, 4, true);
    boost::put(boost::vertex_name, copy.BoostGraph(), 0U, -8);
    assigned.Clear();
    EXPECT_TRUE(EqualGraphs(original, content));
}

TEST(Graph, IsWhatBoostsAlgorithmsTake)
{
    Graph graph;
    graph.Resize(6);
    graph.AddEdge(1, 4, false);
    graph.AddEdge(5, 2, false);
    graph.AddEdge(4, 3, false);
    std::vector<int> parts(graph.VertexCount());
    EXPECT_EQ(boost::connected_components(std::as_const(graph).BoostGraph(), parts.data()), 3);
    EXPECT_EQ(parts, (std::vector{0, 1, 2, 1, 1, 2}));
    // What is done to the graph of Boost is done to this one.
    boost::remove_edge(4U, 3U, graph.BoostGraph());
    EXPECT_FALSE(graph.HasEdge(3, 4));
    EXPECT_EQ(graph.EdgeCount(), 2U);
}

TEST(Graph, HoldsValuesOfOtherTypes)
{
    Graph_T<std::string, double, 3, boost::vertex_name_t, boost::edge_weight_t> graph;
    graph.Resize(2);
    graph.AddEdge(0, 1, 2.5);
    auto & inside = graph.BoostGraph();
    EXPECT_EQ(boost::get(boost::vertex_name, inside, 1U), "");
    boost::put(boost::vertex_name, inside, 1U, "door");
    EXPECT_EQ(boost::get(boost::vertex_name, inside, 1U), "door");
    EXPECT_EQ(boost::get(boost::edge_weight, inside, boost::edge(1U, 0U, inside).first), 2.5);
}

} // namespace

} // namespace morvane::common
