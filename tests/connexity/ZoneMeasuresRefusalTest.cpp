// What the tables of zone measures accept and refuse, and values of another size than the labels.
#include <morvane/connexity/ZoneMeasures.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/MeasureOracle.h"
#include "support/RandomLabels.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

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
