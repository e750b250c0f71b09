#include <morvane/connexity/ZoneMeasures.h>

#include "support/AllTypes.h"
#include "support/CompareOracle.h"
#include "support/ImageLiterals.h"
#include "support/MeasureOracle.h"
#include "support/RandomLabels.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>

namespace morvane::tests
{

namespace
{

using namespace connexity;

/// A measure that looks at positions alone.
struct PositionMeasure
{
    char const * name;
    cv::Mat (*compute)(cv::Mat const & labels);
    int start;
    std::int64_t (*update)(std::int64_t entry, int y, int x);
};

std::array const kPositionMeasures{
    PositionMeasure{
        "ComputeArea", ComputeArea, 0,
        [](std::int64_t entry, int, int) {
            return entry + 1;
        }},
    PositionMeasure{
        "ComputeRowAcc", ComputeRowAcc, 0,
        [](std::int64_t entry, int y, int) {
            return entry + y;
        }},
    PositionMeasure{
        "ComputeColAcc", ComputeColAcc, 0,
        [](std::int64_t entry, int, int x) {
            return entry + x;
        }},
    PositionMeasure{
        "ComputeRowMax", ComputeRowMax, kMaxStart,
        [](std::int64_t entry, int y, int) {
            return std::max<std::int64_t>(entry, y);
        }},
    PositionMeasure{
        "ComputeRowMin", ComputeRowMin, kMinStart,
        [](std::int64_t entry, int y, int) {
            return std::min<std::int64_t>(entry, y);
        }},
    PositionMeasure{
        "ComputeColMax", ComputeColMax, kMaxStart,
        [](std::int64_t entry, int, int x) {
            return std::max<std::int64_t>(entry, x);
        }},
    PositionMeasure{"ComputeColMin", ComputeColMin, kMinStart, [](std::int64_t entry, int, int x) {
                        return std::min<std::int64_t>(entry, x);
                    }}};

cv::Mat OraclePositions(PositionMeasure const & measure, cv::Mat const & labels)
{
    std::vector<std::int64_t> entries(static_cast<std::size_t>(OracleTableRows(labels)), measure.start);
    for (int y = 0; y < labels.rows; ++y)
    {
        for (int x = 0; x < labels.cols; ++x)
        {
            double const label = ElementAt(labels, y, x);
            if (label <= 0 || label >= static_cast<double>(entries.size())) continue;
            std::int64_t & entry = entries[static_cast<std::size_t>(label)];
            entry = measure.update(entry, y, x);
        }
    }
    cv::Mat table(static_cast<int>(entries.size()), 1, CV_32SC1);
    for (int row = 0; row < table.rows; ++row)
    {
        SetElement(table, row, 0, 0, OracleLowBits(entries[static_cast<std::size_t>(row)], CV_32S));
    }
    return table;
}

/// Few labels, many labels, and those whose table wraps to nothing.
cv::Mat SomeLabels(Random & random, int depth, LabelPattern pattern)
{
    constexpr std::array kLargest{3, 20, 254, 255};
    bool const isSigned = depth == CV_16S || depth == CV_32S;
    LabelMixture mixture{
        .largest = kLargest[static_cast<std::size_t>(random.Below(4))],
        .negativeShare = isSigned && random.Chance(0.4) ? 0.2 : 0.0};
    if (depth != CV_8U && random.Chance(0.2)) mixture.largest = 20000;
    return RandomLabels(random, RandomLabelSize(random), depth, pattern, mixture);
}

void ExpectTable(cv::Mat const & actual, cv::Mat const & expected)
{
    if (expected.rows == 0)
    {
        EXPECT_TRUE(actual.empty());
    }
    else
    {
        ExpectEqualImages(WithOneNaN(actual), WithOneNaN(expected));
    }
}

TEST(ZoneMeasures, OfPositionsAgreeWithPlainLoops)
{
    Random random(111);
    for (int const depth : kLabelDepths)
    {
        for (LabelPattern const pattern : kLabelPatterns)
        {
            for (int repeat = 0; repeat < 25; ++repeat)
            {
                cv::Mat const labels = SomeLabels(random, depth, pattern);
                FramedImage framed(labels);
                for (PositionMeasure const & measure : kPositionMeasures)
                {
                    SCOPED_TRACE(measure.name + (" of " + Case(depth, labels.size(), 0)));
                    cv::Mat const expected = OraclePositions(measure, labels);
                    ExpectTable(measure.compute(labels), expected);
                    ExpectTable(measure.compute(framed.View()), expected);
                }
                if (HasFailure()) return;
            }
        }
    }
}

void CheckValues(Random & random, int labelDepth, int valueType, LabelPattern pattern)
{
    cv::Mat const labels = SomeLabels(random, labelDepth, pattern);
    cv::Mat const values = RandomValues(random, labels.size(), valueType);
    cv::Mat const others = RandomValues(random, labels.size(), valueType);
    FramedImage framedLabels(labels);
    FramedImage framedValues(values);
    FramedImage framedOthers(others);
    for (Measure const measure : kMeasures)
    {
        SCOPED_TRACE(NameOf(measure) + (" of " + Case(labelDepth, labels.size(), 0)) + cv::typeToString(valueType));
        cv::Mat const expected = OracleTable(measure, labels, values, others);
        ExpectTable(CallCompute(measure, labels, values, others), expected);
        ExpectTable(CallCompute(measure, framedLabels.View(), framedValues.View(), framedOthers.View()), expected);
    }
}

TEST(ZoneMeasures, OfValuesAgreeWithPlainLoopsForAllTypes)
{
    Random random(112);
    for (int const labelDepth : kLabelDepths)
    {
        for (int const valueDepth : kDepths)
        {
            for (int const channels : kMeasuredChannels)
            {
                for (int repeat = 0; repeat < 24; ++repeat)
                {
                    LabelPattern const pattern = kLabelPatterns[static_cast<std::size_t>(repeat % 4)];
                    CheckValues(random, labelDepth, CV_MAKETYPE(valueDepth, channels), pattern);
                    if (HasFailure()) return;
                }
            }
        }
    }
}

TEST(ZoneMeasures, CountPixelsAndLeaveTheRowOfLabelZeroAtItsStart)
{
    cv::Mat const labels = DrawLabels({"11.4", ".144", "...."});
    ExpectEqualImages(ComputeArea(labels), Row<int>({0, 3, 0, 0, 3}).t());
    ExpectEqualImages(ComputeRowAcc(labels), Row<int>({0, 1, 0, 0, 2}).t());
    ExpectEqualImages(ComputeColAcc(labels), Row<int>({0, 2, 0, 0, 8}).t());
    ExpectEqualImages(ComputeRowMax(labels), Row<int>({kMaxStart, 1, kMaxStart, kMaxStart, 1}).t());
    ExpectEqualImages(ComputeRowMin(labels), Row<int>({kMinStart, 0, kMinStart, kMinStart, 0}).t());
    ExpectEqualImages(ComputeColMax(labels), Row<int>({kMaxStart, 1, kMaxStart, kMaxStart, 3}).t());
    ExpectEqualImages(ComputeColMin(labels), Row<int>({kMinStart, 0, kMinStart, kMinStart, 2}).t());
}

TEST(ZoneMeasures, GiveOneRowForImagesWithoutALabel)
{
    for (int const depth : kLabelDepths)
    {
        ExpectEqualImages(ComputeArea(Draw({"...", "..."}, depth)), Row<int>({0}));
        for (cv::Size const size : {cv::Size(0, 0), cv::Size(0, 5), cv::Size(5, 0)})
        {
            ExpectEqualImages(ComputeArea(cv::Mat(size, depth)), Row<int>({0}));
            ExpectEqualImages(ComputeRowMin(cv::Mat(size, depth)), Row<int>({kMinStart}));
            cv::Mat const values(size, CV_64FC1);
            ExpectEqualImages(ComputeMax(cv::Mat(size, depth), values), Row<double>({kMaxStart}));
        }
    }
}

TEST(ZoneMeasures, SetTheStartInAllChannelsAndTypes)
{
    cv::Mat const labels = Draw<uchar>({"3"});
    auto const start = static_cast<float>(kMaxStart);
    ExpectEqualImages(ComputeMax(labels, Draw<float>({"7"})), Row<float>({start, start, start, 7.0F}).t());
    cv::Vec3d const least(kMinStart, kMinStart, kMinStart);
    ExpectEqualImages(ComputeMin(labels, Draw<cv::Vec3d>({"7"})), Row<cv::Vec3d>({least, least, least, {7, 7, 7}}).t());
    cv::Vec3i const zero(0, 0, 0);
    ExpectEqualImages(
        ComputeAccumulation(labels, Draw<cv::Vec3b>({"7"})), Row<cv::Vec3i>({zero, zero, zero, {7, 7, 7}}).t());
}

TEST(ZoneMeasures, OfLabelsUpToTheLimitOfTheTypeAreEmptyOrRefusedByOpenCv)
{
    cv::Mat const values = Draw<float>({"12"});
    for (Measure const measure : kMeasures)
    {
        SCOPED_TRACE(NameOf(measure));
        EXPECT_TRUE(CallCompute(measure, Row<uchar>({255, 1}), values, values).empty());
        EXPECT_EQ(CallCompute(measure, Row<uchar>({254, 1}), values, values).rows, 255);
        EXPECT_TRUE(CallCompute(measure, Row<ushort>({65535, 1}), values, values).empty());
        EXPECT_EQ(CallCompute(measure, Row<ushort>({65534, 1}), values, values).rows, 65535);
        EXPECT_THROW((void)CallCompute(measure, Row<short>({32767, 1}), values, values), cv::Exception);
        EXPECT_EQ(CallCompute(measure, Row<short>({32766, 1}), values, values).rows, 32767);
        int const most = std::numeric_limits<int>::max();
        EXPECT_THROW((void)CallCompute(measure, Row<int>({most, 1}), values, values), cv::Exception);
        EXPECT_EQ(CallCompute(measure, Row<int>({70000, 1}), values, values).rows, 70001);
    }
    for (PositionMeasure const & measure : kPositionMeasures)
    {
        SCOPED_TRACE(measure.name);
        EXPECT_TRUE(measure.compute(Row<uchar>({255, 1})).empty());
        EXPECT_EQ(measure.compute(Row<uchar>({254, 1})).rows, 255);
        EXPECT_TRUE(measure.compute(Row<ushort>({65535, 1})).empty());
        EXPECT_EQ(measure.compute(Row<ushort>({65534, 1})).rows, 65535);
        EXPECT_THROW((void)measure.compute(Row<short>({32767, 1})), cv::Exception);
        EXPECT_EQ(measure.compute(Row<short>({32766, 1})).rows, 32767);
        EXPECT_THROW((void)measure.compute(Row<int>({std::numeric_limits<int>::max(), 1})), cv::Exception);
    }
}

TEST(ZoneMeasures, PassOverNegativeLabels)
{
    // The bit pattern of label 40000 in a CV_16S image is such a label.
    cv::Mat const labels = Row<short>({-1, 2, -25536, 2, -32768, 1});
    ExpectEqualImages(ComputeArea(labels), Row<int>({0, 1, 2}).t());
    cv::Mat const values = Row<uchar>({1, 2, 4, 8, 16, 32});
    ExpectEqualImages(ComputeAccumulation(labels, values), Row<int>({0, 32, 10}).t());
    cv::Mat const wide = Row<int>({-1, 2, -25536, 2, std::numeric_limits<int>::min(), 1});
    ExpectEqualImages(ComputeAccumulation(wide, values), Row<int>({0, 32, 10}).t());
    ExpectEqualImages(ComputeColMin(wide), Row<int>({kMinStart, 5, 1}).t());
    ExpectEqualImages(ComputeArea(Row<int>({-1, -2})), Row<int>({0}));
}

TEST(ZoneMeasures, CutSquaresAndProductsToTheTypeOfTheValues)
{
    auto const square = [](cv::Mat const & values) {
        return ElementAt(ComputeSQAccumulation(cv::Mat::ones(values.size(), CV_8U), values), 1, 0);
    };
    EXPECT_EQ(square(Row<uchar>({16})), 0);
    EXPECT_EQ(square(Row<uchar>({3})), 9);
    EXPECT_EQ(square(Row<uchar>({16, 3, 17})), 9 + 289 % 256);
    EXPECT_EQ(square(Row<ushort>({256})), 0);
    EXPECT_EQ(square(Row<ushort>({257})), 66049 % 65536);
    EXPECT_EQ(square(Row<short>({-256})), 0);
    EXPECT_EQ(square(Row<short>({182})), 33124 - 65536);
    EXPECT_EQ(square(Row<short>({-3, 182})), 9 + 33124 - 65536);
    EXPECT_EQ(square(Row<int>({65536})), 0);
    EXPECT_EQ(square(Row<int>({46341})), 2147488281.0 - 4294967296.0);
    EXPECT_EQ(square(Row<float>({4097.0F})), static_cast<double>(4097.0F * 4097.0F));
    EXPECT_EQ(square(Row<double>({4097.0})), 4097.0 * 4097.0);
    cv::Mat const labels = Draw<uchar>({"11"});
    ExpectEqualImages(
        ComputeProductAccumulation(labels, Row<uchar>({100, 2}), Row<uchar>({3, 5})), Row<int>({0, 44 + 10}).t());
    ExpectEqualImages(
        ComputeProductAccumulation(labels, Row<short>({-300, 2}), Row<short>({300, -5})),
        Row<int>({0, -90000 + 65536 - 10}).t());
}

TEST(ZoneMeasures, WrapIntegerSumsAround)
{
    int const most = std::numeric_limits<int>::max();
    int const least = std::numeric_limits<int>::min();
    cv::Mat const labels = Draw<uchar>({"11223"});
    ExpectEqualImages(
        ComputeAccumulation(labels, Row<int>({most, 1, least, -1, most})), Row<int>({0, least, most, most}).t());
    // The squares of both extremes are 1 and 0.
    ExpectEqualImages(
        ComputeSQAccumulation(labels, Row<int>({most, 2, least, 3, 40000})), Row<int>({0, 5, 9, 1600000000}).t());
    cv::Mat const column(70000, 1, CV_8UC1, cv::Scalar(1));
    int const sum = static_cast<int>(69999LL * 70000 / 2 - 4294967296LL);
    ExpectEqualImages(ComputeRowAcc(column), Row<int>({0, sum}).t());
    ExpectEqualImages(ComputeColAcc(column.t()), Row<int>({0, sum}).t());
}

TEST(ZoneMeasures, SumLongRunsOfExtremes)
{
    for (int const depth : {CV_8U, CV_16U, CV_16S, CV_32S, CV_32F})
    {
        for (int const channels : kMeasuredChannels)
        {
            for (cv::Size const size : {cv::Size(70001, 1), cv::Size(1, 70001), cv::Size(263, 301)})
            {
                cv::Mat const labels(size, CV_16UC1, cv::Scalar(2));
                double const most = depth == CV_32F ? 0.1 : 2147483647.0;
                cv::Mat const values(size, CV_MAKETYPE(depth, channels), cv::Scalar::all(most));
                for (Measure const measure : kMeasures)
                {
                    SCOPED_TRACE(NameOf(measure) + (" of " + Case(values.type(), size, 0)));
                    ExpectTable(
                        CallCompute(measure, labels, values, values), OracleTable(measure, labels, values, values));
                }
            }
        }
    }
}

TEST(ZoneMeasures, KeepTheStartAgainstValuesBeyondIt)
{
    cv::Mat const labels = Draw<uchar>({"12"});
    int const least = std::numeric_limits<int>::min();
    ExpectEqualImages(
        ComputeMax(labels, Row<int>({least, least + 2})), Row<int>({kMaxStart, kMaxStart, least + 2}).t());
    ExpectEqualImages(ComputeMax(labels, Row<double>({-3e9, -1.5})), Row<double>({kMaxStart, kMaxStart, -1.5}).t());
    ExpectEqualImages(ComputeMin(labels, Row<double>({3e9, 1.5})), Row<double>({kMinStart, kMinStart, 1.5}).t());
}

TEST(ZoneMeasures, LetNaNReplaceTheExtremeAndTheNextValueReplaceNaN)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    cv::Mat const labels = Draw<uchar>({"111222"});
    cv::Mat const values = Row<float>({9, nan, 2, 1, 5, nan});
    ExpectTable(ComputeMax(labels, values), Row<float>({static_cast<float>(kMaxStart), 2, nan}).t());
    cv::Mat const lows = Row<float>({1, nan, 2, 5, 1, nan});
    ExpectTable(ComputeMin(labels, lows), Row<float>({static_cast<float>(kMinStart), 2, nan}).t());
}

TEST(ZoneMeasures, TakeTheLaterOfTwoEqualZeros)
{
    cv::Mat const labels = Draw<uchar>({"1122"});
    cv::Mat const values = Row<double>({0.0, -0.0, -0.0, 0.0});
    ExpectEqualImages(ComputeMax(labels, values), Row<double>({kMaxStart, -0.0, 0.0}).t());
    ExpectEqualImages(ComputeMin(labels, values), Row<double>({kMinStart, -0.0, 0.0}).t());
}

TEST(ZoneMeasures, AddFloatsInRasterOrderInTheirOwnPrecision)
{
    cv::Mat const labels = Draw<uchar>({"12", "12", "12"});
    cv::Mat const values = (cv::Mat_<float>(3, 2) << 16777216.0F, 1.0F, 1.0F, 1.0F, 1.0F, 16777216.0F);
    ExpectEqualImages(ComputeAccumulation(labels, values), Row<float>({0.0F, 16777216.0F, 16777218.0F}).t());
}

} // namespace

} // namespace morvane::tests
