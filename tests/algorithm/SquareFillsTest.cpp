// The fills by a square: their edge cases, drawn, and what they refuse.
#include <morvane/algorithm/Filling.h>

#include "support/AllTypes.h"
#include "support/FillingOracle.h"
#include "support/ImageLiterals.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <limits>
#include <tuple>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::CallSquareFill;
using tests::Draw;
using tests::Drawing;
using tests::ExpectDrawn;
using tests::Snapshot;
using tests::SquareFill;

/// Fills a drawing in all depths.
void ExpectFilled(SquareFill fill, int size, Drawing const & drawn, Drawing const & expected)
{
    for (int const depth : tests::kMorphologyDepths)
    {
        cv::Mat const image = Draw(drawn, depth);
        SCOPED_TRACE(tests::FillCase(fill, image, size));
        cv::Mat out;
        EXPECT_TRUE(CallSquareFill(fill, image, out, size));
        EXPECT_EQ(out.type(), image.type());
        ExpectDrawn(out, expected);
    }
}

TEST(FillImageWithClosing, FillsWhatTheSquareDoesNotFitInto)
{
    ExpectFilled(
        SquareFill::Closing, 3,
        {"5555555555", //
         "5.55..5555", //
         "5555..5...", //
         "5555555...", //
         "5555555..."},
        {"5555555555", //
         "5555555555", //
         "5555555...", //
         "5555555...", //
         "5555555..."});
}

