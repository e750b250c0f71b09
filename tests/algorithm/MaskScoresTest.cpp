// Scores of masks, of which one byte for each element is read.
#include <morvane/algorithm/MatchingScores.h>

#include "support/AllTypes.h"
#include "support/AnyNumbers.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/ScoreOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <array>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::Draw;
using tests::Random;
using tests::Row;

constexpr std::array kElevationDepths{CV_8U, CV_16U, CV_16S, CV_32S, CV_32F};

/// What both scores answer and give.
struct Scores
{
    std::vector<bool> answers;
    double elevation = -99.0;
    double occupancy = -99.0;
};

Scores ScoresOf(cv::Mat const & e1, cv::Mat const & m1, cv::Mat const & e2, cv::Mat const & m2)
{
    Scores scores;
    scores.answers.push_back(score::NonEmptyElevationMatching(e1, m1, e2, m2, scores.elevation));
    scores.answers.push_back(score::OccupancyMatching(e1, m1, e2, m2, scores.occupancy));
    return scores;
}

/// The scores of two masks, with elevations that go together.
Scores ScoresOf(cv::Mat const & m1, cv::Mat const & m2)
{
    cv::Mat const elevation = cv::Mat::zeros(2, 2, CV_32FC1);
    return ScoresOf(elevation, m1, elevation, m2);
}

std::vector<bool> const kBothTrue(2, true);
std::vector<bool> const kBothFalse(2, false);

TEST(MaskScores, CountEqualMasksOf3AndMore)
{
    // 3 and 4 count; 1 and 2 are too small, and 5 and 6 differ.
    Scores const scores = ScoresOf(
        Draw<uchar>({"12345.", "....33"}), Draw<uchar>({
                                               "12346.",
                                               "3.5...",
                                           }));
    EXPECT_EQ(scores.answers, kBothTrue);
    EXPECT_EQ(scores.elevation, 2 * 16.0);
    // 3 has two bits; 4 has one, and two below it that are clear.
    EXPECT_EQ(scores.occupancy, 60.0 + 32.0);
}

TEST(MaskScores, OfOneMask_ScoreItsBits)
{
    auto const occupancyOf = [](uchar mask) {
        return ScoresOf(Row<uchar>({mask}), Row<uchar>({mask})).occupancy;
    };
    EXPECT_EQ(occupancyOf(0), 0.0);
    EXPECT_EQ(occupancyOf(1), 0.0);
    EXPECT_EQ(occupancyOf(2), 0.0);
    EXPECT_EQ(occupancyOf(3), 60.0);
    EXPECT_EQ(occupancyOf(0b10101010), 4 * 30.0 + 4);
    EXPECT_EQ(occupancyOf(0b10000000), 30.0 + 7);
    EXPECT_EQ(occupancyOf(0xFF), 240.0);
    for (int mask = 0; mask < 256; ++mask)
    {
        cv::Mat const image = Row<uchar>({static_cast<uchar>(mask)});
        EXPECT_EQ(ScoresOf(image, image).occupancy, tests::OracleScoresOfMasks(image, image).occupancy) << mask;
        EXPECT_EQ(ScoresOf(image, image).elevation, mask >= 3 ? 16.0 : 0.0) << mask;
    }
}

TEST(MaskScores, ReadTheLowByteOfEachElement)
{
    // 0x0105 and 0x0205 count as 5, 0x0502 as 2; each element once.
    cv::Mat const first = Row<ushort>({0x0105, 0x0502, 0x0300, 7});
    cv::Mat const second = Row<ushort>({0x0205, 0x0502, 0x0300, 7});
    EXPECT_EQ(ScoresOf(first, second).elevation, 32.0);
    EXPECT_EQ(ScoresOf(first, second).occupancy, 61.0 + 90.0);
    // The lowest byte of 3.0 as a float is 0.
    EXPECT_EQ(ScoresOf(Row<float>({3, 3}), Row<float>({3, 3})).elevation, 0.0);
    EXPECT_EQ(ScoresOf(Row<short>({-1, 3}), Row<short>({-1, 3})).occupancy, 240.0 + 60.0);
    // Of the first channel.
    EXPECT_EQ(ScoresOf(Row<cv::Vec2b>({{4, 3}, {5, 5}}), Row<cv::Vec2b>({{4, 9}, {5, 1}})).occupancy, 32.0 + 61.0);
    // Masks of two depths meet.
    EXPECT_EQ(ScoresOf(Row<int>({3, 4, 0x105}), Row<uchar>({3, 4, 5})).elevation, 48.0);
}

TEST(MaskScores, OfEmptyMasks_Are0)
{
    for (cv::Mat const & m2 : {cv::Mat(), Draw<uchar>({"345"})})
    {
        for (cv::Mat const & m1 : {cv::Mat(), cv::Mat(0, 3, CV_8UC1), cv::Mat(3, 0, CV_32SC1)})
        {
            Scores const scores = ScoresOf(m1, m2);
            EXPECT_EQ(scores.answers, kBothTrue);
            EXPECT_EQ(scores.elevation, 0.0);
            EXPECT_EQ(scores.occupancy, 0.0);
        }
    }
}

