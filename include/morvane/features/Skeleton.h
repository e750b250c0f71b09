/// @file
/// Skeletons: shapes reduced to lines, and lines cut into straight segments.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <map>
#include <utility>

namespace morvane::features
{

/// How thinning() decides which pixels may go. Any other value lets none go.
enum ThinningTypes : int
{
    ThinningZhangSuen = 0, ///< one 0-1 transition around the pixel, 2 to 6 neighbours
    ThinningGuoHall = 1,   ///< one connected side, 2 to 3 neighbours in pairs: thinner diagonals
};

/// The straight segments of a skeleton: the two ends of each, under its label.
using SegmentMap = std::map<int, std::pair<cv::Point, cv::Point>>;

/// Thins a shape to lines of one pixel, from all sides in turns, without parting it.
///
/// One iteration has two halves, each of which removes all pixels at once that its tests allow, read from the image
/// before the half. Pixels of the outermost rows and columns are never removed. By ThinningZhangSuen, parts that have
/// come down to a square of four pixels vanish, and diagonal lines of two pixels' width are shortened to their middle.
///
/// @param src `CV_8UC1`; from 128 on a pixel belongs to the shape
/// @param dst becomes `CV_8UC1` of the same size: 255 on the skeleton, 0 elsewhere; may be @p src
/// @param type the tests
/// @param maxIterations after which it ends at the latest; 0 or less for no limit. It ends when an iteration changes
///         nothing.
/// @throws cv::Exception for other types of @p src; std::bad_alloc when memory runs out
///
/// Cost: O(pixels), and O(1) for each pixel that is removed, whatever the number of iterations. One thread.
///
/// @code
/// cv::Mat skeleton;
/// morvane::features::thinning(shape, skeleton, morvane::features::ThinningGuoHall, 0);
/// @endcode
///
/// Source: T. Y. Zhang and C. Y. Suen, "A fast parallel algorithm for thinning digital patterns", 1984; Z. Guo and R.
/// W. Hall, "Parallel thinning with two-subiteration algorithms", 1989.
MORVANE_EXPORT void thinning(cv::InputArray src, cv::OutputArray dst, ThinningTypes type, int maxIterations);

/// Reduces a shape, or the bright parts of a grey image, to what openings of growing size take away, joined to lines.
///
/// Adds up, while eroding step by step until nothing is left, what each opening would remove; dilates the sum by an
/// element of the shape and twice the size, erodes it by a cross of twice the size, and drops 8-connected parts below 5
/// pixels.
///
/// @param src one channel, at least 3 rows and columns; `CV_8U`
/// @param dst becomes `CV_8UC1` of the same size
/// @param shape of the elements of the erosions
/// @param kernelSize their size; it also ends when an erosion changes nothing, as with size 1, or without an empty
///         pixel
/// @return true when `dst` was written; false, with it untouched, for several channels, fewer rows or columns, or more
///         than two dimensions
/// @throws cv::Exception for other depths, and for a shape or size that OpenCV refuses; `dst` is then as it was
///
/// Cost: O(pixels) for each erosion. OpenCV's threads. `src` and `dst` may be the same object.
///
/// Source: C. Lantuejoul, "Skeletonization in quantitative metallography", 1980.
[[nodiscard]] MORVANE_EXPORT bool
ExtractSkeletonByErosion(cv::Mat const & src, cv::Mat & dst, cv::MorphShapes shape, int kernelSize);

/// Cuts a skeleton where it forks, and replaces each branch by straight segments.
///
/// @param skeleton 1 to 4 channels, any accepted depth: lines of pixels that are not empty; where the values of two
///        neighbours differ, it is cut, too
/// @param tolerance how far, in pixels, a pixel of a branch may lie from the segments
/// @param segments becomes `CV_32SC1` of the same size: each segment is drawn with its label, later ones over earlier
///         ones
/// @param ends the ends of each segment under its label; not cleared: labels go on from the largest that is there, and
///        entries that are there stay
/// @return true when all was done; false, with the outputs untouched, for an empty image, a refused depth, more than 4
///         channels, or more than two dimensions
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels), and again what is left of a piece for each branch cut off it, and for each segment the box of its
/// branch. One thread. The arguments must not overlap.
///
/// @code
/// morvane::features::SegmentMap ends;
/// bool const done = morvane::features::ExtractSegmentsFromSkeleton(skeleton, 1.5, segments, ends);
/// @endcode
///
/// Source of the segments: D. Douglas and T. Peucker, "Algorithms for the reduction of the number of points required to
/// represent a digitized line", 1973.
[[nodiscard]] MORVANE_EXPORT bool
ExtractSegmentsFromSkeleton(cv::Mat const & skeleton, double tolerance, cv::Mat & segments, SegmentMap & ends);

