// Zones that grow in an image beyond two gigabytes.
#include <morvane/connexity/Connexity.h>

#include "support/GrowingOracle.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace morvane::tests
{

namespace
{

TEST(SlowRegionGrowing, ImageBeyondTwoGigabytes_IsGrownToItsLastPixel)
{
    // A bottom line of 1 below a ground too high for any bound.
    cv::Size const size(16500, 16500);
    cv::Mat image(size, CV_64FC1, cv::Scalar(1e9));
    ASSERT_GT(image.total() * image.elemSize(), std::size_t{1} << 31U);
    image.row(size.height - 1).setTo(1.0);
    GrowthInput input;
    input.image = image;
    input.second = cv::Mat(size.height, 1, CV_8UC1, cv::Scalar(0));
    input.connexity = connexity::eConnexity8Wrapped;
    input.seeds = {{0, 0}, {size.width - 1, size.height - 1}};
    for (GrowthUnderTest const & growth : AllGrowths())
    {
        if (!growth.takesSeeds) continue;
        // The ground is one zone of equal pixels, which is not grown here, and each of its pixels passes the budget.
        input.seeds.front() = growth.isBySum ? cv::Point(0, 0) : input.seeds.back();
        input.delta1 = growth.isBySum ? 1001.0 : 0.0;
        cv::Mat const labels = Grown(growth, input, CV_8UC1);
        cv::Mat const line = labels.row(size.height - 1);
        int const zone = growth.isBySum ? 2 : 1;
        EXPECT_EQ(cv::countNonZero(line == zone), growth.isBySum ? 1000 : size.width) << growth.name;
        EXPECT_EQ(line.at<uchar>(0, size.width - 1), zone) << growth.name;
        EXPECT_EQ(line.at<uchar>(0, 0), zone) << growth.name << ": across the seam";
        EXPECT_EQ(labels.at<uchar>(0, 0), growth.isBySum ? 1 : 0) << growth.name;
        EXPECT_EQ(cv::countNonZero(labels), growth.isBySum ? 1001 : size.width) << growth.name;
    }
}

} // namespace

} // namespace morvane::tests
