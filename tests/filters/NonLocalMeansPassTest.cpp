// One pass by itself: its parameters, its centre, and the same bytes from all registers.
#include "filters/NonLocalMeansPass.h"

#include "support/ImageLiterals.h"
#include "support/NonLocalMeansOracle.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <cmath>

namespace morvane::filters::nlmeans_internals
{

namespace
{

using tests::EqualImages;
using tests::Likeness;
using tests::Random;
using tests::Span;

TEST(NLMeansParameters, FollowFromTheSizes)
{
    NLMeansParameters const parameters(3, 7);
    EXPECT_EQ(parameters.margin, 4);
    EXPECT_EQ(parameters.patchRadius, 1);
    EXPECT_EQ(parameters.searchRadius, 3);
    EXPECT_EQ(parameters.tableStep, 0.0009765625F);
    EXPECT_EQ(parameters.patchNormalisation, 1.0F / 9.0F);

    NLMeansParameters const even(4, 20);
    EXPECT_EQ(even.margin, 12);
    EXPECT_EQ(even.patchRadius, 2);
    EXPECT_EQ(even.searchRadius, 10);
    EXPECT_EQ(even.patchNormalisation, 1.0F / 25.0F);

    NLMeansParameters const none(0, 0);
    EXPECT_EQ(none.margin, 0);
    EXPECT_EQ(none.patchRadius, 0);
    EXPECT_EQ(none.searchRadius, 0);
    EXPECT_EQ(none.patchNormalisation, 1.0F);
}

TEST(NLMeansParameters, HaveTheWeightsOfAllSteps)
{
    NLMeansParameters const parameters(3, 7);
    ASSERT_EQ(parameters.weightTable.size(), 8192U);
    EXPECT_EQ(parameters.weightTable[0], 1.0F);
    EXPECT_EQ(parameters.weightTable[1], static_cast<float>(std::exp(-1.0 / 1024.0)));
    EXPECT_EQ(parameters.weightTable[1024], static_cast<float>(std::exp(-1.0)));
    EXPECT_EQ(parameters.weightTable[8191], static_cast<float>(std::exp(-8191.0 / 1024.0)));
    EXPECT_GT(parameters.weightTable[8191], 0.0F);
}

/// Filters on one thread and on several.
template <class T>
void ExpectPass(cv::Mat const & image, Likeness const & likeness, float centreBlend)
{
    SCOPED_TRACE(LikenessCase(image, likeness));
    NLMeansParameters const parameters(likeness.patchSize, likeness.searchSize);
    cv::Mat const expected = OracleMeans(image, likeness, centreBlend);
    cv::Mat dst;
    ASSERT_TRUE(NLMeansPass<T>(parameters, image, likeness.h, dst, centreBlend));
    EXPECT_TRUE(EqualImages(dst, expected));
    ASSERT_TRUE(NLMeansPassParallel<T>(parameters, image, likeness.h, dst, centreBlend));
    EXPECT_TRUE(EqualImages(dst, expected));
}

template <class T>
void ExpectPasses(Random & random)
{
    int const depth = cv::traits::Depth<T>::value;
    for (float const centreBlend : {0.0F, 0.1F, 1.0F / 3.0F, 0.5F, 0.9F, 1.0F})
    {
        for (Span const span : {tests::SpanOf(depth), Span{0, 200}})
        {
            cv::Mat const image = tests::NoisyImage(random, {17, 15}, depth, span);
            ExpectPass<T>(image, {3, 5, SomeStrength(random, span)}, centreBlend);
        }
    }
}

TEST(NLMeansPass, BlendsTheCentre)
{
    Random random(670);
    ExpectPasses<uchar>(random);
    ExpectPasses<ushort>(random);
    ExpectPasses<short>(random);
    ExpectPasses<int>(random);
}

/// Has OpenCV say, until the end of the scope, that the machine has no registers beyond the ordinary ones.
class PlainMachine
{
public:
    PlainMachine()
        : m_before(cv::useOptimized())
    {
        cv::setUseOptimized(false);
    }
    ~PlainMachine() { cv::setUseOptimized(m_before); }
    PlainMachine(PlainMachine const &) = delete;
    PlainMachine & operator=(PlainMachine const &) = delete;

private:
    bool m_before;
};

TEST(NLMeansPass, GivesTheSameBytesOnAPlainMachine)
{
    PlainMachine const plain;
    ASSERT_FALSE(cv::checkHardwareSupport(CV_CPU_AVX2));
    Random random(671);
    for (int round = 0; round < 3; ++round)
    {
        ExpectPasses<uchar>(random);
        ExpectPasses<ushort>(random);
        ExpectPasses<short>(random);
        ExpectPasses<int>(random);
    }
}

} // namespace

} // namespace morvane::filters::nlmeans_internals
