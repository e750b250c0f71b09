// The seeded wands that spend a budget: on the nearest pixels, or on the lowest ones.
#include <morvane/algorithm/RegionGrowing.h>

#include "support/AllTypes.h"
#include "support/GrowingOracle.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using connexity::eConnexity4;
using connexity::eConnexity4Wrapped;
using connexity::eConnexity8;
using tests::Draw;
using tests::Drawing;
using tests::EqualImages;
using tests::ExpectDrawn;
using tests::GrowthOrder;
using tests::Random;
using tests::Row;
using tests::Shape;

using Seeds = std::vector<cv::Point>;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

cv::Mat Nearest(cv::Mat const & image, int connexity, Seeds const & seeds, float budget, int type = CV_32SC1)
{
    return tests::Written(image.size(), type, [&](cv::Mat & out) {
        return MagicWandBasedOnAccumulator(image, Shape(connexity), seeds, budget, out);
    });
}

cv::Mat Lowest(cv::Mat const & image, int connexity, Seeds const & seeds, float budget, int type = CV_32SC1)
{
    return tests::Written(image.size(), type, [&](cv::Mat & out) {
        return MagicWandBasedOnPriorityAccumulator(image, Shape(connexity), seeds, budget, out);
    });
}

/// Expects the same zones of both operators.
void ExpectBoth(
    cv::Mat const & image, Seeds const & seeds, float budget, Drawing const & expected, int connexity = eConnexity4)
{
    SCOPED_TRACE(budget);
    ExpectDrawn(Nearest(image, connexity, seeds, budget), expected);
    ExpectDrawn(Lowest(image, connexity, seeds, budget), expected);
}

TEST(AccumulatorWand, Zone_GrowsWhileItsSumIsBelowTheBudget)
{
    for (int const depth : tests::kDepths)
    {
        cv::Mat const row = Draw({"1111111"}, depth);
        ExpectBoth(row, {{3, 0}}, 2.0F, {"...1..."});
        ExpectBoth(row, {{3, 0}}, 3.0F, {"..11..."});
        ExpectBoth(row, {{3, 0}}, 4.0F, {"..111.."});
        ExpectBoth(row, {{3, 0}}, 5.0F, {".1111.."});
        ExpectBoth(row, {{3, 0}}, 8.0F, {"1111111"});
    }
}

TEST(AccumulatorWand, BudgetOf0_GivesEachSeedItsOwnPixel)
{
    for (int const depth : tests::kDepths)
    {
        cv::Mat const image = Draw({"..1", "1.9"}, depth);
        for (float const budget : {0.0F, -0.0F, -0.5F, -1.0F, -300.0F, -1e10F, -kInfinity})
        {
            ExpectBoth(image, {{1, 0}, {2, 1}, {1, 1}, {1, 0}}, budget, {".1.", ".32"}, eConnexity8);
        }
    }
}

TEST(AccumulatorWand, ValueOfTheSeed_IsSummedWithoutAQuestion)
{
    cv::Mat const image = Draw<uchar>({"1911"});
    ExpectBoth(image, {{1, 0}}, 9.0F, {".1.."});
    ExpectBoth(image, {{1, 0}}, 11.0F, {"11.."});
    ExpectBoth(image, {{1, 0}}, 12.0F, {"111."});
}

TEST(AccumulatorWand, SumStartsAnewForEachSeedAndWhatIsRefusedStaysFree)
{
    cv::Mat const image = Draw<int>({"1111111"});
    ExpectBoth(image, {{0, 0}, {1, 0}, {6, 0}, {2, 0}}, 3.0F, {"1133.22"});
    ExpectBoth(image, {{2, 0}, {0, 0}, {3, 0}}, 3.0F, {"21133.."});
}

TEST(AccumulatorWand, PixelsOfAnEarlierZone_AreNotCrossed)
{
    cv::Mat const image = Draw<uchar>({
        "111",
        "191",
        "191",
    });
    ExpectBoth(image, {{1, 0}, {0, 0}}, 3.0F, {"11.", "...", "..."});
    ExpectBoth(image, {{1, 1}, {0, 0}}, 8.0F, {"222", "212", "2.2"});
}

TEST(AccumulatorWand, RefusedPixel_MayBeTakenWhenTheSumHasFallen)
{
    cv::Mat image = Draw<short>({
        "56",
        "40",
    });
    ExpectBoth(image, {{0, 0}}, 10.0F, {"1.", "11"});
    // With -4 in the corner the 6 is refused by its left neighbour and taken from below.
    image.at<short>(1, 0) = -4;
    ExpectBoth(image, {{0, 0}}, 10.0F, {"11", "11"});
}

TEST(AccumulatorWand, Order_DecidesTheShape)
{
    cv::Mat const image = Draw<uchar>({
        "1511",
        "2999",
        "2299",
    });
    // From 1 both steps are taken, 8 are spent. To the nearest, the top row fills up; to the lowest, the valley does.
    ExpectDrawn(Nearest(image, eConnexity4, {{0, 0}}, 13.0F), {"1111", "1...", "1..."});
    ExpectDrawn(Lowest(image, eConnexity4, {{0, 0}}, 13.0F), {"11..", "1...", "11.."});
}

