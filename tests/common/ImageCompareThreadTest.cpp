// Rows run in parallel: the same bytes with any number of threads, also where the output is an operand.
#include <morvane/common/ImageCompare.h>

#include "support/AllTypes.h"
#include "support/CompareOracle.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Snapshot.h"
#include "support/ThreadCounts.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace morvane::tests
{

namespace
{

/// An image of random bytes: a twentieth of the time that RandomImage() takes.
cv::Mat RandomBytes(Random & random, cv::Size size, int type)
{
    cv::Mat image(size, type);
    auto const bytes = static_cast<std::size_t>(size.width) * image.elemSize();
    for (int y = 0; y < size.height; ++y)
    {
        for (std::size_t index = 0; index < bytes; ++index)
        {
            // The lower bits alone, so that pixels of one byte often are equal.
            image.ptr(y)[index] = static_cast<uchar>(random.Below(8));
        }
    }
    return image;
}

struct Types
{
    int left;
    int output;
};

/// One comparison of images and one of numbers.
std::vector<Comparison> Comparisons(Random & random, cv::Size size, Types const & types)
{
    cv::Mat const left = RandomBytes(random, size, types.left);
    double const pixel = ElementAt(left, size.height / 2, size.width / 2);
    return {
        {left, 2, RandomBytes(random, size, types.left), RandomBytes(random, size, types.output),
         RandomBytes(random, size, types.output)},
        {left, 3, pixel, cv::Scalar(250.5, 2, -3, 4), cv::Scalar(5, 6.9, 7, 8)}};
}

void ExpectSameBytesWithAnyThreads(Comparison const & comparison, cv::Mat const & before)
{
    SCOPED_TRACE(Describe(comparison, before));
    cv::Mat const expected = OracleCompare(comparison, before);
    for (int const threads : kThreadCounts)
    {
        SCOPED_TRACE(threads);
        ThreadCount const count(threads);
        FramedImage framed(before);
        cv::Mat whole = CopyOf(before);
        EXPECT_TRUE(CallImageCompare(comparison, whole));
        ExpectEqualImages(whole, expected);
        EXPECT_TRUE(CallImageCompare(comparison, framed.View()));
        ExpectEqualImages(framed.View(), expected);
        EXPECT_TRUE(framed.IsFrameUntouched());
    }
}

TEST(ImageCompareThreads, AnyNumberGivesTheSameBytes)
{
    Random random(41);
    for (cv::Size const size : {cv::Size(1, 1), cv::Size(997, 1), cv::Size(1, 997), cv::Size(333, 257)})
    {
        for (Types const types :
             {Types{CV_8U, CV_8UC1}, Types{CV_16U, CV_16UC1}, Types{CV_32F, CV_32FC1}, Types{CV_64F, CV_8UC3},
              Types{CV_32S, CV_16SC2}, Types{CV_16S, CV_64FC4}})
        {
            for (Comparison const & comparison : Comparisons(random, size, types))
            {
                ExpectSameBytesWithAnyThreads(comparison, RandomBytes(random, size, types.output));
            }
        }
    }
}

TEST(ImageCompareThreads, AnyNumberGivesTheSameBytesOnLargeImages)
{
    Random random(42);
    for (Types const types : {Types{CV_8U, CV_8UC1}, Types{CV_32F, CV_32FC1}, Types{CV_16U, CV_8UC3}})
    {
        cv::Size const size(1531, 1027);
        for (Comparison const & comparison : Comparisons(random, size, types))
        {
            ExpectSameBytesWithAnyThreads(comparison, RandomBytes(random, size, types.output));
        }
    }
}

TEST(ImageCompareThreads, AnyNumberReadsOtherShapesByRasterNumber)
{
    Random random(43);
    Comparison const comparison{
        RandomBytes(random, {210, 330}, CV_8UC1), 1, RandomBytes(random, {330, 210}, CV_8UC1),
        RandomBytes(random, {70, 990}, CV_16SC3), RandomBytes(random, {6930, 10}, CV_16SC3)};
    ExpectSameBytesWithAnyThreads(comparison, RandomBytes(random, {11, 6300}, CV_16SC3));
}

/// Runs the comparison on an output that shares its pixels with operands.
///
/// @param share makes operands of the output, before the call and for the oracle
template <class Share>
void ExpectSharedOutputWorks(Comparison const & operands, cv::Mat const & before, Share const & share)
{
    Comparison apart = operands;
    cv::Mat copy = CopyOf(before);
    share(apart, copy);
    cv::Mat const expected = OracleCompare(apart, CopyOf(before));
    for (int const threads : {1, 7})
    {
        ThreadCount const count(threads);
        FramedImage framed(before);
        cv::Mat whole = CopyOf(before);
        for (cv::Mat * output : {&whole, &framed.View()})
        {
            Comparison shared = operands;
            share(shared, *output);
            SCOPED_TRACE(Describe(shared, *output));
            EXPECT_TRUE(CallImageCompare(shared, *output));
            ExpectEqualImages(*output, expected);
        }
        EXPECT_TRUE(framed.IsFrameUntouched());
    }
}

TEST(ImageCompareThreads, TheOutputMayBeOneOrBothOfTheValues)
{
    Random random(44);
    for (int const depth : kDepths)
    {
        for (int const channels : kChannelCounts)
        {
            int const type = CV_MAKETYPE(depth, channels);
            cv::Size const size(130 + channels, 77);
            for (Comparison const & comparison : Comparisons(random, size, {depth, type}))
            {
                cv::Mat const before = RandomBytes(random, size, type);
                ExpectSharedOutputWorks(
                    comparison, before, [](Comparison & shared, cv::Mat const & output) { shared.whenTrue = output; });
                ExpectSharedOutputWorks(
                    comparison, before, [](Comparison & shared, cv::Mat const & output) { shared.whenFalse = output; });
                ExpectSharedOutputWorks(comparison, before, [](Comparison & shared, cv::Mat const & output) {
                    shared.whenTrue = output;
                    shared.whenFalse = output;
                });
            }
        }
    }
}

TEST(ImageCompareThreads, TheOutputMayBeTheLeftImage)
{
    Random random(45);
    for (int const depth : kDepths)
    {
        for (cv::Size const size : {cv::Size(131, 77), cv::Size(700, 301)})
        {
            for (Comparison const & comparison : Comparisons(random, size, {depth, depth}))
            {
                ExpectSharedOutputWorks(comparison, comparison.left, [](Comparison & shared, cv::Mat const & output) {
                    shared.left = output;
                });
                ExpectSharedOutputWorks(comparison, comparison.left, [](Comparison & shared, cv::Mat const & output) {
                    shared.left = output;
                    shared.whenFalse = output;
                });
            }
        }
    }
}

} // namespace

} // namespace morvane::tests
