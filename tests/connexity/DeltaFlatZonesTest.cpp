// LabelDeltaFlatZones and LabelDeltaFlatZonesNoZero of one image, on drawn images.
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
using tests::Drawing;
using tests::ExpectDrawn;
using tests::Row;
using tests::Shape;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();

cv::Mat Delta(cv::Mat const & image, int number, double delta)
{
    return tests::Written(image.size(), CV_32SC1, [&](cv::Mat & labels) {
        return LabelDeltaFlatZones(image, Shape(number), delta, labels);
    });
}

cv::Mat DeltaNoZero(cv::Mat const & image, int number, double delta)
{
    return tests::Written(image.size(), CV_32SC1, [&](cv::Mat & labels) {
        return LabelDeltaFlatZonesNoZero(image, Shape(number), delta, labels);
    });
}

/// Expects the same labels from both operators, on an image without empty pixels.
void ExpectBoth(cv::Mat const & image, double delta, Drawing const & expected, int number = eConnexity4)
{
    SCOPED_TRACE(delta);
    ExpectDrawn(Delta(image, number, delta), expected);
    ExpectDrawn(DeltaNoZero(image, number, delta), expected);
}

TEST(LabelDeltaFlatZones, GentleRampIsOneZoneHoweverFarItsEndsLieApart)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            SCOPED_TRACE(cv::typeToString(CV_MAKETYPE(depth, channels)));
            // Each channel has the drawn value: the distance of neighbours is the difference times the root of N.
            double const delta = std::sqrt(channels) + 1e-9;
            ExpectBoth(Draw({"12349"}, CV_MAKETYPE(depth, channels)), delta, {"11112"});
            ExpectBoth(Draw({"12349"}, CV_MAKETYPE(depth, channels)), 5 * delta, {"11111"});
        }
    }
    ExpectBoth(Draw<uchar>({"12349"}), 1.0, {"11112"});
    ExpectDrawn(Delta(Row<double>({0.0, 0.4, 0.8, 1.2}), eConnexity4, 0.5), {"1111"});
    ExpectDrawn(Delta(Row<double>({0.0, 0.4, 0.8, 1.2}), eConnexity4, 0.3), {"1234"});
}

TEST(LabelDeltaFlatZones, BoundIsInclusive)
{
    ExpectBoth(Row<uchar>({10, 15, 10, 16}), 5.0, {"1112"});
    ExpectBoth(Row<double>({1.0, 1.5, std::nextafter(2.0, 3.0), 2.0}), 0.5, {"1122"});
    ExpectBoth(Row<cv::Vec3b>({{1, 1, 1}, {4, 5, 1}, {4, 5, 1}, {1, 1, 2}}), 5.0, {"1112"});
    ExpectBoth(Row<cv::Vec2i>({{1, 1}, {4, 5}, {7, 10}}), 5.0, {"112"});
}

TEST(LabelDeltaFlatZones, ZoneGoesRoundWhatNoSingleStepCrosses)
{
    cv::Mat const image = Draw<uchar>({"1239", "9949", "7655"});
    for (int const number : {eConnexity4, eConnexity8})
    {
        ExpectBoth(image, 1.0, {"1112", "3312", "1111"}, number);
        ExpectBoth(image, 2.0, {"1112", "1112", "1111"}, number);
    }
}

TEST(LabelDeltaFlatZones, EmptyPixelsAreValuesAndSeparateOnlyUnderNoZero)
{
    cv::Mat const image = Draw<short>({"1.1.9", "1.1.9"});
    ExpectDrawn(Delta(image, eConnexity4, 1.0), {"11112", "11112"});
    ExpectDrawn(DeltaNoZero(image, eConnexity4, 1.0), {"1.2.3", "1.2.3"});
    ExpectDrawn(Delta(image, eConnexity4, 0.0), {"12345", "12345"});
    ExpectDrawn(DeltaNoZero(image, eConnexity12, 1.0), {"1.1.2", "1.1.2"});
    ExpectDrawn(DeltaNoZero(image, eConnexity12, 8.0), {"1.1.1", "1.1.1"});
}

