/// @file
/// Zones that grow from seeds in their plainest form, and a table of the operators that grow them.
#pragma once

#include "support/Oracles.h"
#include "support/RandomImages.h"
#include "support/StepOracle.h"

#include <opencv2/core.hpp>

#include <vector>

namespace morvane::tests
{

/// Which of the pixels that have joined a zone is the next whose neighbours are asked.
enum class GrowthOrder
{
    Oldest,         ///< first in, first out
    Lowest,         ///< the lowest value; among equal ones as a heap of the standard library gives them out
    LowestOldest,   ///< the lowest value, and of equal ones the oldest: the rule of no operator
    LowestYoungest, ///< the lowest value, and of equal ones the youngest: the rule of no operator
};

/// Steps to pixels whose value plus the sum of the zone so far is below a budget. The sum belongs to the condition: no
/// two walks may use it at a time.
[[nodiscard]] OracleCondition SumsBelow(cv::Mat const & image, double budget);

/// Steps to pixels that differ from the seed by at most @p delta.
[[nodiscard]] OracleCondition StepsFromSeed(cv::Mat const & image, double delta);

/// The zones that the seeds of an image grow, in the order of the seeds.
///
/// @param seeds those outside the image, and those that a zone has taken, give none
[[nodiscard]] OracleZoneList OracleGrownZones(
    cv::Mat const & image, int connexity, std::vector<cv::Point> const & seeds, OracleCondition const & condition,
    GrowthOrder order);

/// Each pixel once, row by row.
[[nodiscard]] std::vector<cv::Point> RasterSeeds(cv::Size size);

/// The image with columns of 0 added, or its last columns left out.
[[nodiscard]] cv::Mat WithColumns(cv::Mat const & image, int cols);

/// What an operator that grows zones is given.
struct GrowthInput
{
    cv::Mat image;
    cv::Mat second; ///< for operators over two images
    int connexity = 0;
    std::vector<cv::Point> seeds; ///< for operators that take them
    double delta1 = 0.0;          ///< a bound of differences or of sums; operators that take a `float` round it
    double delta2 = 0.0;          ///< for operators over two images
};

/// One of the operators that grow zones into a label image.
struct GrowthUnderTest
{
    char const * name;
    int images;
    bool takesSeeds;
    bool isBySum; ///< grows while a sum is below a budget, not over small differences
    bool (*call)(GrowthInput const & input, cv::Mat & out);
    OracleCondition (*condition)(GrowthInput const & input);
    GrowthOrder order;
};

/// The four seeded operators, the one that finds its seeds, and the two accumulator partitions.
[[nodiscard]] std::vector<GrowthUnderTest> const & AllGrowths();

/// The zones that an operator grows. The images have one channel and their depths are accepted.
[[nodiscard]] OracleZoneList OracleZonesOf(GrowthUnderTest const & growth, GrowthInput const & input);

/// What an operator writes into a `CV_32S` image full of rubbish; expects that it succeeds and writes in place.
[[nodiscard]] cv::Mat Grown(GrowthUnderTest const & growth, GrowthInput const & input, int type = CV_32SC1);

/// Expects the zones of the plain growth in every depth of labels, in several channels and in views.
void ExpectPlainGrowth(Random & random, GrowthUnderTest const & growth, GrowthInput const & input);

/// Some seeds, among them repeated ones and ones outside the image.
[[nodiscard]] std::vector<cv::Point> RandomSeeds(Random & random, cv::Size size);

/// An image of few values, so that many are equal, or of many; where the type has them also negative ones, and now and
/// then the extremes of the type, NaN and infinities.
[[nodiscard]] cv::Mat RandomTerrain(Random & random, cv::Size size, int depth);

/// A bound of sums: one that fits a RandomTerrain(), one that is not above 0, or one beyond the range of a type.
[[nodiscard]] double RandomBudget(Random & random);

} // namespace morvane::tests
