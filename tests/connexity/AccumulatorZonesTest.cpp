#include <morvane/connexity/AccumulatorZones.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

namespace morvane::connexity
{

namespace
{

using tests::Draw;
using tests::Drawing;
using tests::ExpectDrawn;
using tests::Row;
using tests::Shape;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

cv::Mat BreadthFirst(cv::Mat const & image, int connexity, double budget, int type = CV_32SC1)
{
    return tests::Written(image.size(), type, [&](cv::Mat & labels) {
        return LabelAccumulatorZones(image, Shape(connexity), budget, labels);
    });
}

cv::Mat LowestFirst(cv::Mat const & image, int connexity, double budget, int type = CV_32SC1)
{
    return tests::Written(image.size(), type, [&](cv::Mat & labels) {
        return LabelPriorityAccumulatorZones(image, Shape(connexity), budget, labels);
    });
}

/// Expects the same zones of both operators.
void ExpectBoth(cv::Mat const & image, double budget, Drawing const & expected, int connexity = eConnexity4)
{
    SCOPED_TRACE(budget);
    ExpectDrawn(BreadthFirst(image, connexity, budget), expected);
    ExpectDrawn(LowestFirst(image, connexity, budget), expected);
}

TEST(AccumulatorZones, GrowWhileTheirSumIsBelowTheBudget)
{
    for (int const depth : tests::kDepths)
    {
        ExpectBoth(Draw({"1111111"}, depth), 4.0, {"1112223"});
        ExpectBoth(Draw({"1111111"}, depth), 3.0, {"1122334"});
        ExpectBoth(Draw({"1111111"}, depth), 2.0, {"1234567"});
        ExpectBoth(Draw({"1111111"}, depth), 8.0, {"1111111"});
        ExpectBoth(Draw({"34343"}, depth), 7.0, {"12345"});
        ExpectBoth(Draw({"34343"}, depth), 8.0, {"11223"});
    }
}

TEST(AccumulatorZones, EmptyPixels_ArePixelsLikeOthers)
{
    for (int const depth : tests::kDepths)
    {
        ExpectBoth(Draw({"..5..", "....."}, depth), 1.0, {"11211", "11111"});
        ExpectBoth(Draw({"...."}, depth), 1.0, {"1111"});
    }
}

TEST(AccumulatorZones, BudgetOf0OrLess_MakesEachPixelAZone)
{
    for (int const depth : tests::kDepths)
    {
        for (double const budget : {0.0, -0.0, -0.5, -1.0, -300.0, -2147483648.0, -1e10, -kInfinity})
        {
            ExpectBoth(Draw({"..1", "1.9"}, depth), budget, {"123", "456"}, eConnexity8);
        }
    }
    // In integers a fraction is cut off; 0.9 is 0.
    ExpectBoth(Draw<uchar>({"..1"}), 0.9, {"123"});
    ExpectBoth(Draw<float>({"..1"}), 0.9, {"112"});
}

TEST(AccumulatorZones, BudgetOf0_DoesNotKeepNegativeValuesApart)
{
    ExpectBoth(Row<short>({-1, -1, 2, 0, -1}), 0.0, {"11233"});
    ExpectBoth(Row<double>({-1, -1, 2, 0, -1}), 0.0, {"11233"});
}

TEST(AccumulatorZones, PixelThatUsesUpTheBudget_IsAZone)
{
    ExpectBoth(Draw<uchar>({"9991", "1911"}), 5.0, {"1234", "5644"});
}

TEST(AccumulatorZones, Order_DecidesTheShape)
{
    cv::Mat const image = Draw<uchar>({
        "1511",
        "2999",
        "2299",
    });
    // From 1 both steps are taken, 8 are spent. Breadth first the 5 is asked before the 2, and the top row fills up.
    ExpectDrawn(BreadthFirst(image, eConnexity4, 13.0), {"1111", "1234", "1256"});
    // Lowest first the 2 is asked before the 5, and the sum runs down the valley.
    ExpectDrawn(LowestFirst(image, eConnexity4, 13.0), {"1122", "1324", "1156"});
}

TEST(AccumulatorZones, RefusedPixel_MayBeTakenWhenTheSumHasFallen)
{
    cv::Mat image = Draw<short>({
        "56",
        "40",
    });
    ExpectBoth(image, 10.0, {"12", "11"});
    // With -4 in the corner the 6 is refused by its left neighbour and taken from below.
    image.at<short>(1, 0) = -4;
    ExpectBoth(image, 10.0, {"11", "11"});
    cv::Mat floats;
    image.convertTo(floats, CV_32F);
    ExpectBoth(floats, 10.0, {"11", "11"});
}

TEST(AccumulatorZones, SumsInInt_WrapAround)
{
    cv::Mat const image = Row<int>({2000000000, 2000000000, 5, 294967290, 1});
    ExpectBoth(image, 0.0, {"11112"});
    ExpectBoth(image, -294967295.0, {"11234"});
    ExpectBoth(image, -294967296.0, {"12345"});
    ExpectBoth(Row<int>({2000000000, 147483646, 1, 1, 1}), 2147483647.0, {"11222"});
}

TEST(AccumulatorZones, SumsOfShortTypes_DoNotWrap)
{
    ExpectBoth(Row<uchar>({200, 200, 200, 56}), 500.0, {"1122"});
    ExpectBoth(Row<ushort>({60000, 60000, 60000, 5536}), 150000.0, {"1122"});
    ExpectBoth(Row<short>({30000, 30000, 30000, 5536}), 70000.0, {"1122"});
}

TEST(AccumulatorZones, BudgetThatNoIntHolds_CountsAsTheSmallest)
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    for (double const budget : {2147483648.0, 1e10, kInfinity, -kInfinity, nan})
    {
        ExpectBoth(Draw<uchar>({".1."}), budget, {"123"});
        ExpectBoth(Row<ushort>({0, 0, 65535}), budget, {"123"});
        ExpectBoth(Row<short>({-5, -32768, 0}), budget, {"123"});
        ExpectBoth(Row<int>({-5, -2000000000, 0}), budget, {"123"});
    }
    ExpectBoth(Draw<uchar>({".1."}), 2147483647.9, {"111"});
    ExpectBoth(Draw<float>({".1."}), nan, {"123"});
    ExpectBoth(Draw<double>({".1."}), nan, {"123"});
    ExpectBoth(Row<float>({1.0F, 1e38F, 1e38F}), kInfinity, {"111"});
    ExpectBoth(Row<double>({1.0, 1e308, -1e308}), kInfinity, {"111"});
}

TEST(AccumulatorZones, BudgetsAndSums_HaveThePrecisionOfTheImage)
{
    ExpectBoth(Row<float>({16777216, 1, 1, 1}), 16777218.0, {"1111"});
    ExpectBoth(Row<double>({16777216, 1, 1, 1}), 16777218.0, {"1122"});
    // 0.7F lies below 0.7.
    ExpectBoth(Row<float>({0.0F, 0.7F}), 0.7, {"12"});
    ExpectBoth(Row<double>({0.0, static_cast<double>(0.7F)}), 0.7, {"11"});
}

TEST(AccumulatorZones, NaNPixels_AreZonesOfTheirOwn)
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    ExpectBoth(Row<double>({1, nan, 1, 1, nan, nan}), 100.0, {"123345"});
    ExpectBoth(Row<float>({NAN, 1, -1, NAN}), 100.0, {"1223"});
    cv::Mat image = Draw<float>({"111", "111", "111"});
    image.at<float>(1, 1) = NAN;
    ExpectBoth(image, 100.0, {"111", "121", "111"});
}

