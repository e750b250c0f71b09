#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/connexity/ZoneMeasures.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <string>

namespace
{

using namespace morvane::connexity;

int LargestLabel(cv::Mat const & labels)
{
    int largest = 0;
    for (int y = 0; y < labels.rows; ++y)
    {
        int const * const row = labels.ptr<int>(y);
        for (int x = 0; x < labels.cols; ++x)
        {
            largest = std::max(largest, row[x]);
        }
    }
    return largest;
}

/// The plain form: one loop, one table.
cv::Mat PlainArea(cv::Mat const & labels)
{
    cv::Mat table = cv::Mat::zeros(LargestLabel(labels) + 1, 1, CV_32SC1);
    int * const entries = table.ptr<int>();
    for (int y = 0; y < labels.rows; ++y)
    {
        int const * const row = labels.ptr<int>(y);
        for (int x = 0; x < labels.cols; ++x)
        {
            ++entries[row[x]];
        }
    }
    return table;
}

cv::Mat PlainMax(cv::Mat const & labels, cv::Mat const & values)
{
    cv::Mat table(LargestLabel(labels) + 1, 1, CV_32FC1, cv::Scalar(-2147483647.0));
    auto * const entries = table.ptr<float>();
    for (int y = 0; y < labels.rows; ++y)
    {
        int const * const row = labels.ptr<int>(y);
        auto const * const value = values.ptr<float>(y);
        for (int x = 0; x < labels.cols; ++x)
        {
            entries[row[x]] = std::max(entries[row[x]], value[x]);
        }
    }
    return table;
}

template <class Work>
void TimeOnLabels(std::string const & name, int side, Work work)
{
    benchmarks::Time(
        name,
        [=] {
            return [labels = benchmarks::ManyZones(side), work] {
                return work(labels).rows;
            };
        },
        side);
}

template <class Work>
void TimeOnValues(std::string const & name, int side, int type, Work work)
{
    benchmarks::Time(
        name,
        [=] {
            return [labels = benchmarks::ManyZones(side), values = benchmarks::RandomValues(side, type), work] {
                return work(labels, values).rows;
            };
        },
        side);
}

/// What the statistics of OpenCV's labelling cost beside the labelling: the two are timed one by one.
void RegisterOpenCV(int side, std::string const & where)
{
    auto const makeMask = [side] {
        return cv::Mat(benchmarks::ManyZones(side) != 0);
    };
    benchmarks::Time(
        "ConnectedComponents/opencv/" + where,
        [=] {
            return [mask = makeMask(), labels = cv::Mat()]() mutable {
                return cv::connectedComponents(mask, labels);
            };
        },
        side);
    benchmarks::Time(
        "ConnectedComponentsWithStats/opencv/" + where,
        [=] {
            return [mask = makeMask(), labels = cv::Mat(), stats = cv::Mat(), centroids = cv::Mat()]() mutable {
                return cv::connectedComponentsWithStats(mask, labels, stats, centroids);
            };
        },
        side);
}

[[maybe_unused]] bool const registered = [] {
    for (int const side : {512, 2048, 4096})
    {
        std::string const where = "zones/" + std::to_string(side);
        TimeOnLabels("ComputeArea/morvane/" + where, side, ComputeArea);
        TimeOnLabels("ComputeArea/plain/" + where, side, PlainArea);
        TimeOnLabels("ComputeColMax/morvane/" + where, side, ComputeColMax);
        for (auto const & [name, type] : {std::pair{"8U", CV_8UC1}, {"16U", CV_16UC1}, {"32F", CV_32FC1}})
        {
            std::string const typed = name + std::string("-zones/") + std::to_string(side);
            TimeOnValues("ComputeMax/morvane/" + typed, side, type, ComputeMax);
            TimeOnValues("ComputeMin/morvane/" + typed, side, type, ComputeMin);
            TimeOnValues("ComputeAccumulation/morvane/" + typed, side, type, ComputeAccumulation);
        }
        TimeOnValues("ComputeMax/plain/32F-" + where, side, CV_32FC1, PlainMax);
        RegisterOpenCV(side, where);
    }
    return true;
}();

} // namespace
