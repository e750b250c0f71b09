// GeoDilate and GeoErode on drawn images.
#include <morvane/geodesy/GeodesicOperators.h>

#include "support/GeodesicOracle.h"
#include "support/ImageLiterals.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

namespace morvane::geodesy
{

namespace
{

using tests::Draw;
using tests::ExpectDrawn;
using tests::kDilatedDepths;

/// The step from a marker under a mask, into an image that the operator makes.
cv::Mat Dilated(cv::Mat const & marker, cv::Mat const & mask, int shape, int kernelSize = 3)
{
    cv::Mat out;
    EXPECT_TRUE(GeoDilate(marker, mask, shape, out, kernelSize));
    EXPECT_EQ(out.type(), marker.type());
    return out;
}

cv::Mat Eroded(cv::Mat const & marker, cv::Mat const & mask, int shape)
{
    cv::Mat out;
    EXPECT_TRUE(GeoErode(marker, mask, shape, out));
    EXPECT_EQ(out.type(), marker.type());
    return out;
}

TEST(GeoDilate, GrowsByOneStepUnderTheMask)
{
    for (int const depth : kDilatedDepths)
    {
        cv::Mat const marker = Draw({"....", ".9..", "...."}, depth);
        cv::Mat const mask = Draw({"5555", "5755", "5551"}, depth);
        ExpectDrawn(Dilated(marker, mask, cv::MORPH_RECT), {"555.", "575.", "555."});
        ExpectDrawn(Dilated(marker, mask, cv::MORPH_CROSS), {".5..", "575.", ".5.."});
    }
}

TEST(GeoDilate, ClipsTheMarkerBeforeItGrows)
{
    ExpectDrawn(Dilated(Draw<uchar>({"9.."}), Draw<uchar>({"355"}), cv::MORPH_RECT), {"33."});
}

TEST(GeoDilate, ElementOfOnePixelOnlyClips)
{
    cv::Mat const marker = Draw<short>({"192", "834"});
    cv::Mat const mask = Draw<short>({"555", "555"});
    for (int const shape : tests::kElementShapes)
    {
        ExpectDrawn(Dilated(marker, mask, shape, 1), {"152", "534"});
    }
}

TEST(GeoDilate, ElementsOfAnySizeReachFromTheirCentre)
{
    cv::Mat const marker = Draw<float>({"...9...."});
    cv::Mat const mask = Draw<float>({"99999999"});
    ExpectDrawn(Dilated(marker, mask, cv::MORPH_RECT, 5), {".99999.."});
    // Those of even size have more on the side of the first pixel, so that values move towards the last.
    ExpectDrawn(Dilated(marker, mask, cv::MORPH_RECT, 2), {"...99..."});
    ExpectDrawn(Dilated(marker, mask, cv::MORPH_RECT, 4), {"..9999.."});
    ExpectDrawn(Dilated(marker, mask, cv::MORPH_CROSS, 99), {"99999999"});
}

TEST(GeoErode, ShrinksByOneStepAboveTheMask)
{
    for (int const depth : kDilatedDepths)
    {
        cv::Mat const marker = Draw({"9999", "9199", "9999"}, depth);
        cv::Mat const mask = Draw({"2222", "2.22", "2229"}, depth);
        ExpectDrawn(Eroded(marker, mask, cv::MORPH_RECT), {"2229", "2129", "2229"});
        ExpectDrawn(Eroded(marker, mask, cv::MORPH_CROSS), {"9299", "2129", "9299"});
    }
}

TEST(GeoErode, RaisesTheMarkerBeforeItShrinks)
{
    ExpectDrawn(Eroded(Draw<uchar>({"199"}), Draw<uchar>({"4.."}), cv::MORPH_RECT), {"449"});
}

TEST(GeodesicSteps, NothingComesInOverTheBorder)
{
    for (int const depth : kDilatedDepths)
    {
        cv::Mat const low(2, 3, depth, cv::Scalar(tests::LowestOf(depth)));
        cv::Mat const high(2, 3, depth, cv::Scalar(tests::HighestOf(depth)));
        for (int const shape : tests::kElementShapes)
        {
            EXPECT_TRUE(tests::EqualImages(Dilated(low, high, shape), low)) << cv::depthToString(depth);
            EXPECT_TRUE(tests::EqualImages(Eroded(high, low, shape), high)) << cv::depthToString(depth);
        }
    }
}

/// A view whose parent holds @p around, with the pixels of @p content.
cv::Mat ViewOf(cv::Mat const & content, double around, cv::Mat & parent)
{
    parent = cv::Mat(content.rows + 4, content.cols + 4, content.type(), cv::Scalar::all(around));
    cv::Mat view = parent(cv::Rect(2, 2, content.cols, content.rows));
    content.copyTo(view);
    return view;
}

TEST(GeodesicSteps, PixelsOfTheParentsOfViewsNeverCount)
{
    for (int const depth : kDilatedDepths)
    {
        cv::Mat const low = Draw({"1112", "1111"}, depth);
        cv::Mat const high = Draw({"9999", "9999"}, depth);
        cv::Mat markerParent;
        cv::Mat maskParent;
        cv::Mat outParent;
        for (double const around : {tests::LowestOf(depth), tests::HighestOf(depth)})
        {
            cv::Mat out = ViewOf(low, around, outParent);
            EXPECT_TRUE(
                GeoDilate(ViewOf(low, around, markerParent), ViewOf(high, around, maskParent), cv::MORPH_RECT, out, 3));
            ExpectDrawn(out, {"1122", "1122"});
            EXPECT_TRUE(
                GeoErode(ViewOf(high, around, markerParent), ViewOf(low, around, maskParent), cv::MORPH_RECT, out));
            ExpectDrawn(out, {"9999", "9999"});
            out.setTo(around);
            EXPECT_EQ(cv::countNonZero(outParent != around), 0) << "pixels beside the view were written";
        }
    }
}

TEST(GeodesicSteps, WorkOnEachChannel)
{
    for (int const channels : {2, 3, 4})
    {
        cv::Mat marker(1, 3, CV_16UC(channels), cv::Scalar::all(0));
        cv::Mat mask(1, 3, CV_16UC(channels), cv::Scalar::all(0));
        for (int channel = 0; channel < channels; ++channel)
        {
            tests::SetElement(marker, 0, 0, channel, 100 * (channel + 1));
            tests::SetElement(mask, 0, 0, channel, 1000);
            tests::SetElement(mask, 0, 1, channel, 150 + channel);
        }
        cv::Mat const dilated = Dilated(marker, mask, cv::MORPH_RECT);
        cv::Mat const eroded = Eroded(mask, marker, cv::MORPH_RECT);
        for (int channel = 0; channel < channels; ++channel)
        {
            EXPECT_EQ(tests::ElementAt(dilated, 0, 0, channel), 100 * (channel + 1));
            EXPECT_EQ(tests::ElementAt(dilated, 0, 1, channel), channel == 0 ? 100 : 150 + channel);
            EXPECT_EQ(tests::ElementAt(dilated, 0, 2, channel), 0);
            EXPECT_EQ(tests::ElementAt(eroded, 0, 0, channel), channel == 0 ? 150 : 100 * (channel + 1));
            EXPECT_EQ(tests::ElementAt(eroded, 0, 1, channel), 0);
        }
    }
}

TEST(GeodesicSteps, OutMayBeTheMarker)
{
    cv::Mat dilated = Draw<uchar>({"....", ".9..", "...."});
    EXPECT_TRUE(GeoDilate(dilated, Draw<uchar>({"5555", "5755", "5551"}), cv::MORPH_RECT, dilated, 3));
    ExpectDrawn(dilated, {"555.", "575.", "555."});
    cv::Mat eroded = Draw<uchar>({"9999", "9199", "9999"});
    EXPECT_TRUE(GeoErode(eroded, Draw<uchar>({"2222", "2.22", "2229"}), cv::MORPH_RECT, eroded));
    ExpectDrawn(eroded, {"2229", "2129", "2229"});
}

TEST(GeodesicSteps, MaskThatIsOutIsOverwrittenBeforeItClipsAgain)
{
    cv::Mat const marker = Draw<uchar>({".9.."});
    cv::Mat const mask = Draw<uchar>({"3571"});
    ExpectDrawn(Dilated(marker, mask, cv::MORPH_RECT), {"355."});
    cv::Mat out = mask.clone();
    EXPECT_TRUE(GeoDilate(marker, out, cv::MORPH_RECT, out, 3));
    ExpectDrawn(out, {"555."});

    cv::Mat const above = Draw<uchar>({"9199"});
    ExpectDrawn(Eroded(above, mask, cv::MORPH_RECT), {"5579"});
    out = mask.clone();
    EXPECT_TRUE(GeoErode(above, out, cv::MORPH_RECT, out));
    ExpectDrawn(out, {"5559"});
}

TEST(GeodesicSteps, AllThreeMayBeOneImage)
{
    cv::Mat image = Draw<uchar>({"1...5"});
    EXPECT_TRUE(GeoDilate(image, image, cv::MORPH_RECT, image, 3));
    ExpectDrawn(image, {"11.55"});
    EXPECT_TRUE(GeoErode(image, image, cv::MORPH_RECT, image));
    ExpectDrawn(image, {"1...5"});
}

} // namespace

} // namespace morvane::geodesy
