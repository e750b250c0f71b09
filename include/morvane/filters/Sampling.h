/// @file
/// A pyramid of blocks of 2 by 2 pixels: down by one value for each block, with the detail that leads back up.
///
/// A reduction writes two images. `low` has half the rows and columns, rounded down, and one value for each block of 2
/// by 2 pixels. `high` has the size of the image and holds what must be added to the value of its block to get a pixel
/// back.
///
/// | array  | shape                                           | depths            | channels        | values |
/// |--------|-------------------------------------------------|-------------------|-----------------|--------|
/// | `src`  | rows x cols                                     | see each operator | any             | any    |
/// | `low`  | rows / 2 x cols / 2 or more, or empty           | that of `src`     | those of `src`  | one of each block |
/// | `high` | those of the blocks or more, or empty           | see each operator | those of `src`  | pixel minus value of its block |
///
/// An empty `low` is made with half the size, an empty `high` with the size and type of `src`. The depth of a `high`
/// that is there chooses the arithmetic; it is written in place, as is a `low` that is there. The last row of an odd
/// number of rows belongs to no block, nor does the last column (but see DownSamplingWithMin()): there, a `high` that
/// was there keeps its values, and a new one is 0. Several channels are reduced one by one.
///
/// Integers wrap around modulo the width of their type, so that what wrapped on the way down wraps back on the way up.
///
/// All operators return true when they have written their outputs, also for images without a block. They return false,
/// with all outputs untouched, when the depth of an image is not in the list (`CV_8S` and `CV_16F` never are), when
/// `low` or `dst` are there with another type than stated, `high` with other channels, or either smaller than what is
/// written to it, and when an image has more than two dimensions. They throw std::bad_alloc or cv::Exception when
/// memory runs out.
///
/// Cost: O(pixels), at the bandwidth of memory for 8 and 16 bits; no memory besides the outputs for one channel. One
/// thread. The images must not overlap.
///
/// Source: the S-transform, A. Said and W. A. Pearlman, "An image multiresolution representation for lossless and lossy
/// compression", IEEE Transactions on Image Processing 5, 1996, here without its further split of the detail; and the
/// morphological pyramids of J. Goutsias and H. Heijmans, "Nonlinear multiresolution signal decomposition schemes",
/// IEEE Transactions on Image Processing 9, 2000.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

