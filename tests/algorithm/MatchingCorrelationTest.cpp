// The search by correlation: how values are cut, which window is searched, which peaks become candidates.
#include <morvane/algorithm/TemplateMatching.h>

#include "support/ImageLiterals.h"
#include "support/SearchOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <limits>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::Draw;
using tests::Fields;
using tests::Find;
using tests::Outcome;
using tests::Prior;
using tests::Search;

constexpr double kRounding = 1e-3; // of the transforms inside the correlation
constexpr int kPeaks = 10;

/// A pixel as it counts: one pixel is correlated with another one of 2.
double WeightOf(int depth, double value)
{
    cv::Mat reference(1, 1, depth);
    tests::SetElement(reference, 0, 0, 0, value);
    Outcome const outcome = Find(Search{reference, Draw({"2"}, depth), Prior()});
    EXPECT_TRUE(outcome.answer);
    return outcome.best[tests::kScore] / 2.0;
}

TEST(MatchingCorrelation, CutsValues)
{
    for (int const depth : {CV_8U, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F})
    {
        SCOPED_TRACE(cv::depthToString(depth));
        EXPECT_NEAR(WeightOf(depth, 0), 0.0, kRounding);
        EXPECT_NEAR(WeightOf(depth, 1), 0.0, kRounding);
        for (int value = 2; value <= 8; ++value)
        {
            EXPECT_NEAR(WeightOf(depth, value), value, kRounding);
        }
        EXPECT_NEAR(WeightOf(depth, 9), 16.0, kRounding);
        EXPECT_NEAR(WeightOf(depth, 16), 16.0, kRounding);
        EXPECT_NEAR(WeightOf(depth, 17), 16.0, kRounding);
        EXPECT_NEAR(WeightOf(depth, 255), 16.0, kRounding);
    }
}

TEST(MatchingCorrelation, SaturatesAndRoundsToBytesFirst)
{
    for (int const depth : {CV_16U, CV_16S, CV_32S, CV_32F, CV_64F})
    {
        SCOPED_TRACE(cv::depthToString(depth));
        EXPECT_NEAR(WeightOf(depth, 256), 16.0, kRounding);
        EXPECT_NEAR(WeightOf(depth, 256 + 5), 16.0, kRounding);
        EXPECT_NEAR(WeightOf(depth, 32767), 16.0, kRounding);
    }
    for (int const depth : {CV_16S, CV_32S, CV_32F, CV_64F})
    {
        SCOPED_TRACE(cv::depthToString(depth));
        EXPECT_NEAR(WeightOf(depth, -1), 0.0, kRounding);
        EXPECT_NEAR(WeightOf(depth, -250), 0.0, kRounding);
    }
    for (int const depth : {CV_32F, CV_64F})
    {
        SCOPED_TRACE(cv::depthToString(depth));
        EXPECT_NEAR(WeightOf(depth, 1.375), 0.0, kRounding);
        EXPECT_NEAR(WeightOf(depth, 1.625), 2.0, kRounding);
        EXPECT_NEAR(WeightOf(depth, 8.375), 8.0, kRounding);
        EXPECT_NEAR(WeightOf(depth, 8.625), 16.0, kRounding);
    }
}

TEST(MatchingCorrelation, CutsTheMovingImageToo)
{
    for (int value = 0; value < 10; ++value)
    {
        cv::Mat const moving(1, 1, CV_8U, cv::Scalar(value));
        Outcome const outcome = Find(Search{Draw<uchar>({"9"}), moving, Prior()});
        double const weight = value < 2 ? 0.0 : value > 8 ? 16.0 : value;
        EXPECT_NEAR(outcome.best[tests::kScore], 16.0 * weight, kRounding);
    }
}

