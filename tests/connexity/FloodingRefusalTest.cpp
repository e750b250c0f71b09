// What the flooding operators refuse, and that markers are left alone then.
#include <morvane/connexity/Flooding.h>

#include "support/AllTypes.h"
#include "support/FloodingOracle.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

namespace morvane::connexity
{

namespace
{

using tests::AllSpreads;
using tests::DirtyLabels;
using tests::Snapshot;
using tests::SpreadInput;
using tests::SpreadUnderTest;

constexpr std::array kAllDepths{CV_8U, CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F, CV_16F};
cv::Size const kSize(5, 4);
std::array const kOtherSizes{cv::Size(4, 4), cv::Size(5, 5), cv::Size(4, 5), cv::Size(10, 2), cv::Size(5, 0)};

template <class Depths>
bool Holds(Depths const & depths, int depth)
{
    return std::find(depths.begin(), depths.end(), depth) != depths.end();
}

/// A constant image of any type, without an empty pixel.
cv::Mat Constant(cv::Size size, int type)
{
    cv::Mat image(size.height, size.width, type);
    tests::FillBytes(image, 0x40);
    return image;
}

/// Expects false, and that the header and the bytes of the markers stay.
template <class Call>
void ExpectRefusal(cv::Mat & markers, Call const & call)
{
    SCOPED_TRACE("markers " + tests::Case(markers.type(), markers.size(), 0));
    cv::Mat const header = markers;
    Snapshot const before(markers);
    EXPECT_FALSE(call());
    ASSERT_EQ(markers.type(), header.type());
    ASSERT_EQ(markers.rows, header.rows);
    ASSERT_EQ(markers.cols, header.cols);
    ASSERT_TRUE(before.IsUntouched());
}

void ExpectSpreadRefusal(SpreadUnderTest const & spread, SpreadInput const & input, cv::Mat markers)
{
    SCOPED_TRACE(
        std::string(spread.name) + ": " + tests::Case(input.image.type(), input.image.size(), input.connexity) +
        ", second " + tests::Case(input.second.type(), input.second.size(), 0));
    ExpectRefusal(markers, [&] { return spread.call(input, markers); });
}

TEST(FloodingRefusal, OtherTypes_AreRefused)
{
    for (int const imageDepth : kAllDepths)
    {
        for (int const markerDepth : kAllDepths)
        {
            for (int const imageChannels : {1, 2, 5})
            {
                for (int const markerChannels : {1, 3})
                {
                    cv::Mat image = Constant(kSize, CV_MAKETYPE(imageDepth, imageChannels));
                    cv::Mat markers = DirtyLabels(kSize, CV_MAKETYPE(markerDepth, markerChannels));
                    if (image.type() == CV_8UC1 && markers.type() == CV_32SC1) continue;
                    SCOPED_TRACE(cv::typeToString(image.type()));
                    ExpectRefusal(markers, [&] { return Flooding(image, markers); });
                    if (HasFailure()) return;
                }
            }
        }
    }
}

TEST(FloodingRefusal, SizesThatDiffer_AreRefused)
{
    for (cv::Size const other : kOtherSizes)
    {
        cv::Mat image = Constant(kSize, CV_8UC1);
        cv::Mat otherMarkers = DirtyLabels(other, CV_32SC1);
        ExpectRefusal(otherMarkers, [&] { return Flooding(image, otherMarkers); });
        cv::Mat otherImage = Constant(other, CV_8UC1);
        cv::Mat markers = DirtyLabels(kSize, CV_32SC1);
        ExpectRefusal(markers, [&] { return Flooding(otherImage, markers); });
    }
}

TEST(FloodingRefusal, DefaultMatrices_AreRefused)
{
    cv::Mat image;
    cv::Mat markers;
    EXPECT_FALSE(Flooding(image, markers));
    EXPECT_EQ(markers.data, nullptr);
}

TEST(FloodingRefusal, MoreThanTwoDimensions_AreRefused)
{
    std::array const sizes{2, 3, 4};
    cv::Mat solid(3, sizes.data(), CV_8UC1, cv::Scalar(1));
    cv::Mat solidMarkers(3, sizes.data(), CV_32SC1, cv::Scalar(2));
    EXPECT_FALSE(Flooding(solid, solidMarkers));
    for (auto const & spread : AllSpreads())
    {
        EXPECT_FALSE(spread.call({solid, solid}, solidMarkers)) << spread.name;
    }
    EXPECT_EQ(cv::sum(solidMarkers)[0], 48.0);
}

TEST(FloodingZonesRefusal, EveryTypeOutsideTheTable_IsRefused)
{
    for (auto const & spread : AllSpreads())
    {
        for (int const depth : kAllDepths)
        {
            for (int const markerDepth : kAllDepths)
            {
                for (int const channels : {1, 2, 3, 4, 5})
                {
                    bool const accepted =
                        channels == 1 && Holds(tests::kDepths, depth) && Holds(tests::kLabelDepths, markerDepth);
                    if (accepted) continue;
                    cv::Mat const image = Constant(kSize, CV_MAKETYPE(depth, channels));
                    cv::Mat const second = Constant(kSize, CV_8UC1);
                    ExpectSpreadRefusal(spread, {image, second}, DirtyLabels(kSize, markerDepth));
                    if (spread.deltas == 2)
                    {
                        ExpectSpreadRefusal(spread, {second, image}, DirtyLabels(kSize, markerDepth));
                    }
                    if (HasFailure()) return;
                }
            }
        }
    }
}

TEST(FloodingZonesRefusal, EveryTypeOfTheTable_IsWrittenTo)
{
    // So that the refusals above are not those of everything.
    for (auto const & spread : AllSpreads())
    {
        for (int const depth : tests::kDepths)
        {
            for (int const markerDepth : tests::kLabelDepths)
            {
                SCOPED_TRACE(std::string(spread.name) + ", " + cv::typeToString(depth));
                cv::Mat markers(kSize, markerDepth, cv::Scalar(0));
                markers(cv::Rect(2, 2, 1, 1)).setTo(7);
                SpreadInput const input{Constant(kSize, depth), Constant(kSize, CV_16SC1)};
                EXPECT_EQ(spread.call(input, markers), markerDepth == CV_32S);
                int const everywhere = markerDepth == CV_32S ? 7 : 1;
                tests::ExpectEqualImages(markers, cv::Mat(kSize, markerDepth, cv::Scalar(everywhere)));
            }
        }
    }
}

TEST(FloodingZonesRefusal, SizesThatDiffer_AreRefused)
{
    cv::Mat const image = Constant(kSize, CV_32FC1);
    for (auto const & spread : AllSpreads())
    {
        for (cv::Size const size : kOtherSizes)
        {
            cv::Mat const other = Constant(size, CV_32FC1);
            ExpectSpreadRefusal(spread, {image, image}, DirtyLabels(size, CV_32SC1));
            ExpectSpreadRefusal(spread, {other, image}, DirtyLabels(kSize, CV_32SC1));
            if (spread.deltas < 2) continue;
            ExpectSpreadRefusal(spread, {image, other}, DirtyLabels(kSize, CV_32SC1));
            ExpectSpreadRefusal(spread, {other, image}, DirtyLabels(size, CV_32SC1));
            ExpectSpreadRefusal(spread, {other, other}, DirtyLabels(kSize, CV_32SC1));
        }
    }
}

TEST(FloodingZonesRefusal, MarkersOfFloatsAreRefusedBeforeAnyWork)
{
    // Of an empty image, work would throw.
    for (auto const & spread : AllSpreads())
    {
        for (int const depth : tests::kRefusedLabelDepths)
        {
            cv::Mat const image(0, 5, CV_8UC1);
            ExpectSpreadRefusal(spread, {image, image}, cv::Mat(0, 5, depth));
        }
    }
}

TEST(FloodingZonesRefusal, ImagesWithoutPixels_PassOnTheExceptionOfOpenCV)
{
    for (auto const & spread : AllSpreads())
    {
        for (cv::Size const size : {cv::Size(5, 0), cv::Size(0, 5), cv::Size(0, 0)})
        {
            for (int const markerDepth : tests::kLabelDepths)
            {
                SCOPED_TRACE(std::string(spread.name) + ", " + tests::Case(markerDepth, size, 0));
                cv::Mat const image(size.height, size.width, CV_32FC1);
                cv::Mat markers(size.height, size.width, markerDepth);
                EXPECT_THROW(static_cast<void>(spread.call({image, image}, markers)), cv::Exception);
                EXPECT_EQ(markers.rows, size.height);
                EXPECT_EQ(markers.cols, size.width);
                EXPECT_EQ(markers.type(), markerDepth);
            }
        }
        cv::Mat none;
        EXPECT_THROW(static_cast<void>(spread.call({none, none}, none)), cv::Exception) << spread.name;
    }
}

} // namespace

} // namespace morvane::connexity
