// The search without parameters: its angles and reports, the margin, what is kept.
#include <morvane/algorithm/TemplateMatching.h>

#include "support/ImageLiterals.h"
#include "support/SearchOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <algorithm>
#include <functional>
#include <limits>
#include <tuple>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::AutoSearch;
using tests::Draw;
using tests::FieldsOf;
using tests::Find;
using tests::OracleFind;
using tests::Outcome;

AutoSearch SmallAutoSearch()
{
    AutoSearch search;
    search.reference = tests::SmallSearch().reference;
    search.moving = tests::SmallSearch().moving;
    return search;
}

/// Runs the function that callers have, and notes what it tells.
Outcome FullAuto(AutoSearch const & search, bool answer)
{
    Outcome outcome;
    TemplateMatchingInfo best = search.best;
    auto const progress = [&](float share) {
        outcome.reports.push_back(share);
        outcome.bestAtReports.push_back(FieldsOf(best));
        return answer;
    };
    outcome.answer = TemplateMatchingFullAuto(search.reference, search.moving, progress, best);
    outcome.best = FieldsOf(best);
    return outcome;
}

TEST(MatchingFullAuto, Tries121AnglesAndReportsEachDone)
{
    Outcome const outcome = FullAuto(SmallAutoSearch(), true);
    ASSERT_TRUE(outcome.answer);
    ASSERT_EQ(outcome.reports.size(), 123U);
    EXPECT_EQ(outcome.reports.front(), 0.0F);
    for (int k = 1; k <= 121; ++k)
    {
        EXPECT_EQ(outcome.reports[static_cast<std::size_t>(k)], static_cast<float>(std::min(k / 120.0, 1.0)));
    }
    EXPECT_EQ(outcome.reports.back(), 1.0F);
    EXPECT_EQ(outcome.bestAtReports[1][tests::kAngle], -180.0);
    tests::ExpectSameOutcome(outcome, OracleFind(SmallAutoSearch()));
}

TEST(MatchingFullAuto, CannotBeEnded)
{
    tests::ExpectSameOutcome(FullAuto(SmallAutoSearch(), false), FullAuto(SmallAutoSearch(), true));
}

TEST(MatchingFullAuto, TriesBothEndsOfTheAngles)
{
    struct Case
    {
        double center;
        double range;
        double step;
        std::vector<double> angles;
        std::vector<float> reports;
    };
    for (Case const & tried :
         {Case{10.0, 20.0, 10.0, {-10.0, 0.0, 10.0, 20.0, 30.0}, {0.0F, 0.25F, 0.5F, 0.75F, 1.0F, 1.0F, 1.0F}},
          Case{0.0, 10.0, 15.0, {-10.0, 5.0}, {0.0F, 1.0F, 1.0F, 1.0F}},
          Case{45.0, 0.0, 1.0, {45.0}, {0.0F, 1.0F, 1.0F}},
          Case{0.0, 1.0, 0.75, {-1.0, -0.25, 0.5}, {0.0F, 1.0F / 3.0F, 2.0F / 3.0F, 1.0F, 1.0F}},
          Case{0.0, -1.0, 1.0, {}, {0.0F, 1.0F}}})
    {
        SCOPED_TRACE(tried.range);
        AutoSearch search = SmallAutoSearch();
        search.center = tried.center;
        search.range = tried.range;
        search.step = tried.step;
        search.forget = true;
        Outcome const outcome = Find(search);
        EXPECT_TRUE(outcome.answer);
        EXPECT_EQ(outcome.reports, tried.reports);
        ASSERT_EQ(outcome.bestAtReports.size(), tried.angles.size() + 2);
        for (std::size_t i = 0; i < tried.angles.size(); ++i)
        {
            EXPECT_EQ(outcome.bestAtReports[i + 1][tests::kAngle], tried.angles[i]);
        }
        tests::ExpectSameOutcome(outcome, OracleFind(search));
    }
}

TEST(MatchingFullAuto, TakesTheMarginFromTheBest)
{
    // A pixel at (2, 1); the turned image is a square of 5 with the pixel at (2, 2).
    AutoSearch search;
    search.reference = Draw<int>({"......", "..9...", "......", "......", "......"});
    search.moving = Draw<int>({"....", "..9.", "...."});
    search.range = 0.0;
    EXPECT_EQ(search.best.ratio, 1.0);
    for (double const ratio : {1.0, 0.5, 0.49, 2.0})
    {
        SCOPED_TRACE(ratio);
        int const margin = ratio == 1.0 ? 5 : ratio == 0.5 ? 3 : ratio == 2.0 ? 10 : 2;
        search.best.ratio = ratio;
        Outcome const outcome = Find(search);
        ASSERT_TRUE(outcome.answer);
        tests::Fields expected = FieldsOf(search.best);
        expected[tests::kScore] = 16.0;
        expected[tests::kAngle] = 0.0;
        expected[tests::kTranslationX] = 0.0;
        expected[tests::kTranslationY] = -1.0;
        expected[tests::kPositionX] = margin;
        expected[tests::kPositionY] = margin - 1;
        EXPECT_EQ(outcome.best, expected);
    }
}

