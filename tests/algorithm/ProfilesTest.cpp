// The profiles of an image: sums of rows and of columns.
#include <morvane/algorithm/ImageUtilities.h>

#include "support/AllTypes.h"
#include "support/AnyNumbers.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Rows.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::Draw;
using tests::Random;
using tests::Row;

using Sums = std::vector<float>;
using Operator = bool (*)(cv::Mat const & image, Sums & sums, bool normalize);

constexpr std::array<Operator, 2> kOperators{AccumulateColumns, AccumulateRows};
constexpr std::array kSummedDepths{CV_8U, CV_16U, CV_16S, CV_32S, CV_32F};

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

TEST(AccumulateColumns, SumsEachRow)
{
    for (int const depth : kSummedDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        Sums sums;
        EXPECT_TRUE(AccumulateColumns(Draw({"123", "4.6"}, depth), sums, false));
        EXPECT_EQ(sums, Sums({6, 10}));
    }
}

TEST(AccumulateRows, SumsEachColumn)
{
    for (int const depth : kSummedDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        Sums sums;
        EXPECT_TRUE(AccumulateRows(Draw({"123", "4.6"}, depth), sums, false));
        EXPECT_EQ(sums, Sums({5, 2, 9}));
    }
}

TEST(Profiles, AddToWhatIsThere)
{
    Sums sums{100, 200, 300};
    EXPECT_TRUE(AccumulateRows(Draw<uchar>({"123", "4.6"}), sums, false));
    EXPECT_EQ(sums, Sums({105, 202, 309}));
    // More than there are rows: they go.
    EXPECT_TRUE(AccumulateColumns(Draw<uchar>({"123", "4.6"}), sums, false));
    EXPECT_EQ(sums, Sums({111, 212}));
    // Fewer than there are columns: others start at 0.
    EXPECT_TRUE(AccumulateRows(Draw<uchar>({"123", "4.6"}), sums, false));
    EXPECT_EQ(sums, Sums({116, 214, 9}));
}

TEST(Profiles, Normalized_AreMultipliedByTheReciprocalOfTheLargest)
{
    Sums sums;
    EXPECT_TRUE(AccumulateColumns(Draw<uchar>({"123", "4.6"}), sums, true));
    EXPECT_EQ(sums, Sums({6.0F * 0.1F, 10.0F * 0.1F}));
    sums.clear();
    EXPECT_TRUE(AccumulateRows(Draw<uchar>({"123", "4.6"}), sums, true));
    float const ninth = 1.0F / 9.0F;
    EXPECT_EQ(sums, Sums({5 * ninth, 2 * ninth, 9 * ninth}));
    // Not divided by it: 41 times the rounded reciprocal of 41 is a little less than 1.
    sums.clear();
    EXPECT_TRUE(AccumulateRows(Row<int>({41}), sums, true));
    EXPECT_EQ(sums, Sums({std::nextafter(1.0F, 0.0F)}));
}

TEST(Profiles, Normalized_GoByTheLargestSumOnTheWay)
{
    for (Operator const accumulate : kOperators)
    {
        // Row and column alike: 5, then 5 - 3.
        cv::Mat const image = accumulate == kOperators[0] ? cv::Mat(Row<short>({5, -3})) : Row<short>({5, -3}).t();
        Sums sums;
        EXPECT_TRUE(accumulate(image, sums, true));
        EXPECT_EQ(sums, Sums({2 * (1.0F / 5.0F)}));
        // 5 counts in a row that ends at 2 also for the others.
        sums = {0, 1};
        cv::Mat two(2, 2, CV_16SC1, cv::Scalar(0));
        two.at<short>(0, 0) = 5;
        (accumulate == kOperators[0] ? two.at<short>(0, 1) : two.at<short>(1, 0)) = -3;
        EXPECT_TRUE(accumulate(two, sums, true));
        EXPECT_EQ(sums, Sums({2 * (1.0F / 5.0F), 1.0F / 5.0F}));
    }
}

TEST(Profiles, WhatWasThereIsNoSumOnTheWay)
{
    for (Operator const accumulate : kOperators)
    {
        Sums sums{10};
        EXPECT_TRUE(accumulate(Row<short>({-6}), sums, true));
        EXPECT_EQ(sums, Sums({1}));
        // The way ends at 0.
        sums = {10};
        EXPECT_FALSE(accumulate(Row<short>({-10}), sums, true));
        EXPECT_EQ(sums, Sums({0}));
    }
}

