// The searches with parameters that callers have: what each changes, and reports that fail.
#include <morvane/algorithm/TemplateMatching.h>

#include "support/SearchOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <functional>
#include <stdexcept>
#include <tuple>

namespace morvane::algorithm
{

namespace
{

using tests::FieldsOf;
using tests::FindBy;
using tests::kNoScore;
using tests::OracleFind;
using tests::Outcome;
using tests::Search;
using tests::SmallSearch;

constexpr auto kFullManual = &TemplateMatchingFullManual;
constexpr auto kAutomatic = &TemplateMatchingAutomatic;
constexpr auto kOnlyRotation = &TemplateMatchingOnlyRotation;
constexpr auto kOnlyTranslation = &TemplateMatchingOnlyTransation;

TEST(MatchingFunctions, ChangeOrientationsAndRanges)
{
    Search given = SmallSearch();
    given.prior.center = 30.0;
    given.prior.orientationRange = 12.0;
    given.prior.orientationStep = 4.0;
    given.prior.range = 2.0;
    given.forget = true;
    Search automatic = given;
    automatic.prior.center = 0.0;
    automatic.prior.orientationRange = 180.0;
    automatic.prior.orientationStep = 2.0;
    automatic.prior.range = -1.0;
    Search rotation = given;
    rotation.prior.center = 0.0;
    rotation.prior.orientationRange = 180.0;
    rotation.prior.orientationStep = 1.0;
    rotation.prior.range = 1.0;
    Search translation = given;
    translation.prior.orientationRange = 0.0;
    translation.prior.orientationStep = 1.0;
    translation.prior.range = -1.0;
    struct Case
    {
        tests::SearchFunction function;
        Search const & changed;
        std::size_t steps;
        double firstAngle;
    };
    for (int const algo : {0, 1, 2})
    {
        given.algo = algo;
        for (Case const & tried :
             {Case{kFullManual, given, 6, 18.0}, Case{kAutomatic, automatic, 180, -180.0},
              Case{kOnlyRotation, rotation, 360, -180.0}, Case{kOnlyTranslation, translation, 1, 30.0}})
        {
            SCOPED_TRACE(tried.steps);
            Search changed = tried.changed;
            changed.algo = algo;
            Outcome const outcome = FindBy(tried.function, given);
            tests::ExpectSameOutcome(outcome, OracleFind(changed));
            EXPECT_EQ(outcome.answer, algo != 2);
            EXPECT_EQ(outcome.queues.size(), tried.steps);
            if (algo == 2) continue;
            ASSERT_EQ(outcome.reports.size(), tried.steps + 2);
            bool const triesNothing = algo == 1 && changed.prior.range < 0.0;
            EXPECT_EQ(outcome.bestAtReports[1][tests::kAngle], triesNothing ? kNoScore : tried.firstAngle);
        }
    }
}

TEST(MatchingFunctions, WithoutAProgress_Throw)
{
    Search const search = SmallSearch();
    TemplateMatchingInfo best;
    CandidateQueues queues(3);
    auto const before = FieldsOf(best);
    for (tests::SearchFunction const function : {+kFullManual, +kAutomatic, +kOnlyRotation, +kOnlyTranslation})
    {
        OpenCV_algos algo = Correlation;
        EXPECT_THROW(
            std::ignore =
                function(search.reference, search.moving, ParametersOf(search.prior), nullptr, best, queues, algo),
            std::bad_function_call);
    }
    EXPECT_THROW(
        std::ignore = TemplateMatchingFullAuto(search.reference, search.moving, nullptr, best), std::bad_function_call);
    EXPECT_EQ(FieldsOf(best), before);
    EXPECT_EQ(queues.size(), 3U);
}

TEST(MatchingFunctions, PassTheExceptionsOfTheProgressOn)
{
    Search const search = SmallSearch();
    for (int const last : {0, 1, 2})
    {
        TemplateMatchingInfo best;
        CandidateQueues queues;
        OpenCV_algos algo = Correlation;
        int report = 0;
        auto const progress = [&](float) {
            if (report++ == last) throw std::runtime_error("stop");
            return true;
        };
        EXPECT_THROW(
            std::ignore = TemplateMatchingFullManual(
                search.reference, search.moving, ParametersOf(search.prior), progress, best, queues, algo),
            std::runtime_error);
        EXPECT_EQ(best.score > 0.0, last > 0);
    }
}

} // namespace

} // namespace morvane::algorithm
