#include "morvane/support/Zones.h"

#include "morvane/support/ProgramError.h"

#include <morvane/connexity/ZoneMeasures.h>
#include <morvane/visual/ColorMaps.h>

#include <algorithm>
#include <cstddef>
#include <limits>

namespace program
{

namespace
{

/// Calls @p use with each pixel of a zone and its label.
template <class Use>
void ForEachZonePixel(cv::Mat const & labels, Use && use)
{
    for (int y = 0; y < labels.rows; ++y)
    {
        int const * const row = labels.ptr<int>(y);
        for (int x = 0; x < labels.cols; ++x)
        {
            if (row[x] > 0) use(cv::Point(x, y), static_cast<std::size_t>(row[x]));
        }
    }
}

} // namespace

int LargestLabel(cv::Mat const & labels)
{
    double largest = 0.0;
    cv::minMaxIdx(labels, nullptr, &largest);
    return static_cast<int>(std::max(largest, 0.0));
}

void DropSmallZones(int area, cv::Mat & labels)
{
    cv::Mat1i const areas = morvane::connexity::ComputeArea(labels);
    cv::Mat1i numbers(areas.rows, 1, 0);
    int number = 0;
    for (int label = 1; label < areas.rows; ++label)
    {
        if (areas(label) >= area) numbers(label) = ++number;
    }
    if (!morvane::visual::ApplyLut(labels, numbers, labels)) throw ProgramError("the zones cannot be renumbered");
}

std::vector<std::optional<cv::Point>> PlacesOf(cv::Mat const & labels)
{
    auto const count = static_cast<std::size_t>(LargestLabel(labels)) + 1;
    std::vector<cv::Point2d> centres(count);
    std::vector<double> areas(count, 0.0);
    ForEachZonePixel(labels, [&](cv::Point const & pixel, std::size_t label) {
        centres[label] += cv::Point2d(pixel);
        areas[label] += 1.0;
    });
    std::vector<std::optional<cv::Point>> places(count);
    std::vector<double> nearest(count, std::numeric_limits<double>::infinity());
    ForEachZonePixel(labels, [&](cv::Point const & pixel, std::size_t label) {
        cv::Point2d const way = cv::Point2d(pixel) - centres[label] / areas[label];
        if (way.dot(way) >= nearest[label]) return;
        nearest[label] = way.dot(way);
        places[label] = pixel;
    });
    return places;
}

} // namespace program
