#include <morvane/filters/NonLocalMeans.h>

#include "support/ImageLiterals.h"
#include "support/NonLocalMeansOracle.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <cstdint>
#include <limits>

namespace morvane::filters
{

namespace
{

using tests::Draw;
using tests::EqualImages;
using tests::ExpectDrawn;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

using Operator = bool (*)(cv::Mat const & src, int patchSize, int searchSize, float h, cv::Mat & dst);

constexpr std::array<Operator, 2> kOnePass{NLMeans, NLMeansParallel};

/// The result of one pass, the same from both operators.
cv::Mat Filtered(cv::Mat const & image, int patchSize, int searchSize, float h)
{
    cv::Mat serial;
    cv::Mat parallel;
    EXPECT_TRUE(NLMeans(image, patchSize, searchSize, h, serial));
    EXPECT_TRUE(NLMeansParallel(image, patchSize, searchSize, h, parallel));
    EXPECT_TRUE(EqualImages(parallel, serial));
    return serial;
}

cv::Mat Iterated(cv::Mat const & image, int patchSize, int searchSize, float h, int iterations)
{
    cv::Mat dst;
    EXPECT_TRUE(NLMeansIterative(image, patchSize, searchSize, h, iterations, dst));
    return dst;
}

TEST(NLMeans, TakesTheMeanOfEquallyLikeCandidates)
{
    // Each of the eight differs by 5 and counts as much as the centre: 41 / 9 = 4.6, which is cut.
    cv::Mat const image = Draw<uchar>(
        {"444", //
         "494", //
         "444"});
    ExpectDrawn(Filtered(image, 1, 3, 1.0F), {"444", "444", "444"});
}

TEST(NLMeans, CutsTowardsZero)
{
    cv::Mat image(3, 3, CV_16SC1, cv::Scalar(-4));
    image.at<short>(1, 1) = -9;
    EXPECT_TRUE(EqualImages(Filtered(image, 1, 3, 1.0F), cv::Mat(3, 3, CV_16SC1, cv::Scalar(-4))));
}

TEST(NLMeans, WeighsByTheMeanAbsoluteDifference)
{
    // Differences of 1 and 3 with h = 2: e^-0.5 (0.6065) and e^-1.5 (0.2231), and 0.6065 for the centre.
    // (11 * 0.6065 + 7 * 13 * 0.2231 + 10 * 0.6065) / (2 * 0.6065 + 7 * 0.2231) = 11.9
    cv::Mat const near = Draw<uchar>(
        {"ddd", //
         "dab", //
         "ddd"});
    ExpectDrawn(
        Filtered(near, 1, 3, 2.0F), {"ddd", //
                                     "dbb", //
                                     "ddd"});
    // With h = 1 differences of 12 are dropped: (13 + 10) / 2 = 11.5
    cv::Mat const far = Draw<uchar>(
        {"mmm", //
         "mad", //
         "mmm"});
    ExpectDrawn(
        Filtered(far, 1, 3, 1.0F), {"mmm", //
                                    "mbd", //
                                    "mmm"});
}

TEST(NLMeans, DropsCandidatesFromEightTimesTheStrengthOn)
{
    cv::Mat const image = Draw<uchar>(
        {"555", //
         "595", //
         "555"});
    ExpectDrawn(Filtered(image, 1, 3, 0.5F), {"555", "595", "555"});
    ExpectDrawn(Filtered(image, 1, 3, 0.501F), {"555", "555", "555"});
}

TEST(NLMeans, ComparesPatches)
{
    // Above and below, the patches differ by 6 / 9; to both sides by more than 8.
    cv::Mat const image = Draw<uchar>(
        {"09090", //
         "09090", //
         "09390", //
         "09090", //
         "09090"});
    ExpectDrawn(
        Filtered(image, 3, 3, 1.0F), {"09090", //
                                      "09090", //
                                      "09190", //
                                      "09090", //
                                      "09090"});
}

TEST(NLMeans, ComparesPixelsWithPatchesOfOne)
{
    // Above and below, pixels differ by 1, to both sides by 8: (7 + 8 + 7) / 3 = 7.3
    ExpectDrawn(
        Filtered(Draw<uchar>({"070", "080", "070"}), 1, 3, 0.5F), {"070", //
                                                                   "070", //
                                                                   "070"});
}

TEST(NLMeans, KeepsPixelsCloserToABorderThanItsMargin)
{
    // Patches of 3 and a search square of 7 leave out 4 pixels on each side.
    cv::Mat image(11, 10, CV_8UC1, cv::Scalar(10));
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            image.at<uchar>(y, x) = (x + y) % 2 == 0 ? 10 : 20;
        }
    }
    cv::Mat const result = Filtered(image, 3, 7, 100.0F);
    cv::Mat expected(image.size(), CV_8UC1, cv::Scalar(0));
    expected(cv::Rect(4, 4, 2, 3)).setTo(255);
    EXPECT_TRUE(EqualImages(result != image, expected));
}

