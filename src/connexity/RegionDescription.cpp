#include "common/Comparisons.h"
#include "common/Dispatch.h"

#include <morvane/common/ImageCompare.h>
#include <morvane/connexity/QuasiFlatZones.h>
#include <morvane/connexity/ZoneMeasures.h>
#include <morvane/features/Normals.h>
#include <morvane/filters/Statistics.h>

#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <vector>

namespace morvane::quasi_flat_internals
{

using common::ImageCompare;
using common::kGreater;

namespace
{

constexpr double kSlopeLimit = 30.0;        // degrees
constexpr double kHeightTolerance = 4000.0; // in the unit of the heights
constexpr double kFloorCell = 25000.0;      // in the unit of the heights
constexpr int kSmallestFloorCell = 3;       // pixels
constexpr unsigned kNormalKernel = 7;       // pixels
constexpr double kLargestFloorCell = 1.0e9; // pixels, more than any image has

/// Tells whether all are label images of one size with pixels.
template <class... Images>
bool AreLabels(cv::Mat const & first, Images const &... others)
{
    bool const haveTypes = first.type() == CV_32SC1 && ((others.type() == CV_32SC1) && ...);
    return common::SameSize(first, others...) && !first.empty() && haveTypes;
}

/// The largest first; of equals, those that come first stay first.
void SortByArea(std::vector<RegionInfo> & regions)
{
    std::ranges::stable_sort(regions, std::ranges::greater{}, &RegionInfo::area);
}

/// A record for each label from 1 to the largest, those that do not occur included.
std::vector<RegionInfo> DescribeZones(cv::Mat const & labels)
{
    cv::Mat const areas = connexity::ComputeArea(labels);
    cv::Mat const left = connexity::ComputeColMin(labels);
    cv::Mat const right = connexity::ComputeColMax(labels);
    cv::Mat const top = connexity::ComputeRowMin(labels);
    cv::Mat const bottom = connexity::ComputeRowMax(labels);
    std::vector<RegionInfo> regions;
    for (int label = 1; label < areas.rows; ++label)
    {
        RegionInfo region;
        region.label = label;
        region.area = areas.at<int>(label);
        if (region.area > 0)
        {
            cv::Point const first(left.at<int>(label), top.at<int>(label));
            cv::Point const last(right.at<int>(label), bottom.at<int>(label));
            region.bbox = cv::Rect(first, last + cv::Point(1, 1));
        }
        regions.push_back(region);
    }
    return regions;
}

/// Regions of one label, in a list that is sorted by label.
struct Named
{
    std::vector<RegionInfo>::const_iterator first;
    std::vector<RegionInfo>::const_iterator last;
};

Named NamedBy(std::vector<RegionInfo> const & regions, int label)
{
    return {
        std::ranges::lower_bound(regions, label, {}, &RegionInfo::label),
        std::ranges::upper_bound(regions, label, {}, &RegionInfo::label)};
}

/// Clears the pixels of an image that hold the number of a region, inside its box. The regions are sorted by label.
void ClearNumbers(std::vector<RegionInfo> const & regions, cv::Mat & image)
{
    cv::parallel_for_({0, image.rows}, [&](cv::Range const & rows) {
        for (int y = rows.start; y < rows.end; ++y)
        {
            int * const row = image.ptr<int>(y);
            int number = 0;
            Named named = NamedBy(regions, number);
            for (int x = 0; x < image.cols; ++x)
            {
                if (row[x] != number)
                {
                    number = row[x];
                    named = NamedBy(regions, number);
                }
                bool const isInside = std::any_of(named.first, named.last, [&](RegionInfo const & region) {
                    return region.bbox.contains({x, y});
                });
                if (isInside) row[x] = 0;
            }
        }
    });
}

/// Sums over the pixels of a zone.
struct HeightSums
{
    double height = 0.0;
    double floor = 0.0;
    int heights = 0; ///< pixels that are not 0
    int floors = 0;
    cv::Point first{-1, -1};
};

/// Sums heights and floors over zones, in raster order: one row of the result for each label up to @p largest.
std::vector<HeightSums> SumHeights(cv::Mat const & labels, cv::Mat const & image, cv::Mat const & floor, int largest)
{
    std::vector<HeightSums> sums(static_cast<std::size_t>(largest) + 1);
    for (int y = 0; y < labels.rows; ++y)
    {
        int const * const labelRow = labels.ptr<int>(y);
        auto const * const heightRow = image.ptr<float>(y);
        auto const * const floorRow = floor.ptr<float>(y);
        for (int x = 0; x < labels.cols; ++x)
        {
            if (labelRow[x] <= 0) continue;
            HeightSums & zone = sums[static_cast<std::size_t>(labelRow[x])];
            if (zone.first.x < 0) zone.first = {x, y};
            zone.height += double{heightRow[x]};
            zone.floor += double{floorRow[x]};
            zone.heights += heightRow[x] != 0.0F ? 1 : 0;
            zone.floors += floorRow[x] != 0.0F ? 1 : 0;
        }
    }
    return sums;
}

/// The zone that is kept whatever its height, and the coarse part for zones that lie in none.
struct Largest
{
    int label;
    int group;
};

Largest FindLargest(cv::Mat const & areas, cv::Mat const & labels, cv::Mat const & coarse)
{
    cv::Point place;
    cv::minMaxLoc(areas, nullptr, nullptr, nullptr, &place);
    return {labels.at<int>(place), coarse.at<int>(place)};
}

/// Tells whether the mean height is near the mean of the floor; not, where one of them has no pixels.
bool IsNearFloor(HeightSums const & zone)
{
    if (zone.heights == 0 || zone.floors == 0) return false;
    return std::abs(zone.height / zone.heights - zone.floor / zone.floors) <= kHeightTolerance;
}

/// Keeps the regions near the floor, and the largest, and says in which coarse part each begins.
std::vector<RegionInfo> KeepNearFloor(
    std::vector<RegionInfo> const & regions, std::vector<HeightSums> const & zones, cv::Mat const & coarse,
    Largest const & largest)
{
    std::vector<RegionInfo> kept;
    for (RegionInfo region : regions)
    {
        HeightSums const & zone = zones[static_cast<std::size_t>(region.label)];
        if (region.area <= 0 || !(region.label == largest.label || IsNearFloor(zone))) continue;
        region.group = coarse.at<int>(zone.first);
        if (region.group < 1) region.group = largest.group;
        kept.push_back(region);
    }
    return kept;
}

} // namespace

bool RemoveSmallRegions(cv::Mat & areas, cv::Mat & labels, int areaLimit, std::vector<RegionInfo> & regions)
{
    if (!AreLabels(areas, labels) || regions.empty()) return false;
    auto const isSmall = [&](RegionInfo const & region) {
        return region.area <= areaLimit;
    };
    std::vector<RegionInfo> small;
    std::ranges::copy_if(regions, std::back_inserter(small), isSmall);
    std::ranges::sort(small, {}, &RegionInfo::label);
    ClearNumbers(small, labels);
    // A label, not an area, is looked for here as well.
    ClearNumbers(small, areas);
    std::erase_if(regions, isSmall);
    SortByArea(regions);
    return true;
}

bool ComputeRegions(
    cv::Mat const & image, cv::Mat const & areas, cv::Mat const & labels, cv::Mat const & coarse, int areaLimit,
    double pixelSize, std::vector<RegionInfo> & regions)
{
    if (!AreLabels(areas, labels, coarse) || !common::SameSize(areas, image) || image.type() != CV_32FC1) return false;
    if (!(pixelSize > 0.0) || areaLimit <= 0) return false;

    cv::Mat const valid = image > 0.0;
    cv::Mat keptAreas = cv::Mat::zeros(areas.size(), areas.type());
    cv::Mat keptLabels = keptAreas.clone();
    areas.copyTo(keptAreas, valid);
    labels.copyTo(keptLabels, valid);

    cv::Mat normals;
    cv::Mat slope;
    cv::Mat rms;
    auto const side = static_cast<float>(std::min(pixelSize, double{FLT_MAX}));
    if (!features::ComputeNormalSlopeAndRms(image, valid, side, kNormalKernel, normals, slope, rms)) return false;
    if (!ImageCompare(slope, kGreater, kSlopeLimit, cv::Scalar(0), keptAreas, keptAreas)) return false;
    if (!ImageCompare(slope, kGreater, kSlopeLimit, cv::Scalar(0), keptLabels, keptLabels)) return false;
    double largestLabel = 0.0;
    cv::minMaxLoc(keptLabels, nullptr, &largestLabel, nullptr, nullptr, valid);

    std::vector<RegionInfo> list = DescribeZones(labels);
    if (list.empty()) return false;
    int const labelsInAll = list.back().label;
    if (largestLabel > 1.0 && !RemoveSmallRegions(keptAreas, keptLabels, areaLimit, list)) return false;
    Largest const largest = FindLargest(keptAreas, keptLabels, coarse);

    double const cell = std::clamp(std::round(kFloorCell / pixelSize), double{kSmallestFloorCell}, kLargestFloorCell);
    cv::Mat floor;
    if (!filters::InterpolatedRobustLocalMinNoZero(image, static_cast<unsigned>(cell), floor)) return false;
    regions = KeepNearFloor(list, SumHeights(keptLabels, image, floor, labelsInAll), coarse, largest);
    return true;
}

} // namespace morvane::quasi_flat_internals
