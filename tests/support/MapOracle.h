/// @file
/// The grey and colour maps in their plainest form.
#pragma once

#include <morvane/visual/ColorMaps.h>

#include <opencv2/core.hpp>

#include <array>

namespace morvane::tests
{

/// One of the four maps.
struct MapUnderTest
{
    char const * name;
    bool noZero;
    int steps; ///< what the range is stretched to
    int outputType;
    bool (*whole)(cv::Mat const & image, cv::Mat & output);
    bool (*limited)(cv::Mat const & image, cv::Mat & output, double minimum, double maximum, bool clip);
};

inline constexpr std::array kMaps{
    MapUnderTest{"GrayMap", false, 255, CV_8UC1, visual::GrayMap, visual::GrayMap},
    MapUnderTest{"GrayMapNoZero", true, 255, CV_8UC1, visual::GrayMapNoZero, visual::GrayMapNoZero},
    MapUnderTest{"ColorMap", false, 511, CV_8UC3, visual::ColorMap, visual::ColorMap},
    MapUnderTest{"ColorMapNoZero", true, 1275, CV_8UC3, visual::ColorMapNoZero, visual::ColorMapNoZero}};

struct MapLimits
{
    double minimum;
    double maximum;
    bool clip;
};

struct MapResult
{
    cv::Mat image;
    cv::Mat1b open; ///< not 0 where the value of the map is no number, so that any output will do
};

/// What a map gives. @param limits null for the form without limits
[[nodiscard]] MapResult OracleMap(MapUnderTest const & map, cv::Mat const & image, MapLimits const * limits);

} // namespace morvane::tests
