// The number of threads must not be seen in the result.
#include <morvane/filters/NonLocalMeans.h>

#include "support/ImageLiterals.h"
#include "support/NonLocalMeansOracle.h"
#include "support/RandomImages.h"
#include "support/ThreadCounts.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <vector>

namespace morvane::filters
{

namespace
{

using tests::EqualImages;
using tests::Random;

/// Sizes of which no number of threads gets even shares.
std::vector<cv::Size> const kSizes{{7, 5}, {33, 7}, {19, 41}, {67, 67}, {131, 9}, {9, 131}};

TEST(NonLocalMeansThreads, NLMeansParallel_GivesTheBytesOfOneThread)
{
    Random random(650);
    for (int const depth : tests::kFilteredDepths)
    {
        for (cv::Size const size : kSizes)
        {
            cv::Mat const image = tests::NoisyImage(random, size, depth);
            // Sums are exact, and rounded for the wide types.
            for (float const h : {30.0F, 1e8F})
            {
                cv::Mat expected;
                ASSERT_TRUE(NLMeans(image, 3, 5, h, expected));
                for (int const threads : tests::kThreadCounts)
                {
                    tests::ThreadCount const count(threads);
                    cv::Mat dst;
                    ASSERT_TRUE(NLMeansParallel(image, 3, 5, h, dst));
                    ASSERT_TRUE(EqualImages(dst, expected)) << threads;
                    ASSERT_TRUE(NLMeans(image, 3, 5, h, dst));
                    ASSERT_TRUE(EqualImages(dst, expected)) << threads;
                    cv::Mat both = image.clone();
                    ASSERT_TRUE(NLMeansParallel(both, 3, 5, h, both));
                    ASSERT_TRUE(EqualImages(both, expected)) << threads << ", in place";
                }
            }
        }
    }
}

TEST(NonLocalMeansThreads, NLMeansIterative_GivesTheBytesOfOneThread)
{
    Random random(651);
    for (int const depth : tests::kFilteredDepths)
    {
        cv::Mat const image = tests::NoisyImage(random, {35, 37}, depth);
        cv::Mat expected;
        {
            tests::ThreadCount const count(1);
            ASSERT_TRUE(NLMeansIterative(image, 3, 5, 30.0F, 3, expected));
        }
        for (int const threads : tests::kThreadCounts)
        {
            tests::ThreadCount const count(threads);
            cv::Mat dst;
            ASSERT_TRUE(NLMeansIterative(image, 3, 5, 30.0F, 3, dst));
            ASSERT_TRUE(EqualImages(dst, expected)) << threads;
        }
    }
}

TEST(NonLocalMeansThreads, MultiScale_GivesTheBytesOfOneThread)
{
    Random random(652);
    for (int const depth : tests::kFilteredDepths)
    {
        cv::Mat const image = tests::NoisyImage(random, {41, 43}, depth);
        for (auto const filter : {MSD_NLMeans, MSD_NLMeansParallel})
        {
            cv::Mat expected(image.size(), image.type());
            {
                tests::ThreadCount const count(1);
                ASSERT_TRUE(filter(image, 3, 5, 30.0F, 3, expected));
            }
            for (int const threads : tests::kThreadCounts)
            {
                tests::ThreadCount const count(threads);
                cv::Mat dst(image.size(), image.type(), cv::Scalar(1));
                ASSERT_TRUE(filter(image, 3, 5, 30.0F, 3, dst));
                ASSERT_TRUE(EqualImages(dst, expected)) << threads;
            }
        }
    }
}

} // namespace

} // namespace morvane::filters
