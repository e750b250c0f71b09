#include "support/StatisticsOracle.h"

#include "support/ImageLiterals.h"

#include <morvane/common/ImageCompare.h>
#include <morvane/filters/Statistics.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <type_traits>

namespace morvane::tests
{

namespace
{

/// The floor of each cell of the grid, in the element type @p T of the image.
template <class T>
cv::Mat CoarseFloor(cv::Mat const & src, cv::Size grid)
{
    cv::Mat coarse = cv::Mat::zeros(grid, src.type());
    int const cellWidth = src.cols / grid.width;
    int const cellHeight = src.rows / grid.height;
    for (int row = 0; row < grid.height; ++row)
    {
        for (int column = 0; column < grid.width; ++column)
        {
            std::vector<T> values;
            for (int y = row * cellHeight; y < std::min((row + 1) * cellHeight, src.rows); ++y)
            {
                for (int x = column * cellWidth; x < std::min((column + 1) * cellWidth, src.cols); ++x)
                {
                    if (src.at<T>(y, x) > T(0)) values.push_back(src.at<T>(y, x));
                }
            }
            if (values.empty()) continue;
            T const floor = OracleFloor(values);
            if (floor != std::numeric_limits<T>::max()) coarse.at<T>(row, column) = floor;
        }
    }
    return coarse;
}

/// An output that must not shine through.
cv::Mat Dirty()
{
    return {3, 2, CV_64FC3, cv::Scalar::all(77.0)};
}

} // namespace

cv::Mat OracleHistogram(cv::Mat const & src, int maxValue)
{
    cv::Mat hist;
    int const bins = maxValue + 1;
    std::array const range{0.0F, static_cast<float>(static_cast<double>(maxValue) + 1.0)};
    float const * ranges = range.data();
    cv::calcHist(&src, 1, nullptr, cv::noArray(), hist, 1, &bins, &ranges, true, false);
    return hist;
}

std::optional<double> OracleEntropy(cv::Mat const & src)
{
    if (src.empty()) return {};
    cv::Mat const hist = OracleHistogram(src, 255);
    double const pixels = static_cast<double>(src.rows) * static_cast<double>(src.cols);
    double sum = 0.0;
    for (int bin = 0; bin <= 254; ++bin)
    {
        auto const count = static_cast<double>(hist.at<float>(bin));
        if (!(count > 0.0)) continue;
        double const share = count / pixels;
        sum += share * std::log(share);
    }
    return sum * -1.0;
}

std::optional<double> OracleMedian(cv::Mat const & src)
{
    if (src.empty()) return {};
    std::vector<double> values;
    for (int y = 0; y < src.rows; ++y)
    {
        for (int x = 0; x < src.cols; ++x)
        {
            double const value = ElementAt(src, y, x);
            if (value > 0.0) values.push_back(value);
        }
    }
    if (values.empty()) return 0.0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

std::optional<Moments> OracleMoments(cv::Mat const & src)
{
    if (src.empty()) return {};
    cv::Mat mean;
    cv::Mat stdDev;
    cv::meanStdDev(src, mean, stdDev, cv::noArray());
    return Moments{mean.at<double>(0), stdDev.at<double>(0)};
}

std::int64_t OracleHalf(unsigned kernelSize)
{
    auto const half = static_cast<std::int64_t>(std::trunc(static_cast<double>(kernelSize) * 0.5));
    return half + half % 2;
}

cv::Rect OracleWindow(cv::Size size, cv::Point pixel, unsigned kernelSize)
{
    std::int64_t const half = OracleHalf(kernelSize);
    auto const from = [&](int center) {
        return static_cast<int>(std::max<std::int64_t>(center - half, 0));
    };
    auto const to = [&](int center, int end) {
        return static_cast<int>(std::min<std::int64_t>(center + half, end));
    };
    return {cv::Point(from(pixel.x), from(pixel.y)), cv::Point(to(pixel.x, size.width), to(pixel.y, size.height))};
}

LocalStatistics EmptyStatistics(cv::Size size)
{
    return {
        cv::Mat::zeros(size, CV_32FC1), cv::Mat::zeros(size, CV_32FC1), cv::Mat::zeros(size, CV_32FC1),
        cv::Mat::zeros(size, CV_8UC1)};
}

bool OracleMeasure(cv::Mat const & grey, cv::Point pixel, unsigned kernelSize, LocalStatistics & statistics)
{
    if (grey.at<uchar>(pixel) == 0) return true;
    cv::Mat const window = grey(OracleWindow(grey.size(), pixel, kernelSize));
    std::optional<double> const entropy = OracleEntropy(window);
    std::optional<double> const median = OracleMedian(window);
    std::optional<Moments> const moments = OracleMoments(window);
    if (!entropy || !median || !moments) return false;
    statistics.entropy.at<float>(pixel) = static_cast<float>(*entropy);
    statistics.median.at<uchar>(pixel) = static_cast<uchar>(*median);
    statistics.mean.at<float>(pixel) = static_cast<float>(moments->mean);
    statistics.stdDev.at<float>(pixel) = static_cast<float>(moments->stdDev);
    return true;
}

std::optional<LocalStatistics> OracleLocal(cv::Mat const & src, unsigned kernelSize)
{
    cv::Mat grey;
    if (src.empty() || kernelSize == 0 || !common::ConvertToGrayScale(src, grey)) return {};
    LocalStatistics statistics = EmptyStatistics(grey.size());
    for (int y = 0; y < grey.rows; ++y)
    {
        for (int x = 0; x < grey.cols; ++x)
        {
            if (!OracleMeasure(grey, {x, y}, kernelSize, statistics)) return {};
        }
    }
    return statistics;
}

std::optional<LocalStatistics> CallLocal(cv::Mat const & src, unsigned kernelSize)
{
    LocalStatistics out{Dirty(), Dirty(), Dirty(), Dirty()};
    if (!filters::LocalStatisticsNoZero(src, kernelSize, out.entropy, out.mean, out.stdDev, out.median)) return {};
    return out;
}

::testing::AssertionResult EqualStatistics(LocalStatistics const & actual, LocalStatistics const & expected)
{
    ::testing::AssertionResult const entropy = EqualImages(actual.entropy, expected.entropy);
    if (!entropy) return ::testing::AssertionFailure() << "entropy: " << entropy.message();
    ::testing::AssertionResult const mean = EqualImages(actual.mean, expected.mean);
    if (!mean) return ::testing::AssertionFailure() << "mean: " << mean.message();
    ::testing::AssertionResult const stdDev = EqualImages(actual.stdDev, expected.stdDev);
    if (!stdDev) return ::testing::AssertionFailure() << "deviation: " << stdDev.message();
    ::testing::AssertionResult const median = EqualImages(actual.median, expected.median);
    if (!median) return ::testing::AssertionFailure() << "median: " << median.message();
    return ::testing::AssertionSuccess();
}

::testing::AssertionResult
GivesStatistics(cv::Mat const & src, unsigned kernelSize, std::optional<LocalStatistics> const & expected)
{
    LocalStatistics single{Dirty(), Dirty(), Dirty(), Dirty()};
    std::array const answers{
        filters::LocalEntropyNoZero(src, kernelSize, single.entropy),
        filters::LocalMeanNoZero(src, kernelSize, single.mean, single.stdDev),
        filters::LocalMedianNoZero(src, kernelSize, single.median)};
    std::optional<LocalStatistics> const all = CallLocal(src, kernelSize);
    for (bool const answer : answers)
    {
        if (answer != expected.has_value())
            return ::testing::AssertionFailure() << "a single operator gives " << answer;
    }
    if (all.has_value() != expected.has_value())
    {
        return ::testing::AssertionFailure() << "the operator of all gives " << all.has_value();
    }
    if (!expected) return ::testing::AssertionSuccess();
    ::testing::AssertionResult const singles = EqualStatistics(single, *expected);
    if (!singles) return ::testing::AssertionFailure() << "single " << singles.message();
    return EqualStatistics(*all, *expected);
}

cv::Mat ImageOfGrey(cv::Mat const & grey, int depth)
{
    cv::Mat image;
    grey.convertTo(image, depth);
    double least = 0.0;
    cv::Point place;
    cv::minMaxLoc(grey, &least, nullptr, &place);
    SetElement(image, place.y, place.x, 0, least + 256.0);
    return image;
}

template <class T>
T OracleFloor(std::vector<T> values)
{
    std::sort(values.begin(), values.end());
    int const count = std::max(static_cast<int>(std::trunc(static_cast<float>(values.size()) * 0.15F)), 1);
    T sum = T(0);
    for (int index = 0; index < count; ++index)
    {
        T const value = values[static_cast<std::size_t>(index)];
        if constexpr (std::is_integral_v<T>)
        {
            // Wraps on purpose.
            sum = static_cast<T>(static_cast<std::uint64_t>(sum) + static_cast<std::uint64_t>(value));
        }
        else
        {
            sum += value;
        }
    }
    double const mean = static_cast<double>(sum) / static_cast<double>(count);
    return std::is_integral_v<T> ? static_cast<T>(std::trunc(mean)) : static_cast<T>(mean);
}

template uchar OracleFloor(std::vector<uchar> values);
template ushort OracleFloor(std::vector<ushort> values);
template short OracleFloor(std::vector<short> values);
template int OracleFloor(std::vector<int> values);
template float OracleFloor(std::vector<float> values);
template double OracleFloor(std::vector<double> values);

cv::Mat OracleCoarseFloor(cv::Mat const & src, unsigned cellSize)
{
    auto const columns = static_cast<unsigned>(src.cols);
    int const gridColumns = std::max(static_cast<int>(columns / cellSize), 2);
    double const ratio = static_cast<double>(src.rows) / static_cast<double>(src.cols);
    int const gridRows = std::max(static_cast<int>(std::floor(static_cast<double>(gridColumns) * ratio)), 2);
    cv::Size const grid(gridColumns, gridRows);
    switch (src.depth())
    {
    case CV_8U:
        return CoarseFloor<uchar>(src, grid);
    case CV_16U:
        return CoarseFloor<ushort>(src, grid);
    case CV_16S:
        return CoarseFloor<short>(src, grid);
    case CV_32S:
        return CoarseFloor<int>(src, grid);
    case CV_32F:
        return CoarseFloor<float>(src, grid);
    default:
        return CoarseFloor<double>(src, grid);
    }
}

cv::Mat OracleLocalMin(cv::Mat const & src, unsigned cellSize)
{
    cv::Mat dst;
    cv::resize(OracleCoarseFloor(src, cellSize), dst, src.size(), 0.0, 0.0, cv::INTER_LINEAR);
    return dst;
}

std::string StatisticsCase(cv::Mat const & src, unsigned size)
{
    return cv::typeToString(src.type()) + ", rows " + std::to_string(src.rows) + ", columns " +
           std::to_string(src.cols) + ", size " + std::to_string(size);
}

} // namespace morvane::tests
