/// @file
/// A terrestrial laser scan of a scene, as panorama images.
#pragma once

#include "scansim/Scene.h"

#include <opencv2/core.hpp>

#include <cstdint>

namespace scansim
{

/// Where a scanner stands.
struct Station
{
    cv::Vec3d position;   ///< of the scanner's centre in the scene, metres
    double heading = 0.0; ///< azimuth of the first column, radians from x towards y
};

/// How a scan is made.
struct ScanSettings
{
    cv::Size size{1024, 512};           ///< columns over the whole circle, rows over the elevations
    double highest = 1.0471975511966;   ///< elevation of the first row, radians
    double lowest = -1.0471975511966;   ///< elevation of the last row, radians
    double maxRange = 45.0;             ///< nothing comes back from further away, metres
    double rangeNoise = 0.002;          ///< deviation of a range met head on, metres
    double rangeNoisePerMetre = 0.0001; ///< what is added to it with the range
    double passThroughGlass = 0.9;      ///< share of rays that glass lets pass
    double grazingCosine = 0.08;        ///< flatter hits are lost, the flatter the more often
    std::uint64_t seed = 1;             ///< of all noise
};

/// No noise and no losses but those of range.
[[nodiscard]] ScanSettings WithoutNoise(ScanSettings settings);

/// The images of one scan, all of one size. Column 0 continues column `cols - 1`: x wraps.
///
/// A ray from which nothing came back is 0 in all of them. A measured pixel is 0 in none but, by chance, `x` or `y`.
struct Scan
{
    Station station;
    cv::Mat intensity; ///< `CV_16UC1`
    cv::Mat colour;    ///< `CV_8UC3`, blue, green, red
    cv::Mat depth;     ///< `CV_32FC1`, metres from the station
    cv::Mat x;         ///< `CV_32FC1`, metres in the frame of the scene
    cv::Mat y;         ///< `CV_32FC1`, metres in the frame of the scene
    cv::Mat z;         ///< `CV_32FC1`, metres in the frame of the scene, above 0 (see kDatum)
};

/// The direction of a ray in the frame of the scene, of length 1.
[[nodiscard]] cv::Vec3d RayDirection(Station const & station, ScanSettings const & settings, int row, int column);

/// Scans a scene from a station. Rows are shared among OpenCV's threads; the result does not depend on their number.
[[nodiscard]] Scan Simulate(Scene const & scene, Station const & station, ScanSettings const & settings);

/// Two stations in the room and in the yard, the second with another heading, for registration.
[[nodiscard]] Station RoomStation(int number);
[[nodiscard]] Station YardStation(int number);

} // namespace scansim
