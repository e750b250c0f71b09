// The searches for placements are the same at any number of threads.
#include <morvane/algorithm/TemplateMatching.h>

#include "support/MatchingOracle.h"
#include "support/MatchingScenes.h"
#include "support/RandomImages.h"
#include "support/SearchOracle.h"
#include "support/ThreadCounts.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <string>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::FieldsOf;
using tests::Find;
using tests::IntegersOf;
using tests::OracleFind;
using tests::Outcome;
using tests::Placing;
using tests::Random;
using tests::RandomPrior;
using tests::Search;
using tests::StrewnReference;

TEST(MatchingThreads, IsTheSameAtAnyThreadCount)
{
    Random random(8208);
    std::vector<int> const few{0, 0, 0, 3, 4};
    Search search;
    search.moving = IntegersOf(random, {17, 13}, few);
    search.reference = StrewnReference(random, search.moving, {47, 39}, few);
    search.prior = RandomPrior(random, search.reference.size(), search.moving.size());
    search.prior.ratio = 0.7;
    search.prior.orientationRange = 20.0;
    search.prior.range = 100.0;
    search.forget = true;
    // Nothing at all: every position is as good.
    Search nothing = search;
    nothing.reference = cv::Mat::zeros(39, 47, CV_32S);
    for (Search * const tried : {&search, &nothing})
    {
        for (auto const & [algo, mode] : {std::array{0, 1}, std::array{1, 1}, std::array{1, 0}})
        {
            tried->algo = algo;
            tried->mode = mode;
            Outcome const expected = OracleFind(*tried);
            for (int const threads : {1, 2, 8})
            {
                SCOPED_TRACE(std::to_string(threads) + " threads, algorithm " + std::to_string(algo));
                tests::ThreadCount const count(threads);
                ExpectSameOutcome(Find(*tried), expected);
            }
        }
    }
}

TEST(MatchingThreads, PositionsOfEqualScores_AreTheSameAtAnyThreadCount)
{
    cv::Mat const padded(40, 90, CV_32S, cv::Scalar(5));
    cv::Mat const rotated(3, 3, CV_32S, cv::Scalar(5));
    // Offsets on both sides of 0.
    for (int const diagonal : {2, 91, 95, 120, 300})
    {
        Placing const placing{padded, rotated, 0, {90, 40}, diagonal};
        auto const expected = FieldsOf(tests::OracleAllTranslations(placing));
        for (int const threads : tests::kThreadCounts)
        {
            SCOPED_TRACE(std::to_string(threads) + " threads, diagonal " + std::to_string(diagonal));
            tests::ThreadCount const count(threads);
            TemplateMatchingInfo candidate;
            ASSERT_TRUE(
                matching_internals::TestAllPossibleTranslation(padded, rotated, 0, 40, 90, diagonal, candidate));
            EXPECT_EQ(FieldsOf(candidate), expected);
        }
    }
}

} // namespace

} // namespace morvane::algorithm
