// Non-local means where sums of patch differences reach the ends of types, and at the ends of pixels' types.
#include <morvane/filters/NonLocalMeans.h>

#include "support/ImageLiterals.h"
#include "support/NonLocalMeansOracle.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

namespace morvane::filters
{

namespace
{

using tests::EqualImages;
using tests::Likeness;
using tests::Random;
using tests::Span;

constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();

void ExpectFiltered(cv::Mat const & image, Likeness const & likeness)
{
    SCOPED_TRACE(LikenessCase(image, likeness));
    cv::Mat const expected = OracleMeans(image, likeness);
    cv::Mat dst;
    ASSERT_TRUE(NLMeans(image, likeness.patchSize, likeness.searchSize, likeness.h, dst));
    EXPECT_TRUE(EqualImages(dst, expected));
    ASSERT_TRUE(NLMeansParallel(image, likeness.patchSize, likeness.searchSize, likeness.h, dst));
    EXPECT_TRUE(EqualImages(dst, expected));
}

/// A chessboard of the least and the most of a span: patches beside each other differ everywhere. There is noise in some
/// pixels, up to a part of the span.
cv::Mat
Chessboard(Random & random, cv::Size size, int depth, Span const & span, double noisyShare, double amplitude = 1.0)
{
    cv::Mat image(size, depth);
    auto const range = static_cast<double>(span.most - span.least);
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            double share = (x + y) % 2;
            if (random.Chance(noisyShare)) share = std::abs(share - amplitude * random.Unit());
            double const value = static_cast<double>(span.least) + std::floor(share * range + 0.5);
            tests::SetElement(image, y, x, 0, value);
        }
    }
    // Both ends are there, also with noise.
    tests::SetElement(image, 0, 0, 0, static_cast<double>(span.least));
    tests::SetElement(image, 0, 1, 0, static_cast<double>(span.most));
    return image;
}

/// Filters chessboards of a range, and gives the largest sum of the differences of two patches; 0 if no pixel has it.
std::int64_t FilterRange(Random & random, int depth, std::int64_t range, int patchSize)
{
    Span const all = tests::SpanOf(depth);
    if (range < 1 || range > all.most - all.least) return 0;
    int const margin = tests::MarginOf({patchSize, 3, 1.0F});
    cv::Size const size(2 * margin + 9 + random.Below(3), 2 * margin + 3);
    std::int64_t const start = random.Chance(0.5) ? all.least : all.most - range;
    for (double const noise : {0.0, 0.1, 0.9})
    {
        cv::Mat const image = Chessboard(random, size, depth, {start, start + range}, noise);
        ExpectFiltered(image, {patchSize, 3, SomeStrength(random, {0, range})});
    }
    return range * patchSize * patchSize;
}

/// Filters with sums on both sides of an end, close to it.
void ExpectFilteredAround(Random & random, std::int64_t end)
{
    int below = 0;
    int above = 0;
    for (int const patchSize : {1, 3, 5, 7, 17})
    {
        for (int const depth : tests::kFilteredDepths)
        {
            for (int const more : {-1, 0, 1, 2})
            {
                std::int64_t const pixels = std::int64_t{patchSize} * patchSize;
                std::int64_t const sum = FilterRange(random, depth, end / pixels + more, patchSize);
                below += sum > 0 && sum <= end ? 1 : 0;
                above += sum > end ? 1 : 0;
            }
        }
    }
    EXPECT_GT(below, 5);
    EXPECT_GT(above, 5);
}

TEST(NLMeansLimits, SumsOnBothSidesOfTheEndsOfTypes)
{
    Random random(640);
    constexpr std::array<std::int64_t, 6> ends{255, 32767, 65535, 1 << 24, 1 << 25, std::int64_t{1} << 31};
    for (std::int64_t const end : ends)
    {
        SCOPED_TRACE(end);
        ExpectFilteredAround(random, end);
        if (HasFailure()) return;
    }
}

TEST(NLMeansLimits, SumsThatRoundALittle)
{
    Random random(645);
    int shown = 0;
    for (double const excess : {1.01, 1.05, 1.1, 1.15, 1.3, 1.9})
    {
        for (int const patchSize : {3, 5, 7, 17})
        {
            for (int const depth : {CV_16U, CV_32S})
            {
                double const range = excess * 16777216.0 / (patchSize * patchSize);
                if (depth == CV_16U && range > 65535.0) continue;
                Span const span{3, static_cast<std::int64_t>(range)};
                int const margin = tests::MarginOf({patchSize, 3, 1.0F});
                cv::Size const size(2 * margin + 25, 2 * margin + 600 / patchSize / patchSize + 6);
                cv::Mat const image = Chessboard(random, size, depth, span, 0.95, 0.01);
                Likeness const likeness{patchSize, 3, static_cast<float>(range / 3.3)};
                ExpectFiltered(image, likeness);
                shown += EqualImages(MeansOfExactSums(image, likeness), OracleMeans(image, likeness)) ? 0 : 1;
            }
        }
        if (HasFailure()) return;
    }
    EXPECT_GT(shown, 5);
}

