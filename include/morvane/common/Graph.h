/// @file
/// An undirected graph over numbered vertices, on Boost.Graph.
#pragma once

#include <boost/graph/adjacency_list.hpp>
#include <boost/pending/property.hpp>

#include <algorithm>
#include <cstddef>

namespace morvane::common
{

/// An undirected graph whose vertices are the numbers from 0, each with one value, and whose edges carry one value.
///
/// A thin holder of a `boost::adjacency_list` with list-based out-edges and vector-based vertices: what is not here is
/// done with Boost's algorithms on BoostGraph(). A vertex lists its edges in the order in which they were added. Two
/// vertices may be joined by several edges, and a vertex with itself: ask HasEdge() first where that is not wanted.
///
/// Copies are deep. Every operation that adds may throw std::bad_alloc or std::length_error.
///
/// @code
/// morvane::connexity::Graph graph;
/// graph.Resize(3);
/// graph.AddEdge(1, 2, false);
/// std::vector<int> parts(graph.VertexCount());
/// int const count = boost::connected_components(graph.BoostGraph(), parts.data());
/// @endcode
///
/// @tparam V value of a vertex
/// @tparam E value of an edge
/// @tparam K a number that only tells instances apart; 0 in the one that is used
/// @tparam VTag Boost's tag of the vertices' value, such as `boost::vertex_name_t`
/// @tparam ETag Boost's tag of the edges' value, such as `boost::edge_weight_t`
template <class V, class E, int K, class VTag, class ETag>
class Graph_T
{
public:
    /// The graph as Boost knows it.
    using Boost = boost::adjacency_list<
        boost::listS, boost::vecS, boost::undirectedS, boost::property<VTag, V>, boost::property<ETag, E>>;

    /// Removes all edges and all vertices.
    void Clear() { m_graph.clear(); }

    /// Makes the vertices be the numbers below @p vertices: new ones come with a value-initialised value and no edges,
    /// and those from @p vertices on leave with their edges. O(1) for each that comes, O(edges) for each that leaves.
    void Resize(std::size_t vertices)
    {
        while (VertexCount() > vertices)
        {
            std::size_t const last = VertexCount() - 1;
            boost::clear_vertex(last, m_graph);
            boost::remove_vertex(last, m_graph);
        }
        while (VertexCount() < vertices)
        {
            boost::add_vertex(m_graph);
        }
    }

    /// Joins two vertices, both below VertexCount(), which is not checked. O(1).
    void AddEdge(std::size_t u, std::size_t v, E weight) { boost::add_edge(u, v, weight, m_graph); }

    /// Tells whether an edge joins two vertices, in either direction; false for vertices that do not exist. O(edges of
    /// u).
    [[nodiscard]] bool HasEdge(std::size_t u, std::size_t v) const
    {
        if (u >= VertexCount() || v >= VertexCount()) return false;
        auto const [first, last] = boost::out_edges(u, m_graph);
        return std::any_of(first, last, [&](auto const & edge) { return boost::target(edge, m_graph) == v; });
    }

    /// The number of vertices.
    [[nodiscard]] std::size_t VertexCount() const { return boost::num_vertices(m_graph); }

    /// The number of edges.
    [[nodiscard]] std::size_t EdgeCount() const { return boost::num_edges(m_graph); }

    /// The graph itself, for Boost's algorithms.
    [[nodiscard]] Boost & BoostGraph() { return m_graph; }
    /// @copydoc BoostGraph()
    [[nodiscard]] Boost const & BoostGraph() const { return m_graph; }

private:
    Boost m_graph;
};

} // namespace morvane::common
