// The fill with the mean of neighbours: its edge cases, drawn.
#include <morvane/algorithm/Filling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Rows.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cmath>
#include <limits>

namespace morvane::algorithm
{

namespace
{

using tests::Draw;
using tests::Drawing;
using tests::EqualImages;
using tests::ExpectDrawn;
using tests::Row;

using connexity::eConnexityType;

/// The image filled under a mask, over rubbish.
cv::Mat Filled(cv::Mat const & image, cv::Mat const & mask, eConnexityType connexity)
{
    cv::Mat out(image.size(), image.type());
    tests::FillBytes(out, 0x5A);
    uchar const * const place = out.data;
    EXPECT_TRUE(FillImageWithMean(image, mask, out, connexity));
    EXPECT_EQ(out.data, place);
    return out;
}

/// Fills the zeros of a drawing in all depths; the means must be whole.
void ExpectFilled(eConnexityType connexity, Drawing const & drawn, Drawing const & expected)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        cv::Mat const image = Draw(drawn, depth);
        ExpectDrawn(Filled(image, image, connexity), expected);
    }
}

TEST(FillImageWithMean, TakesTheMeanOfTheNeighboursThatHold)
{
    ExpectFilled(connexity::eConnexity8, {"123", "4.6", "789"}, {"123", "456", "789"});
    ExpectFilled(connexity::eConnexity8, {"1.3", "...", "..5"}, {"123", "134", ".55"});
    ExpectFilled(connexity::eConnexity4, {"1c1", "3.9", "1c1"}, {"1c1", "399", "1c1"});
    ExpectFilled(
        connexity::eConnexity12, //
        {"aaAaa", "a111a", "91.15", "a111a", "aa2aa"}, {"aaAaa", "a111a", "91515", "a111a", "aa2aa"});
}

TEST(FillImageWithMean, GoesByTheMaskAlone)
{
    // What the image holds where the mask does not is passed over, and zeros count where the mask holds.
    cv::Mat const image = Draw<uchar>(
        {"9..9", //
         ".7.9", //
         "6..9"});
    cv::Mat const mask = Draw<uchar>(
        {"1111", //
         "1.11", //
         "1111"});
    ExpectDrawn(
        Filled(image, mask, connexity::eConnexity8),
        {"9..9", //
         ".1.9", //
         "6..9"});
    cv::Mat const left = Draw<uchar>({"1...", "1...", "1..."});
    ExpectDrawn(Filled(image, left, connexity::eConnexity8), {"96..", ".5..", "64.."});
}

TEST(FillImageWithMean, CountsARepeatedNeighbourAsOftenAsItOccurs)
{
    // At the upper left, the right and the lower neighbour occur twice and the diagonal one once: 21 / 5.
    ExpectDrawn(Filled(Draw<uchar>({".9", "11"}), Draw<uchar>({".1", "11"}), connexity::eConnexity8), {"49", "11"});
    // At the lower right the same: 21 / 5.
    ExpectDrawn(Filled(Draw<uchar>({"11", "9."}), Draw<uchar>({"11", "1."}), connexity::eConnexity8), {"11", "94"});
    // On one row each of both sides occurs three times.
    ExpectDrawn(Filled(Draw<uchar>({"9.2"}), Draw<uchar>({"1.1"}), connexity::eConnexity8), {"952"});
    // On one column, too; and what lies two above is the first row again: 4 * 9 + 3 * 2 + 4.
    ExpectDrawn(
        Filled(Draw<uchar>({"9", ".", "2", "4"}), Draw<uchar>({"1", ".", "1", "1"}), connexity::eConnexity12),
        {"9", "5", "2", "4"});
}

TEST(FillImageWithMean, OfAPixelThatIsItsOnlyNeighbour_IsZero)
{
    for (int shape = 0; shape < tests::kConnexityCount; ++shape)
    {
        cv::Mat const one = Draw<uchar>({"7"});
        ExpectDrawn(Filled(one, Draw<uchar>({"."}), tests::Shape(shape)), {"."});
        ExpectDrawn(Filled(one, Draw<uchar>({"1"}), tests::Shape(shape)), {"7"});
    }
}

TEST(FillImageWithMean, OfAMaskOfZeros_IsZero)
{
    for (int const depth : tests::kDepths)
    {
        cv::Mat const image = Draw({"123", "456"}, depth);
        for (int shape = 0; shape < tests::kConnexityCount; ++shape)
        {
            ExpectDrawn(Filled(image, Draw({"...", "..."}, depth), tests::Shape(shape)), {"...", "..."});
        }
    }
}

