// LabelFlatZonesNoZero, LabelDeltaFlatZones and LabelDeltaFlatZonesNoZero of two images, on drawn images.
#include <morvane/connexity/Labelling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Rows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

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
constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();

/// Two images and the bounds of the steps on them.
struct Pair
{
    cv::Mat first;
    cv::Mat second;
    double delta1 = 0.0;
    double delta2 = 0.0;
};

cv::Mat Flat(cv::Mat const & first, cv::Mat const & second, int number)
{
    return tests::Written(first.size(), CV_32SC1, [&](cv::Mat & labels) {
        return LabelFlatZonesNoZero(first, second, Shape(number), labels);
    });
}

cv::Mat Delta(Pair const & pair, int number = eConnexity4)
{
    return tests::Written(pair.first.size(), CV_32SC1, [&](cv::Mat & labels) {
        return LabelDeltaFlatZones(pair.first, pair.second, Shape(number), pair.delta1, pair.delta2, labels);
    });
}

cv::Mat DeltaNoZero(Pair const & pair, int number = eConnexity4)
{
    return tests::Written(pair.first.size(), CV_32SC1, [&](cv::Mat & labels) {
        return LabelDeltaFlatZonesNoZero(pair.first, pair.second, Shape(number), pair.delta1, pair.delta2, labels);
    });
}

/// Expects the same labels from both delta operators, on a first image without empty pixels, and, as steps are bounded
/// alike from both sides, on the images exchanged when neither holds an empty pixel.
void ExpectBoth(Pair const & pair, Drawing const & expected, int number = eConnexity4)
{
    SCOPED_TRACE("deltas " + std::to_string(pair.delta1) + " and " + std::to_string(pair.delta2));
    ExpectDrawn(Delta(pair, number), expected);
    ExpectDrawn(DeltaNoZero(pair, number), expected);
    ExpectDrawn(Delta({pair.second, pair.first, pair.delta2, pair.delta1}, number), expected);
}

TEST(LabelFlatZonesNoZeroOfTwo, StepNeedsEqualsInBothImages)
{
    cv::Mat const even = Draw<float>({"7777", "7777"});
    ExpectDrawn(Flat(Draw<uchar>({"5555", "5555"}), even, eConnexity4), {"1111", "1111"});
    ExpectDrawn(Flat(Draw<uchar>({"5566", "5566"}), even, eConnexity4), {"1122", "1122"});
    ExpectDrawn(Flat(even, Draw<uchar>({"5566", "5566"}), eConnexity4), {"1122", "1122"});
    ExpectDrawn(Flat(Draw<short>({"5566", "5566"}), Draw<int>({"1222", "1222"}), eConnexity4), {"1233", "1233"});
    ExpectDrawn(Flat(Draw<int>({"555", "555"}), Draw<double>({"121", "111"}), eConnexity4), {"121", "111"});
    ExpectDrawn(Flat(Draw<int>({"55", "65"}), Draw<ushort>({"12", "21"}), eConnexity8), {"12", "31"});
}

TEST(LabelFlatZonesNoZeroOfTwo, ZeroTestLooksAtTheFirstImageOnly)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::typeToString(depth));
        cv::Mat const first = Draw({"55.55"}, depth);
        ExpectDrawn(Flat(first, Draw<uchar>({"....."}), eConnexity4), {"11.22"});
        ExpectDrawn(Flat(first, Draw<uchar>({"3...."}), eConnexity4), {"12.33"});
        ExpectDrawn(Flat(first, Draw<uchar>({"33333"}), eConnexity4), {"11.22"});
        ExpectDrawn(Flat(Draw<uchar>({"55555"}), first, eConnexity4), {"11233"});
        ExpectDrawn(Flat(Draw({"....."}, depth), first, eConnexity8), {"....."});
    }
}

TEST(LabelFlatZonesNoZeroOfTwo, NaNIsEmptyInTheFirstImageAndEqualsNothingInTheSecond)
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        SCOPED_TRACE(number);
        ExpectDrawn(Flat(Row<float>({4.0F, kNaN, kNaN, 5.0F, 5.0F}), Draw<uchar>({"77777"}), number), {"1..22"});
        ExpectDrawn(Flat(Draw<uchar>({"66777"}), Row<float>({kNaN, kNaN, 1.0F, 1.0F, -kNaN}), number), {"12334"});
        ExpectDrawn(Flat(Draw<short>({"66777"}), Row<double>({nan, nan, 1.0, 1.0, -nan}), number), {"12334"});
    }
}

