// The filling of holes against its steps, on random images.
#include <morvane/geodesy/Reconstruction.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/ReconstructionOracle.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <limits>

namespace morvane::tests
{

namespace
{

using geodesy::FillHolesbyOverBuild;
using geodesy::FillHolesbyReconstruction;

/// An image whose largest value, cut to a whole number, OpenCV and C++ agree on: that of an `int`.
cv::Mat HoledImage(Random & random, cv::Size size, int type)
{
    cv::Mat image = LevelImage(random, size, type);
    if (CV_MAT_DEPTH(type) < CV_32F) return image;
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            for (int channel = 0; channel < image.channels(); ++channel)
            {
                if (ElementAt(image, y, x, channel) > 1e9) SetElement(image, y, x, channel, 22.375);
            }
        }
    }
    return image;
}

cv::Mat FilledBySteps(cv::Mat const & image, cv::Mat const & seeds, int shape)
{
    cv::Mat expected(image.size(), image.type());
    OracleReconstruct(Repeated::Erode, OracleHoleMarker(image, seeds), image, {shape, {3, 3}, {}}, expected);
    return expected;
}

TEST(FillHolesRandom, ByReconstructionAgreesWithItsSteps)
{
    Random random(51);
    for (int const depth : kMorphologyDepths)
    {
        for (int const channels : kChannelCounts)
        {
            for (int shape = 0; shape < 3; ++shape)
            {
                cv::Size const size(1 + random.Below(30), 1 + random.Below(30));
                cv::Mat const image = HoledImage(random, size, CV_MAKETYPE(depth, channels));
                cv::Mat const seeds = RandomMask(random, size, 0.05);
                FramedImage framed(image);
                FramedImage framedSeeds(seeds);
                FramedImage out(cv::Mat(size, image.type(), cv::Scalar::all(7)));
                uchar const * const place = out.View().data;
                ASSERT_TRUE(FillHolesbyReconstruction(framed.View(), shape, out.View()));
                ASSERT_TRUE(EqualImages(out.View(), FilledBySteps(image, OracleEdge(size), shape)));
                ASSERT_TRUE(FillHolesbyReconstruction(framed.View(), framedSeeds.View(), shape, out.View()));
                ASSERT_TRUE(EqualImages(out.View(), FilledBySteps(image, seeds, shape)));
                ASSERT_EQ(out.View().data, place);
                ASSERT_TRUE(out.IsFrameUntouched());
                ASSERT_TRUE(EqualImages(framed.View(), image));
            }
        }
    }
}

TEST(FillHolesRandom, ByOverBuildAgreesWithThePlainFlood)
{
    Random random(52);
    for (int const depth : {CV_8U, CV_32S, CV_32F})
    {
        for (int number = -1; number <= kConnexityCount; ++number)
        {
            cv::Size const size(1 + random.Below(20), 1 + random.Below(20));
            cv::Mat const image = HoledImage(random, size, depth);
            cv::Mat const seeds = RandomMask(random, size, 0.05);
            FramedImage framed(image);
            FramedImage framedSeeds(seeds);
            FramedImage out(cv::Mat(size, depth, cv::Scalar::all(7)));
            ASSERT_TRUE(FillHolesbyOverBuild(framed.View(), Shape(number), out.View()));
            ASSERT_TRUE(
                EqualImages(out.View(), OracleBuild(true, image, OracleHoleMarker(image, OracleEdge(size)), number)));
            ASSERT_TRUE(FillHolesbyOverBuild(framed.View(), framedSeeds.View(), Shape(number), out.View()));
            ASSERT_TRUE(EqualImages(out.View(), OracleBuild(true, image, OracleHoleMarker(image, seeds), number)));
            ASSERT_TRUE(out.IsFrameUntouched());
        }
    }
}

TEST(FillHolesRandom, BothKindsAgreeWhereBothAreDefined)
{
    Random random(53);
    for (int count = 0; count < 20; ++count)
    {
        cv::Mat const image = HoledImage(random, {40, 30}, CV_8UC1);
        cv::Mat steps;
        cv::Mat flood;
        ASSERT_TRUE(FillHolesbyReconstruction(image, cv::MORPH_RECT, steps));
        ASSERT_TRUE(FillHolesbyOverBuild(image, connexity::eConnexity8, flood));
        EXPECT_TRUE(EqualImages(steps, flood));
        EXPECT_EQ(cv::countNonZero(steps < image), 0);
        cv::Mat again;
        ASSERT_TRUE(FillHolesbyReconstruction(steps, cv::MORPH_RECT, again));
        EXPECT_TRUE(EqualImages(again, steps));
    }
}

TEST(FillHolesRandom, MaximumThatNoIntHoldsCountsAsTheSmallestInt)
{
    // The marker then lies below the image, which comes back as it is.
    Random random(54);
    for (int const depth : {CV_32F, CV_64F})
    {
        cv::Mat image = HoledImage(random, {12, 9}, depth);
        image = cv::max(image, -1000);
        for (double const huge : {1e20, std::numeric_limits<double>::infinity()})
        {
            SetElement(image, 4, 5, 0, huge);
            cv::Mat out;
            ASSERT_TRUE(FillHolesbyReconstruction(image, cv::MORPH_RECT, out));
            EXPECT_TRUE(EqualImages(out, image));
        }
    }
}

} // namespace

} // namespace morvane::tests