TEST(MatchingCorrelation, DividesByThePixelsOfTheTurnedImage)
{
    // 3 x 4 pixels have the diagonal 5.
    cv::Mat const moving = Draw<uchar>({"9..5", "....", "..9."});
    cv::Mat const reference = Draw<uchar>(
        {".......", //
         ".......", //
         ".9..5..", //
         ".......", //
         "...9...", //
         ".......", //
         "......."});
    Outcome const outcome = Find(Search{reference, moving, Prior()});
    ASSERT_TRUE(outcome.answer);
    EXPECT_NEAR(outcome.best[tests::kScore], (256.0 + 25.0 + 256.0) / 25.0, kRounding);
    EXPECT_EQ(outcome.best[tests::kAngle], 0.0);
    EXPECT_EQ(outcome.best[tests::kPositionX], 1.0);
    EXPECT_EQ(outcome.best[tests::kPositionY], 1.0);
    EXPECT_EQ(outcome.best[tests::kTranslationX], 0.0);
    EXPECT_EQ(outcome.best[tests::kTranslationY], 0.0);
    EXPECT_EQ(outcome.best[tests::kPeakX], 1.0);
    EXPECT_EQ(outcome.best[tests::kPeakY], 1.0);
}

TEST(MatchingCorrelation, CountsTranslationsFromTheDiagonalAsItIs)
{
    // 6 x 8 pixels have the diagonal 10 and turn in a square of 11, of which (1, 2) is the first pixel.
    cv::Mat moving = cv::Mat::zeros(6, 8, CV_8U);
    moving.at<uchar>(0, 0) = 9;
    cv::Mat reference = cv::Mat::zeros(22, 21, CV_8U);
    reference.at<uchar>(9, 9) = 9;
    Outcome const outcome = Find(Search{reference, moving, Prior()});
    ASSERT_TRUE(outcome.answer);
    EXPECT_NEAR(outcome.best[tests::kScore], 256.0 / 121.0, kRounding);
    EXPECT_EQ(outcome.best[tests::kPositionX], 8.0);
    EXPECT_EQ(outcome.best[tests::kPositionY], 7.0);
    // 21 / 2 - 5 is 5.5, 22 / 2 - 5 is 6.
    EXPECT_EQ(outcome.best[tests::kTranslationX], 3.0);
    EXPECT_EQ(outcome.best[tests::kTranslationY], 1.0);
}

TEST(MatchingCorrelation, AddsAMarginOfTheDiagonalTimesTheRatio)
{
    // The diagonal 5 times 0.5 is rounded up to 3, times 0.49 down to 2.
    cv::Mat const moving = Draw<uchar>({"....", "..9.", "...."});
    cv::Mat const reference = Draw<uchar>({"......", "..9...", "......", "......", "......"});
    for (double const ratio : {0.5, 0.49, 0.0})
    {
        SCOPED_TRACE(ratio);
        int const margin = ratio == 0.5 ? 3 : ratio == 0.49 ? 2 : 0;
        Prior prior;
        prior.ratio = ratio;
        Outcome const outcome = Find(Search{reference, moving, prior});
        ASSERT_TRUE(outcome.answer);
        // In the turned image, the pixel lies at (2, 2).
        EXPECT_NEAR(outcome.best[tests::kScore], margin == 0 ? 0.0 : 256.0 / 25.0, kRounding);
        if (margin == 0) continue;
        EXPECT_EQ(outcome.best[tests::kPositionX], margin);
        EXPECT_EQ(outcome.best[tests::kPositionY], margin - 1);
        EXPECT_EQ(outcome.best[tests::kTranslationX], 0.0);
        EXPECT_EQ(outcome.best[tests::kTranslationY], -1.0);
    }
}

