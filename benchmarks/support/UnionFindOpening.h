/// @file
/// The other fast builder of max-trees, as a peer: immersion by union-find on sorted pixels.
#pragma once

#include <opencv2/core.hpp>

namespace benchmarks
{

/// An area opening of 8-bit, 16-bit unsigned or 32-bit images that are not negative, with 8 neighbours: pixels are sorted
/// (counted, for narrow types), immersed from the highest on, and joined in a forest with path compression and union by
/// rank, whose parents are then made those of the tree.
///
/// Source: C. Berger, T. Geraud, R. Levillain, N. Widynski, A. Baillard and E. Bertin, "Effective component tree
/// computation with application to pattern recognition in astronomical imaging", 2007.
cv::Mat UnionFindAreaOpening(cv::Mat const & image, int area);

} // namespace benchmarks
