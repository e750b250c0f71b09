// Reconstructions of numbers whose order or sign is not plain: NaN, negative zeros, infinities.
#include "geodesy/FixedPoint.h"

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/ReconstructionOracle.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <cmath>
#include <limits>

namespace morvane::tests
{

namespace
{

using geodesy::reconstruction_internals::HasFixedPoint;

double const kInfinity = std::numeric_limits<double>::infinity();
double const kNaN = std::numeric_limits<double>::quiet_NaN();

void Scatter(Random & random, cv::Mat & image, double share, double value)
{
    for (int y = 0; y < image.rows; ++y)
    {
        for (int x = 0; x < image.cols; ++x)
        {
            for (int channel = 0; channel < image.channels(); ++channel)
            {
                if (random.Chance(share)) SetElement(image, y, x, channel, value);
            }
        }
    }
}

/// Compares with the steps, in whole images and in views: each in the layout that the operator sees.
void ExpectSteps(Repeated repeated, cv::Mat const & marker, cv::Mat const & mask, Elements const & elements)
{
    SCOPED_TRACE(Describe(repeated, marker, elements));
    cv::Mat expected(marker.rows, marker.cols, marker.type());
    OracleReconstruct(repeated, marker, mask, elements, expected);
    cv::Mat out;
    ASSERT_TRUE(Reconstruct(repeated, marker, mask, elements, out));
    ASSERT_TRUE(EqualImages(out, expected));

    FramedImage framedMarker(marker);
    FramedImage framedMask(mask);
    FramedImage framedOut(marker);
    FramedImage framedExpected(marker);
    cv::Mat view = framedOut.View();
    OracleReconstruct(repeated, framedMarker.View(), framedMask.View(), elements, framedExpected.View());
    ASSERT_TRUE(Reconstruct(repeated, framedMarker.View(), framedMask.View(), elements, view));
    ASSERT_TRUE(framedOut.IsFrameUntouched());
    if (repeated == Repeated::Dilate) return;
    ASSERT_EQ(view.data, framedOut.View().data);
    ASSERT_TRUE(EqualImages(view, framedExpected.View()));
}

/// All operators on all floating-point types, with elements of several sizes; @p spoil changes marker and mask.
template <class Spoil>
void ForEachFloatingScene(std::uint64_t seed, Spoil const & spoil)
{
    Random random(seed);
    for (int const type : {CV_32FC1, CV_64FC1, CV_32FC3, CV_64FC2})
    {
        for (int const shape : {0, 1})
        {
            for (cv::Size const kernelSize : {cv::Size(3, 3), cv::Size(5, 5), cv::Size(2, 2), cv::Size(1, 1)})
            {
                for (Repeated const repeated : kRepeated)
                {
                    cv::Mat mask = LevelImage(random, {1 + random.Below(22), 1 + random.Below(22)}, type);
                    MarkerKind const kind = kMarkerKinds[static_cast<std::size_t>(random.Below(4))];
                    cv::Mat marker = RandomMarker(random, mask, kind);
                    bool const rises = repeated == Repeated::Dilate || repeated == Repeated::ViscousDilation;
                    spoil(random, marker, mask, rises);
                    cv::Size const viscositySize = random.Chance(0.5) ? cv::Size(1, 1) : cv::Size(3, 2);
                    ExpectSteps(repeated, marker, mask, {shape, kernelSize, viscositySize});
                    if (::testing::Test::HasFatalFailure()) return;
                }
            }
        }
    }
}

TEST(ReconstructionFloats, ImagesWithNaN_TakeEveryStep)
{
    ForEachFloatingScene(11, [](Random & random, cv::Mat & marker, cv::Mat & mask, bool) {
        Scatter(random, random.Chance(0.5) ? marker : mask, 0.1, kNaN);
        if (random.Chance(0.3)) Scatter(random, mask, 0.05, -kNaN);
    });
}

TEST(ReconstructionFloats, ImagesWithNegativeZeros_TakeEveryStep)
{
    ForEachFloatingScene(12, [](Random & random, cv::Mat & marker, cv::Mat & mask, bool) {
        Scatter(random, marker, 0.2, random.Chance(0.5) ? -0.0 : 0.0);
        Scatter(random, mask, 0.2, -0.0);
    });
}

TEST(ReconstructionFloats, ImagesOfEverySpecialNumber_TakeEveryStep)
{
    ForEachFloatingScene(13, [](Random & random, cv::Mat & marker, cv::Mat & mask, bool) {
        marker = RandomImage(random, marker.size(), marker.type(), {0.2, 0.4, 9});
        mask = RandomImage(random, mask.size(), mask.type(), {0.2, 0.4, 9});
        SetElement(mask, 0, 0, 0, -0.0);
    });
}

TEST(ReconstructionFloats, InfinitiesThatMoveGoAsFarAsTheStepsBringThem)
{
    ForEachFloatingScene(14, [](Random & random, cv::Mat & marker, cv::Mat & mask, bool rises) {
        Scatter(random, marker, 0.1, rises ? kInfinity : -kInfinity);
        Scatter(random, mask, 0.3, rises ? kInfinity : -kInfinity);
    });
}

TEST(ReconstructionFloats, InfinitiesThatEverythingMovesEndAsTheStepsLeaveThem)
{
    ForEachFloatingScene(15, [](Random & random, cv::Mat & marker, cv::Mat & mask, bool rises) {
        Scatter(random, marker, 0.7, rises ? -kInfinity : kInfinity);
        Scatter(random, mask, 0.2, rises ? -kInfinity : kInfinity);
    });
}

TEST(ReconstructionFloats, ElementsOfAnySizeTreatTheLeastInfinityAlike)
{
    cv::Mat const marker(5, 5, CV_32FC1, cv::Scalar(-kInfinity));
    cv::Mat const mask(5, 5, CV_32FC1, cv::Scalar(7));
    cv::Mat small;
    cv::Mat large;
    ASSERT_TRUE(Reconstruct(Repeated::Dilate, marker, mask, {cv::MORPH_RECT, {3, 3}, {}}, small));
    ASSERT_TRUE(Reconstruct(Repeated::Dilate, marker, mask, {cv::MORPH_RECT, {5, 5}, {}}, large));
    EXPECT_TRUE(EqualImages(small, large));
}

TEST(HasFixedPoint, HoldsForImagesWithoutNaNAndNegativeZero)
{
    Random random(16);
    for (int const depth : kMorphologyDepths)
    {
        for (int const channels : kChannelCounts)
        {
            EXPECT_TRUE(HasFixedPoint(LevelImage(random, {9, 7}, CV_MAKETYPE(depth, channels))));
        }
    }
}

TEST(HasFixedPoint, FailsWithOneNaNOrNegativeZeroAnywhere)
{
    for (int const type : {CV_32FC1, CV_64FC1, CV_32FC4, CV_64FC3})
    {
        for (double const value : {kNaN, -kNaN, -0.0})
        {
            for (cv::Point const place : {cv::Point(0, 0), cv::Point(8, 0), cv::Point(4, 3), cv::Point(8, 6)})
            {
                cv::Mat image(7, 9, type, cv::Scalar::all(1));
                SetElement(image, place.y, place.x, image.channels() - 1, value);
                EXPECT_FALSE(HasFixedPoint(image)) << cv::typeToString(type) << value << place;
                // A view beside it does not see it.
                EXPECT_TRUE(HasFixedPoint(image(cv::Rect(1, 1, 3, 2))));
            }
        }
    }
}

TEST(HasFixedPoint, FailsForDepthsThatHaveNoMorphology)
{
    for (int const depth : {CV_32S, CV_8S, CV_16F})
    {
        EXPECT_FALSE(HasFixedPoint(cv::Mat(3, 3, depth, cv::Scalar(0))));
    }
}

} // namespace

} // namespace morvane::tests
