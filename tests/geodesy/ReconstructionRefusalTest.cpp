// What the reconstructions by repeated steps refuse, in which order, and what is left of the output.
#include <morvane/geodesy/Reconstruction.h>

#include "support/ImageLiterals.h"
#include "support/ReconstructionOracle.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <array>
#include <utility>

namespace morvane::tests
{

namespace
{

constexpr int kNoShape = 77;

cv::Mat Filled(cv::Size size, int type)
{
    cv::Mat image(size.height, size.width, type);
    FillBytes(image, 3);
    return image;
}

/// Each operator refuses the arguments before it looks at the shape, and leaves an allocated output alone.
void ExpectRefused(cv::Mat const & marker, cv::Mat const & mask, cv::Mat out)
{
    Snapshot const snapshot(out);
    for (Repeated const repeated : kRepeated)
    {
        EXPECT_FALSE(Reconstruct(repeated, marker, mask, {kNoShape, {3, 3}, {3, 3}}, out))
            << static_cast<int>(repeated);
        EXPECT_TRUE(snapshot.IsUntouched()) << static_cast<int>(repeated);
    }
}

TEST(ReconstructionRefusal, MarkerAndMaskOfDifferentTypes)
{
    cv::Size const size(4, 3);
    using Types = std::pair<int, int>;
    for (auto const & [marker, mask] :
         {Types{CV_8UC1, CV_16UC1}, Types{CV_16UC1, CV_16SC1}, Types{CV_8UC1, CV_8UC3}, Types{CV_32FC2, CV_64FC2}})
    {
        ExpectRefused(Filled(size, marker), Filled(size, mask), Filled(size, marker));
        // The types come first: nothing is created.
        ExpectRefused(Filled(size, marker), Filled(size, mask), cv::Mat());
        ExpectRefused(Filled({0, 0}, marker), Filled({0, 0}, mask), cv::Mat());
    }
}

TEST(ReconstructionRefusal, OutputOfAnotherTypeOrSize)
{
    cv::Size const size(4, 3);
    cv::Mat const image = Filled(size, CV_8UC1);
    for (int const type : {CV_8SC1, CV_16UC1, CV_8UC2, CV_32FC1})
    {
        ExpectRefused(image, image, Filled(size, type));
    }
    for (cv::Size const other : {cv::Size(3, 4), cv::Size(4, 4), cv::Size(5, 3), cv::Size(12, 1)})
    {
        ExpectRefused(image, image, Filled(other, CV_8UC1));
    }
    // Also where there is no pixel to work on.
    ExpectRefused(Filled({0, 0}, CV_8UC1), Filled({0, 0}, CV_8UC1), image.clone());
}

TEST(ReconstructionRefusal, MaskOfAnotherSize_AfterAnEmptyOutputIsMadeLikeTheMarker)
{
    for (cv::Size const other : {cv::Size(3, 4), cv::Size(4, 4), cv::Size(5, 3), cv::Size(0, 0)})
    {
        cv::Mat const marker = Filled({4, 3}, CV_16UC2);
        cv::Mat const mask = Filled(other, CV_16UC2);
        ExpectRefused(marker, mask, Filled({4, 3}, CV_16UC2));
        for (Repeated const repeated : kRepeated)
        {
            cv::Mat out;
            EXPECT_FALSE(Reconstruct(repeated, marker, mask, {kNoShape, {3, 3}, {3, 3}}, out));
            EXPECT_EQ(out.size(), marker.size());
            EXPECT_EQ(out.type(), marker.type());
        }
    }
}

TEST(ReconstructionRefusal, ImagesOfThreeDimensions)
{
    std::array const sizes{4, 3, 2};
    cv::Mat const block(3, sizes.data(), CV_8UC1, cv::Scalar(3));
    cv::Mat const image = Filled({3, 4}, CV_8UC1);
    for (Repeated const repeated : kRepeated)
    {
        Elements const elements{kNoShape, {3, 3}, {3, 3}};
        cv::Mat flat = image.clone();
        cv::Mat deep = block.clone();
        EXPECT_FALSE(Reconstruct(repeated, block, block, elements, flat));
        EXPECT_FALSE(Reconstruct(repeated, block, block, elements, deep));
        EXPECT_FALSE(Reconstruct(repeated, image, block, elements, flat));
        EXPECT_FALSE(Reconstruct(repeated, image, image, elements, deep));
        ExpectEqualImages(flat, image);
    }
}

TEST(ReconstructionRefusal, DepthsThatMorphologyDoesNotTake_PassOnItsException)
{
    for (int const depth : {CV_32S, CV_8S, CV_16F})
    {
        cv::Mat const image = Filled({4, 3}, depth);
        for (Repeated const repeated : kRepeated)
        {
            cv::Mat out;
            EXPECT_THROW(
                static_cast<void>(Reconstruct(repeated, image, image, {0, {3, 3}, {3, 3}}, out)), cv::Exception)
                << depth;
            EXPECT_EQ(out.size(), image.size());
        }
    }
}

TEST(ReconstructionRefusal, ElementOfOnePixelNeedsNoMorphology)
{
    // OpenCV copies, in these depths too.
    for (int const depth : {CV_32S, CV_8S})
    {
        cv::Mat const marker = Draw({"195"}, depth);
        cv::Mat const mask = Draw({"555"}, depth);
        cv::Mat out;
        EXPECT_TRUE(Reconstruct(Repeated::Dilate, marker, mask, {0, {1, 1}, {}}, out));
        ExpectDrawn(out, {"155"});
        EXPECT_TRUE(Reconstruct(Repeated::Erode, marker, mask, {0, {1, 1}, {}}, out));
        ExpectDrawn(out, {"595"});
    }
}

TEST(ReconstructionRefusal, ShapesAndSizesThatOpenCVDoesNotTake_PassOnItsException)
{
    for (int const type : {CV_8UC1, CV_32FC3})
    {
        cv::Mat const image = Filled({4, 3}, type);
        for (Repeated const repeated : kRepeated)
        {
            cv::Mat out;
            for (int const shape : {-1, kNoShape})
            {
                EXPECT_THROW(
                    static_cast<void>(Reconstruct(repeated, image, image, {shape, {3, 3}, {3, 3}}, out)),
                    cv::Exception);
            }
            for (cv::Size const size : {cv::Size(0, 0), cv::Size(3, 0), cv::Size(-1, 3), cv::Size(3, -3)})
            {
                EXPECT_THROW(
                    static_cast<void>(Reconstruct(repeated, image, image, {0, size, {3, 3}}, out)), cv::Exception)
                    << size;
            }
        }
        for (cv::Size const size : {cv::Size(0, 0), cv::Size(-1, 3)})
        {
            cv::Mat out;
            EXPECT_THROW(
                static_cast<void>(Reconstruct(Repeated::ViscousDilation, image, image, {0, {3, 3}, size}, out)),
                cv::Exception);
            EXPECT_THROW(
                static_cast<void>(Reconstruct(Repeated::ViscousErosion, image, image, {0, {3, 3}, size}, out)),
                cv::Exception);
        }
    }
}

} // namespace

} // namespace morvane::tests
