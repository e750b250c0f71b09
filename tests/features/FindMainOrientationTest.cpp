// The main axis of images.
#include <morvane/features/Normals.h>

#include "support/ImageLiterals.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cmath>

namespace morvane::features
{

namespace
{

using tests::Draw;
using tests::Drawing;
using tests::Random;

void ExpectDirection(cv::Mat const & image, cv::Point2d const & expected)
{
    cv::Point2d direction(7.0, 8.0);
    ASSERT_TRUE(FindMainOrientation(image, direction));
    EXPECT_NEAR(direction.x, expected.x, 1e-9);
    EXPECT_NEAR(direction.y, expected.y, 1e-9);
}

/// In all types that have moments.
void ExpectDirectionOf(Drawing const & drawing, cv::Point2d const & expected)
{
    for (int const type : {CV_8UC1, CV_16UC1, CV_16SC1, CV_32FC1, CV_64FC1})
    {
        ASSERT_NO_FATAL_FAILURE(ExpectDirection(Draw(drawing, type), expected)) << cv::typeToString(type);
    }
}

TEST(FindMainOrientation, OfLines_RunsAlongThem)
{
    double const half = std::sqrt(0.5);
    ExpectDirectionOf({".....", ".777.", "....."}, {1.0, 0.0});
    ExpectDirectionOf({".7...", ".7...", ".7..."}, {0.0, 1.0});
    ExpectDirectionOf({"5...", ".5..", "..5."}, {half, half});
    ExpectDirectionOf({"..5.", ".5..", "5..."}, {half, -half});
    ExpectDirectionOf({"11111111", "11111111", "11111111"}, {1.0, 0.0});
}

TEST(FindMainOrientation, WeighsPixelsByTheirValue)
{
    // The axis of the heavy pixels wins over that of the light ones.
    ExpectDirectionOf({"..1..", "..1..", "99999", "..1..", "..1.."}, {1.0, 0.0});
    ExpectDirectionOf({"..9..", "..9..", "11911", "..9..", "..9.."}, {0.0, 1.0});
}

TEST(FindMainOrientation, OfAPixel_IsHorizontal)
{
    ExpectDirectionOf({"...", ".3.", "..."}, {1.0, 0.0});
    ExpectDirectionOf({"333", "333", "333"}, {1.0, 0.0});
}

TEST(FindMainOrientation, WithoutMass_IsNaN)
{
    cv::Point2d direction(7.0, 8.0);
    ASSERT_TRUE(FindMainOrientation(cv::Mat::zeros(3, 4, CV_8UC1), direction));
    EXPECT_TRUE(std::isnan(direction.x));
    EXPECT_TRUE(std::isnan(direction.y));
}

TEST(FindMainOrientation, RefusesEmptyImagesWithTheDirectionUntouched)
{
    for (cv::Mat const & image : {cv::Mat(), cv::Mat(0, 5, CV_8UC1), cv::Mat(5, 0, CV_32FC1)})
    {
        cv::Point2d direction(7.0, 8.0);
        EXPECT_FALSE(FindMainOrientation(image, direction));
        EXPECT_EQ(direction, cv::Point2d(7.0, 8.0));
    }
}

/// By sums over the pixels.
cv::Point2d OracleDirection(cv::Mat1d const & image)
{
    double mass = 0.0;
    cv::Vec2d sums;
    cv::Vec3d products;
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            mass += image(y, x);
            sums += image(y, x) * cv::Vec2d(x, y);
            products += image(y, x) * cv::Vec3d(x * x, x * y, y * y);
        }
    }
    double const xx = products[0] / mass - sums[0] / mass * (sums[0] / mass);
    double const xy = products[1] / mass - sums[0] / mass * (sums[1] / mass);
    double const yy = products[2] / mass - sums[1] / mass * (sums[1] / mass);
    double const angle = 0.5 * std::atan2(2.0 * xy, xx - yy);
    return {std::cos(angle), std::sin(angle)};
}

TEST(FindMainOrientation, AgreesWithSumsOverThePixels)
{
    Random random(760);
    for (int i = 0; i < 50; ++i)
    {
        cv::Mat1d image(2 + random.Below(20), 2 + random.Below(20));
        for (double & value : image)
        {
            value = random.Below(256);
        }
        image(0, 0) = 1.0;
        ExpectDirection(image, OracleDirection(image));
        cv::Mat bytes;
        image.convertTo(bytes, CV_8U);
        ExpectDirection(bytes, OracleDirection(image));
    }
}

} // namespace

} // namespace morvane::features
