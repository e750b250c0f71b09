// The morphological skeleton.
#include <morvane/features/Skeleton.h>

#include "support/GeodesicOracle.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/SkeletonOracle.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <array>
#include <vector>

namespace morvane::features
{

namespace
{

using tests::EqualImages;
using tests::Random;

constexpr std::array kShapes{cv::MORPH_RECT, cv::MORPH_CROSS, cv::MORPH_ELLIPSE};

cv::Mat Skeleton(cv::Mat const & src, cv::MorphShapes shape, int kernelSize)
{
    cv::Mat out;
    EXPECT_TRUE(ExtractSkeletonByErosion(src, out, shape, kernelSize));
    return out;
}

TEST(ExtractSkeletonByErosion, KeepsALineFromFivePixelsOn_OnePixelFurther)
{
    // An erosion takes it away at once. The elements of even size have no centre: what has been joined moves.
    for (int length = 1; length <= 9; ++length)
    {
        cv::Mat1b line(24, 30, uchar{0});
        line.row(10).colRange(8, 8 + length).setTo(200);
        cv::Mat1b expected(line.size(), uchar{0});
        if (length >= 5) expected.row(11).colRange(9, 9 + length).setTo(200);
        EXPECT_TRUE(EqualImages(Skeleton(line, cv::MORPH_RECT, 3), expected)) << length;
        EXPECT_TRUE(EqualImages(Skeleton(line.t(), cv::MORPH_RECT, 3), expected.t())) << length;
    }
}

TEST(ExtractSkeletonByErosion, OfABar_IsItsMiddleLine)
{
    // After two erosions by 3 a bar of 5 rows is a line of the length less 4, which the third takes away. Nothing of the
    // openings before is lost.
    cv::Mat1b bar(40, 50, uchar{0});
    bar(cv::Rect(10, 15, 20, 5)).setTo(255);
    cv::Mat1b expected(bar.size(), uchar{0});
    expected.row(18).colRange(13, 29).setTo(255);
    EXPECT_TRUE(EqualImages(Skeleton(bar, cv::MORPH_RECT, 3), expected));
}

TEST(ExtractSkeletonByErosion, EndsWhereAnErosionChangesNothing)
{
    cv::Mat const none(9, 8, CV_8UC1, cv::Scalar(0));
    for (cv::MorphShapes const shape : kShapes)
    {
        // Elements of one pixel, an image without an empty one, and one without anything else.
        Random random(7320);
        EXPECT_TRUE(EqualImages(Skeleton(tests::RandomShape(random, {8, 9}), shape, 1), none));
        EXPECT_TRUE(EqualImages(Skeleton(cv::Mat(9, 8, CV_8UC1, cv::Scalar(255)), shape, 3), none));
        EXPECT_TRUE(EqualImages(Skeleton(none, shape, 3), none));
    }
    // A grey image ends as flat as its darkest pixel.
    cv::Mat grey(9, 8, CV_8UC1, cv::Scalar(100));
    grey.at<uchar>(4, 4) = 90;
    EXPECT_TRUE(
        EqualImages(Skeleton(grey, cv::MORPH_RECT, 3), tests::OracleSkeletonByErosion(grey, cv::MORPH_RECT, 3)));
}

TEST(ExtractSkeletonByErosion, MatchesTheSteps)
{
    Random random(7321);
    int found = 0;
    for (int round = 0; round < 150; ++round)
    {
        cv::Size const size(3 + random.Below(50), 3 + random.Below(50));
        cv::Mat const image = round % 3 == 0
                                  ? tests::RandomImage(random, size, CV_8UC1, {0.5 * random.Unit(), 0.1, 200})
                                  : cv::Mat(tests::RandomShape(random, size));
        cv::MorphShapes const shape = kShapes[static_cast<std::size_t>(random.Below(3))];
        int const kernelSize = 1 + random.Below(5);
        cv::Mat const expected = tests::OracleSkeletonByErosion(image, shape, kernelSize);
        found += cv::countNonZero(expected) > 0 ? 1 : 0;
        ASSERT_TRUE(EqualImages(Skeleton(image, shape, kernelSize), expected))
            << tests::StepCase(image, shape) << ", kernel " << kernelSize;
    }
    EXPECT_GT(found, 60);
}

TEST(ExtractSkeletonByErosion, OfAView_DoesNotSeeWhatLiesAround)
{
    Random random(7322);
    for (int round = 0; round < 20; ++round)
    {
        cv::Mat1b const parent = tests::RandomShape(random, {60, 50});
        cv::Mat const view = parent(cv::Rect(7, 5, 31, 33));
        cv::MorphShapes const shape = kShapes[static_cast<std::size_t>(round % 3)];
        tests::Snapshot const before(parent);
        ASSERT_TRUE(EqualImages(Skeleton(view, shape, 3), tests::OracleSkeletonByErosion(view.clone(), shape, 3)));
        ASSERT_TRUE(before.IsUntouched());
    }
}

TEST(ExtractSkeletonByErosion, MayReplaceTheImage)
{
    Random random(7323);
    cv::Mat const shape = tests::RandomShape(random, {40, 30});
    cv::Mat both = shape.clone();
    ASSERT_TRUE(ExtractSkeletonByErosion(both, both, cv::MORPH_CROSS, 3));
    tests::ExpectEqualImages(both, tests::OracleSkeletonByErosion(shape, cv::MORPH_CROSS, 3));
    cv::Mat other(2, 2, CV_64FC2);
    ASSERT_TRUE(ExtractSkeletonByErosion(shape, other, cv::MORPH_CROSS, 3));
    tests::ExpectEqualImages(other, both);
}

TEST(ExtractSkeletonByErosion, RefusesSeveralChannelsAndFewRowsOrColumns)
{
    std::array const sides{3, 4, 5};
    std::vector<cv::Mat> images{cv::Mat(), cv::Mat(2, 10, CV_8UC1), cv::Mat(10, 2, CV_8UC1), cv::Mat(0, 5, CV_8UC1)};
    images.emplace_back(3, sides.data(), CV_8UC1, cv::Scalar(1));
    for (int const type : {CV_8UC2, CV_8UC3, CV_8UC4, CV_32FC2})
    {
        images.emplace_back(5, 6, type, cv::Scalar::all(1));
    }
    for (cv::Mat const & image : images)
    {
        cv::Mat out(5, 6, CV_8UC1, cv::Scalar(9));
        tests::Snapshot const before(out);
        for (int const shape : {0, 1, 2, 7})
        {
            EXPECT_FALSE(ExtractSkeletonByErosion(image, out, static_cast<cv::MorphShapes>(shape), 3));
            EXPECT_TRUE(before.IsUntouched());
        }
    }
}

TEST(ExtractSkeletonByErosion, ThrowsWhatOpenCVThrows_WithTheOutputUntouched)
{
    cv::Mat out(5, 6, CV_8UC1, cv::Scalar(9));
    tests::Snapshot const before(out);
    for (int const depth : {CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F, CV_16F})
    {
        cv::Mat image(5, 6, depth);
        tests::FillBytes(image, 1);
        EXPECT_THROW(static_cast<void>(ExtractSkeletonByErosion(image, out, cv::MORPH_RECT, 3)), cv::Exception);
    }
    cv::Mat const image(5, 6, CV_8UC1, cv::Scalar(1));
    for (int const kernelSize : {0, -1})
    {
        EXPECT_THROW(
            static_cast<void>(ExtractSkeletonByErosion(image, out, cv::MORPH_RECT, kernelSize)), cv::Exception);
    }
    for (int const shape : tests::kStrangeElementShapes)
    {
        EXPECT_THROW(
            static_cast<void>(ExtractSkeletonByErosion(image, out, static_cast<cv::MorphShapes>(shape), 3)),
            cv::Exception);
    }
    EXPECT_TRUE(before.IsUntouched());
}

} // namespace

} // namespace morvane::features
