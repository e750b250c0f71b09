// What the pyramid refuses, with its outputs as they were.
#include <morvane/filters/Sampling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <string>

namespace morvane::filters
{

namespace
{

using tests::Snapshot;

struct Operator
{
    char const * name;
    bool (*reduce)(cv::Mat const & src, cv::Mat & low, cv::Mat & high);
    bool takesFloats;
};

constexpr std::array kOperators{
    Operator{"mean", DownSampling, true}, Operator{"or", DownSamplingWithLogicalOr, false},
    Operator{"max", DownSamplingWithMax, true}, Operator{"min", DownSamplingWithMin, true}};

constexpr std::array kAllDepths{CV_8U, CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F, CV_16F};

bool Takes(Operator const & op, int depth)
{
    if (depth == CV_8S || depth == CV_16F) return false;
    return op.takesFloats || (depth != CV_32F && depth != CV_64F);
}

/// An image whose bytes are all 3, of any depth.
cv::Mat Threes(cv::Size size, int type)
{
    cv::Mat image(size, type);
    tests::FillBytes(image, 3);
    return image;
}

void ExpectRefused(Operator const & op, cv::Mat const & src, cv::Mat & low, cv::Mat & high)
{
    SCOPED_TRACE(
        std::string(op.name) + ", " + cv::typeToString(src.type()) + " to " + cv::typeToString(high.type()) + ", low " +
        cv::typeToString(low.type()));
    Snapshot const lowBefore(low);
    Snapshot const highBefore(high);
    EXPECT_FALSE(op.reduce(src, low, high));
    EXPECT_TRUE(lowBefore.IsUntouched());
    EXPECT_TRUE(highBefore.IsUntouched());
}

TEST(DownSamplingRefusals, DepthsOutsideTheTable)
{
    for (Operator const & op : kOperators)
    {
        for (int const depth : kAllDepths)
        {
            for (int const highDepth : kAllDepths)
            {
                if (Takes(op, depth) && Takes(op, highDepth)) continue;
                cv::Mat low = Threes({2, 2}, depth);
                cv::Mat high = Threes({4, 4}, highDepth);
                ExpectRefused(op, Threes({4, 4}, depth), low, high);
                cv::Mat none;
                ExpectRefused(op, Threes({4, 4}, depth), none, high);
            }
            if (Takes(op, depth)) continue;
            cv::Mat low;
            cv::Mat high;
            ExpectRefused(op, Threes({4, 4}, depth), low, high);
            // Also where there is no block.
            ExpectRefused(op, Threes({4, 1}, depth), low, high);
            ExpectRefused(op, cv::Mat(0, 0, depth), low, high);
        }
    }
}

TEST(DownSamplingRefusals, ValuesOfAnotherType)
{
    for (Operator const & op : kOperators)
    {
        for (int const type : {CV_8UC1, CV_16SC1, CV_16UC2, CV_32SC1, CV_32FC1})
        {
            cv::Mat low = Threes({2, 2}, type);
            cv::Mat high = Threes({4, 4}, CV_16UC1);
            ExpectRefused(op, Threes({4, 4}, CV_16UC1), low, high);
            cv::Mat none;
            ExpectRefused(op, Threes({4, 4}, CV_16UC1), low, none);
        }
    }
}

TEST(DownSamplingRefusals, DetailOfOtherChannels)
{
    for (Operator const & op : kOperators)
    {
        for (int const channels : {1, 2, 4, 5})
        {
            cv::Mat low;
            cv::Mat high = Threes({4, 4}, CV_8UC(channels));
            ExpectRefused(op, Threes({4, 4}, CV_8UC3), low, high);
        }
    }
}

TEST(DownSamplingRefusals, OutputsTooSmall)
{
    for (Operator const & op : kOperators)
    {
        for (cv::Size const size : {cv::Size(1, 2), cv::Size(2, 1), cv::Size(5, 1)})
        {
            cv::Mat low = Threes(size, CV_8UC1);
            cv::Mat high;
            ExpectRefused(op, Threes({5, 5}, CV_8UC1), low, high);
        }
        for (cv::Size const size : {cv::Size(3, 4), cv::Size(4, 3), cv::Size(9, 3)})
        {
            cv::Mat low;
            cv::Mat high = Threes(size, CV_8UC1);
            ExpectRefused(op, Threes({5, 5}, CV_8UC1), low, high);
        }
    }
}

TEST(DownSamplingRefusals, NothingForWhatHasNoBlock)
{
    for (Operator const & op : kOperators)
    {
        for (cv::Size const size : {cv::Size(1, 5), cv::Size(5, 1)})
        {
            cv::Mat low = Threes({1, 1}, CV_8UC1);
            cv::Mat high = Threes({2, 2}, CV_8UC1);
            EXPECT_TRUE(op.reduce(Threes(size, CV_8UC1), low, high)) << op.name;
            EXPECT_TRUE(tests::EqualImages(low, Threes({1, 1}, CV_8UC1))) << op.name;
            EXPECT_TRUE(tests::EqualImages(high, Threes({2, 2}, CV_8UC1))) << op.name;
        }
    }
}

TEST(DownSamplingRefusals, DetailOfAMinimumWithoutItsRemainder)
{
    Operator const & min = kOperators.back();
    for (cv::Size const size : {cv::Size(4, 4), cv::Size(5, 4), cv::Size(4, 5)})
    {
        cv::Mat low;
        cv::Mat high = Threes(size, CV_8UC1);
        ExpectRefused(min, Threes({5, 5}, CV_8UC1), low, high);
    }
}

TEST(DownSamplingRefusals, MoreThanTwoDimensions)
{
    std::array const sides{2, 4, 4};
    cv::Mat const volume(3, sides.data(), CV_8UC1, cv::Scalar(1));
    for (Operator const & op : kOperators)
    {
        cv::Mat low;
        cv::Mat high;
        EXPECT_FALSE(op.reduce(volume, low, high));
        EXPECT_TRUE(low.empty());
        EXPECT_TRUE(high.empty());
        cv::Mat outVolume = volume.clone();
        EXPECT_FALSE(op.reduce(Threes({4, 4}, CV_8UC1), outVolume, high));
        EXPECT_TRUE(high.empty());
        EXPECT_FALSE(op.reduce(Threes({4, 4}, CV_8UC1), low, outVolume));
        EXPECT_TRUE(low.empty());
        EXPECT_EQ(outVolume.dims, 3);
        EXPECT_EQ(outVolume.at<uchar>(1, 3, 3), 1);
    }
}

TEST(DownSamplingRefusals, OfTwoImages)
{
    for (auto const reduce :
         {static_cast<bool (*)(cv::Mat const &, cv::Mat &)>(DownSamplingWithMax),
          static_cast<bool (*)(cv::Mat const &, cv::Mat &)>(DownSamplingWithMin)})
    {
        for (int const depth : tests::kRefusedDepths)
        {
            cv::Mat low = Threes({2, 2}, depth);
            Snapshot const before(low);
            EXPECT_FALSE(reduce(Threes({4, 4}, depth), low));
            EXPECT_TRUE(before.IsUntouched());
            cv::Mat none;
            EXPECT_FALSE(reduce(Threes({4, 4}, depth), none));
            EXPECT_TRUE(none.empty());
        }
        for (cv::Mat low : {Threes({2, 2}, CV_8UC2), Threes({2, 2}, CV_16SC1), Threes({1, 2}, CV_8UC1)})
        {
            Snapshot const before(low);
            EXPECT_FALSE(reduce(Threes({4, 4}, CV_8UC1), low));
            EXPECT_TRUE(before.IsUntouched());
        }
    }
}

void ExpectUpRefused(cv::Mat const & low, cv::Mat const & high, cv::Mat & dst)
{
    SCOPED_TRACE(
        cv::typeToString(low.type()) + " and " + cv::typeToString(high.type()) + " to " + cv::typeToString(dst.type()));
    Snapshot const before(dst);
    EXPECT_FALSE(UpSampling(low, high, dst));
    EXPECT_TRUE(before.IsUntouched());
}

TEST(UpSamplingRefusals, DepthsOutsideTheTable)
{
    for (int const depth : kAllDepths)
    {
        for (int const highDepth : kAllDepths)
        {
            bool const takesLow = depth != CV_8S && depth != CV_16F;
            bool const takesHigh = highDepth != CV_8S && highDepth < CV_32F;
            if (takesLow && takesHigh) continue;
            cv::Mat none;
            ExpectUpRefused(Threes({2, 2}, depth), Threes({4, 4}, highDepth), none);
            ExpectUpRefused(cv::Mat(0, 0, depth), Threes({4, 4}, highDepth), none);
            cv::Mat dst = Threes({4, 4}, depth);
            ExpectUpRefused(Threes({2, 2}, depth), Threes({4, 4}, highDepth), dst);
        }
    }
}

TEST(UpSamplingRefusals, OutputsOfAnotherType)
{
    for (int const depth : tests::kDepths)
    {
        for (int const dstDepth : kAllDepths)
        {
            bool const is16Bit = depth == CV_16U || depth == CV_16S;
            bool const isRefused = dstDepth == CV_8S || dstDepth == CV_16F;
            if (dstDepth == depth || (is16Bit && !isRefused)) continue;
            cv::Mat dst = Threes({4, 4}, dstDepth);
            ExpectUpRefused(Threes({2, 2}, depth), Threes({4, 4}, CV_16SC1), dst);
        }
        cv::Mat dst = Threes({4, 4}, CV_MAKETYPE(depth, 2));
        ExpectUpRefused(Threes({2, 2}, depth), Threes({4, 4}, CV_16SC1), dst);
    }
}

TEST(UpSamplingRefusals, DetailAndOutputsTooSmall)
{
    for (cv::Size const size : {cv::Size(3, 4), cv::Size(4, 3), cv::Size(2, 2), cv::Size(20, 3)})
    {
        cv::Mat dst;
        ExpectUpRefused(Threes({2, 2}, CV_8UC1), Threes(size, CV_8UC1), dst);
        dst = Threes(size, CV_8UC1);
        ExpectUpRefused(Threes({2, 2}, CV_8UC1), Threes({4, 4}, CV_8UC1), dst);
        Snapshot const before(dst);
        EXPECT_FALSE(UpSampling(Threes({2, 2}, CV_8UC1), dst));
        EXPECT_TRUE(before.IsUntouched());
    }
    cv::Mat dst;
    ExpectUpRefused(Threes({2, 2}, CV_8UC1), cv::Mat(), dst);
}

TEST(UpSamplingRefusals, DetailOfOtherChannels)
{
    for (int const channels : {1, 3, 4})
    {
        cv::Mat dst;
        ExpectUpRefused(Threes({2, 2}, CV_8UC2), Threes({4, 4}, CV_16SC(channels)), dst);
        ExpectUpRefused(Threes({2, 2}, CV_16SC2), Threes({4, 4}, CV_16SC(channels)), dst);
    }
}

TEST(UpSamplingRefusals, WithoutDetail)
{
    for (int const depth : tests::kRefusedDepths)
    {
        cv::Mat dst = Threes({4, 4}, depth);
        Snapshot const before(dst);
        EXPECT_FALSE(UpSampling(Threes({2, 2}, depth), dst));
        EXPECT_TRUE(before.IsUntouched());
        cv::Mat none;
        EXPECT_FALSE(UpSampling(Threes({2, 2}, depth), none));
        EXPECT_TRUE(none.empty());
    }
    for (int const type : {CV_8UC1, CV_16UC1, CV_32SC1, CV_16SC2})
    {
        cv::Mat dst = Threes({4, 4}, type);
        Snapshot const before(dst);
        EXPECT_FALSE(UpSampling(Threes({2, 2}, CV_16SC1), dst));
        EXPECT_TRUE(before.IsUntouched());
    }
}

TEST(UpSamplingRefusals, MoreThanTwoDimensions)
{
    std::array const sides{2, 4, 4};
    cv::Mat volume(3, sides.data(), CV_8UC1, cv::Scalar(1));
    cv::Mat const low = Threes({2, 2}, CV_8UC1);
    cv::Mat const high = Threes({4, 4}, CV_8UC1);
    cv::Mat dst;
    EXPECT_FALSE(UpSampling(volume, high, dst));
    EXPECT_FALSE(UpSampling(low, volume, dst));
    EXPECT_FALSE(UpSampling(volume, dst));
    EXPECT_TRUE(dst.empty());
    EXPECT_FALSE(UpSampling(low, high, volume));
    EXPECT_FALSE(UpSampling(low, volume));
    EXPECT_EQ(volume.dims, 3);
    EXPECT_EQ(volume.at<uchar>(1, 3, 3), 1);
}

} // namespace

} // namespace morvane::filters
