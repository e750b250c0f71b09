// The fills with the median of neighbours: their edge cases, drawn.
#include <morvane/algorithm/Filling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Rows.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
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

using Operator = bool (*)(cv::Mat const & image, cv::Mat & out, eConnexityType connexity);

constexpr std::array<Operator, 2> kOperators{FillImageWithMedian, FillImageWithMedianNoZero};

/// The filled image, over rubbish.
cv::Mat Filled(Operator fill, cv::Mat const & image, eConnexityType connexity)
{
    cv::Mat out(image.size(), image.type());
    tests::FillBytes(out, 0x5A);
    uchar const * const place = out.data;
    EXPECT_TRUE(fill(image, out, connexity));
    EXPECT_EQ(out.data, place);
    return out;
}

/// Fills a drawing in all depths.
void ExpectFilled(Operator fill, eConnexityType connexity, Drawing const & drawn, Drawing const & expected)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        ExpectDrawn(Filled(fill, Draw(drawn, depth), connexity), expected);
    }
}

TEST(FillImageWithMedian, TakesTheNeighbourOneAboveTheMiddle)
{
    struct ShapeAndValue
    {
        int shape;
        int value;
    };
    // The fourth of 4, the sixth of 8, the eighth of 12, the twelfth of 20, the fourteenth of 24.
    constexpr std::array cases{ShapeAndValue{0, 17}, ShapeAndValue{1, 17}, ShapeAndValue{2, 16},  ShapeAndValue{3, 16},
                               ShapeAndValue{4, 16}, ShapeAndValue{5, 14}, ShapeAndValue{6, 14},  ShapeAndValue{7, 14},
                               ShapeAndValue{8, 14}, ShapeAndValue{9, 14}, ShapeAndValue{10, 14}, ShapeAndValue{11, 14},
                               ShapeAndValue{12, 14}};
    for (auto const [shape, value] : cases)
    {
        SCOPED_TRACE(shape);
        for (int const depth : tests::kDepths)
        {
            cv::Mat const image = Draw(
                {"12345", //
                 "6789a", //
                 "bc.de", //
                 "fghij", //
                 "klmno"},
                depth);
            cv::Mat expected = image.clone();
            tests::SetElement(expected, 2, 2, 0, value);
            for (Operator const fill : kOperators)
            {
                EXPECT_TRUE(EqualImages(Filled(fill, image, tests::Shape(shape)), expected));
            }
        }
    }
}

TEST(FillImageWithMedian, CountsZeros)
{
    ExpectFilled(FillImageWithMedian, connexity::eConnexity8, {"999", "2.2", "2.2"}, {"999", "292", "222"});
    // Three of eight are enough, two are not.
    ExpectFilled(FillImageWithMedian, connexity::eConnexity8, {".....", "5....", "5...."}, {".....", "5....", "55..."});
    cv::Mat const three = Draw<uchar>({"9.9", "...", "..9"});
    EXPECT_EQ(Filled(FillImageWithMedian, three, connexity::eConnexity8).at<uchar>(1, 1), 9);
    cv::Mat const two = Draw<uchar>({"9.9", "...", "..."});
    EXPECT_EQ(Filled(FillImageWithMedian, two, connexity::eConnexity8).at<uchar>(1, 1), 0);
}

TEST(FillImageWithMedian, SeesTheImageAsItWas)
{
    ExpectFilled(FillImageWithMedian, connexity::eConnexity4, {"9....", "....."}, {"99...", "9...."});
    ExpectFilled(FillImageWithMedianNoZero, connexity::eConnexity4, {"9....", "....."}, {"99...", "9...."});
}

TEST(FillImageWithMedian, CountsARepeatedNeighbourAsOftenAsItOccurs)
{
    // At the upper left, 1 occurs once, 5 and 9 twice, and the pixel itself three times.
    for (cv::Mat const & image : {Draw<uchar>({".9", "51"}), Draw<uchar>({".5", "91"})})
    {
        EXPECT_EQ(Filled(FillImageWithMedian, image, connexity::eConnexity8).at<uchar>(0, 0), 5);
    }
    ExpectFilled(FillImageWithMedian, connexity::eConnexity4, {".7", "3."}, {"77", "37"});
}

TEST(FillImageWithMedian, WithAWrappedShape_JoinsTheFirstAndTheLastColumn)
{
    for (Operator const fill : kOperators)
    {
        ExpectFilled(fill, connexity::eConnexity4, {"..3.7"}, {".3377"});
        ExpectFilled(fill, connexity::eConnexity4Wrapped, {"..3.7"}, {"73377"});
    }
}

