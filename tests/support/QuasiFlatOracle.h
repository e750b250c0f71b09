/// @file
/// Quasi-flat zones and the search for the base surface, step by step on whole images: one comparison of the full image
/// for each zone, one loop after the other.
///
/// Zones are listed in the order of their numbers, and sorted so that equals keep their order.
#pragma once

#include <morvane/connexity/QuasiFlatZones.h>

#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <vector>

namespace morvane::tests
{

/// How an image is prepared.
struct ZonePreparation
{
    int projection = projection::ProjectionClosingFirst;
    double delta = 1.0;
    int connexity = connexity::eConnexity8;
    int windowSize = 3;
    bool fillHoles = false;
    bool filter = false;
};

/// What the search for the base surface is told.
struct SurfaceSearch
{
    int areaLimit = 20;
    int radius = 10;
    double pixelSize = 1000.0;
    double slopeRatio = 0.3;
};

/// The operators with their settings in one place.
[[nodiscard]] bool
CallQuasiFlatZones(cv::Mat const & image, ZonePreparation const & how, cv::Mat & filtered, cv::Mat & labels);
[[nodiscard]] bool CallPropagation(
    cv::Mat const & image, ZonePreparation const & how, cv::Mat const & seeds, cv::Mat & filtered, cv::Mat & mask);
[[nodiscard]] bool CallPropagation(
    cv::Mat const & image, ZonePreparation const & how, std::vector<cv::Point> const & seeds, cv::Mat & filtered,
    cv::Mat & mask);
[[nodiscard]] bool CallPropagation(
    cv::Mat const & image, ZonePreparation const & how, cv::Mat const & seeds, SurfaceSearch const & search,
    cv::Mat & filtered, cv::Mat & mask);

/// What they must answer and leave.
[[nodiscard]] bool
OracleQuasiFlatZones(cv::Mat const & image, ZonePreparation const & how, cv::Mat & filtered, cv::Mat & labels);
[[nodiscard]] bool OraclePropagation(
    cv::Mat const & image, ZonePreparation const & how, cv::Mat const & seeds, cv::Mat & filtered, cv::Mat & mask);
[[nodiscard]] bool OraclePropagation(
    cv::Mat const & image, ZonePreparation const & how, cv::Mat const & seeds, SurfaceSearch const & search,
    cv::Mat & filtered, cv::Mat & mask);

/// The pieces of the search.
void OraclePeelZones(cv::Mat const & image, cv::Mat & labels);
[[nodiscard]] bool OracleCoarsePartition(cv::Mat const & image, cv::Mat & out);
[[nodiscard]] bool OracleRegions(
    cv::Mat const & image, cv::Mat const & areas, cv::Mat const & labels, cv::Mat const & coarse, int areaLimit,
    double pixelSize, std::vector<RegionInfo> & regions);
[[nodiscard]] bool
OracleRemoveSmallRegions(cv::Mat & areas, cv::Mat & labels, int areaLimit, std::vector<RegionInfo> & regions);
[[nodiscard]] bool OracleGroupSeeds(std::vector<RegionInfo> const & regions, std::vector<int> & seedIndices);
[[nodiscard]] bool OracleExtendSurface(cv::Mat const & source, cv::Mat & out, int radius);
[[nodiscard]] ResultType OracleEvaluateRegion(
    cv::Mat const & accepted, cv::Mat const & zone, cv::Mat const & image, int radius, double pixelSize,
    double slopeRatio);
[[nodiscard]] bool OracleGrowMask(
    cv::Mat const & labels, cv::Mat const & image, SurfaceSearch const & search, std::vector<RegionInfo> & regions,
    cv::Mat & mask);

/// A record.
[[nodiscard]] inline RegionInfo Region(int label, int area, int group = -1, cv::Rect const & bbox = {})
{
    RegionInfo region;
    region.label = label;
    region.area = area;
    region.group = group;
    region.bbox = bbox;
    return region;
}

/// Sorts records, the largest first; equals keep their order.
void SortByArea(std::vector<RegionInfo> & regions);

/// Tells whether two lists hold the same records in the same order.
[[nodiscard]] ::testing::AssertionResult
EqualRegions(std::vector<RegionInfo> const & actual, std::vector<RegionInfo> const & expected);

/// A slope with noise, blocks and holes, of `CV_32F`. Steps between neighbours of one part stay far below
/// @p pixelSize; blocks are up to 9000 high.
[[nodiscard]] cv::Mat HeightField(Random & random, cv::Size size, double pixelSize);

/// Rectangles of numbers from 1 to @p largest over a background of 0, `CV_32S`.
[[nodiscard]] cv::Mat RandomZones(Random & random, cv::Size size, int largest);

} // namespace morvane::tests
