#include <morvane/filters/Statistics.h>

#include "common/Dispatch.h"
#include "filters/EntropyTerms.h"
#include "filters/ValueSelection.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numeric>
#include <vector>

namespace morvane::filters
{

namespace
{

using namespace selection_internals;

bool HasPixels(cv::Mat const & image)
{
    return common::IsRaster(image) && image.rows > 0 && image.cols > 0;
}

/// The middle of the values above 0, the upper one of two; 0 without any.
template <class T>
double SelectMedian(cv::Mat const & image)
{
    std::vector<T> values = CollectPositive<T>(image);
    if (values.empty()) return 0.0;
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return static_cast<double>(*middle);
}

/// The same by counting all values.
template <Countable T>
double CountMedian(cv::Mat const & image)
{
    std::vector<std::uint32_t> const counts = CountPositive<T>(image);
    auto const values = std::accumulate(counts.begin(), counts.end(), std::size_t{0});
    std::size_t below = 0;
    std::size_t value = 0;
    while (value < counts.size() - 1 && below + counts[value] <= values / 2)
    {
        below += counts[value];
        ++value;
    }
    return values == 0 ? 0.0 : static_cast<double>(value);
}

template <class T>
double MedianOf(cv::Mat const & image)
{
    if constexpr (Countable<T>)
    {
        if (IsWorthCounting<T>(image)) return CountMedian<T>(image);
    }
    return SelectMedian<T>(image);
}

} // namespace

bool ComputeHistogram(cv::Mat const & src, cv::Mat & hist, int maxValue)
{
    if (!HasPixels(src)) return false;
    if (src.type() == CV_16UC1 && maxValue >= 0 && maxValue <= std::numeric_limits<ushort>::max())
    {
        // What OpenCV counts in floating point takes twice as long.
        std::vector<std::uint32_t> const counts = CountValues<ushort>(src);
        hist.create(maxValue + 1, 1, CV_32FC1);
        std::transform(counts.begin(), counts.begin() + hist.rows, hist.begin<float>(), [](std::uint32_t count) {
            return static_cast<float>(count);
        });
        return true;
    }
    // Unsigned: the largest int has no bin after it, which OpenCV refuses as it does any size below 1.
    int const bins = static_cast<int>(static_cast<unsigned>(maxValue) + 1U);
    float const range[] = {0.0F, static_cast<float>(maxValue + 1.0)};
    float const * ranges[] = {range};
    // Into a matrix of its own: OpenCV takes no notice of the gaps of a view.
    cv::Mat counts;
    cv::calcHist(&src, 1, nullptr, cv::noArray(), counts, 1, &bins, ranges, true, false);
    counts.copyTo(hist);
    return true;
}

bool EntropyNoZero(cv::Mat const & src, double & entropy)
{
    constexpr int kGreatest = 255;
    cv::Mat hist;
    if (!ComputeHistogram(src, hist, kGreatest)) return false;
    double sum = 0.0;
    // The last bin is left out, the first is not.
    for (int bin = 0; bin < kGreatest; ++bin)
    {
        sum += window_internals::EntropyTerm(hist.at<float>(bin), static_cast<double>(src.total()));
    }
    entropy = sum * -1.0;
    return true;
}

bool MedianNoZero(cv::Mat const & src, double & median)
{
    if (!HasPixels(src) || !common::IsSingleChannel(src)) return false;
    return common::VisitElement(src, [&]<class T> {
        median = MedianOf<T>(src);
        return true;
    });
}

bool MeanAndStdDev(cv::Mat const & src, double & mean, double & stdDev)
{
    if (!HasPixels(src)) return false;
    cv::Mat means;
    cv::Mat deviations;
    cv::meanStdDev(src, means, deviations);
    mean = means.at<double>(0);
    stdDev = deviations.at<double>(0);
    return true;
}

} // namespace morvane::filters
