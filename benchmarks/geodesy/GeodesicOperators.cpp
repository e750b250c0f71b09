#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/geodesy/GeodesicOperators.h>

#include <opencv2/imgproc.hpp>

#include <string>

namespace
{

using namespace morvane::geodesy;

/// A mask with the marker that goes with it.
struct Scene
{
    cv::Mat marker;
    cv::Mat mask;
};

/// Blobs, reached from a few points.
Scene Blobs(int side)
{
    Scene scene{cv::Mat::zeros(side, side, CV_16UC1), cv::Mat()};
    benchmarks::Blobs(side).convertTo(scene.mask, CV_16U);
    constexpr int kSquare = 100;
    for (int y = kSquare / 4; y < side; y += kSquare)
    {
        for (int x = kSquare / 4; x < side; x += kSquare)
        {
            scene.marker.at<ushort>(y, x) = 1;
        }
    }
    return scene;
}

/// One long path, entered at its outer end.
Scene Spiral(int side)
{
    Scene scene{cv::Mat::zeros(side, side, CV_16UC1), cv::Mat()};
    benchmarks::Spiral(side).convertTo(scene.mask, CV_16U);
    scene.marker.at<ushort>(0, 0) = 1;
    return scene;
}

/// The plain form: dilations counted until one changes nothing.
bool CountDilations(Scene const & scene, cv::Mat & out)
{
    cv::Mat reached = cv::min(scene.marker, 1);
    cv::Mat const region = cv::min(scene.mask, 1);
    cv::Mat const element = cv::getStructuringElement(cv::MORPH_RECT, {3, 3});
    reached.copyTo(out);
    for (;;)
    {
        cv::Mat next;
        cv::dilate(reached, next, element);
        cv::min(next, region, next);
        cv::add(out, next, out);
        if (cv::norm(next, reached, cv::NORM_INF) == 0) break;
        reached = next;
    }
    double most = 0;
    cv::minMaxLoc(out, nullptr, &most);
    out = most + 1 - out;
    out.setTo(0, out > most);
    return true;
}

[[maybe_unused]] bool const registered = [] {
    std::pair<std::string, Scene (*)(int)> const scenes[] = {{"blobs/", Blobs}, {"spiral/", Spiral}};
    for (int const side : {256, 512, 1024, 2048, 4096})
    {
        for (auto const & [name, make] : scenes)
        {
            std::string const where = name + std::to_string(side);
            benchmarks::Time(
                "GeodesicDistance/morvane/" + where,
                [=, make = make] {
                    return [scene = make(side), out = cv::Mat()]() mutable {
                        return GeodesicDistance(scene.marker, scene.mask, cv::MORPH_RECT, out);
                    };
                },
                side);
            // The plain form takes minutes on larger ones.
            if (side > (make == Spiral ? 256 : 1024)) continue;
            benchmarks::Time(
                "GeodesicDistance/dilations/" + where,
                [=, make = make] {
                    return [scene = make(side), out = cv::Mat()]() mutable {
                        return CountDilations(scene, out);
                    };
                },
                side);
        }
    }
    return true;
}();

} // namespace
