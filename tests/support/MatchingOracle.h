/// @file
/// The search for a translation step by step: every position, every pixel, in one thread.
#pragma once

#include <morvane/algorithm/TemplateMatching.h>

#include <opencv2/core.hpp>

namespace morvane::tests
{

/// What is known before a search, in pixels and degrees.
struct Prior
{
    double ratio = 0.0;
    cv::Point_<double> refOnRef;
    cv::Point_<double> movOnMov;
    cv::Point_<double> movOnRef;
    cv::Point_<double> translation;
    double range = -1.0;
    double center = 0.0;
    double orientationRange = 0.0;
    double orientationStep = 1.0;
};

/// The parameters that say so.
[[nodiscard]] algorithm::matching::TM_Parameters ParametersOf(Prior const & prior);

/// What is the same for all positions of one angle.
struct Placing
{
    cv::Mat padded;
    cv::Mat rotated;
    int margin = 0;
    cv::Size referenceSize;
    int diagonal = 0;
};

/// The length of the diagonal, rounded.
[[nodiscard]] int OracleDiagonal(cv::Size size);

/// The reference with its margin.
[[nodiscard]] cv::Mat OraclePadded(cv::Mat const & reference, int margin);

/// The sum of 16 for each pair of equal elements above 2.
[[nodiscard]] int OracleOccupancyScore(cv::Mat const & a, cv::Mat const & b);

/// The best of all positions but for the last column and row.
[[nodiscard]] algorithm::TemplateMatchingInfo OracleAllTranslations(Placing const & placing);

/// The best of the positions around the expected one.
[[nodiscard]] algorithm::TemplateMatchingInfo OracleTranslationsAround(
    Placing const & placing, algorithm::matching::TM_Parameters const & parameters, cv::Point_<double> const & station);

/// The ten peaks of the correlation; false where there is no window.
[[nodiscard]] bool OracleCorrelation(
    Placing const & placing, algorithm::matching::TM_Parameters const & parameters, cv::Point_<double> const & station,
    algorithm::CandidateQueues::value_type & queue, algorithm::TemplateMatchingInfo & candidate);

} // namespace morvane::tests