TEST(FillImageWithMedian, WithAWrappedShape_GoesOneImageWidthAway)
{
    // Two to the left of the first column is the last but one, not the last: of 0000 111 5 9999 it is the eighth.
    ExpectFilled(FillImageWithMedian, connexity::eConnexity12InterleavedWrapped, {".9951"}, {"59951"});
    ExpectFilled(FillImageWithMedian, connexity::eConnexity12InterleavedWrapped, {"1599."}, {"15995"});
}

TEST(FillImageWithMedian, WithAWrappedShape_HoldsWhatIsOutsideAnImageOfOneColumnForZero)
{
    // The ten neighbours two columns away and the two beside the pixel are 0, then come three 7.
    ExpectFilled(
        FillImageWithMedian, connexity::eConnexity24InterleavedWrapped, {"9", ".", "7", "8"}, {"9", "7", "7", "8"});
    // Of a plain shape, they are in the only column.
    ExpectFilled(FillImageWithMedian, connexity::eConnexity24Interleaved, {"9", ".", "7", "8"}, {"9", "8", "7", "8"});
    // Two columns are wide enough: of 00 11 77777 88888 and ten 9.
    ExpectFilled(
        FillImageWithMedian, connexity::eConnexity24InterleavedWrapped, {"99", ".1", "77", "88"},
        {"99", "81", "77", "88"});
}

TEST(FillImageWithMedianNoZero, LetsOtherNeighboursOverwriteZerosAndKeepsTheTail)
{
    // 0 0 5 7 9 0 0 0, in the order of the neighbours, becomes 5 7 9 7 9 0 0 0.
    Drawing const late{"...", "...", "579"};
    EXPECT_EQ(Filled(FillImageWithMedian, Draw<uchar>(late), connexity::eConnexity8).at<uchar>(1, 1), 5);
    EXPECT_EQ(Filled(FillImageWithMedianNoZero, Draw<uchar>(late), connexity::eConnexity8).at<uchar>(1, 1), 7);
    // 5 7 9 0 0 0 0 0 stays.
    Drawing const early{"5..", "7..", "9.."};
    EXPECT_EQ(Filled(FillImageWithMedian, Draw<uchar>(early), connexity::eConnexity8).at<uchar>(1, 1), 5);
    EXPECT_EQ(Filled(FillImageWithMedianNoZero, Draw<uchar>(early), connexity::eConnexity8).at<uchar>(1, 1), 5);
}

TEST(FillImageWithMedianNoZero, OfOneNeighbourInEight_IsZeroForAllThat)
{
    // The lone value may stand twice, first and where it was: two of eight are not enough.
    for (int place = 0; place < 9; ++place)
    {
        if (place == 4) continue;
        for (int const depth : tests::kDepths)
        {
            cv::Mat image = cv::Mat::zeros(3, 3, depth);
            tests::SetElement(image, place / 3, place % 3, 0, 7);
            cv::Mat const filled = Filled(FillImageWithMedianNoZero, image, connexity::eConnexity8);
            EXPECT_EQ(tests::ElementAt(filled, 1, 1), 0.0) << place;
        }
    }
}

TEST(FillImageWithMedianNoZero, OfTwoNeighboursInEight_DependsOnWhereTheyAre)
{
    // 0 0 0 0 7 9 0 0 becomes 7 9 0 0 7 9 0 0, and 7 9 0 0 0 0 0 0 stays.
    cv::Mat const late = Draw<short>({"...", "..9", "..7"});
    EXPECT_EQ(Filled(FillImageWithMedianNoZero, late, connexity::eConnexity8).at<short>(1, 1), 7);
    cv::Mat const early = Draw<short>({"7..", "9..", "..."});
    EXPECT_EQ(Filled(FillImageWithMedianNoZero, early, connexity::eConnexity8).at<short>(1, 1), 0);
}

TEST(FillImageWithMedian, SortsNegativeNumbersBeforeZero)
{
    // The highest of -5 0 0 0, and of -7 -5 0 0, is 0.
    EXPECT_TRUE(EqualImages(
        Filled(FillImageWithMedian, Row<short>({-5, 0, 0}), connexity::eConnexity4), Row<short>({-5, 0, 0})));
    EXPECT_TRUE(EqualImages(
        Filled(FillImageWithMedianNoZero, Row<short>({-5, 0, -7}), connexity::eConnexity4), Row<short>({-5, 0, -7})));
    cv::Mat const image = Draw<int>({"999", "9.9", "999"}) * -1;
    EXPECT_TRUE(
        EqualImages(Filled(FillImageWithMedian, image, connexity::eConnexity8), Draw<int>({"999", "999", "999"}) * -1));
}

