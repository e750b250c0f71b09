/// @file
/// Regional extrema by one plain flood with a flag, and calls of the operators as tests make them.
#pragma once

#include <morvane/connexity/RegionalExtrema.h>

#include "support/StepOracle.h"

#include <opencv2/core.hpp>

#include <array>
#include <map>
#include <vector>

namespace morvane::tests
{

/// Which zones are looked for.
enum class Extremum
{
    Maximum,
    Minimum,
};

inline constexpr std::array kExtrema{Extremum::Maximum, Extremum::Minimum};

/// The pixels of extrema by label.
using PointsOfExtrema = std::map<int, std::vector<cv::Point>>;

/// The extrema of an image of one channel in the raster order of their first pixels, the pixels of each in
/// breadth-first order.
[[nodiscard]] OracleZoneList OracleExtrema(cv::Mat const & image, int connexity, Extremum kind);

/// Zones under their numbers, from 1.
[[nodiscard]] PointsOfExtrema ByNumber(OracleZoneList const & zones);

/// LabelMaxima() or LabelMinima().
[[nodiscard]] bool CallLabel(Extremum kind, cv::Mat const & image, int connexity, cv::Mat & labels);

/// The forms of these that list the pixels.
[[nodiscard]] bool CallList(Extremum kind, cv::Mat const & image, int connexity, PointsOfExtrema & points);

/// What an operator writes into a label image full of rubbish; expects that it succeeds and writes in place.
[[nodiscard]] cv::Mat LabelledExtrema(Extremum kind, cv::Mat const & image, int connexity, int type = CV_32SC1);

[[nodiscard]] inline cv::Mat Maxima(cv::Mat const & image, int connexity, int type = CV_32SC1)
{
    return LabelledExtrema(Extremum::Maximum, image, connexity, type);
}

[[nodiscard]] inline cv::Mat Minima(cv::Mat const & image, int connexity, int type = CV_32SC1)
{
    return LabelledExtrema(Extremum::Minimum, image, connexity, type);
}

/// The image in which every order between two pixels is turned round.
[[nodiscard]] cv::Mat UpsideDown(cv::Mat const & image);

/// An image of plateaus: hills and pits that cut through each other, here and there a pixel that is a step higher or
/// lower, and in floating point some NaN and infinities.
[[nodiscard]] cv::Mat Terraces(Random & random, cv::Size size, int depth);

} // namespace morvane::tests
