#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/common/ImageCompare.h>
#include <morvane/geodesy/Reconstruction.h>

#include <opencv2/imgproc.hpp>

#include <string>

namespace
{

using namespace morvane::geodesy;

benchmarks::NamedImage const kInputs[] = {
    {"8U-blobs",
     [](int side) {
         return cv::Mat(benchmarks::GreyBlobs(side) * 20);
     }},
    {"8U-terrain", benchmarks::GreyTerrain},
    {"16U-terrain",
     [](int side) {
         return benchmarks::Terrain(side, CV_16UC1);
     }},
    {"32F-terrain",
     [](int side) {
         return benchmarks::Terrain(side, CV_32FC1);
     }},
};

/// A mask with the marker that goes with it.
struct Scene
{
    cv::Mat marker;
    cv::Mat mask;
};

/// The marker is the image, lowered.
Scene Lowered(cv::Mat const & image)
{
    return {image - cv::Scalar(20), image};
}

/// The marker is the image along its edge and nothing inside.
Scene Framed(cv::Mat const & image)
{
    cv::Mat marker = cv::Mat::zeros(image.size(), image.type());
    cv::Mat edge = cv::Mat::zeros(image.size(), CV_8UC1);
    cv::rectangle(edge, cv::Rect(0, 0, image.cols, image.rows), cv::Scalar(255));
    image.copyTo(marker, edge);
    return {marker, image};
}

/// One long path, entered at its outer end.
Scene Entered(cv::Mat const & spiral)
{
    cv::Mat marker = cv::Mat::zeros(spiral.size(), spiral.type());
    marker.at<uchar>(0, 0) = 255;
    return {marker, spiral};
}

/// The plain form: dilations until one changes nothing.
bool RepeatDilations(Scene const & scene, cv::Mat & out)
{
    cv::Mat const element = cv::getStructuringElement(cv::MORPH_RECT, {3, 3});
    cv::Mat current = cv::min(scene.marker, scene.mask);
    for (;;)
    {
        cv::dilate(current, out, element);
        cv::min(out, scene.mask, out);
        if (morvane::common::AreImagesEqual(current, out)) return true;
        cv::swap(current, out);
    }
}

void TimeBoth(
    std::string const & where, Scene (*make)(cv::Mat const &), benchmarks::NamedImage const & input, int side,
    int plainSide)
{
    std::string const name = where + "-" + input.name + "/" + std::to_string(side);
    benchmarks::Time(
        "ReconstructionbyDilate/morvane/" + name,
        [=] {
            return [scene = make(input.make(side)), out = cv::Mat()]() mutable {
                return ReconstructionbyDilate(scene.marker, scene.mask, cv::MORPH_RECT, out, {3, 3});
            };
        },
        side);
    if (side > plainSide) return;
    benchmarks::Time(
        "ReconstructionbyDilate/dilations/" + name,
        [=] {
            return [scene = make(input.make(side)), out = cv::Mat()]() mutable {
                return RepeatDilations(scene, out);
            };
        },
        side);
}

[[maybe_unused]] bool const registered = [] {
    for (int const side : {256, 512, 1024, 2048, 4096})
    {
        for (benchmarks::NamedImage const & input : kInputs)
        {
            // The plain form takes seconds on larger ones.
            TimeBoth("minus20", Lowered, input, side, 2048);
            TimeBoth("frame", Framed, input, side, 512);
            benchmarks::TimeOn(
                "FillHolesbyReconstruction/morvane/", input, side, [](cv::Mat const & image, cv::Mat & out) {
                    return FillHolesbyReconstruction(image, cv::MORPH_RECT, out);
                });
            benchmarks::TimeOn("HMaxima/morvane/", input, side, [](cv::Mat const & image, cv::Mat & out) {
                return HMaxima(image, cv::MORPH_RECT, 3.0, out);
            });
            if (input.name == "16U-terrain") continue;
            benchmarks::TimeOn("FillHolesbyOverBuild/morvane/", input, side, [](cv::Mat const & image, cv::Mat & out) {
                return FillHolesbyOverBuild(image, morvane::connexity::eConnexity8, out);
            });
            benchmarks::TimeOn(
                "FillHolesbyOverBuild/reconstruction/", input, side, [](cv::Mat const & image, cv::Mat & out) {
                    return FillHolesbyReconstruction(image, cv::MORPH_RECT, out);
                });
            benchmarks::TimeOn("UnderBuild/morvane/", input, side, [](cv::Mat const & image, cv::Mat & out) {
                return UnderBuild(image, image - cv::Scalar(20), morvane::connexity::eConnexity8, out);
            });
        }
        TimeBoth("path", Entered, {"8U-spiral", benchmarks::Spiral}, side, 256);
    }
    return true;
}();

} // namespace
