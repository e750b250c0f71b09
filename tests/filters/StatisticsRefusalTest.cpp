// What the statistics refuse, and that their outputs stay as they were.
#include <morvane/filters/Statistics.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace morvane::filters
{

namespace
{

using tests::Draw;
using tests::Snapshot;

constexpr double kBefore = -7.25;

/// Expects false from the operators that answer with numbers.
void ExpectNoNumbers(cv::Mat const & src)
{
    double entropy = kBefore;
    double median = kBefore;
    double mean = kBefore;
    double stdDev = kBefore;
    EXPECT_FALSE(EntropyNoZero(src, entropy));
    EXPECT_FALSE(MedianNoZero(src, median));
    EXPECT_FALSE(MeanAndStdDev(src, mean, stdDev));
    for (double const output : {entropy, median, mean, stdDev})
    {
        EXPECT_EQ(output, kBefore);
    }
}

/// Expects false, and an untouched output, from the operators that answer with one image.
void ExpectNoImage(cv::Mat const & src, unsigned size)
{
    for (cv::Mat output : {cv::Mat(), Draw<ushort>({"123"}), Draw<float>({"55", "55"}), Draw<uchar>({"55", "55"})})
    {
        Snapshot const snapshot(output);
        EXPECT_FALSE(LocalEntropyNoZero(src, size, output));
        EXPECT_FALSE(LocalMedianNoZero(src, size, output));
        EXPECT_TRUE(snapshot.IsUntouched());
    }
}

/// Expects false, and untouched outputs, from all sliding operators.
void ExpectNoLocal(cv::Mat const & src, unsigned size)
{
    ExpectNoImage(src, size);
    std::vector<cv::Mat> outputs{
        Draw<float>({"55", "55"}), cv::Mat(), Draw<ushort>({"123"}), Draw<uchar>({"55", "55"})};
    std::vector<Snapshot> const snapshots(outputs.begin(), outputs.end());
    EXPECT_FALSE(LocalMeanNoZero(src, size, outputs[0], outputs[1]));
    EXPECT_FALSE(LocalMeanNoZero(src, size, outputs[2], outputs[3]));
    EXPECT_FALSE(LocalStatisticsNoZero(src, size, outputs[0], outputs[1], outputs[2], outputs[3]));
    for (Snapshot const & snapshot : snapshots)
    {
        EXPECT_TRUE(snapshot.IsUntouched());
    }
}

void ExpectNoLocalMin(cv::Mat const & src, unsigned size)
{
    for (cv::Mat output : {cv::Mat(), Draw({"123"}, src.type()), Draw<float>({"55", "55"})})
    {
        Snapshot const snapshot(output);
        EXPECT_FALSE(InterpolatedRobustLocalMinNoZero(src, size, output));
        EXPECT_TRUE(snapshot.IsUntouched());
    }
}

void ExpectNoHistogram(cv::Mat const & src)
{
    for (cv::Mat output : {cv::Mat(), Draw<float>({"7", "7", "7"})})
    {
        Snapshot const snapshot(output);
        EXPECT_FALSE(ComputeHistogram(src, output, 2));
        EXPECT_TRUE(snapshot.IsUntouched());
    }
}

TEST(StatisticsRefusal, ImagesWithoutPixels)
{
    for (int const depth : tests::kDepths)
    {
        for (cv::Mat const & src : {cv::Mat(0, 0, depth), cv::Mat(0, 5, depth), cv::Mat(5, 0, depth)})
        {
            SCOPED_TRACE(
                cv::typeToString(src.type()) + ' ' + std::to_string(src.rows) + ' ' + std::to_string(src.cols));
            ExpectNoHistogram(src);
            ExpectNoNumbers(src);
            ExpectNoLocal(src, 3);
            ExpectNoLocalMin(src, 3);
        }
    }
}

TEST(StatisticsRefusal, MatricesOfThreeDimensions)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        cv::Mat solid(std::vector<int>{2, 3, 4}, depth, cv::Scalar(1));
        solid.ptr()[0] = 9;
        ExpectNoHistogram(solid);
        ExpectNoNumbers(solid);
        ExpectNoLocal(solid, 3);
        ExpectNoLocalMin(solid, 3);
    }
}

TEST(StatisticsRefusal, DepthsThatTheLibraryDoesNotKnow)
{
    for (int const depth : tests::kRefusedDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        cv::Mat src(4, 5, depth);
        tests::FillBytes(src, 0);
        src.ptr()[0] = 0x3C;
        double median = kBefore;
        EXPECT_FALSE(MedianNoZero(src, median));
        EXPECT_EQ(median, kBefore);
        ExpectNoLocal(src, 3);
        for (cv::Mat output : {cv::Mat(), Draw<float>({"55", "55"})})
        {
            Snapshot const snapshot(output);
            EXPECT_FALSE(InterpolatedRobustLocalMinNoZero(src, 3, output));
            EXPECT_TRUE(snapshot.IsUntouched());
        }
    }
}

TEST(StatisticsRefusal, SeveralChannelsWhereOneIsSorted)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : {2, 3, 4, 5})
        {
            cv::Mat src(4, 5, CV_MAKETYPE(depth, channels));
            tests::FillBytes(src, 3);
            SCOPED_TRACE(cv::typeToString(src.type()));
            double median = kBefore;
            EXPECT_FALSE(MedianNoZero(src, median));
            EXPECT_EQ(median, kBefore);
            ExpectNoLocalMin(src, 3);
        }
    }
}

TEST(StatisticsRefusal, SizesOfZero)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        cv::Mat const src = Draw({"1234", "5678", "9abc"}, depth);
        ExpectNoLocal(src, 0);
        ExpectNoLocalMin(src, 0);
    }
}

TEST(StatisticsRefusal, FlatImagesInAWindow)
{
    for (int const depth : tests::kDepths)
    {
        SCOPED_TRACE(cv::depthToString(depth));
        for (unsigned const size : {1U, 3U, 100U, std::numeric_limits<unsigned>::max()})
        {
            ExpectNoLocal(Draw({"777", "777"}, depth), size);
            ExpectNoLocal(Draw({"...", "..."}, depth), size);
            ExpectNoLocal(Draw({"7"}, depth), size);
        }
    }
}

} // namespace

} // namespace morvane::filters
