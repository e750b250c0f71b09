#include <morvane/filters/NonLocalMeans.h>

#include "support/ImageLiterals.h"
#include "support/NonLocalMeansOracle.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <limits>
#include <string>

namespace morvane::filters
{

namespace
{

using tests::Draw;
using tests::EqualImages;
using tests::ExpectDrawn;
using tests::FramedImage;
using tests::Likeness;
using tests::Random;
using tests::Span;

struct Operator
{
    char const * name;
    bool (*filter)(cv::Mat const & src, int patchSize, int searchSize, float h, int levels, cv::Mat & dst);
    cv::Mat (*oracle)(cv::Mat const & src, Likeness const & likeness, int levels);
};

constexpr Operator kFull{"full", MSD_NLMeans, tests::OracleMultiScaleMeans};
constexpr Operator kPlain{"plain", MSD_NLMeansParallel, tests::OraclePlainMultiScaleMeans};
constexpr std::array kOperators{kFull, kPlain};

cv::Mat Filtered(Operator const & op, cv::Mat const & image, Likeness const & likeness, int levels)
{
    cv::Mat dst(image.size(), image.type(), cv::Scalar(7));
    uchar const * const data = dst.data;
    EXPECT_TRUE(op.filter(image, likeness.patchSize, likeness.searchSize, likeness.h, levels, dst)) << op.name;
    EXPECT_EQ(dst.data, data) << op.name;
    return dst;
}

/// Filters an image of one value.
double FilteredValue(Operator const & op, int depth, double value)
{
    cv::Mat const image(9, 11, depth, cv::Scalar(value));
    cv::Mat const result = Filtered(op, image, {3, 3, 5.0F}, 2);
    double const first = tests::ElementAt(result, 0, 0);
    EXPECT_TRUE(EqualImages(result, cv::Mat(image.size(), depth, cv::Scalar(first))));
    return first;
}

TEST(MultiScaleNLMeans, KeepConstantImagesThat16BitsHold)
{
    for (Operator const & op : kOperators)
    {
        for (double const value : {0.0, 1.0, 255.0})
        {
            EXPECT_EQ(FilteredValue(op, CV_8U, value), value);
        }
        for (double const value : {0.0, 256.0, 32767.0})
        {
            EXPECT_EQ(FilteredValue(op, CV_16U, value), value);
        }
        for (double const value : {-32768.0, -1.0, 0.0, 32767.0})
        {
            EXPECT_EQ(FilteredValue(op, CV_16S, value), value);
            EXPECT_EQ(FilteredValue(op, CV_32S, value), value);
        }
    }
}

TEST(MultiScaleNLMeans, WrapAroundWhat16BitsDoNotHold)
{
    for (Operator const & op : kOperators)
    {
        // Negative in 16 bits, and no number of an unsigned type.
        EXPECT_EQ(FilteredValue(op, CV_16U, 32768.0), 0.0);
        EXPECT_EQ(FilteredValue(op, CV_16U, 40000.0), 0.0);
        EXPECT_EQ(FilteredValue(op, CV_16U, 65535.0), 0.0);
        EXPECT_EQ(FilteredValue(op, CV_32S, 32768.0), -32768.0);
        EXPECT_EQ(FilteredValue(op, CV_32S, 65535.0), -1.0);
        EXPECT_EQ(FilteredValue(op, CV_32S, 70000.0), 4464.0);
        EXPECT_EQ(FilteredValue(op, CV_32S, -32769.0), 32767.0);
        EXPECT_EQ(FilteredValue(op, CV_32S, 2147483647.0), -1.0);
        EXPECT_EQ(FilteredValue(op, CV_32S, -2147483648.0), 0.0);
    }
}

TEST(MultiScaleNLMeans, GiveBackTheResidualAboveTheStrength)
{
    // The first pass takes the spot from 9 to 4: seen from h = 9 * 1.5, 13.5, all candidates are nearly alike, and what
    // it took away is below the strength. In one of 3 * 1.5, candidates that differ by 5 weigh 0.33.
    cv::Mat const image = Draw<short>(
        {"444", //
         "494", //
         "444"});
    ExpectDrawn(Filtered(kPlain, image, {1, 3, 9.0F}, 1), {"444", "444", "444"});
    ExpectDrawn(Filtered(kFull, image, {1, 3, 9.0F}, 1), {"444", "444", "444"});
    // Residual 5, above 3 by 2.
    ExpectDrawn(Filtered(kPlain, image, {1, 3, 3.0F}, 1), {"444", "444", "444"});
    ExpectDrawn(Filtered(kFull, image, {1, 3, 3.0F}, 1), {"444", "464", "444"});
    // The same downwards: the mean is cut to 8, and -6 is below -3 by 3.
    cv::Mat const dark = Draw<short>(
        {"999", //
         "929", //
         "999"});
    ExpectDrawn(Filtered(kPlain, dark, {1, 3, 3.0F}, 1), {"999", "989", "999"});
    ExpectDrawn(Filtered(kFull, dark, {1, 3, 3.0F}, 1), {"999", "959", "999"});
}

TEST(MultiScaleNLMeans, AskForBothSidesOfAThresholdBelowZero)
{
    // 65531 is -5 in 16 bits: a residual of 0 is above -5 and gains 5, and below 5 and loses them again.
    constexpr float kStrength = 65531.0F;
    cv::Mat const flat = Draw<short>({"777", "777", "777"});
    ExpectDrawn(Filtered(kFull, flat, {1, 3, kStrength}, 1), {"777", "777", "777"});
}

TEST(MultiScaleNLMeans, AreStrongerInTheFirstPassOfTheFullForm)
{
    // A spot 10 above its surroundings: 8 times 1 is too little, 8 times 1.5 is enough. The residual gives back 10 - 1.
    cv::Mat const image = Draw<uchar>(
        {"444", //
         "4e4", //
         "444"});
    ExpectDrawn(Filtered(kPlain, image, {1, 3, 1.0F}, 1), {"444", "4e4", "444"});
    ExpectDrawn(Filtered(kFull, image, {1, 3, 1.0F}, 1), {"444", "4d4", "444"});
}

TEST(MultiScaleNLMeans, LeaveAnOddRemainderOfTheFinestLevelUnfiltered)
{
    // The rows and columns that belong to no block keep the value they have in the source, not in the base.
    cv::Mat image(5, 5, CV_8UC1, cv::Scalar(4));
    image.at<uchar>(4, 2) = 9;
    image.at<uchar>(2, 4) = 9;
    cv::Mat const plain = Filtered(kPlain, image, {1, 3, 100.0F}, 1);
    EXPECT_EQ(plain.at<uchar>(4, 2), 9);
    EXPECT_EQ(plain.at<uchar>(2, 4), 9);
    cv::Mat inner(5, 5, CV_8UC1, cv::Scalar(4));
    inner.at<uchar>(1, 4) = 9;
    EXPECT_EQ(Filtered(kPlain, inner, {1, 3, 100.0F}, 1).at<uchar>(1, 4), 9);
}

TEST(MultiScaleNLMeans, TakeAnyNumberOfLevels)
{
    Random random(660);
    for (Operator const & op : kOperators)
    {
        for (cv::Size const size : {cv::Size(1, 1), cv::Size(2, 1), cv::Size(13, 9), cv::Size(16, 16)})
        {
            cv::Mat const image = tests::NoisyImage(random, size, CV_16S);
            cv::Mat const expected = op.oracle(image, {1, 3, 50.0F}, 6);
            for (int const levels : {6, 10, 40, 200})
            {
                EXPECT_TRUE(EqualImages(Filtered(op, image, {1, 3, 50.0F}, levels), expected)) << levels;
            }
        }
    }
}

TEST(MultiScaleNLMeans, OfEmptyImages_AreEmpty)
{
    for (Operator const & op : kOperators)
    {
        for (cv::Mat const & none : {cv::Mat(), cv::Mat(0, 5, CV_16SC1), cv::Mat(5, 0, CV_32SC1)})
        {
            cv::Mat dst(none.rows, none.cols, none.type());
            EXPECT_TRUE(op.filter(none, 3, 3, 5.0F, 2, dst)) << op.name;
            EXPECT_TRUE(dst.empty());
        }
    }
}

/// Filters an image, and a view in place.
void ExpectFiltered(Operator const & op, cv::Mat const & image, Likeness const & likeness, int levels)
{
    SCOPED_TRACE(std::string(op.name) + ", " + LikenessCase(image, likeness) + ", levels " + std::to_string(levels));
    cv::Mat const expected = op.oracle(image, likeness, levels);
    EXPECT_TRUE(EqualImages(Filtered(op, image, likeness, levels), expected));
    FramedImage frame(image);
    ASSERT_TRUE(op.filter(frame.View(), likeness.patchSize, likeness.searchSize, likeness.h, levels, frame.View()));
    EXPECT_TRUE(EqualImages(frame.View(), expected)) << "in place";
    EXPECT_TRUE(frame.IsFrameUntouched());
}

TEST(MultiScaleNLMeansRandom, MatchTheirSteps)
{
    Random random(661);
    for (Operator const & op : kOperators)
    {
        for (int const depth : tests::kFilteredDepths)
        {
            for (int round = 0; round < 30; ++round)
            {
                cv::Size const size(1 + random.Below(30), 1 + random.Below(30));
                Span const full = tests::SpanOf(depth);
                Span const small{0, 250};
                Span const span = random.Chance(0.3) ? full : small;
                cv::Mat const image = tests::NoisyImage(random, size, depth, span);
                float const h = std::min(SomeStrength(random, span), 32767.0F);
                ExpectFiltered(op, image, {random.Below(5), random.Below(6), h}, 1 + round % 5);
                if (HasFailure()) return;
            }
        }
    }
}

TEST(MultiScaleNLMeansRandom, MatchTheirStepsOnOddSizes)
{
    Random random(662);
    for (Operator const & op : kOperators)
    {
        for (int levels = 1; levels <= 5; ++levels)
        {
            for (cv::Size const size : {cv::Size(33, 35), cv::Size(35, 33), cv::Size(31, 31), cv::Size(47, 21)})
            {
                cv::Mat const image = tests::NoisyImage(random, size, CV_16U, {0, 2000});
                ExpectFiltered(op, image, {1, 3, 60.0F + 300.0F * static_cast<float>(random.Unit())}, levels);
            }
        }
        if (HasFailure()) return;
    }
}

TEST(MultiScaleNLMeansRandom, MatchTheirStepsWithStrangeStrengths)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    Random random(663);
    for (Operator const & op : kOperators)
    {
        for (float const h :
             {0.0F, 1e-40F, 0.75F, -3.0F, -1e3F, 32767.9F, 32768.0F, 40000.0F, 65536.0F, 70000.0F, 3e9F, 1e30F,
              infinity, -infinity, std::numeric_limits<float>::quiet_NaN()})
        {
            for (int const depth : tests::kFilteredDepths)
            {
                ExpectFiltered(op, tests::NoisyImage(random, {17, 14}, depth), {1, 3, h}, 2);
            }
            if (HasFailure()) return;
        }
    }
}

} // namespace

} // namespace morvane::filters
