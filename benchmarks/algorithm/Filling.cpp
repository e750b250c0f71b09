#include "support/Images.h"
#include "support/Timing.h"

#include <morvane/algorithm/Filling.h>
#include <morvane/algorithm/ImageUtilities.h>
#include <morvane/algorithm/WatershedSegmentation.h>

#include <opencv2/imgproc.hpp>

#include <string>
#include <vector>

namespace
{

using namespace morvane;

/// No pixel is empty.
template <int kType>
cv::Mat Full(int side)
{
    cv::Mat image = benchmarks::RandomValues(side, kType);
    image += 1.0;
    return image;
}

/// Every @p kOneIn pixel is empty, at random.
template <int kType, int kOneIn>
cv::Mat WithHoles(int side)
{
    cv::Mat image = Full<kType>(side);
    image.setTo(0.0, benchmarks::RandomMask(side, 1.0 / kOneIn));
    return image;
}

benchmarks::NamedImage const kInputs[] = {
    {"8U/full", Full<CV_8UC1>},
    {"32F/full", Full<CV_32FC1>},
    {"8U/holes-1-in-100", WithHoles<CV_8UC1, 100>},
    {"8U/holes-1-in-10", WithHoles<CV_8UC1, 10>},
    {"32F/holes-1-in-10", WithHoles<CV_32FC1, 10>},
};

[[maybe_unused]] bool const registered = [] {
    for (int const side : {512, 1024, 2048, 4096})
    {
        for (benchmarks::NamedImage const & input : kInputs)
        {
            benchmarks::TimeOn("Fill/cv-copyTo/", input, side, [](cv::Mat & image, cv::Mat & out) {
                image.copyTo(out);
                return true;
            });
            benchmarks::TimeOn("Fill/morvane/mean/", input, side, [](cv::Mat & image, cv::Mat & out) {
                out.create(image.size(), image.type());
                return algorithm::FillImageWithMean(image, image, out, connexity::eConnexity8);
            });
            benchmarks::TimeOn("Fill/morvane/median/", input, side, [](cv::Mat & image, cv::Mat & out) {
                out.create(image.size(), image.type());
                return algorithm::FillImageWithMedian(image, out, connexity::eConnexity8);
            });
            benchmarks::TimeOn("Fill/morvane/median-no-zero/", input, side, [](cv::Mat & image, cv::Mat & out) {
                out.create(image.size(), image.type());
                return algorithm::FillImageWithMedianNoZero(image, out, connexity::eConnexity8);
            });
            benchmarks::TimeOn("Fill/morvane/closing-5/", input, side, [](cv::Mat & image, cv::Mat & out) {
                return algorithm::FillImageWithClosing(image, out, 5);
            });
        }
        benchmarks::NamedImage const holes{"32F/panorama", benchmarks::DepthPanorama};
        benchmarks::TimeOn("Fill/morvane/interpolation-max/", holes, side, [](cv::Mat & image, cv::Mat & out) {
            return algorithm::FillHolesInterpolationWithMax(image, out, 5);
        });

        benchmarks::NamedImage const bytes{"8U", Full<CV_8UC1>};
        benchmarks::TimeOn("AccumulateColumns/morvane/", bytes, side, [](cv::Mat & image, cv::Mat &) {
            std::vector<float> sums;
            return algorithm::AccumulateColumns(image, sums, true);
        });
        benchmarks::TimeOn("AccumulateColumns/cv-reduce/", bytes, side, [](cv::Mat & image, cv::Mat & sums) {
            cv::reduce(image, sums, 1, cv::REDUCE_SUM, CV_32F);
            return true;
        });
        benchmarks::NamedImage const zones{"32S/zones", benchmarks::ManyZones};
        benchmarks::TimeOn("Erode3x3Segmentation/morvane/", zones, side, [](cv::Mat & labels, cv::Mat &) {
            return algorithm::Erode3x3Segmentation(labels);
        });
    }
    return true;
}();

} // namespace