TEST(NLMeansLimits, LargePatches)
{
    Random random(641);
    for (int const patchSize : {15, 17, 21, 31})
    {
        for (int const depth : tests::kFilteredDepths)
        {
            for (double const noise : {0.05, 1.0})
            {
                int const margin = tests::MarginOf({patchSize, 3, 1.0F});
                cv::Size const size(2 * margin + 7, 2 * margin + 4);
                Span const all = tests::SpanOf(depth);
                ExpectFiltered(Chessboard(random, size, depth, all, noise), {patchSize, 3, SomeStrength(random, all)});
                Span const narrow{all.most - 100, all.most};
                ExpectFiltered(
                    Chessboard(random, size, depth, narrow, noise), {patchSize, 3, SomeStrength(random, narrow)});
            }
            if (HasFailure()) return;
        }
    }
}

TEST(NLMeansLimits, LargeSearchSquares)
{
    Random random(642);
    for (int const depth : tests::kFilteredDepths)
    {
        for (int const searchSize : {21, 25, 41})
        {
            int const margin = tests::MarginOf({3, searchSize, 1.0F});
            cv::Mat const image = tests::NoisyImage(random, {2 * margin + 9, 2 * margin + 2}, depth, {0, 250});
            ExpectFiltered(image, {3, searchSize, SomeStrength(random, {0, 250})});
        }
    }
}

TEST(NLMeansLimits, RoundedSumsOf32Bits)
{
    Random random(643);
    for (int round = 0; round < 40; ++round)
    {
        cv::Mat image(12 + random.Below(5), 12 + random.Below(9), CV_32SC1);
        for (int i = 0; i < image.rows * image.cols; ++i)
        {
            image.at<int>(i / image.cols, i % image.cols) =
                static_cast<int>(random.Next() & 0xFFFFFFFFU) >> random.Below(3);
        }
        int const patchSize = 1 + 2 * random.Below(4);
        ExpectFiltered(image, {patchSize, 5, 1e8F * static_cast<float>(1 + random.Below(40))});
        if (HasFailure()) return;
    }
}

TEST(NLMeansLimits, ExtremesOf32Bits)
{
    // The difference of both is 2^32 - 1, which no int holds: 2 in units of 2^31, which is far from alike with h = 2^28.
    cv::Mat image(3, 3, CV_32SC1, cv::Scalar(kMost));
    image.at<int>(1, 1) = kLeast;
    cv::Mat dst;
    ASSERT_TRUE(NLMeans(image, 1, 3, 268435456.0F, dst));
    EXPECT_TRUE(EqualImages(dst, image));
    // (8 * 2^31 - 2^31) / 9
    ASSERT_TRUE(NLMeans(image, 1, 3, 1e30F, dst));
    EXPECT_EQ(dst.at<int>(1, 1), static_cast<int>(15032385536.0F / 9.0F));
    // Rounded up to 2^31, which becomes the largest number.
    image.at<int>(1, 1) = kMost - 1;
    ASSERT_TRUE(NLMeans(image, 1, 3, 1e30F, dst));
    EXPECT_EQ(dst.at<int>(1, 1), kMost);
    image.setTo(kLeast);
    image.at<int>(1, 1) = kLeast + 1;
    ASSERT_TRUE(NLMeans(image, 1, 3, 1e30F, dst));
    EXPECT_EQ(dst.at<int>(1, 1), kLeast);
}

TEST(NLMeansLimits, PixelsWhoseMeanRoundsBeyondTheirTypeKeepTheirValue)
{
    Random random(644);
    for (int const depth : {CV_16U, CV_16S})
    {
        int beyond = 0;
        for (float const h : {0.3F, 0.7F, 2.1F, 5.3F, 13.7F})
        {
            // The largest number, and the one below it here and there.
            auto const most = static_cast<double>(tests::SpanOf(depth).most);
            cv::Mat image(29, 32, depth, cv::Scalar(most));
            image.setTo(cv::Scalar(most - 1.0), tests::RandomMask(random, image.size(), 0.1));
            Likeness const likeness{1, 21, h};
            ExpectFiltered(image, likeness);
            beyond += CountMeansBeyond(image, likeness);
        }
        EXPECT_GT(beyond, 0) << cv::depthToString(depth);
    }
}

} // namespace

} // namespace morvane::filters