TEST(AccumulatorZones, Infinities_AreSummedAsTheyAre)
{
    ExpectBoth(Row<double>({kInfinity, 1, kInfinity, kInfinity}), 100.0, {"1234"});
    ExpectBoth(Row<double>({-kInfinity, 5, 1e300, kInfinity, 1}), -7.0, {"11123"});
    ExpectBoth(Row<double>({-kInfinity, 5, -kInfinity}), -kInfinity, {"123"});
}

TEST(AccumulatorZones, WrappedShape_JoinsTheLastColumnToTheFirst)
{
    cv::Mat const image = Draw<uchar>({
        "1991",
        "9999",
        "1991",
    });
    ExpectBoth(image, 3.0, {"1234", "5678", "9abc"}, eConnexity4);
    ExpectBoth(image, 3.0, {"1231", "4567", "89a8"}, eConnexity4Wrapped);
    ExpectBoth(image, 3.0, {"1231", "4567", "89a8"}, eConnexity8Wrapped);
}

TEST(AccumulatorZones, OrderOfTheNeighbours_DecidesWhoJoins)
{
    // The budget holds two pixels: the seed and its first neighbour below or to the right.
    cv::Mat const image = Draw<uchar>({
        "11",
        "11",
    });
    ExpectBoth(image, 3.0, {"11", "22"}, eConnexity4);
    ExpectBoth(image, 3.0, {"12", "12"}, eConnexity8);
    ExpectBoth(image, 3.0, {"11", "22"}, eConnexity8AxesFirst);
    ExpectBoth(image, 4.0, {"12", "11"}, eConnexity8);
}

