// Flooding against the plain form with 512 queues.
#include <morvane/connexity/Flooding.h>

#include "support/AllTypes.h"
#include "support/FloodingOracle.h"
#include "support/ImageLiterals.h"
#include "support/Patterns.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::EqualImages;
using tests::FramedImage;
using tests::Random;
using tests::Snapshot;

/// Grey values of a short list, so that costs tie, or of the whole range.
cv::Mat RandomGrey(Random & random, cv::Size size)
{
    static std::vector<std::vector<int>> const lists{
        {5}, {0, 1}, {10, 11, 12}, {0, 255}, {0, 60, 61, 120, 250, 254, 255}, {}};
    auto const & values = lists[static_cast<std::size_t>(random.Below(static_cast<int>(lists.size())))];
    cv::Mat image(size.height, size.width, CV_8UC1);
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            int const value = values.empty()
                                  ? random.Below(256)
                                  : values[static_cast<std::size_t>(random.Below(static_cast<int>(values.size())))];
            image.at<uchar>(y, x) = static_cast<uchar>(value);
        }
    }
    return image;
}

cv::Mat RandomMarkersFor(Random & random, cv::Size size)
{
    double const share = random.Chance(0.2) ? 0.5 * random.Unit() : 0.1 * random.Unit();
    return tests::RandomMarkers(random, size, CV_32SC1, share, 1 + random.Below(6));
}

/// Expects the answer and the markers of the plain form, in place, and that the image stays.
void ExpectPlainFlood(cv::Mat & image, cv::Mat & markers)
{
    SCOPED_TRACE(tests::Case(image.type(), image.size(), 0));
    cv::Mat expected = tests::CopyOf(markers);
    bool const answer = tests::OracleFlooding(image, expected);
    uchar const * const place = markers.data;
    Snapshot const sameImage(image);
    ASSERT_EQ(Flooding(image, markers), answer);
    ASSERT_EQ(markers.data, place);
    ASSERT_TRUE(EqualImages(markers, expected));
    ASSERT_TRUE(sameImage.IsUntouched());
}

TEST(FloodingRandom, SmallImages_MatchThePlainFlood)
{
    Random random(710);
    for (int round = 0; round < 3000; ++round)
    {
        cv::Size const size = tests::RandomSize(random, 24);
        cv::Mat image = RandomGrey(random, size);
        cv::Mat markers = RandomMarkersFor(random, size);
        ASSERT_NO_FATAL_FAILURE(ExpectPlainFlood(image, markers)) << "round " << round;
    }
}

TEST(FloodingRandom, EverySizeUpToSevenBySeven_MatchesThePlainFlood)
{
    Random random(711);
    for (int rows = 1; rows <= 7; ++rows)
    {
        for (int cols = 1; cols <= 7; ++cols)
        {
            for (int round = 0; round < 20; ++round)
            {
                cv::Mat image = RandomGrey(random, {cols, rows});
                cv::Mat markers = tests::RandomMarkers(random, {cols, rows}, CV_32SC1, 0.25, 3);
                ASSERT_NO_FATAL_FAILURE(ExpectPlainFlood(image, markers));
            }
        }
    }
}

TEST(FloodingRandom, FewMarkersInLargeImages_MatchThePlainFlood)
{
    // Fronts of thousands of pixels: queues beyond a chunk, and chunks that are used again.
    Random random(712);
    for (int round = 0; round < 12; ++round)
    {
        cv::Size const size(200 + random.Below(200), 200 + random.Below(100));
        cv::Mat image = RandomGrey(random, size);
        cv::Mat markers = tests::RandomMarkers(random, size, CV_32SC1, 0.0005, 9);
        ASSERT_NO_FATAL_FAILURE(ExpectPlainFlood(image, markers));
    }
}

