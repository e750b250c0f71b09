// The overlap of two masks.
#include <morvane/algorithm/ImageUtilities.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Rows.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cmath>
#include <limits>
#include <tuple>

namespace morvane::algorithm
{

namespace
{

using tests::Draw;
using tests::Random;
using tests::Row;

constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();

TEST(computeOverlap, CountsWhatCoincides)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        cv::Mat const a = Draw(
            {"11..", //
             "111.", //
             "...."},
            depth);
        cv::Mat const b = Draw({"11", "11"}, depth);
        EXPECT_EQ(computeOverlap(a, b, 0, 0, 0, 0, 1), 4.0);
        EXPECT_EQ(computeOverlap(a, b, 1, 0, 0, 0, 1), 3.0);
        EXPECT_EQ(computeOverlap(a, b, 2, 0, 0, 0, 1), 1.0);
        EXPECT_EQ(computeOverlap(a, b, 3, 0, 0, 0, 1), 0.0);
        EXPECT_EQ(computeOverlap(a, b, 0, 1, 0, 0, 1), 2.0);
        EXPECT_EQ(computeOverlap(a, b, 0, 2, 0, 0, 1), 0.0);
        EXPECT_EQ(computeOverlap(a, b, -1, 0, 0, 0, 1), 2.0);
        EXPECT_EQ(computeOverlap(a, b, 0, -1, 0, 0, 1), 2.0);
        EXPECT_EQ(computeOverlap(a, b, -1, -1, 0, 0, 1), 1.0);
    }
}

TEST(computeOverlap, TakesPositionsAgainstEachOther)
{
    cv::Mat const a = Draw<uchar>({"1...", "....", "..1."});
    cv::Mat const b = Draw<uchar>({"1.", "..", ".1"});
    // The second mask starts at x1 - x2, y1 - y2 of the first.
    EXPECT_EQ(computeOverlap(a, b, 1, 0, 0, 0, 1), 1.0);
    EXPECT_EQ(computeOverlap(a, b, 7, -3, 6, -3, 1), 1.0);
    EXPECT_EQ(computeOverlap(a, b, 7, -3, 7, -3, 1), 1.0);
    EXPECT_EQ(computeOverlap(a, b, 3, 5, 1, 3, 1), 1.0);
    EXPECT_EQ(computeOverlap(a, b, 1, 3, 3, 5, 1), 0.0);
    EXPECT_EQ(computeOverlap(b, a, 1, 3, 3, 5, 1), 1.0);
    EXPECT_EQ(computeOverlap(a, b, kMost, kLeast, kMost - 1, kLeast, 1), 1.0);
}

TEST(computeOverlap, DividesByTheNorm)
{
    cv::Mat const a = Draw<uchar>({"111", "111"});
    EXPECT_EQ(computeOverlap(a, a, 0, 0, 0, 0, 6), 1.0);
    EXPECT_EQ(computeOverlap(a, a, 1, 0, 0, 0, 6), 4.0 / 6.0);
    EXPECT_EQ(computeOverlap(a, a, 0, 0, 0, 0, 7), 6.0 / 7.0);
    EXPECT_EQ(computeOverlap(a, a, 0, 0, 0, 0, -2), -3.0);
    EXPECT_EQ(computeOverlap(a, a, 0, 0, 0, 0, kMost), 6.0 / 2147483647.0);
    EXPECT_EQ(computeOverlap(a, a, 0, 0, 0, 0, kLeast), 6.0 / -2147483648.0);
    EXPECT_EQ(computeOverlap(a, a, 0, 0, 0, 0, 0), HUGE_VAL);
    cv::Mat const none = cv::Mat::zeros(2, 3, CV_8UC1);
    EXPECT_TRUE(std::isnan(computeOverlap(a, none, 0, 0, 0, 0, 0)));
    EXPECT_EQ(computeOverlap(a, none, 0, 0, 0, 0, 6), 0.0);
}

TEST(computeOverlap, OfMasksThatDoNotMeet_Is0)
{
    cv::Mat const a = Draw<uchar>({"111", "111"});
    cv::Mat const b = Draw<uchar>({"11", "11", "11"});
    for (int const norm : {1, 0})
    {
        EXPECT_EQ(computeOverlap(a, b, 3, 0, 0, 0, norm), 0.0);
        EXPECT_EQ(computeOverlap(a, b, -2, 0, 0, 0, norm), 0.0);
        EXPECT_EQ(computeOverlap(a, b, 0, 2, 0, 0, norm), 0.0);
        EXPECT_EQ(computeOverlap(a, b, 0, -3, 0, 0, norm), 0.0);
        EXPECT_EQ(computeOverlap(a, cv::Mat(), 0, 0, 0, 0, norm), 0.0);
        EXPECT_EQ(computeOverlap(cv::Mat(), b, 0, 0, 0, 0, norm), 0.0);
        EXPECT_EQ(computeOverlap(cv::Mat(), cv::Mat(), 0, 0, 0, 0, norm), 0.0);
    }
    EXPECT_EQ(computeOverlap(a, b, 2, 1, 0, 0, 1), 1.0);
    EXPECT_EQ(computeOverlap(a, b, -1, -2, 0, 0, 1), 1.0);
}