TEST(LabelDeltaFlatZones, SeamJoinsWrappedShapes)
{
    cv::Mat const image = Draw<uchar>({"591234", "599999"});
    ExpectBoth(image, 1.0, {"121111", "122222"}, eConnexity4Wrapped);
    ExpectBoth(image, 1.0, {"123333", "122222"}, eConnexity4);
    ExpectBoth(Draw<uchar>({"5991", "9996"}), 1.0, {"1223", "2221"}, eConnexity8Wrapped);
    ExpectBoth(Draw<uchar>({"5991", "9996"}), 1.0, {"1223", "2224"}, eConnexity4Wrapped);
}

TEST(LabelDeltaFlatZones, ColumnIsNeverJoinedAcrossTopAndBottom)
{
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        SCOPED_TRACE(number);
        ExpectBoth(Draw<uchar>({"5", "8", "1", "4", "5"}), 0.0, {"1", "2", "3", "4", "5"}, number);
    }
}

TEST(LabelDeltaFlatZones, DeltaOnBytesKeepsItsLowEightBits)
{
    cv::Mat const image = Row<uchar>({1, 45, 90, 134, 179, 179});
    ExpectBoth(image, 300.7, {"112233"}); // 44
    ExpectBoth(image, 45.0, {"111111"});
    ExpectBoth(image, 256.0, {"123455"});                  // 0
    ExpectBoth(Row<uchar>({1, 2, 4, 4}), 257.9, {"1122"}); // 1
    ExpectBoth(Row<uchar>({1, 3, 6, 6}), 2.9, {"1122"});
    ExpectBoth(Row<uchar>({1, 2, 2}), -0.9, {"122"});
    ExpectDrawn(Delta(Row<uchar>({0, 255, 0, 9}), eConnexity4, -1.0), {"1111"}); // 255
    ExpectDrawn(Delta(Row<uchar>({0, 255, 1, 9}), eConnexity4, -2.0), {"1222"}); // 254
    ExpectDrawn(DeltaNoZero(Row<uchar>({0, 255, 1, 9}), eConnexity4, -1.0), {".111"});
}

TEST(LabelDeltaFlatZones, DeltaOnSixteenBitsKeepsItsLowSixteen)
{
    ExpectBoth(Row<ushort>({1, 301, 602, 602}), 300.7, {"1122"});
    ExpectBoth(Row<ushort>({1, 6, 12, 12}), 65541.0, {"1122"}); // 5
    ExpectBoth(Row<ushort>({1, 65535, 1}), -1.0, {"111"});      // 65535
    ExpectBoth(Row<ushort>({1, 2, 2}), 65536.0, {"122"});       // 0
    ExpectBoth(Row<short>({1, 6, 12, 12}), 65541.0, {"1122"});  // 5
    ExpectBoth(Row<short>({1, 2, 2}), 65536.0, {"122"});        // 0
    // With a sign the bits are a negative bound, which no difference meets, not even that of equals.
    ExpectBoth(Row<short>({7, 7, 8}), -1.0, {"123"});
    ExpectBoth(Row<short>({7, 7, 8}), 40000.0, {"123"});
}

TEST(LabelDeltaFlatZones, DifferencesOfSixteenBitsDoNotWrap)
{
    ExpectBoth(Row<short>({-32768, 32767, 1}), 32767.0, {"122"});
    ExpectBoth(Row<short>({-16384, 16383, -16385}), 32767.0, {"112"});
    ExpectBoth(Row<short>({32767, -32768}), 0.0, {"12"});
    ExpectBoth(Row<ushort>({1, 65535}), 65533.0, {"12"});
    ExpectBoth(Row<ushort>({1, 65535}), 65534.0, {"11"});
}

TEST(LabelDeltaFlatZones, DifferencesOfIntsWrapAndJoinWhatLiesTooFarApart)
{
    cv::Mat const image = Row<int>({kMost, kLeast, -1, kMost, 1, 1});
    ExpectBoth(image, 0.0, {"112233"});
    ExpectBoth(image, 2147483646.0, {"112222"});
    ExpectBoth(image, 2147483647.0, {"111111"});
    // The wrapped differences are -1 and the smallest int, the only ones that meet a negative bound.
    ExpectBoth(image, -1.0, {"112234"});
    ExpectBoth(image, -2.0, {"123345"});
    ExpectBoth(image, -2147483648.0, {"123345"});
}