TEST(NLMeans, OfImagesWithoutAnInnerPixel_Copies)
{
    tests::Random random(623);
    for (cv::Size const size : {cv::Size(8, 30), cv::Size(30, 8), cv::Size(1, 1), cv::Size(1, 30), cv::Size(7, 7)})
    {
        cv::Mat const image = tests::NoisyImage(random, size, CV_16U, {0, 100});
        EXPECT_TRUE(EqualImages(Filtered(image, 3, 7, 100.0F), image));
    }
    EXPECT_TRUE(Filtered(cv::Mat(), 3, 7, 1.0F).empty());
    EXPECT_TRUE(Filtered(cv::Mat(0, 5, CV_16SC1), 3, 7, 1.0F).empty());
    EXPECT_TRUE(Filtered(cv::Mat(5, 0, CV_32SC1), 1, 1, 1.0F).empty());
    // The side of 9 has one inner pixel, of 8 none.
    cv::Mat image(9, 9, CV_8UC1, cv::Scalar(10));
    image.at<uchar>(4, 4) = 60;
    EXPECT_LT(Filtered(image, 3, 7, 1000.0F).at<uchar>(4, 4), 20);
}

TEST(NLMeans, TakesSizesBeyondEveryImage)
{
    constexpr int most = std::numeric_limits<int>::max();
    tests::Random random(624);
    cv::Mat const image = tests::NoisyImage(random, {6, 5}, CV_8U);
    for (int const size : {7, 100, 46340, 46341, 65536, 100000, 1 << 30, most - 1, most})
    {
        EXPECT_TRUE(EqualImages(Filtered(image, size, 3, 10.0F), image));
        EXPECT_TRUE(EqualImages(Filtered(image, 3, size, 10.0F), image));
        EXPECT_TRUE(EqualImages(Filtered(image, size, size, 10.0F), image));
        EXPECT_TRUE(EqualImages(Filtered(cv::Mat(), size, size, 10.0F), cv::Mat(0, 0, CV_8UC1)));
    }
}

TEST(NLMeans, RaisesEvenSizes)
{
    tests::Random random(620);
    cv::Mat const image = tests::NoisyImage(random, {25, 21}, CV_8U);
    EXPECT_TRUE(EqualImages(Filtered(image, 4, 6, 20.0F), Filtered(image, 5, 7, 20.0F)));
    EXPECT_TRUE(EqualImages(Filtered(image, 0, 2, 20.0F), Filtered(image, 1, 3, 20.0F)));
    EXPECT_TRUE(EqualImages(Filtered(image, 2, 0, 20.0F), image));
}

TEST(NLMeans, WithoutACandidate_ChangesNothing)
{
    tests::Random random(621);
    for (int const depth : tests::kFilteredDepths)
    {
        cv::Mat const image = tests::NoisyImage(random, {20, 20}, depth);
        EXPECT_TRUE(EqualImages(Filtered(image, 3, 1, 1e9F), image));
        EXPECT_TRUE(EqualImages(Filtered(image, 0, 0, 1e9F), image));
        cv::Mat const constant(20, 20, depth, cv::Scalar(77));
        for (float const h : {0.0F, -0.0F, kNaN, 1e-44F})
        {
            EXPECT_TRUE(EqualImages(Filtered(image, 3, 5, h), image)) << h;
            EXPECT_TRUE(EqualImages(Filtered(constant, 3, 5, h), constant)) << h;
        }
    }
}

TEST(NLMeans, OfInfiniteStrength_CountsAllAlike)
{
    cv::Mat const image = Draw<uchar>(
        {"123", //
         "4Z5", //
         "678"});
    // (1 + ... + 8 + 61) / 9 = 10.8
    for (float const h : {kInfinity, -kInfinity, 1e30F, 3e38F})
    {
        EXPECT_EQ(Filtered(image, 1, 3, h).at<uchar>(1, 1), 10) << h;
    }
}

