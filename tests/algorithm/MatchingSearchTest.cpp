// The searches with parameters: angles, reports, what is kept.
#include <morvane/algorithm/TemplateMatching.h>

#include "support/ImageLiterals.h"
#include "support/SearchOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cmath>
#include <limits>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::Draw;
using tests::FieldsOf;
using tests::Find;
using tests::kNoScore;
using tests::OracleFind;
using tests::Outcome;
using tests::Search;
using tests::SmallSearch;

/// The angle of each step.
std::vector<double> AnglesOf(Search search)
{
    search.forget = true;
    Outcome const outcome = Find(search);
    EXPECT_TRUE(outcome.answer);
    std::vector<double> angles;
    for (std::size_t report = 1; report + 1 < outcome.bestAtReports.size(); ++report)
    {
        angles.push_back(outcome.bestAtReports[report][tests::kAngle]);
    }
    return angles;
}

TEST(MatchingSearch, TurnsByStepsThatGrow)
{
    Search search = SmallSearch();
    search.prior.center = 10.0;
    search.prior.orientationRange = 15.0;
    search.prior.orientationStep = 5.0;
    std::vector<double> const expected{-5.0, 0.0, 10.0, 25.0, 45.0, 70.0};
    for (int const algo : {0, 1})
    {
        search.algo = algo;
        EXPECT_EQ(AnglesOf(search), expected);
        EXPECT_EQ(Find(search).queues.size(), expected.size());
    }
    search.mode = 0;
    EXPECT_EQ(AnglesOf(search), expected);
}

TEST(MatchingSearch, MakesAsManyStepsAsFitInTheRange)
{
    struct Case
    {
        double range;
        double step;
        std::size_t count;
    };
    for (auto const & [range, step, count] :
         {Case{0.0, 1.0, 1}, Case{0.2, 1.0, 1}, Case{0.7, 1.0, 1}, Case{0.75, 1.0, 2}, Case{1.25, 1.0, 3},
          Case{1.2, 1.0, 2}, Case{-7.0, 1.0, 1}, Case{7.0, -1.0, 1}, Case{1.0, 0.1, 20}, Case{0.0, 0.0, 1}})
    {
        SCOPED_TRACE(range);
        Search search = SmallSearch();
        search.prior.orientationRange = range;
        search.prior.orientationStep = step;
        EXPECT_EQ(Find(search).queues.size(), count);
        // Two more reports, of the begin and the end.
        EXPECT_EQ(Find(search).reports.size(), count + 2);
        tests::ExpectSameOutcome(Find(search), OracleFind(search));
    }
}

TEST(MatchingSearch, ReportsTheShareBeforeTheStep)
{
    Search search = SmallSearch();
    search.prior.orientationRange = 10.0;
    search.prior.orientationStep = 5.0;
    std::vector<float> const expected{0.0F, 0.0F, 0.25F, 0.5F, 0.75F, 1.0F};
    for (int const algo : {0, 1})
    {
        search.algo = algo;
        EXPECT_EQ(Find(search).reports, expected);
    }
    search.mode = 0;
    EXPECT_EQ(Find(search).reports, expected);
    search.prior.orientationStep = 7.0;
    EXPECT_EQ(
        Find(search).reports,
        (std::vector<float>{0.0F, 0.0F, static_cast<float>(1.0 / 3.0), static_cast<float>(2.0 / 3.0), 1.0F}));
}

TEST(MatchingSearch, EndedAtAStep_KeepsTheBestSoFarAndIsDone)
{
    Search search = SmallSearch();
    search.prior.center = 40.0;
    search.prior.orientationRange = 10.0;
    search.prior.orientationStep = 5.0;
    for (int const algo : {0, 1})
    {
        search.algo = algo;
        search.stopAt = 1;
        Outcome const outcome = Find(search);
        EXPECT_TRUE(outcome.answer);
        EXPECT_EQ(outcome.reports, (std::vector<float>{0.0F, 0.0F, 1.0F}));
        EXPECT_GT(outcome.best[tests::kScore], 0.0);
        EXPECT_EQ(outcome.best[tests::kAngle], 30.0);
        ASSERT_EQ(outcome.queues.size(), 4U);
        EXPECT_EQ(outcome.queues[0].size(), algo == 0 ? 10U : 0U);
        EXPECT_TRUE(outcome.queues[1].empty());
        search.stopAt = 3;
        EXPECT_EQ(Find(search).reports, (std::vector<float>{0.0F, 0.0F, 0.25F, 0.5F, 1.0F}));
        tests::ExpectSameOutcome(Find(search), OracleFind(search));
    }
}

