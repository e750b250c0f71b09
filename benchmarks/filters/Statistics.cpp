#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/filters/Statistics.h>

#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace morvane::filters;

using benchmarks::NamedImage;
using benchmarks::TimeOn;

/// The rectangle of a window, as the operators lay it around a pixel.
cv::Rect WindowAround(cv::Point pixel, int half, cv::Size image)
{
    return cv::Rect(pixel.x - half, pixel.y - half, 2 * half, 2 * half) & cv::Rect({}, image);
}

/// The direct form: every window by itself.
template <class Measure>
bool MeasureEachWindow(cv::Mat const & image, int half, cv::Mat & out, Measure measure)
{
    out = cv::Mat::zeros(image.size(), CV_32FC1);
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            double value = 0.0;
            if (!measure(image(WindowAround({x, y}, half, image.size())), value)) return false;
            out.at<float>(y, x) = static_cast<float>(value);
        }
    }
    return true;
}

bool MeanByBoxes(cv::Mat const & image, int kernel, cv::Mat & out)
{
    cv::Mat mean;
    cv::Mat squares;
    cv::boxFilter(image, mean, CV_32F, {kernel, kernel});
    cv::sqrBoxFilter(image, squares, CV_32F, {kernel, kernel});
    cv::Mat const variance = cv::max(squares - mean.mul(mean), 0.0);
    cv::sqrt(variance, out);
    return true;
}

bool Median(cv::Mat const & image, int kernel, cv::Mat & out)
{
    return LocalMedianNoZero(image, static_cast<unsigned>(kernel), out);
}

bool Entropy(cv::Mat const & image, int kernel, cv::Mat & out)
{
    return LocalEntropyNoZero(image, static_cast<unsigned>(kernel), out);
}

bool Mean(cv::Mat const & image, int kernel, cv::Mat & out)
{
    cv::Mat deviation;
    return LocalMeanNoZero(image, static_cast<unsigned>(kernel), out, deviation);
}

bool All(cv::Mat const & image, int kernel, cv::Mat & out)
{
    cv::Mat entropy;
    cv::Mat mean;
    cv::Mat deviation;
    return LocalStatisticsNoZero(image, static_cast<unsigned>(kernel), entropy, mean, deviation, out);
}

using Operator = bool (*)(cv::Mat const &, int, cv::Mat &);

void TimeSliding(int side)
{
    NamedImage const inputs[] = {{"terrain", benchmarks::GreyTerrain}, {"random", [](int size) {
                                                                            return benchmarks::RandomValues(
                                                                                size, CV_8UC1);
                                                                        }}};
    std::pair<std::string, Operator> const operators[] = {
        {"LocalMedianNoZero", Median},
        {"LocalEntropyNoZero", Entropy},
        {"LocalMeanNoZero", Mean},
        {"LocalStatisticsNoZero", All}};
    for (NamedImage const & input : inputs)
    {
        for (int const kernel : {12, 32})
        {
            std::string const which = "kernel " + std::to_string(kernel) + "-";
            for (auto const & [name, run] : operators)
            {
                TimeOn(name + "/morvane/" + which, input, side, [=, run = run](cv::Mat const & image, cv::Mat & out) {
                    return run(image, kernel, out);
                });
            }
            TimeOn("LocalMedianNoZero/medianBlur/" + which, input, side, [=](cv::Mat const & image, cv::Mat & out) {
                cv::medianBlur(image, out, kernel + 1);
                return true;
            });
            TimeOn("LocalMeanNoZero/box filters/" + which, input, side, [=](cv::Mat const & image, cv::Mat & out) {
                return MeanByBoxes(image, kernel, out);
            });
        }
    }
}

/// The plain median: every value above 0, sorted.
template <class T>
bool SortedMedian(cv::Mat const & image, double & median)
{
    std::vector<T> values;
    std::copy_if(image.begin<T>(), image.end<T>(), std::back_inserter(values), [](T value) { return value > T{0}; });
    std::sort(values.begin(), values.end());
    median = values.empty() ? 0.0 : static_cast<double>(values[values.size() / 2]);
    return true;
}

/// The direct forms take minutes on larger ones.
void TimeDirectly(int side)
{
    constexpr int kKernel = 32;
    NamedImage const input{"terrain", benchmarks::GreyTerrain};
    std::string const which = "kernel " + std::to_string(kKernel) + "-";
    TimeOn("LocalMedianNoZero/direct/" + which, input, side, [](cv::Mat const & image, cv::Mat & out) {
        return MeasureEachWindow(image, kKernel / 2, out, SortedMedian<uchar>);
    });
    TimeOn("LocalEntropyNoZero/direct/" + which, input, side, [](cv::Mat const & image, cv::Mat & out) {
        return MeasureEachWindow(image, kKernel / 2, out, EntropyNoZero);
    });
    TimeOn("LocalMeanNoZero/direct/" + which, input, side, [](cv::Mat const & image, cv::Mat & out) {
        return MeasureEachWindow(image, kKernel / 2, out, [](cv::Mat const & window, double & mean) {
            double deviation = 0.0;
            return MeanAndStdDev(window, mean, deviation);
        });
    });
}

void TimeGlobal(int side)
{
    std::pair<NamedImage, bool (*)(cv::Mat const &, double &)> const inputs[] = {
        {{"8U",
          [](int size) {
              return benchmarks::RandomValues(size, CV_8UC1);
          }},
         SortedMedian<uchar>},
        {{"16U",
          [](int size) {
              return benchmarks::RandomValues(size, CV_16UC1);
          }},
         SortedMedian<ushort>},
        {{"32F",
          [](int size) {
              return benchmarks::RandomValues(size, CV_32FC1);
          }},
         SortedMedian<float>}};
    for (auto const & [input, sorted] : inputs)
    {
        TimeOn("MedianNoZero/morvane/", input, side, [](cv::Mat const & image, cv::Mat & /*out*/) {
            double median = 0.0;
            return MedianNoZero(image, median);
        });
        TimeOn("MedianNoZero/sorted/", input, side, [sorted = sorted](cv::Mat const & image, cv::Mat & /*out*/) {
            double median = 0.0;
            return sorted(image, median);
        });
        TimeOn("InterpolatedRobustLocalMinNoZero/morvane/", input, side, [](cv::Mat const & image, cv::Mat & out) {
            return InterpolatedRobustLocalMinNoZero(image, 64, out);
        });
        TimeOn("ComputeHistogram/morvane/", input, side, [](cv::Mat const & image, cv::Mat & out) {
            return ComputeHistogram(image, out, 65535);
        });
        TimeOn("ComputeHistogram/calcHist/", input, side, [](cv::Mat const & image, cv::Mat & out) {
            int const bins = 65536;
            float const range[] = {0.0F, 65536.0F};
            float const * ranges[] = {range};
            cv::calcHist(&image, 1, nullptr, cv::noArray(), out, 1, &bins, ranges, true, false);
            return true;
        });
    }
}

[[maybe_unused]] bool const registered = [] {
    for (int const side : {256, 512, 1024, 2048})
    {
        TimeSliding(side);
        TimeGlobal(side);
    }
    TimeDirectly(256);
    return true;
}();

} // namespace
