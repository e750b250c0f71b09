/// @file
/// Small measures of images: profiles, the mode, the range around a pixel, the overlap of two masks.
#pragma once

#include <morvane/Export.h>
#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

#include <vector>

namespace morvane::algorithm
{

/// Adds up each row across its columns: a profile down the image.
///
/// | array   | shape       | depths                                          | channels | values |
/// |---------|-------------|-------------------------------------------------|----------|--------|
/// | `image` | rows x cols | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F` | 1        | any    |
///
/// @param image see the table
/// @param sums resized to the number of rows; elements that were there are added to, new ones start at 0. Sums are
///        `float`, taken in the order of the pixels.
/// @param normalize whether the sums are multiplied by 1 / the largest running sum that was met, in any row; where
///        nothing is negative, that is the largest sum
/// @return true when the largest running sum is not 0. False without pixels or when it is 0, with the sums as they were
///         added; false, with `sums` untouched, for several channels, another depth, or more than two dimensions. A NaN
///         does not make it false: it is never larger than what was met before it.
/// @throws std::bad_alloc, std::length_error when memory runs out
///
/// Cost: O(pixels). One thread.
///
/// @code
/// std::vector<float> profile;
/// bool const done = morvane::algorithm::AccumulateColumns(image, profile, true);
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool AccumulateColumns(cv::Mat const & image, std::vector<float> & sums, bool normalize);

/// Adds up each column down its rows: a profile across the image. Otherwise as AccumulateColumns().
///
/// @param image as for AccumulateColumns()
/// @param sums resized to the number of columns; otherwise as for AccumulateColumns()
/// @param normalize as for AccumulateColumns(), in any column
/// @return as AccumulateColumns()
/// @throws std::bad_alloc, std::length_error when memory runs out
[[nodiscard]] MORVANE_EXPORT bool AccumulateRows(cv::Mat const & image, std::vector<float> & sums, bool normalize);

/// Finds the most frequent value of an image, in bins of about 1 from 0 to its maximum.
///
/// The histogram is that of `cv::calcHist` on the image as `CV_32F`: n = `int(max + 1)` bins over [0, max + 1).
/// Negative values are not counted. A NaN is no maximum; where it is counted is OpenCV's affair.
///
/// @param image one channel, any accepted depth
/// @param mode number of the fullest bin; of several, the first
/// @param count its pixels
/// @param mask where the image counts: `CV_8UC1` of its size, or empty for all of it. The maximum is sought there, too.
/// @return true when `mode` and `count` were written. False, with both untouched, for several channels, an empty image,
///         more than two dimensions, and a maximum for which there are no bins: below 0, or of 2^31 - 1 and more.
/// @throws cv::Exception for what OpenCV refuses: `CV_16F`, a mask of another type or size; std::bad_alloc when memory
///         runs out. Both untouched.
///
/// Cost: O(pixels + maximum); 4 bytes for each of both. OpenCV's threads.
///
/// @code
/// double mode = 0.0;
/// double count = 0.0;
/// bool const done = morvane::algorithm::ImageMode(intensity, mode, count, cv::Mat());
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool ImageMode(cv::Mat const & image, double & mode, double & count, cv::Mat const & mask);

/// Finds the lowest and the highest value of a pixel and its neighbours.
///
/// Neighbours outside the image are passed over, except outside the columns with a wrapped shape, where they are taken
/// from one image width away. The pixel itself counts whatever the mask says.
///
/// @param image `CV_32FC1`
/// @param point a pixel of the image
/// @param connexity the neighbourhood; a shape may be given where this is asked for
/// @param minimum the lowest value; a NaN among the neighbours is neither lower nor higher than others
/// @param maximum the highest value
/// @param mask of the size of the image, or empty: neighbours at which its element, read as `uchar`, is 0 are passed
///         over
/// @return true when both were written. False, with both untouched, for an image of another type, a point outside it,
///         or a mask of another size.
/// @throws std::bad_alloc when memory runs out
///
/// Cost: O(neighbours). One thread.
///
/// @code
/// bool const done =
///     morvane::algorithm::MinMaxInNeighborhood(depth, {x, y}, connexity::eConnexity8, low, high, cv::Mat());
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool MinMaxInNeighborhood(
    cv::Mat const & image, cv::Point const & point, connexity::Connexity connexity, double & minimum, double & maximum,
    cv::Mat const & mask);

/// Measures how much of two masks coincides when each lies at a position of its own.
///
/// @param a one channel, any depth
/// @param b of the same type: bits are compared, and any common bit makes a pixel count, of floating-point numbers any
///        but the sign
/// @param x1 column, in pixels, by which `b` lies to the right of `a`, together with @p x2: it starts at x1 - x2 of `a`
/// @param y1 row, as `x1`
/// @param x2 see @p x1
/// @param y2 see @p y1
/// @param norm what the count is divided by, such as the number of pixels of a mask; 0 gives infinity, or NaN for a
///        count of 0
/// @return the number of pixels at which `a` and `b` have a bit in common, divided by `norm`; 0 when they do not meet
/// @throws cv::Exception for several channels, types that differ and `CV_16F`, where the masks meet
///
/// Cost: O(pixels of the overlap), and a copy of it. One thread.
///
/// @code
/// double const share = morvane::algorithm::computeOverlap(first, second, 12, -3, 0, 0, cv::countNonZero(first));
/// @endcode
[[nodiscard]] MORVANE_EXPORT double
computeOverlap(cv::Mat const & a, cv::Mat const & b, int x1, int y1, int x2, int y2, int norm);

} // namespace morvane::algorithm
