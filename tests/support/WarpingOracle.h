/// @file
/// Affine maps, turned squares and narrowed histograms in their plainest form.
#pragma once

#include "support/RandomImages.h"

#include <opencv2/core.hpp>

#include <vector>

namespace morvane::tests
{

/// How a pixel that an affine map has found is put into another one.
enum class WarpRule
{
    FillsEmpty, ///< copied to where exactly 0 is
    MergesBits, ///< its bits are added
};

/// What an image becomes that an affine map fills from another one of the same type, one pixel after the other.
///
/// @param out if empty, zeros like @p source
/// @param matrix 2 x 3, `CV_64F`; with an element above 1e298 in magnitude, or NaN, nothing is filled
[[nodiscard]] cv::Mat OracleWarped(cv::Mat const & source, cv::Mat const & out, cv::Mat const & matrix, WarpRule rule);

/// The square in which an image is turned, by the words of its making.
struct OracleSquare
{
    cv::Mat canvas; ///< the square with the image in its middle
    cv::Mat matrix; ///< that of `cv::getRotationMatrix2D` about the middle
    double dx = 0.0;
    double dy = 0.0;
};

/// @param image of any type and size
/// @param angle degrees
[[nodiscard]] OracleSquare OracleSquareOf(cv::Mat const & image, double angle);

/// How the parity of a narrowed range was mended.
enum class ParityStep
{
    None,
    HeavyFirstStartsEarlier,
    HeavyFirstEndsLater,
    HeavyFirstEndsEarlier,
    HeavyLastEndsLater,
    HeavyLastStartsEarlier,
    HeavyLastStartsLater,
};

/// A narrowed range of bins.
struct OracleBins
{
    int first = 0;
    int last = 0;
    ParityStep parity = ParityStep::None;
};

/// The range that is left of a histogram with bins whose sum an `int` holds.
///
/// @param ratio 0 to 1
[[nodiscard]] OracleBins OracleNarrowed(std::vector<unsigned int> const & histogram, double ratio);

/// A 2 x 3 matrix: turns, shears, mirrors, scalings, shifts, zeros; now and then huge numbers, infinities and NaN.
[[nodiscard]] cv::Mat RandomAffine(Random & random, cv::Size size);

} // namespace morvane::tests
