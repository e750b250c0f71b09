// Slopes of height fields: refusals, filled holes, angles.
#include <morvane/features/Normals.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/NormalOracle.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace morvane::features
{

namespace
{

using tests::EqualImages;
using tests::PointCloud;
using tests::Random;
using tests::Snapshot;

/// A call with all its arguments.
struct Call
{
    explicit Call(cv::Size size = {9, 7})
        : height(size, CV_32FC1, cv::Scalar(5.0))
        , mask(size, CV_8UC1, cv::Scalar(255))
    {}

    [[nodiscard]] bool Compute()
    {
        return ComputeNormalSlopeAndRms(height, mask, pixelSize, kernelSize, normals, slope, rms);
    }

    cv::Mat height;
    cv::Mat mask;
    float pixelSize = 1.0F;
    unsigned kernelSize = 3;
    cv::Mat normals;
    cv::Mat slope;
    cv::Mat rms;
};

float SlopeOf(cv::Vec3f const & normal)
{
    return static_cast<float>(std::acos(std::abs(normal[2])) * 57.29577951308232);
}

/// The heights with holes closed, by plain loops.
cv::Mat OracleFilled(cv::Mat const & height, cv::Mat const & mask, int kernelSize)
{
    cv::Mat filled = height.clone();
    cv::Rect const inside({}, height.size());
    for (int row = 0; row < height.rows; ++row)
    {
        for (int column = 0; column < height.cols; ++column)
        {
            if (tests::ElementAt(mask, row, column) != 0.0) continue;
            float low = FLT_MAX;
            float high = -FLT_MAX;
            for (int i = 0; i < kernelSize * kernelSize; ++i)
            {
                int const half = kernelSize / 2;
                cv::Point const at(column - half + i % kernelSize, row - half + i / kernelSize);
                if (!inside.contains(at) || tests::ElementAt(mask, at.y, at.x) == 0.0) continue;
                low = std::min(low, height.at<float>(at));
                high = std::max(high, height.at<float>(at));
            }
            filled.at<float>(row, column) = high == -FLT_MAX ? 0.0F : 0.5F * (low + high);
        }
    }
    return filled;
}

/// The cloud of a height field.
PointCloud CloudOf(cv::Mat const & height, float pixelSize)
{
    PointCloud cloud{height, height.clone(), height.clone(), height};
    for (int row = 0; row < height.rows; ++row)
    {
        for (int column = 0; column < height.cols; ++column)
        {
            cloud.x.at<float>(row, column) = static_cast<float>(column) * pixelSize;
            cloud.y.at<float>(row, column) = static_cast<float>(row) * pixelSize;
        }
    }
    return cloud;
}

/// Expects the normals that the oracle has, and the angles that these have.
void ExpectOracle(Call & call)
{
    cv::Mat const filled = OracleFilled(call.height, call.mask, static_cast<int>(call.kernelSize));
    cv::Mat const before = call.normals.empty() ? cv::Mat::zeros(call.height.size(), CV_32FC3) : call.normals.clone();
    tests::NormalSettings settings;
    settings.method = PyramidWindowMoving;
    tests::OracleNormals expected = tests::OracleStrategy(CloudOf(filled, call.pixelSize), settings, before);
    expected.rms.setTo(-1.0, call.mask == 0);
    ASSERT_TRUE(call.Compute());
    ASSERT_TRUE(tests::Agree(call.normals, call.rms, expected));
    cv::Mat slope(call.height.size(), CV_32FC1, cv::Scalar(-1.0));
    for (int row = 0; row < slope.rows; ++row)
    {
        for (int column = 0; column < slope.cols; ++column)
        {
            auto const & normal = call.normals.at<cv::Vec3f>(row, column);
            bool const isMeasured = tests::ElementAt(call.mask, row, column) != 0.0;
            if (isMeasured && normal != cv::Vec3f()) slope.at<float>(row, column) = SlopeOf(normal);
        }
    }
    ASSERT_TRUE(EqualImages(call.slope, slope));
}

TEST(ComputeNormalSlopeAndRms, RefusesOtherArgumentsWithOutputsUntouched)
{
    using Change = void (*)(Call & call);
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    std::vector<std::pair<std::string, Change>> const changes{
        {"empty height",
         [](Call & call) {
             call.height = cv::Mat();
         }},
        {"empty mask",
         [](Call & call) {
             call.mask = cv::Mat();
         }},
        {"no rows",
         [](Call & call) {
             call.height = cv::Mat(0, 9, CV_32FC1);
         }},
        {"no columns",
         [](Call & call) {
             call.mask = cv::Mat(7, 0, CV_8UC1);
         }},
        {"no pixel size",
         [](Call & call) {
             call.pixelSize = 0.0F;
         }},
        {"negative pixel size",
         [](Call & call) {
             call.pixelSize = -1.0F;
         }},
        {"unknown pixel size",
         [](Call & call) {
             call.pixelSize = kNaN;
         }},
        {"no kernel",
         [](Call & call) {
             call.kernelSize = 0;
         }},
        {"huge kernel",
         [](Call & call) {
             call.kernelSize = std::numeric_limits<unsigned>::max();
         }},
        {"wide mask",
         [](Call & call) {
             call.mask = cv::Mat(7, 10, CV_8UC1, cv::Scalar(1));
         }},
        {"mask of halves",
         [](Call & call) {
             call.mask = cv::Mat(7, 9, CV_16FC1);
         }},
        {"mask of signed bytes",
         [](Call & call) {
             call.mask = cv::Mat(7, 9, CV_8SC1, cv::Scalar(1));
         }},
        {"mask of two channels",
         [](Call & call) {
             call.mask = cv::Mat(7, 9, CV_8UC2, cv::Scalar(1, 1));
         }},
        {"height of doubles",
         [](Call & call) {
             call.height.convertTo(call.height, CV_64F);
         }},
        {"height of two channels",
         [](Call & call) {
             call.height = cv::Mat(7, 9, CV_32FC2);
         }},
        {"other normals",
         [](Call & call) {
             call.normals = cv::Mat(7, 8, CV_32FC3, cv::Scalar::all(1.0));
         }},
        {"normals of doubles", [](Call & call) {
             call.normals = cv::Mat(7, 9, CV_64FC3, cv::Scalar::all(1.0));
         }}};
    for (auto const & [name, change] : changes)
    {
        Call call;
        call.normals = cv::Mat(7, 9, CV_32FC3, cv::Scalar::all(1.0));
        call.rms = cv::Mat(7, 9, CV_32FC1, cv::Scalar(2.0));
        call.slope = cv::Mat(3, 3, CV_8UC1, cv::Scalar(4));
        change(call);
        std::array const snapshots{Snapshot(call.normals), Snapshot(call.rms), Snapshot(call.slope)};
        EXPECT_FALSE(call.Compute()) << name;
        for (Snapshot const & snapshot : snapshots)
        {
            EXPECT_TRUE(snapshot.IsUntouched()) << name;
        }
    }
}

TEST(ComputeNormalSlopeAndRms, WithNothingMeasured_GivesMinusOne)
{
    Call call;
    call.mask.setTo(0);
    ASSERT_TRUE(call.Compute());
    cv::Mat const none(7, 9, CV_32FC1, cv::Scalar(-1.0));
    EXPECT_TRUE(EqualImages(call.rms, none));
    EXPECT_TRUE(EqualImages(call.slope, none));
    EXPECT_TRUE(EqualImages(call.normals, cv::Mat::zeros(7, 9, CV_32FC3)));
}

TEST(ComputeNormalSlopeAndRms, OfExactPlanes_GivesNoSlope)
{
    for (float const tilt : {0.0F, 1.0F})
    {
        Call call;
        for (int column = 0; column < 9; ++column)
        {
            call.height.col(column).setTo(5.0F + tilt * static_cast<float>(column));
        }
        ASSERT_TRUE(call.Compute());
        EXPECT_TRUE(EqualImages(call.slope, cv::Mat(7, 9, CV_32FC1, cv::Scalar(-1.0))));
        EXPECT_TRUE(EqualImages(call.rms, cv::Mat(7, 9, CV_32FC1, cv::Scalar(25.0))));
    }
}

TEST(ComputeNormalSlopeAndRms, WithoutAPlane_TakesTheSlopeOfTheNormalThatWasThere)
{
    Call call;
    call.mask.at<uchar>(2, 2) = 0;
    call.normals = cv::Mat(7, 9, CV_32FC3, cv::Scalar(0.0, 0.6, -0.8));
    call.normals.at<cv::Vec3f>(4, 4) = {};
    call.rms = cv::Mat(7, 9, CV_32FC1, cv::Scalar(2.0));
    call.slope = cv::Mat(2, 2, CV_8UC1);
    ASSERT_TRUE(call.Compute());
    cv::Mat slope(7, 9, CV_32FC1, cv::Scalar(SlopeOf({0.0F, 0.6F, -0.8F})));
    cv::Mat rms(7, 9, CV_32FC1, cv::Scalar(25.0));
    slope.at<float>(4, 4) = -1.0F;
    slope.at<float>(2, 2) = -1.0F;
    rms.at<float>(2, 2) = -1.0F;
    EXPECT_TRUE(EqualImages(call.slope, slope));
    EXPECT_TRUE(EqualImages(call.rms, rms));
}

TEST(ComputeNormalSlopeAndRms, TakesHeightsOfZeroForNoPoints)
{
    Call call;
    Random random(740);
    for (int row = 0; row < 7; ++row)
    {
        for (int column = 0; column < 9; ++column)
        {
            call.height.at<float>(row, column) = static_cast<float>(random.Below(9)) / 8.0F - 0.5F;
        }
    }
    call.height.col(3).setTo(0.0);
    call.height.col(4).setTo(0.0);
    call.height.col(5).setTo(0.0);
    call.height.row(3).setTo(0.0);
    ASSERT_NO_FATAL_FAILURE(ExpectOracle(call));
    EXPECT_EQ(call.rms.at<float>(3, 4), 25.0F);
}

TEST(ComputeNormalSlopeAndRms, OfPlanesAt45Degrees_Gives45WhicheverWayTheyTilt)
{
    for (float const offset : {100.0F, -100.0F})
    {
        for (cv::Point2f const tilt : {cv::Point2f(1, 0), cv::Point2f(-1, 0), cv::Point2f(0, 1), cv::Point2f(0, -1)})
        {
            Call call({11, 9});
            call.pixelSize = 2.0F;
            for (int row = 0; row < 9; ++row)
            {
                for (int column = 0; column < 11; ++column)
                {
                    // A chequered roughness tilts no window.
                    float const rough = (row + column) % 2 == 0 ? 0.03F : -0.03F;
                    call.height.at<float>(row, column) = offset + rough + 2.0F * tilt.x * static_cast<float>(column) +
                                                         2.0F * tilt.y * static_cast<float>(row);
                }
            }
            ASSERT_TRUE(call.Compute());
            cv::Mat1f const inner = call.slope(cv::Rect(2, 2, 7, 5));
            for (float const angle : inner)
            {
                EXPECT_NEAR(angle, 45.0F, 0.02F);
            }
            auto const & normal = call.normals.at<cv::Vec3f>(4, 5);
            EXPECT_EQ(normal[2]<0.0F, offset> 0.0F);
        }
    }
}

TEST(ComputeNormalSlopeAndRms, ClosesHolesWithTheMiddleOfTheirSurroundings)
{
    // In the hole lies a peak that nobody measured; around it, heights of 4 and 6.
    Call call({11, 11});
    for (int row = 0; row < 11; ++row)
    {
        for (int column = 0; column < 11; ++column)
        {
            call.height.at<float>(row, column) = (row + column) % 2 == 0 ? 4.0F : 6.0F;
        }
    }
    call.height.at<float>(5, 5) = 1000.0F;
    call.mask.at<uchar>(5, 5) = 0;
    Call flat = call;
    flat.height = call.height.clone();
    flat.height.at<float>(5, 5) = 5.0F;
    flat.mask = cv::Mat(11, 11, CV_8UC1, cv::Scalar(1));
    ASSERT_TRUE(flat.Compute());
    ASSERT_TRUE(call.Compute());
    EXPECT_TRUE(EqualImages(call.normals, flat.normals));
    EXPECT_EQ(call.rms.at<float>(5, 5), -1.0F);
    EXPECT_EQ(call.slope.at<float>(5, 5), -1.0F);
    call.rms.at<float>(5, 5) = flat.rms.at<float>(5, 5);
    call.slope.at<float>(5, 5) = flat.slope.at<float>(5, 5);
    EXPECT_TRUE(EqualImages(call.rms, flat.rms));
    EXPECT_TRUE(EqualImages(call.slope, flat.slope));
}

TEST(ComputeNormalSlopeAndRms, AgreesWithPlainLoops)
{
    Random random(741);
    for (int const maskType : tests::kDepths)
    {
        for (unsigned const kernelSize : {1U, 2U, 3U, 4U, 5U, 9U, 60U})
        {
            Call call({1 + random.Below(23), 1 + random.Below(19)});
            call.kernelSize = kernelSize;
            call.pixelSize = random.Chance(0.5) ? 0.25F : 0.3F;
            tests::CloudMixture mixture;
            mixture.emptyShare = 0.05;
            call.height = tests::RoughCloud(random, call.height.size(), CV_32FC1, mixture).z;
            tests::RandomMask(random, call.height.size(), random.Chance(0.5) ? 0.8 : 0.3)
                .convertTo(call.mask, maskType);
            if (random.Chance(0.3)) call.normals = cv::Mat(call.height.size(), CV_32FC3, cv::Scalar(0.0, 0.0, 1.0));
            if (random.Chance(0.5)) call.rms = cv::Mat(call.height.size(), CV_32FC1, cv::Scalar(1.0));
            if (call.rms.empty()) call.normals = cv::Mat();
            ASSERT_NO_FATAL_FAILURE(ExpectOracle(call)) << kernelSize << ", " << call.height.size();
        }
    }
}

} // namespace

} // namespace morvane::features
