/// @file
/// Regional extrema, all of them or those that stand out.
#pragma once

#include <morvane/connexity/Connexity.h>

#include <opencv2/core.hpp>

namespace program
{

/// Which extrema are looked for.
enum class Extremum
{
    Maximum,
    Minimum
};

/// Dynamics are met within this, which the operators allow for rounding.
inline constexpr double kDynamicTolerance = 0.001;

/// The regional extrema, labelled from 1.
///
/// @param image one channel, without NaN
/// @param kind of extremum
/// @param connexity the neighbourhood
/// @return `CV_32SC1`, 0 elsewhere
[[nodiscard]] cv::Mat LabelExtrema(cv::Mat const & image, Extremum kind, morvane::connexity::eConnexityType connexity);

/// The regional extrema of at least a given dynamic, labelled from 1.
///
/// @param image one channel, without NaN
/// @param kind of extremum
/// @param dynamic in the unit of the image, above kDynamicTolerance
/// @param connexity of the zones; paths between the extrema go by sides where this is one of 4 neighbours, otherwise by
///        sides and corners
/// @return `CV_32SC1`, 0 elsewhere
[[nodiscard]] cv::Mat LabelExtremaOfDynamic(
    cv::Mat const & image, Extremum kind, double dynamic, morvane::connexity::eConnexityType connexity);

} // namespace program
