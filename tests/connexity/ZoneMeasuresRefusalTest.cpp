// What the tables of zone measures accept and refuse, and values of another size than the labels.
#include <morvane/connexity/ZoneMeasures.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/MeasureOracle.h"
#include "support/RandomLabels.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace morvane::tests
{

namespace
{

using namespace connexity;

constexpr std::array kPositionMeasures{ComputeArea,   ComputeRowAcc, ComputeColAcc, ComputeRowMax,
                                       ComputeRowMin, ComputeColMax, ComputeColMin};

cv::Mat Ones(cv::Size size, int type)
{
    cv::Mat image(size, type);
    FillBytes(image, 1);
    return image;
}

void ExpectAllRefuseLabels(cv::Mat const & labels)
{
    SCOPED_TRACE(cv::typeToString(labels.type()));
    for (auto const compute : kPositionMeasures)
    {
        EXPECT_TRUE(compute(labels).empty());
    }
    for (Measure const measure : kMeasures)
    {
        for (int const depth : kDepths)
        {
            for (int const channels : kMeasuredChannels)
            {
                cv::Mat const values = Ones(labels.size(), CV_MAKETYPE(depth, channels));
                EXPECT_TRUE(CallCompute(measure, labels, values, values).empty()) << NameOf(measure);
            }
        }
    }
}

void ExpectValuesRefused(cv::Mat const & labels, cv::Mat const & values)
{
    for (Measure const measure : kMeasures)
    {
        SCOPED_TRACE(NameOf(measure) + (" of " + cv::typeToString(values.type())));
        EXPECT_TRUE(CallCompute(measure, labels, values, values).empty());
    }
}

TEST(ZoneMeasures, RefuseLabelsOfOtherDepths)
{
    for (int const depth : kRefusedLabelDepths)
    {
        ExpectAllRefuseLabels(Ones({3, 2}, depth));
    }
}

TEST(ZoneMeasures, RefuseLabelsOfSeveralChannels)
{
    for (int const depth : kLabelDepths)
    {
        for (int const channels : {2, 3, 4, 5})
        {
            ExpectAllRefuseLabels(Ones({3, 2}, CV_MAKETYPE(depth, channels)));
        }
    }
}

TEST(ZoneMeasures, RefuseValuesOfTwoAndOfMoreThanThreeChannels)
{
    for (int const depth : kDepths)
    {
        for (int const channels : {2, 4, 5, 6})
        {
            for (int const labelDepth : kLabelDepths)
            {
                ExpectValuesRefused(Ones({3, 2}, labelDepth), Ones({3, 2}, CV_MAKETYPE(depth, channels)));
            }
        }
    }
}

TEST(ZoneMeasures, RefuseValuesOfDepthsThatTheLibraryDoesNotKnow)
{
    for (int const depth : kRefusedDepths)
    {
        for (int const channels : {1, 2, 3, 4})
        {
            ExpectValuesRefused(Ones({3, 2}, CV_32S), Ones({3, 2}, CV_MAKETYPE(depth, channels)));
        }
    }
}

TEST(ZoneMeasures, RefuseProductsOfDifferentTypes)
{
    cv::Mat const labels = Ones({3, 2}, CV_8U);
    for (int first = 0; first < CV_MAKETYPE(0, 5); ++first)
    {
        for (int second = 0; second < CV_MAKETYPE(0, 5); ++second)
        {
            if (first == second) continue;
            EXPECT_TRUE(ComputeProductAccumulation(labels, Ones({3, 2}, first), Ones({3, 2}, second)).empty())
                << cv::typeToString(first) << " and " << cv::typeToString(second);
        }
    }
}

TEST(ZoneMeasures, LookAtTypesBeforeTheLargestLabel)
{
    // The table of this label image cannot be made, but the refusal of the values comes first.
    cv::Mat const labels = Row<short>({32767});
    ExpectValuesRefused(labels, Ones({1, 1}, CV_8UC2));
    ExpectValuesRefused(labels, Ones({1, 1}, CV_8SC1));
    EXPECT_TRUE(ComputeProductAccumulation(labels, Ones({1, 1}, CV_8U), Ones({1, 1}, CV_16U)).empty());
    EXPECT_THROW((void)ComputeMax(labels, Ones({1, 1}, CV_8U)), cv::Exception);
}

TEST(ZoneMeasures, LeaveTheirArgumentsAlone)
{
    cv::Mat const labels = DrawLabels({"1.2", "212"});
    cv::Mat const values = Draw<float>({"123", "456"});
    Snapshot const labelsBefore(labels);
    Snapshot const valuesBefore(values);
    for (Measure const measure : kMeasures)
    {
        EXPECT_EQ(CallCompute(measure, labels, values, values).rows, 3);
    }
    for (auto const compute : kPositionMeasures)
    {
        EXPECT_EQ(compute(labels).rows, 3);
    }
    EXPECT_TRUE(labelsBefore.IsUntouched());
    EXPECT_TRUE(valuesBefore.IsUntouched());
}

TEST(ZoneMeasures, ReadLargerValuesByRasterNumber)
{
    cv::Mat const labels = Draw<uchar>({"12", "21", "13"});
    cv::Mat const values = Draw<ushort>({"12345", "6789a"});
    ExpectEqualImages(ComputeAccumulation(labels, values), Row<int>({0, 1 + 4 + 5, 2 + 3, 6}).t());
    ExpectEqualImages(ComputeMax(labels, values), Row<int>({kMaxStart, 5, 3, 6}).t());
    Random random(121);
    for (int const depth : kDepths)
    {
        for (int const channels : kMeasuredChannels)
        {
            int const type = CV_MAKETYPE(depth, channels);
            cv::Mat const many = RandomLabels(random, {33, 7}, CV_32S, LabelPattern::Runs);
            cv::Mat const first = RandomValues(random, {50, 9}, type);
            cv::Mat const second = RandomValues(random, {7, 70}, type);
            FramedImage framedFirst(first);
            for (Measure const measure : kMeasures)
            {
                SCOPED_TRACE(NameOf(measure) + (" of " + cv::typeToString(type)));
                cv::Mat const expected = WithOneNaN(OracleTable(measure, many, first, second));
                ExpectEqualImages(WithOneNaN(CallCompute(measure, many, first, second)), expected);
                ExpectEqualImages(WithOneNaN(CallCompute(measure, many, framedFirst.View(), second)), expected);
            }
        }
    }
}

TEST(ZoneMeasures, MeasureLabelsAsFarAsSmallerValuesGo)
{
    cv::Mat const labels = Draw<uchar>({"121", "213", "4.."});
    cv::Mat const values = Draw<ushort>({"123", "45."}).colRange(0, 2);
    ASSERT_FALSE(values.isContinuous());
    // Labels 1, 2, 1, 2 meet 1, 2, 4, 5; labels 3 and 4 have their rows all the same.
    ExpectEqualImages(ComputeAccumulation(labels, values), Row<int>({0, 5, 7, 0, 0}).t());
    ExpectEqualImages(ComputeMin(labels, values), Row<int>({kMinStart, 1, 2, kMinStart, kMinStart}).t());
    ExpectEqualImages(ComputeMax(labels, cv::Mat(0, 0, CV_16UC1)), cv::Mat(5, 1, CV_32SC1, cv::Scalar(kMaxStart)));
    cv::Mat const twos(3, 3, CV_16UC1, cv::Scalar(2));
    ExpectEqualImages(ComputeProductAccumulation(labels, twos, values), Row<int>({0, 10, 14, 0, 0}).t());
    ExpectEqualImages(ComputeProductAccumulation(labels, values, twos), Row<int>({0, 10, 14, 0, 0}).t());
}

/// The first pixels of an image; the others become 0.
cv::Mat FirstPixels(cv::Mat const & image, int pixels)
{
    cv::Mat first = CopyOf(image);
    for (int number = pixels; number < image.rows * image.cols; ++number)
    {
        SetElement(first, number / image.cols, number % image.cols, 0, 0);
    }
    return first;
}

TEST(ZoneMeasures, AgreeWithPlainLoopsOverThePixelsThatSmallerValuesReach)
{
    Random random(123);
    for (int const depth : kDepths)
    {
        for (int const channels : kMeasuredChannels)
        {
            int const type = CV_MAKETYPE(depth, channels);
            for (cv::Size const size : {cv::Size(33, 6), cv::Size(32, 7), cv::Size(1, 1), cv::Size(7, 32)})
            {
                cv::Mat labels = RandomLabels(random, {33, 7}, CV_16U, LabelPattern::Runs, {.largest = 8});
                // So that the table has its size for the first pixels as for all.
                labels.at<ushort>(0) = 8;
                cv::Mat const values = RandomValues(random, size, type);
                cv::Mat const first = FirstPixels(labels, size.area());
                // What lies beyond the values meets label 0.
                cv::Mat padded = cv::Mat::zeros(labels.size(), type);
                for (int number = 0; number < size.area(); ++number)
                {
                    std::memcpy(
                        padded.ptr() + static_cast<std::size_t>(number) * padded.elemSize(),
                        PixelNumber(values, number), padded.elemSize());
                }
                for (Measure const measure : kMeasures)
                {
                    SCOPED_TRACE(NameOf(measure) + (" of " + Case(type, size, 0)));
                    cv::Mat const expected = WithOneNaN(OracleTable(measure, first, padded, padded));
                    ExpectEqualImages(WithOneNaN(CallCompute(measure, labels, values, values)), expected);
                    cv::Mat const framed = FramedImage(values).View();
                    ExpectEqualImages(WithOneNaN(CallCompute(measure, labels, framed, framed)), expected);
                }
            }
        }
    }
}

TEST(ZoneMeasures, MeasureAMatrixThatIsLabelsAndValues)
{
    Random random(124);
    for (int const depth : kLabelDepths)
    {
        bool const isSigned = depth == CV_16S || depth == CV_32S;
        for (LabelPattern const pattern : kLabelPatterns)
        {
            LabelMixture const mixture{.largest = 20, .negativeShare = isSigned ? 0.2 : 0.0};
            cv::Mat const image = RandomLabels(random, {53, 7}, depth, pattern, mixture);
            cv::Mat const copy = CopyOf(image);
            FramedImage framed(image);
            for (Measure const measure : kMeasures)
            {
                SCOPED_TRACE(NameOf(measure) + (" of " + Case(depth, image.size(), 0)));
                cv::Mat const expected = OracleTable(measure, copy, copy, copy);
                ExpectEqualImages(CallCompute(measure, image, image, image), expected);
                ExpectEqualImages(CallCompute(measure, framed.View(), framed.View(), framed.View()), expected);
            }
            EXPECT_TRUE(EqualImages(image, copy));
        }
    }
}

TEST(ZoneMeasures, PassOverLabelsBeyondTheHalfOf16BitsReadAsSigned)
{
    cv::Mat labels = Row<ushort>({1, 40000, 2, 32768, 2, 65535});
    cv::Mat const asSigned(labels.size(), CV_16SC1, labels.data, labels.step);
    cv::Mat const values = Row<float>({1, 2, 3, 4, 5, 6});
    ExpectEqualImages(ComputeArea(asSigned), Row<int>({0, 1, 2}).t());
    ExpectEqualImages(ComputeAccumulation(asSigned, values), Row<float>({0, 1, 8}).t());
    ExpectEqualImages(ComputeColMax(asSigned), Row<int>({kMaxStart, 0, 4}).t());
    // Read as they are, the largest makes the table wrap; without it, all are measured.
    EXPECT_TRUE(ComputeArea(labels).empty());
    labels.at<ushort>(5) = 40000;
    cv::Mat const areas = ComputeArea(labels);
    ASSERT_EQ(areas.rows, 40001);
    EXPECT_EQ(areas.at<int>(32768), 1);
    EXPECT_EQ(areas.at<int>(40000), 2);
    EXPECT_EQ(cv::sum(areas)[0], 6);
    EXPECT_EQ(ComputeAccumulation(labels, values).at<float>(40000), 8.0F);
}

TEST(ZoneMeasures, StayInBoundsWithSmallerValues)
{
    // What such values give is open; the table has its size all the same, and the sanitizers watch.
    Random random(122);
    for (int const depth : kDepths)
    {
        for (int const channels : kMeasuredChannels)
        {
            int const type = CV_MAKETYPE(depth, channels);
            cv::Mat const labels = RandomLabels(random, {33, 7}, CV_16U, LabelPattern::Blocks);
            for (cv::Size const size :
                 {cv::Size(33, 6), cv::Size(32, 7), cv::Size(1, 1), cv::Size(7, 32), cv::Size(0, 0), cv::Size(0, 7)})
            {
                cv::Mat const values = RandomValues(random, size, type);
                cv::Mat const whole = RandomValues(random, labels.size(), type);
                for (Measure const measure : kMeasures)
                {
                    SCOPED_TRACE(NameOf(measure) + (" of " + Case(type, size, 0)));
                    int const rows = OracleTableRows(labels);
                    EXPECT_EQ(CallCompute(measure, labels, values, whole).rows, rows);
                    EXPECT_EQ(CallCompute(measure, labels, whole, values).rows, rows);
                    EXPECT_EQ(CallCompute(measure, labels, FramedImage(values).View(), values).rows, rows);
                }
            }
        }
    }
}

} // namespace

} // namespace morvane::tests
