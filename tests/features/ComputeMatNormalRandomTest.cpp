// The strategies against sums of each window, on random clouds.
#include <morvane/features/Normals.h>

#include "support/NormalOracle.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <vector>

namespace morvane::features
{

namespace
{

using tests::CloudMixture;
using tests::FramedImage;
using tests::NormalSettings;
using tests::OracleNormals;
using tests::PointCloud;
using tests::Random;

constexpr std::array kMethods{WindowMoving, Pyramid, PyramidWindowMoving, PyramidWindowMovingSqrt};
constexpr std::array kCoordinateTypes{CV_32FC1, CV_64FC1};

/// Unit vectors of no plane.
cv::Mat OldNormals(PointCloud const & cloud)
{
    cv::Mat normals(cloud.x.size(), CV_MAKETYPE(cloud.x.depth(), 3));
    normals.setTo(cv::Scalar(3.0, 4.0, 5.0));
    return normals;
}

/// Expects what the oracle says, and adds up the pixels that are known to have a plane and those of which nothing is.
void ExpectAgreement(PointCloud const & cloud, NormalSettings const & settings, int & planes, int & open)
{
    cv::Mat normals = OldNormals(cloud);
    cv::Mat rms(cloud.x.size(), cloud.x.type(), cv::Scalar(7.0));
    OracleNormals const expected = tests::OracleStrategy(cloud, settings, normals);
    ASSERT_TRUE(ComputeMatNormal(
        cloud.depth, cloud.x, cloud.y, cloud.z, normals, rms, static_cast<eNormalComputationMethod>(settings.method),
        settings.halfWidth, settings.wrapColumns))
        << tests::NormalCase(cloud, settings);
    ASSERT_TRUE(tests::Agree(normals, rms, expected)) << tests::NormalCase(cloud, settings);
    planes += tests::PlaneCount(expected, settings.defaultRms);
    open += cv::countNonZero(expected.open == 2);
}

class ComputeMatNormalRandom : public ::testing::TestWithParam<eNormalComputationMethod>
{};

TEST_P(ComputeMatNormalRandom, FindsThePlanesOfAllWindows)
{
    Random random(710);
    int planes = 0;
    int open = 0;
    int pixels = 0;
    for (int const type : kCoordinateTypes)
    {
        for (int const halfWidth : {0, 1, 2, 3, 4, 5, 6, 9, 50})
        {
            for (bool const wrapColumns : {false, true})
            {
                cv::Size const size(1 + random.Below(27), 1 + random.Below(21));
                CloudMixture mixture;
                mixture.strayShare = random.Chance(0.5) ? 0.4 : 0.0;
                PointCloud const cloud = tests::RoughCloud(random, size, type, mixture);
                NormalSettings const settings{GetParam(), halfWidth, wrapColumns};
                ASSERT_NO_FATAL_FAILURE(ExpectAgreement(cloud, settings, planes, open));
                pixels += size.area();
            }
        }
    }
    EXPECT_GT(planes, pixels / 4);
    EXPECT_LT(open, pixels / 100);
}

TEST_P(ComputeMatNormalRandom, OfTinyImages_FindsThePlanesOfAllWindows)
{
    Random random(711);
    CloudMixture mixture;
    mixture.emptyShare = 0.1;
    mixture.flatShare = 0.0;
    int planes = 0;
    int open = 0;
    for (int rows = 1; rows <= 4; ++rows)
    {
        for (int cols = 1; cols <= 4; ++cols)
        {
            for (int const halfWidth : {0, 1, 2, 5})
            {
                PointCloud const cloud = tests::RoughCloud(random, {cols, rows}, CV_64FC1, mixture);
                ASSERT_NO_FATAL_FAILURE(ExpectAgreement(cloud, {GetParam(), halfWidth, false}, planes, open));
                ASSERT_NO_FATAL_FAILURE(ExpectAgreement(cloud, {GetParam(), halfWidth, true}, planes, open));
            }
        }
    }
    EXPECT_GT(planes, 20);
    EXPECT_LT(open, 100);
}

TEST_P(ComputeMatNormalRandom, LooksAtDepthsOfAnyType)
{
    Random random(712);
    int planes = 0;
    int open = 0;
    int pixels = 0;
    for (int const type : kCoordinateTypes)
    {
        for (int const depthType : {CV_8UC1, CV_16UC1, CV_16SC1, CV_32SC1, CV_32FC1, CV_64FC1})
        {
            CloudMixture mixture;
            mixture.depthType = depthType;
            cv::Size const size(9 + random.Below(12), 9 + random.Below(9));
            PointCloud cloud = tests::RoughCloud(random, size, type, mixture);
            // Larger, so that scores are above 1 too: integers keep them without their fraction.
            for (cv::Mat * const image : {&cloud.x, &cloud.y, &cloud.z})
            {
                *image *= 1024.0;
            }
            ASSERT_NO_FATAL_FAILURE(ExpectAgreement(cloud, {GetParam(), 5, random.Chance(0.5)}, planes, open));
            pixels += size.area();
        }
    }
    EXPECT_GT(planes, pixels / 4);
    EXPECT_LT(open, pixels / 100);
}

TEST_P(ComputeMatNormalRandom, FindsThePlanesOfSparsePoints)
{
    Random random(713);
    int planes = 0;
    int open = 0;
    for (int const type : kCoordinateTypes)
    {
        for (double const emptyShare : {0.5, 0.7, 0.9, 1.0})
        {
            CloudMixture mixture;
            mixture.emptyShare = emptyShare;
            mixture.centre = {-7.0, 40.0, -3.0};
            PointCloud const cloud = tests::RoughCloud(random, {23, 17}, type, mixture);
            ASSERT_NO_FATAL_FAILURE(ExpectAgreement(cloud, {GetParam(), 4, false}, planes, open));
            ASSERT_NO_FATAL_FAILURE(ExpectAgreement(cloud, {GetParam(), 2, true}, planes, open));
        }
    }
    EXPECT_GT(planes, 500);
    EXPECT_LT(open, 50);
}

TEST_P(ComputeMatNormalRandom, OfCoordinatesOfAnyBits_IsNearThePlanes)
{
    Random random(714);
    int planes = 0;
    int open = 0;
    for (int const halfWidth : {1, 3, 6})
    {
        PointCloud cloud = tests::RoughCloud(random, {25, 19}, CV_64FC1);
        // Sums round now, and those that run drift.
        cv::Mat const scale(cloud.x.size(), CV_64FC1, cv::Scalar(1.1));
        for (cv::Mat * const image : {&cloud.x, &cloud.y, &cloud.z})
        {
            cv::divide(*image, scale, *image);
        }
        ASSERT_NO_FATAL_FAILURE(ExpectAgreement(cloud, {GetParam(), halfWidth, true}, planes, open));
    }
    EXPECT_GT(planes, 300);
    EXPECT_LT(open, 50);
}

TEST_P(ComputeMatNormalRandom, TakesViewsWithGapsBetweenTheirRows)
{
    Random random(715);
    for (int const type : kCoordinateTypes)
    {
        PointCloud const cloud = tests::RoughCloud(random, {19, 13}, type);
        FramedImage depth(cloud.depth);
        FramedImage x(cloud.x);
        FramedImage y(cloud.y);
        FramedImage z(cloud.z);
        FramedImage normals(OldNormals(cloud));
        FramedImage rms(cloud.x);
        NormalSettings const settings{GetParam(), 3, true};
        OracleNormals const expected = tests::OracleStrategy(cloud, settings, OldNormals(cloud));
        ASSERT_TRUE(ComputeMatNormal(
            depth.View(), x.View(), y.View(), z.View(), normals.View(), rms.View(), GetParam(), 3, true));
        EXPECT_TRUE(tests::Agree(normals.View(), rms.View(), expected));
        for (FramedImage const * const image : {&depth, &x, &y, &z, &normals, &rms})
        {
            EXPECT_TRUE(image->IsFrameUntouched());
        }
        EXPECT_TRUE(tests::EqualImages(depth.View(), cloud.depth));
        EXPECT_TRUE(tests::EqualImages(z.View(), cloud.z));
    }
}

TEST_P(ComputeMatNormalRandom, GivesUnitVectorsThatFaceTheScanner)
{
    Random random(716);
    for (int const type : kCoordinateTypes)
    {
        for (cv::Vec3d const & centre : {cv::Vec3d(0, 0, 16), cv::Vec3d(0, 0, -16), cv::Vec3d(30, -20, 9)})
        {
            CloudMixture mixture;
            mixture.centre = centre;
            PointCloud const cloud = tests::RoughCloud(random, {31, 21}, type, mixture);
            cv::Mat normals;
            cv::Mat rms;
            ASSERT_TRUE(ComputeMatNormal(cloud.depth, cloud.x, cloud.y, cloud.z, normals, rms, GetParam(), 2, false));
            cv::Mat3d wide;
            cv::Mat1d distances;
            normals.convertTo(wide, CV_64F);
            rms.convertTo(distances, CV_64F);
            int planes = 0;
            for (int row = 0; row < wide.rows; ++row)
            {
                for (int column = 0; column < wide.cols; ++column)
                {
                    cv::Vec3d const normal = wide(row, column);
                    bool const isPlane = distances(row, column) != 25.0;
                    ASSERT_NEAR(cv::norm(normal), isPlane ? 1.0 : 0.0, 1e-6);
                    if (!isPlane) continue;
                    ++planes;
                    ASSERT_GE(distances(row, column), 0.00999);
                    // The centroid of the window decides; which window others than the first method took is not known.
                    auto const sums = tests::OracleMovingSums(cloud, {column, row}, 2, false);
                    bool const isFacing = normal.dot(sums.sum) / sums.count <= 1e-5;
                    ASSERT_TRUE(isFacing || GetParam() != WindowMoving);
                }
            }
            EXPECT_GT(planes, 200);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Method, ComputeMatNormalRandom, ::testing::ValuesIn(kMethods));

} // namespace

} // namespace morvane::features
