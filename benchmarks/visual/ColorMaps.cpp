#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/connexity/ZoneMeasures.h>
#include <morvane/visual/ColorMaps.h>

#include <string>

namespace
{

using namespace morvane::visual;

void RegisterMaps(std::string const & type, int code, int side)
{
    std::string const where = type + "/" + std::to_string(side);
    benchmarks::Time(
        "GrayMap/morvane/" + where,
        [=] {
            return [image = benchmarks::RandomValues(side, code), output = cv::Mat(side, side, CV_8UC1)]() mutable {
                return GrayMap(image, output);
            };
        },
        side);
    benchmarks::Time(
        "GrayMap/opencv/" + where,
        [=] {
            // The nearest there is: the range, and a conversion that rounds.
            return [image = benchmarks::RandomValues(side, code), output = cv::Mat(side, side, CV_8UC1)]() mutable {
                cv::normalize(image, output, 0.0, 255.0, cv::NORM_MINMAX, CV_8U);
                return output.rows;
            };
        },
        side);
    benchmarks::Time(
        "ColorMap/morvane/" + where,
        [=] {
            return [image = benchmarks::RandomValues(side, code), output = cv::Mat(side, side, CV_8UC3)]() mutable {
                return ColorMap(image, output);
            };
        },
        side);
}

[[maybe_unused]] bool const registered = [] {
    for (int const side : {512, 2048, 4096})
    {
        RegisterMaps("8U", CV_8UC1, side);
        RegisterMaps("16U", CV_16UC1, side);
        RegisterMaps("32F", CV_32FC1, side);
        benchmarks::Time(
            "ApplyLut/morvane/32S/" + std::to_string(side),
            [=] {
                cv::Mat const labels = benchmarks::ManyZones(side);
                cv::Mat const table = morvane::connexity::ComputeArea(labels);
                return [labels, table, output = cv::Mat(side, side, CV_32SC1)]() mutable {
                    return ApplyLut(labels, table, output);
                };
            },
            side);
    }
    return true;
}();

} // namespace
