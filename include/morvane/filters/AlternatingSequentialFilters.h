/// @file
/// Smoothing by openings and closings in turns, with elements that grow.
///
/// Bright and dark details vanish in the order of their size, and what remains keeps its edges.
///
/// Source: S. R. Sternberg, "Grayscale morphology", Computer Vision, Graphics, and Image Processing 35, 1986; J. Serra,
/// "Image Analysis and Mathematical Morphology, volume 2", 1988, chapter 10.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

namespace morvane::filters
{

/// A closing, then an opening, by elements of 3, 5, 7, ... pixels a side.
///
/// | array | shape       | depths                                          | channels | values |
/// |-------|-------------|-------------------------------------------------|----------|--------|
/// | `src` | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32F`, `CV_64F` | any      | any    |
/// | `dst` | made        | that of `src`                                   | those of `src` | filtered |
///
/// What lies outside the image never decides: it is the greatest number for erosions and the least for dilations. A
/// parent matrix around a view does not contribute.
///
/// @param src see the table; where no filter runs (`maxSize` below 3), any type
/// @param dst overwritten, in place where it has the size and type of `src`
/// @param maxSize largest side of the element in pixels; of an even one, the odd one below counts. Below 3, `dst` is a
///        copy
/// @param shape of the element, a code of `cv::getStructuringElement`: 0 a rectangle, 1 a cross, 2 an ellipse
/// @return true when `dst` was written; false, with `dst` untouched, when `src` has fewer rows or columns than
///         `maxSize`, or more than two dimensions
/// @throws cv::Exception as OpenCV's morphology does, which takes neither `CV_32S` nor `CV_8S` nor `CV_16F`, nor other
///         shapes; `dst` may then have been written
///
/// Cost: four passes of OpenCV's morphology for each element: O(pixels * `maxSize`^2) time for a rectangle, whose
/// passes are separable, and O(pixels * `maxSize`^3) for others. One thread of ours. `src` may be `dst`.
///
/// @code
/// filters::ASF_Close(depth, smooth, 5, cv::MORPH_ELLIPSE);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool ASF_Close(cv::Mat const & src, cv::Mat & dst, int maxSize, int shape);

/// An opening, then a closing, by elements of 3, 5, 7, ... pixels a side.
///
/// Everything else as for ASF_Close().
[[nodiscard]] MORVANE_EXPORT bool ASF_Open(cv::Mat const & src, cv::Mat & dst, int maxSize, int shape);

} // namespace morvane::filters