TEST(LabelFlatZonesNoZeroOfTwo, SecondImageIsComparedInItsOwnType)
{
    cv::Mat const even = Draw<uchar>({"55555"});
    cv::Mat const wide = Row<int>({16777216, 16777217, 16777217, kLeast, kMost});
    ExpectDrawn(Flat(even, wide, eConnexity4), {"12234"});
    ExpectDrawn(Flat(even, Row<double>({1.0, 1.0, std::nextafter(1.0, 2.0), 1e300, 1e300}), eConnexity4), {"11233"});
    // Numbers that hold nothing are still told apart, zeros of both signs are not.
    ExpectDrawn(Flat(even, Row<float>({0.0F, -0.0F, 1e-11F, 1e-11F, 0.0F}), eConnexity4), {"11223"});
    ExpectDrawn(Flat(even, Row<short>({-1, -1, 255, 255, -1}), eConnexity4), {"11223"});
    ExpectDrawn(Flat(even, Row<ushort>({256, 0, 0, 512, 65535}), eConnexity4), {"12234"});
}

TEST(LabelFlatZonesNoZeroOfTwo, SeamAndLargerShapesNeedBothImagesToo)
{
    cv::Mat const first = Draw<uchar>({"5..5", "6..6"});
    ExpectDrawn(Flat(first, Draw<uchar>({"1221", "1222"}), eConnexity4Wrapped), {"1..1", "2..3"});
    ExpectDrawn(Flat(first, Draw<uchar>({"1221", "1222"}), eConnexity4), {"1..2", "3..4"});
    ExpectDrawn(Flat(Draw<uchar>({"575"}), Draw<float>({"1.1"}), eConnexity12), {"121"});
    ExpectDrawn(Flat(Draw<uchar>({"575"}), Draw<float>({"1.2"}), eConnexity12), {"123"});
    ExpectDrawn(Flat(Draw<uchar>({"5", "7", "5"}), Draw<float>({"1", "1", "1"}), eConnexity12), {"1", "2", "1"});
    ExpectDrawn(Flat(Draw<uchar>({"5", "7", "5"}), Draw<float>({"1", "1", "1"}), eConnexity8), {"1", "2", "3"});
}

TEST(LabelFlatZonesNoZeroOfTwo, OutsideTheTableOfShapesEveryPixelIsAZone)
{
    for (int const number : tests::kStrangeConnexities)
    {
        SCOPED_TRACE(number);
        ExpectDrawn(Flat(Draw<uchar>({"55.", "555"}), Draw<double>({"777", "777"}), number), {"12.", "345"});
    }
}

TEST(LabelDeltaFlatZonesOfTwo, EachDeltaBoundsTheStepsOfItsImage)
{
    cv::Mat const steep = Draw<ushort>({"1359"});
    cv::Mat const slow = Draw<float>({"1234"});
    ExpectBoth({steep, slow, 2.0, 1.0}, {"1112"});
    ExpectBoth({steep, slow, 4.0, 1.0}, {"1111"});
    ExpectBoth({steep, slow, 1.0, 2.0}, {"1234"});
    ExpectBoth({steep, slow, 1.0, 4.0}, {"1234"});
    ExpectBoth({steep, slow, 4.0, 0.5}, {"1234"});
    ExpectBoth({steep, slow, 3.0, 1.0}, {"1112"});
}

TEST(LabelDeltaFlatZonesOfTwo, DeltasOfZero_GiveTheZonesThatAreFlatInBoth)
{
    ExpectBoth({Draw<uchar>({"555666"}), Draw<double>({"112222"})}, {"112333"});
    ExpectBoth({Draw<uchar>({"1199"}), Draw<short>({"1991"})}, {"1234"});
    ExpectBoth({Draw<cv::Vec2b>({"555666"}), Draw<cv::Vec2d>({"112222"})}, {"112333"});
}

