// Histogram, entropy, median, mean and deviation of whole images small enough to see.
#include <morvane/filters/Statistics.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace morvane::filters
{

namespace
{

using tests::Draw;
using tests::Drawing;
using tests::ExpectEqualImages;
using tests::Row;

cv::Mat Histogram(cv::Mat const & src, int maxValue)
{
    cv::Mat hist;
    EXPECT_TRUE(ComputeHistogram(src, hist, maxValue));
    return hist;
}

double Entropy(cv::Mat const & src)
{
    double entropy = -7.0;
    EXPECT_TRUE(EntropyNoZero(src, entropy));
    return entropy;
}

double Median(cv::Mat const & src)
{
    double median = -7.0;
    EXPECT_TRUE(MedianNoZero(src, median));
    return median;
}

TEST(ComputeHistogram, CountsEachValueInAColumnOfFloats)
{
    Drawing const drawing = {"..1", "331", "352"};
    for (int const depth : {CV_8U, CV_16U, CV_32F})
    {
        ExpectEqualImages(Histogram(Draw(drawing, depth), 5), Row<float>({2, 2, 1, 3, 0, 1}).t());
    }
}

TEST(ComputeHistogram, LeavesOutWhatLiesAboveTheLastBin)
{
    ExpectEqualImages(Histogram(Draw<uchar>({"..1", "331", "352"}), 2), Row<float>({2, 2, 1}).t());
    ExpectEqualImages(Histogram(Draw<uchar>({"..1", "331", "352"}), 0), Row<float>({2}));
    ExpectEqualImages(
        Histogram(Row<ushort>({65535, 65534, 0, 65535}), 65534).rowRange(65533, 65535), Row<float>({0, 1}).t());
}

TEST(ComputeHistogram, CutsFloatsDownToTheirBin)
{
    float const infinity = std::numeric_limits<float>::infinity();
    cv::Mat const image =
        Row<float>({0.0F, -0.0F, 0.99F, 1.0F, 1.5F, 2.999F, 3.0F, -0.01F, -1.0F, infinity, -infinity, 1e30F});
    ExpectEqualImages(Histogram(image, 2), Row<float>({3, 2, 1}).t());
}

TEST(ComputeHistogram, ReplacesWhatTheHistogramWas)
{
    cv::Mat const image = Draw<uchar>({"1221"});
    for (cv::Mat hist : {Draw<uchar>({"55", "55"}), Draw<float>({"777"}), Draw<float>({"7", "7", "7"})})
    {
        ASSERT_TRUE(ComputeHistogram(image, hist, 2));
        ExpectEqualImages(hist, Row<float>({0, 2, 2}).t());
    }
}

TEST(ComputeHistogram, PassesOnTheExceptionsOfOpenCV)
{
    cv::Mat hist;
    for (int const depth : {CV_8S, CV_16S, CV_32S, CV_64F, CV_16F})
    {
        EXPECT_THROW(static_cast<void>(ComputeHistogram(cv::Mat::zeros(2, 3, depth), hist, 5)), cv::Exception) << depth;
    }
    for (int const type : {CV_8UC3, CV_16UC2, CV_32FC4})
    {
        EXPECT_THROW(static_cast<void>(ComputeHistogram(Draw({"12"}, type), hist, 5)), cv::Exception) << type;
    }
    int const least = std::numeric_limits<int>::min();
    int const most = std::numeric_limits<int>::max();
    for (int const maxValue : {-1, -2, -1000, least, most})
    {
        for (int const depth : {CV_8U, CV_16U, CV_32F})
        {
            EXPECT_THROW(static_cast<void>(ComputeHistogram(Draw({"12"}, depth), hist, maxValue)), cv::Exception);
        }
    }
}

TEST(EntropyNoZero, OfHalfZerosAndHalfOnes_IsTheLogarithmOfTwo)
{
    for (int const depth : {CV_8U, CV_16U, CV_32F})
    {
        EXPECT_DOUBLE_EQ(Entropy(Draw({"..11", "11.."}, depth)), std::log(2.0));
    }
}

TEST(EntropyNoZero, OfEqualSharesIsTheLogarithmOfTheirNumber)
{
    EXPECT_DOUBLE_EQ(Entropy(Draw<uchar>({".123", "4567"})), std::log(8.0));
    EXPECT_DOUBLE_EQ(Entropy(Draw<uchar>({".123", "123.", "1.23"})), std::log(4.0));
}

TEST(EntropyNoZero, AddsItsTermsInTheOrderOfTheValues)
{
    double const one = 1.0 / 7.0;
    double const two = 2.0 / 7.0;
    double const four = 4.0 / 7.0;
    double const sum = four * std::log(four) + one * std::log(one) + two * std::log(two);
    EXPECT_EQ(Entropy(Draw<uchar>({"9.5..9."})), -sum);
}

TEST(EntropyNoZero, OfOneValueIsZero)
{
    for (int const value : {0, 1, 254, 255})
    {
        EXPECT_EQ(Entropy(cv::Mat(3, 5, CV_8UC1, cv::Scalar(value))), 0.0) << value;
    }
    EXPECT_EQ(Entropy(Draw<uchar>({"7"})), 0.0);
}

TEST(EntropyNoZero, CountsPixelsOf255WithoutATermOfTheirOwn)
{
    EXPECT_EQ(Entropy(Row<uchar>({255, 255, 255, 254})), -(0.25 * std::log(0.25)));
    EXPECT_EQ(Entropy(Row<ushort>({255, 65535, 256, 254})), -(0.25 * std::log(0.25)));
    EXPECT_EQ(Entropy(Row<float>({255.5F, 1e30F, -1.0F, 254.9F})), -(0.25 * std::log(0.25)));
}

TEST(EntropyNoZero, CountsFloatsByTheirWholePart)
{
    EXPECT_DOUBLE_EQ(Entropy(Row<float>({3.0F, 3.9F, 4.0F, 4.5F})), std::log(2.0));
}

TEST(EntropyNoZero, PassesOnTheExceptionsOfOpenCV)
{
    for (int const depth : {CV_8S, CV_16S, CV_32S, CV_64F, CV_16F})
    {
        double entropy = 0.0;
        EXPECT_THROW(static_cast<void>(EntropyNoZero(cv::Mat::zeros(2, 3, depth), entropy)), cv::Exception) << depth;
    }
    double entropy = 0.0;
    EXPECT_THROW(static_cast<void>(EntropyNoZero(Draw<cv::Vec2b>({"12"}), entropy)), cv::Exception);
}

TEST(MedianNoZero, IsTheMiddleValueOrTheUpperOneOfTwo)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        EXPECT_EQ(Median(Draw({"12", "34"}, depth)), 3.0);
        EXPECT_EQ(Median(Draw({"213"}, depth)), 2.0);
        EXPECT_EQ(Median(Draw({"5"}, depth)), 5.0);
        EXPECT_EQ(Median(Draw({"83"}, depth)), 8.0);
        EXPECT_EQ(Median(Draw({"44", "44"}, depth)), 4.0);
    }
}

