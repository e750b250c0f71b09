#include "connexity/RegionSearch.h"

#include "common/Comparisons.h"
#include "common/Dispatch.h"
#include "common/Morphology.h"
#include "connexity/RegionEvaluation.h"

#include <morvane/common/ImageCompare.h>
#include <morvane/connexity/QuasiFlatZones.h>
#include <morvane/connexity/ZoneMeasures.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <list>
#include <map>

namespace morvane::quasi_flat_internals
{

using common::ImageCompare;
using common::kEqual;

namespace
{

constexpr int kNegligibleArea = 2;

/// Clears the pixels that a closing of the label image changes: the rims of zones.
bool PeelZones(cv::Mat const & image, cv::Mat & labels)
{
    cv::Mat peeled = labels.clone();
    if (!ImageCompare(image, kEqual, 0.0, cv::Scalar(0), peeled, peeled)) return false;
    peeled.convertTo(peeled, CV_32F);
    common::Filter(peeled, peeled, cv::MORPH_CLOSE, common::StructuringElement(cv::MORPH_RECT, 3));
    peeled.convertTo(peeled, CV_32S);
    return ImageCompare(peeled, kEqual, labels, labels, cv::Scalar(0), labels);
}

/// Adds a zone to the mask.
bool AddZone(cv::Mat const & labels, RegionInfo const & region, cv::Mat & mask)
{
    cv::Rect const box = region.bbox & cv::Rect({0, 0}, labels.size());
    if (box.empty()) return true;
    cv::Mat window = mask(box);
    return ImageCompare(labels(box), kEqual, region.label, cv::Scalar(255), window, window);
}

/// Moves the zones at some places of the list to the mask.
bool MoveToMask(cv::Mat const & labels, std::vector<int> places, std::vector<RegionInfo> & regions, cv::Mat & mask)
{
    for (int const place : places)
    {
        if (!AddZone(labels, regions[static_cast<std::size_t>(place)], mask)) return false;
    }
    // From the back, so that the places of the others stay what they are.
    std::ranges::sort(places, std::greater{});
    for (int const place : places)
    {
        regions.erase(regions.begin() + place);
    }
    return true;
}

/// Tests one zone of the list.
ResultType Evaluate(
    cv::Mat const & labels, RegionInfo const & region, cv::Mat const & image, SearchLimits const & limits,
    cv::Mat const & mask)
{
    cv::Rect const box = region.bbox & cv::Rect({0, 0}, labels.size());
    cv::Mat zone = cv::Mat::zeros(box.size(), CV_8U);
    if (!box.empty() && !ImageCompare(labels(box), kEqual, region.label, cv::Scalar(255), cv::Scalar(0), zone))
        return ResultError;
    return EvaluateZone(mask, zone, box, image, limits);
}

} // namespace

// What a step that fails means differs, on purpose: most end the search with false, but an image without coarse parts,
// and one without a zone worth a look, has no base surface, which is an answer.
bool MaskBaseSurface(
    cv::Mat const & image, cv::Mat const & filtered, SearchLimits const & limits, cv::Mat & labels, cv::Mat & mask)
{
    if (!PeelZones(image, labels)) return false;

    cv::Mat coarse;
    if (!BuildCoarsePartition(image, coarse)) return true;
    coarse.convertTo(coarse, CV_32S);

    cv::Mat const areas = connexity::LabelFlatZonesNoZeroWithArea(labels, connexity::eConnexity8);

    std::vector<RegionInfo> regions;
    if (!ComputeRegions(image, areas, labels, coarse, limits.areaLimit, limits.pixelSize, regions)) return false;
    if (regions.empty()) return true;

    std::vector<int> seeds;
    if (!SelectGroupSeeds(regions, seeds)) return false;
    if (!MoveToMask(labels, seeds, regions, mask)) return false;

    return GrowMask(
        labels, filtered, limits.areaLimit, limits.radius, limits.pixelSize, limits.slopeRatio, regions, mask);
}

bool SelectGroupSeeds(std::vector<RegionInfo> const & regions, std::vector<int> & seedIndices)
{
    if (regions.empty()) return false;
    std::map<int, int> largestOfGroup;
    for (std::size_t i = 0; i < regions.size(); ++i)
    {
        int const place = static_cast<int>(i);
        RegionInfo const & region = regions[i];
        if (region.group < 0 || region.area < 0) continue;
        auto const [slot, isFirst] = largestOfGroup.try_emplace(region.group, place);
        if (!isFirst && region.area > regions[static_cast<std::size_t>(slot->second)].area) slot->second = place;
    }
    seedIndices.clear();
    for (auto const & [group, place] : largestOfGroup)
    {
        seedIndices.push_back(place);
    }
    return !seedIndices.empty();
}

bool GrowMask(
    cv::Mat const & labels, cv::Mat const & image, int areaLimit, int radius, double pixelSize, double slopeRatio,
    std::vector<RegionInfo> & regions, cv::Mat & mask)
{
    if (!common::SameSize(labels, image, mask) || labels.type() != CV_32SC1 || mask.type() != CV_8UC1) return false;
    SearchLimits const limits{areaLimit, radius, pixelSize, slopeRatio};
    // A list, as zones leave it from anywhere.
    std::list<RegionInfo> open(regions.begin(), regions.end());
    auto const keepOpen = [&] {
        regions.assign(open.begin(), open.end());
    };
    auto cursor = open.begin();
    while (cursor != open.end())
    {
        if (cursor->area <= kNegligibleArea)
        {
            open.erase(cursor);
            cursor = open.begin();
            continue;
        }
        ResultType const result =
            cursor->area > areaLimit ? ResultAccepted : Evaluate(labels, *cursor, image, limits, mask);
        switch (result)
        {
        case ResultAccepted:
            if (!AddZone(labels, *cursor, mask)) return false;
            open.erase(cursor);
            // The mask has grown, which may decide on zones that were passed over.
            cursor = open.begin();
            break;
        case ResultRejected:
            cursor = open.erase(cursor);
            break;
        case ResultUnknown:
            ++cursor;
            break;
        case ResultError:
            keepOpen();
            return false;
        }
    }
    keepOpen();
    return true;
}

} // namespace morvane::quasi_flat_internals
