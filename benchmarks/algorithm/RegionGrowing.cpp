#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/algorithm/RegionGrowing.h>
#include <morvane/connexity/Conditions.h>
#include <morvane/connexity/ConnectedZoneScan.h>

#include <opencv2/imgproc.hpp>

#include <string>

namespace
{

using namespace morvane;
using namespace morvane::connexity;

constexpr float kDelta = 10.0F;

cv::Mat Empty(int side)
{
    return cv::Mat1b::zeros(side, side);
}

benchmarks::NamedImage const kInputs[] = {
    {"terrain", benchmarks::GreyTerrain},
    {"blobs", benchmarks::GreyBlobs},
    {"noise",
     [](int side) {
         return benchmarks::RandomValues(side, CV_8UC1);
     }},
    {"flat", Empty},
};

/// The plain form: the walk that asks two conditions, pixel by pixel.
bool WalkOverTwo(cv::Mat const & image, cv::Mat & labels)
{
    labels.create(image.size(), CV_32SC1);
    Exactly<DeltaConnectedSeed<uchar>> first(kDelta);
    Exactly<DeltaConnectedSeed<uchar>> second(kDelta);
    using Both = ImageConnected<uchar, uchar, Exactly<DeltaConnectedSeed<uchar>>, Exactly<DeltaConnectedSeed<uchar>>>;
    Both both(image, first, second);
    ZoneLabelWriter<int> writer{&labels};
    Zone zone;
    return ConnectedZoneScan<uchar, ZoneLabelWriter<int>, Both, AllPixels>(image, eConnexity8, both, writer, zone)
        .Run();
}

/// The plain form of a wand with one seed.
bool WalkFrom(cv::Mat const & image, cv::Point const & seed, cv::Mat & labels)
{
    labels.create(image.size(), CV_32SC1);
    labels.setTo(0.0);
    Exactly<DeltaConnected<uchar>> condition(kDelta);
    ZoneLabelWriter<int> writer{&labels};
    Zone zone;
    using Scan = ConnectedZoneScan<uchar, ZoneLabelWriter<int>, Exactly<DeltaConnected<uchar>>, AllPixels>;
    return Scan(image, eConnexity8, condition, writer, zone).FloodFrom(seed);
}

[[maybe_unused]] bool const registered = [] {
    for (int const side : {512, 1024, 2048, 4096})
    {
        cv::Point const seed(side / 2, side / 2);
        for (benchmarks::NamedImage const & input : kInputs)
        {
            benchmarks::TimeOn("GrowRegion/morvane/8/", input, side, [](cv::Mat & image, cv::Mat & labels) {
                labels.create(image.size(), CV_32SC1);
                return algorithm::GrowRegion(image, image, eConnexity8, kDelta, kDelta, labels);
            });
            benchmarks::TimeOn("GrowRegion/plain/8/", input, side, WalkOverTwo);
            // From a seed in the middle; of noise and blobs the zone is small.
            benchmarks::TimeOn("MagicWand/morvane/8/", input, side, [=](cv::Mat & image, cv::Mat & labels) {
                labels.create(image.size(), CV_32SC1);
                return algorithm::MagicWand(image, eConnexity8, {seed}, kDelta, labels);
            });
            benchmarks::TimeOn("MagicWand/plain/8/", input, side, [=](cv::Mat & image, cv::Mat & labels) {
                return WalkFrom(image, seed, labels);
            });
            benchmarks::TimeOn("MagicWand/cv-floodFill/8/", input, side, [=](cv::Mat & image, cv::Mat & mask) {
                mask = cv::Mat1b::zeros(image.rows + 2, image.cols + 2);
                constexpr int kFlags = 8 | cv::FLOODFILL_MASK_ONLY | (255 << 8);
                return cv::floodFill(image, mask, seed, {}, nullptr, kDelta, kDelta, kFlags) > 0;
            });
            benchmarks::TimeOn("Accumulator/morvane/8/", input, side, [=](cv::Mat & image, cv::Mat & labels) {
                labels.create(image.size(), CV_32SC1);
                return algorithm::MagicWandBasedOnAccumulator(image, eConnexity8, {seed}, 2e9F, labels);
            });
            benchmarks::TimeOn("PriorityAccumulator/morvane/8/", input, side, [=](cv::Mat & image, cv::Mat & labels) {
                labels.create(image.size(), CV_32SC1);
                return algorithm::MagicWandBasedOnPriorityAccumulator(image, eConnexity8, {seed}, 2e9F, labels);
            });
        }
    }
    return true;
}();

} // namespace
