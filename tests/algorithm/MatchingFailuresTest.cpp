// Searches with parameters that fail, and what they leave.
#include <morvane/algorithm/TemplateMatching.h>

#include "support/ImageLiterals.h"
#include "support/SearchOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <limits>
#include <tuple>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::Draw;
using tests::FieldsOf;
using tests::Find;
using tests::OracleFind;
using tests::Outcome;
using tests::Search;
using tests::SmallSearch;

TEST(MatchingFailures, UnknownWays_FailAtTheFirstStep)
{
    Search search = SmallSearch();
    search.queues.resize(5);
    search.queues[0].push({});
    search.best.score = -1.0;
    search.prior.orientationRange = 1.0;
    struct Case
    {
        int algo;
        int mode;
    };
    for (auto const & [algo, mode] :
         {Case{2, 1}, Case{-1, 1}, Case{100, 1}, Case{0, 2}, Case{1, -1}, Case{0, 100}, Case{5, 5}})
    {
        search.algo = algo;
        search.mode = mode;
        Outcome const outcome = Find(search);
        EXPECT_FALSE(outcome.answer);
        EXPECT_EQ(outcome.reports, std::vector<float>{0.0F});
        EXPECT_EQ(outcome.best, FieldsOf(search.best));
        EXPECT_EQ(outcome.queues, std::vector<std::vector<tests::Fields>>(2));
    }
    // Every position is tried whatever the algorithm is called.
    search.algo = 100;
    search.mode = 0;
    EXPECT_TRUE(Find(search).answer);
    tests::ExpectSameOutcome(Find(search), OracleFind(search));
}

TEST(MatchingFailures, AWindowThatMissesAtALaterStep_FailsAndKeepsWhatWasFound)
{
    Search search = SmallSearch();
    search.prior.ratio = 0.0;
    // The station is far off on the moving image, and turns away from the reference: 0, then 180 degrees.
    search.prior.movOnMov = {100.0, 1.0};
    search.prior.movOnRef = {102.0, 4.0};
    search.prior.range = 1.0;
    search.prior.center = 180.0;
    search.prior.orientationRange = 180.0;
    search.prior.orientationStep = 180.0;
    Outcome const outcome = Find(search);
    EXPECT_FALSE(outcome.answer);
    EXPECT_EQ(outcome.reports, (std::vector<float>{0.0F, 0.0F}));
    EXPECT_GT(outcome.best[tests::kScore], 0.0);
    EXPECT_EQ(outcome.best[tests::kAngle], 0.0);
    ASSERT_EQ(outcome.queues.size(), 2U);
    EXPECT_EQ(outcome.queues[0].size(), 10U);
    EXPECT_TRUE(outcome.queues[1].empty());
    tests::ExpectSameOutcome(outcome, OracleFind(search));
    // The positions around the reference's own station are not concerned.
    search.algo = 1;
    EXPECT_TRUE(Find(search).answer);
}

TEST(MatchingFailures, OfOtherTypes_FailsAtTheFirstStep)
{
    for (int const type : {CV_8U, CV_16U, CV_16S, CV_64F, CV_8S, CV_16F, CV_32SC2})
    {
        SCOPED_TRACE(cv::typeToString(type));
        Search search = SmallSearch();
        search.reference = cv::Mat::zeros(9, 9, type);
        search.moving = cv::Mat::zeros(3, 4, type);
        for (auto const & [algo, mode] : {std::tuple{1, 1}, std::tuple{0, 0}})
        {
            search.algo = algo;
            search.mode = mode;
            Outcome const outcome = Find(search);
            EXPECT_FALSE(outcome.answer);
            EXPECT_EQ(outcome.reports, std::vector<float>{0.0F});
            EXPECT_EQ(outcome.best, FieldsOf({}));
        }
    }
    for (int const type : {CV_8UC2, CV_32SC3, CV_32FC4})
    {
        SCOPED_TRACE(cv::typeToString(type));
        Search search = SmallSearch();
        search.reference = cv::Mat::zeros(9, 9, type);
        search.moving = cv::Mat::zeros(3, 4, type);
        Outcome const outcome = Find(search);
        EXPECT_FALSE(outcome.answer);
        EXPECT_EQ(outcome.reports, std::vector<float>{0.0F});
        EXPECT_EQ(outcome.best, FieldsOf({}));
        EXPECT_EQ(outcome.queues, std::vector<std::vector<tests::Fields>>(1));
    }
}

