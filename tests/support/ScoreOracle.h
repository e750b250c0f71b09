/// @file
/// Scores of placements in their plainest form: pixel after pixel down the columns.
#pragma once

#include <opencv2/core.hpp>

#include <cstdint>

namespace morvane::tests
{

/// The three scores of occupancy words. Sums of wider integers than the results have.
struct OracleWordScores
{
    std::int64_t haming = 0;
    std::int64_t occupancy = 0;
    double chain = 0.0;
};

/// Bits that differ.
[[nodiscard]] int OracleHamming(unsigned a, unsigned b);

/// Bits in common minus bits apart.
[[nodiscard]] int OracleOccupancy(unsigned a, unsigned b);

/// The scores of two `CV_16U` images with the same number of pixels, which meet in raster order.
[[nodiscard]] OracleWordScores OracleScoresOfWords(cv::Mat const & a, cv::Mat const & b);

/// The two scores of masks.
struct OracleMaskScores
{
    double elevation = 0.0;
    double occupancy = 0.0;
};

/// The scores of two masks over the pixels, in raster order, that both have.
[[nodiscard]] OracleMaskScores OracleScoresOfMasks(cv::Mat const & m1, cv::Mat const & m2);

/// A mean over some pixels.
struct OracleShift
{
    double shift = 0.0;
    bool isFound = false;
};

/// The mean of (a + offsetA) - (b + offsetB) over the pixels of two `CV_32F` images where neither is 0.
[[nodiscard]] OracleShift OracleMeanShift(cv::Mat const & a, cv::Mat const & b, double offsetA, double offsetB);

/// Two images whose difference is looked at, `CV_8U`, `CV_16U` or `CV_32F`.
struct ImagePair
{
    cv::Mat a;
    cv::Mat b;
};

/// The most frequent difference, in bins of 50, at the pixels where both images of the first pair are above 0.
[[nodiscard]] double OraclePeakOfDifferences(ImagePair const & first, ImagePair const & second);

} // namespace morvane::tests
