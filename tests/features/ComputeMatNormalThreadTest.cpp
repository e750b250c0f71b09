// The number of threads must not be seen in the result.
#include <morvane/features/Normals.h>

#include "support/NormalOracle.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"
#include "support/ThreadCounts.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <vector>

namespace morvane::features
{

namespace
{

using tests::PointCloud;
using tests::Random;

constexpr std::array kMethods{WindowMoving, Pyramid, PyramidWindowMoving, PyramidWindowMovingSqrt};

/// Sizes of which no number of threads gets even shares.
std::vector<cv::Size> const kSizes{{3, 2}, {7, 5}, {33, 7}, {19, 41}, {67, 37}};

/// The images of one call.
struct Result
{
    cv::Mat normals;
    cv::Mat rms;
};

Result Compute(PointCloud const & cloud, eNormalComputationMethod method, int halfWidth, int threads)
{
    tests::ThreadCount const count(threads);
    Result result;
    EXPECT_TRUE(
        ComputeMatNormal(cloud.depth, cloud.x, cloud.y, cloud.z, result.normals, result.rms, method, halfWidth, true));
    return result;
}

TEST(ComputeMatNormalThreads, GivesTheBytesOfOneThread)
{
    Random random(720);
    for (cv::Size const size : kSizes)
    {
        for (int const type : {CV_32FC1, CV_64FC1})
        {
            tests::CloudMixture mixture;
            mixture.depthType = random.Chance(0.5) ? CV_8UC1 : CV_32FC1;
            PointCloud const cloud = tests::RoughCloud(random, size, type, mixture);
            for (eNormalComputationMethod const method : kMethods)
            {
                for (int const halfWidth : {1, 4})
                {
                    Result const expected = Compute(cloud, method, halfWidth, 1);
                    for (int const threads : tests::kThreadCounts)
                    {
                        Result const result = Compute(cloud, method, halfWidth, threads);
                        ASSERT_TRUE(tests::EqualImages(result.normals, expected.normals)) << method << threads;
                        ASSERT_TRUE(tests::EqualImages(result.rms, expected.rms)) << method << threads;
                    }
                }
            }
        }
    }
}

} // namespace

} // namespace morvane::features