TEST(MatchingFailures, OfAMarginOrANumberOfStepsThatCannotBe_FailsFirst)
{
    Search search = SmallSearch();
    search.queues.resize(7);
    double const infinity = std::numeric_limits<double>::infinity();
    for (double const ratio : {-1.0, -0.2, 1e9, 4e8, infinity, std::numeric_limits<double>::quiet_NaN()})
    {
        SCOPED_TRACE(ratio);
        search.prior.ratio = ratio;
        for (int const algo : {0, 1})
        {
            search.algo = algo;
            Outcome const outcome = Find(search);
            EXPECT_FALSE(outcome.answer);
            EXPECT_EQ(outcome.best, FieldsOf({}));
            EXPECT_EQ(outcome.queues.size(), 7U);
        }
    }
    search = SmallSearch();
    search.queues.resize(7);
    search.prior.orientationRange = 10.0;
    for (double const step : {0.0, 1e-9, 1e-300})
    {
        SCOPED_TRACE(step);
        search.prior.orientationStep = step;
        Outcome const outcome = Find(search);
        EXPECT_FALSE(outcome.answer);
        EXPECT_EQ(outcome.best, FieldsOf({}));
        EXPECT_EQ(outcome.queues.size(), 7U);
    }
}

TEST(MatchingFailures, OfMoreThanTwoDimensions_FailsFirst)
{
    std::array<int, 3> const sizes{3, 4, 5};
    for (bool const isReference : {true, false})
    {
        Search search = SmallSearch();
        search.queues.resize(7);
        cv::Mat & image = isReference ? search.reference : search.moving;
        image = cv::Mat(3, sizes.data(), CV_32S, cv::Scalar(5));
        for (auto const & [algo, mode] : {std::tuple{0, 1}, std::tuple{1, 1}, std::tuple{0, 0}})
        {
            search.algo = algo;
            search.mode = mode;
            Outcome const outcome = Find(search);
            EXPECT_FALSE(outcome.answer);
            EXPECT_EQ(outcome.best, FieldsOf({}));
            EXPECT_EQ(outcome.queues.size(), 7U);
        }
        tests::AutoSearch autoSearch;
        autoSearch.reference = search.reference;
        autoSearch.moving = search.moving;
        EXPECT_FALSE(Find(autoSearch).answer);
    }
}

TEST(MatchingFailures, OfEmptyImages_FindsNothing)
{
    for (bool const isReference : {true, false})
    {
        SCOPED_TRACE(isReference);
        Search search = SmallSearch();
        search.prior.ratio = 1.0;
        cv::Mat & image = isReference ? search.reference : search.moving;
        for (cv::Size const & size : {cv::Size(0, 0), cv::Size(4, 0), cv::Size(0, 3)})
        {
            image = cv::Mat(size, CV_32S);
            for (auto const & [algo, mode] : {std::tuple{0, 1}, std::tuple{1, 1}, std::tuple{0, 0}})
            {
                search.algo = algo;
                search.mode = mode;
                Outcome const outcome = Find(search);
                EXPECT_TRUE(outcome.answer);
                EXPECT_LE(outcome.best[tests::kScore], 0.0);
                tests::ExpectSameOutcome(outcome, OracleFind(search));
            }
        }
    }
}

TEST(MatchingFailures, PassesTheExceptionsOfOpenCVOn)
{
    // A turned image wider than the reference and not as high.
    Search search = SmallSearch();
    search.prior.ratio = 0.0;
    search.reference = cv::Mat::zeros(20, 3, CV_32S);
    EXPECT_THROW(std::ignore = Find(search), cv::Exception);
    // Larger both ways, OpenCV lays the reference on it.
    search.reference = Draw<int>({"444", "555"});
    Outcome const outcome = Find(search);
    tests::ExpectSameOutcome(outcome, OracleFind(search));
    EXPECT_TRUE(outcome.answer);
    // The other searches try the positions there are.
    search.algo = 1;
    tests::ExpectSameOutcome(Find(search), OracleFind(search));
    search.mode = 0;
    EXPECT_TRUE(Find(search).answer);
    EXPECT_EQ(Find(search).best, FieldsOf({}));
}

} // namespace

} // namespace morvane::algorithm
