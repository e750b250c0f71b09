// The tidying of label images against its plain form, on random images, and what it refuses.
#include <morvane/algorithm/WatershedSegmentation.h>

#include "support/AllTypes.h"
#include "support/AnyNumbers.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"
#include "support/WatershedOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::FramedImage;
using tests::Random;
using tests::Snapshot;

/// Zones of rectangles over each other, with some pixels of anything among them.
cv::Mat Zones(Random & random, cv::Size size, int type)
{
    cv::Mat zones(size.height, size.width, type, cv::Scalar(1));
    if (zones.empty()) return zones;
    for (int zone = 0; zone < 6; ++zone)
    {
        cv::Rect const box(
            random.Below(size.width), random.Below(size.height), 1 + random.Below(12), 1 + random.Below(9));
        zones(box & cv::Rect({}, size)).setTo(random.Below(4));
    }
    cv::Mat const anything = tests::RandomImage(random, size, type, {0.2, 0.8, 3});
    double const share = 0.1 * random.Unit();
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            if (random.Chance(share)) tests::SetElement(zones, y, x, 0, tests::ElementAt(anything, y, x));
        }
    }
    return zones;
}

TEST(Erode3x3SegmentationRandom, AgreesWithThePlainForm)
{
    Random random(8431);
    for (int const depth : tests::kDepths)
    {
        for (int repeat = 0; repeat < 60; ++repeat)
        {
            cv::Mat const image = repeat % 4 == 0 ? tests::RandomImage(random, tests::RandomSize(random), depth)
                                                  : Zones(random, tests::RandomSize(random), depth);
            SCOPED_TRACE(tests::Case(depth, image.size(), repeat));
            FramedImage labels(image);
            ASSERT_TRUE(Erode3x3Segmentation(labels.View()));
            ASSERT_TRUE(tests::EqualImages(labels.View(), tests::OracleErodedZones(image)));
            ASSERT_TRUE(labels.IsFrameUntouched());
        }
    }
}

/// Lines, negative ones too, between zones of any labels.
cv::Mat SomeLabels(Random & random, cv::Size size, int type)
{
    cv::Mat labels = tests::RandomImage(random, size, type, {random.Unit(), 0.2 * random.Unit(), 5});
    if (labels.depth() == CV_8U || labels.depth() == CV_16U) return labels;
    for (int y = 0; y < labels.rows; ++y)
    {
        for (int x = 0; x < labels.cols; ++x)
        {
            if (random.Chance(0.3)) tests::SetElement(labels, y, x, 0, -1 - random.Below(3));
        }
    }
    return labels;
}

/// Values of which some differ by about 255, and some by more than their type holds.
cv::Mat SomeLuminance(Random & random, cv::Size size, int depth)
{
    switch (random.Below(3))
    {
    case 0:
        return tests::RandomImage(random, size, depth, {0.3, 0.05, 3});
    case 1:
        return tests::AnyNumbers(random, size, depth);
    default:
        cv::Mat luminance = tests::RandomImage(random, size, depth, {0.5, 0.0, 20});
        for (int y = 0; y < luminance.rows; ++y)
        {
            for (int x = 0; x < luminance.cols; ++x)
            {
                if (random.Chance(0.4)) tests::SetElement(luminance, y, x, 0, 255 - random.Below(20));
            }
        }
        return luminance;
    }
}

TEST(FillWS3x3WithLumRandom, AgreesWithThePlainForm)
{
    Random random(8432);
    for (int const depth : tests::kDepths)
    {
        for (int const labelDepth : tests::kLabelDepths)
        {
            for (int repeat = 0; repeat < 40; ++repeat)
            {
                cv::Size const size = tests::RandomSize(random);
                SCOPED_TRACE(tests::Case(depth, size, labelDepth));
                cv::Mat const image = SomeLabels(random, size, labelDepth);
                FramedImage luminance(SomeLuminance(random, size, depth));
                FramedImage labels(image);
                cv::Mat const expected = tests::OracleFilledLines(luminance.View(), image);
                ASSERT_TRUE(FillWS3x3WithLum(luminance.View(), labels.View()));
                ASSERT_TRUE(tests::EqualImages(labels.View(), expected));
                ASSERT_TRUE(labels.IsFrameUntouched());
                ASSERT_TRUE(luminance.IsFrameUntouched());
            }
        }
    }
}

