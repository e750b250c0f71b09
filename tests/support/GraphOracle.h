/// @file
/// The zone graph as its steps say, on lists of numbers, and graphs read into such lists.
#pragma once

#include <morvane/connexity/ZoneGraph.h>

#include "support/ImageLiterals.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <functional>
#include <utility>
#include <vector>

namespace morvane::tests
{

/// An edge as one of its ends sees it.
struct PlainEdge
{
    int source = 0;
    int target = 0;
    bool weight = false;

    bool operator==(PlainEdge const &) const = default;
};

/// All that a graph holds, in its order.
struct PlainGraph
{
    std::vector<int> names;
    std::vector<std::vector<PlainEdge>> outEdges; ///< of each vertex
    std::vector<PlainEdge> edges;

    bool operator==(PlainGraph const &) const = default;
};

/// The content of a graph, read with Boost's functions alone.
[[nodiscard]] PlainGraph ReadGraph(connexity::Graph const & graph);

/// Tells whether a graph holds just this; the message names the first difference.
[[nodiscard]] ::testing::AssertionResult EqualGraphs(connexity::Graph const & actual, PlainGraph const & expected);

/// A question about the pixel that is looked at and its neighbour.
using PixelQuestion = std::function<bool(cv::Point pixel, cv::Point neighbour)>;

/// The graph of labels, with edges only where some pair of touching pixels passes.
[[nodiscard]] PlainGraph OracleGraph(
    cv::Mat const & labels, int connexity, PixelQuestion const & passes = [](cv::Point, cv::Point) { return true; });

/// The variants of the operator.
enum class Border
{
    Any,    ///< ExtractGraph()
    Within, ///< ExtractGraphWithDeltaConnectedCondition()
    Beyond, ///< ExtractGraphWithDeltaNoConnectedCondition()
};

inline constexpr std::array kBorders{Border::Any, Border::Within, Border::Beyond};
inline constexpr std::array kConditionalBorders{Border::Within, Border::Beyond};

/// Do two pixels of an image pass? Of several channels, the first elements of each row are looked at.
[[nodiscard]] PixelQuestion DeltaQuestion(Border border, cv::Mat const & image, double delta);

/// Calls the operator of @p border; ExtractGraph() does not get the image.
[[nodiscard]] bool CallExtract(
    Border border, cv::Mat const & image, cv::Mat const & labels, int connexity, double delta,
    connexity::Graph & graph);

/// The graph that the operator makes in one that held something else; expects that it succeeds.
[[nodiscard]] connexity::Graph
Extracted(Border border, cv::Mat const & image, cv::Mat const & labels, int connexity, double delta);

/// ExtractGraph() likewise.
[[nodiscard]] connexity::Graph Extracted(cv::Mat const & labels, int connexity);

/// A graph that no operator makes: names, weights of both kinds, a double edge, a loop.
[[nodiscard]] connexity::Graph StrangeGraph();

/// The edges in their order, each as the label that it was found from and the one that it was found at.
using Joints = std::vector<std::pair<int, int>>;
[[nodiscard]] Joints JointsOf(connexity::Graph const & graph);

} // namespace morvane::tests