TEST(AccumulatorWand, BudgetOfIntegers_IsCutToAnIntOfWhichNothingIsDropped)
{
    ExpectBoth(Draw<uchar>({"111"}), {{0, 0}}, 2.9F, {"1.."});
    ExpectBoth(Row<uchar>({100, 150, 50}), {{0, 0}}, 300.0F, {"11."});
    ExpectBoth(Row<uchar>({100, 150, 50}), {{0, 0}}, 301.0F, {"111"});
    ExpectBoth(Draw<uchar>({"..."}), {{0, 0}}, -1.0F, {"1.."});
    ExpectBoth(Row<ushort>({5, 65530, 5}), {{0, 0}}, 65536.0F, {"11."});
    ExpectBoth(Row<short>({5, 32000, 5}), {{0, 0}}, 40000.0F, {"111"});
}

TEST(AccumulatorWand, BudgetThatNoIntHolds_CountsAsTheSmallest)
{
    for (float const budget : {2147483648.0F, 1e10F, -1e10F, kInfinity, -kInfinity, NAN})
    {
        ExpectBoth(Draw<uchar>({"..."}), {{1, 0}}, budget, {".1."});
        ExpectBoth(Draw<ushort>({"..."}), {{1, 0}}, budget, {".1."});
        ExpectBoth(Row<short>({-9, -9, -9}), {{1, 0}}, budget, {".1."});
        ExpectBoth(Row<int>({-9, -9, -9}), {{1, 0}}, budget, {".1."});
    }
    ExpectBoth(Draw<float>({"..."}), {{1, 0}}, NAN, {".1."});
    ExpectBoth(Draw<double>({"..."}), {{1, 0}}, NAN, {".1."});
    ExpectBoth(Row<double>({1, 1e308, 1}), {{0, 0}}, kInfinity, {"111"});
}

TEST(AccumulatorWand, BudgetOfFloatingPointImages_IsTheFloatItself)
{
    // 0.7F is 0.699999988079071...
    ExpectBoth(Row<float>({0.0F, 0.7F}), {{0, 0}}, 0.7F, {"1."});
    ExpectBoth(Row<double>({0.0, 0.69999998807}), {{0, 0}}, 0.7F, {"11"});
    ExpectBoth(Row<double>({0.0, 0.69999998808}), {{0, 0}}, 0.7F, {"1."});
}

TEST(AccumulatorWand, Sums_HaveThePrecisionOfTheImage)
{
    ExpectBoth(Row<float>({16777216, 1, 1, 1}), {{0, 0}}, 16777218.0F, {"1111"});
    ExpectBoth(Row<double>({16777216, 1, 1, 1}), {{0, 0}}, 16777218.0F, {"11.."});
    ExpectBoth(Row<uchar>({200, 200, 200}), {{0, 0}}, 500.0F, {"11."});
    ExpectBoth(Row<short>({30000, 30000, 30000}), {{0, 0}}, 70000.0F, {"11."});
    // Sums in int wrap: 2000000000 twice is -294967296.
    ExpectBoth(Row<int>({2000000000, 2000000000, 5, 294967290, 1}), {{0, 0}}, 0.0F, {"1111."});
}

TEST(AccumulatorWand, NaN_NeverJoinsAndNothingJoinsIt)
{
    ExpectBoth(Row<float>({1, NAN, 1, 1}), {{1, 0}, {3, 0}, {0, 0}}, 100.0F, {"3122"});
    ExpectBoth(Row<double>({1, NAN, 1, 1}), {{0, 0}}, kInfinity, {"1..."});
}

TEST(AccumulatorWand, WrappedShape_JoinsTheLastColumnToTheFirst)
{
    cv::Mat const image = Draw<uchar>({
        "1991",
        "9999",
    });
    ExpectBoth(image, {{3, 0}}, 3.0F, {"...1", "...."}, eConnexity4);
    ExpectBoth(image, {{3, 0}}, 3.0F, {"1..1", "...."}, eConnexity4Wrapped);
}

TEST(AccumulatorWand, SeedsOutsideTheImage_ArePassedOver)
{
    ExpectBoth(Draw<uchar>({"11", "11"}), {{-1, 0}, {2, 0}, {1, 1}, {0, 2}, {0, -1}, {0, 0}}, 2.0F, {"2.", ".1"});
    ExpectBoth(Draw<uchar>({"11", "11"}), {{-1, 0}, {5, 5}}, 2.0F, {"..", ".."});
}

TEST(AccumulatorWand, ThreeHundredZonesInEightBits_WrapThroughZero)
{
    cv::Mat const image(1, 300, CV_8UC1, cv::Scalar(3));
    Seeds const seeds = tests::RasterSeeds(image.size());
    for (auto const & wand : {Nearest, Lowest})
    {
        cv::Mat const labels = wand(image, eConnexity4, seeds, 0.0F, CV_8UC1);
        EXPECT_EQ(labels.at<uchar>(0, 254), 255);
        EXPECT_EQ(labels.at<uchar>(0, 255), 0);
        EXPECT_EQ(labels.at<uchar>(0, 256), 1);
        EXPECT_EQ(labels.at<uchar>(0, 299), 44);
    }
}

