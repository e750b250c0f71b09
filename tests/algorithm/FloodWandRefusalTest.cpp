// What the wands refuse that stand on a flood fill: it throws.
#include <morvane/algorithm/RegionGrowing.h>

#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <utility>

namespace morvane::algorithm
{

namespace
{

using tests::Snapshot;

/// A bound in every channel.
cv::Scalar All(double delta)
{
    return cv::Scalar::all(delta);
}

TEST(FloodWandRefusal, WhatAFloodFillRefuses_Throws)
{
    for (int const type :
         {CV_8SC1, CV_16UC1, CV_16SC1, CV_64FC1, CV_16FC1, CV_8UC2, CV_8UC4, CV_32FC2, CV_32SC4, CV_16UC3})
    {
        SCOPED_TRACE(cv::typeToString(type));
        cv::Mat const image(4, 5, type, cv::Scalar::all(1));
        cv::Mat const good(4, 5, CV_8UC1, cv::Scalar(1));
        Snapshot const before(image);
        cv::Mat out;
        EXPECT_THROW(MagicWand(image, All(1), {0, 0}, out), cv::Exception);
        cv::Mat sized(4, 5, CV_8UC1);
        EXPECT_THROW(MagicWand(image, good, All(1), All(1), {0, 0}, sized), cv::Exception);
        sized.create(4, 5, CV_8UC1);
        EXPECT_THROW(MagicWand(good, image, All(1), All(1), {0, 0}, sized), cv::Exception);
        EXPECT_TRUE(before.IsUntouched());
    }
}

TEST(FloodWandRefusal, SeedOutsideTheImage_Throws)
{
    cv::Mat const image(4, 5, CV_8UC1, cv::Scalar(1));
    int const most = std::numeric_limits<int>::max();
    for (cv::Point const seed :
         {cv::Point(-1, 0), cv::Point(0, -1), cv::Point(5, 0), cv::Point(0, 4), cv::Point(most, most)})
    {
        SCOPED_TRACE(seed);
        cv::Mat out;
        EXPECT_THROW(MagicWand(image, All(1), seed, out), cv::Exception);
        cv::Mat sized(4, 5, CV_8UC1);
        EXPECT_THROW(MagicWand(image, image, All(1), All(1), seed, sized), cv::Exception);
    }
    cv::Mat out;
    EXPECT_THROW(MagicWand(cv::Mat(), All(1), {0, 0}, out), cv::Exception);
    EXPECT_THROW(MagicWand(cv::Mat(), cv::Mat(), All(1), All(1), {0, 0}, out), cv::Exception);
}

TEST(FloodWandRefusal, MoreThanTwoDimensions_Throw)
{
    std::array const sizes{2, 3, 4};
    cv::Mat const solid(3, sizes.data(), CV_8UC1, cv::Scalar(1));
    cv::Mat const flat(3, 4, CV_8UC1, cv::Scalar(1));
    cv::Mat out;
    EXPECT_THROW(MagicWand(solid, All(1), {0, 0}, out), cv::Exception);
    out.create(3, 4, CV_8UC1);
    EXPECT_THROW(MagicWand(solid, flat, All(1), All(1), {0, 0}, out), cv::Exception);
    out.create(3, 4, CV_8UC1);
    EXPECT_THROW(MagicWand(flat, solid, All(1), All(1), {0, 0}, out), cv::Exception);
    out.create(3, sizes.data(), CV_8UC1);
    EXPECT_THROW(MagicWand(flat, flat, All(1), All(1), {0, 0}, out), cv::Exception);
}

TEST(FloodWandRefusal, NegativeDelta_Throws)
{
    cv::Mat const image(4, 5, CV_8UC1, cv::Scalar(1));
    cv::Mat out;
    EXPECT_THROW(MagicWand(image, All(-1), {0, 0}, out), cv::Exception);
    for (auto const & [delta1, delta2] : {std::pair(-1.0, 1.0), std::pair(1.0, -1.0)})
    {
        cv::Mat sized(4, 5, CV_8UC1);
        EXPECT_THROW(MagicWand(image, image, All(delta1), All(delta2), {0, 0}, sized), cv::Exception);
    }
}

TEST(FloodWandRefusal, OutMustHaveTheSizeOfTheFirstImage)
{
    cv::Mat const image(4, 5, CV_8UC1, cv::Scalar(1));
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(4, 5), cv::Size(5, 5), cv::Size(6, 4), cv::Size(7, 6)})
    {
        cv::Mat out(size, CV_8UC1, cv::Scalar(0x5A));
        Snapshot const before(out);
        EXPECT_THROW(MagicWand(image, image, All(1), All(1), {0, 0}, out), cv::Exception) << size;
        EXPECT_TRUE(before.IsUntouched());
    }
    for (int const type : {CV_8UC1, CV_16SC2, CV_64FC4})
    {
        // Its type does not matter.
        cv::Mat out(image.size(), type, cv::Scalar::all(0x5A));
        MagicWand(image, image, All(1), All(1), {0, 0}, out);
        EXPECT_EQ(out.type(), CV_8UC1);
        EXPECT_EQ(out.size(), image.size() + cv::Size(2, 2));
    }
}

TEST(FloodWandRefusal, ImagesOfDifferentSizes_Throw)
{
    cv::Mat const image(4, 5, CV_8UC1, cv::Scalar(1));
    for (cv::Size const size : {cv::Size(4, 5), cv::Size(5, 5), cv::Size(6, 4), cv::Size(0, 0)})
    {
        cv::Mat const other(size, CV_8UC1, cv::Scalar(1));
        cv::Mat out(image.size(), CV_8UC1);
        EXPECT_THROW(MagicWand(image, other, All(1), All(1), {0, 0}, out), cv::Exception) << size;
    }
}

} // namespace

} // namespace morvane::algorithm