TEST(LabelDeltaFlatZonesOfTwo, DetourThatBothImagesAllow_JoinsWhatNoSingleStepDoes)
{
    cv::Mat const first = Draw<int>({"191", "191", "111"});
    cv::Mat const second = Draw<uchar>({"222", "222", "222"});
    ExpectBoth({first, second, 1.0, 1.0}, {"121", "121", "111"});
    cv::Mat const cut = Draw<uchar>({"222", "222", "282"});
    ExpectBoth({first, cut, 1.0, 1.0}, {"123", "123", "143"});
}

TEST(LabelDeltaFlatZonesOfTwo, DeltasAreConvertedToTheTypeOfTheirImage)
{
    cv::Mat const bytes = Row<uchar>({1, 1, 2});
    ExpectBoth({bytes, Row<short>({1, 257, 257}), 256.0, 256.0}, {"112"}); // 0 and 256
    ExpectBoth({bytes, Row<short>({1, 257, 257}), 257.0, 255.0}, {"122"}); // 1 and 255
    ExpectBoth({Row<uchar>({1, 3, 6}), Row<float>({1.0F, 3.9F, 3.9F}), 2.9, 2.9}, {"112"});
    ExpectBoth({Row<uchar>({1, 3, 6}), Row<float>({1.0F, 3.9F, 3.9F}), 3.1, 2.9}, {"111"});
    ExpectBoth({Row<uchar>({1, 200, 3}), Row<ushort>({1, 65535, 1}), -1.0, -1.0}, {"111"}); // 255 and 65535
    ExpectBoth({Row<uchar>({1, 200, 3}), Row<short>({1, 1, 1}), -1.0, 0.0}, {"111"});
    ExpectBoth({Row<uchar>({1, 200, 3}), Row<short>({1, 1, 1}), -1.0, -1.0}, {"123"});
    ExpectBoth({Row<uchar>({1, 200, 3}), Row<double>({1, 1, 1}), -1.0, -1.0}, {"123"});
    ExpectBoth({bytes, Row<int>({kMost, kLeast, -1}), 1.0, 0.0}, {"112"}); // a difference that wraps is negative
    ExpectBoth({Row<float>({0.1F, 0.2F}), Row<double>({0.1, 0.2}), 0.1, 0.1}, {"11"});
}

TEST(LabelDeltaFlatZonesOfTwo, SeveralChannelsAreComparedByDistanceInBothImages)
{
    cv::Mat const first = Row<cv::Vec3b>({{1, 1, 1}, {4, 5, 1}, {4, 5, 2}});
    cv::Mat const second = Row<cv::Vec3d>({{1, 1, 1}, {1, 1, 3.5}, {1, 1, 7}});
    ExpectBoth({first, second, 5.0, 2.5}, {"112"});
    ExpectBoth({first, second, 5.0, 3.5}, {"111"});
    ExpectBoth({first, second, 4.9, 3.5}, {"122"});
    ExpectBoth({first, second, 0.9, 3.5}, {"123"});
    // Deltas stay doubles: no low bits are kept, and a negative one joins nothing.
    ExpectBoth({first, second, 256.0, 256.5}, {"111"});
    ExpectBoth({first, second, -1.0, 9.0}, {"123"});
    ExpectBoth({Row<cv::Vec2b>({{1, 1}, {255, 160}}), Row<cv::Vec2b>({{1, 1}, {1, 1}}), 300.7, 0.0}, {"11"});
    ExpectBoth({Row<cv::Vec4i>({{1, 1, 1, 1}, {2, 2, 2, 2}}), Draw<cv::Vec4w>({"11"}), 2.0, 0.0}, {"11"});
    ExpectBoth({Row<cv::Vec4i>({{1, 1, 1, 1}, {2, 2, 2, 2}}), Draw<cv::Vec4w>({"12"}), 2.0, 1.9}, {"12"});
}

