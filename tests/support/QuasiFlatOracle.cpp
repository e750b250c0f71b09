#include "support/QuasiFlatOracle.h"

#include <morvane/algorithm/Filling.h>
#include <morvane/algorithm/ImageUtilities.h>
#include <morvane/common/ImageCompare.h>
#include <morvane/connexity/Labelling.h>
#include <morvane/connexity/ZoneMeasures.h>
#include <morvane/visual/ColorMaps.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>

namespace morvane::tests
{

using common::ImageCompare;
using connexity::eConnexity8;

namespace
{

cv::Scalar const kNothing(0);
cv::Scalar const kFull(255);

/// The morphology of a 3x3 or larger square on a matrix of its own.
void Morph(cv::Mat & image, int operation, cv::Mat const & square)
{
    cv::Mat own = image.clone();
    cv::morphologyEx(own, own, operation, square, {-1, -1}, 1, cv::BORDER_CONSTANT);
    own.copyTo(image);
}

cv::Mat Square(int size)
{
    return cv::getStructuringElement(cv::MORPH_RECT, cv::Size(size, size), cv::Point(-1, -1));
}

/// The steps that all forms begin with, and the seeds if they have the image's size.
enum class Start
{
    True,
    False,
    WithoutSeeds
};

Start StartWithSeeds(cv::Mat const & image, cv::Mat const & labels, cv::Mat const & seeds, cv::Mat & mask)
{
    mask = cv::Mat(labels.size(), CV_8UC1, kNothing);
    if (seeds.rows != image.rows || seeds.cols != image.cols) return Start::WithoutSeeds;
    if (cv::countNonZero(seeds) < 1) return Start::True;
    cv::Mat const lut = connexity::ComputeMax(labels, seeds);
    cv::Mat touched(labels.rows, labels.cols, labels.type(), kNothing);
    if (!visual::ApplyLut(labels, lut, touched)) return Start::False;
    return ImageCompare(touched, 0, 0.0, kNothing, kFull, mask) ? Start::True : Start::False;
}

} // namespace

bool CallQuasiFlatZones(cv::Mat const & image, ZonePreparation const & how, cv::Mat & filtered, cv::Mat & labels)
{
    return ComputeQuasiFlatZones(
        image, static_cast<projection::ProjectionType>(how.projection), how.delta,
        static_cast<connexity::eConnexityType>(how.connexity), how.windowSize, how.fillHoles, how.filter, filtered,
        labels);
}

bool CallPropagation(
    cv::Mat const & image, ZonePreparation const & how, cv::Mat const & seeds, cv::Mat & filtered, cv::Mat & mask)
{
    return QuasiFlatZonesPropagation(
        image, static_cast<projection::ProjectionType>(how.projection), how.delta,
        static_cast<connexity::eConnexityType>(how.connexity), how.windowSize, how.fillHoles, how.filter, seeds,
        filtered, mask);
}

bool CallPropagation(
    cv::Mat const & image, ZonePreparation const & how, std::vector<cv::Point> const & seeds, cv::Mat & filtered,
    cv::Mat & mask)
{
    return QuasiFlatZonesPropagation(
        image, static_cast<projection::ProjectionType>(how.projection), how.delta,
        static_cast<connexity::eConnexityType>(how.connexity), how.windowSize, how.fillHoles, how.filter, seeds,
        filtered, mask);
}

bool CallPropagation(
    cv::Mat const & image, ZonePreparation const & how, cv::Mat const & seeds, SurfaceSearch const & search,
    cv::Mat & filtered, cv::Mat & mask)
{
    int const reserved = -7;
    return QuasiFlatZonesPropagation(
        image, static_cast<projection::ProjectionType>(how.projection), how.delta,
        static_cast<connexity::eConnexityType>(how.connexity), how.windowSize, how.fillHoles, how.filter, seeds,
        search.areaLimit, reserved, search.radius, search.pixelSize, search.slopeRatio, filtered, mask);
}

bool OracleQuasiFlatZones(cv::Mat const & image, ZonePreparation const & how, cv::Mat & filtered, cv::Mat & labels)
{
    if (how.fillHoles)
    {
        if (!algorithm::FillHolesInterpolationWithMin(image, filtered, how.windowSize)) return false;
    }
    else
    {
        image.copyTo(filtered);
    }
    for (int size = 3; how.filter && size <= how.windowSize; size += 2)
    {
        if (how.projection == 0)
        {
            Morph(filtered, cv::MORPH_CLOSE, Square(size));
            Morph(filtered, cv::MORPH_OPEN, Square(size));
        }
        else if (how.projection == 1)
        {
            Morph(filtered, cv::MORPH_OPEN, Square(size));
            Morph(filtered, cv::MORPH_CLOSE, Square(size));
        }
    }
    labels = cv::Mat(filtered.size(), CV_32SC1, kNothing);
    return connexity::LabelDeltaFlatZonesNoZero(
        filtered, static_cast<connexity::eConnexityType>(how.connexity), how.delta, labels);
}

bool OraclePropagation(
    cv::Mat const & image, ZonePreparation const & how, cv::Mat const & seeds, cv::Mat & filtered, cv::Mat & mask)
{
    cv::Mat labels;
    if (!OracleQuasiFlatZones(image, how, filtered, labels)) return false;
    Start const start = StartWithSeeds(image, labels, seeds, mask);
    if (start != Start::WithoutSeeds) return start == Start::True;
    cv::Mat valid;
    cv::compare(image, 0.0, valid, cv::CMP_GT);
    if (!ImageCompare(image, 0, 0.0, kNothing, labels, labels)) return false;
    if (!ImageCompare(image, 0, 0.0, kNothing, valid, valid)) return false;
    double mode = 0.0;
    double count = 0.0;
    if (!algorithm::ImageMode(labels, mode, count, valid)) return false;
    return ImageCompare(labels, 0, mode, kFull, kNothing, mask);
}

bool OraclePropagation(
    cv::Mat const & image, ZonePreparation const & how, cv::Mat const & seeds, SurfaceSearch const & search,
    cv::Mat & filtered, cv::Mat & mask)
{
    cv::Mat labels;
    if (!OracleQuasiFlatZones(image, how, filtered, labels)) return false;
    Start const start = StartWithSeeds(image, labels, seeds, mask);
    if (start != Start::WithoutSeeds) return start == Start::True;
    if (image.channels() != 1) return false;

    OraclePeelZones(image, labels);
    cv::Mat coarse;
    if (!OracleCoarsePartition(image, coarse)) return true;
    coarse.convertTo(coarse, CV_32S);
    cv::Mat const areas = connexity::LabelFlatZonesNoZeroWithArea(labels, eConnexity8);
    std::vector<RegionInfo> regions;
    if (!OracleRegions(image, areas, labels, coarse, search.areaLimit, search.pixelSize, regions)) return false;
    if (regions.empty()) return true;
    SortByArea(regions);
    std::vector<int> seedIndices;
    if (!OracleGroupSeeds(regions, seedIndices)) return false;
    std::vector<bool> isSeed(regions.size(), false);
    for (int const index : seedIndices)
    {
        RegionInfo const & region = regions[static_cast<std::size_t>(index)];
        if (!ImageCompare(labels, 0, region.label, kFull, mask, mask)) return false;
        isSeed[static_cast<std::size_t>(index)] = true;
    }
    std::vector<RegionInfo> others;
    for (std::size_t index = 0; index < regions.size(); ++index)
    {
        if (!isSeed[index]) others.push_back(regions[index]);
    }
    return OracleGrowMask(labels, filtered, search, others, mask);
}

void OraclePeelZones(cv::Mat const & image, cv::Mat & labels)
{
    cv::Mat peeled = labels.clone();
    (void)ImageCompare(image, 0, 0.0, kNothing, peeled, peeled);
    peeled.convertTo(peeled, CV_32F);
    Morph(peeled, cv::MORPH_CLOSE, Square(3));
    peeled.convertTo(peeled, CV_32S);
    (void)ImageCompare(labels, 0, peeled, labels, kNothing, labels);
}

void SortByArea(std::vector<RegionInfo> & regions)
{
    std::stable_sort(regions.begin(), regions.end(), [](RegionInfo const & left, RegionInfo const & right) {
        return left.area > right.area;
    });
}

::testing::AssertionResult
EqualRegions(std::vector<RegionInfo> const & actual, std::vector<RegionInfo> const & expected)
{
    auto const print = [](std::vector<RegionInfo> const & regions) {
        std::string text;
        for (RegionInfo const & region : regions)
        {
            text += cv::format(
                "\n  label %d, area %d, group %d, box %d %d %d %d", region.label, region.area, region.group,
                region.bbox.x, region.bbox.y, region.bbox.width, region.bbox.height);
        }
        return text;
    };
    std::string const found = print(actual);
    std::string const wanted = print(expected);
    if (found == wanted) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "found:" << found << "\nexpected:" << wanted;
}

cv::Mat HeightField(Random & random, cv::Size size, double pixelSize)
{
    cv::Mat heights(size, CV_32FC1);
    double const noise = pixelSize * 0.1 * random.Unit();
    double const alongX = pixelSize * 0.3 * (random.Unit() - 0.5);
    double const alongY = pixelSize * 0.3 * (random.Unit() - 0.5);
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            double const height = 20000.0 + alongX * x + alongY * y + noise * random.Unit();
            heights.at<float>(y, x) = static_cast<float>(height);
        }
    }
    auto const randomRect = [&] {
        int const width = 1 + random.Below(std::max(size.width / 2, 1));
        int const height = 1 + random.Below(std::max(size.height / 2, 1));
        cv::Rect const anywhere(random.Below(size.width), random.Below(size.height), width, height);
        return anywhere & cv::Rect({0, 0}, size);
    };
    for (int blocks = random.Below(12); blocks > 0; --blocks)
    {
        heights(randomRect()) += cv::Scalar((random.Unit() - 0.4) * 9000.0);
    }
    for (int holes = random.Below(5); holes > 0; --holes)
        heights(randomRect()).setTo(kNothing);
    double const emptyShare = random.Chance(0.5) ? 0.0 : 0.1 * random.Unit();
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            if (random.Chance(emptyShare)) heights.at<float>(y, x) = 0.0F;
        }
    }
    return heights;
}

cv::Mat RandomZones(Random & random, cv::Size size, int largest)
{
    cv::Mat zones(size, CV_32SC1, kNothing);
    if (zones.empty()) return zones;
    for (int label = 0; label <= largest; ++label)
    {
        int const width = 1 + random.Below(std::max(size.width / 3, 1));
        int const height = 1 + random.Below(std::max(size.height / 3, 1));
        cv::Rect const anywhere(random.Below(size.width), random.Below(size.height), width, height);
        zones(anywhere & cv::Rect({0, 0}, size)).setTo(cv::Scalar(random.Below(largest + 1)));
    }
    return zones;
}

} // namespace morvane::tests
