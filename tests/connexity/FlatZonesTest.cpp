// LabelFlatZones and LabelFlatZonesNoZero of one image, on drawn images.
#include <morvane/connexity/Labelling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace morvane::connexity
{

namespace
{

using tests::Draw;
using tests::ExpectDrawn;
using tests::Row;
using tests::Shape;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

cv::Mat Flat(cv::Mat const & image, int number, int type = CV_32SC1)
{
    return tests::Written(
        image.size(), type, [&](cv::Mat & labels) { return LabelFlatZones(image, Shape(number), labels); });
}

cv::Mat FlatNoZero(cv::Mat const & image, int number, int type = CV_32SC1)
{
    return tests::Written(
        image.size(), type, [&](cv::Mat & labels) { return LabelFlatZonesNoZero(image, Shape(number), labels); });
}

TEST(LabelFlatZones, ConstantImage_IsOneZoneAlsoWhenTheConstantIsZero)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            for (int number = 0; number < tests::kConnexityCount; ++number)
            {
                int const type = CV_MAKETYPE(depth, channels);
                SCOPED_TRACE(tests::Case(type, {4, 3}, number));
                ExpectDrawn(Flat(Draw({"0000", "0000", "0000"}, type), number), {"1111", "1111", "1111"});
                ExpectDrawn(Flat(Draw({"7777", "7777", "7777"}, type), number), {"1111", "1111", "1111"});
            }
        }
    }
}

TEST(LabelFlatZonesNoZero, ConstantImage_IsOneZoneUnlessTheConstantIsZero)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            for (int number = 0; number < tests::kConnexityCount; ++number)
            {
                int const type = CV_MAKETYPE(depth, channels);
                SCOPED_TRACE(tests::Case(type, {4, 3}, number));
                ExpectDrawn(FlatNoZero(Draw({"0000", "0000", "0000"}, type), number), {"....", "....", "...."});
                ExpectDrawn(FlatNoZero(Draw({"7777", "7777", "7777"}, type), number), {"1111", "1111", "1111"});
            }
        }
    }
}

TEST(LabelFlatZones, Chessboard_JoinsEqualsAcrossCornersUnderEightNeighboursOnly)
{
    cv::Mat const board = Draw<uchar>({"05", "50"});
    ExpectDrawn(Flat(board, eConnexity4), {"12", "34"});
    ExpectDrawn(Flat(board, eConnexity8), {"12", "21"});
    ExpectDrawn(FlatNoZero(board, eConnexity4), {".1", "2."});
    ExpectDrawn(FlatNoZero(board, eConnexity8), {".1", "1."});
}

TEST(LabelFlatZones, NumbersZonesInTheRasterOrderOfTheirFirstPixels)
{
    cv::Mat const image = Draw<ushort>({"2255", "2115", "3115", "3344"});
    ExpectDrawn(Flat(image, eConnexity4), {"1122", "1332", "4332", "4455"});
    ExpectDrawn(FlatNoZero(image, eConnexity4), {"1122", "1332", "4332", "4455"});
}

TEST(LabelFlatZones, PartsThatMeetLate_AreOneZoneWithItsFirstNumber)
{
    cv::Mat const image = Draw<short>({"5.5.6", "5.5.6", "555.5", "6.5.5"});
    ExpectDrawn(Flat(image, eConnexity4), {"12134", "12134", "11135", "67135"});
    ExpectDrawn(FlatNoZero(image, eConnexity4), {"1.1.2", "1.1.2", "111.3", "4.1.3"});
    ExpectDrawn(FlatNoZero(image, eConnexity8), {"1.1.2", "1.1.2", "111.3", "4.1.3"});
}

TEST(LabelFlatZonesNoZero, EmptyPixelsSeparateEquals)
{
    cv::Mat const image = Draw<int>({"55.5", "..5.", "5555"});
    ExpectDrawn(FlatNoZero(image, eConnexity4), {"11.2", "..3.", "3333"});
    ExpectDrawn(FlatNoZero(image, eConnexity8), {"11.1", "..1.", "1111"});
    ExpectDrawn(Flat(image, eConnexity4), {"1123", "4456", "5555"});
}

TEST(LabelFlatZonesNoZero, DifferentValuesAreDifferentZonesWithoutAGapBetween)
{
    ExpectDrawn(FlatNoZero(Draw<uchar>({"1122.2"}), eConnexity8), {"1122.3"});
}

TEST(LabelFlatZones, LargerShapesReachOverOtherValues)
{
    cv::Mat const straight = Draw<uchar>({"5175"});
    cv::Mat const over = Draw<uchar>({"5157"});
    cv::Mat const knight = Draw<uchar>({"512", "345"});
    ExpectDrawn(Flat(straight, eConnexity12), {"1234"});
    for (int const number : {eConnexity12, eConnexity20, eConnexity12Interleaved, eConnexity24Interleaved})
    {
        ExpectDrawn(Flat(over, number), {"1213"});
        ExpectDrawn(FlatNoZero(Draw<uchar>({"5.57"}), number), {"1.12"});
    }
    ExpectDrawn(Flat(over, eConnexity8), {"1234"});
    ExpectDrawn(Flat(knight, eConnexity12), {"123", "456"});
    ExpectDrawn(Flat(knight, eConnexity20), {"123", "451"});
}

