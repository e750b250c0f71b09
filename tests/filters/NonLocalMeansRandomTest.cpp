// Non-local means against their direct form, bit for bit, on random images.
#include <morvane/filters/NonLocalMeans.h>

#include "support/ImageLiterals.h"
#include "support/NonLocalMeansOracle.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <cstdint>
#include <limits>
#include <string>

namespace morvane::filters
{

namespace
{

using tests::EqualImages;
using tests::FramedImage;
using tests::Likeness;
using tests::Random;
using tests::Span;

/// Filters an image and a view in place.
void ExpectFiltered(cv::Mat const & image, Likeness const & likeness)
{
    SCOPED_TRACE(LikenessCase(image, likeness));
    cv::Mat const expected = OracleMeans(image, likeness);
    cv::Mat dst;
    ASSERT_TRUE(NLMeans(image, likeness.patchSize, likeness.searchSize, likeness.h, dst));
    EXPECT_TRUE(EqualImages(dst, expected));
    FramedImage frame(image);
    ASSERT_TRUE(NLMeansParallel(frame.View(), likeness.patchSize, likeness.searchSize, likeness.h, frame.View()));
    EXPECT_TRUE(EqualImages(frame.View(), expected)) << "in place";
    EXPECT_TRUE(frame.IsFrameUntouched());
}

Span SpanIn(cv::Mat const & image)
{
    double least = 0.0;
    double most = 0.0;
    cv::minMaxLoc(image, &least, &most);
    return {static_cast<std::int64_t>(least), static_cast<std::int64_t>(most)};
}

TEST(NLMeansRandom, MatchTheDirectFormInAllSizesOfPatchAndSearch)
{
    Random random(630);
    for (int const depth : tests::kFilteredDepths)
    {
        for (int sizes = 0; sizes < 64; ++sizes)
        {
            cv::Mat const image = tests::NoisyImage(random, {13 + random.Below(8), 13 + random.Below(4)}, depth);
            ExpectFiltered(image, {sizes % 8, sizes / 8, SomeStrength(random, SpanIn(image))});
            if (HasFailure()) return;
        }
    }
}

TEST(NLMeansRandom, MatchTheDirectFormAtAllSidesOfSmallImages)
{
    Random random(631);
    for (int const depth : tests::kFilteredDepths)
    {
        for (int sides = 0; sides < 100; ++sides)
        {
            cv::Mat const image = tests::NoisyImage(random, {1 + sides % 10, 1 + sides / 10}, depth);
            ExpectFiltered(
                image, {1 + 2 * random.Below(2), 3 + 2 * random.Below(2), SomeStrength(random, SpanIn(image))});
            if (HasFailure()) return;
        }
    }
}

TEST(NLMeansRandom, MatchTheDirectFormAroundTheWidthsOfRegistersAndBands)
{
    Random random(632);
    for (int const depth : tests::kFilteredDepths)
    {
        for (int const side : {8, 16, 32, 64, 128})
        {
            for (int more = -2; more <= 6; ++more)
            {
                cv::Size const wide(side + more, 5 + random.Below(4));
                cv::Size const high(5 + random.Below(4), side + more);
                for (cv::Size const size : {wide, high})
                {
                    cv::Mat const image = tests::NoisyImage(random, size, depth);
                    ExpectFiltered(image, {1 + 2 * random.Below(2), 3, SomeStrength(random, SpanIn(image))});
                }
            }
            if (HasFailure()) return;
        }
    }
}

TEST(NLMeansRandom, MatchTheDirectFormWithEveryKindOfStrength)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr std::array strengths{0.0F,      -0.0F,
                                   1e-45F,    1e-38F,
                                   1e-30F,    0.001F,
                                   0.125F,    1.0F,
                                   3.7F,      100.0F,
                                   1e9F,      1e30F,
                                   3e38F,     infinity,
                                   -infinity, -1e-45F,
                                   -0.5F,     -1.0F,
                                   -5000.0F,  -1e9F,
                                   -1e30F,    std::numeric_limits<float>::quiet_NaN()};
    Random random(633);
    for (int const depth : tests::kFilteredDepths)
    {
        for (float const h : strengths)
        {
            for (Span const span : {tests::SpanOf(depth), Span{100, 103}})
            {
                ExpectFiltered(tests::NoisyImage(random, {14, 13}, depth, span), {3, 5, h});
            }
            if (HasFailure()) return;
        }
    }
}

TEST(NLMeansRandom, MatchTheDirectFormOnFewNumbersFarFromZero)
{
    Random random(634);
    for (int const depth : {CV_16U, CV_16S, CV_32S})
    {
        Span const all = tests::SpanOf(depth);
        for (int const range : {1, 3, 20, 255, 256})
        {
            for (std::int64_t const least : {all.least, std::int64_t{30000}, all.most - range})
            {
                cv::Mat const image = tests::NoisyImage(random, {17, 15}, depth, {least, least + range});
                ExpectFiltered(image, {3 + 2 * random.Below(2), 5, SomeStrength(random, {0, range})});
            }
        }
        if (HasFailure()) return;
    }
}

/// A line for SCOPED_TRACE.
std::string Passes(cv::Mat const & image, Likeness const & likeness, int iterations)
{
    return LikenessCase(image, likeness) + ", iterations " + std::to_string(iterations);
}

TEST(NLMeansIterativeRandom, MatchesPassesOfTheDirectForm)
{
    Random random(635);
    for (int const depth : tests::kFilteredDepths)
    {
        for (int round = 0; round < 25; ++round)
        {
            cv::Mat const image = tests::NoisyImage(random, {9 + random.Below(12), 9 + random.Below(9)}, depth);
            Likeness const likeness{random.Below(6), random.Below(6), SomeStrength(random, SpanIn(image))};
            int const iterations = 1 + round % 5;
            SCOPED_TRACE(Passes(image, likeness, iterations));
            cv::Mat const expected = OracleIteratedMeans(image, likeness, iterations);
            cv::Mat dst;
            ASSERT_TRUE(NLMeansIterative(image, likeness.patchSize, likeness.searchSize, likeness.h, iterations, dst));
            EXPECT_TRUE(EqualImages(dst, expected));
            FramedImage frame(image);
            ASSERT_TRUE(NLMeansIterative(
                frame.View(), likeness.patchSize, likeness.searchSize, likeness.h, iterations, frame.View()));
            EXPECT_TRUE(EqualImages(frame.View(), expected)) << "in place";
            EXPECT_TRUE(frame.IsFrameUntouched());
            if (HasFailure()) return;
        }
    }
}

TEST(NLMeansIterativeRandom, MatchesPassesOfTheDirectFormWithStrangeStrengths)
{
    Random random(636);
    for (float const h : {0.0F, -1.0F, -3000.0F, 1e30F, std::numeric_limits<float>::quiet_NaN()})
    {
        for (int const depth : tests::kFilteredDepths)
        {
            cv::Mat const image = tests::NoisyImage(random, {14, 11}, depth);
            Likeness const likeness{3, 5, h};
            SCOPED_TRACE(Passes(image, likeness, 3));
            cv::Mat dst;
            ASSERT_TRUE(NLMeansIterative(image, 3, 5, h, 3, dst));
            EXPECT_TRUE(EqualImages(dst, OracleIteratedMeans(image, likeness, 3)));
        }
    }
}

TEST(NLMeansRandom, FlippedImages_WhereAllSumsAreExact)
{
    // Of weights that are 1 each, and of small numbers, no sum rounds, in whatever order.
    Random random(637);
    for (int const depth : tests::kFilteredDepths)
    {
        cv::Mat const image = tests::NoisyImage(random, {23, 19}, depth, {0, 200});
        cv::Mat filtered;
        ASSERT_TRUE(NLMeans(image, 3, 7, std::numeric_limits<float>::infinity(), filtered));
        for (int const axis : {0, 1, -1})
        {
            cv::Mat flipped;
            cv::flip(image, flipped, axis);
            ASSERT_TRUE(NLMeans(flipped, 3, 7, std::numeric_limits<float>::infinity(), flipped));
            cv::flip(flipped, flipped, axis);
            EXPECT_TRUE(EqualImages(flipped, filtered));
        }
        cv::Mat transposed;
        ASSERT_TRUE(NLMeans(image.t(), 3, 7, std::numeric_limits<float>::infinity(), transposed));
        EXPECT_TRUE(EqualImages(transposed.t(), filtered));
    }
}

} // namespace

} // namespace morvane::filters
