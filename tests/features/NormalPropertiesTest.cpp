// What normals are for: the slope of noisy planes, and what stays when the cloud is turned.
#include <morvane/features/Normals.h>

#include "support/ImageLiterals.h"
#include "support/NormalOracle.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <cmath>

namespace morvane::features
{

namespace
{

using tests::EqualImages;
using tests::PointCloud;
using tests::Random;

constexpr std::array kMethods{WindowMoving, Pyramid, PyramidWindowMoving, PyramidWindowMovingSqrt};
constexpr double kDegrees = 57.29577951308232;

/// The images of one call.
struct Result
{
    cv::Mat3d normals;
    cv::Mat1d rms;
};

Result Compute(PointCloud const & cloud, eNormalComputationMethod method, int halfWidth, bool wrapColumns = false)
{
    Result result;
    EXPECT_TRUE(ComputeMatNormal(
        cloud.depth, cloud.x, cloud.y, cloud.z, result.normals, result.rms, method, halfWidth, wrapColumns));
    return result;
}

/// A plane through (0, 0, 20) with a normal, seen along z, with noise across it.
PointCloud NoisyPlane(Random & random, cv::Size size, cv::Vec3d const & normal, double noise)
{
    PointCloud cloud{
        cv::Mat(size, CV_8UC1, cv::Scalar(1)), cv::Mat(size, CV_64FC1), cv::Mat(size, CV_64FC1),
        cv::Mat(size, CV_64FC1)};
    cv::Point const middle(size.width / 2, size.height / 2);
    for (int row = 0; row < size.height; ++row)
    {
        for (int column = 0; column < size.width; ++column)
        {
            double const x = column - middle.x;
            double const y = row - middle.y;
            double const z = 20.0 - (normal[0] * x + normal[1] * y) / normal[2];
            double const off = noise * (2.0 * random.Unit() - 1.0);
            cloud.x.at<double>(row, column) = x + off * normal[0];
            cloud.y.at<double>(row, column) = y + off * normal[1];
            cloud.z.at<double>(row, column) = z + off * normal[2];
        }
    }
    return cloud;
}

PointCloud Transformed(PointCloud const & cloud, cv::Matx33d const & matrix)
{
    PointCloud result{cloud.depth, cloud.x.clone(), cloud.y.clone(), cloud.z.clone()};
    for (int row = 0; row < cloud.x.rows; ++row)
    {
        for (int column = 0; column < cloud.x.cols; ++column)
        {
            cv::Vec3d const point(
                cloud.x.at<double>(row, column), cloud.y.at<double>(row, column), cloud.z.at<double>(row, column));
            cv::Vec3d const turned = matrix * point;
            result.x.at<double>(row, column) = turned[0];
            result.y.at<double>(row, column) = turned[1];
            result.z.at<double>(row, column) = turned[2];
        }
    }
    return result;
}

TEST(NormalProperties, OfANoisyPlane_AreItsNormalWithinTheNoise)
{
    Random random(770);
    for (eNormalComputationMethod const method : kMethods)
    {
        for (int const degrees : {0, 10, 30, 45, 60, 75})
        {
            double const angle = degrees / kDegrees;
            double const turn = random.Unit() * 6.0;
            cv::Vec3d const across(std::sin(angle) * std::cos(turn), std::sin(angle) * std::sin(turn), std::cos(angle));
            PointCloud const cloud = NoisyPlane(random, {31, 25}, across, 0.1);
            Result const result = Compute(cloud, method, 3);
            for (int row = 6; row < 19; ++row)
            {
                for (int column = 6; column < 25; ++column)
                {
                    if (result.rms(row, column) == 25.0) continue;
                    double const cosine = std::abs(result.normals(row, column).dot(across));
                    ASSERT_LE(std::acos(std::min(cosine, 1.0)) * kDegrees, 8.0) << method << ", " << degrees;
                    // Uniform noise of 0.1 has a deviation of 0.058.
                    ASSERT_LE(result.rms(row, column), 0.1);
                }
            }
            int const planes = cv::countNonZero(result.rms(cv::Rect(6, 6, 19, 13)) != 25.0);
            // The integral search keeps silent where its first window is its best.
            EXPECT_GT(planes, method == Pyramid ? 200 : 245) << method << ", " << degrees;
            // On average noise cancels.
            cv::Vec3d sum;
            for (cv::Vec3d const & normal : cv::Mat3d(result.normals(cv::Rect(6, 6, 19, 13)).clone()))
            {
                sum += normal;
            }
            double const cosine = std::abs(cv::normalize(sum).dot(across));
            EXPECT_LE(std::acos(std::min(cosine, 1.0)) * kDegrees, 1.0) << method << ", " << degrees;
        }
    }
}

TEST(NormalProperties, TurnWithTheCloud)
{
    Random random(771);
    cv::Matx33d const aboutZ(0.6, -0.8, 0.0, 0.8, 0.6, 0.0, 0.0, 0.0, 1.0);
    cv::Matx33d const aboutX(1.0, 0.0, 0.0, 0.0, 0.28, -0.96, 0.0, 0.96, 0.28);
    cv::Matx33d const cyclic(0.0, 0.0, 1.0, 1.0, 0.0, 0.0, 0.0, 1.0, 0.0);
    cv::Matx33d const mirror(-1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0);
    for (eNormalComputationMethod const method : kMethods)
    {
        PointCloud const cloud = NoisyPlane(random, {23, 19}, {0.3, 0.2, 0.93}, 0.2);
        Result const result = Compute(cloud, method, 3, true);
        EXPECT_GT(cv::countNonZero(result.rms != 25.0), 300);
        for (cv::Matx33d const & turn : {aboutZ, aboutX, cyclic, mirror, aboutX * aboutZ, cyclic * aboutX * mirror})
        {
            Result const turned = Compute(Transformed(cloud, turn), method, 3, true);
            for (int row = 0; row < 19; ++row)
            {
                for (int column = 0; column < 23; ++column)
                {
                    cv::Vec3d const expected = turn * result.normals(row, column);
                    ASSERT_LE(cv::norm(turned.normals(row, column) - expected), 1e-6) << method;
                    ASSERT_NEAR(turned.rms(row, column), result.rms(row, column), 1e-9) << method;
                }
            }
        }
    }
}

TEST(NormalProperties, OfACircularScan_TurnWithItsColumns)
{
    Random random(772);
    PointCloud cloud = tests::RoughCloud(random, {29, 17}, CV_64FC1);
    auto const rolled = [](cv::Mat const & image) {
        cv::Mat result;
        cv::hconcat(image.colRange(11, image.cols), image.colRange(0, 11), result);
        return result;
    };
    PointCloud const other{rolled(cloud.depth), rolled(cloud.x), rolled(cloud.y), rolled(cloud.z)};
    for (eNormalComputationMethod const method : {WindowMoving, PyramidWindowMoving, PyramidWindowMovingSqrt})
    {
        for (int const halfWidth : {1, 2, 5})
        {
            // Coordinates are such that no sum rounds.
            Result const result = Compute(cloud, method, halfWidth, true);
            Result const turned = Compute(other, method, halfWidth, true);
            EXPECT_TRUE(EqualImages(turned.rms, rolled(result.rms))) << method;
            EXPECT_TRUE(EqualImages(turned.normals, rolled(result.normals))) << method;
        }
    }
}

TEST(NormalProperties, OfASphereAroundTheScanner_PointToItsCentre)
{
    Random random(773);
    cv::Size const size(72, 30);
    PointCloud cloud{
        cv::Mat(size, CV_32FC1, cv::Scalar(1.0)), cv::Mat(size, CV_64FC1), cv::Mat(size, CV_64FC1),
        cv::Mat(size, CV_64FC1)};
    for (int row = 0; row < size.height; ++row)
    {
        for (int column = 0; column < size.width; ++column)
        {
            double const around = column * 5 / kDegrees;
            double const up = (row - 15) * 4 / kDegrees;
            double const radius = 30.0 + 0.1 * random.Unit();
            cloud.x.at<double>(row, column) = radius * std::cos(up) * std::cos(around);
            cloud.y.at<double>(row, column) = radius * std::cos(up) * std::sin(around);
            cloud.z.at<double>(row, column) = radius * std::sin(up);
        }
    }
    for (eNormalComputationMethod const method : {WindowMoving, PyramidWindowMoving, PyramidWindowMovingSqrt})
    {
        Result const result = Compute(cloud, method, 2, true);
        for (int row = 3; row < 27; ++row)
        {
            for (int column = 0; column < 72; ++column)
            {
                cv::Vec3d const point(
                    cloud.x.at<double>(row, column), cloud.y.at<double>(row, column), cloud.z.at<double>(row, column));
                ASSERT_LE(result.normals(row, column).dot(cv::normalize(point)), -0.99) << method;
            }
        }
    }
}

} // namespace

} // namespace morvane::features
