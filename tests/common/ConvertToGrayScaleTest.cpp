#include <morvane/common/ImageCompare.h>

#include "support/AllTypes.h"
#include "support/CompareOracle.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace morvane::tests
{

namespace
{

using common::ConvertToGrayScale;

/// The grey image of a one-channel image without NaN and infinities whose values differ.
cv::Mat OracleGrey(cv::Mat const & image)
{
    double least = ElementAt(image, 0, 0);
    double most = least;
    for (int number = 0; number < image.rows * image.cols; ++number)
    {
        double const value = ElementAt(image, number / image.cols, number % image.cols);
        least = std::min(least, value);
        most = std::max(most, value);
    }
    double const scale = 256.0 / (most - least);
    cv::Mat grey(image.rows, image.cols, CV_8UC1);
    for (int number = 0; number < image.rows * image.cols; ++number)
    {
        int const y = number / image.cols;
        int const x = number % image.cols;
        SetElement(grey, y, x, 0, OracleElement(ElementAt(image, y, x) * scale, CV_8U));
    }
    return grey;
}

/// Finite values: over the whole range of the type, or few and small.
cv::Mat FiniteImage(Random & random, cv::Size size, int depth)
{
    cv::Mat image(size, depth);
    bool const small = random.Chance(0.4);
    double const reach = std::ldexp(1.0, random.Below(depth == CV_64F ? 80 : 60) - 30);
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            double value = small ? random.Below(7) : OracleLowBits(static_cast<std::int64_t>(random.Next()), depth);
            if (depth == CV_32F || depth == CV_64F) value = (random.Unit() - 0.3) * reach;
            SetElement(image, y, x, 0, value);
        }
    }
    return image;
}

void ExpectRefused(cv::Mat const & image)
{
    for (cv::Mat grey : {cv::Mat(), Draw<ushort>({"123"}), Draw({"55", "55"}, image.type())})
    {
        Snapshot const snapshot(grey);
        EXPECT_FALSE(ConvertToGrayScale(image, grey));
        EXPECT_TRUE(snapshot.IsUntouched());
    }
}

TEST(ConvertToGrayScale, ScalesByTheRangeCutsAndKeepsTheLowBits)
{
    cv::Mat grey;
    // A range of 128 from 0: the maximum is 256, whose low bits are 0.
    cv::Mat const bytes = Row<uchar>({0, 1, 64, 127, 128});
    ASSERT_TRUE(ConvertToGrayScale(bytes, grey));
    ExpectEqualImages(grey, Row<uchar>({0, 2, 128, 254, 0}));
    // The minimum is not subtracted: 100 to 110 is scaled by 25.6.
    cv::Mat const high = Row<ushort>({100, 101, 110});
    ASSERT_TRUE(ConvertToGrayScale(high, grey));
    ExpectEqualImages(grey, Row<uchar>({0, 2585 % 256, 0}));
}

TEST(ConvertToGrayScale, CutsNegativeValuesTowardsZero)
{
    cv::Mat grey;
    // Scaled by 25.6: -128, -25.6, 0, 25.6, 128.
    cv::Mat const image = Row<short>({-5, -1, 0, 1, 5});
    ASSERT_TRUE(ConvertToGrayScale(image, grey));
    ExpectEqualImages(grey, Row<uchar>({128, 231, 0, 25, 128}));
}

TEST(ConvertToGrayScale, ReachesOverTheWholeRangeOfIntegers)
{
    cv::Mat grey;
    int const least = std::numeric_limits<int>::min();
    int const most = std::numeric_limits<int>::max();
    cv::Mat const image = Row<int>({least, -1, 0, most});
    ASSERT_TRUE(ConvertToGrayScale(image, grey));
    // Just more than -128 and just less than 128 but for the end of the range.
    ExpectEqualImages(grey, OracleGrey(image));
    EXPECT_EQ(grey.at<uchar>(0, 2), 0);
    EXPECT_EQ(grey.at<uchar>(0, 0), 128);
}

TEST(ConvertToGrayScale, ComputesInDoubleForSinglePrecision)
{
    cv::Mat grey;
    cv::Mat const image = Row<float>({0.0F, 0.1F, 0.7F, 0.9F});
    ASSERT_TRUE(ConvertToGrayScale(image, grey));
    ExpectEqualImages(grey, OracleGrey(image));
}

