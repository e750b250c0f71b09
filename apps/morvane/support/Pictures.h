/// @file
/// Pictures of results, for people.
#pragma once

#include <opencv2/core.hpp>

#include <limits>

namespace program
{

/// The values that a picture spreads over its scale.
struct PictureRange
{
    bool isOfMeasured = false;                          ///< the range of the image is that of its pixels that are not 0
    double low = std::numeric_limits<double>::lowest(); ///< where it starts, if it is cut
    double high = std::numeric_limits<double>::max();   ///< where it ends, if it is cut
};

/// The grey picture of an image: black is low, white is high.
///
/// @param image one channel, without NaN
/// @param range that the grey levels cover
/// @return `CV_8UC1`
[[nodiscard]] cv::Mat GreyPicture(cv::Mat const & image, PictureRange const & range);

/// The false-colour picture of an image; black is below the range, white at its upper end and above.
///
/// @param image one channel, without NaN
/// @param range that the colours cover
/// @return `CV_8UC3`
[[nodiscard]] cv::Mat FalseColourPicture(cv::Mat const & image, PictureRange const & range);

/// How many zones get colours that no other zone has.
inline constexpr int kDistinctColours = 192 * 192 * 192;

/// The colour of a zone, blue, green, red; labels from 1. No channel is darker than 64.
///
/// A one-to-one map of the labels onto the colours that scatters neighbouring labels; it repeats after
/// kDistinctColours.
[[nodiscard]] cv::Vec3b ColourOfZone(int label);

/// The picture of a label image: a colour for each zone, black where there is none.
///
/// @param labels `CV_32SC1`; zones are positive
/// @return `CV_8UC3`
[[nodiscard]] cv::Mat PictureOfZones(cv::Mat const & labels);

/// The picture of surface normals: x, y, z from -1 to 1 as red, green, blue from 0 to 255, black where there is none.
///
/// @param normals `CV_32FC3`, of length 1, or 0 where there is none
/// @return `CV_8UC3`
[[nodiscard]] cv::Mat PictureOfNormals(cv::Mat const & normals);

} // namespace program
