// Which of several windows wins, on clouds where it is known.
#include <morvane/features/Normals.h>

#include "support/ImageLiterals.h"
#include "support/NormalOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cmath>

namespace morvane::features
{

namespace
{

using tests::PointCloud;

/// A level of 7 by 7 points, whose heights are rough by @p inner next to the middle and by @p outer beyond.
PointCloud Level(double inner, double outer, double spacing, int depthType)
{
    cv::Size const size(7, 7);
    PointCloud cloud{
        cv::Mat(size, depthType, cv::Scalar(1.0)), cv::Mat(size, CV_64FC1), cv::Mat(size, CV_64FC1),
        cv::Mat(size, CV_64FC1)};
    for (int row = 0; row < 7; ++row)
    {
        for (int column = 0; column < 7; ++column)
        {
            bool const isInner = std::abs(row - 3) <= 1 && std::abs(column - 3) <= 1;
            double const rough = (row + column) % 2 == 0 ? -0.5 : 0.5;
            cloud.x.at<double>(row, column) = spacing * (column - 3);
            cloud.y.at<double>(row, column) = spacing * (row - 3);
            cloud.z.at<double>(row, column) = 1000.0 * spacing + (isInner ? inner : outer) * rough;
        }
    }
    return cloud;
}

/// The distance that the pixel in the middle gets.
double MiddleOf(PointCloud const & cloud, eNormalComputationMethod method, int halfWidth)
{
    cv::Mat normals;
    cv::Mat rms;
    EXPECT_TRUE(ComputeMatNormal(cloud.depth, cloud.x, cloud.y, cloud.z, normals, rms, method, halfWidth, false));
    double const distance = rms.at<double>(3, 3);
    double const up = normals.at<cv::Vec3d>(3, 3)[2];
    EXPECT_NEAR(up, distance == 25.0 ? 0.0 : -1.0, 1e-3);
    return distance;
}

/// The same for one window.
double WindowOf(PointCloud const & cloud, int radius)
{
    return tests::OracleFit(tests::OracleMovingSums(cloud, {3, 3}, radius, false), (2 * radius + 1) * (2 * radius + 1))
        .rms;
}

TEST(ComputeMatNormalSearch, Pyramid_NeverWritesItsFirstWindow)
{
    // The smallest window is the best: that stays unsaid.
    PointCloud const rough = Level(0.1, 10.0, 4.0, CV_32FC1);
    EXPECT_EQ(MiddleOf(rough, Pyramid, 3), 25.0);
    EXPECT_NEAR(MiddleOf(rough, PyramidWindowMoving, 3), WindowOf(rough, 1), 1e-6);
    EXPECT_NEAR(MiddleOf(rough, PyramidWindowMovingSqrt, 3), WindowOf(rough, 1), 1e-6);
    // The same roughness everywhere: the more points the better.
    PointCloud const even = Level(1.0, 1.0, 4.0, CV_32FC1);
    for (eNormalComputationMethod const method : {Pyramid, PyramidWindowMoving, PyramidWindowMovingSqrt})
    {
        EXPECT_NEAR(MiddleOf(even, method, 3), WindowOf(even, 3), 1e-6);
        EXPECT_NEAR(MiddleOf(even, method, 2), WindowOf(even, 2), 1e-6);
        // There are always two radii to choose from.
        EXPECT_NEAR(MiddleOf(even, method, 1), WindowOf(even, 2), 1e-6);
        EXPECT_NEAR(MiddleOf(even, method, 0), WindowOf(even, 2), 1e-6);
    }
}

TEST(ComputeMatNormalSearch, WithoutAPlaneInTheFirstWindow_TheNextOneIsTheYardstick)
{
    // The innermost points fit a plane exactly.
    PointCloud const cloud = Level(0.0, 1.0, 4.0, CV_32FC1);
    EXPECT_EQ(MiddleOf(cloud, Pyramid, 2), 25.0);
    EXPECT_NEAR(MiddleOf(cloud, PyramidWindowMoving, 2), WindowOf(cloud, 2), 1e-6);
    ASSERT_LT(WindowOf(cloud, 3) / 49.0, WindowOf(cloud, 2) / 25.0);
    EXPECT_NEAR(MiddleOf(cloud, Pyramid, 3), WindowOf(cloud, 3), 1e-6);
}

TEST(ComputeMatNormalSearch, Pyramid_LeavesWindowsThatAreOnlyAsGood)
{
    // Nine points alone: wider windows hold the same ones.
    PointCloud cloud = Level(1.0, 1.0, 4.0, CV_32FC1);
    cv::Mat const isOuter = cloud.depth.clone();
    isOuter(cv::Rect(2, 2, 3, 3)).setTo(0.0);
    for (cv::Mat * const image : {&cloud.depth, &cloud.x, &cloud.y, &cloud.z})
    {
        image->setTo(0.0, isOuter != 0.0);
    }
    EXPECT_EQ(MiddleOf(cloud, Pyramid, 3), 25.0);
    EXPECT_NEAR(MiddleOf(cloud, PyramidWindowMoving, 3), WindowOf(cloud, 1), 1e-6);
}

TEST(ComputeMatNormalSearch, ComparesDistancesByTheNumberOfPointsOrItsRoot)
{
    // Outside it is twice as rough: 25 points outweigh that, their root does not.
    PointCloud const cloud = Level(1.0, 2.4, 4.0, CV_32FC1);
    ASSERT_LT(WindowOf(cloud, 2) / 25.0, WindowOf(cloud, 1) / 9.0);
    ASSERT_GT(WindowOf(cloud, 2) / 5.0, WindowOf(cloud, 1) / 3.0);
    EXPECT_NEAR(MiddleOf(cloud, Pyramid, 2), WindowOf(cloud, 2), 1e-6);
    EXPECT_NEAR(MiddleOf(cloud, PyramidWindowMoving, 2), WindowOf(cloud, 2), 1e-6);
    EXPECT_NEAR(MiddleOf(cloud, PyramidWindowMovingSqrt, 2), WindowOf(cloud, 1), 1e-6);
}

TEST(ComputeMatNormalSearch, KeepsScoresAsElementsOfTheDepth)
{
    // Scores of 1/18 and 1/50 are both 0 as integers: the first one stays.
    for (int const depthType : {CV_8UC1, CV_16UC1, CV_16SC1, CV_32SC1})
    {
        PointCloud const fine = Level(1.0, 1.0, 4.0, depthType);
        EXPECT_NEAR(MiddleOf(fine, PyramidWindowMoving, 3), WindowOf(fine, 1), 1e-6);
        EXPECT_NEAR(MiddleOf(fine, PyramidWindowMovingSqrt, 3), WindowOf(fine, 1), 1e-6);
        EXPECT_NEAR(MiddleOf(fine, Pyramid, 3), WindowOf(fine, 3), 1e-6);
        // 5.5 is kept as 5, which 1.998 beats; that is kept as 1, which 1.02 does not beat.
        PointCloud const coarse = Level(100.0, 100.0, 400.0, depthType);
        EXPECT_NEAR(MiddleOf(coarse, PyramidWindowMoving, 3), WindowOf(coarse, 2), 1e-6);
        // 2.2 is kept as 2, which 1.12 beats.
        PointCloud const coarser = Level(110.0, 110.0, 440.0, depthType);
        EXPECT_NEAR(MiddleOf(coarser, PyramidWindowMoving, 3), WindowOf(coarser, 3), 1e-6);
    }
    for (int const depthType : {CV_32FC1, CV_64FC1})
    {
        PointCloud const fine = Level(1.0, 1.0, 4.0, depthType);
        EXPECT_NEAR(MiddleOf(fine, PyramidWindowMoving, 3), WindowOf(fine, 3), 1e-6);
    }
}

TEST(ComputeMatNormalSearch, LeavesScoresOf25OrMore)
{
    // The roughness is 500: a score of 55 with 9 points, of 20 with 25.
    PointCloud const cloud = Level(1000.0, 1000.0, 4000.0, CV_32FC1);
    EXPECT_NEAR(MiddleOf(cloud, WindowMoving, 1), WindowOf(cloud, 1), 1e-3);
    EXPECT_NEAR(MiddleOf(cloud, PyramidWindowMoving, 2), WindowOf(cloud, 2), 1e-3);
    EXPECT_EQ(MiddleOf(cloud, PyramidWindowMovingSqrt, 2), 25.0);
    EXPECT_NEAR(MiddleOf(cloud, Pyramid, 2), WindowOf(cloud, 2), 1e-3);
    PointCloud const rougher = Level(2000.0, 2000.0, 8000.0, CV_32FC1);
    EXPECT_EQ(MiddleOf(rougher, PyramidWindowMoving, 2), 25.0);
    EXPECT_NEAR(MiddleOf(rougher, PyramidWindowMoving, 3), WindowOf(rougher, 3), 1e-3);
}

} // namespace

} // namespace morvane::features
