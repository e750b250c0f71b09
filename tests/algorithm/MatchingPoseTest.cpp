// A scene that was turned and shifted is found where it was laid.
#include <morvane/algorithm/MatchingScores.h>
#include <morvane/algorithm/TemplateMatching.h>

#include "support/RandomImages.h"
#include "support/SearchOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

namespace morvane::algorithm
{

namespace
{

using tests::Find;
using tests::Outcome;
using tests::Random;
using tests::Search;

/// Walls and things.
cv::Mat SceneOf(Random & random, cv::Size size)
{
    cv::Mat scene = cv::Mat::zeros(size, CV_32S);
    for (int thing = 0; thing < 14; ++thing)
    {
        cv::Rect const box(
            random.Below(size.width), random.Below(size.height), 1 + random.Below(9), 1 + random.Below(4));
        scene(box & cv::Rect({0, 0}, size)).setTo(3 + random.Below(20));
    }
    return scene;
}

struct Laid
{
    cv::Mat reference;
    cv::Mat turned;
    cv::Point place;
};

Laid LayOnReference(cv::Mat const & moving, double angle, cv::Size size, cv::Point place)
{
    Laid laid;
    laid.place = place;
    double dx = 0.0;
    double dy = 0.0;
    utils::RotateImage(moving, angle, laid.turned, dx, dy);
    laid.reference = cv::Mat::zeros(size, CV_32S);
    laid.turned.copyTo(laid.reference(cv::Rect(place, laid.turned.size())));
    return laid;
}

TEST(MatchingPose, FullAuto_FindsHowASceneWasTurnedAndShifted)
{
    Random random(8209);
    cv::Mat const moving = SceneOf(random, {24, 18});
    Laid const laid = LayOnReference(moving, 33.0, {50, 44}, {15, 6});
    TemplateMatchingInfo best;
    best.ratio = 0.3;
    ASSERT_TRUE(TemplateMatchingFullAuto(
        laid.reference, moving, [](float) { return true; }, best));
    EXPECT_EQ(best.angle, 33.0);
    // The diagonal is 30.
    EXPECT_EQ(best.positionX, 15 + 9);
    EXPECT_EQ(best.positionY, 6 + 9);
    EXPECT_EQ(best.translationX, 15 - 25 + 15);
    EXPECT_EQ(best.translationY, 6 - 22 + 15);
    EXPECT_EQ(best.score, 16 * cv::countNonZero(laid.turned));
}

TEST(MatchingPose, BothWays_FindHowASceneWasTurnedAndShifted)
{
    Random random(8210);
    Search search;
    search.moving = SceneOf(random, {24, 18});
    Laid const laid = LayOnReference(search.moving, 30.0, {60, 52}, {21, 6});
    search.reference = laid.reference;
    search.prior.ratio = 0.3;
    search.prior.movOnMov = {7.0, 12.0};
    cv::Point_<double> const station =
        utils::UpdateStationPosition({24, 18}, search.prior.movOnMov, 30.0 * CV_PI / 180);
    search.prior.movOnRef = cv::Point_<double>(laid.place) + station;
    search.prior.translation = {5.0, -3.0};
    search.prior.refOnRef = search.prior.movOnRef - search.prior.translation;
    search.prior.range = 4.0;
    // 20, 30 and 50 degrees.
    search.prior.center = 35.0;
    search.prior.orientationRange = 15.0;
    search.prior.orientationStep = 10.0;
    for (int const algo : {0, 1})
    {
        search.algo = algo;
        Outcome const outcome = Find(search);
        ASSERT_TRUE(outcome.answer);
        EXPECT_EQ(outcome.best[tests::kAngle], 30.0);
        EXPECT_EQ(outcome.best[tests::kPositionX], 21 + 9);
        EXPECT_EQ(outcome.best[tests::kPositionY], 6 + 9);
        EXPECT_EQ(outcome.best[tests::kTranslationX], 21 - 30 + 15);
        EXPECT_EQ(outcome.best[tests::kTranslationY], 6 - 26 + 15);
        if (algo == 0) continue;
        EXPECT_EQ(outcome.best[tests::kScore], 16 * cv::countNonZero(laid.turned));
    }
    // The station of one way has no part in the other.
    search.algo = 1;
    search.prior.movOnRef = {-1000.0, 1000.0};
    EXPECT_EQ(Find(search).best[tests::kAngle], 30.0);
    search.algo = 0;
    EXPECT_FALSE(Find(search).answer);
    search.prior.movOnRef = cv::Point_<double>(laid.place) + station;
    search.prior.refOnRef = {-1000.0, 1000.0};
    EXPECT_EQ(Find(search).best[tests::kAngle], 30.0);
    search.algo = 1;
    EXPECT_EQ(Find(search).best[tests::kAngle], tests::kNoScore);
}

} // namespace

} // namespace morvane::algorithm