TEST(ConvertToGrayScale, AgreesWithThePlainFormForAllDepthsAndMakesTheOutputAnew)
{
    Random random(71);
    for (int const depth : kDepths)
    {
        for (int repeat = 0; repeat < 40; ++repeat)
        {
            cv::Size const size(2 + random.Below(70), 1 + random.Below(9));
            SCOPED_TRACE(Case(depth, size, 0));
            cv::Mat image = FiniteImage(random, size, depth);
            SetElement(image, 0, 0, 0, 9);
            SetElement(image, 0, 1, 0, 8);
            cv::Mat const expected = OracleGrey(image);
            FramedImage framed(image);
            cv::Mat grey = repeat % 2 == 0 ? cv::Mat() : Draw<double>({"12"});
            EXPECT_TRUE(ConvertToGrayScale(repeat % 4 < 2 ? image : framed.View(), grey));
            ExpectEqualImages(grey, expected);
            EXPECT_TRUE(framed.IsFrameUntouched());
        }
    }
}

TEST(ConvertToGrayScale, RefusesConstantAndEmptyImages)
{
    for (int const depth : kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        ExpectRefused(Draw({"777", "777"}, depth));
        ExpectRefused(Draw({"...", "..."}, depth));
        ExpectRefused(Draw({"7"}, depth));
        ExpectRefused(cv::Mat(0, 0, depth));
        ExpectRefused(cv::Mat(0, 5, depth));
        ExpectRefused(cv::Mat(5, 0, depth));
    }
}

TEST(ConvertToGrayScale, RefusesDepthsThatTheLibraryDoesNotKnow)
{
    for (int const depth : kRefusedDepths)
    {
        cv::Mat image(2, 3, depth);
        FillBytes(image, 0);
        image.ptr()[0] = 0x3C;
        cv::Mat grey = Draw<uchar>({"12"});
        Snapshot const snapshot(grey);
        EXPECT_FALSE(ConvertToGrayScale(image, grey));
        EXPECT_TRUE(snapshot.IsUntouched());
    }
}

/// An image whose pixels take all kinds of values and which is not flat.
cv::Mat UnevenImage(Random & random, cv::Size size, int depth)
{
    cv::Mat image = FiniteImage(random, size, depth);
    SetElement(image, 0, 0, 0, 9);
    SetElement(image, 0, 1, 0, 8);
    return image;
}

TEST(ConvertToGrayScale, ReplacesTheImageItselfWhereBothAreOneObject)
{
    Random random(72);
    for (int const depth : kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        cv::Mat image = UnevenImage(random, {70, 9}, depth);
        cv::Mat const expected = OracleGrey(image);
        ASSERT_TRUE(ConvertToGrayScale(image, image));
        ExpectEqualImages(image, expected);
        FramedImage framed(UnevenImage(random, {33, 7}, depth));
        cv::Mat const expectedOfView = OracleGrey(framed.View());
        ASSERT_TRUE(ConvertToGrayScale(framed.View(), framed.View()));
        ExpectEqualImages(framed.View(), expectedOfView);
        EXPECT_TRUE(framed.IsFrameUntouched());
    }
}

TEST(ConvertToGrayScale, WritesOverPixelsThatTheImageSharesWithTheOutput)
{
    Random random(73);
    cv::Mat image = UnevenImage(random, {70, 9}, CV_8U);
    cv::Mat const expected = OracleGrey(image);
    cv::Mat grey = image;
    uchar const * const place = grey.data;
    ASSERT_TRUE(ConvertToGrayScale(image, grey));
    EXPECT_EQ(grey.data, place);
    ExpectEqualImages(grey, expected);
    ExpectEqualImages(image, expected);
}

TEST(ConvertToGrayScale, LeavesAnImageOfAnotherDepthAloneThatSharesPixelsWithTheOutput)
{
    Random random(74);
    cv::Mat image = UnevenImage(random, {70, 9}, CV_32F);
    cv::Mat const expected = OracleGrey(image);
    cv::Mat grey = image;
    Snapshot const snapshot(image);
    ASSERT_TRUE(ConvertToGrayScale(image, grey));
    ExpectEqualImages(grey, expected);
    EXPECT_TRUE(snapshot.IsUntouched());
}