TEST(FillImageWithClosing, GivesAHoleTheLevelOfItsRim)
{
    ExpectFilled(
        SquareFill::Closing, 3,
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

TEST(FillImageWithClosing, LeavesMeasuredPixelsThatTheClosingWouldRaise)
{
    ExpectFilled(SquareFill::Closing, 3, {"9991999", "9991999", "9991999"}, {"9991999", "9991999", "9991999"});
}

TEST(FillImageWithDilation, GivesEmptyPixelsTheHighestValueInTheSquare)
{
    ExpectFilled(
        SquareFill::Dilation, 3,
        {"3......", //
         ".......", //
         ".....4.", //
         "8......"},
        {"33.....", //
         "33..444", //
         "88..444", //
         "88..444"});
    ExpectFilled(
        SquareFill::Dilation, 5,
        {"3......", //
         ".......", //
         ".....4.", //
         "8......"},
        {"3334444", //
         "8884444", //
         "8884444", //
         "8884444"});
}

TEST(FillImageWithDilation, OfAnEvenSize_ReachesFurtherUpAndLeft)
{
    ExpectFilled(
        SquareFill::Dilation, 4,
        {".......", //
         ".......", //
         ".......", //
         "...6...", //
         ".......", //
         "......."},
        {".......", //
         ".......", //
         "..6666.", //
         "..6666.", //
         "..6666.", //
         "..6666."});
}

TEST(FillImageWithDilation, OfASquareBeyondTheImage_TakesTheHighestOfAll)
{
    ExpectFilled(SquareFill::Dilation, 99, {"1.3", "...", "..2"}, {"133", "333", "332"});
}

TEST(FillImageWithErosion, GivesMaximaTheLowestValueInTheSquare)
{
    ExpectFilled(
        SquareFill::Erosion, 3,
        {"9999994", //
         "9599999", //
         "9999999", //
         "9999929"},
        {"5559944", //
         "5559944", //
         "5559222", //
         "9999222"});
}

TEST(FillImageWithErosion, LeavesZerosAndAllElseBelowTheMaximum)
{
    ExpectFilled(SquareFill::Erosion, 3, {".8..78.", ".7..77."}, {".0..70.", ".7..77."});
}

TEST(FillImageWithErosion, OfAConstantImage_IsThatImage)
{
    for (char const * const row : {"77777", "....."})
    {
        ExpectFilled(SquareFill::Erosion, 3, {row, row, row}, {row, row, row});
        ExpectFilled(SquareFill::Opening, 3, {row, row, row}, {row, row, row});
    }
}

TEST(FillImageWithOpening, CutsMaximaThatTheSquareDoesNotFitInto)
{
    ExpectFilled(
        SquareFill::Opening, 3,
        {"5555555555", //
         "5955995555", //
         "5555995999", //
         "5555555999", //
         "5555555999"},
        {"5555555555", //
         "5555555555", //
         "5555555999", //
         "5555555999", //
         "5555555999"});
}

TEST(SquareFills, OfAnImageWithoutEmptyPixels_AreThatImage)
{
    // For two of them the maximum is what is empty, and there is no image without one.
    for (SquareFill const fill : {SquareFill::Closing, SquareFill::Dilation})
    {
        ExpectFilled(fill, 3, {"159", "951", "515"}, {"159", "951", "515"});
    }
}

TEST(SquareFills, OfAnImageOfZeros_AreThatImage)
{
    for (SquareFill const fill : tests::kSquareFills)
    {
        ExpectFilled(fill, 3, {"....", "...."}, {"....", "...."});
    }
}

TEST(SquareFills, OfOnePixel_AreThatPixel)
{
    for (SquareFill const fill : tests::kSquareFills)
    {
        ExpectFilled(fill, 3, {"7"}, {"7"});
        ExpectFilled(fill, 8, {"."}, {"."});
    }
}

TEST(SquareFills, OfNegativeNumbers_FillZeros)
{
    cv::Mat const image = tests::Row<short>({-5, 0, -3, -3, -3, -7});
    cv::Mat out;
    // The zero itself is the highest.
    EXPECT_TRUE(FillImageWithDilation(image, out, 3));
    EXPECT_TRUE(tests::EqualImages(out, image));
    EXPECT_TRUE(FillImageWithClosing(image, out, 3));
    EXPECT_TRUE(tests::EqualImages(out, image));
    // And it is the maximum of the image.
    EXPECT_TRUE(FillImageWithErosion(image, out, 3));
    EXPECT_TRUE(tests::EqualImages(out, tests::Row<short>({-5, -5, -3, -3, -3, -7})));
}

TEST(SquareFills, HoldTinyNumbersForMeasured)
{
    constexpr float tiny = std::numeric_limits<float>::denorm_min();
    cv::Mat const image = tests::Row<float>({tiny, 7.0F, -tiny, -0.0F, 5.0F});
    cv::Mat out;
    EXPECT_TRUE(FillImageWithDilation(image, out, 3));
    EXPECT_TRUE(tests::EqualImages(out, tests::Row<float>({tiny, 7.0F, -tiny, 5.0F, 5.0F})));
}

TEST(SquareFills, KeepNaN)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    cv::Mat const image = tests::Row<double>({nan, 5.0, 5.0, 9.0, 9.0, 5.0, 5.0, nan});
    for (SquareFill const fill : tests::kSquareFills)
    {
        SCOPED_TRACE(tests::FillCase(fill, image, 3));
        cv::Mat out;
        EXPECT_TRUE(CallSquareFill(fill, image, out, 3));
        // The maximum is 9, whether a NaN comes before or behind it.
        bool const fillsMaxima = fill == SquareFill::Erosion || fill == SquareFill::Opening;
        double const filled = fillsMaxima ? 5.0 : 9.0;
        EXPECT_TRUE(tests::EqualImages(out, tests::Row<double>({nan, 5.0, 5.0, filled, filled, 5.0, 5.0, nan})));
    }
}

TEST(SquareFills, OfASizeBelow3_AreRefusedBeforeAnythingElse)
{
    for (SquareFill const fill : tests::kSquareFills)
    {
        for (int const size : {2, 1, 0, -1, -3, std::numeric_limits<int>::min()})
        {
            for (cv::Mat const & image : {Draw<uchar>({"1.1", "1.1"}), Draw<int>({"1."}), cv::Mat()})
            {
                SCOPED_TRACE(tests::FillCase(fill, image, size));
                for (cv::Mat out : {cv::Mat(), Draw<uchar>({"555", "555"}), Draw<float>({"5"})})
                {
                    Snapshot const before(out);
                    EXPECT_FALSE(CallSquareFill(fill, image, out, size));
                    EXPECT_TRUE(before.IsUntouched());
                }
            }
        }
    }
}

TEST(SquareFills, OfSeveralChannels_LeaveTheFilteredImage)
{
    for (int const depth : tests::kMorphologyDepths)
    {
        for (int const channels : {2, 3, 4, 5})
        {
            cv::Mat const image = Draw({"31..5", "2....", "..4.9"}, CV_MAKETYPE(depth, channels));
            for (SquareFill const fill : tests::kSquareFills)
            {
                SCOPED_TRACE(tests::FillCase(fill, image, 3));
                cv::Mat out;
                EXPECT_FALSE(CallSquareFill(fill, image, out, 3));
                EXPECT_TRUE(tests::EqualImages(out, tests::OracleFiltered(fill, image, 3)));
            }
        }
    }
}

TEST(SquareFills, PassTheExceptionOfTheMorphologyOn)
{
    for (SquareFill const fill : tests::kSquareFills)
    {
        for (int const depth : {CV_32S, CV_8S, CV_16F})
        {
            cv::Mat image(4, 5, depth);
            tests::FillBytes(image, 0);
            SCOPED_TRACE(tests::FillCase(fill, image, 3));
            cv::Mat out;
            EXPECT_THROW(std::ignore = CallSquareFill(fill, image, out, 3), cv::Exception);
        }
        for (int const depth : tests::kDepths)
        {
            for (cv::Mat const & image : {cv::Mat(0, 0, depth), cv::Mat(0, 5, depth), cv::Mat(5, 0, depth)})
            {
                SCOPED_TRACE(tests::FillCase(fill, image, 3));
                cv::Mat out;
                EXPECT_THROW(std::ignore = CallSquareFill(fill, image, out, 3), cv::Exception);
            }
            cv::Mat out;
            cv::Mat const solid(std::vector<int>{2, 3, 4}, depth, cv::Scalar(1));
            EXPECT_THROW(std::ignore = CallSquareFill(fill, solid, out, 3), cv::Exception);
        }
    }
}

} // namespace

} // namespace morvane::algorithm
