// The reconstructions by repeated steps against the steps themselves, on random images.
#include <morvane/geodesy/Reconstruction.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/ReconstructionOracle.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

namespace morvane::tests
{

namespace
{

/// Runs one operator on whole images into an empty matrix, and on views with gaps between their rows.
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
    cv::Mat dirty(marker.rows, marker.cols, marker.type());
    FillBytes(dirty, 77);
    FramedImage framedOut(dirty);
    cv::Mat view = framedOut.View();
    ASSERT_TRUE(Reconstruct(repeated, framedMarker.View(), framedMask.View(), elements, view));
    ASSERT_TRUE(EqualImages(view, expected));
    ASSERT_TRUE(framedOut.IsFrameUntouched());
    ASSERT_TRUE(framedMarker.IsFrameUntouched());
    ASSERT_TRUE(EqualImages(framedMarker.View(), marker));
    ASSERT_TRUE(EqualImages(framedMask.View(), mask));
}

TEST(ReconstructionRandom, DilationAndErosionEndWhereTheirStepsDo)
{
    Random random(1);
    for (int const depth : {CV_8U, CV_16U, CV_16S, CV_32F, CV_64F, CV_8U, CV_32F})
    {
        for (int const channels : kChannelCounts)
        {
            for (int shape = 0; shape < 3; ++shape)
            {
                for (cv::Size const kernelSize : KernelSizes())
                {
                    cv::Mat const mask = LevelImage(random, RandomSize(random, 24), CV_MAKETYPE(depth, channels));
                    MarkerKind const kind = kMarkerKinds[static_cast<std::size_t>(random.Below(4))];
                    for (bool const rises : {true, false})
                    {
                        cv::Mat const marker = RandomMarker(random, mask, kind, !rises);
                        Repeated const repeated = rises ? Repeated::Dilate : Repeated::Erode;
                        ExpectSteps(repeated, marker, mask, {shape, kernelSize, {}});
                        if (HasFatalFailure()) return;
                    }
                }
            }
        }
    }
}

TEST(ReconstructionRandom, EveryKindOfMarkerOnImagesBesideTheWidthOfWords)
{
    Random random(2);
    for (int const width : {1, 2, 3, 63, 64, 65, 128, 130})
    {
        for (int const type : {CV_8UC1, CV_16SC1, CV_64FC1})
        {
            for (MarkerKind const kind : kMarkerKinds)
            {
                for (int const shape : {0, 1})
                {
                    cv::Mat const mask = LevelImage(random, {width, 1 + random.Below(9)}, type);
                    ExpectSteps(Repeated::Dilate, RandomMarker(random, mask, kind, false), mask, {shape, {3, 3}, {}});
                    ExpectSteps(Repeated::Erode, RandomMarker(random, mask, kind, true), mask, {shape, {3, 3}, {}});
                    if (HasFatalFailure()) return;
                }
            }
        }
    }
}

TEST(ReconstructionRandom, ViscousFormsEndWhereTheirStepsDo)
{
    Random random(3);
    for (int const depth : kMorphologyDepths)
    {
        for (int const channels : {1, 3})
        {
            for (int shape = 0; shape < 3; ++shape)
            {
                for (cv::Size const viscositySize : {cv::Size(1, 1), cv::Size(3, 3), cv::Size(2, 5)})
                {
                    for (cv::Size const kernelSize : {cv::Size(3, 3), cv::Size(2, 2), cv::Size(5, 1)})
                    {
                        cv::Mat const mask = LevelImage(random, RandomSize(random, 20), CV_MAKETYPE(depth, channels));
                        MarkerKind const kind = kMarkerKinds[static_cast<std::size_t>(random.Below(4))];
                        Elements const elements{shape, kernelSize, viscositySize};
                        ExpectSteps(Repeated::ViscousDilation, RandomMarker(random, mask, kind, false), mask, elements);
                        ExpectSteps(Repeated::ViscousErosion, RandomMarker(random, mask, kind, true), mask, elements);
                        if (HasFatalFailure()) return;
                    }
                }
            }
        }
    }
}

TEST(ReconstructionRandom, FiveChannelsAreAsGoodAsFour)
{
    Random random(4);
    for (cv::Size const kernelSize : {cv::Size(3, 3), cv::Size(5, 5)})
    {
        cv::Mat const mask = LevelImage(random, {13, 9}, CV_16UC(5));
        ExpectSteps(
            Repeated::Dilate, RandomMarker(random, mask, MarkerKind::Crossing), mask, {cv::MORPH_RECT, kernelSize, {}});
    }
}

/// A mask and a marker of a type with few values, and a random element.
struct Scene
{
    explicit Scene(Random & random)
        : mask(LevelImage(random, {1 + random.Below(40), 1 + random.Below(40)}, CV_8UC1))
        , marker(RandomMarker(random, mask, kMarkerKinds[static_cast<std::size_t>(random.Below(4))]))
        , elements{random.Below(3), KernelSizes()[static_cast<std::size_t>(random.Below(7))], {}}
    {}