TEST(FloodingRandom, WindingValleysAndCombs_MatchThePlainFlood)
{
    Random random(713);
    for (auto const & pattern : tests::AllPatterns({67, 41}))
    {
        SCOPED_TRACE(pattern.name);
        for (auto const & [full, empty] : {std::pair(20, 240), std::pair(240, 20), std::pair(1, 0)})
        {
            cv::Mat image(pattern.mask.size(), CV_8UC1, cv::Scalar(empty));
            image.setTo(full, pattern.mask);
            cv::Mat markers = tests::RandomMarkers(random, image.size(), CV_32SC1, 0.01, 4);
            ASSERT_NO_FATAL_FAILURE(ExpectPlainFlood(image, markers));
        }
    }
}

TEST(FloodingRandom, ViewsWithEqualGaps_AreFloodedInPlace)
{
    Random random(714);
    for (int round = 0; round < 300; ++round)
    {
        cv::Size const size = tests::RandomSize(random, 20);
        FramedImage image(RandomGrey(random, size));
        FramedImage markers(RandomMarkersFor(random, size));
        if (!image.View().empty())
        {
            ASSERT_EQ(image.View().step1(), markers.View().step1());
        }
        ASSERT_NO_FATAL_FAILURE(ExpectPlainFlood(image.View(), markers.View()));
        ASSERT_TRUE(image.IsFrameUntouched());
        ASSERT_TRUE(markers.IsFrameUntouched());
    }
}

TEST(FloodingRandom, ViewsWithGapsOfTheirOwn_AreFlooded)
{
    Random random(715);
    for (int round = 0; round < 300; ++round)
    {
        cv::Size const size = tests::RandomSize(random, 20);
        cv::Mat const grey = RandomGrey(random, size);
        cv::Mat const seeds = RandomMarkersFor(random, size);
        FramedImage image(grey);
        FramedImage markers(seeds);

        cv::Mat plainImage = tests::CopyOf(grey);
        cv::Mat plainMarkers = tests::CopyOf(seeds);
        ASSERT_NO_FATAL_FAILURE(ExpectPlainFlood(image.View(), plainMarkers));
        ASSERT_NO_FATAL_FAILURE(ExpectPlainFlood(plainImage, markers.View()));
        if (!seeds.empty())
        {
            // Gaps on both sides, of 3 and of 8 pixels.
            cv::Mat wide(size.height, size.width + 3, CV_32SC1, cv::Scalar(123));
            cv::Mat view = wide.colRange(0, size.width);
            seeds.copyTo(view);
            ASSERT_NE(view.step1(), image.View().step1());
            ASSERT_NO_FATAL_FAILURE(ExpectPlainFlood(image.View(), view));
            cv::Mat const gap = wide.colRange(size.width, size.width + 3);
            ASSERT_TRUE(EqualImages(gap, cv::Mat(gap.size(), CV_32SC1, cv::Scalar(123))));
        }
        ASSERT_TRUE(image.IsFrameUntouched());
        ASSERT_TRUE(markers.IsFrameUntouched());
    }
}

TEST(FloodingRandom, FloodedImages_HoldNothingButLabelsLinesAndPixelsWithoutALabelBesideThem)
{
    Random random(716);
    int lines = 0;
    int unreached = 0;
    for (int round = 0; round < 60; ++round)
    {
        cv::Size const size(60, 50);
        cv::Mat image = RandomGrey(random, size);
        cv::Mat markers = tests::RandomMarkers(random, size, CV_32SC1, 0.15 * random.Unit(), 5);
        if (!Flooding(image, markers)) continue;
        cv::Mat1i const flooded(markers);
        for (int y = 1; y < size.height - 1; ++y)
        {
            for (int x = 1; x < size.width - 1; ++x)
            {
                ASSERT_GE(flooded(y, x), -1) << "a pixel was left in a queue";
                lines += flooded(y, x) == -1 ? 1 : 0;
                if (flooded(y, x) != 0) continue;
                ++unreached;
                for (cv::Point const side : {cv::Point(1, 0), cv::Point(-1, 0), cv::Point(0, 1), cv::Point(0, -1)})
                {
                    ASSERT_LE(flooded(cv::Point(x, y) + side), 0);
                }
            }
        }
    }
    EXPECT_GT(lines, 0);
    EXPECT_GT(unreached, 0);
}

} // namespace

} // namespace morvane::connexity
