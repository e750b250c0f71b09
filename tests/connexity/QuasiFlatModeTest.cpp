// The most frequent zone, which is the mask without seeds.
#include <morvane/connexity/QuasiFlatZones.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/QuasiFlatOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

namespace morvane
{

namespace
{

using tests::CallPropagation;
using tests::Draw;
using tests::Drawing;
using tests::EqualImages;
using tests::SurfaceSearch;
using tests::ZonePreparation;

/// Two zones of 4 pixels and one of 8.
Drawing const kZones{
    "12.99", //
    "12.99", //
    "..455", //
    "44455"};

/// A drawn mask: 1 is 255.
cv::Mat DrawMask(Drawing const & rows)
{
    return Draw<uchar>(rows) * 255;
}

TEST(MostFrequentZone, IsTheMaskWithoutSeedsOfTheImagesSize)
{
    for (cv::Mat const & seeds : {cv::Mat(), cv::Mat(5, 4, CV_8UC1, cv::Scalar(1)), cv::Mat(4, 6, CV_64FC3)})
    {
        for (int const depth : tests::kDepths)
        {
            cv::Mat filtered;
            cv::Mat mask;
            EXPECT_TRUE(CallPropagation(Draw(kZones, depth), {}, seeds, filtered, mask));
            // Of 4 pixels, of 4, and of 8.
            EXPECT_TRUE(EqualImages(
                mask, DrawMask(
                          {".....", //
                           ".....", //
                           "..111", //
                           "11111"})));
        }
    }
}

TEST(MostFrequentZone, OfSeveral_IsTheFirst)
{
    cv::Mat filtered;
    cv::Mat mask;
    EXPECT_TRUE(CallPropagation(Draw<uchar>({"3.55.77.9"}), {}, cv::Mat(), filtered, mask));
    EXPECT_TRUE(EqualImages(mask, DrawMask({"..11....."})));
}

TEST(MostFrequentZone, IsThatOfWhatWasMeasuredAndNotOfWhatWasFilled)
{
    ZonePreparation how;
    how.fillHoles = true;
    cv::Mat filtered;
    cv::Mat mask;
    // Filled, the fives are a zone of six pixels.
    EXPECT_TRUE(CallPropagation(Draw<float>({"5.5.5.9999"}), how, cv::Mat(), filtered, mask));
    EXPECT_TRUE(EqualImages(filtered, Draw<float>({"5555559999"})));
    EXPECT_TRUE(EqualImages(mask, DrawMask({"......1111"})));
    // Three to three: the first; its filled pixels are not in the mask.
    EXPECT_TRUE(CallPropagation(Draw<float>({"5.5.5.999"}), how, cv::Mat(), filtered, mask));
    EXPECT_TRUE(EqualImages(mask, DrawMask({"1.1.1...."})));
}

TEST(MostFrequentZone, IsThatOfWhatIsAbove0)
{
    for (int const type : {CV_16SC1, CV_32SC1, CV_32FC1, CV_64FC1})
    {
        cv::Mat image = Draw({"555599"}, type);
        image.colRange(0, 4).setTo(cv::Scalar(-5));
        cv::Mat filtered;
        cv::Mat mask;
        EXPECT_TRUE(CallPropagation(image, {}, cv::Mat(), filtered, mask));
        EXPECT_TRUE(EqualImages(mask, DrawMask({"....11"})));
        // Without any above 0, the pixels of no zone are the most frequent.
        image.colRange(4, 5).setTo(cv::Scalar(0));
        image.colRange(5, 6).setTo(cv::Scalar(-1));
        EXPECT_TRUE(CallPropagation(image, {}, cv::Mat(), filtered, mask));
        EXPECT_TRUE(EqualImages(mask, DrawMask({"....1."})));
    }
}

TEST(MostFrequentZone, MayBeThePixelsInNoZone)
{
    cv::Mat image = Draw<float>({"555..777"});
    image.colRange(3, 4).setTo(cv::Scalar(1e-11));
    image.colRange(5, 8).setTo(cv::Scalar(1e-11));
    cv::Mat filtered;
    cv::Mat mask;
    EXPECT_TRUE(CallPropagation(image, {}, cv::Mat(), filtered, mask));
    EXPECT_TRUE(EqualImages(mask, DrawMask({"...11111"})));
}

TEST(MostFrequentZone, OfAnImageOf0_IsAllPixels)
{
    for (int const depth : tests::kDepths)
    {
        cv::Mat filtered;
        cv::Mat mask;
        EXPECT_TRUE(CallPropagation(cv::Mat::zeros(3, 4, depth), {}, cv::Mat(), filtered, mask));
        EXPECT_TRUE(EqualImages(mask, cv::Mat(3, 4, CV_8UC1, cv::Scalar(255))));
    }
}

TEST(MostFrequentZone, OfSeveralChannels_IsFalseWithoutAMask)
{
    for (int const channels : {2, 3, 4})
    {
        for (bool const isLong : {false, true})
        {
            cv::Mat filtered;
            cv::Mat mask;
            cv::Mat const image = Draw(kZones, CV_32FC(channels));
            EXPECT_FALSE(
                isLong ? CallPropagation(image, {}, cv::Mat(), SurfaceSearch{}, filtered, mask)
                       : CallPropagation(image, {}, cv::Mat(), filtered, mask));
            EXPECT_TRUE(EqualImages(mask, cv::Mat::zeros(4, 5, CV_8U)));
        }
    }
}

} // namespace

} // namespace morvane
