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

// The order of the numbers of a record.
enum Field : int
{
    Score,
    Angle,
    TranslationX,
    TranslationY,
    PositionX,
    PositionY,
    Ratio,
    Reserved1,
    Reserved2,
    PeakX,
    PeakY
};

constexpr double kRounding = 1e-3; // of the transforms inside the correlation
constexpr int kPeaks = 10;

/// A pixel as it counts: one pixel is correlated with another one of 2.
double WeightOf(int depth, double value)
{
    cv::Mat reference(1, 1, depth);
    tests::SetElement(reference, 0, 0, 0, value);
    Outcome const outcome = Find(Search{reference, Draw({"2"}, depth), Prior()});
    EXPECT_TRUE(outcome.answer);
    return outcome.best[Score] / 2.0;
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
        EXPECT_NEAR(outcome.best[Score], 16.0 * weight, kRounding);
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
    EXPECT_NEAR(outcome.best[Score], (256.0 + 25.0 + 256.0) / 25.0, kRounding);
    EXPECT_EQ(outcome.best[Angle], 0.0);
    EXPECT_EQ(outcome.best[PositionX], 1.0);
    EXPECT_EQ(outcome.best[PositionY], 1.0);
    EXPECT_EQ(outcome.best[TranslationX], 0.0);
    EXPECT_EQ(outcome.best[TranslationY], 0.0);
    EXPECT_EQ(outcome.best[PeakX], 1.0);
    EXPECT_EQ(outcome.best[PeakY], 1.0);
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
    EXPECT_NEAR(outcome.best[Score], 256.0 / 121.0, kRounding);
    EXPECT_EQ(outcome.best[PositionX], 8.0);
    EXPECT_EQ(outcome.best[PositionY], 7.0);
    // 21 / 2 - 5 is 5.5, 22 / 2 - 5 is 6.
    EXPECT_EQ(outcome.best[TranslationX], 3.0);
    EXPECT_EQ(outcome.best[TranslationY], 1.0);
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
        EXPECT_NEAR(outcome.best[Score], margin == 0 ? 0.0 : 256.0 / 25.0, kRounding);
        if (margin == 0) continue;
        EXPECT_EQ(outcome.best[PositionX], margin);
        EXPECT_EQ(outcome.best[PositionY], margin - 1);
        EXPECT_EQ(outcome.best[TranslationX], 0.0);
        EXPECT_EQ(outcome.best[TranslationY], -1.0);
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
        EXPECT_NEAR(records[k][Score], 2.0 * weights[k], kRounding);
        EXPECT_EQ(records[k][Angle], tests::kNoScore);
        EXPECT_EQ(records[k][Ratio], 1.0);
        EXPECT_EQ(records[k][Reserved1], tests::kNoScore);
        EXPECT_EQ(records[k][Reserved2], tests::kNoScore);
        if (k >= places.size()) continue;
        EXPECT_EQ(records[k][PositionX], places[k]);
        EXPECT_EQ(records[k][PositionY], 0.0);
        EXPECT_EQ(records[k][PeakX], places[k]);
        EXPECT_EQ(records[k][PeakY], 0.0);
        // 11 / 2 - 1 / 2 is 5.
        EXPECT_EQ(records[k][TranslationX], places[k] - 5);
        EXPECT_EQ(records[k][TranslationY], 0.0);
    }
}

TEST(MatchingCorrelation, CollectsTenPeaksOfASinglePosition)
{
    Outcome const outcome = Find(Search{Draw<uchar>({"4"}), Draw<uchar>({"9"}), Prior()});
    ASSERT_EQ(outcome.queues.size(), 1U);
    ASSERT_EQ(outcome.queues.front().size(), std::size_t{kPeaks});
    for (Fields const & record : outcome.queues.front())
    {
        EXPECT_NEAR(record[Score], 64.0, kRounding);
        EXPECT_EQ(record[PositionX], 0.0);
        EXPECT_EQ(record[PeakX], 0.0);
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
        EXPECT_EQ(record[Score], 0.0);
        EXPECT_EQ(record[PositionX], 0.0);
        EXPECT_EQ(record[PositionY], 0.0);
    }
    EXPECT_EQ(outcome.best[Score], 0.0);
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
    EXPECT_NEAR(outcome.queues.front().front()[Score], 64.0, kRounding);
    search.algo = ExpectedPosition;
    search.reference = Draw<int>({"4"});
    search.moving = Draw<int>({"9"});
    EXPECT_EQ(Find(search).queues, std::vector<std::vector<Fields>>(1));
}