namespace morvane::filters
{

/// Splits an image into the means of its blocks and the differences from them.
///
/// Source and `high` may have any two of `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F`.
///
/// - Both integer: the value of a block is (a + b + c + d + 2) >> 2 in 32 bits, the mean with halves rounded upwards.
/// - Floating-point source, integer `high`: each pixel is first cut to an integer (towards zero, low bits of the type
///   of `high`), the formula follows, and `low` holds its result.
/// - Floating-point `high`: the value is (a + b + c + d) * 0.25, added in this order in the wider of both types
///   (`float` for `CV_32S` and `CV_32F`); an integer `low` gets it cut towards zero, and the differences are taken from
///   it before it was cut.
///
/// @param src, low, high see the head of this file
/// @return see the head of this file
///
/// @code
/// cv::Mat low, high(image.size(), CV_16SC1), again;
/// filters::DownSampling(image, low, high) && filters::UpSampling(low, high, again); // again == image, of even size
/// @endcode
[[nodiscard]] MORVANE_EXPORT bool DownSampling(cv::Mat const & src, cv::Mat & low, cv::Mat & high);

/// Splits an image into the bitwise or of its blocks and the exclusive or with it.
///
/// With pixels of 0 and 255 that is the dilation of a mask by blocks. `high` restores a pixel by another exclusive or.
/// Source and `high` have any two of `CV_8U`, `CV_16U`, `CV_16S` and `CV_32S`. 16 bits count as unsigned, which shows
/// only in a `high` of `CV_32S`; a narrower `high` takes the low bits.
///
/// @param src, low, high see the head of this file
/// @return see the head of this file
[[nodiscard]] MORVANE_EXPORT bool DownSamplingWithLogicalOr(cv::Mat const & src, cv::Mat & low, cv::Mat & high);

/// Splits an image into the maxima of its blocks and the differences from them.
///
/// Source and `high` may have any two of the six depths. A difference is taken in the wider of both types and cut to
/// that of `high` (towards zero, low bits); it is never above 0 and wraps around in unsigned types. A NaN is the
/// maximum of its block only as the first pixel of it.
///
/// @param src, low, high see the head of this file
/// @return see the head of this file
[[nodiscard]] MORVANE_EXPORT bool DownSamplingWithMax(cv::Mat const & src, cv::Mat & low, cv::Mat & high);

/// The maxima of the blocks alone, see DownSamplingWithMax() of three images.
[[nodiscard]] MORVANE_EXPORT bool DownSamplingWithMax(cv::Mat const & src, cv::Mat & low);

/// Splits an image into the minima of its blocks and the differences from them, with odd remainders in the last blocks.
///
/// As DownSamplingWithMax(), but in an image with an odd number of rows or columns, from 3 on, the last blocks are 3
/// pixels high or wide: the remainder counts in their minimum, and `high` is written there too. In an image of one row
/// or column there is no block, and nothing is written.
///
/// @param src, low, high see the head of this file
/// @return see the head of this file
[[nodiscard]] MORVANE_EXPORT bool DownSamplingWithMin(cv::Mat const & src, cv::Mat & low, cv::Mat & high);

/// The minima of the blocks alone, see DownSamplingWithMin() of three images.
[[nodiscard]] MORVANE_EXPORT bool DownSamplingWithMin(cv::Mat const & src, cv::Mat & low);

/// Adds the detail to the value of each block: the way back from DownSampling().
///
/// | array  | shape                                        | depths                                      | channels       | values |
/// |--------|----------------------------------------------|---------------------------------------------|----------------|--------|
/// | `low`  | rows x cols                                  | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F` | any | any  |
/// | `high` | 2 rows x 2 cols or more                      | `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`       | those of `low` | any    |
/// | `dst`  | 2 rows x 2 cols or more, or empty and then made | that of `low`; any of the six for a `low` of 16 bits | those of `low` | sum |
///
/// | `low`              | `high`             | sum                                                                   |
/// |--------------------|--------------------|-----------------------------------------------------------------------|
/// | `CV_8U`            | `CV_8U`            | modulo 256                                                            |
/// | `CV_8U`            | `CV_16S`           | in 16 bits, which may wrap, then clamped to 0 to 255                  |
/// | `CV_8U`            | `CV_16U`, `CV_32S` | in 32 bits, which may wrap, then clamped to 0 to 255                  |
/// | `CV_16U`, `CV_16S` | any                | in 32 bits, which may wrap, then saturated to the depth of `dst`      |
/// | `CV_32S`           | `CV_8U`            | of the lowest byte of `low` and `high`, modulo 256: 0 to 255          |
/// | `CV_32S`           | others             | in 32 bits, which may wrap                                            |
/// | `CV_32F`, `CV_64F` | any                | in the type of `low`                                                  |
///
/// @param low the value of each block
/// @param high what is added to it. A floating-point one is refused, also where DownSampling() made it
/// @param dst written in place where it is there; what lies outside the blocks is kept
/// @return as stated at the head of this file
[[nodiscard]] MORVANE_EXPORT bool UpSampling(cv::Mat const & low, cv::Mat const & high, cv::Mat & dst);

/// Repeats the value of each block at its four pixels.
///
/// @param low rows x cols, any of the six depths, any channels
/// @param dst 2 rows x 2 cols or more of the type of `low`, written in place; or empty and then made
/// @return as stated at the head of this file
[[nodiscard]] MORVANE_EXPORT bool UpSampling(cv::Mat const & low, cv::Mat & dst);

} // namespace morvane::filters
