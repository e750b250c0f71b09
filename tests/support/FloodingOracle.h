/// @file
/// Flooding in its plainest form, and a table of the operators that spread markers over zones.
#pragma once

#include "support/ImageLiterals.h"
#include "support/RandomImages.h"

#include <opencv2/core.hpp>

#include <array>

namespace morvane::tests
{

/// The `CV_32S` markers of a drawing: '.' is 0, '1' to '9' themselves, '#' is -1, '-' is -3.
[[nodiscard]] cv::Mat DrawMarkers(Drawing const & rows);

/// Flooding() with 512 queues of points. @param markers `CV_32SC1`, in and out
[[nodiscard]] bool OracleFlooding(cv::Mat const & image, cv::Mat & markers);

/// The input of a spread beside its markers.
struct SpreadInput
{
    cv::Mat image;
    cv::Mat second; ///< for the operators of two images
    int connexity = 0;
    double delta1 = 0.0; ///< for the operators with a bound
    double delta2 = 0.0; ///< for the operators of two images
};

/// One of the operators that give zones inside basins their highest marker.
struct SpreadUnderTest
{
    char const * name;
    bool noZero;
    int deltas; ///< none, one for the image, or one for each of two images
    bool (*call)(SpreadInput const & input, cv::Mat & markers);
};

[[nodiscard]] std::array<SpreadUnderTest, 5> const & AllSpreads();

/// The basins of the seeds, -1 on the lines between them. @param seeds any depth of labels
[[nodiscard]] cv::Mat1i OracleBasins(cv::Mat const & image, cv::Mat const & seeds);

/// What @p spread does with input that it accepts. The number of zones must fit a table of the markers' depth.
/// @param markers in and out
[[nodiscard]] bool OracleSpread(SpreadUnderTest const & spread, SpreadInput const & input, cv::Mat & markers);

/// Markers of any label depth: a share of labels 1 to @p largest, some negative ones, the others 0.
[[nodiscard]] cv::Mat RandomMarkers(Random & random, cv::Size size, int type, double share, int largest);

} // namespace morvane::tests
