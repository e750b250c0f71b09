/// @file
/// Pictures of results, for people.
#pragma once

#include <opencv2/core.hpp>

namespace program
{

/// How many zones get colours that no other zone has.
inline constexpr int kDistinctColours = 192 * 192 * 192;

/// The colour of a zone, blue, green, red; labels from 1. No channel is darker than 64.
///
/// A one-to-one map of the labels onto the colours that scatters neighbouring labels; it repeats after
/// kDistinctColours.
[[nodiscard]] cv::Vec3b ColourOfZone(int label);

/// The picture of a label image: a colour for each zone, black where there is none.
///
/// @param labels `CV_32SC1`, 0 or positive
/// @return `CV_8UC3`
[[nodiscard]] cv::Mat PictureOfZones(cv::Mat const & labels);

} // namespace program
