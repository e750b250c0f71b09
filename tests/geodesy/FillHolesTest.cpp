// The filling of holes, by reconstruction and by a flood.
#include <morvane/geodesy/Reconstruction.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Rows.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

namespace morvane::geodesy
{

namespace
{

using connexity::eConnexity4;
using connexity::eConnexity4Wrapped;
using connexity::eConnexity8;
using tests::Draw;
using tests::Drawing;
using tests::ExpectDrawn;

Drawing const kHoles = {
    "........", ".555.55.", ".525.535", ".5555555", "..6.....", ".616.66.", "..6.6.6.", ".....6.2",
};

Drawing const kFilled = {
    "........", ".555.55.", ".555.555", ".5555555", "..6.....", ".666.66.", "..6.666.", ".....6.2",
};

cv::Mat Reconstructed(cv::Mat const & image, int shape)
{
    cv::Mat out;
    EXPECT_TRUE(FillHolesbyReconstruction(image, shape, out));
    return out;
}

cv::Mat Flooded(cv::Mat const & image, int connexity)
{
    cv::Mat out;
    EXPECT_TRUE(FillHolesbyOverBuild(image, tests::Shape(connexity), out));
    return out;
}

TEST(FillHoles, RaisesWhatTheEdgeDoesNotDrainToTheLowestRim)
{
    for (int const depth : {CV_8U, CV_16U, CV_16S, CV_32F, CV_64F})
    {
        ExpectDrawn(Reconstructed(Draw(kHoles, depth), cv::MORPH_CROSS), kFilled);
    }
    for (int const depth : {CV_8U, CV_32S, CV_32F})
    {
        ExpectDrawn(Flooded(Draw(kHoles, depth), eConnexity4), kFilled);
    }
}

TEST(FillHoles, RimsThatAreOpenAtACornerHoldWithFourNeighboursOnly)
{
    cv::Mat const diamond = Draw<uchar>({"....", ".3..", "3.3.", ".3.."});
    Drawing const filled = {"....", ".3..", "333.", ".3.."};
    ExpectDrawn(Reconstructed(diamond, cv::MORPH_CROSS), filled);
    ExpectDrawn(Reconstructed(diamond, cv::MORPH_ELLIPSE), filled);
    ExpectDrawn(Flooded(diamond, eConnexity4), filled);
    tests::ExpectEqualImages(Reconstructed(diamond, cv::MORPH_RECT), diamond);
    tests::ExpectEqualImages(Flooded(diamond, eConnexity8), diamond);
}

TEST(FillHoles, ImagesWithoutHolesAndConstantOnesComeBackUnchanged)
{
    cv::Mat const slope = Draw<uchar>({"12345", "23456", "34567"});
    cv::Mat const constant(4, 5, CV_8UC1, cv::Scalar(255));
    cv::Mat const zero(4, 5, CV_8UC1, cv::Scalar(0));
    for (cv::Mat const & image : {slope, constant, zero})
    {
        tests::ExpectEqualImages(Reconstructed(image, cv::MORPH_RECT), image);
        tests::ExpectEqualImages(Flooded(image, eConnexity8), image);
    }
}

TEST(FillHoles, ImagesThatAreAllEdgeComeBackUnchanged)
{
    for (Drawing const & rows : {Drawing{"5"}, Drawing{"515"}, Drawing{"5", "1", "5"}, Drawing{"5155", "5515"}})
    {
        cv::Mat const image = Draw<uchar>(rows);
        tests::ExpectEqualImages(Reconstructed(image, cv::MORPH_RECT), image);
        tests::ExpectEqualImages(Flooded(image, eConnexity4), image);
    }
}

TEST(FillHoles, FillsToTheWholeNumberBelowAFractionalMaximum)
{
    cv::Mat image = Draw<float>({".....", ".555.", ".515.", ".555.", "....."});
    image.setTo(5.75, image == 5);
    cv::Mat expected = image.clone();
    expected.at<float>(2, 2) = 5;
    tests::ExpectEqualImages(Reconstructed(image, cv::MORPH_CROSS), expected);
    // The hole is then a minimum that nothing supports, which a flood leaves alone.
    tests::ExpectEqualImages(Flooded(image, eConnexity4), expected);
    // A hole above that number is not lowered.
    image.at<float>(2, 2) = 5.5F;
    tests::ExpectEqualImages(Reconstructed(image, cv::MORPH_CROSS), image);
    tests::ExpectEqualImages(Flooded(image, eConnexity4), image);
}

TEST(FillHoles, CutsANegativeMaximumTowardsZeroAndFillsToTheRim)
{
    cv::Mat image = Draw<float>({".....", ".555.", ".515.", ".555.", "....."}) - 9.5;
    cv::Mat expected = image.clone();
    expected.at<float>(2, 2) = -4.5F;
    tests::ExpectEqualImages(Reconstructed(image, cv::MORPH_CROSS), expected);
    tests::ExpectEqualImages(Flooded(image, eConnexity4), expected);
}

TEST(FillHoles, SeedsDrainAHoleAndWhatHasNoneFills)
{
    // Two basins; the right one holds the only seed.
    cv::Mat const image = Draw<uchar>({"21473"});
    cv::Mat const seeds = Draw<uchar>({"....1"});
    cv::Mat out;
    ASSERT_TRUE(FillHolesbyReconstruction(image, seeds, cv::MORPH_RECT, out));
    ExpectDrawn(out, {"77773"});
    ASSERT_TRUE(FillHolesbyOverBuild(image, seeds, eConnexity4, out));
    ExpectDrawn(out, {"77773"});
}

TEST(FillHoles, AnyValueOfTheSeedMaskButZeroIsASeed)
{
    cv::Mat const image = Draw<uchar>({"17273"});
    cv::Mat const seeds = tests::Row<uchar>({255, 0, 1, 0, 0});
    cv::Mat out;
    ASSERT_TRUE(FillHolesbyReconstruction(image, seeds, cv::MORPH_RECT, out));
    ExpectDrawn(out, {"17277"});
    ASSERT_TRUE(FillHolesbyOverBuild(image, seeds, eConnexity4, out));
    ExpectDrawn(out, {"17277"});
}

TEST(FillHoles, WithoutASeedEverythingFillsToTheMaximum)
{
    cv::Mat const image = Draw<uchar>({"21473", "11111"});
    cv::Mat const seeds = cv::Mat::zeros(image.size(), CV_8UC1);
    cv::Mat out;
    ASSERT_TRUE(FillHolesbyReconstruction(image, seeds, cv::MORPH_RECT, out));
    ExpectDrawn(out, {"77777", "77777"});
    ASSERT_TRUE(FillHolesbyOverBuild(image, seeds, eConnexity4, out));
    ExpectDrawn(out, {"77777", "77777"});
}

TEST(FillHoles, SeedMaskWithoutDataCountsAsAllSeeds)
{
    cv::Mat const image = Draw<uchar>(kHoles);
    cv::Mat out;
    ASSERT_TRUE(FillHolesbyReconstruction(image, cv::Mat(), cv::MORPH_RECT, out));
    tests::ExpectEqualImages(out, image);
    ASSERT_TRUE(FillHolesbyOverBuild(image, cv::Mat(), eConnexity4, out));
    tests::ExpectEqualImages(out, image);
}

TEST(FillHoles, EachChannelFillsToItsOwnRim)
{
    cv::Mat const deep = Draw<uchar>({".....", ".555.", ".515.", ".555.", "....."});
    cv::Mat const open = Draw<uchar>({"..9..", ".595.", ".515.", ".5.5.", "....."});
    cv::Mat const low = Draw<uchar>({"33333", "34443", "34.23", "34443", "33333"});
    cv::Mat image;
    cv::merge(std::vector<cv::Mat>{deep, open, low}, image);
    std::vector<cv::Mat> filled;
    cv::split(Reconstructed(image, cv::MORPH_CROSS), filled);
    ExpectDrawn(filled[0], {".....", ".555.", ".555.", ".555.", "....."});
    ExpectDrawn(filled[1], {"..9..", ".595.", ".515.", ".5.5.", "....."});
    ExpectDrawn(filled[2], {"33333", "34443", "34333", "34443", "33333"});
}

TEST(FillHoles, AWrappedFloodIsSeededByTheEdgeAllTheSame)
{
    // The hole touches the seam, so it is drained there in either shape.
    Drawing const hole = {"55555", "15552", "55155", "55555"};
    Drawing const filled = {"55555", "15552", "55555", "55555"};
    ExpectDrawn(Flooded(Draw<uchar>(hole), eConnexity4), filled);
    ExpectDrawn(Flooded(Draw<uchar>(hole), eConnexity4Wrapped), filled);
}

TEST(FillHolesRefusal, SeedMaskOfAnotherType)
{
    cv::Mat const image = Draw<uchar>(kHoles);
    for (int const type : {CV_8SC1, CV_8UC3, CV_16UC1, CV_32FC1})
    {
        for (cv::Size const size : {image.size(), cv::Size(2, 2), cv::Size(0, 0)})
        {
            cv::Mat const seeds(size.height, size.width, type, cv::Scalar::all(1));
            cv::Mat out;
            EXPECT_FALSE(FillHolesbyReconstruction(image, seeds, 77, out));
            EXPECT_FALSE(FillHolesbyOverBuild(image, seeds, eConnexity4, out));
            EXPECT_TRUE(out.empty());
        }
    }
}

TEST(FillHolesRefusal, SeedMaskOfAnotherSize_PassesOnTheExceptionOfTheCopy)
{
    cv::Mat const image = Draw<uchar>(kHoles);
    for (cv::Size const size : {cv::Size(7, 8), cv::Size(8, 9), cv::Size(64, 1), cv::Size(1, 1)})
    {
        cv::Mat const seeds(size, CV_8UC1, cv::Scalar(1));
        cv::Mat out;
        EXPECT_THROW(static_cast<void>(FillHolesbyReconstruction(image, seeds, 0, out)), cv::Exception);
        EXPECT_THROW(static_cast<void>(FillHolesbyOverBuild(image, seeds, eConnexity4, out)), cv::Exception);
        EXPECT_TRUE(out.empty());
    }
}

TEST(FillHolesRefusal, WhatTheOperatorsBehindThemRefuse)
{
    for (int const depth : {CV_16U, CV_16S, CV_64F, CV_8S})
    {
        cv::Mat out;
        EXPECT_FALSE(FillHolesbyOverBuild(Draw(kHoles, depth), eConnexity4, out)) << depth;
        EXPECT_TRUE(out.empty());
    }
    for (int const depth : {CV_32S, CV_8S})
    {
        cv::Mat out;
        EXPECT_THROW(
            static_cast<void>(FillHolesbyReconstruction(Draw(kHoles, depth), cv::MORPH_RECT, out)), cv::Exception);
    }
    cv::Mat wrong(8, 8, CV_16UC1, cv::Scalar(7));
    EXPECT_FALSE(FillHolesbyReconstruction(Draw<uchar>(kHoles), cv::MORPH_RECT, wrong));
    EXPECT_EQ(cv::countNonZero(wrong != 7), 0);
    cv::Mat const wide(8, 8, CV_8UC3, cv::Scalar::all(3));
    cv::Mat larger;
    EXPECT_FALSE(FillHolesbyOverBuild(wide, eConnexity4, larger));
    tests::ExpectEqualImages(larger, wide);
}

TEST(FillHolesRefusal, ImagesWithoutPixels)
{
    cv::Mat const none;
    cv::Mat out;
    EXPECT_TRUE(FillHolesbyReconstruction(none, cv::MORPH_RECT, out));
    EXPECT_TRUE(FillHolesbyReconstruction(none, none, cv::MORPH_RECT, out));
    EXPECT_FALSE(FillHolesbyOverBuild(none, eConnexity4, out));
    EXPECT_FALSE(FillHolesbyOverBuild(none, none, eConnexity4, out));
    EXPECT_TRUE(out.empty());
}

} // namespace

} // namespace morvane::geodesy
