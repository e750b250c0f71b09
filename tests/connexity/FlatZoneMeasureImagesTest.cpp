// Images in which each pixel carries a measure of its flat zone.
#include <morvane/connexity/ZoneMeasures.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/MeasureOracle.h"
#include "support/Oracles.h"
#include "support/RandomLabels.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace morvane::tests
{

namespace
{

using namespace connexity;

using Zones = std::vector<std::vector<cv::Point>>;

/// The flat zones of the pixels that are not empty.
Zones FlatZones(cv::Mat const & image, int connexity)
{
    OracleCondition equal;
    equal.isConnected = [&](cv::Point from, cv::Point to, cv::Point) {
        for (int channel = 0; channel < image.channels(); ++channel)
        {
            if (ElementAt(image, from.y, from.x, channel) != ElementAt(image, to.y, to.x, channel)) return false;
        }
        return true;
    };
    return OracleZones(OracleTakesPart(image), connexity, equal);
}

cv::Mat OracleAreas(cv::Mat const & image, int connexity)
{
    cv::Mat areas(image.rows, image.cols, CV_32SC1, cv::Scalar(0));
    for (auto const & zone : FlatZones(image, connexity))
    {
        for (cv::Point const & pixel : zone)
        {
            areas.at<int>(pixel) = static_cast<int>(zone.size());
        }
    }
    return areas;
}

/// Sums in the order in which the pixels of a zone are reached.
cv::Mat OracleSums(cv::Mat const & image, cv::Mat const & values, int connexity)
{
    cv::Mat sums(image.rows, image.cols, OracleTableType(values.type()), cv::Scalar(0));
    for (auto const & zone : FlatZones(image, connexity))
    {
        cv::Mat row(1, static_cast<int>(zone.size()), values.type());
        for (int index = 0; index < row.cols; ++index)
        {
            cv::Point const pixel = zone[static_cast<std::size_t>(index)];
            SetElement(row, 0, index, 0, ElementAt(values, pixel.y, pixel.x));
        }
        double const sum = OracleSum(row);
        for (cv::Point const & pixel : zone)
        {
            if (sum != 0.0) SetElement(sums, pixel.y, pixel.x, 0, sum);
        }
    }
    return sums;
}

/// The table entry of the zone of each pixel.
cv::Mat OracleExtremes(Measure measure, cv::Mat const & image, cv::Mat const & values, int connexity)
{
    cv::Mat const labels = OracleLabels(FlatZones(image, connexity), image.size(), CV_32SC1);
    cv::Mat const table = OracleTable(measure, labels, values, values);
    cv::Mat extremes(image.rows, image.cols, table.type(), cv::Scalar::all(0));
    for (int number = 0; number < labels.rows * labels.cols; ++number)
    {
        int const y = number / labels.cols;
        int const x = number % labels.cols;
        int const label = labels.at<int>(y, x);
        if (label == 0) continue;
        std::size_t const bytes = table.elemSize();
        std::memcpy(extremes.ptr(y) + static_cast<std::size_t>(x) * bytes, table.ptr(label), bytes);
    }
    return extremes;
}

/// Equal neighbours by chance, or large zones over many rows.
cv::Mat ZonedImage(Random & random, cv::Size size, int type)
{
    if (random.Chance(0.5)) return RandomImage(random, size, type);
    LabelPattern const pattern = kLabelPatterns[static_cast<std::size_t>(random.Below(4))];
    cv::Mat const labels = RandomLabels(random, size, CV_8U, pattern, {.largest = 3});
    cv::Mat image(size, type);
    for (int y = 0; y < size.height; ++y)
    {
        for (int element = 0; element < size.width * image.channels(); ++element)
        {
            int const x = element / image.channels();
            SetElement(image, y, x, element % image.channels(), ElementAt(labels, y, x));
        }
    }
    return image;
}

void ExpectSameUpToNaN(cv::Mat const & actual, cv::Mat const & expected)
{
    // cv::Mat::clone() and others forget the size of an empty image, and so may a result.
    if (expected.empty())
    {
        EXPECT_TRUE(actual.empty());
    }
    else
    {
        ExpectEqualImages(WithOneNaN(actual), WithOneNaN(expected));
    }
}

TEST(FlatZoneMeasureImages, WithAreaAgreesWithThePlainFloodForAllTypesAndShapes)
{
    Random random(131);
    for (int const depth : kDepths)
    {
        for (int connexity = -1; connexity <= kConnexityCount; ++connexity)
        {
            for (int repeat = 0; repeat < 8; ++repeat)
            {
                cv::Mat const image = ZonedImage(random, RandomLabelSize(random), depth);
                SCOPED_TRACE(Case(depth, image.size(), connexity));
                cv::Mat const expected = OracleAreas(image, connexity);
                FramedImage framed(image);
                ExpectSameUpToNaN(LabelFlatZonesNoZeroWithArea(image, Shape(connexity)), expected);
                ExpectSameUpToNaN(LabelFlatZonesNoZeroWithArea(framed.View(), Shape(connexity)), expected);
                if (HasFailure()) return;
            }
        }
    }
}

TEST(FlatZoneMeasureImages, WithAccumulationAgreesWithThePlainFloodForAllTypesAndShapes)
{
    Random random(132);
    for (int const depth : kDepths)
    {
        for (int const valueDepth : kDepths)
        {
            for (int connexity = -1; connexity <= kConnexityCount; ++connexity)
            {
                cv::Mat const image = ZonedImage(random, RandomLabelSize(random), depth);
                cv::Mat const values = RandomValues(random, image.size(), valueDepth);
                SCOPED_TRACE(Case(depth, image.size(), connexity) + ", values " + cv::depthToString(valueDepth));
                cv::Mat const expected = OracleSums(image, values, connexity);
                FramedImage framed(image);
                FramedImage framedValues(values);
                ExpectSameUpToNaN(LabelFlatZonesNoZeroWithAccumulation(image, values, Shape(connexity)), expected);
                ExpectSameUpToNaN(
                    LabelFlatZonesNoZeroWithAccumulation(framed.View(), framedValues.View(), Shape(connexity)),
                    expected);
                if (HasFailure()) return;
            }
        }
    }
}

void CheckExtremes(cv::Mat const & image, cv::Mat const & values, int connexity)
{
    SCOPED_TRACE(Case(image.type(), image.size(), connexity) + ", values " + cv::typeToString(values.type()));
    FramedImage framed(image);
    FramedImage framedValues(values);
    cv::Mat const most = OracleExtremes(Measure::Max, image, values, connexity);
    ExpectSameUpToNaN(LabelFlatZonesNoZeroWithMax(image, values, Shape(connexity)), most);
    ExpectSameUpToNaN(LabelFlatZonesNoZeroWithMax(framed.View(), framedValues.View(), Shape(connexity)), most);
    cv::Mat const least = OracleExtremes(Measure::Min, image, values, connexity);
    ExpectSameUpToNaN(LabelFlatZonesNoZeroWithMin(image, values, Shape(connexity)), least);
    ExpectSameUpToNaN(LabelFlatZonesNoZeroWithMin(framed.View(), framedValues.View(), Shape(connexity)), least);
}

TEST(FlatZoneMeasureImages, WithMaxAndMinAgreeWithThePlainFloodForAllTypes)
{
    Random random(133);
    for (int const depth : kDepths)
    {
        for (int const channels : kChannelCounts)
        {
            for (int const valueDepth : kDepths)
            {
                for (int const valueChannels : kMeasuredChannels)
                {
                    int const connexity = random.Below(kConnexityCount);
                    cv::Mat const image = ZonedImage(random, RandomLabelSize(random), CV_MAKETYPE(depth, channels));
                    int const valueType = CV_MAKETYPE(valueDepth, valueChannels);
                    CheckExtremes(image, RandomValues(random, image.size(), valueType), connexity);
                    if (HasFailure()) return;
                }
            }
        }
    }
}

TEST(FlatZoneMeasureImages, GiveEachPixelTheMeasureOfItsZone)
{
    cv::Mat const image = Draw<uchar>({"11.2", "1..2", "..22"});
    ExpectDrawn(LabelFlatZonesNoZeroWithArea(image, eConnexity4), {"33.4", "3..4", "..44"});
    cv::Mat const values = Draw<ushort>({"1239", "4994", "9923"});
    cv::Mat const sums = LabelFlatZonesNoZeroWithAccumulation(image, values, eConnexity4);
    EXPECT_EQ(sums.type(), CV_32SC1);
    ExpectDrawn(sums, {"77.i", "7..i", "..ii"});
    cv::Mat const most = LabelFlatZonesNoZeroWithMax(image, values, eConnexity4);
    EXPECT_EQ(most.type(), CV_32SC1);
    ExpectDrawn(most, {"44.9", "4..9", "..99"});
    ExpectDrawn(LabelFlatZonesNoZeroWithMin(image, values, eConnexity4), {"11.2", "1..2", "..22"});
}

TEST(FlatZoneMeasureImages, WithAccumulationWrapsIntegerSumsBothWays)
{
    int const most = std::numeric_limits<int>::max();
    int const least = std::numeric_limits<int>::min();
    cv::Mat const image = Draw<uchar>({"112233"});
    cv::Mat const values = Row<int>({most, 1, least, -1, least, least});
    // The last sum wraps to 0, like that of a zone without a value.
    ExpectEqualImages(
        LabelFlatZonesNoZeroWithAccumulation(image, values, eConnexity4), Row<int>({least, least, most, most, 0, 0}));
}

TEST(FlatZoneMeasureImages, WithAccumulationDoesNotCutSmallTypes)
{
    cv::Mat const image = Draw<uchar>({"11"});
    ExpectEqualImages(
        LabelFlatZonesNoZeroWithAccumulation(image, Row<uchar>({200, 100}), eConnexity4), Row<int>({300, 300}));
    ExpectEqualImages(
        LabelFlatZonesNoZeroWithAccumulation(image, Row<short>({-32768, -1}), eConnexity4), Row<int>({-32769, -32769}));
}

TEST(FlatZoneMeasureImages, WithAccumulationWritesNaNSumsAndLeavesZeroSumsZero)
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    double const infinity = std::numeric_limits<double>::infinity();
    cv::Mat const image = Draw<uchar>({"112233"});
    cv::Mat const values = Row<double>({nan, 1, 5, -5, infinity, -infinity});
    ExpectSameUpToNaN(
        LabelFlatZonesNoZeroWithAccumulation(image, values, eConnexity4), Row<double>({nan, nan, 0, 0, nan, nan}));
    // The value of an empty pixel counts for no zone, and a negative zero is no sum.
    ExpectEqualImages(
        LabelFlatZonesNoZeroWithAccumulation(Draw<uchar>({".1.2"}), Row<double>({7, 2, nan, -0.0}), eConnexity4),
        Row<double>({0, 2, 0, 0}));
}

TEST(FlatZoneMeasureImages, WithAccumulationAddsInBreadthFirstOrder)
{
    cv::Mat const image = Draw<uchar>({".1.", "111"});
    float const large = 16777216.0F;
    cv::Mat const values = (cv::Mat_<float>(2, 3) << 0, 1, 0, large, 1, -large);
    // The seed, the pixel below it, then its left and right: 1 + 1 + 2^24 - 2^24. The raster order gives 0.
    cv::Mat const sums = LabelFlatZonesNoZeroWithAccumulation(image, values, eConnexity4);
    cv::Mat const expected = (cv::Mat_<float>(2, 3) << 0, 2, 0, 2, 2, 2);
    ExpectEqualImages(sums, expected);
}

TEST(FlatZoneMeasureImages, SeparateZonesByEmptyPixelsAndNotByValues)
{
    cv::Mat const image = Row<float>({5, std::numeric_limits<float>::quiet_NaN(), 5, 5, 1e-11F, 6});
    ExpectEqualImages(LabelFlatZonesNoZeroWithArea(image, eConnexity4), Row<int>({1, 0, 2, 2, 0, 1}));
    cv::Mat const values = Row<short>({0, 9, 0, -3, 9, 4});
    ExpectEqualImages(LabelFlatZonesNoZeroWithAccumulation(image, values, eConnexity4), Row<int>({0, 0, -3, -3, 0, 4}));
    ExpectEqualImages(LabelFlatZonesNoZeroWithMin(image, values, eConnexity4), Row<int>({0, 0, -3, -3, 0, 4}));
}

} // namespace

} // namespace morvane::tests
