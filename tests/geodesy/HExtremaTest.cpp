// Extrema by their dynamics.
#include <morvane/geodesy/Reconstruction.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/ReconstructionOracle.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <array>
#include <limits>

namespace morvane::tests
{

namespace
{

using geodesy::HMaxima;
using geodesy::HMinima;

bool Extrema(bool maxima, cv::Mat const & image, int shape, double h, cv::Mat & out)
{
    return maxima ? HMaxima(image, shape, h, out) : HMinima(image, shape, h, out);
}

cv::Mat Maxima(cv::Mat const & image, double h, int shape = cv::MORPH_RECT)
{
    cv::Mat out;
    EXPECT_TRUE(HMaxima(image, shape, h, out));
    EXPECT_EQ(out.type(), image.type());
    return out;
}

cv::Mat Minima(cv::Mat const & image, double h, int shape = cv::MORPH_RECT)
{
    cv::Mat out;
    EXPECT_TRUE(HMinima(image, shape, h, out));
    EXPECT_EQ(out.type(), image.type());
    return out;
}

/// Expects 255 where 1 is drawn and 0 elsewhere.
void ExpectMarked(cv::Mat const & actual, Drawing const & expected)
{
    cv::Mat const drawn = Draw(expected, actual.type());
    ExpectEqualImages(actual, drawn * 255);
}

TEST(HMaxima, MarksMaximaFromWhichEveryWayUpDescendsByH)
{
    // The highest peak, one of 7 beyond a saddle of 5, and one of 6 beyond a saddle of 2.
    cv::Mat const image = Draw<uchar>({
        "2222222222",
        "2996577256",
        "2296577225",
        "2222222222",
    });
    ExpectMarked(
        Maxima(image, 2), {
                              "..........",
                              ".11..11..1",
                              "..1..11...",
                              "..........",
                          });
    ExpectMarked(
        Maxima(image, 3), {
                              "..........",
                              ".11......1",
                              "..1.......",
                              "..........",
                          });
    ExpectMarked(
        Maxima(image, 5), {
                              "..........",
                              ".11.......",
                              "..1.......",
                              "..........",
                          });
}

TEST(HMaxima, PassesCornersWithARectangleOnly)
{
    cv::Mat const image = Draw<uchar>({"911", "191", "118"});
    ExpectMarked(Maxima(image, 1, cv::MORPH_RECT), {"1..", ".1.", "..."});
    ExpectMarked(Maxima(image, 1, cv::MORPH_CROSS), {"1..", ".1.", "..1"});
}

TEST(HMinima, MarksMinimaFromWhichEveryWayDownClimbsByH)
{
    cv::Mat const image = Draw<short>({"9952579"});
    ExpectMarked(Minima(image, 3), {"...1..."});
    cv::Mat const two = Draw<short>({"9159379"});
    ExpectMarked(Minima(two, 6), {".1..1.."});
    ExpectMarked(Minima(two, 7), {".1....."});
    ExpectMarked(Minima(Draw<short>({"99"}) - 20, 7), {"11"});
}

TEST(HMaxima, OfHZeroMarksEveryPixel)
{
    Random random(41);
    for (int const depth : kMorphologyDepths)
    {
        cv::Mat const image = LevelImage(random, {17, 9}, depth);
        ExpectEqualImages(Maxima(image, 0), cv::Mat(image.size(), depth, cv::Scalar(255)));
        ExpectEqualImages(Minima(image, 0), cv::Mat(image.size(), depth, cv::Scalar(255)));
    }
}

TEST(HMaxima, FractionOfHCountsAgainstWholeDifferences)
{
    for (int const type : {CV_8UC1, CV_16UC1, CV_16SC1})
    {
        cv::Mat const image = Draw({"1414"}, type);
        // 3 is added, and at least 2.6 or 3.4 asked.
        ExpectMarked(Maxima(image, 2.6), {".1.1"});
        ExpectMarked(Maxima(image, 3.4), {"...."});
        // 2 is added, and at least 2.4 asked: not even the highest is left.
        ExpectMarked(Maxima(image, 2.4), {"...."});
        ExpectMarked(Minima(image, 2.6), {"1.1."});
        ExpectMarked(Minima(image, 2.4), {"...."});
    }
    for (int const type : {CV_32FC1, CV_64FC1})
    {
        cv::Mat const image = Draw({"1414"}, type);
        ExpectMarked(Maxima(image, 2.4), {".1.1"});
        ExpectMarked(Minima(image, 2.4), {"1.1."});
    }
}

TEST(HMaxima, MaximaWithinHOfTheLargestNumberAreNotFound)
{
    ExpectMarked(Maxima(Row<uchar>({10, 250, 10, 200, 10}), 20), {"...1."});
    ExpectMarked(Maxima(Row<uchar>({10, 235, 10, 236, 10}), 20), {".1..."});
    ExpectMarked(Maxima(Row<ushort>({10, 65530, 10, 200, 10}), 20), {"...1."});
    ExpectMarked(Maxima(Row<short>({10, 32760, 10, -200, -220}), 20), {"....."});
    ExpectMarked(Minima(Row<uchar>({250, 250}), 20), {".."});
}

TEST(HMaxima, RoundingOfFloatingPointDoesNotHideAMaximumOfDynamicH)
{
    for (double const value : {0.3, 1.1, 7.7, 100.3, 1000.0})
    {
        cv::Mat const image(2, 3, CV_32FC1, cv::Scalar(value));
        ExpectMarked(Maxima(image, 0.1), {"111", "111"});
        ExpectMarked(Minima(image, 0.1), {"111", "111"});
    }
}

TEST(HMaxima, WritesIntoAnOutputOfAnotherDepthInPlace)
{
    cv::Mat const image = Draw<uchar>({"1419"});
    for (int const depth : kDepths)
    {
        cv::Mat out(1, 4, depth, cv::Scalar(7));
        cv::Mat const before = out;
        ASSERT_TRUE(HMaxima(image, cv::MORPH_RECT, 3, out));
        EXPECT_EQ(out.data, before.data);
        ExpectMarked(before, {".1.1"});
        ASSERT_TRUE(HMinima(image, cv::MORPH_RECT, 3, out));
        ExpectMarked(before, {"1.1."});
    }
}

TEST(HMaxima, WritesOverTheImageWhereItIsTheOutput)
{
    cv::Mat image = Draw<uchar>({"1419"});
    ASSERT_TRUE(HMaxima(image, cv::MORPH_RECT, 3, image));
    ExpectMarked(image, {".1.1"});
    image = Draw<uchar>({"1419"});
    ASSERT_TRUE(HMinima(image, cv::MORPH_RECT, 3, image));
    ExpectMarked(image, {"1.1."});
}

TEST(HExtremaRefusal, ImageOfSeveralChannels_IsRefusedBeforeTheOutputIsMade)
{
    for (int const type : {CV_8UC2, CV_32FC3, CV_8SC4, CV_32SC2})
    {
        cv::Mat const image(3, 4, type, cv::Scalar::all(1));
        for (bool const maxima : {true, false})
        {
            cv::Mat out;
            EXPECT_FALSE(Extrema(maxima, image, cv::MORPH_RECT, 1, out));
            EXPECT_TRUE(out.empty());
            cv::Mat full(3, 4, CV_8UC1, cv::Scalar(7));
            Snapshot const snapshot(full);
            EXPECT_FALSE(Extrema(maxima, image, cv::MORPH_RECT, 1, full));
            EXPECT_TRUE(snapshot.IsUntouched());
        }
    }
}

TEST(HExtremaRefusal, OutputOfAnotherSizeOrMoreChannelsOrARefusedDepth)
{
    cv::Mat const image(3, 4, CV_8UC1, cv::Scalar(1));
    struct Wrong
    {
        cv::Size size;
        int type;
    };
    for (Wrong const & wrong :
         {Wrong{{3, 4}, CV_8UC1}, Wrong{{4, 4}, CV_8UC1}, Wrong{{12, 1}, CV_8UC1}, Wrong{{4, 3}, CV_8UC2},
          Wrong{{4, 3}, CV_32FC4}, Wrong{{4, 3}, CV_8SC1}, Wrong{{4, 3}, CV_16FC1}})
    {
        for (bool const maxima : {true, false})
        {
            cv::Mat out(wrong.size, wrong.type);
            FillBytes(out, 7);
            Snapshot const snapshot(out);
            EXPECT_FALSE(Extrema(maxima, image, cv::MORPH_RECT, 1, out)) << cv::typeToString(wrong.type);
            EXPECT_TRUE(snapshot.IsUntouched());
        }
    }
}

TEST(HExtremaRefusal, ThreeDimensions)
{
    std::array const sizes{4, 3, 2};
    cv::Mat const block(3, sizes.data(), CV_8UC1, cv::Scalar(3));
    cv::Mat const image(3, 4, CV_8UC1, cv::Scalar(3));
    for (bool const maxima : {true, false})
    {
        cv::Mat flat = image.clone();
        cv::Mat deep = block.clone();
        EXPECT_FALSE(Extrema(maxima, block, cv::MORPH_RECT, 1, flat));
        EXPECT_FALSE(Extrema(maxima, image, cv::MORPH_RECT, 1, deep));
        ExpectEqualImages(flat, image);
    }
}

TEST(HExtremaRefusal, DepthsThatMorphologyDoesNotTakeAndWrongShapes_PassOnItsException)
{
    for (bool const maxima : {true, false})
    {
        for (int const depth : {CV_32S, CV_8S})
        {
            cv::Mat const image(3, 4, depth, cv::Scalar(1));
            cv::Mat out;
            EXPECT_THROW(static_cast<void>(Extrema(maxima, image, cv::MORPH_RECT, 1, out)), cv::Exception);
            EXPECT_EQ(out.size(), image.size());
            EXPECT_EQ(out.type(), image.type());
        }
        cv::Mat const image(3, 4, CV_8UC1, cv::Scalar(1));
        cv::Mat out;
        EXPECT_THROW(static_cast<void>(Extrema(maxima, image, 77, 1, out)), cv::Exception);
    }
}

TEST(HExtremaRefusal, ImageWithoutPixels_PassesOnTheExceptionOfTheSum)
{
    for (bool const maxima : {true, false})
    {
        cv::Mat out;
        EXPECT_THROW(static_cast<void>(Extrema(maxima, cv::Mat(), cv::MORPH_RECT, 1, out)), cv::Exception);
    }
}

TEST(HExtremaRandom, AgreeWithTheirSteps)
{
    Random random(42);
    for (int const depth : kMorphologyDepths)
    {
        for (int shape = 0; shape < 3; ++shape)
        {
            for (double const h : {0.0, 1.0, 2.5, 7.0, 0.25, 300.0, -3.0, 1e9})
            {
                for (bool const maxima : {true, false})
                {
                    cv::Mat const image = LevelImage(random, {1 + random.Below(24), 1 + random.Below(24)}, depth);
                    int const outDepth = kDepths[static_cast<std::size_t>(random.Below(6))];
                    cv::Mat const expected = OracleExtrema(maxima, image, shape, h, outDepth);
                    FramedImage framed(image);
                    FramedImage out(cv::Mat(image.size(), outDepth, cv::Scalar(7)));
                    ASSERT_TRUE(Extrema(maxima, framed.View(), shape, h, out.View()));
                    ASSERT_TRUE(EqualImages(out.View(), expected)) << cv::typeToString(depth) << " h " << h;
                    ASSERT_TRUE(out.IsFrameUntouched());
                    ASSERT_TRUE(EqualImages(framed.View(), image));
                }
            }
        }
    }
}

TEST(HExtremaRandom, OfImagesWithNaNAndInfinitiesAgreeWithTheirSteps)
{
    Random random(43);
    for (int const depth : {CV_32F, CV_64F})
    {
        for (int count = 0; count < 40; ++count)
        {
            cv::Mat image = RandomImage(random, {1 + random.Below(20), 1 + random.Below(20)}, depth, {0.3, 0.2, 9});
            SetElement(image, 0, 0, 0, std::numeric_limits<double>::quiet_NaN());
            bool const maxima = count % 2 == 0;
            cv::Mat out;
            ASSERT_TRUE(Extrema(maxima, image, count % 3, 2, out));
            ASSERT_TRUE(EqualImages(out, OracleExtrema(maxima, image, count % 3, 2, depth)));
        }
    }
}

} // namespace

} // namespace morvane::tests
