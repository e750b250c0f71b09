// The reconstructions by repeated steps on images small enough to see.
#include <morvane/geodesy/Reconstruction.h>

#include "support/ImageLiterals.h"
#include "support/Rows.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

namespace morvane::geodesy
{

namespace
{

using tests::Draw;
using tests::Drawing;
using tests::ExpectDrawn;

cv::Size const kThree(3, 3);

cv::Mat Dilated(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Size kernelSize = kThree)
{
    cv::Mat out;
    EXPECT_TRUE(ReconstructionbyDilate(marker, mask, shape, out, kernelSize));
    return out;
}

cv::Mat Eroded(cv::Mat const & marker, cv::Mat const & mask, int shape, cv::Size kernelSize = kThree)
{
    cv::Mat out;
    EXPECT_TRUE(ReconstructionbyErode(marker, mask, shape, out, kernelSize));
    return out;
}

/// The drawing upside down: 9 for 0.
cv::Mat Negative(Drawing const & rows)
{
    return 9 - Draw<uchar>(rows);
}

TEST(ReconstructionbyDilate, FillsThePlateauThatHoldsTheMarkerAndNoOther)
{
    cv::Mat const mask = Draw<uchar>({
        "........",
        ".55..77.",
        ".55..77.",
        "........",
    });
    cv::Mat const marker = Draw<uchar>({
        "........",
        ".4......",
        "........",
        "........",
    });
    for (int const shape : {cv::MORPH_RECT, cv::MORPH_CROSS, cv::MORPH_ELLIPSE})
    {
        ExpectDrawn(
            Dilated(marker, mask, shape), {
                                              "........",
                                              ".44.....",
                                              ".44.....",
                                              "........",
                                          });
    }
}

TEST(ReconstructionbyDilate, BehindASaddleNothingRisesAboveIt)
{
    ExpectDrawn(Dilated(Draw<uchar>({"9....."}), Draw<uchar>({"957936"}), cv::MORPH_RECT), {"955533"});
}

TEST(ReconstructionbyDilate, PassesCornersWithARectangleOnly)
{
    Drawing const diagonal = {"3..", ".3.", "..3"};
    Drawing const corner = {"3..", "...", "..."};
    ExpectDrawn(Dilated(Draw<uchar>(corner), Draw<uchar>(diagonal), cv::MORPH_RECT), diagonal);
    ExpectDrawn(Dilated(Draw<uchar>(corner), Draw<uchar>(diagonal), cv::MORPH_CROSS), corner);
    // The ellipse of 3 by 3 is a cross.
    ExpectDrawn(Dilated(Draw<uchar>(corner), Draw<uchar>(diagonal), cv::MORPH_ELLIPSE), corner);
}

TEST(ReconstructionbyDilate, MovesOnlyToTheLowerRightWithAnElementOfTwoByTwo)
{
    cv::Mat const mask(4, 4, CV_8UC1, cv::Scalar(3));
    ExpectDrawn(
        Dilated(Draw<uchar>({"....", ".2..", "....", "...."}), mask, cv::MORPH_RECT, {2, 2}), {
                                                                                                  "....",
                                                                                                  ".222",
                                                                                                  ".222",
                                                                                                  ".222",
                                                                                              });
}

TEST(ReconstructionbyDilate, JumpsOverAGapThatTheElementSpans)
{
    // One column wide and five rows high: two pixels up and down, none aside.
    cv::Mat const mask = Draw<uchar>({"33", "..", "33", "..", "..", "33"});
    cv::Mat const marker = Draw<uchar>({"3.", "..", "..", "..", "..", ".."});
    ExpectDrawn(Dilated(marker, mask, cv::MORPH_RECT, {1, 5}), {"3.", "..", "3.", "..", "..", ".."});
    ExpectDrawn(Dilated(marker, mask, cv::MORPH_RECT, {1, 7}), {"3.", "..", "3.", "..", "..", "3."});
}

TEST(ReconstructionbyDilate, WithAnElementOfOnePixelIsTheSmallerOfBoth)
{
    ExpectDrawn(Dilated(Draw<uchar>({"1959"}), Draw<uchar>({"9995"}), cv::MORPH_ELLIPSE, {1, 1}), {"1955"});
}

TEST(ReconstructionbyDilate, CutsAMarkerAboveTheMask)
{
    cv::Mat const mask = Draw<uchar>({"1.3", "22."});
    tests::ExpectEqualImages(Dilated(mask + 100, mask, cv::MORPH_RECT), mask);
}

TEST(ReconstructionbyErode, FillsBasinsUpToTheirLowestOutlet)
{
    ExpectDrawn(
        Eroded(
            Draw<uchar>({
                ".......",
                ".99999.",
                ".99999.",
                ".99999.",
                ".......",
            }),
            Draw<uchar>({
                ".......",
                ".76787.",
                ".71826.",
                ".78787.",
                ".......",
            }),
            cv::MORPH_CROSS),
        {
            ".......",
            ".76787.",
            ".76866.",
            ".78787.",
            ".......",
        });
}

TEST(ReconstructionbyErode, IsTheDilationOfNegatives)
{
    Drawing const marker = {"9.....", "......"};
    Drawing const mask = {"957936", "111111"};
    for (cv::Size const kernelSize : {kThree, cv::Size(2, 2), cv::Size(5, 1)})
    {
        cv::Mat const expected = 9 - Dilated(Draw<uchar>(marker), Draw<uchar>(mask), cv::MORPH_RECT, kernelSize);
        tests::ExpectEqualImages(Eroded(Negative(marker), Negative(mask), cv::MORPH_RECT, kernelSize), expected);
    }
}

TEST(ReconstructionbyErode, RaisesAMarkerBelowTheMask)
{
    cv::Mat const mask = Draw<short>({"1.3", "22."});
    tests::ExpectEqualImages(Eroded(mask - 100, mask, cv::MORPH_RECT), mask);
}

TEST(ReconstructionbyDilate, LeavesAViewOfOutAloneWhereSomethingChanged)
{
    cv::Mat out = Draw<uchar>({"777"});
    cv::Mat const before = out;
    ASSERT_TRUE(ReconstructionbyDilate(Draw<uchar>({"3.."}), Draw<uchar>({"333"}), cv::MORPH_RECT, out, kThree));
    ExpectDrawn(out, {"333"});
    EXPECT_NE(out.data, before.data);
}

TEST(ReconstructionbyDilate, WritesInPlaceWhereNothingChanges)
{
    cv::Mat out = Draw<uchar>({"777"});
    cv::Mat const before = out;
    ASSERT_TRUE(ReconstructionbyDilate(Draw<uchar>({"313"}), Draw<uchar>({"314"}), cv::MORPH_RECT, out, kThree));
    ExpectDrawn(before, {"313"});
    EXPECT_EQ(out.data, before.data);
}

TEST(ReconstructionbyDilate, OfAnImageWithANegativeZero_ExchangesBuffersWithEachStepButTheLast)
{
    // The mask lets the marker move `steps` times; one more step changes nothing and leaves the buffers as they are.
    for (int const steps : {0, 1, 2, 3})
    {
        cv::Mat const marker = tests::Row<float>({5, 0, 0, 0, 0, -5, -0.0F, -5});
        cv::Mat const mask = marker.clone();
        mask.colRange(0, steps + 1).setTo(5);
        cv::Mat out(1, 8, CV_32FC1);
        uchar const * const place = out.data;
        ASSERT_TRUE(ReconstructionbyDilate(marker, mask, cv::MORPH_RECT, out, kThree));
        tests::ExpectEqualImages(out, mask);
        EXPECT_EQ(out.data == place, steps % 2 == 0) << steps;
    }
}

TEST(ReconstructionbyErode, WritesInPlace)
{
    for (int const type : {CV_8UC1, CV_32FC1, CV_32FC2})
    {
        cv::Mat out(1, 3, type, cv::Scalar::all(7));
        cv::Mat const before = out;
        ASSERT_TRUE(ReconstructionbyErode(Draw({"199"}, type), Draw({"113"}, type), cv::MORPH_RECT, out, kThree));
        EXPECT_EQ(out.data, before.data);
        tests::ExpectEqualImages(before, Draw({"113"}, type));
    }
}

TEST(ReconstructionViscous, WritesInPlace)
{
    for (cv::Size const viscositySize : {cv::Size(1, 1), kThree})
    {
        cv::Mat rising = Draw<uchar>({"777"});
        cv::Mat falling = Draw<uchar>({"777"});
        uchar const * const placeOfRising = rising.data;
        uchar const * const placeOfFalling = falling.data;
        ASSERT_TRUE(ReconstructionbyViscousDilation(
            Draw<uchar>({"3.."}), Draw<uchar>({"333"}), cv::MORPH_RECT, viscositySize, rising, kThree));
        ASSERT_TRUE(ReconstructionbyViscousErosion(
            Draw<uchar>({"199"}), Draw<uchar>({"111"}), cv::MORPH_RECT, viscositySize, falling, kThree));
        EXPECT_EQ(rising.data, placeOfRising);
        EXPECT_EQ(falling.data, placeOfFalling);
        ExpectDrawn(rising, {"333"});
        ExpectDrawn(falling, {"111"});
    }
}

TEST(ReconstructionViscous, DoesNotFlowThroughAPassageNarrowerThanTheSecondElement)
{
    Drawing const basins = {
        ".....................", ".3333333...333333333.", ".3333333...333333333.", ".3333333333333333333.",
        ".3333333...333333333.", ".3333333...333333333.", ".....................",
    };
    cv::Mat const mask = Draw<uchar>(basins);
    cv::Mat marker(mask.size(), CV_8UC1, cv::Scalar(0));
    marker(cv::Rect(2, 2, 3, 3)).setTo(3);
    cv::Mat plain;
    cv::Mat viscous;
    ASSERT_TRUE(ReconstructionbyDilate(marker, mask, cv::MORPH_RECT, plain, kThree));
    ASSERT_TRUE(ReconstructionbyViscousDilation(marker, mask, cv::MORPH_RECT, kThree, viscous, kThree));
    tests::ExpectEqualImages(plain, mask);
    ExpectDrawn(
        viscous, {
                     ".....................",
                     ".3333333.............",
                     ".3333333.............",
                     ".3333333.............",
                     ".3333333.............",
                     ".3333333.............",
                     ".....................",
                 });
    cv::Mat negative;
    ASSERT_TRUE(ReconstructionbyViscousErosion(3 - marker, 3 - mask, cv::MORPH_RECT, kThree, negative, kThree));
    tests::ExpectEqualImages(negative, 3 - viscous);
}

TEST(Reconstruction, WritesOverTheMarkerWhereItIsTheOutput)
{
    cv::Mat rising = Draw<uchar>({"9....."});
    ASSERT_TRUE(ReconstructionbyDilate(rising, Draw<uchar>({"957936"}), cv::MORPH_RECT, rising, kThree));
    ExpectDrawn(rising, {"955533"});
    cv::Mat falling = Negative({"9....."});
    ASSERT_TRUE(ReconstructionbyErode(falling, Negative({"957936"}), cv::MORPH_RECT, falling, kThree));
    tests::ExpectEqualImages(falling, Negative({"955533"}));
}

TEST(Reconstruction, OfImagesWithoutPixels_IsTrueWithTheOutputAsCreated)
{
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(5, 0), cv::Size(0, 5)})
    {
        // Also of depths and shapes at which the steps would throw: there are none.
        for (int const type : {CV_8UC1, CV_32FC3, CV_32SC1, CV_8SC1})
        {
            cv::Mat const image(size.height, size.width, type);
            for (int form = 0; form < 4; ++form)
            {
                cv::Mat out;
                bool const answer = form == 0   ? ReconstructionbyDilate(image, image, 77, out, kThree)
                                    : form == 1 ? ReconstructionbyErode(image, image, 77, out, kThree)
                                    : form == 2 ? ReconstructionbyViscousDilation(image, image, 77, kThree, out, kThree)
                                                : ReconstructionbyViscousErosion(image, image, 77, kThree, out, kThree);
                EXPECT_TRUE(answer) << cv::typeToString(type) << " " << size;
                EXPECT_EQ(out.size(), size);
                EXPECT_EQ(out.type(), type);
            }
        }
    }
}

TEST(Reconstruction, OfOnePixelIsTheNearerOfMarkerAndMask)
{
    for (cv::Size const kernelSize : {cv::Size(1, 1), kThree, cv::Size(7, 7)})
    {
        ExpectDrawn(Dilated(Draw<ushort>({"9"}), Draw<ushort>({"5"}), cv::MORPH_RECT, kernelSize), {"5"});
        ExpectDrawn(Dilated(Draw<ushort>({"2"}), Draw<ushort>({"5"}), cv::MORPH_RECT, kernelSize), {"2"});
        ExpectDrawn(Eroded(Draw<ushort>({"9"}), Draw<ushort>({"5"}), cv::MORPH_RECT, kernelSize), {"9"});
        ExpectDrawn(Eroded(Draw<ushort>({"2"}), Draw<ushort>({"5"}), cv::MORPH_RECT, kernelSize), {"5"});
    }
}

} // namespace

} // namespace morvane::geodesy