TEST(FillImageWithMedian, SortsNaNBehindAllNumbers)
{
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinity = std::numeric_limits<float>::infinity();
    for (Operator const fill : kOperators)
    {
        cv::Mat image = Draw<float>({"123", "4.5", "678"});
        image.at<float>(0, 0) = nan;
        image.at<float>(2, 2) = infinity;
        cv::Mat expected = image.clone();
        // Of 2 3 4 5 6 7 inf NaN.
        expected.at<float>(1, 1) = 7.0F;
        EXPECT_TRUE(EqualImages(Filled(fill, image, connexity::eConnexity8), expected));
        image.at<float>(0, 1) = nan;
        expected = image.clone();
        // Of 3 4 5 6 7 inf NaN NaN.
        expected.at<float>(1, 1) = infinity;
        EXPECT_TRUE(EqualImages(Filled(fill, image, connexity::eConnexity8), expected));
        // Of 4 5 7 NaN.
        EXPECT_TRUE(std::isnan(Filled(fill, image, connexity::eConnexity4).at<float>(1, 1)));
    }
}

TEST(FillImageWithMedian, HoldsNaNAndTinyNumbersForFullAndNegativeZeroForEmpty)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double tiny = std::numeric_limits<double>::denorm_min();
    for (Operator const fill : kOperators)
    {
        cv::Mat const image = Row<double>({nan, tiny, -0.0, 9.0, -tiny});
        EXPECT_TRUE(
            EqualImages(Filled(fill, image, connexity::eConnexity4), Row<double>({nan, tiny, 9.0, 9.0, -tiny})));
    }
    // A negative zero is overwritten like a zero: -0 -0 5 7 9 -0 -0 -0 becomes 5 7 9 7 9 -0 -0 -0.
    cv::Mat const image = (cv::Mat_<double>(3, 3) << -0.0, -0.0, -0.0, -0.0, 0.0, -0.0, 5.0, 7.0, 9.0);
    EXPECT_EQ(Filled(FillImageWithMedianNoZero, image, connexity::eConnexity8).at<double>(1, 1), 7.0);
}

TEST(FillImageWithMedian, OfAnImageWithoutHoles_IsThatImage)
{
    for (Operator const fill : kOperators)
    {
        for (int shape = 0; shape < tests::kConnexityCount; ++shape)
        {
            ExpectFilled(fill, tests::Shape(shape), {"123", "456"}, {"123", "456"});
            ExpectFilled(fill, tests::Shape(shape), {"7"}, {"7"});
            ExpectFilled(fill, tests::Shape(shape), {"."}, {"."});
        }
    }
}

TEST(FillImageWithMedian, OfAnImageWithoutPixels_Succeeds)
{
    for (Operator const fill : kOperators)
    {
        for (cv::Size const size : {cv::Size(0, 0), cv::Size(5, 0), cv::Size(0, 5)})
        {
            cv::Mat const image(size, CV_16SC1);
            cv::Mat out(size, CV_16SC1);
            EXPECT_TRUE(fill(image, out, connexity::eConnexity8));
            EXPECT_TRUE(EqualImages(out, image));
        }
    }
}

TEST(FillImageWithMedian, IntoSeveralChannels_WritesTheFirstElementsOfEachRow)
{
    cv::Mat const image = Draw<float>({"3.5", "7.9"});
    for (Operator const fill : kOperators)
    {
        cv::Mat out(2, 3, CV_32FC2, cv::Scalar(50, 51));
        ASSERT_TRUE(fill(image, out, connexity::eConnexity4));
        cv::Mat expected(2, 3, CV_32FC2, cv::Scalar(50, 51));
        expected.at<cv::Vec2f>(0, 0) = {3, 5};
        expected.at<cv::Vec2f>(0, 1) = {5, 51};
        expected.at<cv::Vec2f>(1, 0) = {7, 9};
        expected.at<cv::Vec2f>(1, 1) = {9, 51};
        EXPECT_TRUE(EqualImages(out, expected));
    }
}

} // namespace

} // namespace morvane::algorithm
