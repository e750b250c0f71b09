// The searches for placements against their steps without tricks, on random scenes.
#include <morvane/algorithm/MatchingScores.h>
#include <morvane/algorithm/TemplateMatching.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/MatchingOracle.h"
#include "support/MatchingScenes.h"
#include "support/RandomImages.h"
#include "support/SearchOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::AutoSearch;
using tests::FieldsOf;
using tests::Find;
using tests::FramedImage;
using tests::IntegersOf;
using tests::kLargestValues;
using tests::OracleFind;
using tests::Outcome;
using tests::Placing;
using tests::Random;
using tests::RandomPrior;
using tests::Search;
using tests::SomeSize;
using tests::StrewnReference;
using tests::ValuesUpTo;

constexpr int kMost = std::numeric_limits<int>::max();

/// What a search comes to, unless it throws.
template <class Call>
std::optional<Outcome> Try(Call const & call)
{
    try
    {
        return call();
    }
    catch (cv::Exception const &)
    {
        return std::nullopt;
    }
}

/// Searches both ways. @return whether it did not throw
bool ExpectAgreement(Search const & search)
{
    auto const expected = Try([&] { return OracleFind(search); });
    auto const actual = Try([&] { return Find(search); });
    EXPECT_EQ(actual.has_value(), expected.has_value());
    if (actual && expected) ExpectSameOutcome(*actual, *expected);
    return expected.has_value();
}

TEST(MatchingRandom, Positions_AgreeWithThePlainForm)
{
    Random random(8201);
    int found = 0;
    for (int const largestOfReference : kLargestValues)
    {
        for (int const largestOfMoving : kLargestValues)
        {
            for (int repeat = 0; repeat < 8; ++repeat)
            {
                SCOPED_TRACE(std::to_string(largestOfReference) + ", " + std::to_string(largestOfMoving));
                cv::Mat const moving = IntegersOf(random, SomeSize(random, 12), ValuesUpTo(largestOfMoving));
                cv::Mat const reference =
                    StrewnReference(random, moving, SomeSize(random, 30), ValuesUpTo(largestOfReference));
                // Sizes and offsets that no search would give, too.
                Placing placing{reference, moving, random.Below(9) - 4, SomeSize(random, 40), random.Below(40)};
                FramedImage padded(placing.padded);
                FramedImage rotated(placing.rotated);
                TemplateMatchingInfo candidate;
                ASSERT_TRUE(matching_internals::TestAllPossibleTranslation(
                    padded.View(), rotated.View(), placing.margin, placing.referenceSize.height,
                    placing.referenceSize.width, placing.diagonal, candidate));
                ASSERT_EQ(FieldsOf(candidate), FieldsOf(tests::OracleAllTranslations(placing)));
                found += candidate.score > 0.0 ? 1 : 0;

                auto const parameters = ParametersOf(RandomPrior(random, reference.size(), moving.size()));
                cv::Point_<double> const station(random.Below(20) * 0.5, random.Below(20) * 0.5);
                ASSERT_TRUE(matching_internals::TestTranslationsAroundExpectedPosition(
                    padded.View(), rotated.View(), placing.margin, placing.referenceSize.height,
                    placing.referenceSize.width, placing.diagonal, parameters, station, candidate));
                ASSERT_EQ(FieldsOf(candidate), FieldsOf(tests::OracleTranslationsAround(placing, parameters, station)));
                ASSERT_TRUE(padded.IsFrameUntouched() && rotated.IsFrameUntouched());

                cv::Rect const part = cv::Rect({0, 0}, reference.size()) & cv::Rect({0, 0}, moving.size());
                ASSERT_EQ(
                    matching_internals::EqualOccupancyScore(padded.View()(part), rotated.View()(part)),
                    tests::OracleOccupancyScore(reference(part), moving(part)));
            }
        }
    }
    EXPECT_GT(found, 200);
}

