/// @file
/// Filling: values for the empty pixels of an image, from what lies around them; measured pixels stay as they are.
#pragma once

#include <morvane/Export.h>
#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

namespace morvane::algorithm
{

/// Fills pixels that are 0 from the closing of the image by a square.
///
/// Of holes, the closing fills those that the square does not fit into, with the level of their rim. Pixels that are NaN
/// stay; what becomes of empty pixels with a NaN in their square is left to OpenCV's comparisons.
///
/// | array   | shape       | depths                              | channels | values |
/// |---------|-------------|-------------------------------------|----------|--------|
/// | `image` | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32F`, `CV_64F` | 1 | any |
/// | `out`   | becomes rows x cols, or has this size and type | as `image` | 1 | filled |
///
/// @param image see the table; pixels beyond a view never count
/// @param out overwritten
/// @param size side of the square, at least 3
/// @return true when it was filled. False for a smaller size, with `out` untouched; false for several channels, with
///         the filtered image in `out`.
/// @throws cv::Exception for what OpenCV's morphology refuses: `CV_32S`, `CV_8S`, `CV_16F`, empty images, more than two
///         dimensions
///
/// Cost: O(pixels * size), in vector code. OpenCV's threads. The arguments must not overlap.
///
/// @code
/// bool const done = morvane::algorithm::FillImageWithClosing(depth, filled, 5);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool FillImageWithClosing(cv::Mat const & image, cv::Mat & out, int size);

/// Fills pixels that are 0 with the highest value inside a square around them. Otherwise as FillImageWithClosing().
///
/// @param image as for FillImageWithClosing()
/// @param out as for FillImageWithClosing()
/// @param size as for FillImageWithClosing()
/// @return as FillImageWithClosing()
/// @throws cv::Exception as FillImageWithClosing()
[[nodiscard]] MORVANE_EXPORT bool FillImageWithDilation(cv::Mat const & image, cv::Mat & out, int size);

/// Fills pixels that hold the maximum of the image with the lowest value inside a square around them.
///
/// For images in which the largest value stands for what was not measured. A constant image holds nothing else.
/// Otherwise as FillImageWithClosing().
///
/// @param image as for FillImageWithClosing()
/// @param out as for FillImageWithClosing()
/// @param size as for FillImageWithClosing()
/// @return as FillImageWithClosing()
/// @throws cv::Exception as FillImageWithClosing()
[[nodiscard]] MORVANE_EXPORT bool FillImageWithErosion(cv::Mat const & image, cv::Mat & out, int size);

/// Fills pixels that hold the maximum of the image from its opening by a square. Otherwise as FillImageWithErosion().
///
/// @param image as for FillImageWithClosing()
/// @param out as for FillImageWithClosing()
/// @param size as for FillImageWithClosing()
/// @return as FillImageWithErosion()
/// @throws cv::Exception as FillImageWithErosion()
[[nodiscard]] MORVANE_EXPORT bool FillImageWithOpening(cv::Mat const & image, cv::Mat & out, int size);

/// Fills pixels where a mask is 0 with the mean of their neighbours where it is not.
///
/// Neighbours outside the rows are taken from the nearest row. Neighbours outside the columns are taken from the
/// opposite edge column with a wrapped shape, also for offsets of 2, otherwise from the nearest column. One pixel may
/// so be several neighbours, and counts as often. Without any that counts the value is 0.
///
/// | array   | shape       | depths                                          | channels | values |
/// |---------|-------------|-------------------------------------------------|----------|--------|
/// | `image` | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1 | any; looked at only where the mask is not 0 |
/// | `mask`  | rows x cols | as `image`                                      | 1; of several, the first `cols` elements of each row are meant | 0 where a pixel is to be filled; anything else, NaN included, where it holds |
/// | `out`   | rows x cols, made by the caller | as `image`                  | as `mask` | filled |
///
/// Integers are summed in an `int`, which wraps, and divided with truncation; floating-point values are summed in their
/// own type, in the order of the offsets.
///
/// @param image see the table
/// @param mask see the table
/// @param out overwritten, never reallocated
/// @param connexity the neighbourhood; a value outside the table of eConnexityType fills with 0
/// @return true when `out` was written. False, with `out` untouched, when the image has more than one channel, the
///         sizes or the depths differ, a depth is refused, or a matrix has more than two dimensions.
/// @throws std::bad_alloc when memory runs out
///
/// Cost: O(pixels) to copy, at memory bandwidth, and the neighbours of what is filled. One thread. `out` may be the
/// same matrix as `image`, but must not overlap with `mask`.
///
/// @code
/// cv::Mat filled(depth.size(), depth.type());
/// bool const done = morvane::algorithm::FillImageWithMean(depth, depth, filled, connexity::eConnexity8);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool
FillImageWithMean(cv::Mat const & image, cv::Mat const & mask, cv::Mat & out, connexity::eConnexityType connexity);

/// Fills pixels that are 0 with the neighbour one place above the middle of their sorted neighbours, zeros included.
///
/// Of n neighbours it is the one at n / 2 + 1, counted from 0: the sixth of eight. Neighbours outside the rows are
/// taken from the nearest row. Neighbours outside the columns are taken from the nearest column or, with a wrapped
/// shape, from one image width away; those that are still outside then, in images narrower than 2, count as 0. NaN
/// sorts behind all numbers.
///
/// | array   | shape       | depths                                          | channels | values |
/// |---------|-------------|-------------------------------------------------|----------|--------|
/// | `image` | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1 | 0 where a pixel is to be filled |
/// | `out`   | rows x cols, made by the caller | as `image`                  | 1; of several, the first `cols` elements of each row are meant | filled |
///
/// @param image see the table
/// @param out overwritten, never reallocated
/// @param connexity the neighbourhood, of two elements at least, which all shapes have
/// @return true when `out` was written. False, with `out` untouched, when the image has more than one channel, the
///         sizes or the depths differ, a depth is refused, the connexity is outside the table of eConnexityType, or a
///         matrix has more than two dimensions.
/// @throws std::bad_alloc when memory runs out
///
/// Cost: O(pixels) to copy, at memory bandwidth, and the sorting of the neighbours of what is filled. One thread. The
/// arguments must not overlap.
[[nodiscard]] MORVANE_EXPORT bool
FillImageWithMedian(cv::Mat const & image, cv::Mat & out, connexity::eConnexityType connexity);

/// As FillImageWithMedian(), with the neighbours that are 0 overwritten by others before all are sorted.
///
/// The neighbours that are not 0 close up at the front, in their order, and the places behind them keep what they held:
/// with neighbours 0 7 0 9, what is sorted is 7 9 0 9. Zeros so lose weight, but do not go away.
///
/// @param image as for FillImageWithMedian()
/// @param out as for FillImageWithMedian()
/// @param connexity as for FillImageWithMedian()
/// @return as FillImageWithMedian()
/// @throws std::bad_alloc when memory runs out
[[nodiscard]] MORVANE_EXPORT bool
FillImageWithMedianNoZero(cv::Mat const & image, cv::Mat & out, connexity::eConnexityType connexity);

/// Fills all holes: small ones by a closing, what remains of each with the highest value at its rim.
///
/// After FillImageWithClosing(), the empty pixels are divided among the measured regions to which they are nearest;
/// each connected part takes the maximum, over its pixels, of the image dilated by the square, which may be 0 inside a
/// large one.
///
/// | array   | shape       | depths                              | channels | values |
/// |---------|-------------|-------------------------------------|----------|--------|
/// | `image` | rows x cols | `CV_32F`, `CV_64F`                  | 1        | 0 where nothing was measured |
/// | `out`   | becomes rows x cols, or has this size and type | as `image` | 1 | filled |
///
/// Pixels below 0 are measured, and stay, but count among those of the part beside them. A maximum below -2147483647,
/// where the tables of zone measures start, is taken for that.
///
/// @param image see the table; pixels beyond a view never count
/// @param out overwritten
/// @param size side of the square, at least 3; the nearest region is found with masks of 5 x 5 in any case
/// @return true when it was filled. False for a smaller size, with `out` untouched; false for `CV_8U`, `CV_16U` and
///         `CV_16S`, whose holes would take values of 32 bits, with the closed image in `out`; false for several
///         channels, with the closing of the image in `out`.
/// @throws cv::Exception for what OpenCV's morphology refuses, as FillImageWithClosing()
///
/// Cost: O(pixels * size), some 20 bytes for each pixel. OpenCV's threads. The arguments must not overlap.
///
/// @code
/// bool const done = morvane::algorithm::FillHolesInterpolationWithMax(depth, filled, 5);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool FillHolesInterpolationWithMax(cv::Mat const & image, cv::Mat & out, int size);

/// As FillHolesInterpolationWithMax(), with the lowest value of the dilated image over each part, its empty pixels left
/// out.
///
/// The image is dilated here too, not eroded. Pixels that are empty after it count as the maximum of the image plus 1; a
/// part of which nothing else is left takes that. A minimum above 2147483647 is taken for that.
///
/// @param image as for FillHolesInterpolationWithMax()
/// @param out as for FillHolesInterpolationWithMax()
/// @param size as for FillHolesInterpolationWithMax()
/// @return as FillHolesInterpolationWithMax()
/// @throws cv::Exception as FillHolesInterpolationWithMax()
[[nodiscard]] MORVANE_EXPORT bool FillHolesInterpolationWithMin(cv::Mat const & image, cv::Mat & out, int size);

} // namespace morvane::algorithm
