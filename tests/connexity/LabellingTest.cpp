#include <morvane/connexity/Labelling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::Draw;
using tests::ExpectDrawn;
using tests::Labelled;
using tests::Shape;

constexpr std::array kUnwrapped{
    eConnexity4,
    eConnexity8,
    eConnexity8AxesFirst,
    eConnexity12,
    eConnexity20,
    eConnexity12Interleaved,
    eConnexity20Interleaved,
    eConnexity24Interleaved};

TEST(Label, NumbersZonesInTheRasterOrderOfTheirFirstPixels)
{
    cv::Mat const image = Draw<uchar>({"..1.1", "1.1.1", "1....", "111.1"});
    ExpectDrawn(Labelled(image, eConnexity4), {"..1.2", "3.1.2", "3....", "333.4"});
}

TEST(Label, KeepsTheFirstNumberWhenPartsMeetLate)
{
    cv::Mat const image = Draw<uchar>({"1.1.1", "1.1.1", "111.1", "1...1"});
    ExpectDrawn(Labelled(image, eConnexity4), {"1.1.2", "1.1.2", "111.2", "1...2"});
    cv::Mat const lateCups = Draw<uchar>({"..1..", ".11.1", "1.1.1", "1..11", "11111"});
    ExpectDrawn(Labelled(lateCups, eConnexity4), {"..1..", ".11.2", "2.1.2", "2..22", "22222"});
    ExpectDrawn(Labelled(lateCups, eConnexity8), {"..1..", ".11.1", "1.1.1", "1..11", "11111"});
    // Three columns that only the last row joins, and one that comes before them in no row.
    cv::Mat const three = Draw<uchar>({"1.1.1.1", "1.1.1..", "1.1.1.1", "1.111.1", "111.1.1"});
    ExpectDrawn(Labelled(three, eConnexity4), {"1.1.1.2", "1.1.1..", "1.1.1.3", "1.111.3", "111.1.3"});
}

TEST(Label, AllZeros_GivesZeroLabels)
{
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        ExpectDrawn(Labelled(Draw<uchar>({"....", "....", "...."}), number), {"....", "....", "...."});
    }
}

TEST(Label, EmptyImages_AreLabelled)
{
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(0, 5), cv::Size(5, 0)})
    {
        for (int number = 0; number < tests::kConnexityCount; ++number)
        {
            for (int const depth : tests::kDepths)
            {
                for (int const labelDepth : tests::kLabelDepths)
                {
                    cv::Mat labels(size.height, size.width, labelDepth);
                    cv::Mat const image(size.height, size.width, depth);
                    EXPECT_TRUE(Label(image, Shape(number), labels));
                    EXPECT_EQ(labels.rows, size.height);
                    EXPECT_EQ(labels.cols, size.width);
                }
            }
        }
    }
    cv::Mat labels;
    EXPECT_TRUE(Label(cv::Mat(), eConnexity8, labels));
    EXPECT_TRUE(labels.empty());
}

TEST(Label, FourNeighbours_DoNotJoinDiagonalsAndEightDo)
{
    cv::Mat const image = Draw<uchar>({"1...", ".1.1", "1..1", ".1.."});
    ExpectDrawn(Labelled(image, eConnexity4), {"1...", ".2.3", "4..3", ".5.."});
    for (eConnexityType const type : {eConnexity8, eConnexity8AxesFirst})
    {
        ExpectDrawn(Labelled(image, type), {"1...", ".1.2", "1..2", ".1.."});
    }
}

TEST(Label, LargerShapes_ReachTwoPixelsFar)
{
    cv::Mat const straight = Draw<uchar>({"1.1..1"});
    cv::Mat const knight = Draw<uchar>({"1....", "..1..", ".....", "...1."});
    cv::Mat const corner = Draw<uchar>({"1.....", "......", "..1...", "......", "......", ".....1"});
    for (int const number : {eConnexity8, eConnexity8AxesFirst})
    {
        ExpectDrawn(Labelled(straight, number), {"1.2..3"});
    }
    for (int const number : {eConnexity12, eConnexity12Interleaved})
    {
        ExpectDrawn(Labelled(straight, number), {"1.1..2"});
        ExpectDrawn(Labelled(knight, number), {"1....", "..2..", ".....", "...3."});
    }
    for (int const number : {eConnexity20, eConnexity20Interleaved})
    {
        ExpectDrawn(Labelled(straight, number), {"1.1..2"});
        ExpectDrawn(Labelled(knight, number), {"1....", "..1..", ".....", "...1."});
        ExpectDrawn(Labelled(corner, number), {"1.....", "......", "..2...", "......", "......", ".....3"});
    }
    ExpectDrawn(
        Labelled(corner, eConnexity24Interleaved), {"1.....", "......", "..1...", "......", "......", ".....2"});
}

TEST(Label, Line_IsOneZoneWhenItMeetsItselfAcrossTheSeam)
{
    cv::Mat const line = Draw<uchar>({"1111.1111"});
    ExpectDrawn(Labelled(line, eConnexity4Wrapped), {"1111.1111"});
    ExpectDrawn(Labelled(line, eConnexity4), {"1111.2222"});
}