TEST(computeOverlap, OfPositionsFarApart_Is0)
{
    // Further apart than an int holds: in 32 bits, the masks would lie beside each other.
    cv::Mat const a = Draw<uchar>({"111", "111"});
    for (int const far : {kMost, kMost - 1, kLeast, kLeast + 1})
    {
        EXPECT_EQ(computeOverlap(a, a, far, 0, 0, 0, 1), 0.0);
        EXPECT_EQ(computeOverlap(a, a, 0, far, 0, 0, 1), 0.0);
        EXPECT_EQ(computeOverlap(a, a, 0, 0, far, 0, 1), 0.0);
        EXPECT_EQ(computeOverlap(a, a, 0, 0, 0, far, 1), 0.0);
    }
    EXPECT_EQ(computeOverlap(a, a, kMost, 0, kLeast, 0, 1), 0.0);
    EXPECT_EQ(computeOverlap(a, a, kLeast, 0, kMost, 0, 1), 0.0);
    EXPECT_EQ(computeOverlap(a, a, 0, kMost, 0, kLeast, 1), 0.0);
    EXPECT_EQ(computeOverlap(a, a, 0, kLeast, 0, kMost, 1), 0.0);
}

TEST(computeOverlap, ComparesBits)
{
    EXPECT_EQ(computeOverlap(Row<uchar>({1, 2, 3, 255, 0}), Row<uchar>({2, 2, 5, 128, 255}), 0, 0, 0, 0, 1), 3.0);
    EXPECT_EQ(computeOverlap(Row<ushort>({256, 257, 32768}), Row<ushort>({255, 255, 65535}), 0, 0, 0, 0, 1), 2.0);
    EXPECT_EQ(computeOverlap(Row<short>({-1, -32768, 1}), Row<short>({1, -1, -2}), 0, 0, 0, 0, 1), 2.0);
    EXPECT_EQ(computeOverlap(Row<int>({-1, 1 << 30}), Row<int>({kLeast, kMost}), 0, 0, 0, 0, 1), 2.0);
    // 1 and 2 have no bit of their exponents in common, 1 and 1.5 have.
    EXPECT_EQ(computeOverlap(Row<float>({1.0F, 1.0F}), Row<float>({2.0F, 1.5F}), 0, 0, 0, 0, 1), 1.0);
    EXPECT_EQ(computeOverlap(Row<double>({1.0, 1.0}), Row<double>({2.0, 1.5}), 0, 0, 0, 0, 1), 1.0);
}

TEST(computeOverlap, DoesNotCountASignAlone)
{
    // What -1 and -2 have in common is -0, which is 0.
    EXPECT_EQ(computeOverlap(Row<float>({-1.0F, -1.0F}), Row<float>({-2.0F, -1.0F}), 0, 0, 0, 0, 1), 1.0);
    EXPECT_EQ(computeOverlap(Row<double>({-1.0, -1.0}), Row<double>({-2.0, -1.0}), 0, 0, 0, 0, 1), 1.0);
}

TEST(computeOverlap, PassesTheExceptionsOfOpenCVOn_WhereMasksMeet)
{
    cv::Mat const a = Draw<uchar>({"111", "111"});
    for (cv::Mat const & b : {Draw<ushort>({"111", "111"}), Draw<cv::Vec3b>({"111", "111"})})
    {
        EXPECT_THROW(std::ignore = computeOverlap(a, b, 0, 0, 0, 0, 1), cv::Exception);
        EXPECT_EQ(computeOverlap(a, b, 3, 0, 0, 0, 1), 0.0);
        EXPECT_EQ(computeOverlap(b, b, 3, 0, 0, 0, 1), 0.0);
    }
    cv::Mat half(2, 3, CV_16FC1);
    tests::FillBytes(half, 0);
    EXPECT_THROW(std::ignore = computeOverlap(half, half, 0, 0, 0, 0, 1), cv::Exception);
    cv::Mat const colour = Draw<cv::Vec3b>({"111", "111"});
    EXPECT_THROW(std::ignore = computeOverlap(colour, colour, 0, 0, 0, 0, 1), cv::Exception);
}

TEST(computeOverlapRandom, AgreesWithThePlainForm)
{
    Random random(8471);
    for (int const depth : {CV_8U, CV_16U, CV_16S, CV_32S})
    {
        for (int repeat = 0; repeat < 150; ++repeat)
        {
            cv::Mat const a = tests::RandomImage(random, tests::RandomSize(random, 15), depth, {0.3, 0.2, 7});
            cv::Mat const b = tests::RandomImage(random, tests::RandomSize(random, 15), depth, {0.3, 0.2, 7});
            int const dx = random.Below(30) - 15;
            int const dy = random.Below(30) - 15;
            int const x2 = random.Below(2000) - 1000;
            int const y2 = random.Below(2000) - 1000;
            int common = 0;
            for (int y = 0; y < a.rows; ++y)
            {
                for (int x = 0; x < a.cols; ++x)
                {
                    if (!cv::Rect({}, b.size()).contains({x - dx, y - dy})) continue;
                    auto const one = static_cast<int>(tests::ElementAt(a, y, x));
                    auto const other = static_cast<int>(tests::ElementAt(b, y - dy, x - dx));
                    if ((one & other) != 0) ++common;
                }
            }
            SCOPED_TRACE(tests::Case(depth, a.size(), dx));
            tests::FramedImage framedA(a);
            tests::FramedImage framedB(b);
            ASSERT_EQ(computeOverlap(framedA.View(), framedB.View(), x2 + dx, y2 + dy, x2, y2, 9), common / 9.0);
        }
    }
}

} // namespace

} // namespace morvane::algorithm
