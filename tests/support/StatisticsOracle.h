/// @file
/// Statistics that know of empty pixels in their plainest form: a histogram, sorted values and OpenCV's moments, applied
/// anew to each window.
#pragma once

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace morvane::tests
{

/// The counts of the values 0 to @p maxValue, by `cv::calcHist`.
[[nodiscard]] cv::Mat OracleHistogram(cv::Mat const & src, int maxValue);

/// The entropy over the values 0 to 254; none for an image without pixels.
[[nodiscard]] std::optional<double> OracleEntropy(cv::Mat const & src);

/// The upper median of the values above 0, all of them sorted; none for an image without pixels.
[[nodiscard]] std::optional<double> OracleMedian(cv::Mat const & src);

/// Mean and deviation of the first channel.
struct Moments
{
    double mean = 0.0;
    double stdDev = 0.0;
};

/// By `cv::meanStdDev`; none for an image without pixels.
[[nodiscard]] std::optional<Moments> OracleMoments(cv::Mat const & src);

/// Half the side of a window.
[[nodiscard]] std::int64_t OracleHalf(unsigned kernelSize);

/// The window of a pixel, cut at the borders; it may be empty.
[[nodiscard]] cv::Rect OracleWindow(cv::Size size, cv::Point pixel, unsigned kernelSize);

/// The results of the sliding operators.
struct LocalStatistics
{
    cv::Mat entropy;
    cv::Mat mean;
    cv::Mat stdDev;
    cv::Mat median;
};

/// Images of zeros.
[[nodiscard]] LocalStatistics EmptyStatistics(cv::Size size);

/// Writes what the window of @p pixel measures in @p grey, if that is not empty there. @return false where the window
/// has no pixels
[[nodiscard]] bool
OracleMeasure(cv::Mat const & grey, cv::Point pixel, unsigned kernelSize, LocalStatistics & statistics);

/// The results in all pixels; none where the operators refuse.
[[nodiscard]] std::optional<LocalStatistics> OracleLocal(cv::Mat const & src, unsigned kernelSize);

/// Calls the operator of all four statistics; the outputs hold something else before. None if it refuses.
[[nodiscard]] std::optional<LocalStatistics> CallLocal(cv::Mat const & src, unsigned kernelSize);

/// Tells whether all four images are the same to the bit.
[[nodiscard]] ::testing::AssertionResult
EqualStatistics(LocalStatistics const & actual, LocalStatistics const & expected);

/// Tells whether each of the four sliding operators gives the expected images, and refuses where there are none.
[[nodiscard]] ::testing::AssertionResult
GivesStatistics(cv::Mat const & src, unsigned kernelSize, std::optional<LocalStatistics> const & expected);

/// An image of a depth other than `CV_8U` that common::ConvertToGrayScale() turns into @p grey. The lowest grey must
/// occur twice: one of its pixels is 256 higher, which makes the scale 1.
[[nodiscard]] cv::Mat ImageOfGrey(cv::Mat const & grey, int depth);

/// The floor of a cell: the mean of the lowest 15 % of its values, which are above 0, summed in their own type.
template <class T>
[[nodiscard]] T OracleFloor(std::vector<T> values);

/// The grid of floors before it is enlarged.
[[nodiscard]] cv::Mat OracleCoarseFloor(cv::Mat const & src, unsigned cellSize);

/// The floor of the image.
[[nodiscard]] cv::Mat OracleLocalMin(cv::Mat const & src, unsigned cellSize);

/// A line for SCOPED_TRACE.
[[nodiscard]] std::string StatisticsCase(cv::Mat const & src, unsigned size);

} // namespace morvane::tests
