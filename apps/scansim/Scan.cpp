#include "scansim/Scan.h"

#include "scansim/Noise.h"

#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace scansim
{

namespace
{

using cv::Vec3d;

/// What came back from one ray.
struct Echo
{
    double range;
    double cosine; ///< of the angle between ray and surface normal
    Material const * material;
};

/// Follows one ray; none where nothing comes back.
std::optional<Echo> FollowRay(
    Scene const & scene, Station const & station, Vec3d const & direction, ScanSettings const & settings, int row,
    int column)
{
    constexpr double kTooNear = 1e-6;
    auto hit = scene.FirstHit(station.position, direction, kTooNear);
    if (hit && hit->material->isGlass &&
        Uniform(settings.seed, row, column, Purpose::Glass) < settings.passThroughGlass)
    {
        // A pane has two faces; whatever lies behind both may answer.
        while (hit && hit->material->isGlass)
        {
            hit = scene.FirstHit(station.position, direction, hit->range + kTooNear);
        }
    }
    if (!hit || hit->range > settings.maxRange) return std::nullopt;

    double const cosine = -hit->normal.dot(direction);
    if (cosine < settings.grazingCosine &&
        Uniform(settings.seed, row, column, Purpose::Dropout) > cosine / settings.grazingCosine)
    {
        return std::nullopt;
    }
    // Flat hits smear the spot over a longer stretch.
    double const deviation = (settings.rangeNoise + settings.rangeNoisePerMetre * hit->range) / std::max(cosine, 0.1);
    double const range = hit->range + deviation * Gaussian(settings.seed, row, column, Purpose::Range);
    return Echo{std::max(range, 0.01), cosine, hit->material};
}

ushort IntensityOf(Echo const & echo)
{
    constexpr double kHalfRange = 25.0;
    double const fading = 1.0 / (1.0 + (echo.range / kHalfRange) * (echo.range / kHalfRange));
    double const share = echo.material->reflectance * (0.25 + 0.75 * echo.cosine) * fading;
    return static_cast<ushort>(1.0 + std::clamp(share, 0.0, 1.0) * 65534.0);
}

cv::Vec3b ColourOf(Echo const & echo, double grain)
{
    cv::Vec3b colour;
    double const light = (0.45 + 0.55 * echo.cosine) * (0.94 + 0.12 * grain);
    for (int channel = 0; channel < 3; ++channel)
    {
        colour[channel] = static_cast<uchar>(std::clamp(echo.material->colour[channel] * light, 1.0, 255.0));
    }
    return colour;
}

void Store(Scan & scan, Echo const & echo, Vec3d const & direction, double grain, int row, int column)
{
    Vec3d const point = scan.station.position + echo.range * direction;
    scan.intensity.at<ushort>(row, column) = IntensityOf(echo);
    scan.colour.at<cv::Vec3b>(row, column) = ColourOf(echo, grain);
    scan.depth.at<float>(row, column) = static_cast<float>(echo.range);
    scan.x.at<float>(row, column) = static_cast<float>(point[0]);
    scan.y.at<float>(row, column) = static_cast<float>(point[1]);
    scan.z.at<float>(row, column) = static_cast<float>(point[2]);
}

} // namespace

ScanSettings WithoutNoise(ScanSettings settings)
{
    settings.rangeNoise = 0.0;
    settings.rangeNoisePerMetre = 0.0;
    settings.passThroughGlass = 0.0;
    settings.grazingCosine = 0.0;
    return settings;
}

Vec3d RayDirection(Station const & station, ScanSettings const & settings, int row, int column)
{
    double const azimuth = station.heading + 2.0 * std::numbers::pi * (column + 0.5) / settings.size.width;
    double const share = (row + 0.5) / settings.size.height;
    double const elevation = settings.highest + (settings.lowest - settings.highest) * share;
    double const level = std::cos(elevation);
    return {level * std::cos(azimuth), level * std::sin(azimuth), std::sin(elevation)};
}

Scan Simulate(Scene const & scene, Station const & station, ScanSettings const & settings)
{
    Scan scan;
    scan.station = station;
    scan.intensity = cv::Mat::zeros(settings.size, CV_16UC1);
    scan.colour = cv::Mat::zeros(settings.size, CV_8UC3);
    scan.depth = cv::Mat::zeros(settings.size, CV_32FC1);
    scan.x = cv::Mat::zeros(settings.size, CV_32FC1);
    scan.y = cv::Mat::zeros(settings.size, CV_32FC1);
    scan.z = cv::Mat::zeros(settings.size, CV_32FC1);

    cv::parallel_for_(cv::Range(0, settings.size.height), [&](cv::Range const & rows) {
        for (int row = rows.start; row < rows.end; ++row)
        {
            for (int column = 0; column < settings.size.width; ++column)
            {
                Vec3d const direction = RayDirection(station, settings, row, column);
                auto const echo = FollowRay(scene, station, direction, settings, row, column);
                if (!echo) continue;
                double const grain = Uniform(settings.seed, row, column, Purpose::Texture);
                Store(scan, *echo, direction, grain, row, column);
            }
        }
    });
    return scan;
}

Station RoomStation(int number)
{
    if (number == 0) return {Vec3d(-0.4, -0.9, kDatum + 1.6), 0.4};
    return {Vec3d(0.6, 2.1, kDatum + 1.5), 1.5};
}

Station YardStation(int number)
{
    if (number == 0) return {Vec3d(0.0, 0.0, kDatum + 1.8), 0.3};
    return {Vec3d(4.5, -4.0, kDatum + 2.2), 0.9};
}

} // namespace scansim