TEST(Profiles, OfAnImageOfZeros_AreZerosAndFalse)
{
    for (int const depth : kSummedDepths)
    {
        for (bool const normalize : {false, true})
        {
            cv::Mat const zeros = cv::Mat::zeros(2, 3, depth);
            Sums sums;
            EXPECT_FALSE(AccumulateColumns(zeros, sums, normalize));
            EXPECT_EQ(sums, Sums({0, 0}));
            EXPECT_FALSE(AccumulateRows(zeros, sums, normalize));
            EXPECT_EQ(sums, Sums({0, 0, 0}));
        }
    }
}

TEST(Profiles, WhoseLargestIs0_StayAsTheyWereAdded)
{
    Sums sums{0, 3};
    EXPECT_FALSE(AccumulateColumns((cv::Mat_<short>(2, 2) << 0, -4, -5, -6), sums, true));
    EXPECT_EQ(sums, Sums({-4, -8}));
    sums = {0, 3};
    EXPECT_FALSE(AccumulateRows((cv::Mat_<short>(2, 2) << 0, -5, -4, -6), sums, true));
    EXPECT_EQ(sums, Sums({-4, -8}));
}

TEST(Profiles, OfNegativeSums_GoByTheOneNextTo0)
{
    for (Operator const accumulate : kOperators)
    {
        Sums sums;
        EXPECT_TRUE(accumulate(Row<short>({-4}), sums, true));
        EXPECT_EQ(sums, Sums({1}));
    }
    Sums sums;
    EXPECT_TRUE(AccumulateColumns((cv::Mat_<float>(2, 2) << -4, -4, -2, -4), sums, true));
    EXPECT_EQ(sums, Sums({4, 3}));
    sums.clear();
    EXPECT_TRUE(AccumulateRows((cv::Mat_<float>(2, 2) << -4, -2, -4, -4), sums, true));
    EXPECT_EQ(sums, Sums({4, 3}));
}

TEST(Profiles, WithoutPixels_AreFalseAndHaveTheirLength)
{
    for (bool const normalize : {false, true})
    {
        Sums sums{7, 8};
        EXPECT_FALSE(AccumulateRows(cv::Mat(0, 5, CV_8UC1), sums, normalize));
        EXPECT_EQ(sums, Sums({7, 8, 0, 0, 0}));
        EXPECT_FALSE(AccumulateColumns(cv::Mat(3, 0, CV_8UC1), sums, normalize));
        EXPECT_EQ(sums, Sums({7, 8, 0}));
        EXPECT_FALSE(AccumulateRows(cv::Mat(5, 0, CV_8UC1), sums, normalize));
        EXPECT_TRUE(sums.empty());
        sums = {7, 8};
        EXPECT_FALSE(AccumulateColumns(cv::Mat(), sums, normalize));
        EXPECT_TRUE(sums.empty());
    }
}

TEST(Profiles, GoOnWithNaN)
{
    for (bool const normalize : {false, true})
    {
        Sums sums;
        EXPECT_TRUE(AccumulateColumns((cv::Mat_<float>(2, 2) << 4, 4, kNaN, 2), sums, normalize));
        EXPECT_EQ(sums[0], normalize ? 1.0F : 8.0F);
        EXPECT_TRUE(std::isnan(sums[1]));
        sums.clear();
        EXPECT_TRUE(AccumulateRows((cv::Mat_<float>(2, 2) << 4, 4, kNaN, 2), sums, normalize));
        EXPECT_TRUE(std::isnan(sums[0]));
        EXPECT_EQ(sums[1], normalize ? 1.0F : 6.0F);
        for (Operator const accumulate : kOperators)
        {
            sums.clear();
            EXPECT_TRUE(accumulate(Row<float>({kNaN}), sums, normalize));
            EXPECT_TRUE(std::isnan(sums[0]));
        }
    }
    // It is not larger than a 0 before it.
    Sums sums;
    EXPECT_FALSE(AccumulateColumns(Row<float>({0.0F, kNaN}), sums, true));
    EXPECT_TRUE(std::isnan(sums[0]));
}