TEST(MaskScores, OfMasksOfTwoSizes_PairInRasterOrderAsFarAsBothGo)
{
    EXPECT_EQ(ScoresOf(Draw<uchar>({"345", "678"}), Draw<uchar>({"34", "56", "78"})).elevation, 96.0);
    EXPECT_EQ(ScoresOf(Draw<uchar>({"345", "678"}), Draw<uchar>({"34", "56"})).elevation, 64.0);
    EXPECT_EQ(ScoresOf(Draw<uchar>({"34"}), Draw<uchar>({"345", "678"})).elevation, 32.0);
    EXPECT_EQ(ScoresOf(Draw<uchar>({"34"}), cv::Mat()).elevation, 0.0);
}

TEST(MaskScores, LookAtElevationsForTheirSizeAndDepthAlone)
{
    cv::Mat const mask = Draw<uchar>({"345"});
    for (int const depth : kElevationDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        cv::Mat first(4, 3, depth);
        tests::FillBytes(first, 0xFF);
        // As many pixels of other values and another shape; of several channels; none at all.
        for (cv::Mat const & e2 :
             {cv::Mat(cv::Mat::zeros(2, 6, depth)), cv::Mat(cv::Mat::zeros(3, 4, CV_MAKETYPE(depth, 3)))})
        {
            Scores const scores = ScoresOf(first, mask, e2, mask);
            EXPECT_EQ(scores.answers, kBothTrue);
            EXPECT_EQ(scores.elevation, 48.0);
            EXPECT_EQ(scores.occupancy, 60.0 + 32.0 + 61.0);
        }
        EXPECT_EQ(ScoresOf(cv::Mat(0, 0, depth), mask, cv::Mat(0, 7, depth), mask).elevation, 48.0);
    }
}

TEST(MaskScoresRefusal, LeavesZeros)
{
    cv::Mat const mask = Draw<uchar>({"345"});
    auto const expectRefused = [](cv::Mat const & e1, cv::Mat const & m1, cv::Mat const & e2, cv::Mat const & m2) {
        Scores const scores = ScoresOf(e1, m1, e2, m2);
        EXPECT_EQ(scores.answers, kBothFalse);
        EXPECT_EQ(scores.elevation, 0.0);
        EXPECT_EQ(scores.occupancy, 0.0);
    };
    for (int const depth : kElevationDepths)
    {
        cv::Mat const elevation = cv::Mat::zeros(2, 2, depth);
        expectRefused(elevation, mask, cv::Mat::zeros(2, 3, depth), mask);
        expectRefused(elevation, mask, cv::Mat(0, 0, depth), mask);
        // Also when there is nothing to sum over.
        expectRefused(elevation, cv::Mat(), cv::Mat::zeros(2, 3, depth), cv::Mat());
        for (int const other : {CV_8U, CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F})
        {
            if (other != depth) expectRefused(elevation, mask, cv::Mat::zeros(2, 2, other), mask);
        }
        cv::Mat const cube(std::vector<int>{1, 1, 3}, CV_8UC1, cv::Scalar(5));
        expectRefused(elevation, cube, elevation, mask);
        expectRefused(elevation, mask, elevation, cube);
    }
    for (int const depth : {CV_8S, CV_64F, CV_16F})
    {
        expectRefused(cv::Mat(2, 2, depth), mask, cv::Mat(2, 2, depth), mask);
        expectRefused(cv::Mat(0, 0, depth), mask, cv::Mat(0, 0, depth), mask);
    }
}

TEST(MaskScoresRandom, AgreeWithThePlainForm)
{
    Random random(81004);
    for (int const depth : tests::kDepths)
    {
        for (int repeat = 0; repeat < 60; ++repeat)
        {
            cv::Size const size = tests::RandomSize(random);
            SCOPED_TRACE(tests::Case(depth, size, repeat));
            cv::Mat m1 = repeat % 2 == 0 ? tests::AnyNumbers(random, size, depth)
                                         : tests::RandomImage(random, size, depth, {0.2, 0.1, 9});
            cv::Mat m2 = m1.clone();
            if (repeat % 3 == 0) m2 = tests::RandomImage(random, tests::RandomSize(random), CV_8UC1, {0.2, 0.1, 9});
            if (repeat % 3 == 1 && !m1.empty()) m2.row(0).setTo(4);
            tests::FramedImage framed1(m1);
            tests::FramedImage framed2(m2);
            tests::OracleMaskScores const expected = tests::OracleScoresOfMasks(m1, m2);
            Scores const scores = ScoresOf(framed1.View(), framed2.View());
            ASSERT_EQ(scores.answers, kBothTrue);
            ASSERT_EQ(scores.elevation, expected.elevation);
            ASSERT_EQ(scores.occupancy, expected.occupancy);
        }
    }
}

} // namespace

} // namespace morvane::algorithm