TEST(MatchingSearch, IgnoresTheAnswersToTheFirstAndTheLastReport)
{
    Search search = SmallSearch();
    search.prior.orientationRange = 10.0;
    search.prior.orientationStep = 5.0;
    Outcome const whole = Find(search);
    for (int const stopAt : {0, 4, 5})
    {
        search.stopAt = stopAt;
        tests::ExpectSameOutcome(Find(search), whole);
    }
}

TEST(MatchingSearch, ReplacesTheBestWithAHigherScoreOnly)
{
    Search search = SmallSearch();
    for (int const algo : {0, 1})
    {
        search.algo = algo;
        search.best = {};
        Outcome const found = Find(search);
        ASSERT_GT(found.best[tests::kScore], 0.0);
        search.best.ratio = 0.125;
        search.best.reserved1 = 5.0;
        search.best.reserved2 = 6.0;
        search.best.angle = 77.0;
        search.best.peakX = -3.0;
        for (double const score :
             {found.best[tests::kScore], 1e9, std::numeric_limits<double>::infinity(),
              std::numeric_limits<double>::quiet_NaN()})
        {
            search.best.score = score;
            auto expected = FieldsOf(search.best);
            auto actual = Find(search).best;
            // NaN is equal to nothing.
            if (std::isnan(score)) expected[tests::kScore] = actual[tests::kScore] = 0.0;
            EXPECT_EQ(actual, expected);
        }
        search.best.score = std::nextafter(found.best[tests::kScore], 0.0);
        auto expected = found.best;
        expected[tests::kRatio] = 0.125;
        expected[tests::kReserved1] = 5.0;
        expected[tests::kReserved2] = 6.0;
        EXPECT_EQ(Find(search).best, expected);
    }
}

TEST(MatchingSearch, TakesNoPeakFromTheSearchesWithoutCorrelation)
{
    Search search = SmallSearch();
    search.best.peakX = 5.0;
    search.best.peakY = 6.0;
    search.algo = 1;
    EXPECT_EQ(Find(search).best[tests::kPeakX], kNoScore);
    EXPECT_EQ(Find(search).best[tests::kPeakY], kNoScore);
    search.mode = 0;
    EXPECT_EQ(Find(search).best[tests::kPeakX], kNoScore);
    search.algo = 0;
    search.mode = 1;
    EXPECT_GE(Find(search).best[tests::kPeakX], 0.0);
}

TEST(MatchingSearch, LeavesTheImageOfTheBestAlone)
{
    Search const search = SmallSearch();
    TemplateMatchingInfo best;
    best.image = Draw<uchar>({"12"});
    auto const * const data = best.image.data;
    CandidateQueues queues;
    OpenCV_algos algo = Correlation;
    ASSERT_TRUE(TemplateMatchingFullManual(
        search.reference, search.moving, ParametersOf(search.prior), [](float) { return true; }, best, queues, algo));
    EXPECT_GT(best.score, 0.0);
    EXPECT_EQ(best.image.data, data);
    EXPECT_TRUE(queues.at(0).top().image.empty());
}

TEST(MatchingSearch, ReadsTheNumbersInPixelsAlone)
{
    Search const search = SmallSearch();
    matching::TM_Parameters parameters = ParametersOf(search.prior);
    matching::RelativePositionningInfos other(50.0, 90.0, 10.0, 5.0, 6.0, 0.5);
    parameters.SetRelativePositionning(other);
    parameters.SetImageInfos({3.0, 4.0, search.prior.ratio});
    for (int const number : {0, 1})
    {
        auto algo = static_cast<OpenCV_algos>(number);
        TemplateMatchingInfo best;
        CandidateQueues queues;
        ASSERT_TRUE(TemplateMatchingFullManual(
            search.reference, search.moving, parameters, [](float) { return true; }, best, queues, algo));
        Search same = search;
        same.algo = number;
        EXPECT_EQ(FieldsOf(best), OracleFind(same).best);
        EXPECT_EQ(queues.size(), 1U);
        EXPECT_EQ(algo, number);
    }
}

} // namespace

} // namespace morvane::algorithm
