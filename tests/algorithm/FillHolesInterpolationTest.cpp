// The interpolation of holes: its steps, drawn, and what becomes of types and sizes that some of them do not take.
#include <morvane/algorithm/Filling.h>

#include "support/AllTypes.h"
#include "support/FillingOracle.h"
#include "support/ImageLiterals.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <limits>
#include <tuple>

namespace morvane::algorithm
{

namespace
{

using tests::CallHoleFill;
using tests::Draw;
using tests::Drawing;
using tests::EqualImages;
using tests::ExpectDrawn;
using tests::HoleFill;
using tests::Snapshot;

/// The depths in which holes are interpolated.
constexpr std::array kFloatDepths{CV_32F, CV_64F};

void ExpectFilled(HoleFill fill, int size, cv::Mat const & image, cv::Mat const & expected)
{
    SCOPED_TRACE(tests::FillCase(fill, image, size));
    cv::Mat out;
    EXPECT_TRUE(CallHoleFill(fill, image, out, size));
    EXPECT_TRUE(EqualImages(out, expected));
}

void ExpectFilled(HoleFill fill, int size, Drawing const & drawn, Drawing const & expected)
{
    for (int const depth : kFloatDepths)
    {
        ExpectFilled(fill, size, Draw(drawn, depth), Draw(expected, depth));
    }
}

TEST(FillHolesInterpolation, FillsSmallHolesByTheClosing)
{
    for (HoleFill const fill : tests::kHoleFills)
    {
        ExpectFilled(
            fill, 3,
            {"9999999", //
             "9555559", //
             "95.7259", //
             "9555559", //
             "9999999"},
            {"9999999", //
             "9555559", //
             "9577259", //
             "9555559", //
             "9999999"});
    }
}

TEST(FillHolesInterpolation, GivesWhatRemainsOfAHoleOneValueOfItsRim)
{
    Drawing const drawn{
        "7777777", //
        "7779777", //
        "77...77", //
        "75...77", //
        "77...77", //
        "7777777"};
    ExpectFilled(
        HoleFill::Max, 3, drawn,
        {"7777777", //
         "7779777", //
         "7799977", //
         "7599977", //
         "7799977", //
         "7777777"});
    // The lowest of the dilated image: in each square there is a 7, and the 5 is the highest of none.
    ExpectFilled(
        HoleFill::Min, 3, drawn,
        {"7777777", //
         "7779777", //
         "7777777", //
         "7577777", //
         "7777777", //
         "7777777"});
}

TEST(FillHolesInterpolation, OfALargerSquare_SeesValuesFurtherFromTheRim)
{
    // Out of the reach of size 3, 9 is within that of size 5.
    Drawing const drawn{
        "777777777", //
        "797777777", //
        "777777777", //
        "777.....7", //
        "777.....7", //
        "777.....7", //
        "777.....7", //
        "777.....7", //
        "777777777"};
    Drawing const sevens{
        "777777777", //
        "797777777", //
        "777777777", //
        "777777777", //
        "777777777", //
        "777777777", //
        "777777777", //
        "777777777", //
        "777777777"};
    Drawing const nines{
        "777777777", //
        "797777777", //
        "777777777", //
        "777999997", //
        "777999997", //
        "777999997", //
        "777999997", //
        "777999997", //
        "777777777"};
    ExpectFilled(HoleFill::Max, 3, drawn, sevens);
    ExpectFilled(HoleFill::Max, 5, drawn, nines);
    ExpectFilled(HoleFill::Min, 5, drawn, sevens);
}

TEST(FillHolesInterpolation, DividesAHoleAmongTheRegionsToWhichItIsNearest)
{
    for (HoleFill const fill : tests::kHoleFills)
    {
        ExpectFilled(
            fill, 3,
            {"33....77", //
             "33....77", //
             "33....77"},
            {"33337777", //
             "33337777", //
             "33337777"});
        ExpectFilled(
            fill, 3,
            {"5......................8", //
             "5......................8"},
            {"555555555555888888888888", //
             "555555555555888888888888"});
    }
}

TEST(FillHolesInterpolation, GivesEachPartOfAHoleItsOwnValue)
{
    // One region lies around two holes.
    ExpectFilled(
        HoleFill::Max, 3,
        {"4444444444", //
         "4...44...9", //
         "4...44...4", //
         "4...44...4", //
         "4444444444"},
        {"4444444444", //
         "4444449999", //
         "4444449994", //
         "4444449994", //
         "4444444444"});
}

TEST(FillHolesInterpolation, JoinsPartsThatTouchAtACorner)
{
    ExpectFilled(
        HoleFill::Max, 3,
        {"44444444", //
         "4...4444", //
         "4...4444", //
         "9...4444", //
         "4444...4", //
         "4444...4", //
         "4444...4", //
         "44444444"},
        {"44444444", //
         "49994444", //
         "49994444", //
         "99994444", //
         "44449994", //
         "44449994", //
         "44449994", //
         "44444444"});
}

TEST(FillHolesInterpolation, LeavesMeasuredPixels)
{
    Drawing const drawn{"159", "951", "515"};
    for (HoleFill const fill : tests::kHoleFills)
    {
        ExpectFilled(fill, 3, drawn, drawn);
    }
}

TEST(FillHolesInterpolation, OfAnImageOfZeros_IsThatImage)
{
    for (HoleFill const fill : tests::kHoleFills)
    {
        ExpectFilled(fill, 3, {"....", "....", "...."}, {"....", "....", "...."});
        ExpectFilled(fill, 3, {"."}, {"."});
        ExpectFilled(fill, 5, {"7"}, {"7"});
    }
}

TEST(FillHolesInterpolation, OfNegativeNumbers_CountsThemAmongTheHoles)
{
    for (int const depth : kFloatDepths)
    {
        // No square around a hole is without a zero, which is the highest.
        cv::Mat const lone = Draw({"...", ".5.", "..."}, depth) * -1;
        cv::Mat expected = lone.clone();
        ExpectFilled(HoleFill::Max, 3, lone, expected);
        // All of the dilated image is empty, and counts as the maximum and 1.
        expected = Draw({"111", "111", "111"}, depth);
        tests::SetElement(expected, 1, 1, 0, -5);
        ExpectFilled(HoleFill::Min, 3, lone, expected);
        // Not above 0, the measured pixels take part with the holes, and have the lowest values.
        cv::Mat const wide = Draw({"6555...", "5555...", "5555..."}, depth) * -1;
        expected = Draw({"6555555", "5555555", "5555555"}, depth) * -1;
        ExpectFilled(HoleFill::Min, 3, wide, expected);
        ExpectFilled(HoleFill::Max, 3, wide, wide);
    }
}

TEST(FillHolesInterpolation, StartsFromTheLimitsOfMeasureTables)
{
    // What lies beyond 2^31 is cut there, in one direction each.
    for (int const depth : kFloatDepths)
    {
        cv::Mat image = Draw({"11......", "11......", "11......"}, depth) * 3e9;
        cv::Mat expected(image.size(), depth, cv::Scalar(3e9));
        ExpectFilled(HoleFill::Max, 3, image, expected);
        expected.colRange(2, 8).setTo(2147483647.0);
        ExpectFilled(HoleFill::Min, 3, image, expected);
    }
}

TEST(FillHolesInterpolation, WithMin_PassesOverEmptyPixelsOfTheDilatedImage)
{
    // Inside, no square reaches the rim: the lowest value is still that at the rim.
    ExpectFilled(
        HoleFill::Min, 3,
        {"9999999", //
         "9.....9", //
         "9.....9", //
         "9.....9", //
         "9.....9", //
         "9.....9", //
         "9999999"},
        {"9999999", //
         "9999999", //
         "9999999", //
         "9999999", //
         "9999999", //
         "9999999", //
         "9999999"});
}

TEST(FillHolesInterpolation, OfIntegers_LeavesTheClosedImageAndIsRefused)
{
    // The values of holes come from a table of 32 bits, which does not fit.
    for (int const depth : {CV_8U, CV_16U, CV_16S})
    {
        cv::Mat const image = Draw(
            {"5555555", //
             "5.55555", //
             "5555...", //
             "5555...", //
             "5555..."},
            depth);
        for (HoleFill const fill : tests::kHoleFills)
        {
            SCOPED_TRACE(tests::FillCase(fill, image, 3));
            cv::Mat out;
            EXPECT_FALSE(CallHoleFill(fill, image, out, 3));
            ExpectDrawn(
                out,
                {"5555555", //
                 "5555555", //
                 "5555...", //
                 "5555...", //
                 "5555..."});
        }
    }
}

TEST(FillHolesInterpolation, TakesAnySizeFrom3)
{
    for (HoleFill const fill : tests::kHoleFills)
    {
        for (int const size : {3, 4, 5, 6, 7, 11})
        {
            ExpectFilled(
                fill, size, {"44............................", "44............................"},
                {"444444444444444444444444444444", "444444444444444444444444444444"});
        }
    }
}

TEST(FillHolesInterpolation, OfASizeBelow3_IsRefusedBeforeAnythingElse)
{
    for (HoleFill const fill : tests::kHoleFills)
    {
        for (int const size : {2, 1, 0, -1, -3, std::numeric_limits<int>::min()})
        {
            for (cv::Mat const & image : {Draw<float>({"1.1", "1.1"}), Draw<int>({"1."}), cv::Mat()})
            {
                SCOPED_TRACE(tests::FillCase(fill, image, size));
                for (cv::Mat out : {cv::Mat(), Draw<float>({"555", "555"}), Draw<uchar>({"5"})})
                {
                    Snapshot const before(out);
                    EXPECT_FALSE(CallHoleFill(fill, image, out, size));
                    EXPECT_TRUE(before.IsUntouched());
                }
            }
        }
    }
}

TEST(FillHolesInterpolation, OfSeveralChannels_LeavesTheClosingOfTheImage)
{
    for (int const depth : tests::kMorphologyDepths)
    {
        for (int const channels : {2, 3, 4, 5})
        {
            cv::Mat const image = Draw({"3.115", "2....", "..4.9"}, CV_MAKETYPE(depth, channels));
            for (HoleFill const fill : tests::kHoleFills)
            {
                SCOPED_TRACE(tests::FillCase(fill, image, 3));
                cv::Mat out;
                EXPECT_FALSE(CallHoleFill(fill, image, out, 3));
                EXPECT_TRUE(EqualImages(out, tests::OracleFiltered(tests::SquareFill::Closing, image, 3)));
            }
        }
    }
}

TEST(FillHolesInterpolation, PassesTheExceptionOfTheMorphologyOn)
{
    for (HoleFill const fill : tests::kHoleFills)
    {
        for (int const depth : {CV_32S, CV_8S, CV_16F})
        {
            cv::Mat image(4, 5, depth);
            tests::FillBytes(image, 0);
            SCOPED_TRACE(tests::FillCase(fill, image, 3));
            cv::Mat out;
            EXPECT_THROW(std::ignore = CallHoleFill(fill, image, out, 3), cv::Exception);
        }
        for (int const depth : tests::kDepths)
        {
            for (cv::Mat const & image : {cv::Mat(0, 0, depth), cv::Mat(0, 5, depth), cv::Mat(5, 0, depth)})
            {
                SCOPED_TRACE(tests::FillCase(fill, image, 3));
                cv::Mat out;
                EXPECT_THROW(std::ignore = CallHoleFill(fill, image, out, 3), cv::Exception);
            }
        }
    }
}

TEST(FillHolesInterpolation, KeepsNaN)
{
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    for (HoleFill const fill : tests::kHoleFills)
    {
        cv::Mat image = Draw<float>({"44...........4", "44...........4", "44...........4"});
        image.at<float>(1, 0) = nan;
        cv::Mat out;
        EXPECT_TRUE(CallHoleFill(fill, image, out, 3));
        EXPECT_TRUE(EqualImages(out.colRange(0, 2), image.colRange(0, 2)));
        EXPECT_TRUE(EqualImages(out.colRange(7, 14), Draw<float>({"4444444", "4444444", "4444444"})));
    }
}

} // namespace

} // namespace morvane::algorithm