TEST(FillImageWithMean, WithAWrappedShape_TakesTheOppositeEdgeColumn)
{
    ExpectFilled(connexity::eConnexity4Wrapped, {".4..8", "....."}, {"64488", ".4..8"});
    ExpectFilled(connexity::eConnexity4, {".4..8", "....."}, {"44488", ".4..8"});
}

TEST(FillImageWithMean, WithAWrappedShape_TakesTheEdgeColumnForOffsetsOf2Too)
{
    // In the first column, the last one counts four times, the one before it never: (4 * 9 + 3) / 5; in the second, it
    // counts once: (9 + 3 * 3 + 4) / 5.
    ExpectDrawn(
        Filled(Draw<uchar>({"..349"}), Draw<uchar>({"..111"}), connexity::eConnexity12InterleavedWrapped), {"74349"});
    // The same from the right.
    ExpectDrawn(
        Filled(Draw<uchar>({"943.."}), Draw<uchar>({"111.."}), connexity::eConnexity12InterleavedWrapped), {"94347"});
}

TEST(FillImageWithMean, DividesIntegersTowardsZero)
{
    cv::Mat const holds = Row<short>({1, 0, 1});
    EXPECT_TRUE(EqualImages(Filled(Row<short>({-3, 99, -4}), holds, connexity::eConnexity4), Row<short>({-3, -3, -4})));
    EXPECT_TRUE(EqualImages(Filled(Row<short>({3, 99, 4}), holds, connexity::eConnexity4), Row<short>({3, 3, 4})));
    EXPECT_TRUE(EqualImages(Filled(Row<short>({-3, 99, 2}), holds, connexity::eConnexity4), Row<short>({-3, 0, 2})));
}

TEST(FillImageWithMean, SumsSmallIntegersInAnInt)
{
    EXPECT_TRUE(EqualImages(
        Filled(Row<uchar>({255, 0, 253}), Row<uchar>({1, 0, 1}), connexity::eConnexity8), Row<uchar>({255, 254, 253})));
    EXPECT_TRUE(EqualImages(
        Filled(Row<ushort>({65535, 0, 65533}), Row<ushort>({1, 0, 1}), connexity::eConnexity8),
        Row<ushort>({65535, 65534, 65533})));
    EXPECT_TRUE(EqualImages(
        Filled(Row<short>({-32768, 0, -32766}), Row<short>({1, 0, 1}), connexity::eConnexity8),
        Row<short>({-32768, -32767, -32766})));
}

TEST(FillImageWithMean, Of32Bits_WrapsAround)
{
    constexpr int most = std::numeric_limits<int>::max();
    constexpr int least = std::numeric_limits<int>::min();
    cv::Mat const holds = Row<int>({1, 0, 1});
    auto const mean = [&](int left, int right) {
        return Filled(Row<int>({left, 5, right}), holds, connexity::eConnexity4).at<int>(1);
    };
    EXPECT_EQ(mean(most, most), -1);
    EXPECT_EQ(mean(most, 1), least / 2);
    EXPECT_EQ(mean(least, least), 0);
    EXPECT_EQ(mean(least, -1), most / 2);
    // Three times each: 6 * (2^31 - 1) is -6 in 32 bits.
    cv::Mat const mosts = Row<int>({most, 5, most});
    EXPECT_EQ(Filled(mosts, holds, connexity::eConnexity8).at<int>(1), -1);
}

TEST(FillImageWithMean, SumsFloatsInTheirTypeAndInTheOrderOfTheOffsets)
{
    // Left, right, down, up: what the first sum rounds away does not come back.
    auto const mean = [](auto large) {
        using T = decltype(large);
        cv::Mat image = cv::Mat::zeros(3, 3, cv::traits::Type<T>::value);
        cv::Mat mask(3, 3, image.type(), cv::Scalar(1));
        mask.at<T>(1, 1) = 0;
        image.at<T>(1, 0) = large;
        image.at<T>(1, 2) = 1;
        image.at<T>(2, 1) = -large;
        image.at<T>(0, 1) = 1;
        return static_cast<double>(Filled(image, mask, connexity::eConnexity4).at<T>(1, 1));
    };
    EXPECT_EQ(mean(16777216.0F), 0.25);
    EXPECT_EQ(mean(16777216.0), 0.5);
    EXPECT_EQ(mean(9007199254740992.0), 0.25);
}

TEST(FillImageWithMean, DividesFloatsInTheirType)
{
    // The right and the lower neighbour twice, the diagonal one once.
    cv::Mat const image = Draw<float>({"91", ".."});
    cv::Mat const mask = Draw<float>({".1", "11"});
    EXPECT_EQ(Filled(image, mask, connexity::eConnexity8).at<float>(0), 0.4F);
    cv::Mat const doubles = Draw<double>({"91", ".."});
    EXPECT_EQ(Filled(doubles, Draw<double>({".1", "11"}), connexity::eConnexity8).at<double>(0), 0.4);
}

