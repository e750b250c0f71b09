/// @file
/// Shape descriptors: bounding rectangles, the closed shape, curves of size, corners.
///
/// Where a shape is meant, a `CV_8UC1` image is taken as it is, and of one channel of another depth every pixel that
/// does not equal 0 belongs to the shape, NaN included.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <vector>

namespace morvane::features
{

/// Finds the bounding rectangle of each outer contour.
///
/// @param src one channel, any accepted depth; at most two-dimensional
/// @param rectangles replaced by those of all 8-connected parts that lie in no hole of another, in the order of
///        `cv::findContours`
/// @return true when there is one; otherwise false, with `rectangles` as it was, which is also the answer to several
///         channels, a refused depth and an empty image
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels), a byte for each. One thread.
///
/// @code
/// std::vector<cv::Rect> boxes;
/// bool const any = morvane::features::BoundingRectangles(shape, boxes);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool BoundingRectangles(cv::Mat const & src, std::vector<cv::Rect> & rectangles);

/// Widens a rectangle to hold all of a shape.
///
/// @param src as for BoundingRectangles()
/// @param rectangle in: what is to be widened, empty for the box of this image alone; out: the union with the box of
///        the shape; where there is none, as it was
/// @return true; also when nothing of @p src can be used, as for the types that BoundingRectangles() refuses
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels). One thread.
[[nodiscard]] MORVANE_EXPORT bool MaximalBoundingRectangle(cv::Mat const & src, cv::Rect & rectangle);

/// Closes a shape by a square of 11 pixels, six times: small gaps and bays are filled. No hull is computed.
///
/// @param src as for BoundingRectangles(); pixels beyond a view never count
/// @param dst becomes the closed shape, `CV_8UC1` of the size of @p src; untouched where there is none, as for the
///        types that BoundingRectangles() refuses
/// @return true
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels). OpenCV's threads. The arguments must not overlap.
[[nodiscard]] MORVANE_EXPORT bool BoundingConvexHulls(cv::Mat const & src, cv::Mat & dst);

/// Measures how much the image varies at growing sizes: the area between its dilation and its erosion, by the size.
///
/// Entry i - 1 is `sum(dilation - erosion) / s` with elements of s = 2 i + 1 pixels, i from 1 to below the greater of
/// rows and columns. The curve ends before when a filter has made the image flat: the erosion sums to the number of
/// pixels times the minimum, or the dilation to as many times the maximum. The slope in a doubly logarithmic drawing is
/// a fractal dimension.
///
/// @param src one channel, `CV_8U`, `CV_16U`, `CV_16S`, `CV_32F` or `CV_64F`, at least 3 rows and columns; pixels
///        beyond a view never count
/// @param curve replaced
/// @param shape of the elements: `cv::MORPH_RECT`, `cv::MORPH_CROSS` or `cv::MORPH_ELLIPSE`
/// @return true when `curve` was written; false, with it untouched, for several channels, fewer rows or columns, or
///         more than two dimensions
/// @throws cv::Exception for a depth or a shape that OpenCV's morphology refuses; `curve` may then be cleared
///
/// Cost: for rectangles on integers O(pixels) for each entry; otherwise that of OpenCV's morphology, up to O(pixels
/// s^2). OpenCV's threads.
///
/// Source: S. Peleg, J. Naor, R. Hartley and D. Avnir, "Multiple resolution texture analysis and classification", 1984.
[[nodiscard]] MORVANE_EXPORT bool
MorphologicalFractalDimension(cv::Mat const & src, std::vector<double> & curve, int shape);

/// Measures what is left of an image after openings of growing size.
///
/// Entry i is the sum of the image after i openings, by elements of 3, 5, ... pixels, one after the other, divided by
/// that of the image itself: the curve starts at 1. It ends when an opening changes nothing, or the element would be
/// larger than twice the greater of rows and columns. An image that sums to 0 gives NaN.
///
/// @param src as for MorphologicalFractalDimension()
/// @param curve replaced
/// @param shape as for MorphologicalFractalDimension()
/// @return as MorphologicalFractalDimension()
/// @throws cv::Exception as MorphologicalFractalDimension()
///
/// Cost: as for MorphologicalFractalDimension().
///
/// @code
/// std::vector<double> curve;
/// bool const done = morvane::features::GranulometryByOpening(image, curve, cv::MORPH_RECT);
/// @endcode
///
/// Source: G. Matheron, "Random Sets and Integral Geometry", 1975.
[[nodiscard]] MORVANE_EXPORT bool GranulometryByOpening(cv::Mat const & src, std::vector<double> & curve, int shape);

/// As GranulometryByOpening(), with closings: the sum grows.
///
/// @param src as for MorphologicalFractalDimension()
/// @param curve replaced
/// @param shape as for MorphologicalFractalDimension()
/// @return as MorphologicalFractalDimension()
/// @throws cv::Exception as MorphologicalFractalDimension()
[[nodiscard]] MORVANE_EXPORT bool GranulometryByClosing(cv::Mat const & src, std::vector<double> & curve, int shape);

/// The response of Harris' corner detector, scaled to 0 to 255.
///
/// `cv::cornerHarris` with blocks of 2 pixels, an aperture of 7 and k = 0.04, then `cv::normalize` to the range.
///
/// @param src one channel, any depth that OpenCV converts to `CV_32F`, at least 3 rows and columns
/// @param dst becomes `CV_32FC1` of the same size
/// @return true when `dst` was written; false, with it untouched, as MorphologicalFractalDimension()
/// @throws std::bad_alloc, cv::Exception when memory runs out
///
/// Cost: O(pixels). OpenCV's threads. `src` and `dst` may be the same object.
///
/// Source: C. Harris and M. Stephens, "A combined corner and edge detector", 1988.
[[nodiscard]] MORVANE_EXPORT bool ExtractHarrisCorners(cv::Mat const & src, cv::Mat & dst);

} // namespace morvane::features
