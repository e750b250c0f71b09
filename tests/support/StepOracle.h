/// @file
/// Plain forms of the conditions of the labelling family, and the images and bounds they are tried on.
#pragma once

#include "support/Oracles.h"
#include "support/RandomImages.h"

#include <opencv2/core.hpp>

#include <cstdint>
#include <vector>

namespace morvane::tests
{

/// Zones as OracleZones() gives them.
using OracleZoneList = std::vector<std::vector<cv::Point>>;

/// Steps between pixels that are equal in every channel.
[[nodiscard]] OracleCondition EqualSteps(cv::Mat const & image);

/// Steps between pixels that differ by at most @p delta: one channel by value, in the type's own arithmetic; several
/// channels by Euclidean distance.
[[nodiscard]] OracleCondition DeltaSteps(cv::Mat const & image, double delta);

/// Steps that both conditions allow.
[[nodiscard]] OracleCondition StepsOfBoth(OracleCondition const & first, OracleCondition const & second);

/// The mask in which every pixel takes part.
[[nodiscard]] cv::Mat1b EveryPixel(cv::Size size);

/// The zones of more than @p area pixels.
[[nodiscard]] OracleZoneList ZonesAbove(OracleZoneList const & zones, std::uint64_t area);

/// A random image whose neighbours often lie a few steps apart, with extremes of the type among them.
[[nodiscard]] cv::Mat GradedImage(Random & random, cv::Size size, int type);

/// A delta: one that fits a GradedImage(), or one that a type converts to something else.
[[nodiscard]] double RandomDelta(Random & random);

/// The size of a small image, or of a flat one a few columns to either side of a multiple of 64.
[[nodiscard]] cv::Size RandomFamilySize(Random & random);

} // namespace morvane::tests