TEST(FillWS3x3WithLumRandom, OfSeveralChannels_AgreesWithThePlainForm)
{
    Random random(8433);
    for (int const labelDepth : tests::kLabelDepths)
    {
        for (int const channels : {2, 3, 4, 5})
        {
            cv::Size const size = tests::RandomSize(random, 20);
            SCOPED_TRACE(tests::Case(CV_MAKETYPE(labelDepth, channels), size, 0));
            cv::Mat const luminance = SomeLuminance(random, size, CV_16U);
            cv::Mat const image = SomeLabels(random, size, CV_MAKETYPE(labelDepth, channels));
            FramedImage labels(image);
            ASSERT_TRUE(FillWS3x3WithLum(luminance, labels.View()));
            ASSERT_TRUE(tests::EqualImages(labels.View(), tests::OracleFilledLines(luminance, image)));
            ASSERT_TRUE(labels.IsFrameUntouched());
        }
    }
}

/// An image whose bytes are all different, of any type.
cv::Mat Rubbish(cv::Size size, int type)
{
    cv::Mat image(size, type);
    for (int y = 0; y < image.rows; ++y)
    {
        for (std::size_t byte = 0; byte < image.elemSize() * static_cast<std::size_t>(image.cols); ++byte)
        {
            image.ptr(y)[byte] = static_cast<uchar>(static_cast<std::size_t>(y) * 31 + byte * 7);
        }
    }
    return image;
}

void ExpectNotEroded(cv::Mat labels)
{
    SCOPED_TRACE(cv::typeToString(labels.type()));
    Snapshot const before(labels);
    EXPECT_FALSE(Erode3x3Segmentation(labels));
    EXPECT_TRUE(before.IsUntouched());
}

TEST(Erode3x3SegmentationRefusal, ChannelsAndDepths)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : {2, 3, 4, 5})
        {
            ExpectNotEroded(Rubbish({5, 4}, CV_MAKETYPE(depth, channels)));
            ExpectNotEroded(Rubbish({2, 2}, CV_MAKETYPE(depth, channels)));
        }
        cv::Mat solid(std::vector<int>{4, 4, 4}, depth, cv::Scalar(3));
        solid.ptr()[solid.elemSize() * 21] = 0;
        cv::Mat const before = solid.clone();
        EXPECT_FALSE(Erode3x3Segmentation(solid));
        EXPECT_EQ(cv::norm(solid, before, cv::NORM_INF), 0.0);
    }
    for (int const depth : tests::kRefusedDepths)
    {
        ExpectNotEroded(Rubbish({5, 4}, depth));
        ExpectNotEroded(Rubbish({2, 2}, depth));
    }
}

void ExpectNotFilled(cv::Mat const & luminance, cv::Mat labels)
{
    SCOPED_TRACE(cv::typeToString(luminance.type()) + " to " + cv::typeToString(labels.type()));
    Snapshot const before(labels);
    EXPECT_FALSE(FillWS3x3WithLum(luminance, labels));
    EXPECT_TRUE(before.IsUntouched());
}

TEST(FillWS3x3WithLumRefusal, ChannelsDepthsAndSizes)
{
    cv::Size const size(5, 4);
    for (int const depth : tests::kDepths)
    {
        for (int const labelDepth : tests::kLabelDepths)
        {
            for (int const channels : {2, 3, 4, 5})
            {
                ExpectNotFilled(Rubbish(size, CV_MAKETYPE(depth, channels)), cv::Mat::zeros(size, labelDepth));
            }
            for (cv::Size const other : {cv::Size(4, 5), cv::Size(5, 3), cv::Size(6, 4), cv::Size(20, 1)})
            {
                ExpectNotFilled(Rubbish(other, depth), cv::Mat::zeros(size, labelDepth));
            }
            ExpectNotFilled(cv::Mat(), cv::Mat::zeros(size, labelDepth));
            ExpectNotFilled(Rubbish(size, depth), cv::Mat());
            cv::Mat const solid(std::vector<int>{4, 4, 4}, depth, cv::Scalar(3));
            cv::Mat solidLabels(std::vector<int>{4, 4, 4}, labelDepth, cv::Scalar(0));
            EXPECT_FALSE(FillWS3x3WithLum(solid, solidLabels));
            EXPECT_EQ(cv::norm(solidLabels, cv::NORM_INF), 0.0);
        }
        for (int const labelDepth : tests::kRefusedLabelDepths)
        {
            ExpectNotFilled(Rubbish(size, depth), Rubbish(size, labelDepth));
            ExpectNotFilled(Rubbish({2, 2}, depth), Rubbish({2, 2}, labelDepth));
        }
    }
    for (int const depth : tests::kRefusedDepths)
    {
        for (int const labelDepth : tests::kLabelDepths)
        {
            ExpectNotFilled(Rubbish(size, depth), Rubbish(size, labelDepth));
            ExpectNotFilled(Rubbish({2, 2}, depth), Rubbish({2, 2}, labelDepth));
        }
    }
}

} // namespace

} // namespace morvane::algorithm
