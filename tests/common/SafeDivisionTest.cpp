#include <morvane/common/ImageCompare.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace morvane::tests
{

namespace
{

using common::SafeDivision;

TEST(SafeDivision, GivesZeroWhereTheDivisorIsZero)
{
    cv::Mat const numerator = (cv::Mat_<double>(2, 3) << 1, -1, 0, 6, 7, 0);
    cv::Mat const denominator = (cv::Mat_<double>(2, 3) << 0, -0.0, 0, 2, -4, 5);
    cv::Mat const expected = (cv::Mat_<double>(2, 3) << 0, 0, 0, 3, -1.75, 0);
    ExpectEqualImages(SafeDivision(numerator, denominator), expected);
}

TEST(SafeDivision, RoundsIntegersAsOpenCvDoes)
{
    cv::Mat const numerator = Row<uchar>({7, 5, 9, 255, 10, 1});
    cv::Mat const denominator = Row<uchar>({2, 2, 4, 1, 0, 255});
    cv::Mat const expected = Row<uchar>({4, 2, 2, 255, 0, 0});
    ExpectEqualImages(SafeDivision(numerator, denominator), expected);
}

TEST(SafeDivision, LetsNaNAndInfinitiesPassWhereTheDivisorIsNotZero)
{
    double const infinity = std::numeric_limits<double>::infinity();
    double const nan = std::numeric_limits<double>::quiet_NaN();
    cv::Mat const numerator = Row<double>({infinity, nan, 1, 1, nan, infinity});
    cv::Mat const denominator = Row<double>({2, 2, infinity, nan, 0, 0});
    cv::Mat const quotient = SafeDivision(numerator, denominator);
    ASSERT_EQ(quotient.type(), CV_64FC1);
    ASSERT_EQ(quotient.size(), cv::Size(6, 1));
    EXPECT_EQ(quotient.at<double>(0), infinity);
    EXPECT_TRUE(std::isnan(quotient.at<double>(1)));
    EXPECT_EQ(quotient.at<double>(2), 0.0);
    EXPECT_TRUE(std::isnan(quotient.at<double>(3)));
    EXPECT_EQ(quotient.at<double>(4), 0.0);
    EXPECT_EQ(quotient.at<double>(5), 0.0);
}

TEST(SafeDivision, AgreesWithOpenCvAwayFromZerosForAllDepths)
{
    Random random(61);
    for (int const depth : kDepths)
    {
        for (int repeat = 0; repeat < 10; ++repeat)
        {
            cv::Size const size(1 + random.Below(70), 1 + random.Below(9));
            cv::Mat const numerator = RandomImage(random, size, depth, {.alphabet = 100});
            cv::Mat const denominator = RandomImage(random, size, depth, {.alphabet = 10});
            SCOPED_TRACE(Case(depth, size, 0));
            cv::Mat expected = numerator / denominator;
            for (int y = 0; y < size.height; ++y)
            {
                for (int x = 0; x < size.width; ++x)
                {
                    if (ElementAt(denominator, y, x) == 0.0) SetElement(expected, y, x, 0, 0.0);
                }
            }
            ExpectEqualImages(SafeDivision(numerator, denominator), expected);
            FramedImage framedNumerator(numerator);
            FramedImage framedDenominator(denominator);
            ExpectEqualImages(SafeDivision(framedNumerator.View(), framedDenominator.View()), expected);
        }
    }
}

TEST(SafeDivision, LeavesItsArgumentsAlone)
{
    cv::Mat const numerator = Draw<float>({"123", "456"});
    cv::Mat const denominator = Draw<float>({".2.", "1.3"});
    Snapshot const numeratorBefore(numerator);
    Snapshot const denominatorBefore(denominator);
    cv::Mat const quotient = SafeDivision(numerator, denominator);
    EXPECT_NE(quotient.data, numerator.data);
    EXPECT_TRUE(numeratorBefore.IsUntouched());
    EXPECT_TRUE(denominatorBefore.IsUntouched());
}

TEST(SafeDivision, GivesZerosForADivisorOfSeveralChannels)
{
    for (int const depth : kDepths)
    {
        for (int const channels : {2, 3, 4})
        {
            int const type = CV_MAKETYPE(depth, channels);
            cv::Mat const image = Draw({"123", "456"}, type);
            ExpectEqualImages(SafeDivision(image, image), cv::Mat::zeros(2, 3, type));
        }
    }
}

TEST(SafeDivision, GivesNothingForDepthsThatTheLibraryDoesNotKnow)
{
    for (int const depth : kRefusedDepths)
    {
        for (int const channels : kChannelCounts)
        {
            cv::Mat unknown(2, 3, CV_MAKETYPE(depth, channels));
            FillBytes(unknown, 1);
            SCOPED_TRACE(cv::typeToString(unknown.type()));
            EXPECT_TRUE(SafeDivision(unknown, unknown).empty());
            EXPECT_TRUE(SafeDivision(unknown, Draw<float>({"123", "456"})).empty());
            EXPECT_TRUE(SafeDivision(Draw<float>({"123", "456"}), unknown).empty());
        }
    }
}

TEST(SafeDivision, GivesZerosWhereOpenCvTakesTheDivisorForAScalarOfAnotherTotal)
{
    cv::Mat const four = (cv::Mat_<double>(4, 1) << 2, 2, 2, 2);
    for (int const type : {CV_8UC1, CV_16SC1, CV_32FC3, CV_64FC1, CV_64FC4})
    {
        SCOPED_TRACE(cv::typeToString(type));
        ExpectEqualImages(SafeDivision(Draw({"248", "684"}, type), four), cv::Mat::zeros(2, 3, type));
    }
    cv::Mat const one = Row<double>({2});
    ExpectEqualImages(SafeDivision(Draw<float>({"248", "684"}), one), cv::Mat::zeros(2, 3, CV_32FC1));
}

TEST(SafeDivision, DividesByTheFirstOfFourDoublesWhereTheTotalsAgree)
{
    // OpenCV takes the divisor for a scalar; zeros are then looked for pixel by pixel, in raster order.
    cv::Mat const divisor = (cv::Mat_<double>(4, 1) << 2, 0, 4, 0);
    ExpectDrawn(SafeDivision(Draw<uchar>({"24", "68"}), divisor), {"1.", "3."});
    ExpectDrawn(SafeDivision(Draw<double>({"24", "68"}), divisor), {"1.", "3."});
    // A column is no scalar beside a column of its own type.
    cv::Mat const column = (cv::Mat_<double>(4, 1) << 2, 4, 6, 8);
    ExpectEqualImages(SafeDivision(column, divisor), Row<double>({1, 0, 1.5, 0}).t());
}

TEST(SafeDivision, DividesAMatrixByItself)
{
    for (int const depth : kDepths)
    {
        cv::Mat const image = Draw({"1.3", ".5z"}, depth);
        ExpectDrawn(SafeDivision(image, image), {"1.1", ".11"});
    }
}

TEST(SafeDivision, PassesOnWhatOpenCvThrows)
{
    cv::Mat const image = Draw<float>({"123", "456"});
    EXPECT_THROW((void)SafeDivision(image, Draw<float>({"12", "45"})), cv::Exception);
    EXPECT_THROW((void)SafeDivision(image, Draw<double>({"123", "456"})), cv::Exception);
    EXPECT_THROW((void)SafeDivision(Draw<cv::Vec3f>({"123", "456"}), image), cv::Exception);
    EXPECT_THROW((void)SafeDivision(cv::Mat(), cv::Mat()), cv::Exception);
    EXPECT_THROW((void)SafeDivision(image, cv::Mat()), cv::Exception);
}

} // namespace

} // namespace morvane::tests
