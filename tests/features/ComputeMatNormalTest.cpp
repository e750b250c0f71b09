// The rules of each strategy on clouds that are known.
#include <morvane/features/Normals.h>

#include "support/ImageLiterals.h"
#include "support/NormalOracle.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace morvane::features
{

namespace
{

using tests::EqualImages;
using tests::PointCloud;
using tests::Random;

constexpr std::array kMethods{WindowMoving, Pyramid, PyramidWindowMoving, PyramidWindowMovingSqrt};

/// A call with all its images.
struct Call
{
    explicit Call(cv::Size size = {7, 7}, int type = CV_32FC1)
    {
        Random random(730);
        tests::CloudMixture mixture;
        mixture.flatShare = 0.0;
        mixture.emptyShare = 0.0;
        cloud = tests::RoughCloud(random, size, type, mixture);
        normals = cv::Mat(size, CV_MAKETYPE(cloud.x.depth(), 3), cv::Scalar::all(3.0));
        rms = cv::Mat(size, type, cv::Scalar(3.0));
    }

    [[nodiscard]] bool Compute(eNormalComputationMethod method, int halfWidth = 1, bool wrapColumns = false)
    {
        return ComputeMatNormal(cloud.depth, cloud.x, cloud.y, cloud.z, normals, rms, method, halfWidth, wrapColumns);
    }

    /// Takes all points away.
    void Empty()
    {
        for (cv::Mat * const image : {&cloud.depth, &cloud.x, &cloud.y, &cloud.z})
        {
            image->setTo(0.0);
        }
    }

    /// Puts a point into a pixel, near enough to a level plane.
    void Put(int row, int column)
    {
        double const rough = (3 * row + 5 * column) % 4 == 0 ? 0.25 : 0.0;
        tests::SetElement(cloud.depth, row, column, 0, 1.0);
        tests::SetElement(cloud.x, row, column, 0, column);
        tests::SetElement(cloud.y, row, column, 0, row);
        tests::SetElement(cloud.z, row, column, 0, 8.0 + rough);
    }

    PointCloud cloud;
    cv::Mat normals;
    cv::Mat rms;
};

TEST(ComputeMatNormal, MakesBothOutputsWhereOneIsEmpty)
{
    for (eNormalComputationMethod const method : kMethods)
    {
        for (int const type : {CV_32FC1, CV_64FC1})
        {
            Call full({7, 7}, type);
            full.normals.setTo(0.0);
            ASSERT_TRUE(full.Compute(method, 2));
            Call call({7, 7}, type);
            call.rms = cv::Mat();
            ASSERT_TRUE(call.Compute(method, 2));
            EXPECT_TRUE(EqualImages(call.normals, full.normals));
            EXPECT_TRUE(EqualImages(call.rms, full.rms));
            // The size and type of the other one do not matter then.
            call.normals = cv::Mat();
            call.rms = cv::Mat(3, 9, CV_8UC2);
            ASSERT_TRUE(call.Compute(method, 2));
            EXPECT_TRUE(EqualImages(call.normals, full.normals));
            EXPECT_TRUE(EqualImages(call.rms, full.rms));
        }
    }
}

TEST(ComputeMatNormal, KeepsTheNormalsOfPixelsWithoutAPlane)
{
    for (eNormalComputationMethod const method : kMethods)
    {
        Call call;
        call.Empty();
        ASSERT_TRUE(call.Compute(method, 3, true));
        EXPECT_TRUE(EqualImages(call.normals, cv::Mat(7, 7, CV_32FC3, cv::Scalar::all(3.0))));
        EXPECT_TRUE(EqualImages(call.rms, cv::Mat(7, 7, CV_32FC1, cv::Scalar(25.0))));
        call.rms = cv::Mat();
        ASSERT_TRUE(call.Compute(method, 3, true));
        EXPECT_TRUE(EqualImages(call.normals, cv::Mat::zeros(7, 7, CV_32FC3)));
        EXPECT_TRUE(EqualImages(call.rms, cv::Mat(7, 7, CV_32FC1, cv::Scalar(25.0))));
    }
}

TEST(ComputeMatNormal, GivesExactPlanesNoNormal)
{
    for (eNormalComputationMethod const method : kMethods)
    {
        Call call;
        // z = 8 + x / 2
        cv::addWeighted(call.cloud.x, 0.5, call.cloud.x, 0.0, 8.0, call.cloud.z);
        ASSERT_TRUE(call.Compute(method, 3));
        EXPECT_EQ(cv::countNonZero(call.rms != 25.0), 0);
    }
}

TEST(ComputeMatNormal, NeedsMoreThanSixPoints)
{
    std::vector<cv::Point> const around{{2, 2}, {3, 2}, {4, 2}, {2, 3}, {3, 3}, {4, 4}, {2, 4}};
    for (eNormalComputationMethod const method : {WindowMoving, PyramidWindowMoving, PyramidWindowMovingSqrt})
    {
        Call call;
        call.Empty();
        for (std::size_t i = 0; i < 6; ++i)
        {
            call.Put(around[i].y, around[i].x);
        }
        ASSERT_TRUE(call.Compute(method));
        EXPECT_EQ(cv::countNonZero(call.rms != 25.0F), 0);
        call.Put(around[6].y, around[6].x);
        ASSERT_TRUE(call.Compute(method));
        EXPECT_LT(call.rms.at<float>(3, 3), 1.0F);
        EXPECT_LT(call.normals.at<cv::Vec3f>(3, 3)[2], -0.8F);
        // The window of the pixel to the right has six points less one column.
        EXPECT_EQ(method == WindowMoving ? call.rms.at<float>(3, 4) : 25.0F, 25.0F);
    }
}

TEST(ComputeMatNormal, CountsPointsOnlyButAddsAllCoordinates)
{
    Call call;
    call.Empty();
    for (int row = 2; row <= 4; ++row)
    {
        for (int column = 2; column <= 4; ++column)
        {
            call.Put(row, column);
        }
    }
    ASSERT_TRUE(call.Compute(WindowMoving));
    float const with = call.rms.at<float>(3, 3);
    // Its coordinates stay: sums of nine points are divided by eight.
    call.cloud.depth.at<float>(2, 2) = 0.0F;
    ASSERT_TRUE(call.Compute(WindowMoving));
    tests::WindowSums const sums = tests::OracleMovingSums(call.cloud, {3, 3}, 1, false);
    tests::OraclePlane const plane = tests::OracleFit(sums, 8);
    EXPECT_EQ(sums.count, 8);
    bool const isPlane = plane.answer == tests::PlaneAnswer::Plane;
    EXPECT_NEAR(call.rms.at<float>(3, 3), isPlane ? plane.rms : 25.0, 1e-6);
    EXPECT_NE(call.rms.at<float>(3, 3), with);
}

TEST(ComputeMatNormal, MirrorsTheTopAndCutsTheBottom)
{
    // Six points in the first two rows: the second counts twice for a pixel of the first one.
    Call call({7, 7});
    call.Empty();
    for (int column = 2; column <= 4; ++column)
    {
        call.Put(0, column);
        call.Put(1, column);
    }
    ASSERT_TRUE(call.Compute(WindowMoving));
    EXPECT_EQ(tests::OracleMovingSums(call.cloud, {3, 0}, 1, false).count, 9);
    EXPECT_NE(call.rms.at<float>(0, 3), 25.0F);
    EXPECT_EQ(call.rms.at<float>(1, 3), 25.0F);
    call.Empty();
    for (int column = 2; column <= 4; ++column)
    {
        call.Put(5, column);
        call.Put(6, column);
    }
    ASSERT_TRUE(call.Compute(WindowMoving));
    EXPECT_EQ(cv::countNonZero(call.rms != 25.0F), 0);
    // An integral image has no mirror.
    call.Empty();
    for (int column = 2; column <= 4; ++column)
    {
        call.Put(0, column);
        call.Put(1, column);
    }
    ASSERT_TRUE(call.Compute(Pyramid, 1));
    EXPECT_EQ(cv::countNonZero(call.rms != 25.0F), 0);
}

TEST(ComputeMatNormal, WrapsColumnsWhenAsked)
{
    for (eNormalComputationMethod const method : kMethods)
    {
        Call call;
        call.Empty();
        for (int row = 2; row <= 4; ++row)
        {
            call.Put(row, 6);
            call.Put(row, 0);
            call.Put(row, 1);
        }
        ASSERT_TRUE(call.Compute(method, 1, false));
        EXPECT_EQ(call.rms.at<float>(3, 0), 25.0F) << method;
        ASSERT_TRUE(call.Compute(method, 1, true));
        EXPECT_EQ(call.rms.at<float>(3, 0) != 25.0F, method != Pyramid) << method;
    }
}

TEST(ComputeMatNormal, GivesWindowsWithNaNNoPlane)
{
    for (double const number : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()})
    {
        for (eNormalComputationMethod const method : kMethods)
        {
            Call whole({17, 15});
            ASSERT_TRUE(whole.Compute(method, 2));
            Call call({17, 15});
            call.cloud.z.at<float>(9, 8) = static_cast<float>(number);
            ASSERT_TRUE(call.Compute(method, 2));
            EXPECT_EQ(call.rms.at<float>(9, 8), 25.0F) << method;
            EXPECT_EQ(call.normals.at<cv::Vec3f>(9, 8), cv::Vec3f::all(3.0F)) << method;
            EXPECT_EQ(cv::countNonZero(call.rms != call.rms), 0) << method;
            // Rows whose windows have not seen it yet.
            EXPECT_TRUE(EqualImages(call.rms.rowRange(0, 7), whole.rms.rowRange(0, 7))) << method;
            EXPECT_TRUE(EqualImages(call.normals.rowRange(0, 7), whole.normals.rowRange(0, 7))) << method;
        }
    }
}

} // namespace

} // namespace morvane::features