    [[nodiscard]] cv::Mat Dilated() const { return Result(Repeated::Dilate, marker, mask); }

    [[nodiscard]] cv::Mat Result(Repeated repeated, cv::Mat const & from, cv::Mat const & bounds) const
    {
        cv::Mat out;
        EXPECT_TRUE(Reconstruct(repeated, from, bounds, elements, out)) << Describe(repeated, from, elements);
        return out;
    }

    cv::Mat mask;
    cv::Mat marker;
    Elements elements;
};

constexpr int kScenes = 60;

TEST(ReconstructionProperties, DoneTwiceChangesNothing)
{
    Random random(5);
    for (int count = 0; count < kScenes; ++count)
    {
        Scene const scene(random);
        cv::Mat const once = scene.Dilated();
        ASSERT_TRUE(EqualImages(scene.Result(Repeated::Dilate, once, scene.mask), once));
        cv::Mat const eroded = scene.Result(Repeated::Erode, scene.marker, scene.mask);
        ASSERT_TRUE(EqualImages(scene.Result(Repeated::Erode, eroded, scene.mask), eroded));
    }
}

TEST(ReconstructionProperties, LiesBetweenTheClippedMarkerAndTheMask)
{
    Random random(6);
    for (int count = 0; count < kScenes; ++count)
    {
        Scene const scene(random);
        cv::Mat const risen = scene.Dilated();
        EXPECT_EQ(cv::countNonZero(risen > scene.mask), 0);
        EXPECT_EQ(cv::countNonZero(risen < cv::min(scene.marker, scene.mask)), 0);
        cv::Mat const fallen = scene.Result(Repeated::Erode, scene.marker, scene.mask);
        EXPECT_EQ(cv::countNonZero(fallen < scene.mask), 0);
        EXPECT_EQ(cv::countNonZero(fallen > cv::max(scene.marker, scene.mask)), 0);
    }
}

TEST(ReconstructionProperties, ErosionIsTheDilationOfComplements)
{
    Random random(7);
    for (int count = 0; count < kScenes; ++count)
    {
        Scene const scene(random);
        cv::Mat const eroded = scene.Result(Repeated::Erode, 255 - scene.marker, 255 - scene.mask);
        ASSERT_TRUE(EqualImages(255 - eroded, scene.Dilated()));
    }
}

TEST(ReconstructionProperties, HigherMarkersGiveNoLowerResults)
{
    Random random(8);
    for (int count = 0; count < kScenes; ++count)
    {
        Scene const scene(random);
        cv::Mat const higher = scene.marker + cv::Scalar(9);
        cv::Mat const result = scene.Result(Repeated::Dilate, higher, scene.mask);
        EXPECT_EQ(cv::countNonZero(result < scene.Dilated()), 0);
    }
}

TEST(ReconstructionProperties, TransposedImagesGiveTheTransposedResult)
{
    Random random(9);
    for (int count = 0; count < kScenes; ++count)
    {
        Scene scene(random);
        // OpenCV's ellipse is not the transpose of the transposed one.
        scene.elements.shape = count % 2;
        cv::Mat const expected = scene.Dilated().t();
        std::swap(scene.elements.kernelSize.width, scene.elements.kernelSize.height);
        ASSERT_TRUE(EqualImages(scene.Result(Repeated::Dilate, scene.marker.t(), scene.mask.t()), expected));
    }
}

} // namespace

} // namespace morvane::tests
