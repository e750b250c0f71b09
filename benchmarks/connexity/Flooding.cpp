#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/connexity/Flooding.h>

#include <opencv2/imgproc.hpp>

#include <string>

namespace
{

using namespace morvane::connexity;

benchmarks::NamedImage const kInputs[] = {{"blobs", benchmarks::GreyBlobs}, {"terrain", benchmarks::GreyTerrain}};

/// A marker in every square of 32 pixels.
cv::Mat1i Markers(int side)
{
    constexpr int kSquare = 32;
    cv::Mat1i markers(side, side, 0);
    int label = 0;
    for (int y = kSquare / 2; y < side; y += kSquare)
    {
        for (int x = kSquare / 2; x < side; x += kSquare)
        {
            markers(y, x) = ++label;
        }
    }
    return markers;
}

/// Times an operator that changes its markers: each run gets a copy, which is a hundredth of the time.
template <class Operator>
void TimeFlood(std::string const & name, benchmarks::NamedImage const & input, int side, Operator const & flood)
{
    benchmarks::Time(
        name + input.name + "/" + std::to_string(side),
        [=] {
            return [=, image = input.make(side), seeds = Markers(side), markers = cv::Mat()]() mutable {
                seeds.copyTo(markers);
                return flood(image, markers);
            };
        },
        side);
}

[[maybe_unused]] bool const registered = [] {
    for (int const side : {512, 1024, 2048, 4096})
    {
        for (benchmarks::NamedImage const & input : kInputs)
        {
            TimeFlood("Flooding/morvane/", input, side, [](cv::Mat & image, cv::Mat & markers) {
                return Flooding(image, markers);
            });
            TimeFlood("Flooding/cv-watershed/", input, side, [](cv::Mat & image, cv::Mat & markers) {
                cv::Mat colour;
                cv::cvtColor(image, colour, cv::COLOR_GRAY2BGR);
                cv::watershed(colour, markers);
                return true;
            });
            TimeFlood("FloodingDelta/morvane/", input, side, [](cv::Mat & image, cv::Mat & markers) {
                return FloodingDelta(image, eConnexity8, 1.0, markers);
            });
        }
    }
    return true;
}();

} // namespace