TEST(MedianNoZero, LeavesOutZeros)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        EXPECT_EQ(Median(Draw({"....9.", ".3..5."}, depth)), 5.0);
        EXPECT_EQ(Median(Draw({"......", "......"}, depth)), 0.0);
        EXPECT_EQ(Median(Draw({"."}, depth)), 0.0);
    }
}

template <class T>
void ExpectNegativesLeftOut()
{
    T const least = std::numeric_limits<T>::lowest();
    EXPECT_EQ(Median(Row<T>({T(-5), T(-1), least, T(7), T(0), T(3), T(-9)})), 7.0);
    EXPECT_EQ(Median(Row<T>({T(-5), T(-1), least})), 0.0);
}

TEST(MedianNoZero, LeavesOutNegativeValues)
{
    ExpectNegativesLeftOut<short>();
    ExpectNegativesLeftOut<int>();
    ExpectNegativesLeftOut<float>();
    ExpectNegativesLeftOut<double>();
}

template <class T>
void ExpectSpecialsSorted()
{
    T const nan = std::numeric_limits<T>::quiet_NaN();
    T const infinity = std::numeric_limits<T>::infinity();
    T const least = std::numeric_limits<T>::denorm_min();
    EXPECT_EQ(Median(Row<T>({nan, nan, nan})), 0.0);
    EXPECT_EQ(Median(Row<T>({nan, T(2), nan, T(1), nan})), 2.0);
    EXPECT_EQ(Median(Row<T>({infinity, T(1), infinity})), static_cast<double>(infinity));
    EXPECT_EQ(Median(Row<T>({-infinity, infinity, T(1), T(2)})), 2.0);
    // A value above 0 counts, however small it is.
    EXPECT_EQ(Median(Row<T>({T(0), least, -least, T(-0.0)})), static_cast<double>(least));
    EXPECT_EQ(Median(Row<T>({least, T(0.25), T(1e-11)})), static_cast<double>(T(1e-11)));
}

