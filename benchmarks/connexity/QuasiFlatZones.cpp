#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/connexity/QuasiFlatZones.h>

#include <opencv2/imgproc.hpp>

namespace
{

using namespace morvane;

/// Heights in millimetres, in pixels of 10 cm: gentle slopes with 2,000 blocks on them, and a few gaps.
cv::Mat ScannedYard(int side)
{
    constexpr int kBlocks = 2000;
    cv::RNG random(11);
    cv::Mat1f coarse(9, 9);
    random.fill(coarse, cv::RNG::UNIFORM, 1000.0, 2500.0);
    cv::Mat1f heights;
    cv::resize(coarse, heights, {side, side}, 0.0, 0.0, cv::INTER_CUBIC);
    cv::Mat1f noise(side, side);
    random.fill(noise, cv::RNG::NORMAL, 0.0, 1.0);
    heights += noise;
    for (int block = 0; block < kBlocks; ++block)
    {
        int const width = random.uniform(8, 18);
        int const height = random.uniform(8, 18);
        cv::Rect const place(random.uniform(0, side - width), random.uniform(0, side - height), width, height);
        heights(place) += random.uniform(300.0F, 6000.0F);
    }
    for (int gap = 0; gap < kBlocks / 10; ++gap)
    {
        cv::circle(heights, {random.uniform(0, side), random.uniform(0, side)}, random.uniform(1, 20), 0.0F, -1);
    }
    return heights;
}

constexpr double kDelta = 30.0;
constexpr int kWindow = 5;

[[maybe_unused]] bool const registered = [] {
    using projection::ProjectionClosingFirst;
    benchmarks::NamedImage const yard{"yard", ScannedYard};
    for (int const side : {512, 1024, 2048})
    {
        benchmarks::TimeOn("ComputeQuasiFlatZones/morvane/", yard, side, [](cv::Mat const & image, cv::Mat & labels) {
            cv::Mat filtered;
            return ComputeQuasiFlatZones(
                image, ProjectionClosingFirst, kDelta, connexity::eConnexity8, kWindow, false, true, filtered, labels);
        });
        benchmarks::TimeOn(
            "QuasiFlatZonesPropagation/automatic/", yard, side, [](cv::Mat const & image, cv::Mat & mask) {
                cv::Mat filtered;
                return QuasiFlatZonesPropagation(
                    image, ProjectionClosingFirst, kDelta, connexity::eConnexity8, kWindow, false, true, cv::Mat(), 50,
                    0, 20, 100.0, 0.3, filtered, mask);
            });
    }
    return true;
}();

} // namespace
