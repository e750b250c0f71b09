// The interpolation of holes against its steps without tricks, on random images.
#include <morvane/algorithm/Filling.h>

#include "support/AllTypes.h"
#include "support/FillingOracle.h"
#include "support/ImageLiterals.h"
#include "support/MeasureOracle.h"
#include "support/RandomImages.h"
#include "support/ThreadCounts.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <array>

namespace morvane::algorithm
{

namespace
{

using tests::CallHoleFill;
using tests::FramedImage;
using tests::HoleFill;
using tests::Random;
using tests::SquareFill;

constexpr std::array kFloatDepths{CV_32F, CV_64F};

cv::Size SomeSize(Random & random, int largest)
{
    cv::Size const size = tests::RandomSize(random, largest);
    return {std::max(size.width, 1), std::max(size.height, 1)};
}

/// Zeros with some rectangles of numbers, so that holes of all sizes remain.
cv::Mat ImageWithHoles(Random & random, cv::Size size, int type)
{
    cv::Mat image = cv::Mat::zeros(size, type);
    int const islands = 1 + random.Below(12);
    for (int island = 0; island < islands; ++island)
    {
        cv::Rect const box(
            random.Below(size.width), random.Below(size.height), 1 + random.Below(6), 1 + random.Below(6));
        cv::Mat part = image(box & cv::Rect({}, size));
        tests::ImageToFill(random, part.size(), type).copyTo(part);
    }
    return image;
}

TEST(FillHolesInterpolationRandom, AgreesWithTheStepsWithoutTricks)
{
    Random random(8421);
    for (int const depth : kFloatDepths)
    {
        for (HoleFill const fill : tests::kHoleFills)
        {
            for (int repeat = 0; repeat < 150; ++repeat)
            {
                cv::Mat const image = ImageWithHoles(random, SomeSize(random, 30), depth);
                int const size = 3 + random.Below(5);
                SCOPED_TRACE(tests::FillCase(fill, image, size));
                FramedImage framed(image);
                FramedImage out(tests::ImageToFill(random, image.size(), depth));
                ASSERT_TRUE(CallHoleFill(fill, framed.View(), out.View(), size));
                ASSERT_TRUE(tests::EqualImages(out.View(), tests::OracleHoleFill(fill, image, size)));
                ASSERT_TRUE(out.IsFrameUntouched());
                ASSERT_TRUE(framed.IsFrameUntouched());
                ASSERT_TRUE(tests::EqualImages(framed.View(), image));
            }
        }
    }
}

TEST(FillHolesInterpolationRandom, OfNaN_AgreesWithTheStepsWithoutTricks)
{
    Random random(8422);
    for (int const depth : kFloatDepths)
    {
        for (HoleFill const fill : tests::kHoleFills)
        {
            for (int repeat = 0; repeat < 60; ++repeat)
            {
                cv::Mat const image = tests::RandomImage(random, SomeSize(random, 30), depth, {0.9, 0.4, 5});
                int const size = 3 + random.Below(3);
                SCOPED_TRACE(tests::FillCase(fill, image, size));
                cv::Mat out;
                ASSERT_TRUE(CallHoleFill(fill, image, out, size));
                ASSERT_TRUE(tests::EqualImages(
                    tests::WithOneNaN(out), tests::WithOneNaN(tests::OracleHoleFill(fill, image, size))));
            }
        }
    }
}

TEST(FillHolesInterpolationRandom, OfIntegers_LeavesTheClosedImage)
{
    Random random(8423);
    for (int const depth : {CV_8U, CV_16U, CV_16S})
    {
        for (HoleFill const fill : tests::kHoleFills)
        {
            for (int repeat = 0; repeat < 20; ++repeat)
            {
                cv::Mat const image = ImageWithHoles(random, SomeSize(random, 20), depth);
                SCOPED_TRACE(tests::FillCase(fill, image, 3));
                FramedImage framed(image);
                FramedImage out(tests::ImageToFill(random, image.size(), depth));
                cv::Mat const filtered = tests::OracleFiltered(SquareFill::Closing, image, 3);
                ASSERT_FALSE(CallHoleFill(fill, framed.View(), out.View(), 3));
                ASSERT_TRUE(
                    tests::EqualImages(out.View(), tests::OracleSquareFill(SquareFill::Closing, image, filtered)));
                ASSERT_TRUE(out.IsFrameUntouched());
            }
        }
    }
}

TEST(FillHolesInterpolationRandom, OfPositiveNumbers_LeavesNoHole)
{
    Random random(8424);
    for (HoleFill const fill : tests::kHoleFills)
    {
        for (int repeat = 0; repeat < 30; ++repeat)
        {
            cv::Mat image = cv::Mat::zeros(SomeSize(random, 40), CV_32F);
            for (int island = 0; island < 4; ++island)
            {
                image.at<float>(random.Below(image.rows), random.Below(image.cols)) =
                    static_cast<float>(1 + random.Below(9));
            }
            double least = 0.0;
            double most = 0.0;
            cv::minMaxLoc(image, nullptr, &most);
            cv::minMaxLoc(image, &least, nullptr, nullptr, nullptr, image > 0);
            cv::Mat out;
            ASSERT_TRUE(CallHoleFill(fill, image, out, 3));
            double lowest = 0.0;
            double highest = 0.0;
            cv::minMaxLoc(out, &lowest, &highest);
            EXPECT_EQ(highest, most);
            EXPECT_EQ(lowest, least);
        }
    }
}

TEST(FillHolesInterpolationRandom, IsTheSameAtAnyThreadCount)
{
    Random random(8425);
    cv::Mat const image = ImageWithHoles(random, {701, 523}, CV_32F);
    for (HoleFill const fill : tests::kHoleFills)
    {
        cv::Mat expected;
        for (int const threads : tests::kThreadCounts)
        {
            SCOPED_TRACE(threads);
            tests::ThreadCount const count(threads);
            cv::Mat out;
            ASSERT_TRUE(CallHoleFill(fill, image, out, 5));
            if (expected.empty()) expected = out.clone();
            EXPECT_TRUE(tests::EqualImages(out, expected));
        }
    }
}

} // namespace

} // namespace morvane::algorithm