TEST(Profiles, SumInSinglePrecisionInTheOrderOfThePixels)
{
    Sums sums;
    EXPECT_TRUE(AccumulateColumns(Row<int>({16777216, 1, 1}), sums, false));
    EXPECT_EQ(sums, Sums({16777216.0F}));
    sums.clear();
    EXPECT_TRUE(AccumulateColumns(Row<int>({1, 1, 16777216}), sums, false));
    EXPECT_EQ(sums, Sums({16777218.0F}));
    // Each pixel is rounded by itself.
    sums.clear();
    EXPECT_TRUE(AccumulateRows(Row<int>({16777217, std::numeric_limits<int>::max()}), sums, false));
    EXPECT_EQ(sums, Sums({16777216.0F, 2147483648.0F}));
}

TEST(ProfilesRefusal, LeavesTheSums)
{
    Sums const before{7, 8, 9};
    for (Operator const accumulate : kOperators)
    {
        auto const expectRefused = [&](cv::Mat const & image) {
            Sums sums = before;
            EXPECT_FALSE(accumulate(image, sums, true));
            EXPECT_EQ(sums, before);
        };
        for (int const depth : {CV_64F, CV_8S, CV_16F})
        {
            SCOPED_TRACE(cv::depthToString(depth));
            cv::Mat image(2, 2, depth);
            tests::FillBytes(image, 3);
            expectRefused(image);
            expectRefused(cv::Mat(0, 0, depth));
        }
        for (int const depth : tests::kDepths)
        {
            SCOPED_TRACE(cv::depthToString(depth));
            for (int const channels : {2, 3, 4, 5})
            {
                expectRefused(Draw({"11", "11"}, CV_MAKETYPE(depth, channels)));
            }
            expectRefused(cv::Mat(std::vector<int>{2, 2, 2}, depth, cv::Scalar(1)));
        }
    }
}

/// Both profiles without tricks, and the largest sum on the way.
struct Profile
{
    Sums sums;
    float largest = 0.0F;
};

Profile Accumulated(cv::Mat const & image, bool rows, Sums sums)
{
    sums.resize(static_cast<std::size_t>(rows ? image.cols : image.rows));
    Profile profile{std::move(sums), -HUGE_VALF};
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            float & sum = profile.sums[static_cast<std::size_t>(rows ? x : y)];
            sum += static_cast<float>(tests::ElementAt(image, y, x));
            profile.largest = std::max(profile.largest, sum);
        }
    }
    return profile;
}

TEST(ProfilesRandom, AgreeWithThePlainForm)
{
    Random random(8441);
    for (int const depth : kSummedDepths)
    {
        for (int repeat = 0; repeat < 80; ++repeat)
        {
            cv::Size const size = tests::RandomSize(random);
            cv::Mat image = repeat % 2 == 0 ? tests::AnyNumbers(random, size, depth)
                                            : tests::RandomImage(random, size, depth, {0.3, 0.1, 9});
            // Not so large that sums become NaN.
            if (depth == CV_32F && !image.empty()) image.setTo(5, ~((image < 1e30F) & (image > -1e30F)));
            tests::FramedImage framed(image);
            for (bool const rows : {false, true})
            {
                SCOPED_TRACE(tests::Case(depth, size, rows ? 1 : 0));
                Sums const before(static_cast<std::size_t>(random.Below(60)), 2.5F);
                Profile const expected = Accumulated(image, rows, before);
                bool const isDone = !size.empty() && expected.largest != 0.0F;
                Sums sums = before;
                ASSERT_EQ(kOperators[rows ? 1 : 0](framed.View(), sums, false), isDone);
                ASSERT_EQ(sums, expected.sums);
                sums = before;
                ASSERT_EQ(kOperators[rows ? 1 : 0](framed.View(), sums, true), isDone);
                ASSERT_EQ(sums.size(), expected.sums.size());
                float const scale = isDone ? 1.0F / expected.largest : 1.0F;
                for (std::size_t index = 0; index < sums.size(); ++index)
                {
                    ASSERT_EQ(sums[index], expected.sums[index] * scale);
                }
            }
        }
    }
}

} // namespace

} // namespace morvane::algorithm
