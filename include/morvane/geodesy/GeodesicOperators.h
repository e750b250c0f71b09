/// @file
/// The elementary geodesic steps, and the distance that is made of them.
///
/// A marker grows (or shrinks) under (or above) a mask. The `shape` of every operator here is a code of
/// `cv::getStructuringElement`, 0 a rectangle, 1 a cross, 2 an ellipse, and no connexity; the element is anchored at its
/// centre. What lies outside the image counts as the least number of the type (the greatest, for erosions), finite also in
/// floating-point types; a parent matrix around a view never contributes.
///
/// Source: C. Lantuejoul and F. Maisonneuve, "Geodesic methods in quantitative image analysis", 1984.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

namespace morvane::geodesy
{

/// One geodesic dilation: the marker, clipped by the mask, dilated once and clipped again.
///
/// | array    | shape                               | depths                                    | channels | values |
/// |----------|-------------------------------------|-------------------------------------------|----------|--------|
/// | `marker` | rows x cols                         | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32F`, `CV_64F` | 1 to 4 | any |
/// | `mask`   | rows x cols                         | that of `marker`                          | those of `marker` | any |
/// | `out`    | rows x cols, or empty and then made | that of `marker`                          | those of `marker` | min(dilated, `mask`) |
///
/// @param marker, mask see the table
/// @param shape code of `cv::getStructuringElement`
/// @param out overwritten; an allocated matrix of another size or type is refused, not replaced
/// @param kernelSize side of the element, from 1 on; 1 gives min(`marker`, `mask`)
/// @return true when the step was done and `out` is not empty. False when `marker` and `mask` differ in type, with `out`
///         untouched; or, after an empty `out` was made, when `out` has another type, `mask` or `out` another size, or an
///         image has more than two dimensions.
/// @throws cv::Exception as OpenCV's morphology does, which takes neither `CV_32S` nor `CV_8S` nor `CV_16F`, no more than 4
///         channels, no images without pixels, nor other shapes and sizes; `out` may then have been written
///
/// Cost: one dilation of OpenCV. One thread of ours. `out` may be the same matrix as `marker`; where it is that of
/// `mask`, the mask is read after it was overwritten, which changes the result but stays in bounds.
[[nodiscard]] MORVANE_EXPORT bool
GeoDilate(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out, int kernelSize);

/// One geodesic erosion: the marker, raised to the mask, eroded once by an element of 3 by 3 and raised again.
///
/// Unlike GeoDilate(), this operator has no size of the element.
///
/// @param marker, mask, shape, out as for GeoDilate(), with max(eroded, `mask`) as result
/// @return as GeoDilate()
/// @throws cv::Exception as GeoDilate()
///
/// Cost, threads and aliasing as for GeoDilate().
[[nodiscard]] MORVANE_EXPORT bool GeoErode(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out);

/// The geodesic distance of each pixel of the mask from the marker, in steps of an element of 3 by 3, plus one.
///
/// | array    | shape                               | depths                                    | channels | values |
/// |----------|-------------------------------------|-------------------------------------------|----------|--------|
/// | `marker` | rows x cols                         | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32F`, `CV_64F` | 1 | not 0 where distances start |
/// | `mask`   | rows x cols                         | that of `marker`                          | 1        | not 0 where paths may lead |
/// | `out`    | rows x cols, or empty and then made | that of `marker`                          | 1        | see below |
///
/// A pixel of the marker inside the mask holds 1, one that is reached after k steps k + 1, one that is never reached 0.
/// A pixel of the marker outside the mask holds the largest value of the image. NaN counts as not 0.
///
/// The distance is a count of the steps that were still to come, kept in the type of the images, which saturates:
/// 255 in `CV_8U`, 65535, 32767, 2^24 in `CV_32F`. Where it does, after more than 254 steps in `CV_8U`, the pixels
/// nearest to the marker all hold 1 and the others one more than their distance from the farthest of those; from one step
/// earlier on, pixels that are never reached hold the largest number of the type in place of 0. In `CV_32F`, where 2^24
/// plus one is rounded, all of these distances come out one lower once the count saturates.
///
/// @param marker, mask see the table
/// @param shape code of `cv::getStructuringElement`; looked at in images of more than one pixel
/// @param out overwritten; an allocated matrix of another size or type is refused, not replaced
/// @return true when the distances were written. False when `marker` or `mask` is empty, with `out` untouched; or, after
///         an empty `out` was made like the mask, when the three differ in type or size, have more than one channel or
///         two dimensions, or depth `CV_8S` or `CV_16F`.
/// @throws cv::Exception for `CV_32S` images of more than one pixel and for other shapes, as OpenCV's dilation does;
///         std::bad_alloc when memory runs out
///
/// Cost: O(pixels) time, whatever the distances: one breadth-first flood. About 5 bytes and an element of the
/// type for each pixel, and up to 16 bytes for each step of the largest distance. One thread. `out` may be the same matrix as `marker` or `mask`.
[[nodiscard]] MORVANE_EXPORT bool
GeodesicDistance(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Mat & out);

} // namespace morvane::geodesy
