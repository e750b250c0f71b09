/// @file
/// Histogram, entropy, median, mean and deviation, of an image and of a window that slides over it; and the local
/// floor.
///
/// A pixel of 0 is empty, but what that means differs, on purpose:
/// - MedianNoZero() and InterpolatedRobustLocalMinNoZero() take values above 0 only; negative ones are left out too.
/// - EntropyNoZero() counts zeros as any other value; it leaves out 255.
/// - MeanAndStdDev() sees every pixel.
/// - The sliding operators compute nothing at an empty pixel, whose results are 0; but the window of another pixel
///   holds its empty neighbours, and they count as in the operator of the whole image.
///
/// All operators return false when there are no pixels or more than two dimensions. They throw std::bad_alloc when
/// memory runs out.
#pragma once

#include <morvane/Export.h>

#include <opencv2/core.hpp>

namespace morvane::filters
{

/// Counts the values 0 to `maxValue` of an image.
///
/// | array  | shape            | depths                      | channels | values |
/// |--------|------------------|-----------------------------|----------|--------|
/// | `src`  | rows x cols      | `CV_8U`, `CV_16U`, `CV_32F` | 1        | any    |
/// | `hist` | `maxValue` + 1 x 1 | `CV_32F`                  | 1        | bin b counts the values in [b, b + 1); NaN counts in bin 0 |
///
/// @param src see the table
/// @param hist replaced
/// @param maxValue the last bin, from 0 on
/// @return true when `hist` was written; false, with `hist` untouched, for an image without pixels
/// @throws cv::Exception as `cv::calcHist` does, for other depths, several channels or a negative `maxValue`
///
/// Cost: O(pixels + `maxValue`). OpenCV's threads, where it counts itself. `hist` may not be `src`.
[[nodiscard]] MORVANE_EXPORT bool ComputeHistogram(cv::Mat const & src, cv::Mat & hist, int maxValue);

/// The entropy of an image in nats, over the values 0 to 254.
///
/// -sum of p ln p, p being the share of a value among all pixels of the image. The value 255 (and any above) counts in
/// the number of pixels but has no term; 0 has one.
///
/// @param src rows x cols, one channel, `CV_8U`, `CV_16U` or `CV_32F`; floats count by their whole part, NaN as 0
/// @param entropy the result
/// @return true when `entropy` was written; false, with `entropy` untouched, for an image without pixels
/// @throws cv::Exception as ComputeHistogram()
///
/// Cost: O(pixels). Source: C. E. Shannon, "A mathematical theory of communication", 1948.
[[nodiscard]] MORVANE_EXPORT bool EntropyNoZero(cv::Mat const & src, double & entropy);

/// The median of the values above 0.
///
/// Of n values in ascending order the one at index n / 2, rounded down and counted from 0: the upper one of two middle
/// values. NaN is left out.
///
/// @param src rows x cols, one channel, `CV_8U`, `CV_16U`, `CV_16S`, `CV_32S`, `CV_32F`, `CV_64F`
/// @param median the result; 0 where no value is above 0
/// @return true when `median` was written; false, with `median` untouched, for an image without pixels, other depths or
///         several channels
///
/// Cost: O(pixels) on average, by counting in 8 and 16 bits and by selection in others, which copy the values above 0.
/// One thread. Source: C. A. R. Hoare, "Algorithm 65: find", 1961.
[[nodiscard]] MORVANE_EXPORT bool MedianNoZero(cv::Mat const & src, double & median);

/// The mean and the population standard deviation of the first channel, over all pixels.
///
/// @param src rows x cols, depths and channels that `cv::meanStdDev` takes
/// @param mean, stdDev the results
/// @return true when they were written; false, with both untouched, for an image without pixels
/// @throws cv::Exception as `cv::meanStdDev` does
///
/// Cost: O(pixels).
[[nodiscard]] MORVANE_EXPORT bool MeanAndStdDev(cv::Mat const & src, double & mean, double & stdDev);

/// @name Statistics in a sliding window
///
/// The image is first scaled to 8 bits by common::ConvertToGrayScale(), and everything is measured there. With h =
/// `kernelSize` / 2, rounded down and then up to an even number, the window of the pixel (x, y) holds the columns x - h
/// to x + h - 1 and the rows y - h to y + h - 1 that lie in the image: sizes 2 to 5 give a window of 4 by 4, 6 to 9 one
/// of 8 by 8, 10 to 13 one of 12 by 12. Each result is that of the operator of the whole image, applied to the window.
/// Where the grey image is 0, all results are 0.
///
/// | array                       | shape       | depths                                  | channels | values            |
/// |-----------------------------|-------------|-----------------------------------------|----------|-------------------|
/// | `src`                       | rows x cols | those of common::ConvertToGrayScale()   | as there | any               |
/// | `entropy`, `mean`, `stdDev` | rows x cols | `CV_32F`                                | 1        | of the window     |
/// | `median`                    | rows x cols | `CV_8U`                                 | 1        | of it, 1 to 255   |
///
/// Outputs are replaced, whatever they were. The return value is true when they were written. It is false for an image
/// without pixels, a `kernelSize` of 0, an image that common::ConvertToGrayScale() refuses (flat, or of another depth),
/// all with the outputs untouched; and when the window is empty, with a `kernelSize` of 1, and the grey image is not,
/// with outputs of zeros.
///
/// Cost: O(pixels * `kernelSize` / 8) for entropy and median, plus the number of distinct values in a window for each
/// pixel; O(pixels) for mean and deviation. Memory besides the grey image and the outputs: `kernelSize` + 8 rows of it,
/// and for the entropy up to 32 kB for each size that cut windows have. One thread. `src` may be one of the outputs;
/// one matrix for two outputs ends as the later one.
///
/// Source: T. S. Huang, G. J. Yang and G. Y. Tang, "A fast two-dimensional median filtering algorithm", IEEE
/// Transactions on Acoustics, Speech, and Signal Processing 27, 1979, here for eight rows at a time.
/// @{

/// EntropyNoZero() of the window around each pixel.
/// @param src, kernelSize, entropy see the group
/// @return see the group
[[nodiscard]] MORVANE_EXPORT bool LocalEntropyNoZero(cv::Mat const & src, unsigned int kernelSize, cv::Mat & entropy);

/// MeanAndStdDev() of the window around each pixel.
/// @param src, kernelSize, mean, stdDev see the group
/// @return see the group
[[nodiscard]] MORVANE_EXPORT bool
LocalMeanNoZero(cv::Mat const & src, unsigned int kernelSize, cv::Mat & mean, cv::Mat & stdDev);

/// MedianNoZero() of the window around each pixel.
/// @param src, kernelSize, median see the group
/// @return see the group
[[nodiscard]] MORVANE_EXPORT bool LocalMedianNoZero(cv::Mat const & src, unsigned int kernelSize, cv::Mat & median);

/// All four statistics in one pass.
/// @param src, kernelSize, entropy, mean, stdDev, median see the group
/// @return see the group
[[nodiscard]] MORVANE_EXPORT bool LocalStatisticsNoZero(
    cv::Mat const & src, unsigned int kernelSize, cv::Mat & entropy, cv::Mat & mean, cv::Mat & stdDev,
    cv::Mat & median);

/// @}

/// A smooth estimate of the floor of the image: the lowest values of each cell of a grid, interpolated in between.
///
/// The grid has max(cols / `cellSize`, 2) columns, in whole numbers, and max(that * (rows / cols), 2) rows, rounded
/// down; its cells have cols / (its columns) by rows / (its rows) pixels, rounded down, and the remainder to the right
/// and below belongs to none. A cell's value is the mean of the lowest 15 % of its values above 0, at least one: a
/// single outlier cannot stand for the floor. It is 0 for a cell without such values and for one whose value is the
/// greatest number of the type. The coarse image of values is resized to the size of `src` with `cv::INTER_LINEAR`.
///
/// The sum behind a mean is kept in the element type: it wraps around in `CV_8U`, `CV_16U`, `CV_16S` and `CV_32S`,
/// whose means are cut towards zero; `CV_32F` is summed in `float`, in ascending order.
///
/// @param src rows x cols, one channel, `CV_8U`, `CV_16U`, `CV_16S`, `CV_32F`, `CV_64F`, or `CV_32S` where nothing is
///        interpolated because the grid has the size of the image
/// @param cellSize nominal width of a cell in pixels, from 1 on
/// @param dst replaced: rows x cols, type of `src`
/// @return true when `dst` was written; false, with `dst` untouched, for an image without pixels, a `cellSize` of 0,
///         `CV_8S`, `CV_16F` or several channels
/// @throws cv::Exception as `cv::resize` does, which does not interpolate `CV_32S`
///
/// Cost: O(pixels) on average. One thread of ours. `src` may be `dst`.
[[nodiscard]] MORVANE_EXPORT bool
InterpolatedRobustLocalMinNoZero(cv::Mat const & src, unsigned int cellSize, cv::Mat & dst);

} // namespace morvane::filters