TEST(Label, Seam_JoinsWhatTheShapeReaches)
{
    cv::Mat const straight = Draw<uchar>({"1....1"});
    cv::Mat const diagonal = Draw<uchar>({"1.....", ".....1"});
    cv::Mat const rising = Draw<uchar>({".....1", "1....."});
    cv::Mat const twoFar = Draw<uchar>({"1...1."});
    cv::Mat const knight = Draw<uchar>({".1....", ".....1"});
    cv::Mat const corner = Draw<uchar>({"1.....", "......", "....1."});
    ExpectDrawn(Labelled(straight, eConnexity4Wrapped), {"1....1"});
    ExpectDrawn(Labelled(diagonal, eConnexity4Wrapped), {"1.....", ".....2"});
    ExpectDrawn(Labelled(diagonal, eConnexity8Wrapped), {"1.....", ".....1"});
    ExpectDrawn(Labelled(rising, eConnexity4Wrapped), {".....1", "2....."});
    ExpectDrawn(Labelled(rising, eConnexity8Wrapped), {".....1", "1....."});
    ExpectDrawn(Labelled(twoFar, eConnexity8Wrapped), {"1...2."});
    ExpectDrawn(Labelled(twoFar, eConnexity12InterleavedWrapped), {"1...1."});
    ExpectDrawn(Labelled(knight, eConnexity12InterleavedWrapped), {".1....", ".....2"});
    ExpectDrawn(Labelled(knight, eConnexity20InterleavedWrapped), {".1....", ".....1"});
    ExpectDrawn(Labelled(corner, eConnexity20InterleavedWrapped), {"1.....", "......", "....2."});
    ExpectDrawn(Labelled(corner, eConnexity24InterleavedWrapped), {"1.....", "......", "....1."});
    for (eConnexityType const type : kUnwrapped)
    {
        ExpectDrawn(Labelled(straight, type), {"1....2"});
        ExpectDrawn(Labelled(rising, type), {".....1", "2....."});
    }
}

TEST(Label, Seam_JoinsLateAndRenumbers)
{
    // The right part is met first in the raster scan, the seam joins it to the left part two rows below.
    cv::Mat const image = Draw<uchar>({"...1.1", ".1.1.1", ".1...1", "11.1.1", "......"});
    ExpectDrawn(Labelled(image, eConnexity4Wrapped), {"...1.2", ".2.1.2", ".2...2", "22.3.2", "......"});
    ExpectDrawn(Labelled(image, eConnexity4), {"...1.2", ".3.1.2", ".3...2", "33.4.2", "......"});
}

TEST(Label, VerticalLine_IsNeverJoinedAcrossTopAndBottom)
{
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        SCOPED_TRACE(number);
        cv::Mat const image = Draw<uchar>({"..1..", "..1..", ".....", ".....", "..1..", "..1.."});
        ExpectDrawn(Labelled(image, number), {"..1..", "..1..", ".....", ".....", "..2..", "..2.."});
    }
}

TEST(Label, ImagesNarrowerThanTheShape_WrapOnceAndNoFurther)
{
    // Where the third row is two below the first, only the shapes that reach that far join it.
    for (int const number : {eConnexity4Wrapped, eConnexity8Wrapped})
    {
        ExpectDrawn(Labelled(Draw<uchar>({"1", ".", "1"}), number), {"1", ".", "2"});
        ExpectDrawn(Labelled(Draw<uchar>({"1.", "..", "1."}), number), {"1.", "..", "2."});
        ExpectDrawn(Labelled(Draw<uchar>({"1", "1", "."}), number), {"1", "1", "."});
        ExpectDrawn(Labelled(Draw<uchar>({"1.1"}), number), {"1.1"});
    }
    for (int const number :
         {eConnexity12InterleavedWrapped, eConnexity20InterleavedWrapped, eConnexity24InterleavedWrapped})
    {
        ExpectDrawn(Labelled(Draw<uchar>({"1", ".", "1", ".", ".", "1"}), number), {"1", ".", "1", ".", ".", "2"});
    }
    // Two columns: the knight's step leads two rows down to the other column, also across the seam.
    cv::Mat const two = Draw<uchar>({"1.", "..", ".1"});
    ExpectDrawn(Labelled(two, eConnexity12InterleavedWrapped), {"1.", "..", ".2"});
    ExpectDrawn(Labelled(two, eConnexity20InterleavedWrapped), {"1.", "..", ".1"});
    cv::Mat const stairs = Draw<uchar>({"1.", ".1"});
    ExpectDrawn(Labelled(stairs, eConnexity4Wrapped), {"1.", ".2"});
    ExpectDrawn(Labelled(stairs, eConnexity8Wrapped), {"1.", ".1"});
}

TEST(Label, OutsideTheTableOfShapes_EveryPixelIsAZone)
{
    for (int const number : tests::kStrangeConnexities)
    {
        SCOPED_TRACE(number);
        ExpectDrawn(Labelled(Draw<uchar>({"11.1", "1..1"}), number), {"12.3", "4..5"});
        ExpectDrawn(Labelled(Draw<cv::Vec3f>({"11.1", "1..1"}), number, CV_8UC1), {"12.3", "4..5"});
    }
}