TEST(FillImageWithMean, HoldsNaNAndTinyNumbersOfAMaskForFull)
{
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float tiny = std::numeric_limits<float>::denorm_min();
    cv::Mat const mask = Row<float>({nan, -0.0F, tiny, 0.0F, -nan});
    EXPECT_TRUE(EqualImages(
        Filled(Row<float>({2.0F, 7.0F, 4.0F, 7.0F, 6.0F}), mask, connexity::eConnexity4),
        Row<float>({2.0F, 3.0F, 4.0F, 5.0F, 6.0F})));
}

TEST(FillImageWithMean, KeepsNaNWhereTheMaskHolds)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    // The first hole has a NaN beside it, the second not; what stands in the holes themselves does not count.
    cv::Mat const image = Row<double>({nan, nan, 4.0, infinity, 6.0});
    cv::Mat const filled = Filled(image, Row<double>({1, 0, 1, 0, 1}), connexity::eConnexity4);
    EXPECT_TRUE(EqualImages(filled.col(0), image.col(0)));
    EXPECT_TRUE(std::isnan(filled.at<double>(1)));
    EXPECT_TRUE(EqualImages(filled.colRange(2, 5), Row<double>({4.0, 5.0, 6.0})));
}

TEST(FillImageWithMean, SumsFromZero)
{
    // Not -0, which the sum of negative zeros alone would be.
    cv::Mat const filled =
        Filled(Row<float>({-0.0F, 1.0F, -0.0F}), Row<float>({1.0F, 0.0F, 1.0F}), connexity::eConnexity4);
    EXPECT_TRUE(EqualImages(filled, Row<float>({-0.0F, 0.0F, -0.0F})));
}

TEST(FillImageWithMean, WithANumberOutsideTheTableOfShapes_FillsWithZero)
{
    for (int const shape : tests::kStrangeConnexities)
    {
        SCOPED_TRACE(shape);
        for (int const depth : tests::kDepths)
        {
            cv::Mat const image = Draw({"123", "456"}, depth);
            ExpectDrawn(Filled(image, Draw({"1.1", ".11"}, depth), tests::Shape(shape)), {"1.3", ".56"});
        }
    }
}

TEST(FillImageWithMean, InPlace_SeesTheImageAsItWas)
{
    for (int const depth : tests::kDepths)
    {
        cv::Mat const mask = Draw({"1..1", "...."}, depth);
        cv::Mat image = Draw({"2998", "9999"}, depth);
        ASSERT_TRUE(FillImageWithMean(image, mask, image, connexity::eConnexity8));
        ExpectDrawn(image, {"2288", "2288"});
    }
}

TEST(FillImageWithMean, OfAnImageWithoutPixels_Succeeds)
{
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(5, 0), cv::Size(0, 5)})
    {
        cv::Mat const image(size, CV_32FC1);
        cv::Mat out(size, CV_32FC1);
        EXPECT_TRUE(FillImageWithMean(image, image, out, connexity::eConnexity8));
        EXPECT_TRUE(EqualImages(out, image));
    }
    cv::Mat none;
    EXPECT_TRUE(FillImageWithMean(cv::Mat(), cv::Mat(), none, connexity::eConnexity8));
    EXPECT_TRUE(none.empty());
}

TEST(FillImageWithMean, OfSeveralChannelsInMaskAndOutput_MeansTheFirstElementsOfEachRow)
{
    cv::Mat const image = Draw<uchar>({"2.4.", "...."});
    cv::Mat mask(2, 4, CV_8UC3, cv::Scalar(0, 7, 0));
    mask.at<cv::Vec3b>(0, 0) = {1, 0, 1}; // the first three elements; the fourth is 0
    mask.at<cv::Vec3b>(0, 1) = {0, 0, 0};
    mask.at<cv::Vec3b>(1, 0) = {0, 0, 0};
    mask.at<cv::Vec3b>(1, 1) = {0, 0, 0};
    cv::Mat out(2, 4, CV_8UC2, cv::Scalar(50, 51));
    ASSERT_TRUE(FillImageWithMean(image, mask, out, connexity::eConnexity4));
    cv::Mat expected(2, 4, CV_8UC2, cv::Scalar(50, 51));
    expected.at<cv::Vec2b>(0, 0) = {2, 3};
    expected.at<cv::Vec2b>(0, 1) = {4, 4};
    expected.at<cv::Vec2b>(1, 0) = {2, 0};
    expected.at<cv::Vec2b>(1, 1) = {4, 0};
    EXPECT_TRUE(EqualImages(out, expected));
}

} // namespace

} // namespace morvane::algorithm