// A reference of 31 x 31, a moving image of one pixel that is expected at some place: every position is its own.
constexpr int kSide = 31;

/// Tells whether a position is searched, and expects the peak to be counted from the window's first position.
bool IsSearched(Prior const & prior, cv::Point place, cv::Point first)
{
    cv::Mat reference = cv::Mat::zeros(kSide, kSide, CV_8U);
    reference.at<uchar>(place) = 9;
    Outcome const outcome = Find(Search{reference, Draw<uchar>({"9"}), prior});
    EXPECT_TRUE(outcome.answer);
    if (outcome.best[Score] < 1.0) return false;
    EXPECT_NEAR(outcome.best[Score], 256.0, kRounding);
    EXPECT_EQ(outcome.best[PositionX], place.x);
    EXPECT_EQ(outcome.best[PositionY], place.y);
    EXPECT_EQ(outcome.best[PeakX], place.x - first.x);
    EXPECT_EQ(outcome.best[PeakY], place.y - first.y);
    EXPECT_EQ(outcome.best[TranslationX], place.x - kSide / 2);
    EXPECT_EQ(outcome.best[TranslationY], place.y - kSide / 2);
    return true;
}

/// Expects a window that reaches from its first position to its last.
void ExpectWindow(Prior const & prior, cv::Point first, cv::Point last)
{
    EXPECT_TRUE(IsSearched(prior, first, first));
    EXPECT_TRUE(IsSearched(prior, last, first));
    EXPECT_TRUE(IsSearched(prior, {first.x, last.y}, first));
    cv::Rect const image(0, 0, kSide, kSide);
    for (cv::Point const & beyond :
         {cv::Point(first.x - 1, first.y), cv::Point(first.x, first.y - 1), cv::Point(last.x + 1, last.y),
          cv::Point(last.x, last.y + 1)})
    {
        if (!image.contains(beyond)) continue;
        EXPECT_FALSE(IsSearched(prior, beyond, first)) << beyond;
    }
}

Prior Expecting(cv::Point_<double> const & place, double range)
{
    Prior prior;
    prior.movOnRef = place;
    prior.range = range;
    // These have no part in it.
    prior.refOnRef = {3.0, -200.0};
    prior.translation = {100.0, 200.0};
    return prior;
}

TEST(MatchingCorrelationWindow, OfARangeOf5_Is11Wide)
{
    ExpectWindow(Expecting({15.0, 15.0}, 5.0), {11, 11}, {21, 21});
    ExpectWindow(Expecting({15.0, 13.0}, 5.0), {11, 9}, {21, 19});
}

TEST(MatchingCorrelationWindow, IsTwiceTheRangeRoundedAndMadeOdd)
{
    ExpectWindow(Expecting({15.0, 15.0}, 1.0), {15, 15}, {17, 17});  // 14.5 is rounded up, 2 is made 3
    ExpectWindow(Expecting({15.0, 15.0}, 1.25), {14, 14}, {16, 16}); // 14.25, and 2.5 is rounded up
    ExpectWindow(Expecting({15.0, 15.0}, 1.5), {14, 14}, {16, 16});
    ExpectWindow(Expecting({15.0, 15.0}, 1.7), {14, 14}, {16, 16}); // 13.8, 3.4
    ExpectWindow(Expecting({15.0, 15.0}, 1.8), {14, 14}, {18, 18}); // 13.7, 3.6 becomes 4, then 5
    ExpectWindow(Expecting({15.0, 15.0}, 0.2), {15, 15}, {15, 15}); // 0.4 becomes 0, then 1
    ExpectWindow(Expecting({15.0, 15.0}, 0.5), {15, 15}, {15, 15});
}

TEST(MatchingCorrelationWindow, CutsTheStationOnTheReferenceTowards0)
{
    ExpectWindow(Expecting({15.9, 14.99}, 1.5), {14, 13}, {16, 15});
    ExpectWindow(Expecting({-0.9, 3.5}, 1.5), {0, 2}, {1, 4});
}