TEST(AccumulatorWand, ImagesWithoutPixels_AreDone)
{
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(5, 0), cv::Size(0, 5)})
    {
        cv::Mat const image(size.height, size.width, CV_16UC1);
        cv::Mat out(size.height, size.width, CV_16SC1);
        EXPECT_TRUE(MagicWandBasedOnAccumulator(image, eConnexity4Wrapped, {{0, 0}}, 5.0F, out));
        EXPECT_TRUE(MagicWandBasedOnPriorityAccumulator(image, eConnexity4Wrapped, {{0, 0}}, 5.0F, out));
        EXPECT_EQ(out.size(), size);
    }
}

/// The ring of 1 is one tie of eight. Each corner belongs to one of its pixels alone; budgets hold some corners.
cv::Mat RingWithCorners()
{
    return Draw<uchar>({
        "5zzz5",
        "z111z",
        "z111z",
        "z111z",
        "5zzz5",
    });
}

TEST(AccumulatorWand, NearestFirst_TakesCornersInTheOrderOfTheOffsets)
{
    auto const grown = [](float budget) {
        return Nearest(RingWithCorners(), eConnexity8, {{2, 2}}, budget);
    };
    ExpectDrawn(grown(14.0F), {".....", ".111.", ".111.", ".111.", "....."});
    ExpectDrawn(grown(15.0F), {"1....", ".111.", ".111.", ".111.", "....."});
    ExpectDrawn(grown(20.0F), {"1....", ".111.", ".111.", ".111.", "1...."});
    ExpectDrawn(grown(25.0F), {"1....", ".111.", ".111.", ".111.", "1...1"});
    ExpectDrawn(grown(30.0F), {"1...1", ".111.", ".111.", ".111.", "1...1"});
}

#ifdef __GLIBCXX__
TEST(AccumulatorWand, LowestFirst_TakesCornersInTheOrderOfAHeap)
{
    // With equal keys the hole at the top of the heap sinks to the right: of the eight pixels, pushed as 01234567, 0
    // leaves first, then 2, then 6, the upper right one, and 4, the lower right one, after it.
    auto const grown = [](float budget) {
        return Lowest(RingWithCorners(), eConnexity8, {{2, 2}}, budget);
    };
    ExpectDrawn(grown(14.0F), {".....", ".111.", ".111.", ".111.", "....."});
    ExpectDrawn(grown(15.0F), {"1....", ".111.", ".111.", ".111.", "....."});
    ExpectDrawn(grown(20.0F), {"1....", ".111.", ".111.", ".111.", "1...."});
    ExpectDrawn(grown(25.0F), {"1...1", ".111.", ".111.", ".111.", "1...."});
    ExpectDrawn(grown(30.0F), {"1...1", ".111.", ".111.", ".111.", "1...1"});
}
#endif

/// What tells the ways to settle ties apart, over many images.
struct TieCount
{
    int oldest = 0;   ///< images on which giving out the oldest of equal pixels first makes a difference
    int youngest = 0; ///< the same for the youngest
};

cv::Mat LabelsOf(tests::GrowthInput const & input, GrowthOrder order)
{
    auto const zones = tests::OracleGrownZones(
        input.image, input.connexity, input.seeds, tests::SumsBelow(input.image, input.delta1), order);
    return tests::OracleLabels(zones, input.image.size(), CV_32SC1);
}

TieCount CountTies(Random & random, int connexity, int levels)
{
    TieCount count;
    for (int round = 0; round < 25; ++round)
    {
        tests::GrowthInput input;
        input.image = tests::RandomImage(random, {16, 14}, CV_8UC1, {0.0, 0.0, levels});
        input.connexity = connexity;
        input.seeds = {{8, 7}, {2, 3}, {15, 0}};
        input.delta1 = 20 + random.Below(100);
        SCOPED_TRACE("shape " + std::to_string(connexity) + ", round " + std::to_string(round));
        cv::Mat const grown = Lowest(input.image, connexity, input.seeds, static_cast<float>(input.delta1));
        EXPECT_TRUE(EqualImages(grown, LabelsOf(input, GrowthOrder::Lowest)));
        count.oldest += EqualImages(grown, LabelsOf(input, GrowthOrder::LowestOldest)) ? 0 : 1;
        count.youngest += EqualImages(grown, LabelsOf(input, GrowthOrder::LowestYoungest)) ? 0 : 1;
    }
    return count;
}

TEST(AccumulatorWand, Ties_FallToTheOrderOfAHeapAndToNoOtherRule)
{
    Random random(1310);
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        for (int const levels : {1, 2, 4})
        {
            SCOPED_TRACE("shape " + std::to_string(number) + ", levels " + std::to_string(levels));
            TieCount const count = CountTies(random, number, levels);
            EXPECT_GT(count.oldest, 0);
            EXPECT_GT(count.youngest, 0);
            if (HasFailure()) return;
        }
    }
}

} // namespace

} // namespace morvane::algorithm
