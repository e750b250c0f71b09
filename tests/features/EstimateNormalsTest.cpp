// Normals from a depth image alone, against plain loops and OpenCV's morphology.
#include <morvane/features/Normals.h>

#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <cfloat>
#include <cmath>
#include <string>

namespace morvane::features
{

namespace
{

using tests::EqualImages;
using tests::FramedImage;
using tests::Random;
using tests::Snapshot;

/// How an image was seen.
struct View
{
    float focalLength = 1.0F;
    cv::Point principalPoint;
    int step = 1;
    bool perspective = false;
};

/// Closings and openings by squares of 3, then 5 pixels.
void SmoothByOpenCv(cv::Mat & image)
{
    for (int const side : {3, 5})
    {
        cv::Mat const element = cv::getStructuringElement(cv::MORPH_RECT, {side, side}, {-1, -1});
        for (int const operation : {cv::MORPH_CLOSE, cv::MORPH_OPEN})
        {
            cv::Mat result;
            cv::morphologyEx(
                image, result, operation, element, {-1, -1}, 1, cv::BORDER_CONSTANT, cv::Scalar::all(DBL_MAX));
            image = result;
        }
    }
}

cv::Mat OracleEstimate(cv::Mat const & depth, View const & view)
{
    cv::Mat normals(depth.size(), CV_64FC3, cv::Scalar::all(0.0));
    cv::Mat t1x(depth.size(), CV_32FC1, cv::Scalar(0.0));
    cv::Mat t1y = t1x.clone();
    cv::Mat t2x = t1x.clone();
    cv::Mat t2y = t1x.clone();
    cv::Mat dzx = t1x.clone();
    cv::Mat dzy = t1x.clone();
    float const f = view.focalLength;
    for (int y = 0; y < depth.rows - view.step; ++y)
    {
        for (int x = 0; x < depth.cols - view.step; ++x)
        {
            float const z = depth.at<float>(y, x);
            float const right = depth.at<float>(y, x + view.step) - z;
            float const down = depth.at<float>(y + view.step, x) - z;
            auto const fromX = static_cast<float>(x - view.principalPoint.x);
            auto const fromY = static_cast<float>(y - view.principalPoint.y);
            dzx.at<float>(y, x) = right;
            dzy.at<float>(y, x) = down;
            t1x.at<float>(y, x) = view.perspective ? (fromX * right + z) / f : z / f;
            t1y.at<float>(y, x) = view.perspective ? fromY * right / f : 0.0F;
            t2y.at<float>(y, x) = view.perspective ? (fromY * down + z) / f : z / f;
            t2x.at<float>(y, x) = view.perspective ? fromX * down / f : 0.0F;
        }
    }
    for (cv::Mat * const image : {&t1x, &t1y, &t2x, &t2y})
    {
        SmoothByOpenCv(*image);
    }
    for (int y = 0; y < depth.rows - view.step; ++y)
    {
        for (int x = 0; x < depth.cols - view.step; ++x)
        {
            cv::Vec3d const one(t1x.at<float>(y, x), t1y.at<float>(y, x), dzx.at<float>(y, x));
            cv::Vec3d const other(t2x.at<float>(y, x), t2y.at<float>(y, x), dzy.at<float>(y, x));
            cv::Vec3d const normal = one.cross(other);
            double const length = std::sqrt(normal[0] * normal[0] + normal[1] * normal[1] + normal[2] * normal[2]);
            if (!(length > 1e-10)) continue;
            normals.at<cv::Vec3d>(y, x) = {normal[0] / length, normal[1] / length, normal[2] / length};
        }
    }
    return normals;
}

[[nodiscard]] bool Estimate(cv::Mat const & depth, cv::Mat & normals, View const & view)
{
    return EstimateNormals(depth, normals, view.focalLength, view.principalPoint, view.step, view.perspective);
}

/// Expects the same number everywhere: bit for bit, or NaN in both.
void ExpectSame(cv::Mat const & actual, cv::Mat const & expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    ASSERT_EQ(actual.type(), expected.type());
    for (int y = 0; y < actual.rows; ++y)
    {
        for (int x = 0; x < 3 * actual.cols; ++x)
        {
            double const is = actual.ptr<double>(y)[x];
            double const wanted = expected.ptr<double>(y)[x];
            ASSERT_TRUE(is == wanted || (std::isnan(is) && std::isnan(wanted))) << is << " instead of " << wanted;
        }
    }
}

TEST(EstimateNormals, RefusesOtherDepthsWithNormalsUntouched)
{
    struct Case
    {
        std::string name;
        cv::Mat depth;
        int step;
    };
    for (Case const & refused :
         {Case{"two channels", cv::Mat(9, 9, CV_32FC2, cv::Scalar::all(1.0)), 1},
          Case{"three channels", cv::Mat(9, 9, CV_32FC3, cv::Scalar::all(1.0)), 1},
          Case{"doubles", cv::Mat(9, 9, CV_64FC1, cv::Scalar(1.0)), 1},
          Case{"bytes", cv::Mat(9, 9, CV_8UC1, cv::Scalar(1.0)), 1},
          Case{"negative step", cv::Mat(9, 9, CV_32FC1, cv::Scalar(1.0)), -1}})
    {
        cv::Mat normals(3, 4, CV_64FC3, cv::Scalar::all(2.0));
        Snapshot const before(normals);
        EXPECT_FALSE(EstimateNormals(refused.depth, normals, 1.0F, {}, refused.step, false)) << refused.name;
        EXPECT_TRUE(before.IsUntouched()) << refused.name;
    }
}

TEST(EstimateNormals, OfSmallImages_AnswersFalseWithNormalsOfZero)
{
    for (cv::Size const size : {cv::Size(4, 9), cv::Size(9, 4), cv::Size(1, 1)})
    {
        cv::Mat normals(3, 4, CV_8UC1);
        EXPECT_FALSE(EstimateNormals(cv::Mat(size, CV_32FC1, cv::Scalar(2.0)), normals, 1.0F, {}, 1, false));
        EXPECT_TRUE(EqualImages(normals, cv::Mat::zeros(size, CV_64FC3)));
    }
    cv::Mat normals;
    EXPECT_TRUE(EstimateNormals(cv::Mat(5, 5, CV_32FC1, cv::Scalar(2.0)), normals, 1.0F, {}, 1, false));
}

TEST(EstimateNormals, OfConstantDepth_PointsAlongTheView)
{
    for (bool const perspective : {false, true})
    {
        for (int const step : {1, 2, 5, 20})
        {
            cv::Mat normals(2, 2, CV_64FC3, cv::Scalar::all(9.0));
            ASSERT_TRUE(
                EstimateNormals(cv::Mat(11, 13, CV_32FC1, cv::Scalar(4.0)), normals, 2.0F, {6, 5}, step, perspective));
            cv::Mat expected = cv::Mat::zeros(11, 13, CV_64FC3);
            if (step < 11) expected(cv::Rect(0, 0, 13 - step, 11 - step)).setTo(cv::Scalar(0.0, 0.0, 1.0));
            EXPECT_EQ(cv::norm(normals, expected, cv::NORM_INF), 0.0) << step;
        }
    }
}

TEST(EstimateNormals, OfNoDepth_GivesNone)
{
    cv::Mat normals;
    ASSERT_TRUE(EstimateNormals(cv::Mat::zeros(9, 9, CV_32FC1), normals, 1.0F, {4, 4}, 1, true));
    EXPECT_EQ(cv::norm(normals, cv::NORM_INF), 0.0);
    // Tangents of 1e-6 have a product of 1e-12.
    ASSERT_TRUE(EstimateNormals(cv::Mat(9, 9, CV_32FC1, cv::Scalar(1e-6)), normals, 1.0F, {4, 4}, 1, false));
    EXPECT_EQ(cv::norm(normals, cv::NORM_INF), 0.0);
    ASSERT_TRUE(EstimateNormals(cv::Mat(9, 9, CV_32FC1, cv::Scalar(2e-5)), normals, 1.0F, {4, 4}, 1, false));
    EXPECT_EQ(normals.at<cv::Vec3d>(4, 4), cv::Vec3d(0.0, 0.0, 1.0));
}

TEST(EstimateNormals, WithAStepOfZero_LooksAtAllPixels)
{
    cv::Mat normals;
    ASSERT_TRUE(EstimateNormals(cv::Mat(7, 7, CV_32FC1, cv::Scalar(3.0)), normals, 1.0F, {}, 0, false));
    EXPECT_EQ(cv::norm(normals, cv::Mat(7, 7, CV_64FC3, cv::Scalar(0.0, 0.0, 1.0)), cv::NORM_INF), 0.0);
}

TEST(EstimateNormals, AgreesWithPlainLoopsBitForBit)
{
    Random random(750);
    double sum = 0.0;
    for (int i = 0; i < 60; ++i)
    {
        cv::Size const size(5 + random.Below(20), 5 + random.Below(20));
        cv::Mat depth(size, CV_32FC1);
        for (int y = 0; y < size.height; ++y)
        {
            for (int x = 0; x < size.width; ++x)
            {
                bool const isEmpty = random.Chance(0.1);
                depth.at<float>(y, x) = isEmpty ? 0.0F : static_cast<float>(3.0 + 0.1 * x + random.Unit());
            }
        }
        View const view{
            0.5F + static_cast<float>(random.Unit()),
            {random.Below(20) - 3, random.Below(20) - 3},
            random.Below(4),
            random.Chance(0.7)};
        FramedImage framed(depth);
        cv::Mat normals;
        ASSERT_TRUE(Estimate(framed.View(), normals, view));
        cv::Mat const expected = OracleEstimate(depth, view);
        sum += cv::norm(expected, cv::NORM_L1);
        ASSERT_NO_FATAL_FAILURE(ExpectSame(normals, expected)) << size;
        ASSERT_TRUE(EqualImages(framed.View(), depth));
    }
    // The opening may leave nothing of small images.
    EXPECT_GT(sum, 3000.0);
}

TEST(EstimateNormals, WithoutFocalLength_DividesByZeroAllTheSame)
{
    cv::Mat const depth(9, 9, CV_32FC1, cv::Scalar(2.0));
    View const view{0.0F, {4, 4}, 1, false};
    cv::Mat normals;
    ASSERT_TRUE(Estimate(depth, normals, view));
    // Tangents are infinite, and the length of their product is NaN, which is not above any limit.
    EXPECT_EQ(normals.at<cv::Vec3d>(4, 4), cv::Vec3d());
    ExpectSame(normals, OracleEstimate(depth, view));
}

TEST(EstimateNormals, MayReplaceItsInput)
{
    Random random(751);
    cv::Mat depth(9, 11, CV_32FC1);
    for (int i = 0; i < 99; ++i)
    {
        depth.ptr<float>()[i] = static_cast<float>(2.0 + random.Unit());
    }
    View const view{1.5F, {4, 4}, 1, true};
    cv::Mat const expected = OracleEstimate(depth, view);
    ASSERT_TRUE(Estimate(depth, depth, view));
    ExpectSame(depth, expected);
}

} // namespace

} // namespace morvane::features
