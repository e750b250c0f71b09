#include <morvane/algorithm/RegionGrowing.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace morvane::algorithm
{

namespace
{

using connexity::eConnexity4;
using connexity::eConnexity4Wrapped;
using connexity::eConnexity8;
using connexity::eConnexity8Wrapped;
using tests::Draw;
using tests::Drawing;
using tests::ExpectDrawn;
using tests::Row;
using tests::Shape;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// The bounds of the differences from the opening pixel.
struct Deltas
{
    float first;
    float second;
};

cv::Mat
Regions(cv::Mat const & image1, cv::Mat const & image2, Deltas deltas, int connexity = eConnexity4, int type = CV_32SC1)
{
    return tests::Written(image1.size(), type, [&](cv::Mat & out) {
        return GrowRegion(image1, image2, Shape(connexity), deltas.first, deltas.second, out);
    });
}

/// Expects the regions of an image beside a constant one, whichever of the two is the first.
void ExpectRegions(cv::Mat const & image, float delta, Drawing const & expected, int connexity = eConnexity4)
{
    SCOPED_TRACE(delta);
    cv::Mat const even(image.size(), CV_8UC1, cv::Scalar(7));
    ExpectDrawn(Regions(image, even, {delta, 0.0F}, connexity), expected);
    ExpectDrawn(Regions(even, image, {0.0F, delta}, connexity), expected);
}

TEST(GrowRegion, ConstantImages_AreOneRegion)
{
    for (int const depth1 : tests::kDepths)
    {
        for (int const depth2 : tests::kDepths)
        {
            cv::Mat const image1 = Draw({"555", "555"}, depth1);
            cv::Mat const image2 = Draw({"...", "..."}, depth2);
            for (float const delta : {0.0F, 0.5F, 1.0F, 100.0F})
            {
                for (int number = 0; number < tests::kConnexityCount; ++number)
                {
                    ExpectDrawn(Regions(image1, image2, {delta, delta}, number), {"111", "111"});
                }
            }
        }
    }
}

TEST(GrowRegion, SlowRamp_IsCutWhereItLeavesTheOpeningPixel)
{
    for (int const depth : tests::kDepths)
    {
        ExpectRegions(Draw({"0123456789"}, depth), 3.0F, {"1111222233"});
        ExpectRegions(Draw({"0123456789"}, depth), 0.0F, {"123456789a"});
        ExpectRegions(Draw({"9876543210"}, depth), 4.0F, {"1111122222"});
        ExpectRegions(Draw({"9876543210"}, depth), 9.0F, {"1111111111"});
    }
}

TEST(GrowRegion, OpeningPixel_DecidesNotTheNeighbour)
{
    // From 5 to 8 and from 5 to 2 are steps of 3, from 8 to 2 is none: both are neighbours in the zone of 5.
    ExpectRegions(Row<uchar>({5, 8, 2, 8}), 3.0F, {"1111"});
    ExpectRegions(Row<uchar>({8, 5, 2, 8}), 3.0F, {"1123"});
    ExpectRegions(Row<uchar>({2, 5, 8, 2}), 3.0F, {"1123"});
}

TEST(GrowRegion, Regions_AreNumberedInRasterOrderOfTheirOpeningPixels)
{
    cv::Mat const image = Draw<uchar>({
        "11911",
        "19991",
        "11911",
    });
    ExpectRegions(image, 0.0F, {"11233", "12223", "11233"});
    ExpectRegions(image, 8.0F, {"11111", "11111", "11111"});
    cv::Mat const later = Draw<uchar>({
        "9992",
        "2222",
    });
    ExpectRegions(later, 0.0F, {"1112", "2222"});
}

TEST(GrowRegion, PixelRefusedByOneRegion_MayBelongToALater)
{
    cv::Mat const image = Draw<uchar>({
        "048",
        "840",
    });
    // 8 lies too far from 0; the 8 in the upper corner opens a region, to which the 4 no longer is free.
    ExpectRegions(image, 4.0F, {"112", "311"});
    ExpectRegions(image, 3.0F, {"123", "425"});
}

TEST(GrowRegion, PixelMustBeNearInBothImages)
{
    cv::Mat const image1 = Draw<uchar>({
        "11199",
        "11199",
    });
    cv::Mat const image2 = Draw<float>({
        "33333",
        "55555",
    });
    ExpectDrawn(Regions(image1, image2, {0.0F, 0.0F}), {"11122", "33344"});
    ExpectDrawn(Regions(image1, image2, {8.0F, 0.0F}), {"11111", "22222"});
    ExpectDrawn(Regions(image1, image2, {0.0F, 2.0F}), {"11122", "11122"});
    ExpectDrawn(Regions(image1, image2, {7.9F, 1.9F}), {"11122", "33344"});
    ExpectDrawn(Regions(image1, image2, {8.0F, 2.0F}), {"11111", "11111"});
}

TEST(GrowRegion, EmptyPixels_ArePixelsLikeOthers)
{
    ExpectRegions(Draw<float>({"..1.."}), 0.0F, {"11233"});
    ExpectRegions(Draw<float>({"..1.."}), 1.0F, {"11111"});
}

TEST(GrowRegion, WrappedShape_JoinsTheLastColumnToTheFirst)
{
    cv::Mat const image = Draw<ushort>({
        "1991",
        "9999",
        "1991",
    });
    ExpectRegions(image, 0.0F, {"1223", "2222", "4225"}, eConnexity4);
    ExpectRegions(image, 0.0F, {"1221", "2222", "3223"}, eConnexity4Wrapped);
    ExpectRegions(image, 0.0F, {"1221", "2222", "3223"}, eConnexity8Wrapped);
}

TEST(GrowRegion, NumberOutsideTheTableOfShapes_MakesEachPixelARegion)
{
    for (int const number : tests::kStrangeConnexities)
    {
        ExpectRegions(Draw<uchar>({"11", "11"}), 5.0F, {"12", "34"}, number);
    }
}

TEST(GrowRegion, DeltasOfIntegers_AreCutAndKeepTheLowBits)
{
    ExpectRegions(Row<uchar>({10, 54, 55}), 300.0F, {"112"});
    ExpectRegions(Row<uchar>({10, 12, 13}), 2.9F, {"112"});
    ExpectRegions(Row<uchar>({0, 255, 7}), -1.0F, {"111"});
    ExpectRegions(Row<ushort>({10, 15, 16}), 65541.0F, {"112"});
    ExpectRegions(Row<short>({10, 10, 10}), 40000.0F, {"123"});
    ExpectRegions(Row<int>({10, 10, 10}), -1.0F, {"123"});
    for (float const delta : {2147483648.0F, 1e10F, -1e10F, kInfinity, -kInfinity, NAN})
    {
        ExpectRegions(Row<uchar>({10, 10, 11}), delta, {"112"});
        ExpectRegions(Row<short>({10, 10, 11}), delta, {"112"});
        ExpectRegions(Row<int>({10, 10, 11}), delta, {"123"});
    }
}

TEST(GrowRegion, DifferencesOfIntBeyondItsRange_ReadNegativeAndPass)
{
    int const least = std::numeric_limits<int>::min();
    int const most = std::numeric_limits<int>::max();
    ExpectRegions(Row<int>({least, most, 0, most}), 0.0F, {"1111"});
    ExpectRegions(Row<int>({most, 5, least}), 0.0F, {"122"});
    ExpectRegions(Row<int>({most, least, 5}), 0.0F, {"112"});
}

TEST(GrowRegion, DeltasOfFloatingPointImages_AreTakenAsTheyAre)
{
    ExpectRegions(Row<float>({0.0F, 0.1F, std::nextafter(0.1F, 1.0F)}), 0.1F, {"112"});
    ExpectRegions(Row<double>({0.0, 0.10000000149, 0.1000000015}), 0.1F, {"112"});
    ExpectRegions(Row<double>({2.0, 2.0}), -0.5F, {"12"});
    ExpectRegions(Row<float>({2.0F, 2.0F}), NAN, {"12"});
}

TEST(GrowRegion, NaNPixels_AreRegionsOfTheirOwn)
{
    ExpectRegions(Row<float>({NAN, NAN, 1, 1, NAN, 1}), kInfinity, {"123345"});
    ExpectRegions(Row<double>({kInfinity, kInfinity, 1}), 1000.0F, {"123"});
    ExpectRegions(Row<double>({kInfinity, 1, kInfinity}), kInfinity, {"112"});
}

TEST(GrowRegion, ThreeHundredRegionsInEightBits_WrapThroughZero)
{
    cv::Mat const image = tests::RowOfZones(300, CV_16SC1);
    cv::Mat const labels = Regions(image, image, {0.0F, 0.0F}, eConnexity8, CV_8UC1);
    for (int zone = 1; zone <= 300; ++zone)
    {
        ASSERT_EQ(labels.at<uchar>(0, zone - 1), zone <= 255 ? zone : zone - 256) << "zone " << zone;
    }
}

TEST(GrowRegion, MoreThan65536RegionsIn16Bits_WrapThroughZero)
{
    cv::Mat const image = tests::RowOfZones(65600, CV_8UC1);
    cv::Mat const narrow = Regions(image, image, {0.0F, 0.0F}, eConnexity4, CV_16UC1);
    cv::Mat const bits = Regions(image, image, {0.0F, 0.0F}, eConnexity4, CV_16SC1);
    for (int const zone : {1, 255, 256, 32767, 32768, 40000, 65535, 65536, 65537, 65600})
    {
        SCOPED_TRACE(zone);
        int const wrapped = zone % 65536;
        EXPECT_EQ(narrow.at<ushort>(0, zone - 1), wrapped);
        EXPECT_EQ(bits.at<short>(0, zone - 1), wrapped > 32767 ? wrapped - 65536 : wrapped);
    }
}

TEST(GrowRegion, LabelsOfSeveralChannels_TakeTheFirstElementsOfEachRow)
{
    cv::Mat const image = Draw<uchar>({"119", "191"});
    ExpectDrawn(Regions(image, image, {0.0F, 0.0F}, eConnexity4, CV_8UC3).reshape(1), {"112......", "134......"});
}

TEST(GrowRegion, WiderSecondImage_IsReadAsFarAsTheFirstReaches)
{
    cv::Mat const image1 = Draw<uchar>({"111", "111"});
    cv::Mat const image2 = Draw<double>({"55577", "55755"});
    ExpectDrawn(Regions(image1, image2, {0.0F, 0.0F}), {"111", "112"});
    // The wrap is that of the first image: column 2 lies beside column 0.
    cv::Mat const split = Draw<uchar>({"595", "999"});
    ExpectDrawn(Regions(split, image2, {0.0F, 0.0F}, eConnexity4Wrapped), {"121", "223"});
}

TEST(GrowRegion, NarrowerSecondImage_Holds0BeyondItsEnd)
{
    cv::Mat const image1 = Draw<uchar>({"11111", "11111"});
    ExpectDrawn(Regions(image1, Draw<float>({"551", "550"}), {0.0F, 0.0F}), {"11233", "11333"});
    ExpectDrawn(Regions(image1, cv::Mat(2, 0, CV_16UC1), {0.0F, 0.0F}), {"11111", "11111"});
    // What lies beside a view must not be seen.
    cv::Mat const parent = Draw<uchar>({"5559999", "5559999"});
    ExpectDrawn(Regions(image1, parent.colRange(0, 3), {0.0F, 4.0F}), {"11122", "11122"});
}

TEST(GrowRegion, ImagesWithoutPixels_AreDone)
{
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(5, 0), cv::Size(0, 5)})
    {
        SCOPED_TRACE(size);
        cv::Mat const image(size.height, size.width, CV_64FC1);
        cv::Mat const wide(size.height, 3, CV_8UC1, cv::Scalar(1));
        cv::Mat out(size.height, size.width, CV_32SC1);
        EXPECT_TRUE(GrowRegion(image, image, eConnexity8Wrapped, 1.0F, 1.0F, out));
        EXPECT_TRUE(GrowRegion(image, wide, eConnexity8, 1.0F, 1.0F, out));
        EXPECT_EQ(out.size(), size);
        EXPECT_EQ(out.type(), CV_32SC1);
    }
}

} // namespace

} // namespace morvane::algorithm