TEST(MatchingFullAuto, ReplacesTheBestWithAHigherScoreOnly)
{
    AutoSearch search = SmallAutoSearch();
    double const score = Find(search).best[tests::kScore];
    ASSERT_GT(score, 0.0);
    search.best.angle = 7.0;
    search.best.reserved1 = 1.0;
    search.best.peakX = 3.0;
    search.best.peakY = 4.0;
    search.best.image = search.moving;
    for (double const before : {score, 1e9})
    {
        search.best.score = before;
        EXPECT_EQ(Find(search).best, FieldsOf(search.best));
    }
    search.best.score = score - 1.0;
    Outcome const outcome = Find(search);
    EXPECT_EQ(outcome.best[tests::kScore], score);
    // Reserved numbers and the peak are no search's without peaks.
    EXPECT_EQ(outcome.best[tests::kReserved1], 1.0);
    EXPECT_EQ(outcome.best[tests::kPeakX], 3.0);
    EXPECT_EQ(outcome.best[tests::kPeakY], 4.0);
    tests::ExpectSameOutcome(outcome, OracleFind(search));
}

TEST(MatchingFullAuto, OfAMovingImageLargerThanThePaddedReference_FindsNothing)
{
    AutoSearch search = SmallAutoSearch();
    search.best.ratio = 0.0;
    search.reference = Draw<int>({"4455", "4555", "3666"});
    Outcome const outcome = Find(search);
    EXPECT_TRUE(outcome.answer);
    EXPECT_EQ(outcome.reports.size(), 123U);
    EXPECT_EQ(outcome.best, FieldsOf(search.best));
}

TEST(MatchingFullAuto, OfAnotherMode_FailsAtTheFirstAngle)
{
    AutoSearch search = SmallAutoSearch();
    for (int const mode : {1, 2, -1})
    {
        search.mode = mode;
        Outcome const outcome = Find(search);
        EXPECT_FALSE(outcome.answer);
        EXPECT_EQ(outcome.reports, std::vector<float>{0.0F});
        EXPECT_EQ(outcome.best, FieldsOf({}));
    }
}

TEST(MatchingFullAuto, OfOtherTypes_Fails)
{
    for (int const type : {CV_8U, CV_16U, CV_16S, CV_64F, CV_8S, CV_16F, CV_32SC2})
    {
        SCOPED_TRACE(cv::typeToString(type));
        AutoSearch search = SmallAutoSearch();
        search.reference = cv::Mat::zeros(9, 9, type);
        search.moving = cv::Mat::zeros(3, 4, type);
        Outcome const outcome = FullAuto(search, true);
        EXPECT_FALSE(outcome.answer);
        EXPECT_EQ(outcome.reports, std::vector<float>{0.0F});
        EXPECT_EQ(outcome.best, FieldsOf({}));
    }
}

TEST(MatchingFullAuto, OfAMarginOrStepsThatLeadNowhere_Fails)
{
    double const infinity = std::numeric_limits<double>::infinity();
    double const nan = std::numeric_limits<double>::quiet_NaN();
    for (double const ratio : {-1.0, -0.2, 1e9, 4e8, infinity, nan})
    {
        SCOPED_TRACE(ratio);
        AutoSearch search = SmallAutoSearch();
        search.best.ratio = ratio;
        EXPECT_FALSE(Find(search).answer);
        EXPECT_FALSE(FullAuto(search, true).answer);
        EXPECT_EQ(Find(search).best[tests::kScore], tests::kNoScore);
    }
    for (double const step : {0.0, -3.0, 1e-20, nan})
    {
        SCOPED_TRACE(step);
        AutoSearch search = SmallAutoSearch();
        search.step = step;
        EXPECT_FALSE(Find(search).answer);
        EXPECT_EQ(Find(search).best, FieldsOf({}));
    }
    for (double const range : {infinity, nan})
    {
        AutoSearch search = SmallAutoSearch();
        search.range = range;
        EXPECT_FALSE(Find(search).answer);
        search = SmallAutoSearch();
        search.center = range;
        EXPECT_FALSE(Find(search).answer);
    }
}

TEST(MatchingFullAuto, WithoutAProgress_Throws)
{
    AutoSearch const search = SmallAutoSearch();
    TemplateMatchingInfo best;
    EXPECT_THROW(
        std::ignore = TemplateMatchingFullAuto(search.reference, search.moving, nullptr, best), std::bad_function_call);
    EXPECT_EQ(FieldsOf(best), FieldsOf({}));
}

} // namespace

} // namespace morvane::algorithm