TEST(Label, GivesNaNAndTinyNumbersNoLabel)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    float const infinity = std::numeric_limits<float>::infinity();
    cv::Mat const single =
        (cv::Mat_<float>(2, 6) << 1.0F, nan, -1.0F, 1e-11F, infinity, -infinity, //
         1e-10F, -1e-10F, std::nextafter(1e-10F, 1.0F), -0.0F, -nan, -1e-5F);
    for (int const number : {eConnexity4, eConnexity12})
    {
        cv::Mat labels = Labelled(single, number);
        EXPECT_EQ(labels.at<int>(0, 1), 0);
        EXPECT_EQ(labels.at<int>(0, 3), 0);
        EXPECT_EQ(labels.at<int>(1, 0), 0);
        EXPECT_EQ(labels.at<int>(1, 1), 0);
        EXPECT_EQ(labels.at<int>(1, 3), 0);
        EXPECT_EQ(labels.at<int>(1, 4), 0);
    }
    ExpectDrawn(Labelled(single, eConnexity4), {"1.2.33", "..2..3"});
    cv::Mat const twice =
        (cv::Mat_<double>(1, 7) << 1.0, static_cast<double>(nan), 1e-11, 2e-10, 1e-10, std::nextafter(1e-10, 1.0),
         std::nextafter(1e-10, 0.0));
    ExpectDrawn(Labelled(twice, eConnexity4), {"1..2.3."});
}

TEST(Label, TakesVectorsByTheirNorm)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    cv::Mat const image =
        (cv::Mat_<cv::Vec2f>(1, 7) << cv::Vec2f(1e-11F, 0.0F), cv::Vec2f(1e-10F, 1e-10F), cv::Vec2f(1.0F, nan),
         cv::Vec2f(0.0F, -1.0F), cv::Vec2f(0.0F, 0.0F), cv::Vec2f(1e-10F, 0.0F), cv::Vec2f(nan, nan));
    for (int const number : {eConnexity4, eConnexity8})
    {
        ExpectDrawn(Labelled(image, number), {".1.2.3."});
    }
    // The double limit is the limit itself, unlike the float nearest to it.
    ExpectDrawn(Labelled(cv::Mat(1, 1, CV_64FC2, cv::Scalar(1e-10, 0.0)), eConnexity4), {"."});
}

TEST(Label, TakesPixelsWithOneChannelThatIsNotZero)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            cv::Mat image(1, 2 * channels, CV_MAKETYPE(depth, channels), cv::Scalar::all(0));
            for (int channel = 0; channel < channels; ++channel)
            {
                tests::SetElement(image, 0, 2 * channel, channel, 1);
            }
            SCOPED_TRACE(cv::typeToString(image.type()));
            for (int number = 0; number < 5; ++number)
            {
                cv::Mat const labels = Labelled(image, number);
                for (int x = 0; x < labels.cols; ++x)
                {
                    EXPECT_EQ(labels.at<int>(0, x), x % 2 == 0 ? x / 2 + 1 : 0) << "column " << x;
                }
            }
        }
    }
}

TEST(Label, JoinsDifferentValues)
{
    ExpectDrawn(Labelled(Draw<int>({"19.5", "28.5"}), eConnexity4), {"11.2", "11.2"});
    cv::Mat const opposite = (cv::Mat_<short>(1, 4) << -1, 1, -32768, 32767);
    ExpectDrawn(Labelled(opposite, eConnexity4), {"1111"});
}

TEST(Label, LabelImageOfSeveralChannels_TakesLabelsInItsFirstElements)
{
    cv::Mat const image = Draw<uchar>({"1.1.1", "1.1.1", "..1.."});
    for (int const labelDepth : tests::kLabelDepths)
    {
        for (int const channels : {2, 3, 4, 5})
        {
            for (int const number : {eConnexity4, eConnexity8, eConnexity20})
            {
                cv::Mat const labels = Labelled(image, number, CV_MAKETYPE(labelDepth, channels));
                SCOPED_TRACE(cv::typeToString(labels.type()));
                cv::Mat const elements = labels.reshape(1);
                cv::Mat const expected = Labelled(image, number, labelDepth);
                tests::ExpectEqualImages(elements.colRange(0, 5).clone(), expected);
                EXPECT_EQ(cv::countNonZero(elements.colRange(5, 5 * channels)), 0);
            }
        }
    }
    ExpectDrawn(Labelled(image, eConnexity4), {"1.2.3", "1.2.3", "..2.."});
}

TEST(Label, DoesNotWriteToTheImage)
{
    tests::Random random(1);
    for (int const depth : tests::kDepths)
    {
        cv::Mat const image = tests::RandomImage(random, {70, 9}, depth);
        cv::Mat const before = image.clone();
        (void)Labelled(image, eConnexity8);
        (void)Labelled(image, eConnexity20);
        tests::ExpectEqualImages(image, before);
    }
}

} // namespace

} // namespace morvane::connexity
