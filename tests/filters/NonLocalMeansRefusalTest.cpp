// What non-local means refuse, with the output as it was.
#include <morvane/filters/NonLocalMeans.h>

#include "support/ImageLiterals.h"
#include "support/NonLocalMeansOracle.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <array>
#include <limits>
#include <string>

namespace morvane::filters
{

namespace
{

using tests::Snapshot;

struct Operator
{
    char const * name;
    bool (*filter)(cv::Mat const & src, int patchSize, int searchSize, cv::Mat & dst);
};

constexpr std::array kOperators{
    Operator{
        "NLMeans",
        [](cv::Mat const & src, int patch, int search, cv::Mat & dst) {
            return NLMeans(src, patch, search, 9.0F, dst);
        }},
    Operator{
        "NLMeansParallel",
        [](cv::Mat const & src, int patch, int search, cv::Mat & dst) {
            return NLMeansParallel(src, patch, search, 9.0F, dst);
        }},
    Operator{
        "NLMeansIterative",
        [](cv::Mat const & src, int patch, int search, cv::Mat & dst) {
            return NLMeansIterative(src, patch, search, 9.0F, 2, dst);
        }},
    Operator{
        "NLMeansIterative without iterations",
        [](cv::Mat const & src, int patch, int search, cv::Mat & dst) {
            return NLMeansIterative(src, patch, search, 9.0F, 0, dst);
        }},
    Operator{
        "MSD_NLMeans",
        [](cv::Mat const & src, int patch, int search, cv::Mat & dst) {
            return MSD_NLMeans(src, patch, search, 9.0F, 2, dst);
        }},
    Operator{"MSD_NLMeansParallel", [](cv::Mat const & src, int patch, int search, cv::Mat & dst) {
                 return MSD_NLMeansParallel(src, patch, search, 9.0F, 2, dst);
             }}};

/// An image whose bytes are all 3.
cv::Mat Threes(cv::Size size, int type)
{
    cv::Mat image(size, type);
    tests::FillBytes(image, 3);
    return image;
}

void ExpectRefused(Operator const & op, cv::Mat const & src, int patchSize, int searchSize, cv::Mat & dst)
{
    SCOPED_TRACE(std::string(op.name) + ", " + cv::typeToString(src.type()) + " to " + cv::typeToString(dst.type()));
    Snapshot const before(dst);
    EXPECT_FALSE(op.filter(src, patchSize, searchSize, dst));
    EXPECT_TRUE(before.IsUntouched());
}

TEST(NonLocalMeansRefusals, OtherDepths)
{
    for (Operator const & op : kOperators)
    {
        for (int const depth : {CV_8S, CV_32F, CV_64F, CV_16F})
        {
            for (cv::Size const size : {cv::Size(9, 9), cv::Size(1, 1), cv::Size(0, 0)})
            {
                cv::Mat dst = Threes(size, depth);
                ExpectRefused(op, Threes(size, depth), 3, 3, dst);
                cv::Mat none;
                ExpectRefused(op, Threes(size, depth), 3, 3, none);
            }
        }
    }
}

TEST(NonLocalMeansRefusals, SeveralChannels)
{
    for (Operator const & op : kOperators)
    {
        for (int const depth : tests::kFilteredDepths)
        {
            for (int const channels : {2, 3, 4, 5})
            {
                int const type = CV_MAKETYPE(depth, channels);
                cv::Mat dst = Threes({9, 9}, type);
                ExpectRefused(op, Threes({9, 9}, type), 3, 3, dst);
            }
        }
    }
}

TEST(NonLocalMeansRefusals, NegativeSizes)
{
    constexpr int least = std::numeric_limits<int>::min();
    for (Operator const & op : kOperators)
    {
        for (int const depth : tests::kFilteredDepths)
        {
            for (int const size : {-1, -2, -3, -100, least + 1, least})
            {
                cv::Mat dst = Threes({9, 9}, depth);
                ExpectRefused(op, Threes({9, 9}, depth), size, 3, dst);
                ExpectRefused(op, Threes({9, 9}, depth), 3, size, dst);
                ExpectRefused(op, Threes({9, 9}, depth), size, size, dst);
            }
        }
    }
}

TEST(NonLocalMeansRefusals, MoreThanTwoDimensions)
{
    std::array const sides{4, 4, 4};
    cv::Mat const volume(3, sides.data(), CV_8UC1, cv::Scalar(1));
    for (Operator const & op : kOperators)
    {
        cv::Mat dst = Threes({4, 4}, CV_8UC1);
        ExpectRefused(op, volume, 1, 1, dst);
        cv::Mat outVolume(3, sides.data(), CV_8UC1, cv::Scalar(7));
        EXPECT_FALSE(op.filter(volume, 1, 1, outVolume)) << op.name;
        EXPECT_EQ(outVolume.dims, 3);
        EXPECT_EQ(outVolume.at<uchar>(1, 3, 3), 7);
    }
}

using MultiScale = bool (*)(cv::Mat const & src, int patchSize, int searchSize, float h, int levels, cv::Mat & dst);

constexpr std::array<MultiScale, 2> kMultiScale{MSD_NLMeans, MSD_NLMeansParallel};

TEST(NonLocalMeansRefusals, MultiScale_WithoutALevel)
{
    for (MultiScale const op : kMultiScale)
    {
        for (int const levels : {0, -1, std::numeric_limits<int>::min()})
        {
            cv::Mat dst = Threes({9, 9}, CV_8UC1);
            Snapshot const before(dst);
            EXPECT_FALSE(op(cv::Mat(9, 9, CV_8UC1, cv::Scalar(4)), 3, 3, 9.0F, levels, dst));
            EXPECT_TRUE(before.IsUntouched());
        }
    }
}

TEST(NonLocalMeansRefusals, MultiScale_WithAnOutputOfAnotherSizeOrType)
{
    for (MultiScale const op : kMultiScale)
    {
        for (int const depth : tests::kFilteredDepths)
        {
            cv::Mat const src = Threes({9, 8}, depth);
            for (cv::Size const size : {cv::Size(8, 9), cv::Size(9, 9), cv::Size(10, 8), cv::Size(1, 72), cv::Size()})
            {
                cv::Mat dst = Threes(size, depth);
                Snapshot const before(dst);
                EXPECT_FALSE(op(src, 3, 3, 9.0F, 1, dst));
                EXPECT_TRUE(before.IsUntouched());
            }
            for (int const type : {CV_8UC1, CV_8SC1, CV_16UC1, CV_16SC1, CV_32SC1, CV_32FC1, CV_MAKETYPE(depth, 2)})
            {
                if (type == depth) continue;
                cv::Mat dst = Threes({9, 8}, type);
                Snapshot const before(dst);
                EXPECT_FALSE(op(src, 3, 3, 9.0F, 1, dst));
                EXPECT_TRUE(before.IsUntouched());
            }
            std::array const sides{8, 9, 2};
            cv::Mat volume(3, sides.data(), depth, cv::Scalar(7));
            EXPECT_FALSE(op(src, 3, 3, 9.0F, 1, volume));
            EXPECT_EQ(volume.dims, 3);
        }
    }
}

} // namespace

} // namespace morvane::filters