TEST(AccumulatorZones, NumberOutsideTheTableOfShapes_MakesEachPixelAZone)
{
    for (int const number : tests::kStrangeConnexities)
    {
        ExpectBoth(Draw<uchar>({"...", "..."}), 100.0, {"123", "456"}, number);
    }
}

TEST(AccumulatorZones, ThreeHundredZonesInEightBits_WrapThroughZero)
{
    cv::Mat const image(15, 20, CV_8UC1, cv::Scalar(3));
    std::array const both{
        BreadthFirst(image, eConnexity8, 0.0, CV_8UC1), LowestFirst(image, eConnexity8, 0.0, CV_8UC1)};
    for (cv::Mat const & labels : both)
    {
        for (int zone = 1; zone <= 300; ++zone)
        {
            int const expected = zone <= 255 ? zone : zone - 256;
            ASSERT_EQ(labels.at<uchar>((zone - 1) / 20, (zone - 1) % 20), expected) << "zone " << zone;
        }
    }
}

TEST(AccumulatorZones, MoreThan65536ZonesIn16Bits_WrapThroughZero)
{
    cv::Mat const image(1, 65600, CV_32FC1, cv::Scalar(3));
    for (auto const & label : {BreadthFirst, LowestFirst})
    {
        cv::Mat const narrow = label(image, eConnexity8, 0.0, CV_16UC1);
        cv::Mat const bits = label(image, eConnexity8, 0.0, CV_16SC1);
        cv::Mat const wide = label(image, eConnexity8, 0.0, CV_32SC1);
        for (int const zone : {1, 255, 256, 32767, 32768, 40000, 65535, 65536, 65537, 65600})
        {
            SCOPED_TRACE(zone);
            int const wrapped = zone % 65536;
            EXPECT_EQ(narrow.at<ushort>(0, zone - 1), wrapped);
            EXPECT_EQ(bits.at<short>(0, zone - 1), wrapped > 32767 ? wrapped - 65536 : wrapped);
            EXPECT_EQ(wide.at<int>(0, zone - 1), zone);
        }
    }
}

TEST(AccumulatorZones, LabelsOfSeveralChannels_TakeTheFirstElementsOfEachRow)
{
    cv::Mat const image = Draw<uchar>({"119", "191"});
    for (auto const & label : {BreadthFirst, LowestFirst})
    {
        cv::Mat const labels = label(image, eConnexity4, 4.0, CV_16UC2);
        ExpectDrawn(labels.reshape(1), {"112...", "134..."});
    }
}

TEST(AccumulatorZones, ImagesWithoutPixels_AreDone)
{
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(5, 0), cv::Size(0, 5)})
    {
        SCOPED_TRACE(size);
        cv::Mat const image(size.height, size.width, CV_16SC1);
        cv::Mat labels(size.height, size.width, CV_32SC1);
        EXPECT_TRUE(LabelAccumulatorZones(image, eConnexity24InterleavedWrapped, 5.0, labels));
        EXPECT_TRUE(LabelPriorityAccumulatorZones(image, eConnexity24InterleavedWrapped, 5.0, labels));
        EXPECT_EQ(labels.size(), size);
        EXPECT_EQ(labels.type(), CV_32SC1);
    }
}

} // namespace

} // namespace morvane::connexity