TEST(LabelDeltaFlatZones, DeltaThatNoIntHoldsCountsAsTheSmallestInt)
{
    double const infinity = std::numeric_limits<double>::infinity();
    double const nan = std::numeric_limits<double>::quiet_NaN();
    for (double const delta : {2147483648.0, 1e10, -1e10, 1e300, infinity, -infinity, nan})
    {
        ExpectBoth(Row<int>({kMost, kLeast, -1, kMost, 1, 1}), delta, {"123345"});
        ExpectBoth(Row<uchar>({1, 2, 2, 255}), delta, {"1223"}); // 0
        ExpectBoth(Row<ushort>({1, 2, 2, 255}), delta, {"1223"});
        ExpectBoth(Row<short>({1, 2, 2, 255}), delta, {"1223"});
    }
}

TEST(LabelDeltaFlatZones, FloatsAreComparedInSinglePrecision)
{
    // 0.1F is more than 0.1, so that a delta kept in double would not join these; and the last sum rounds.
    ExpectBoth(Row<float>({0.1F, 0.2F}), 0.1, {"11"});
    ExpectBoth(Row<float>({16777216.0F, -1.0F}), 16777216.0, {"11"});
    ExpectBoth(Row<double>({16777216.0, -1.0}), 16777216.0, {"12"});
    ExpectBoth(Row<double>({0.1, 0.2}), 0.1, {"11"});
    ExpectBoth(Row<double>({static_cast<double>(0.1F), static_cast<double>(0.2F)}), 0.1, {"12"});
}

TEST(LabelDeltaFlatZones, DeltaOnSeveralChannelsStaysADouble)
{
    ExpectBoth(Row<cv::Vec2f>({{0.1F, 0.0F}, {0.2F, 0.0F}}), 0.1, {"12"});
    ExpectBoth(Row<cv::Vec2f>({{0.1F, 0.0F}, {0.2F, 0.0F}}), 0.10000001, {"11"});
    ExpectBoth(Row<cv::Vec2b>({{1, 1}, {255, 160}, {1, 1}, {255, 170}}), 300.7, {"1112"}); // 299.7 and 305.1
    ExpectBoth(Row<cv::Vec2b>({{1, 1}, {255, 1}, {255, 255}}), 256.0, {"111"});
    ExpectBoth(Row<cv::Vec3s>({{1, 1, 1}, {3, 3, 1}, {6, 3, 1}}), 2.9, {"112"});
    ExpectBoth(Row<cv::Vec2w>({{1, 1}, {1, 65535}, {65535, 1}}), 65536.0, {"112"});
    for (double const delta : {-1.0, -0.5, -2147483648.0, -1e10, std::numeric_limits<double>::quiet_NaN()})
    {
        ExpectBoth(Row<cv::Vec2b>({{1, 1}, {1, 1}, {255, 1}}), delta, {"123"});
        ExpectBoth(Row<cv::Vec4i>({{1, 1, 1, 1}, {1, 1, 1, 1}}), delta, {"12"});
    }
    ExpectBoth(Row<cv::Vec3w>({{1, 1, 1}, {65535, 1, 65535}}), std::numeric_limits<double>::infinity(), {"11"});
}

TEST(LabelDeltaFlatZones, SeveralChannelsAreComparedAsAWhole)
{
    ExpectBoth(Row<cv::Vec3f>({{1, 1, 1}, {4, 5, 1}, {9, 6, 1}}), 5.0, {"112"}); // 5 and 5.1
    ExpectBoth(Row<cv::Vec4d>({{1, 1, 1, 1}, {2, 2, 2, 2}, {3, 3, 3, 1}}), 2.0, {"111"});
    ExpectBoth(Row<cv::Vec4d>({{1, 1, 1, 1}, {2, 2, 2, 2}, {3, 3, 3, 1}}), 1.9, {"123"});
    // Differences are taken in the element type: int wraps, float rounds.
    ExpectBoth(Row<cv::Vec2i>({{kMost, 1}, {kLeast, 1}, {kLeast, 3}}), 1.0, {"112"});
    ExpectBoth(Row<cv::Vec2f>({{16777216.0F, 1.0F}, {-1.0F, 1.0F}}), 16777216.0, {"11"});
    ExpectBoth(Row<cv::Vec2d>({{16777216.0, 1.0}, {-1.0, 1.0}}), 16777216.0, {"12"});
}