TEST(NLMeans, OfNegativeStrength_CountsCandidatesThatHardlyDiffer)
{
    cv::Mat const image = Draw<uchar>(
        {"Z4Z", //
         "75Z", //
         "Z4Z"});
    // Steps of the exponent are cut: a difference of 1 makes -0.512, which is none, and one of 2 makes -1.024.
    // (4 + 5 + 4) / 3 = 4.3
    EXPECT_EQ(Filtered(image, 1, 3, -2000.0F).at<uchar>(1, 1), 4);
    // -0.98 for a difference of 2: (4 + 7 + 5 + 4) / 4 = 5.
    EXPECT_EQ(Filtered(image, 1, 3, -2100.0F).at<uchar>(1, 1), 5);
    EXPECT_TRUE(EqualImages(Filtered(image, 1, 3, -1.0F), image));
}

TEST(NLMeans, KeepsConstantImages)
{
    for (int const depth : tests::kFilteredDepths)
    {
        tests::Span const span = tests::SpanOf(depth);
        for (std::int64_t const value : {span.least, span.most, std::int64_t{0}, std::int64_t{100}})
        {
            cv::Mat const image(15, 40, depth, cv::Scalar(static_cast<double>(value)));
            for (float const h : {0.01F, 1.0F, 1e30F, -1.0F})
            {
                EXPECT_TRUE(EqualImages(Filtered(image, 3, 5, h), image)) << value;
                EXPECT_TRUE(EqualImages(Iterated(image, 3, 5, h, 2), image)) << value;
            }
        }
    }
}

TEST(NLMeans, ReplacesItsOutput)
{
    cv::Mat const image = Draw<uchar>(
        {"444", //
         "494", //
         "444"});
    cv::Mat const expected = Draw<uchar>({"444", "444", "444"});
    for (Operator const op : kOnePass)
    {
        for (cv::Mat dst : {cv::Mat(3, 3, CV_8UC1, cv::Scalar(7)), cv::Mat(5, 2, CV_32FC3), cv::Mat(3, 3, CV_16SC1)})
        {
            ASSERT_TRUE(op(image, 1, 3, 1.0F, dst));
            EXPECT_TRUE(EqualImages(dst, expected));
        }
        cv::Mat both = image.clone();
        ASSERT_TRUE(op(both, 1, 3, 1.0F, both));
        EXPECT_TRUE(EqualImages(both, expected));
    }
}

TEST(NLMeansIterative, CountsTheCentreMoreAndMore)
{
    cv::Mat const image = Draw<uchar>(
        {"444", //
         "494", //
         "444"});
    // One pass with a centre of 1 to e^-5 (0.0067) for each candidate: (9 + 32 * 0.0067) / 1.054 = 8.7
    EXPECT_EQ(Iterated(image, 1, 3, 1.0F, 1).at<uchar>(1, 1), 8);
    // The first of two counts it with 0.5 * (1 + 0.0067): (4.53 + 0.22) / (0.503 + 0.054) = 8.5,
    // the second (8 + 32 * 0.0183) / 1.147 = 7.5.
    EXPECT_EQ(Iterated(image, 1, 3, 1.0F, 2).at<uchar>(1, 1), 7);
    EXPECT_EQ(Filtered(image, 1, 3, 1.0F).at<uchar>(1, 1), 4);
}

TEST(NLMeansIterative, WithoutIterations_DoesNothing)
{
    cv::Mat const image = Draw<uchar>({"444", "494", "444"});
    for (int const iterations : {0, -1, std::numeric_limits<int>::min()})
    {
        cv::Mat dst(2, 2, CV_32FC1, cv::Scalar(7));
        tests::Snapshot const before(dst);
        EXPECT_TRUE(NLMeansIterative(image, 1, 3, 1.0F, iterations, dst));
        EXPECT_TRUE(before.IsUntouched());
    }
}

TEST(NLMeansIterative, WithoutACandidate_ChangesNothing)
{
    // The centre counts with its blend, so that the total is not 0; the pixel remains all the same.
    tests::Random random(622);
    for (int const depth : tests::kFilteredDepths)
    {
        cv::Mat const image = tests::NoisyImage(random, {20, 20}, depth, {0, 200});
        EXPECT_TRUE(EqualImages(Iterated(image, 3, 1, 10.0F, 1), image));
        EXPECT_TRUE(EqualImages(Iterated(image, 3, 5, 0.0F, 1), image));
    }
}

} // namespace

} // namespace morvane::filters