/// The steps of ExtractSegmentsFromSkeleton().
namespace skeleton_internals
{

/// Labels the branches of a skeleton: each runs from an end of the longest path to where what is left falls apart.
///
/// Pieces wait in a queue. The branch of the first is cut off; what is left of it goes to the end of the queue, in
/// pieces.
///
/// @param skeleton as for ExtractSegmentsFromSkeleton()
/// @param labels `CV_32SC1` of the same size, set to 0 by the caller; becomes the branches, from 1
/// @return true when all is labelled; false as ExtractSegmentsFromSkeleton(), and for `labels` of another type or size
/// @throws std::bad_alloc, cv::Exception when memory runs out
[[nodiscard]] MORVANE_EXPORT bool SplitSkeletonBySegments(cv::Mat const & skeleton, cv::Mat & labels);

/// Grows from a seed inside a zone, step by step, while what is left of the zone is in one piece.
///
/// @param zone one channel, 0 outside
/// @param seed of the type and size of @p zone
/// @param out a header whose pixels are the caller's, of the type and size of @p zone: what has been reached one step
///        after the rest fell apart, or was used up
/// @return true when `out` was written; false for an empty zone and when a step fails. Where the seed reaches no more
///         of a rest in one piece, this ends with what was reached.
/// @throws cv::Exception for a depth that OpenCV does not dilate; std::bad_alloc, cv::Exception when memory runs out
[[nodiscard]] MORVANE_EXPORT bool
FindMainSegmentUntilBifurcation(cv::Mat const & zone, cv::Mat const & seed, cv::Mat out);

/// Tells whether distances can be measured inside a zone.
///
/// What is measured is not handed back.
///
/// @param zone one channel
/// @param seed not looked at
/// @param size not looked at
/// @return false for an empty zone and where GeodesicDistance() refuses
/// @throws std::bad_alloc, cv::Exception when memory runs out
[[nodiscard]] MORVANE_EXPORT bool
FindAdaptedKernelForImageProcessing(cv::Mat const & zone, cv::Mat const & seed, int size);

/// Replaces each labelled branch by straight segments. Branches of one pixel are passed over.
///
/// @param labels `CV_32SC1`: branches from 1
/// @param tolerance as for ExtractSegmentsFromSkeleton()
/// @param segments `CV_32SC1` of the same size, drawn into
/// @param ends as for ExtractSegmentsFromSkeleton()
/// @return true; false, with the outputs untouched, for empty labels, labels of another type, and another size of
///         @p segments
/// @throws std::bad_alloc, cv::Exception when memory runs out
[[nodiscard]] MORVANE_EXPORT bool
SimplifyMultiLabeledSegments(cv::Mat const & labels, double tolerance, cv::Mat & segments, SegmentMap & ends);

/// Replaces one branch by straight segments.
///
/// @param zone the branch, one channel
/// @param tolerance as for ExtractSegmentsFromSkeleton()
/// @param firstLabel the label before the first
/// @param ends entries are added; those that are there stay
/// @return true when all was done; false, with `ends` untouched, for an empty zone, several channels, a refused depth,
///         a tolerance of NaN, and where labels would exceed 2^31 - 2
/// @throws std::bad_alloc, cv::Exception when memory runs out
[[nodiscard]] MORVANE_EXPORT bool
SimplifySegment(cv::Mat const & zone, double tolerance, int firstLabel, SegmentMap & ends);

} // namespace skeleton_internals

} // namespace morvane::features
