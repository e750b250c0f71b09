#include "scansim/Scan.h"
#include "scansim/TopView.h"

#include <gtest/gtest.h>
#include <opencv2/core/utility.hpp>

#include <cmath>
#include <cstring>

namespace
{

using namespace scansim;

ScanSettings Small()
{
    ScanSettings settings;
    settings.size = {256, 128};
    return settings;
}

bool SameBytes(cv::Mat const & one, cv::Mat const & other)
{
    return one.size() == other.size() && one.type() == other.type() &&
           std::memcmp(one.data, other.data, one.total() * one.elemSize()) == 0;
}

bool SameScan(Scan const & one, Scan const & other)
{
    return SameBytes(one.intensity, other.intensity) && SameBytes(one.colour, other.colour) &&
           SameBytes(one.depth, other.depth) && SameBytes(one.x, other.x) && SameBytes(one.y, other.y) &&
           SameBytes(one.z, other.z);
}

Scene OneSolid(Solid const & solid)
{
    Scene scene;
    scene.solids.push_back(solid);
    return scene;
}

Material const kGrey{cv::Vec3b(128, 128, 128), 0.5};

TEST(ScanSim, ThreadCount_DoesNotChangeAByte)
{
    int const threads = cv::getNumThreads();
    cv::setNumThreads(1);
    Scan const one = Simulate(MakeRoom(), RoomStation(0), Small());
    for (int const count : {2, 3, 7, 16})
    {
        cv::setNumThreads(count);
        EXPECT_TRUE(SameScan(Simulate(MakeRoom(), RoomStation(0), Small()), one)) << count << " threads";
    }
    cv::setNumThreads(threads);
}

TEST(ScanSim, Seed_ChangesTheNoise)
{
    ScanSettings settings = Small();
    Scan const one = Simulate(MakeYard(), YardStation(0), settings);
    settings.seed = 2;
    Scan const other = Simulate(MakeYard(), YardStation(0), settings);
    EXPECT_FALSE(SameBytes(one.depth, other.depth));
}

TEST(ScanSim, Empties_AreTheSamePixelsInAllImages)
{
    for (Scan const & scan :
         {Simulate(MakeYard(), YardStation(0), Small()), Simulate(MakeRoom(), RoomStation(1), Small())})
    {
        for (int y = 0; y < scan.depth.rows; ++y)
        {
            for (int x = 0; x < scan.depth.cols; ++x)
            {
                bool const isEmpty = scan.depth.at<float>(y, x) == 0.0F;
                ASSERT_EQ(scan.intensity.at<ushort>(y, x) == 0, isEmpty) << x << ", " << y;
                ASSERT_EQ(scan.colour.at<cv::Vec3b>(y, x) == cv::Vec3b(0, 0, 0), isEmpty) << x << ", " << y;
                ASSERT_EQ(scan.z.at<float>(y, x) == 0.0F, isEmpty) << x << ", " << y;
                if (!isEmpty) continue;
                ASSERT_EQ(scan.x.at<float>(y, x), 0.0F);
                ASSERT_EQ(scan.y.at<float>(y, x), 0.0F);
            }
        }
    }
}

TEST(ScanSim, EmptyShare_IsTheSkyOfTheYardAndTheOpeningsOfTheRoom)
{
    auto const share = [](Scan const & scan) {
        return 1.0 - cv::countNonZero(scan.depth) / static_cast<double>(scan.depth.total());
    };
    double const yard = share(Simulate(MakeYard(), YardStation(0), Small()));
    EXPECT_GT(yard, 0.40);
    EXPECT_LT(yard, 0.55);
    double const room = share(Simulate(MakeRoom(), RoomStation(0), Small()));
    EXPECT_GT(room, 0.005);
    EXPECT_LT(room, 0.08);
}

TEST(ScanSim, Ball_IsMetAtItsSurfaceWithoutNoise)
{
    Station const station{cv::Vec3d(1.0, -2.0, 101.0), 0.7};
    ScanSettings const settings = WithoutNoise(Small());
    Ball const ball{cv::Vec3d(4.0, 1.0, 102.0), 1.5};
    Scan const scan = Simulate(OneSolid({ball, kGrey}), station, settings);
    int hits = 0;
    for (int y = 0; y < scan.depth.rows; ++y)
    {
        for (int x = 0; x < scan.depth.cols; ++x)
        {
            cv::Vec3d const direction = RayDirection(station, settings, y, x);
            double const along = (ball.centre - station.position).dot(direction);
            cv::Vec3d const nearest = station.position + along * direction;
            double const miss = cv::norm(nearest - ball.centre);
            if (along <= 0.0 || miss > ball.radius + 1e-9)
            {
                ASSERT_EQ(scan.depth.at<float>(y, x), 0.0F) << x << ", " << y;
                continue;
            }
            if (miss > ball.radius - 1e-9) continue;
            ++hits;
            double const expected = along - std::sqrt(ball.radius * ball.radius - miss * miss);
            ASSERT_NEAR(scan.depth.at<float>(y, x), expected, 1e-5) << x << ", " << y;
            cv::Vec3d const point(scan.x.at<float>(y, x), scan.y.at<float>(y, x), scan.z.at<float>(y, x));
            ASSERT_NEAR(cv::norm(point - ball.centre), ball.radius, 2e-5) << x << ", " << y;
        }
    }
    EXPECT_GT(hits, 100);
}

TEST(ScanSim, Box_GivesPointsOnItsNearFaces)
{
    Station const station{cv::Vec3d(0.0, 0.0, 100.0), 0.0};
    Box const box{cv::Vec3d(2.0, -1.0, 99.0), cv::Vec3d(3.0, 1.0, 101.0)};
    Scan const scan = Simulate(OneSolid({box, kGrey}), station, WithoutNoise(Small()));
    int hits = 0;
    for (int y = 0; y < scan.depth.rows; ++y)
    {
        for (int x = 0; x < scan.depth.cols; ++x)
        {
            if (scan.depth.at<float>(y, x) == 0.0F) continue;
            ++hits;
            // The face towards the station hides all others.
            ASSERT_NEAR(scan.x.at<float>(y, x), 2.0, 1e-5);
            ASSERT_LE(std::abs(scan.y.at<float>(y, x)), 1.0 + 1e-5);
            ASSERT_LE(std::abs(scan.z.at<float>(y, x) - 100.0), 1.0 + 1e-4);
        }
    }
    EXPECT_GT(hits, 100);
}

TEST(ScanSim, Cylinder_HasItsRadiusAndItsTop)
{
    Station const station{cv::Vec3d(0.0, 0.0, 103.0), 0.0};
    Cylinder const cylinder{cv::Vec3d(3.0, 0.0, 100.0), 0.8, 2.0};
    Scan const scan = Simulate(OneSolid({cylinder, kGrey}), station, WithoutNoise(Small()));
    int side = 0;
    int top = 0;
    for (int y = 0; y < scan.depth.rows; ++y)
    {
        for (int x = 0; x < scan.depth.cols; ++x)
        {
            if (scan.depth.at<float>(y, x) == 0.0F) continue;
            double const distance = std::hypot(scan.x.at<float>(y, x) - 3.0, scan.y.at<float>(y, x));
            bool const isOnTop = std::abs(scan.z.at<float>(y, x) - 102.0) < 1e-4;
            if (isOnTop)
            {
                ++top;
                ASSERT_LE(distance, 0.8 + 1e-4);
            }
            else
            {
                ++side;
                ASSERT_NEAR(distance, 0.8, 1e-4);
            }
        }
    }
    EXPECT_GT(side, 50);
    EXPECT_GT(top, 20);
}

TEST(ScanSim, Seam_GoesOnAtTheOtherBorder)
{
    // In a closed ball around the station, neighbours differ by little, also across the seam.
    Station const station{cv::Vec3d(0.5, 0.0, 100.0), 0.2};
    Scan const scan =
        Simulate(OneSolid({Ball{cv::Vec3d(0.0, 0.0, 100.0), 5.0}, kGrey}), station, WithoutNoise(Small()));
    for (int y = 0; y < scan.depth.rows; ++y)
    {
        float const last = scan.depth.at<float>(y, scan.depth.cols - 1);
        float const first = scan.depth.at<float>(y, 0);
        ASSERT_GT(first, 4.0F);
        ASSERT_NEAR(first, last, 0.02);
    }
}

TEST(ScanSim, Glass_LetsAboutTheGivenShareOfRaysPass)
{
    Station const station{cv::Vec3d(0.0, 0.0, 100.0), 0.0};
    Material const glass{cv::Vec3b(200, 200, 200), 0.1, true};
    Box const pane{cv::Vec3d(2.0, -3.0, 97.0), cv::Vec3d(2.02, 3.0, 103.0)};
    ScanSettings settings = Small();
    settings.grazingCosine = 0.0;
    int const all = cv::countNonZero(Simulate(OneSolid({pane, kGrey}), station, settings).depth);
    int const kept = cv::countNonZero(Simulate(OneSolid({pane, glass}), station, settings).depth);
    EXPECT_NEAR(kept / static_cast<double>(all), 0.1, 0.02);
}

TEST(ScanSim, RangeNoise_HasTheGivenDeviation)
{
    Station const station{cv::Vec3d(0.0, 0.0, 100.0), 0.0};
    ScanSettings settings = WithoutNoise(Small());
    Scene const scene = OneSolid({Ball{station.position, 5.0}, kGrey});
    cv::Mat const exact = Simulate(scene, station, settings).depth;
    settings.rangeNoise = 0.01;
    cv::Mat const noisy = Simulate(scene, station, settings).depth;
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(noisy - exact, mean, deviation);
    EXPECT_NEAR(mean[0], 0.0, 0.0005);
    EXPECT_NEAR(deviation[0], 0.01, 0.0005);
}

TEST(ScanSim, TopView_HoldsTheHighestPointOfEachCell)
{
    Scan scan;
    scan.z = (cv::Mat_<float>(1, 5) << 101.0F, 103.0F, 102.0F, 0.0F, 107.0F);
    scan.x = (cv::Mat_<float>(1, 5) << 0.5F, 0.6F, 1.5F, 0.0F, 9.0F);
    scan.y = (cv::Mat_<float>(1, 5) << 0.5F, 0.4F, 0.5F, 0.0F, 0.5F);
    scan.intensity = (cv::Mat_<ushort>(1, 5) << 1, 2, 3, 0, 5);
    TopView const view = SeeFromAbove(scan, {{0.0, 0.0}, {2.0, 2.0}, 1.0});
    ASSERT_EQ(view.elevation.size(), cv::Size(2, 2));
    // y grows against the row.
    EXPECT_EQ(view.elevation.at<float>(1, 0), 103.0F);
    EXPECT_EQ(view.intensity.at<ushort>(1, 0), 2);
    EXPECT_EQ(view.elevation.at<float>(1, 1), 102.0F);
    EXPECT_EQ(view.elevation.at<float>(0, 0), 0.0F);
    EXPECT_EQ(SeeFromAbove(scan, {{0.0, 0.0}, {2.0, 2.0}, 1.0}, 102.5).elevation.at<float>(1, 0), 101.0F);
}

} // namespace