TEST(MatchingCorrelation, CollectsTenPeaksTwoPixelsApart)
{
    Outcome const outcome = Find(Search{Draw<uchar>({"9.87..6...5"}), Draw<uchar>({"2"}), Prior()});
    ASSERT_TRUE(outcome.answer);
    ASSERT_EQ(outcome.queues.size(), 1U);
    std::vector<Fields> const & records = outcome.queues.front();
    ASSERT_EQ(records.size(), std::size_t{kPeaks});
    // The 8 lies within 2 pixels of the 9; the 7 does not, but the 6 lies 3 pixels from the 7.
    std::vector<int> const weights{16, 7, 6, 5, 0, 0, 0, 0, 0, 0};
    std::vector<int> const places{0, 3, 6, 10};
    for (std::size_t k = 0; k < kPeaks; ++k)
    {
        SCOPED_TRACE(k);
        EXPECT_NEAR(records[k][tests::kScore], 2.0 * weights[k], kRounding);
        EXPECT_EQ(records[k][tests::kAngle], tests::kNoScore);
        EXPECT_EQ(records[k][tests::kRatio], 1.0);
        EXPECT_EQ(records[k][tests::kReserved1], tests::kNoScore);
        EXPECT_EQ(records[k][tests::kReserved2], tests::kNoScore);
        if (k >= places.size()) continue;
        EXPECT_EQ(records[k][tests::kPositionX], places[k]);
        EXPECT_EQ(records[k][tests::kPositionY], 0.0);
        EXPECT_EQ(records[k][tests::kPeakX], places[k]);
        EXPECT_EQ(records[k][tests::kPeakY], 0.0);
        // 11 / 2 - 1 / 2 is 5.
        EXPECT_EQ(records[k][tests::kTranslationX], places[k] - 5);
        EXPECT_EQ(records[k][tests::kTranslationY], 0.0);
    }
}

TEST(MatchingCorrelation, CollectsTenPeaksOfASinglePosition)
{
    Outcome const outcome = Find(Search{Draw<uchar>({"4"}), Draw<uchar>({"9"}), Prior()});
    ASSERT_EQ(outcome.queues.size(), 1U);
    ASSERT_EQ(outcome.queues.front().size(), std::size_t{kPeaks});
    for (Fields const & record : outcome.queues.front())
    {
        EXPECT_NEAR(record[tests::kScore], 64.0, kRounding);
        EXPECT_EQ(record[tests::kPositionX], 0.0);
        EXPECT_EQ(record[tests::kPeakX], 0.0);
    }
}

TEST(MatchingCorrelation, CollectsTenPeaksOfNothing)
{
    Outcome const outcome = Find(Search{cv::Mat::zeros(9, 9, CV_8U), cv::Mat::zeros(3, 4, CV_8U), Prior()});
    ASSERT_TRUE(outcome.answer);
    ASSERT_EQ(outcome.queues.size(), 1U);
    ASSERT_EQ(outcome.queues.front().size(), std::size_t{kPeaks});
    for (Fields const & record : outcome.queues.front())
    {
        EXPECT_EQ(record[tests::kScore], 0.0);
        EXPECT_EQ(record[tests::kPositionX], 0.0);
        EXPECT_EQ(record[tests::kPositionY], 0.0);
    }
    EXPECT_EQ(outcome.best[tests::kScore], 0.0);
}

TEST(MatchingCorrelation, EmptiesTheQueuesFirst)
{
    CandidateQueues queues(3);
    for (auto & queue : queues)
    {
        TemplateMatchingInfo record;
        record.score = 1e9;
        queue.push(record);
    }
    Search search{Draw<uchar>({"4"}), Draw<uchar>({"9"}), Prior()};
    search.queues = queues;
    Outcome const outcome = Find(search);
    ASSERT_EQ(outcome.queues.size(), 1U);
    ASSERT_EQ(outcome.queues.front().size(), std::size_t{kPeaks});
    EXPECT_NEAR(outcome.queues.front().front()[tests::kScore], 64.0, kRounding);
    search.algo = ExpectedPosition;
    search.reference = Draw<int>({"4"});
    search.moving = Draw<int>({"9"});
    EXPECT_EQ(Find(search).queues, std::vector<std::vector<Fields>>(1));
}

} // namespace

} // namespace morvane::algorithm
