// The search by correlation: which window is searched.
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

// A reference of 31 x 31, a moving image of one pixel that is expected at some place: every position is its own.
constexpr int kSide = 31;

/// Tells whether a position is searched, and expects the peak to be counted from the window's first position.
bool IsSearched(Prior const & prior, cv::Point place, cv::Point first)
{
    cv::Mat reference = cv::Mat::zeros(kSide, kSide, CV_8U);
    reference.at<uchar>(place) = 9;
    Outcome const outcome = Find(Search{reference, Draw<uchar>({"9"}), prior});
    EXPECT_TRUE(outcome.answer);
    if (outcome.best[tests::kScore] < 1.0) return false;
    EXPECT_NEAR(outcome.best[tests::kScore], 256.0, kRounding);
    EXPECT_EQ(outcome.best[tests::kPositionX], place.x);
    EXPECT_EQ(outcome.best[tests::kPositionY], place.y);
    EXPECT_EQ(outcome.best[tests::kPeakX], place.x - first.x);
    EXPECT_EQ(outcome.best[tests::kPeakY], place.y - first.y);
    EXPECT_EQ(outcome.best[tests::kTranslationX], place.x - kSide / 2);
    EXPECT_EQ(outcome.best[tests::kTranslationY], place.y - kSide / 2);
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
    EXPECT_NEAR(outcome.best[tests::kScore], 256.0, kRounding);
    EXPECT_EQ(outcome.best[tests::kPositionX], 16.0);
    EXPECT_EQ(outcome.best[tests::kPositionY], 18.0);
    EXPECT_EQ(outcome.best[tests::kPeakX], 0.0);
    EXPECT_EQ(outcome.best[tests::kPeakY], 2.0);
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
        EXPECT_EQ(outcome.best[tests::kScore] == tests::kNoScore, tried.isOutside);
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