TEST(LabelFlatZones, SeamJoinsEqualsOfWrappedShapes)
{
    cv::Mat const image = Draw<uchar>({"5115", "6115", "5176"});
    ExpectDrawn(Flat(image, eConnexity4Wrapped), {"1221", "3221", "4256"});
    ExpectDrawn(Flat(image, eConnexity4), {"1223", "4223", "5267"});
    ExpectDrawn(Flat(image, eConnexity8Wrapped), {"1221", "3221", "1243"});
    ExpectDrawn(FlatNoZero(Draw<uchar>({"55.5", ".5..", "6..6"}), eConnexity4Wrapped), {"11.1", ".1..", "2..2"});
    ExpectDrawn(FlatNoZero(Draw<uchar>({"55.6"}), eConnexity4Wrapped), {"11.2"});
}

TEST(LabelFlatZones, NaNPixelIsAZoneOfItsOwn)
{
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        SCOPED_TRACE(number);
        ExpectDrawn(Flat(Row<float>({3.0F, 3.0F, kNaN, kNaN, -kNaN}), number), {"11234"});
        ExpectDrawn(FlatNoZero(Row<float>({3.0F, 3.0F, kNaN, kNaN, -kNaN}), number), {"11..."});
        double const nan = std::numeric_limits<double>::quiet_NaN();
        ExpectDrawn(Flat(Row<double>({nan, 3.0, 3.0, nan}), number), {"1223"});
        ExpectDrawn(FlatNoZero(Row<double>({nan, 3.0, 3.0, nan}), number), {".11."});
    }
}

TEST(LabelFlatZones, OneNaNChannelMakesAPixelEqualNothing)
{
    cv::Mat const image = Row<cv::Vec3f>({{1, 2, 3}, {1, 2, kNaN}, {1, 2, kNaN}, {1, 2, 3}, {1, 2, 3}});
    ExpectDrawn(Flat(image, eConnexity4), {"12344"});
    ExpectDrawn(FlatNoZero(image, eConnexity4), {"1..22"});
}

TEST(LabelFlatZones, ComparesFloatsExactly)
{
    float const next = std::nextafter(1.0F, 2.0F);
    ExpectDrawn(Flat(Row<float>({1.0F, 1.0F, next, kInfinity, kInfinity, -kInfinity}), eConnexity4), {"112334"});
    ExpectDrawn(Flat(Row<double>({1.0, 1.0, std::nextafter(1.0, 2.0), 1e-300, 0.0}), eConnexity4), {"11234"});
    // Both zeros are equal; tiny numbers differ from them, but hold nothing.
    ExpectDrawn(Flat(Row<float>({0.0F, -0.0F, 1e-11F, 1e-11F, 0.0F}), eConnexity4), {"11223"});
    ExpectDrawn(FlatNoZero(Row<float>({0.0F, -0.0F, 1e-11F, 2e-10F, 2e-10F}), eConnexity4), {"...11"});
}

TEST(LabelFlatZones, TellsIntegersApartByEveryBit)
{
    ExpectDrawn(Flat(Row<int>({1, 257, 65537, 16777217, 16777216, 16777216}), eConnexity4), {"123455"});
    ExpectDrawn(Flat(Row<short>({-1, -1, 255, 32767, -32768, -32768}), eConnexity4), {"112344"});
    ExpectDrawn(FlatNoZero(Row<short>({256, 256, 0, -256, -32768, -32768}), eConnexity4), {"11.233"});
    ExpectDrawn(Flat(Row<ushort>({256, 0, 512, 65535, 65535}), eConnexity4), {"12344"});
}

/// Two equal pixels, and one that differs from them in one channel alone.
cv::Mat DifferentIn(int channel, int type)
{
    cv::Mat image(1, 3, type, cv::Scalar::all(9));
    tests::SetElement(image, 0, 2, channel, 8);
    return image;
}

TEST(LabelFlatZones, PixelsOfSeveralChannelsAreEqualWhenAllChannelsAre)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            for (int channel = 0; channel < channels; ++channel)
            {
                cv::Mat const image = DifferentIn(channel, CV_MAKETYPE(depth, channels));
                SCOPED_TRACE(cv::typeToString(image.type()) + ", channel " + std::to_string(channel));
                ExpectDrawn(Flat(image, eConnexity8), {"112"});
                ExpectDrawn(FlatNoZero(image, eConnexity8), {"112"});
            }
        }
    }
    // A swap of channels keeps the norm and is another value all the same.
    cv::Mat const swapped = Row<cv::Vec2b>({{1, 2}, {2, 1}, {2, 1}, {0, 0}, {0, 1}});
    ExpectDrawn(Flat(swapped, eConnexity4), {"12234"});
    ExpectDrawn(FlatNoZero(swapped, eConnexity4), {"122.3"});
}

TEST(LabelFlatZones, OutsideTheTableOfShapesEveryPixelIsAZone)
{
    for (int const number : tests::kStrangeConnexities)
    {
        SCOPED_TRACE(number);
        ExpectDrawn(Flat(Draw<uchar>({"55.5", "5..5"}), number), {"1234", "5678"});
        ExpectDrawn(FlatNoZero(Draw<cv::Vec4s>({"55.5", "5..5"}), number), {"12.3", "4..5"});
    }
}

TEST(LabelFlatZones, ColumnIsNeverJoinedAcrossTopAndBottom)
{
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        SCOPED_TRACE(number);
        ExpectDrawn(Flat(Draw<uchar>({"5", "6", "7", "8", "5"}), number), {"1", "2", "3", "4", "5"});
    }
}

} // namespace

} // namespace morvane::connexity