TEST(ConvertToGrayScale, WritesOverAViewThatFitsAndItsParent)
{
    Random random(75);
    for (int const depth : kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        cv::Mat const image = UnevenImage(random, {33, 7}, depth);
        FramedImage framed(cv::Mat(image.size(), CV_8UC1, cv::Scalar(0x5B)));
        uchar const * const place = framed.View().data;
        ASSERT_TRUE(ConvertToGrayScale(image, framed.View()));
        EXPECT_EQ(framed.View().data, place);
        ExpectEqualImages(framed.View(), OracleGrey(image));
        EXPECT_TRUE(framed.IsFrameUntouched());
    }
}

TEST(ConvertToGrayScale, LeavesTheParentOfAViewThatDoesNotFit)
{
    cv::Mat const image = Row<uchar>({0, 1, 64, 127, 128});
    for (cv::Mat const & content : {cv::Mat(1, 4, CV_8UC1), cv::Mat(1, 5, CV_8SC1), cv::Mat(1, 5, CV_8UC2)})
    {
        FramedImage framed(cv::Mat(content.size(), content.type(), cv::Scalar::all(0x5B)));
        cv::Mat grey = framed.View();
        Snapshot const snapshot(framed.View());
        ASSERT_TRUE(ConvertToGrayScale(image, grey));
        ExpectEqualImages(grey, Row<uchar>({0, 2, 128, 254, 0}));
        EXPECT_TRUE(snapshot.IsUntouched());
        EXPECT_TRUE(framed.IsFrameUntouched());
    }
}

template <class T>
void ExpectFirstElementsScaled()
{
    // Three pixels of two channels: a range of 128 over all elements, of which the first three are scaled.
    cv::Mat image(1, 3, CV_MAKETYPE(cv::DataType<T>::depth, 2));
    std::array const elements{T(1), T(64), T(127), T(0), T(128), T(5)};
    std::copy(elements.begin(), elements.end(), image.ptr<T>());
    cv::Mat grey;
    ASSERT_TRUE(ConvertToGrayScale(image, grey));
    ExpectEqualImages(grey, Row<uchar>({2, 128, 254}));
}

TEST(ConvertToGrayScale, ScalesTheFirstElementsOfEachRowOfSeveralChannelsByTheRangeOfAll)
{
    ForEachElement([]<class T> { ExpectFirstElementsScaled<T>(); });
    cv::Mat const constant = Draw<cv::Vec4s>({"777"});
    ExpectRefused(constant);
}

TEST(ConvertToGrayScale, RefusesMatricesOfMoreThanTwoDimensions)
{
    cv::Mat solid(std::vector<int>{2, 3, 4}, CV_8UC1, cv::Scalar(1));
    solid.ptr()[0] = 9;
    ExpectRefused(solid);
}

template <class T>
void ExpectSpecialsStayInBounds()
{
    T const nan = std::numeric_limits<T>::quiet_NaN();
    T const infinity = std::numeric_limits<T>::infinity();
    T const most = std::numeric_limits<T>::max();
    for (cv::Mat const & image :
         {Row({nan, T(1), T(2), nan}), Row({T(0), nan, infinity, T(1)}), Row({-infinity, nan, infinity, T(1)}),
          Row({nan, nan, nan, nan}), Row({-most, most, T(0), T(1)})})
    {
        // Which grey such pixels get is open; a grey image is made whole or not at all.
        cv::Mat grey;
        if (ConvertToGrayScale(image, grey))
        {
            EXPECT_EQ(grey.size(), image.size());
            EXPECT_EQ(grey.type(), CV_8UC1);
        }
        else
        {
            EXPECT_TRUE(grey.empty());
        }
    }
}

TEST(ConvertToGrayScale, StaysInBoundsWithNaNAndInfinities)
{
    ExpectSpecialsStayInBounds<float>();
    ExpectSpecialsStayInBounds<double>();
}

} // namespace

} // namespace morvane::tests