TEST(MatchingCorrelationWindow, StandsOffByTheMarginAndTheStationOnTheMovingImage)
{
    Prior prior = Expecting({15.0, 15.0}, 1.5);
    prior.movOnMov = {2.0, -3.0};
    ExpectWindow(prior, {12, 17}, {14, 19});
    // A turn by 180 degrees about (0.5, 0.5) puts the station at (-1, 4).
    prior.center = 180.0;
    ExpectWindow(prior, {15, 10}, {17, 12});
    prior.center = 0.0;
    prior.movOnMov = {2.25, -2.5};
    // 12.75 - 1.5 + 0.5 is 11.75, 17.5 - 1 is 16.5.
    ExpectWindow(prior, {12, 17}, {14, 19});
    // With a margin of 2, the expected place moves along.
    prior.ratio = 2.0;
    prior.movOnMov = {0.0, 0.0};
    cv::Mat reference = cv::Mat::zeros(kSide, kSide, CV_8U);
    reference.at<uchar>(16, 14) = 9;
    Outcome const outcome = Find(Search{reference, Draw<uchar>({"9"}), prior});
    ASSERT_TRUE(outcome.answer);
    EXPECT_NEAR(outcome.best[Score], 256.0, kRounding);
    EXPECT_EQ(outcome.best[PositionX], 16.0);
    EXPECT_EQ(outcome.best[PositionY], 18.0);
    EXPECT_EQ(outcome.best[PeakX], 0.0);
    EXPECT_EQ(outcome.best[PeakY], 2.0);
}

TEST(MatchingCorrelationWindow, IsCutAtTheBorders)
{
    // From -3.5, rounded to -4, 11 wide.
    ExpectWindow(Expecting({1.0, 1.0}, 5.0), {0, 0}, {6, 6});
    ExpectWindow(Expecting({28.0, 29.0}, 5.0), {24, 25}, {30, 30});
    ExpectWindow(Expecting({15.0, 15.0}, 1000.0), {0, 0}, {30, 30});
}

TEST(MatchingCorrelationWindow, WithoutARange_IsAll)
{
    for (double const range : {0.0, -1.0, -0.5, -100.0})
    {
        ExpectWindow(Expecting({1000.0, -1000.0}, range), {0, 0}, {30, 30});
    }
}

TEST(MatchingCorrelationWindow, Outside_Fails)
{
    cv::Mat const reference(kSide, kSide, CV_8U, cv::Scalar(9));
    struct Case
    {
        cv::Point_<double> place;
        bool isOutside;
    };
    // Within 3: from 2.5 before, rounded, 7 wide.
    for (Case const & tried :
         {Case{{-4.0, 15.0}, true}, Case{{-3.0, 15.0}, false}, Case{{15.0, -4.0}, true}, Case{{15.0, -3.0}, false},
          Case{{33.0, 15.0}, true}, Case{{32.0, 15.0}, false}, Case{{15.0, 33.0}, true}, Case{{15.0, 32.0}, false},
          Case{{-1e6, 1e6}, true}, Case{{1e9, 15.0}, true}, Case{{15.0, -1e9}, true}})
    {
        SCOPED_TRACE(tried.place);
        Search const search{reference, Draw<uchar>({"9"}), Expecting(tried.place, 3.0)};
        Outcome const outcome = Find(search);
        tests::ExpectSameOutcome(outcome, tests::OracleFind(search));
        EXPECT_EQ(outcome.answer, !tried.isOutside);
        EXPECT_EQ(outcome.best[Score] == tests::kNoScore, tried.isOutside);
        ASSERT_EQ(outcome.queues.size(), 1U);
        EXPECT_EQ(outcome.queues.front().empty(), tried.isOutside);
    }
}

TEST(MatchingCorrelationWindow, OfNumbersThatNoImageHas_IsOutside)
{
    cv::Mat const reference(kSide, kSide, CV_8U, cv::Scalar(9));
    double const nan = std::numeric_limits<double>::quiet_NaN();
    for (double const place : {2147483647.0, -2147483648.0, 1e300, -1e300, nan})
    {
        SCOPED_TRACE(place);
        Prior prior = Expecting({place, place}, 3.0);
        prior.ratio = 2.0;
        EXPECT_FALSE(Find(Search{reference, Draw<uchar>({"9"}), prior}).answer);
        prior.movOnMov = {place, place};
        prior.movOnRef = {15.0, 15.0};
        EXPECT_FALSE(Find(Search{reference, Draw<uchar>({"9"}), prior}).answer);
    }
}

} // namespace

} // namespace morvane::algorithm