TEST(MedianNoZero, LeavesOutNaNAndKeepsInfinitiesAndTinyNumbers)
{
    ExpectSpecialsSorted<float>();
    ExpectSpecialsSorted<double>();
}

TEST(MedianNoZero, ReachesTheExtremesOfTheType)
{
    tests::ForEachElement([]<class T> {
        T const most = std::numeric_limits<T>::max();
        T const next = std::numeric_limits<T>::is_integer ? static_cast<T>(most - 1) : std::nextafter(most, T(0));
        EXPECT_EQ(Median(Row<T>({T(1), most, T(0)})), static_cast<double>(most));
        EXPECT_EQ(Median(Row<T>({next, T(1), most})), static_cast<double>(next));
    });
}

TEST(MeanAndStdDev, CountsEveryPixelAndDividesByTheirNumber)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        double mean = 0.0;
        double stdDev = 0.0;
        ASSERT_TRUE(MeanAndStdDev(Draw({".2", "46"}, depth), mean, stdDev));
        EXPECT_EQ(mean, 3.0);
        EXPECT_EQ(stdDev, std::sqrt(5.0));
        ASSERT_TRUE(MeanAndStdDev(Draw({"9"}, depth), mean, stdDev));
        EXPECT_EQ(mean, 9.0);
        EXPECT_EQ(stdDev, 0.0);
    }
}

TEST(MeanAndStdDev, CountsNegativeValues)
{
    double mean = 0.0;
    double stdDev = 0.0;
    ASSERT_TRUE(MeanAndStdDev(Row<short>({-6, 0, 2, 0}), mean, stdDev));
    EXPECT_EQ(mean, -1.0);
    EXPECT_EQ(stdDev, 3.0);
}

TEST(MeanAndStdDev, LooksAtTheFirstChannel)
{
    double mean = 0.0;
    double stdDev = 0.0;
    ASSERT_TRUE(MeanAndStdDev(Row<cv::Vec3b>({{1, 50, 9}, {5, 70, 9}}), mean, stdDev));
    EXPECT_EQ(mean, 3.0);
    EXPECT_EQ(stdDev, 2.0);
    cv::Mat five(1, 2, CV_16SC(5));
    tests::FillBytes(five, 1);
    tests::SetElement(five, 0, 0, 0, -4);
    tests::SetElement(five, 0, 1, 0, -8);
    ASSERT_TRUE(MeanAndStdDev(five, mean, stdDev));
    EXPECT_EQ(mean, -6.0);
    EXPECT_EQ(stdDev, 2.0);
}

TEST(MeanAndStdDev, LeavesTheDepthToOpenCV)
{
    double mean = 0.0;
    double stdDev = 0.0;
    ASSERT_TRUE(MeanAndStdDev(Draw<schar>({"24"}) - 6, mean, stdDev));
    EXPECT_EQ(mean, -3.0);
    EXPECT_EQ(stdDev, 1.0);
    EXPECT_THROW(static_cast<void>(MeanAndStdDev(cv::Mat::zeros(2, 3, CV_16FC1), mean, stdDev)), cv::Exception);
}

} // namespace

} // namespace morvane::filters