TEST(MatchingRandom, OfFewValues_AgreesWithThePlainForm)
{
    Random random(8202);
    std::vector<int> const few{0, 1, 2, 3, 4, 5, 6};
    int done = 0;
    for (int repeat = 0; repeat < 400; ++repeat)
    {
        Search search;
        search.moving = IntegersOf(random, SomeSize(random, 12), few);
        search.reference = StrewnReference(random, search.moving, SomeSize(random, 24), few);
        search.prior = RandomPrior(random, search.reference.size(), search.moving.size());
        search.algo = repeat % 3 == 1 ? 1 : 0;
        search.mode = repeat % 3 == 2 ? 0 : 1;
        search.forget = random.Chance(0.5);
        search.stopAt = random.Chance(0.2) ? random.Below(4) : -1;
        SCOPED_TRACE(
            "repeat " + std::to_string(repeat) + tests::Case(search.algo, search.reference.size(), search.mode));
        done += ExpectAgreement(search) ? 1 : 0;
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_GT(done, 300);
}

TEST(MatchingRandom, OfManyValues_AgreesWithThePlainForm)
{
    Random random(8203);
    for (int const largest : kLargestValues)
    {
        for (int repeat = 0; repeat < 16; ++repeat)
        {
            Search search;
            search.moving = IntegersOf(random, SomeSize(random, 12), ValuesUpTo(largest));
            search.reference = StrewnReference(random, search.moving, SomeSize(random, 24), ValuesUpTo(kMost));
            search.prior = RandomPrior(random, search.reference.size(), search.moving.size());
            search.algo = 1;
            search.mode = repeat % 2;
            search.forget = true;
            SCOPED_TRACE("repeat " + std::to_string(repeat) + " of " + std::to_string(largest));
            ExpectAgreement(search);
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST(MatchingRandom, OfMoreValuesThanWordsHold_AgreesWithThePlainForm)
{
    Random random(8204);
    // Every pixel has a value of its own.
    cv::Mat moving(270, 260, CV_32S);
    int next = 3;
    for (int & pixel : cv::Mat1i(moving))
    {
        pixel = next++;
    }
    ASSERT_GT(next, 65536);
    Search search;
    search.moving = moving;
    search.prior.center = 20.0;
    cv::Mat turned;
    double dx = 0.0;
    double dy = 0.0;
    utils::RotateImage(moving, search.prior.center, turned, dx, dy);
    search.reference = cv::Mat::zeros(turned.rows + 5, turned.cols + 4, CV_32S);
    for (cv::Point const & shift : {cv::Point(1, 2), cv::Point(3, 0), cv::Point(0, 3)})
    {
        cv::Mat part;
        turned.copyTo(part);
        for (int & pixel : cv::Mat1i(part))
        {
            if (random.Chance(0.5)) pixel = 0;
        }
        part.copyTo(search.reference(cv::Rect(shift, turned.size())), part != 0);
    }
    search.prior.range = 6.0;
    for (int const largest : {next, 60000, 254})
    {
        SCOPED_TRACE(largest);
        search.moving.setTo(-1, search.moving > largest);
        for (int const mode : {0, 1})
        {
            search.mode = mode;
            search.algo = 1;
            EXPECT_TRUE(ExpectAgreement(search));
        }
    }
}

TEST(MatchingRandom, CorrelationOfAnyDepth_AgreesWithThePlainForm)
{
    Random random(8205);
    int done = 0;
    for (int const depth : tests::kDepths)
    {
        for (int repeat = 0; repeat < 60; ++repeat)
        {
            cv::Mat moving = IntegersOf(random, SomeSize(random, 12), {0, 0, 1, 2, 5, 8, 9, 17, 40, 300, -7});
            cv::Mat reference =
                StrewnReference(random, moving, SomeSize(random, 24), {0, 0, 1, 2, 5, 8, 9, 17, 40, 300, -7});
            double const scale = random.Chance(0.5) ? 1.0 : 0.3;
            moving.convertTo(moving, depth, scale);
            reference.convertTo(reference, depth, scale);
            FramedImage framedMoving(moving);
            FramedImage framedReference(reference);
            Search search;
            search.moving = framedMoving.View();
            search.reference = framedReference.View();
            search.prior = RandomPrior(random, reference.size(), moving.size());
            search.forget = random.Chance(0.5);
            SCOPED_TRACE("repeat " + std::to_string(repeat) + tests::Case(depth, reference.size(), 0));
            done += ExpectAgreement(search) ? 1 : 0;
            EXPECT_TRUE(framedMoving.IsFrameUntouched() && framedReference.IsFrameUntouched());
            ASSERT_FALSE(HasFailure());
        }
    }
    EXPECT_GT(done, 250);
}

TEST(MatchingRandom, FloatsReadAsIntegers_AgreeWithThePlainForm)
{
    Random random(8206);
    for (int repeat = 0; repeat < 40; ++repeat)
    {
        Search search;
        search.moving = IntegersOf(random, SomeSize(random, 12), {0, 0, 1, 2, 5, -7});
        search.reference = StrewnReference(random, search.moving, SomeSize(random, 24), {0, 0, 1, 2, 5, -7});
        search.moving.convertTo(search.moving, CV_32F, 0.1);
        search.reference.convertTo(search.reference, CV_32F, 0.1);
        search.prior = RandomPrior(random, search.reference.size(), search.moving.size());
        search.algo = 1;
        search.mode = repeat % 2;
        SCOPED_TRACE(repeat);
        ExpectAgreement(search);
        ASSERT_FALSE(HasFailure());
    }
}

TEST(MatchingRandom, FullAuto_AgreesWithThePlainForm)
{
    Random random(8207);
    for (int repeat = 0; repeat < 60; ++repeat)
    {
        auto const values =
            ValuesUpTo(kLargestValues.at(static_cast<std::size_t>(random.Below(kLargestValues.size()))));
        AutoSearch search;
        search.moving = IntegersOf(random, SomeSize(random, 9), values);
        search.reference = StrewnReference(random, search.moving, SomeSize(random, 16), values);
        search.best.ratio = random.Unit();
        search.center = random.Below(24) * 15.0;
        search.range = random.Unit() * 40.0;
        search.step = 1.0 + random.Unit() * 20.0;
        search.forget = random.Chance(0.5);
        SCOPED_TRACE(repeat);
        ExpectSameOutcome(Find(search), OracleFind(search));
        ASSERT_FALSE(HasFailure());
    }
}

} // namespace

} // namespace morvane::algorithm