TEST(LabelDeltaFlatZones, NaNPixelIsAZoneOfItsOwnWhateverTheDelta)
{
    cv::Mat const single = Row<float>({1, kNaN, 1, 1, kNaN, kNaN});
    cv::Mat const precise = Row<double>({1, static_cast<double>(kNaN), 1, 1, -static_cast<double>(kNaN)});
    cv::Mat const vectors = Row<cv::Vec2f>({{1, 1}, {kNaN, 1}, {1, 1}, {1, 2}, {1, kNaN}});
    for (double const delta : {1.0, 1e300, std::numeric_limits<double>::infinity()})
    {
        SCOPED_TRACE(delta);
        ExpectDrawn(Delta(single, eConnexity8, delta), {"123345"});
        ExpectDrawn(DeltaNoZero(single, eConnexity8, delta), {"1.22.."});
        ExpectDrawn(Delta(precise, eConnexity8, delta), {"12334"});
        ExpectDrawn(DeltaNoZero(precise, eConnexity8, delta), {"1.22."});
        ExpectDrawn(Delta(vectors, eConnexity8, delta), {"12334"});
        ExpectDrawn(DeltaNoZero(vectors, eConnexity8, delta), {"1.22."});
    }
}

TEST(LabelDeltaFlatZones, EqualInfinitiesHaveNoDifference)
{
    cv::Mat const single = Row<float>({kInfinity, kInfinity, 1.0F, -kInfinity, -kInfinity, kInfinity});
    cv::Mat precise;
    single.convertTo(precise, CV_64F);
    ExpectBoth(single, 1e30, {"123456"});
    ExpectBoth(single, 1e300, {"122233"}); // infinite in single precision
    ExpectBoth(precise, 1e300, {"123456"});
    ExpectBoth(precise, std::numeric_limits<double>::infinity(), {"122233"});
}

TEST(LabelDeltaFlatZones, NegativeDeltaJoinsNothingOnFloats)
{
    for (double const delta : {-1.0, -1e-30, -1e300, std::numeric_limits<double>::quiet_NaN()})
    {
        ExpectBoth(Row<float>({1, 1, 2}), delta, {"123"});
        ExpectBoth(Row<double>({1, 1, 2}), delta, {"123"});
        ExpectBoth(Row<cv::Vec3d>({{1, 1, 1}, {1, 1, 1}, {1, 1, 2}}), delta, {"123"});
    }
    ExpectBoth(Row<float>({1, 1, 2}), -0.0, {"112"});
    ExpectBoth(Row<double>({1, 1, 2}), -0.0, {"112"});
}

TEST(LabelDeltaFlatZones, ConstantImage_IsOneZone)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            for (int number = 0; number < tests::kConnexityCount; ++number)
            {
                int const type = CV_MAKETYPE(depth, channels);
                SCOPED_TRACE(tests::Case(type, {3, 2}, number));
                ExpectBoth(Draw({"777", "777"}, type), 0.0, {"111", "111"}, number);
                ExpectDrawn(Delta(Draw({"000", "000"}, type), number, 0.0), {"111", "111"});
                ExpectDrawn(DeltaNoZero(Draw({"000", "000"}, type), number, 0.0), {"...", "..."});
            }
        }
    }
}

TEST(LabelDeltaFlatZones, OutsideTheTableOfShapesEveryPixelIsAZone)
{
    for (int const number : tests::kStrangeConnexities)
    {
        SCOPED_TRACE(number);
        ExpectDrawn(Delta(Draw<uchar>({"55.", "555"}), number, 9.0), {"123", "456"});
        ExpectDrawn(DeltaNoZero(Draw<cv::Vec3d>({"55.", "555"}), number, 9.0), {"12.", "345"});
    }
}

} // namespace

} // namespace morvane::connexity
