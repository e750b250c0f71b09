/// @file
/// Pixel by pixel: selection by comparison, exact equality, division without zero divisors, scaling to grey.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

namespace morvane::common
{

/// Compares pixel by pixel and writes one of two values: `output = left (comparison) right ? whenTrue : whenFalse`.
///
/// | array       | shape                     | depths                                       | channels | values |
/// |-------------|---------------------------|----------------------------------------------|----------|--------|
/// | `left`      | rows x cols               | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | 1 | any |
/// | `right`     | as many pixels, or a number | the depth of `left`                        | 1        | any    |
/// | `whenTrue`, `whenFalse` | as many pixels, or scalars | the depth of `output`             | of `output` | any |
/// | `output`    | as many pixels, made by the caller | the six depths of `left`, any of them | 1 to 4   | what was selected |
///
/// Both operands of the comparison are taken as double. With a NaN every comparison is false but 5, which is true. Images
/// of another shape than `left` but as many pixels are read, and written, in raster order: pixel n of `left` meets pixel n
/// of each.
///
/// @param left what is compared
/// @param comparison 0 equal, 1 greater, 2 greater or equal, 3 less, 4 less or equal, 5 not equal; any other number is
///        false for every pixel
/// @param right what it is compared with
/// @param whenTrue pixels, or a scalar whose first components are converted to the depth of `output`: integers by
///        truncation to an `int` of which the low bits are kept (300.7 in `CV_8U` is 44), see TruncateTo()
/// @param whenFalse as `whenTrue`
/// @param output overwritten whole, never reallocated
/// @return true when the output was written. False, with `output` untouched, when `left` or `right` has more than one
///         channel; the channels of `whenTrue`, `whenFalse` and `output` differ; an image has not as many pixels as
///         `left`; the depths do not fit as in the table; a depth or the number of channels is refused; or an image has
///         more than two dimensions.
/// @throws cv::Exception, std::bad_alloc when memory runs out, which is needed for images of another shape only
///
/// Cost: O(pixels), at memory bandwidth for one channel and equal depths. Rows of large images are shared among OpenCV's
/// threads; the result does not depend on their number. `output` may be the same matrix as `whenTrue` or `whenFalse`, or,
/// with one channel and equal depths, as `left` or `right`.
///
/// @code
/// // Heights below 2 m become empty.
/// bool const done = morvane::common::ImageCompare(heights, 3, 2.0, cv::Scalar(0), heights, heights);
/// @endcode
MORVANE_EXPORT bool ImageCompare(
    cv::Mat const & left, int comparison, cv::Mat const & right, cv::Mat const & whenTrue, cv::Mat const & whenFalse,
    cv::Mat & output);
/// @copydoc ImageCompare(cv::Mat const &, int, cv::Mat const &, cv::Mat const &, cv::Mat const &, cv::Mat &)
MORVANE_EXPORT bool ImageCompare(
    cv::Mat const & left, int comparison, cv::Mat const & right, cv::Mat const & whenTrue,
    cv::Scalar_<double> const & whenFalse, cv::Mat & output);
/// @copydoc ImageCompare(cv::Mat const &, int, cv::Mat const &, cv::Mat const &, cv::Mat const &, cv::Mat &)
MORVANE_EXPORT bool ImageCompare(
    cv::Mat const & left, int comparison, cv::Mat const & right, cv::Scalar_<double> const & whenTrue,
    cv::Mat const & whenFalse, cv::Mat & output);
/// @copydoc ImageCompare(cv::Mat const &, int, cv::Mat const &, cv::Mat const &, cv::Mat const &, cv::Mat &)
MORVANE_EXPORT bool ImageCompare(
    cv::Mat const & left, int comparison, cv::Mat const & right, cv::Scalar_<double> const & whenTrue,
    cv::Scalar_<double> const & whenFalse, cv::Mat & output);
/// @copydoc ImageCompare(cv::Mat const &, int, cv::Mat const &, cv::Mat const &, cv::Mat const &, cv::Mat &)
MORVANE_EXPORT bool ImageCompare(
    cv::Mat const & left, int comparison, double right, cv::Mat const & whenTrue, cv::Mat const & whenFalse,
    cv::Mat & output);
/// @copydoc ImageCompare(cv::Mat const &, int, cv::Mat const &, cv::Mat const &, cv::Mat const &, cv::Mat &)
MORVANE_EXPORT bool ImageCompare(
    cv::Mat const & left, int comparison, double right, cv::Mat const & whenTrue, cv::Scalar_<double> const & whenFalse,
    cv::Mat & output);
/// @copydoc ImageCompare(cv::Mat const &, int, cv::Mat const &, cv::Mat const &, cv::Mat const &, cv::Mat &)
MORVANE_EXPORT bool ImageCompare(
    cv::Mat const & left, int comparison, double right, cv::Scalar_<double> const & whenTrue, cv::Mat const & whenFalse,
    cv::Mat & output);
/// @copydoc ImageCompare(cv::Mat const &, int, cv::Mat const &, cv::Mat const &, cv::Mat const &, cv::Mat &)
MORVANE_EXPORT bool ImageCompare(
    cv::Mat const & left, int comparison, double right, cv::Scalar_<double> const & whenTrue,
    cv::Scalar_<double> const & whenFalse, cv::Mat & output);

/// Tells whether two images are equal, byte by byte.
///
/// Bytes decide: in a float image 0.0 and -0.0 differ, and two identical NaN are equal. Gaps between rows do not matter.
///
/// @param one any type
/// @param other any type
/// @return true when channels, sizes, depths and all bytes of all rows are the same, also for two empty images of the same
///         type and size; false otherwise. Matrices of more than two dimensions have no rows to compare: with channels,
///         depth and number of elements alike, they are equal
///
/// Cost: O(bytes) up to the first row that differs. One thread.
[[nodiscard]] MORVANE_EXPORT bool AreImagesEqual(cv::Mat const & one, cv::Mat const & other);

/// Divides pixel by pixel and gives 0 where the divisor is 0.
///
/// @param numerator any accepted depth
/// @param denominator of the same size and type, one channel
/// @return `numerator / denominator` as OpenCV divides, of the size and type of the numerator; 0 where the denominator
///         equals 0. With a denominator of more than one channel, or of another total that OpenCV takes for a scalar, all
///         zeros. Empty when a depth is refused.
/// @throws cv::Exception when sizes or types do not fit each other, and for empty images
///
/// Cost: O(pixels). Threads as for ImageCompare(). Both arguments may be the same matrix.
[[nodiscard]] MORVANE_EXPORT cv::Mat SafeDivision(cv::Mat const & numerator, cv::Mat const & denominator);

/// Scales an image to 8-bit grey by the width of its range.
///
/// A pixel becomes `value * (256 / (max - min))`, computed in double and truncated to an `int` of which the low 8 bits are
/// kept. The minimum is not subtracted; the maximum of an image whose minimum is 0 gives 256, or just less by rounding, and
/// 256 is stored as 0. NaN gives 0.
///
/// @param image one channel, any accepted depth. More channels are not expected: the range is then that of all of them, and
///        the first `cols` elements of each row are scaled.
/// @param grey becomes `CV_8UC1` of the same size; what fits already is written over, in a view its parent, too
/// @return true when it was; false, with `grey` untouched, when the depth is refused, the image is empty or flat, or it has
///         more than two dimensions
/// @throws cv::Exception, std::bad_alloc when memory runs out
///
/// Cost: O(pixels). One thread. `image` and `grey` may be the same object.
[[nodiscard]] MORVANE_EXPORT bool ConvertToGrayScale(cv::Mat const & image, cv::Mat & grey);

} // namespace morvane::common
