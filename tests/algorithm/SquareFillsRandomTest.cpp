// The fills by a square against windows without tricks, on random images.
#include <morvane/algorithm/Filling.h>

#include "support/AllTypes.h"
#include "support/FillingOracle.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/ThreadCounts.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>

namespace morvane::algorithm
{

namespace
{

using tests::CallSquareFill;
using tests::FramedImage;
using tests::Random;
using tests::SquareFill;

cv::Size SomeSize(Random & random, int largest)
{
    cv::Size const size = tests::RandomSize(random, largest);
    return {std::max(size.width, 1), std::max(size.height, 1)};
}

TEST(SquareFillsRandom, AgreeWithWindowsWithoutTricks)
{
    Random random(8401);
    for (int const depth : tests::kMorphologyDepths)
    {
        for (SquareFill const fill : tests::kSquareFills)
        {
            for (int repeat = 0; repeat < 40; ++repeat)
            {
                cv::Mat const image = tests::ImageToFill(random, SomeSize(random, 30), depth);
                int const size = 3 + random.Below(repeat % 2 == 0 ? 3 : 12);
                SCOPED_TRACE(tests::FillCase(fill, image, size));
                cv::Mat const filtered = tests::OracleFiltered(fill, image, size);
                cv::Mat out;
                ASSERT_TRUE(CallSquareFill(fill, image, out, size));
                ASSERT_TRUE(tests::EqualImages(out, tests::OracleSquareFill(fill, image, filtered)));
            }
        }
    }
}

TEST(SquareFillsRandom, OfViews_NeitherSeeNorTouchWhatLiesAround)
{
    Random random(8402);
    for (int const depth : tests::kMorphologyDepths)
    {
        for (SquareFill const fill : tests::kSquareFills)
        {
            for (int repeat = 0; repeat < 20; ++repeat)
            {
                cv::Mat const image = tests::ImageToFill(random, SomeSize(random, 20), depth);
                int const size = 3 + random.Below(5);
                SCOPED_TRACE(tests::FillCase(fill, image, size));
                FramedImage framed(image);
                FramedImage out(tests::ImageToFill(random, image.size(), depth));
                uchar const * const place = out.View().data;
                cv::Mat const filtered = tests::OracleFiltered(fill, image, size);
                ASSERT_TRUE(CallSquareFill(fill, framed.View(), out.View(), size));
                ASSERT_TRUE(tests::EqualImages(out.View(), tests::OracleSquareFill(fill, image, filtered)));
                ASSERT_EQ(out.View().data, place);
                ASSERT_TRUE(out.IsFrameUntouched());
                ASSERT_TRUE(framed.IsFrameUntouched());
                ASSERT_TRUE(tests::EqualImages(framed.View(), image));
            }
        }
    }
}

TEST(SquareFillsRandom, OfAViewBesideAHighPixelOfItsParent_DoNotTakeIt)
{
    for (SquareFill const fill : tests::kSquareFills)
    {
        bool const fillsZeros = fill == SquareFill::Closing || fill == SquareFill::Dilation;
        // Around the view lies what would win.
        cv::Mat parent(9, 9, CV_16UC1, cv::Scalar(fillsZeros ? 900 : 1));
        cv::Mat view = parent(cv::Rect(2, 3, 4, 3));
        view.setTo(fillsZeros ? 0 : 700);
        parent.at<ushort>(3, 2) = 20;
        cv::Mat const image = view.clone();
        cv::Mat const filtered = tests::OracleFiltered(fill, image, 5);
        SCOPED_TRACE(tests::FillCase(fill, image, 5));
        cv::Mat out;
        EXPECT_TRUE(CallSquareFill(fill, view, out, 5));
        EXPECT_TRUE(tests::EqualImages(out, tests::OracleSquareFill(fill, image, filtered)));
    }
}

TEST(SquareFillsRandom, OfNaN_AgreeWithOpenCVOnACopy)
{
    Random random(8403);
    for (int const depth : {CV_32F, CV_64F})
    {
        for (SquareFill const fill : tests::kSquareFills)
        {
            for (int repeat = 0; repeat < 20; ++repeat)
            {
                cv::Mat const image = tests::RandomImage(random, SomeSize(random, 40), depth, {0.4, 0.4, 5});
                int const size = 3 + random.Below(5);
                SCOPED_TRACE(tests::FillCase(fill, image, size));
                FramedImage framed(image);
                cv::Mat const filtered = tests::FilteredByOpenCV(fill, image, size);
                cv::Mat out;
                ASSERT_TRUE(CallSquareFill(fill, framed.View(), out, size));
                ASSERT_TRUE(tests::EqualImages(out, tests::OracleSquareFill(fill, image, filtered)));
            }
        }
    }
}

TEST(SquareFillsRandom, AreTheSameAtAnyThreadCount)
{
    Random random(8404);
    cv::Mat const image = tests::ImageToFill(random, {701, 523}, CV_32F);
    for (SquareFill const fill : tests::kSquareFills)
    {
        cv::Mat const expected = tests::OracleSquareFill(fill, image, tests::FilteredByOpenCV(fill, image, 7));
        for (int const threads : tests::kThreadCounts)
        {
            SCOPED_TRACE(threads);
            tests::ThreadCount const count(threads);
            cv::Mat out;
            ASSERT_TRUE(CallSquareFill(fill, image, out, 7));
            EXPECT_TRUE(tests::EqualImages(out, expected));
        }
    }
}

TEST(SquareFillsRandom, LargerSquaresFillMore)
{
    Random random(8405);
    for (int repeat = 0; repeat < 10; ++repeat)
    {
        cv::Mat const image = tests::ImageToFill(random, {40, 30}, CV_8U);
        for (SquareFill const fill : {SquareFill::Closing, SquareFill::Dilation})
        {
            int filled = cv::countNonZero(image);
            for (int const size : {3, 5, 7, 9})
            {
                cv::Mat out;
                ASSERT_TRUE(CallSquareFill(fill, image, out, size));
                int const now = cv::countNonZero(out);
                EXPECT_GE(now, filled);
                filled = now;
            }
        }
    }
}

} // namespace

} // namespace morvane::algorithm
