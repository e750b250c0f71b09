#include "support/ImageLiterals.h"
#include "support/QuasiFlatOracle.h"

#include <morvane/algorithm/Filling.h>
#include <morvane/common/ImageCompare.h>
#include <morvane/connexity/Labelling.h>
#include <morvane/connexity/ZoneMeasures.h>
#include <morvane/features/Normals.h>
#include <morvane/filters/Statistics.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

namespace morvane::tests
{

using common::ImageCompare;
using connexity::eConnexity8;

namespace
{

cv::Scalar const kNothing(0);
cv::Scalar const kFull(255);

bool HasNoPixels(cv::Mat const & image)
{
    return image.empty() || image.rows == 0 || image.cols == 0;
}

/// 0 where the image is equal to 0, else 255.
cv::Mat Validity(cv::Mat const & image)
{
    cv::Mat valid(image.size(), CV_8UC1);
    (void)ImageCompare(image, 0, 0.0, kNothing, kFull, valid);
    return valid;
}

/// 255 where the image equals a number, else 0.
cv::Mat EqualTo(cv::Mat const & image, int number)
{
    cv::Mat equal(image.size(), CV_8UC1);
    (void)ImageCompare(image, 0, number, kFull, kNothing, equal);
    return equal;
}

/// One side of a thumbnail.
int ThumbnailSide(int side, double count)
{
    return static_cast<int>(side / (side / count));
}

/// The sum of an image over a zone, divided by how many pixels there are not 0.
double MeanOver(cv::Mat const & image, cv::Mat const & zone)
{
    cv::Mat masked(image.size(), image.type(), kNothing);
    image.copyTo(masked, zone);
    return cv::sum(masked)[0] / cv::countNonZero(masked);
}

/// The points of the longest contour of a zone.
std::vector<cv::Point> LongestContour(cv::Mat const & zone)
{
    cv::Mat framed;
    cv::copyMakeBorder(zone, framed, 1, 1, 1, 1, cv::BORDER_CONSTANT, kNothing);
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(framed, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE, cv::Point(-1, -1));
    if (contours.empty()) return {};
    std::stable_sort(contours.begin(), contours.end(), [](auto const & left, auto const & right) {
        return left.size() > right.size();
    });
    return contours.front();
}

} // namespace

bool OracleCoarsePartition(cv::Mat const & image, cv::Mat & out)
{
    if (HasNoPixels(image)) return false;
    cv::Mat blurred;
    cv::Size const size(ThumbnailSide(image.cols, 10.0), ThumbnailSide(image.rows, 10.0));
    cv::resize(Validity(image), blurred, size, 0.0, 0.0, cv::INTER_LINEAR);
    cv::resize(blurred.clone(), blurred, image.size(), 0.0, 0.0, cv::INTER_LINEAR);
    (void)ImageCompare(blurred, 0, 0.0, kNothing, kFull, blurred);
    cv::Mat parts(image.size(), CV_32SC1, kNothing);
    (void)connexity::LabelFlatZonesNoZero(blurred, eConnexity8, parts);

    cv::Mat work;
    parts.convertTo(work, CV_32F);
    for (int pass = 0; pass < 501; ++pass)
    {
        if (!algorithm::FillImageWithDilation(work, out, 3)) return false;
        work = out.clone();
        if (cv::countNonZero(work == 0.0) == 0) break;
    }
    double largest = 0.0;
    cv::minMaxLoc(out, nullptr, &largest);
    return largest != 0.0;
}

bool OracleRegions(
    cv::Mat const & image, cv::Mat const & areas, cv::Mat const & labels, cv::Mat const & coarse, int areaLimit,
    double pixelSize, std::vector<RegionInfo> & regions)
{
    if (HasNoPixels(image) || HasNoPixels(areas) || HasNoPixels(labels) || HasNoPixels(coarse)) return false;
    if (!(pixelSize > 0.0) || areaLimit <= 0) return false;
    cv::Mat areasLeft = areas.clone();
    cv::Mat labelsLeft = labels.clone();
    cv::Mat valid(image.size(), CV_8UC1);
    (void)ImageCompare(image, 1, 0.0, kFull, kNothing, valid);
    (void)ImageCompare(valid, 0, 0.0, kNothing, areasLeft, areasLeft);
    (void)ImageCompare(valid, 0, 0.0, kNothing, labelsLeft, labelsLeft);

    cv::Mat normals;
    cv::Mat slope;
    cv::Mat rms;
    bool const isSloped =
        features::ComputeNormalSlopeAndRms(image, valid, static_cast<float>(pixelSize), 7, normals, slope, rms);
    if (!isSloped) return false;
    (void)ImageCompare(slope, 1, 30.0, kNothing, areasLeft, areasLeft);
    (void)ImageCompare(slope, 1, 30.0, kNothing, labelsLeft, labelsLeft);
    double maxLabel = 0.0;
    cv::minMaxLoc(labelsLeft, nullptr, &maxLabel, nullptr, nullptr, valid);

    std::vector<RegionInfo> list;
    cv::Mat const table = connexity::ComputeArea(labels);
    for (int label = 1; label < table.rows; ++label)
    {
        list.push_back(Region(label, table.at<int>(label), -1, cv::boundingRect(EqualTo(labels, label))));
    }
    if (list.empty()) return false;
    if (maxLabel > 1.0 && !OracleRemoveSmallRegions(areasLeft, labelsLeft, areaLimit, list)) return false;

    cv::Point best;
    cv::minMaxLoc(areasLeft, nullptr, nullptr, nullptr, &best);
    int const bestLabel = labelsLeft.at<int>(best);
    int const bestGroup = coarse.at<int>(best);
    auto const window = static_cast<unsigned>(std::max(3.0, std::round(25000.0 / pixelSize)));
    cv::Mat robustMin;
    if (!filters::InterpolatedRobustLocalMinNoZero(image, window, robustMin)) return false;

    regions.clear();
    for (RegionInfo & region : list)
    {
        if (region.area <= 0) continue;
        cv::Mat const zone = EqualTo(labelsLeft(region.bbox), region.label);
        double const meanHeight = MeanOver(image(region.bbox), zone);
        double const meanMin = MeanOver(robustMin(region.bbox), zone);
        cv::Point location;
        cv::minMaxLoc(zone, nullptr, nullptr, nullptr, &location);
        int const group = coarse(region.bbox).at<int>(location);
        region.group = group < 1 ? bestGroup : group;
        if (region.label == bestLabel || 4000.0 >= std::abs(meanHeight - meanMin)) regions.push_back(region);
    }
    return true;
}

bool OracleRemoveSmallRegions(cv::Mat & areas, cv::Mat & labels, int areaLimit, std::vector<RegionInfo> & regions)
{
    if (HasNoPixels(areas) || HasNoPixels(labels) || regions.empty()) return false;
    std::vector<RegionInfo> kept;
    for (RegionInfo const & region : regions)
    {
        if (region.area > areaLimit)
        {
            kept.push_back(region);
            continue;
        }
        for (int y = region.bbox.y; y < region.bbox.y + region.bbox.height; ++y)
        {
            for (int x = region.bbox.x; x < region.bbox.x + region.bbox.width; ++x)
            {
                if (labels.at<int>(y, x) == region.label) labels.at<int>(y, x) = 0;
                if (areas.at<int>(y, x) == region.label) areas.at<int>(y, x) = 0;
            }
        }
    }
    regions = kept;
    SortByArea(regions);
    return true;
}

bool OracleGroupSeeds(std::vector<RegionInfo> const & regions, std::vector<int> & seedIndices)
{
    seedIndices.clear();
    int largestGroup = -1;
    for (RegionInfo const & region : regions)
        largestGroup = std::max(largestGroup, region.group);
    for (int group = 0; group <= largestGroup; ++group)
    {
        int index = -1;
        int area = -1;
        for (std::size_t i = 0; i < regions.size(); ++i)
        {
            if (regions[i].group != group || regions[i].area <= area) continue;
            area = regions[i].area;
            index = static_cast<int>(i);
        }
        if (index >= 0) seedIndices.push_back(index);
    }
    return !seedIndices.empty();
}

bool OracleExtendSurface(cv::Mat const & source, cv::Mat & out, int radius)
{
    if (HasNoPixels(source) || radius < 0) return false;
    cv::Mat work;
    cv::Size const size(ThumbnailSide(source.cols, 100.0), ThumbnailSide(source.rows, 100.0));
    cv::resize(source.clone(), work, size, 0.0, 0.0, cv::INTER_LINEAR);
    cv::Mat next(source.size(), source.type(), kNothing);
    int const limit = static_cast<int>(radius / (source.cols / 100.0));
    for (int counter = 0; counter <= limit; ++counter)
    {
        (void)algorithm::FillImageWithMean(work, work, next, eConnexity8);
        bool const equal = common::AreImagesEqual(work, next);
        work = next.clone();
        if (equal) break;
    }
    cv::resize(work, out, source.size(), 0.0, 0.0, cv::INTER_LINEAR);
    return true;
}

ResultType OracleEvaluateRegion(
    cv::Mat const & accepted, cv::Mat const & zone, cv::Mat const & image, int radius, double pixelSize,
    double slopeRatio)
{
    if (HasNoPixels(accepted) || HasNoPixels(zone) || HasNoPixels(image) || !(pixelSize > 0.0)) return ResultError;
    if (cv::sum(zone)[0] <= 1.0) return ResultRejected;
    cv::Mat surface;
    if (!OracleExtendSurface(image, surface, radius)) return ResultError;
    cv::Mat distance;
    cv::distanceTransform(accepted.clone(), distance, cv::DIST_L2, 3, CV_32F);
    cv::Mat zoneSurface(image.size(), image.type(), kNothing);
    surface.copyTo(zoneSurface, zone);

    std::vector<cv::Point> points = LongestContour(zone);
    if (points.empty()) return ResultRejected;
    std::stable_sort(points.begin(), points.end(), [&](cv::Point const & left, cv::Point const & right) {
        return distance.at<float>(left) < distance.at<float>(right);
    });
    int looked = 0;
    bool isAccepted = false;
    for (std::size_t i = 0; i < points.size() / 4; ++i)
    {
        cv::Point const point = points[i];
        float const d = distance.at<float>(point);
        if (!(d > 0.0F) || !(static_cast<float>(radius) > d)) continue;
        double const height = std::abs(ElementAt(image, point.y, point.x) - ElementAt(zoneSurface, point.y, point.x));
        ++looked;
        isAccepted = isAccepted || height < static_cast<double>(d) * slopeRatio * pixelSize;
    }
    if (isAccepted) return ResultAccepted;
    return looked > 0 ? ResultRejected : ResultUnknown;
}

bool OracleGrowMask(
    cv::Mat const & labels, cv::Mat const & image, SurfaceSearch const & search, std::vector<RegionInfo> & regions,
    cv::Mat & mask)
{
    std::ptrdiff_t cursor = 0;
    auto const removeAndStartAgain = [&] {
        regions.erase(regions.begin() + cursor);
        cursor = 0;
    };
    while (cursor < std::ssize(regions))
    {
        RegionInfo const region = regions[static_cast<std::size_t>(cursor)];
        if (region.area <= 2)
        {
            removeAndStartAgain();
            continue;
        }
        ResultType result = ResultAccepted;
        if (region.area <= search.areaLimit)
        {
            cv::Mat const zone = EqualTo(labels, region.label);
            result = OracleEvaluateRegion(mask, zone, image, search.radius, search.pixelSize, search.slopeRatio);
        }
        switch (result)
        {
        case ResultError:
            return false;
        case ResultAccepted:
            if (!ImageCompare(labels, 0, region.label, kFull, mask, mask)) return false;
            removeAndStartAgain();
            break;
        case ResultRejected:
            regions.erase(regions.begin() + cursor);
            break;
        case ResultUnknown:
            ++cursor;
            break;
        }
    }
    return true;
}

} // namespace morvane::tests
