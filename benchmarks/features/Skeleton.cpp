#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/features/Skeleton.h>

#include <opencv2/ximgproc.hpp>

#include <string>

namespace
{

using namespace morvane::features;

struct Method
{
    std::string name;
    ThinningTypes type;
    int peer;
};

Method const kMethods[] = {
    {"zhang-suen", ThinningZhangSuen, cv::ximgproc::THINNING_ZHANGSUEN},
    {"guo-hall", ThinningGuoHall, cv::ximgproc::THINNING_GUOHALL},
};

/// The skeleton of a comb: each tooth is a branch, and so is what lies between two.
cv::Mat Comb(int side)
{
    constexpr int kPitch = 4;
    constexpr int kTeeth = 250;
    cv::Mat1b comb(side, side, uchar{0});
    comb.row(side / 2).setTo(255);
    for (int tooth = 0; tooth < kTeeth && (tooth + 1) * kPitch < side; ++tooth)
    {
        comb.col((tooth + 1) * kPitch).rowRange(side / 2 - 100, side / 2).setTo(255);
    }
    return comb;
}

[[maybe_unused]] bool const registered = [] {
    benchmarks::NamedImage const blobs{"blobs", benchmarks::Blobs};
    for (int const side : {256, 512, 1024, 2048})
    {
        for (Method const & method : kMethods)
        {
            benchmarks::TimeOn(
                "thinning/morvane/" + method.name + "/", blobs, side, [=](cv::Mat & image, cv::Mat & out) {
                    thinning(image, out, method.type, 0);
                    return out.data;
                });
            benchmarks::TimeOn(
                "thinning/cv-ximgproc/" + method.name + "/", blobs, side, [=](cv::Mat & image, cv::Mat & out) {
                    cv::ximgproc::thinning(image, out, method.peer);
                    return out.data;
                });
        }
        benchmarks::TimeOn("ExtractSkeletonByErosion/morvane/", blobs, side, [](cv::Mat & image, cv::Mat & out) {
            return ExtractSkeletonByErosion(image, out, cv::MORPH_RECT, 3);
        });
    }
    for (int const side : {512, 1024, 2048})
    {
        benchmarks::NamedImage const comb{"comb", Comb};
        benchmarks::TimeOn("ExtractSegmentsFromSkeleton/morvane/", comb, side, [](cv::Mat & image, cv::Mat & segments) {
            SegmentMap ends;
            return ExtractSegmentsFromSkeleton(image, 1.5, segments, ends);
        });
    }
    return true;
}();

} // namespace
