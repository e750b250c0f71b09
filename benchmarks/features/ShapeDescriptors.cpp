#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/connexity/GeodesicMeasures.h>
#include <morvane/features/ShapeDescriptors.h>

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <string>
#include <vector>

namespace
{

using namespace morvane;

/// The plain form of a granulometry, up to a size: one filter of OpenCV after the other.
std::vector<double> DirectOpenings(cv::Mat const & image, int sizes)
{
    cv::Mat current = image.clone();
    cv::Mat next;
    std::vector<double> curve;
    for (int i = 1; i <= sizes; ++i)
    {
        curve.push_back(cv::sum(current)[0]);
        cv::morphologyEx(
            current, next, cv::MORPH_OPEN, cv::getStructuringElement(cv::MORPH_RECT, cv::Size(2 * i + 1, 2 * i + 1)));
        if (cv::norm(current, next, cv::NORM_INF) == 0.0) break;
        cv::swap(current, next);
    }
    return curve;
}

/// The plain form of a fractal dimension.
std::vector<double> DirectDimension(cv::Mat const & image)
{
    std::vector<double> curve;
    double minimum = 0.0;
    double maximum = 0.0;
    cv::minMaxLoc(image, &minimum, &maximum);
    auto const pixels = static_cast<double>(image.total());
    for (int i = 1; i < std::max(image.rows, image.cols); ++i)
    {
        cv::Mat const square = cv::getStructuringElement(cv::MORPH_RECT, cv::Size(2 * i + 1, 2 * i + 1));
        cv::Mat eroded;
        cv::Mat dilated;
        cv::erode(image, eroded, square);
        cv::dilate(image, dilated, square);
        curve.push_back(cv::sum(dilated - eroded)[0] / (2 * i + 1));
        if (cv::sum(eroded)[0] == pixels * minimum || cv::sum(dilated)[0] == pixels * maximum) break;
    }
    return curve;
}

/// One large bright square on noise: openings go on up to its side.
cv::Mat LargeSquare(int side)
{
    cv::Mat image = benchmarks::RandomValues(side, CV_8UC1) / 4;
    image(cv::Rect(side / 8, side / 8, side * 3 / 4, side * 3 / 4)) += 100;
    return image;
}

[[maybe_unused]] bool const registered = [] {
    for (int const side : {256, 512, 1024})
    {
        benchmarks::NamedImage const terrain{"8U-terrain", benchmarks::GreyTerrain};
        benchmarks::NamedImage const square{"8U-square", LargeSquare};
        for (benchmarks::NamedImage const & input : {terrain, square})
        {
            benchmarks::TimeOn("GranulometryByOpening/morvane/", input, side, [](cv::Mat & image, cv::Mat &) {
                std::vector<double> curve;
                return features::GranulometryByOpening(image, curve, cv::MORPH_RECT);
            });
            benchmarks::TimeOn("GranulometryByOpening/cv-morphologyEx/", input, side, [=](cv::Mat & image, cv::Mat &) {
                return DirectOpenings(image, side).size();
            });
            benchmarks::TimeOn("MorphologicalFractalDimension/morvane/", input, side, [](cv::Mat & image, cv::Mat &) {
                std::vector<double> curve;
                return features::MorphologicalFractalDimension(image, curve, cv::MORPH_RECT);
            });
            benchmarks::TimeOn(
                "MorphologicalFractalDimension/cv-morphologyEx/", input, side,
                [](cv::Mat & image, cv::Mat &) { return DirectDimension(image).size(); });
        }
    }
    for (int const side : {512, 1024, 2048})
    {
        benchmarks::NamedImage const zones{"zones", benchmarks::ManyZones};
        for (int const threads : {1, 2})
        {
            auto const diameter = [=](cv::Mat & image, cv::Mat & out) {
                int const before = cv::getNumThreads();
                cv::setNumThreads(threads);
                bool const done = connexity::LabelFlatZonesNoZeroWithGeodesicDiameter(image, out);
                cv::setNumThreads(before);
                return done;
            };
            benchmarks::TimeOn(
                "GeodesicDiameter/morvane/" + std::to_string(threads) + "-threads/", zones, side, diameter);
        }
        benchmarks::TimeOn("GeodesicExtremities/morvane/", zones, side, [](cv::Mat & image, cv::Mat & out) {
            return connexity::GeodesicExtremitiesOnFlatZonesNoZero(image, out);
        });
        benchmarks::TimeOn("StandardElongation/morvane/", zones, side, [](cv::Mat & image, cv::Mat & out) {
            return connexity::LabelFlatZonesNoZeroWithStandardElongation(image, out);
        });
    }
    return true;
}();

} // namespace