TEST(LabelDeltaFlatZonesOfTwo, EmptyPixelsOfTheFirstImageSeparateOnlyUnderNoZero)
{
    for (int const channels : tests::kChannelCounts)
    {
        SCOPED_TRACE(channels);
        cv::Mat const holes = Draw({"1.1.9", "1.1.9"}, CV_16SC(channels));
        cv::Mat const full = Draw({"55555", "55555"}, CV_32FC(channels));
        ExpectDrawn(Delta({holes, full, 2.0, 0.0}), {"11112", "11112"});
        ExpectDrawn(DeltaNoZero({holes, full, 2.0, 0.0}), {"1.2.3", "1.2.3"});
        ExpectDrawn(DeltaNoZero({holes, full, 2.0, 0.0}, eConnexity12), {"1.1.2", "1.1.2"});
        // In the second image, zero is a value like any other.
        ExpectDrawn(Delta({full, holes, 0.0, 2.0}), {"11112", "11112"});
        ExpectDrawn(DeltaNoZero({full, holes, 0.0, 2.0}), {"11112", "11112"});
        ExpectDrawn(DeltaNoZero({full, holes, 0.0, 0.0}), {"12345", "12345"});
        ExpectDrawn(DeltaNoZero({cv::Mat::zeros(2, 5, CV_16SC(channels)), full, 9.0, 9.0}), {".....", "....."});
    }
}

TEST(LabelDeltaFlatZonesOfTwo, NaNOfEitherImageIsAZoneOfItsOwn)
{
    double const infinity = std::numeric_limits<double>::infinity();
    cv::Mat const full = Draw<uchar>({"55555"});
    cv::Mat const holes = Row<float>({1, kNaN, 1, 1, kNaN});
    ExpectDrawn(Delta({full, holes, 1.0, infinity}, eConnexity8), {"12334"});
    ExpectDrawn(DeltaNoZero({full, holes, 1.0, infinity}, eConnexity8), {"12334"});
    ExpectDrawn(Delta({holes, full, infinity, 1.0}, eConnexity8), {"12334"});
    ExpectDrawn(DeltaNoZero({holes, full, infinity, 1.0}, eConnexity8), {"1.22."});
    cv::Mat const fullVectors = Draw<cv::Vec2s>({"55555"});
    cv::Mat const vectors = Row<cv::Vec2f>({{1, 1}, {1, kNaN}, {1, 1}, {1, 1}, {kNaN, 1}});
    ExpectDrawn(Delta({fullVectors, vectors, 1.0, infinity}, eConnexity8), {"12334"});
    ExpectDrawn(DeltaNoZero({fullVectors, vectors, 1.0, infinity}, eConnexity8), {"12334"});
    ExpectDrawn(DeltaNoZero({vectors, fullVectors, infinity, 1.0}, eConnexity8), {"1.22."});
}

TEST(LabelDeltaFlatZonesOfTwo, SeamJoinsWrappedShapesWhereBothImagesAllowIt)
{
    cv::Mat const first = Draw<uchar>({"591234", "599999"});
    cv::Mat const even = Draw<short>({"111111", "111111"});
    cv::Mat const cut = Draw<short>({"111111", "911111"});
    ExpectBoth({first, even, 1.0, 1.0}, {"121111", "122222"}, eConnexity4Wrapped);
    ExpectBoth({first, even, 1.0, 1.0}, {"123333", "122222"}, eConnexity4);
    ExpectBoth({first, cut, 1.0, 1.0}, {"121111", "322222"}, eConnexity4Wrapped);
    cv::Mat const seam = Draw<short>({"111119", "111111"});
    ExpectBoth({first, seam, 1.0, 1.0}, {"123334", "122222"}, eConnexity4Wrapped);
}

TEST(LabelDeltaFlatZonesOfTwo, ConstantImages_AreOneZone)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            for (int number = 0; number < tests::kConnexityCount; ++number)
            {
                SCOPED_TRACE(tests::Case(CV_MAKETYPE(depth, channels), {3, 2}, number));
                cv::Mat const first = Draw({"777", "777"}, CV_MAKETYPE(depth, channels));
                cv::Mat const second = Draw({"333", "333"}, CV_32FC(channels));
                ExpectBoth({first, second}, {"111", "111"}, number);
            }
        }
    }
}

TEST(LabelDeltaFlatZonesOfTwo, OutsideTheTableOfShapesEveryPixelIsAZone)
{
    for (int const number : tests::kStrangeConnexities)
    {
        SCOPED_TRACE(number);
        Pair const pair{Draw<uchar>({"55.", "555"}), Draw<double>({"777", "777"}), 9.0, 9.0};
        ExpectDrawn(Delta(pair, number), {"123", "456"});
        ExpectDrawn(DeltaNoZero(pair, number), {"12.", "345"});
    }
}

} // namespace

} // namespace morvane::connexity
