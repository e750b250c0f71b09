/// @file
/// The zone graph: which zones of a label image touch.
#pragma once

#include <morvane/Export.h>
#include <morvane/common/Graph.h>
#include <morvane/connexity/Connexity.h>

#include <boost/graph/properties.hpp>
#include <opencv2/core.hpp>

namespace morvane::connexity
{

/// An undirected graph of zones: vertex n is the zone of label n, and vertex 0, which is no zone, has no edges.
using Graph = common::Graph_T<int, bool, 0, boost::vertex_name_t, boost::edge_weight_t>;

/// Joins each two labels that touch with one edge.
///
/// Pixels above 0 are taken in raster order, their neighbours in the order of the offsets; the first pair of pixels of
/// two labels adds their edge, from the label of the pixel to that of the neighbour, with the weight false. Labels that
/// touch nothing, or do not occur, are vertices without edges.
///
/// A neighbour outside the rows is none. With a wrapped shape, a neighbour beyond the first or last column is the pixel
/// of the opposite edge column itself, also for offsets of 2; otherwise it is none.
///
/// | array    | shape       | depth    | channels | values |
/// |----------|-------------|----------|----------|--------|
/// | `labels` | rows x cols | `CV_32S` | 1        | above 0 a zone; others none |
///
/// @param labels see the table
/// @param connexity the neighbourhood; a value outside the table of eConnexityType gives no edges
/// @param graph cleared, then filled: the largest label + 1 vertices, or 1 without a zone, with the value 0
/// @return true when the graph was filled; false, with the graph as it was, for another type or more than two
///         dimensions
/// @throws std::bad_alloc, std::length_error when memory runs out
///
/// Cost: O(pixels and neighbours), whatever the number of neighbours of a zone. About 100 bytes for each edge, 40 for
/// each vertex up to the largest label. One thread.
///
/// @code
/// morvane::connexity::Graph graph;
/// bool const done = morvane::connexity::ExtractGraph(labels, eConnexity8, graph);
/// @endcode
///
/// Source: the region adjacency graph; A. Rosenfeld and A. C. Kak, "Digital Picture Processing", 1982.
[[nodiscard]] MORVANE_EXPORT bool ExtractGraph(cv::Mat const & labels, eConnexityType const & connexity, Graph & graph);

/// As ExtractGraph(), with an edge only where two touching pixels of the labels differ by at most a delta in an image.
///
/// The pairs along a common border are tried until one passes.
///
/// | array    | shape       | depths                                          | channels | values |
/// |----------|-------------|-------------------------------------------------|----------|--------|
/// | `image`  | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1; of several, the first `cols` elements of each row are read | any |
/// | `labels` | rows x cols | `CV_32S`                                        | 1        | above 0 a zone; others none |
///
/// @param image see the table; NaN passes never
/// @param labels see the table
/// @param connexity as for ExtractGraph()
/// @param delta the bound, inclusive, converted as for DeltaConnected
/// @param graph as for ExtractGraph()
/// @return as ExtractGraph(); false also when the sizes differ or the depth of the image is refused
/// @throws std::bad_alloc, std::length_error when memory runs out
///
/// Cost, threads: as for ExtractGraph().
[[nodiscard]] MORVANE_EXPORT bool ExtractGraphWithDeltaConnectedCondition(
    cv::Mat const & image, cv::Mat const & labels, eConnexityType const & connexity, double delta, Graph & graph);

/// As ExtractGraph(), with an edge only where two touching pixels of the labels differ by more than a delta in an
/// image.
///
/// @param image as for ExtractGraphWithDeltaConnectedCondition()
/// @param labels as for ExtractGraphWithDeltaConnectedCondition()
/// @param connexity as for ExtractGraph()
/// @param delta the bound, exclusive, converted as for DeltaNoConnected
/// @param graph as for ExtractGraph()
/// @return as ExtractGraphWithDeltaConnectedCondition()
/// @throws std::bad_alloc, std::length_error when memory runs out
///
/// Cost, threads: as for ExtractGraph().
[[nodiscard]] MORVANE_EXPORT bool ExtractGraphWithDeltaNoConnectedCondition(
    cv::Mat const & image, cv::Mat const & labels, eConnexityType const & connexity, double delta, Graph & graph);

/// Labels the zones of equal values of an image of one channel: LabelFlatZones(), and nothing else.
///
/// The graph of the name never leaves the operator. To have one, give the labels to ExtractGraph().
///
/// @param image one channel, any accepted depth
/// @param connexity the neighbourhood
/// @param labels as for LabelFlatZones(), made by the caller
/// @return true when `labels` was written. False, with `labels` untouched, when the sizes differ, the image has more
///         than one channel, a depth is refused, or a matrix has more than two dimensions.
/// @throws std::bad_alloc, std::length_error when memory runs out
///
/// Cost, memory, threads, aliasing: as for LabelFlatZones().
[[nodiscard]] MORVANE_EXPORT bool
LabelFlatZonesWithGraph(cv::Mat const & image, eConnexityType const & connexity, cv::Mat & labels);

} // namespace morvane::connexity
