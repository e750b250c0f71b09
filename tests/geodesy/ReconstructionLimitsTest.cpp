// Reconstructions of images beyond two gigabytes.
#include <morvane/geodesy/Reconstruction.h>

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <cstdint>

namespace morvane::geodesy
{

namespace
{

/// Counts row by row, as whole-image counts overflow an int.
std::int64_t CountDifferent(cv::Mat const & image, double value)
{
    std::int64_t count = 0;
    for (int y = 0; y < image.rows; ++y)
    {
        count += cv::countNonZero(image.row(y) != value);
    }
    return count;
}

TEST(SlowReconstruction, DilationOfAnImageBeyondTwoGigabytes_ReachesItsLastPixel)
{
    int const side = 46400;
    cv::Mat mask(side, side, CV_8UC1, cv::Scalar(9));
    ASSERT_GT(mask.total(), std::size_t{1} << 31U);
    // A wall with a gap before the last rows, and one without before the last column.
    mask.row(side - 20).setTo(0);
    mask.at<uchar>(side - 20, 5) = 6;
    mask.col(side - 2).setTo(0);
    cv::Mat marker(side, side, CV_8UC1, cv::Scalar(0));
    marker.at<uchar>(0, side / 2) = 7;
    marker.at<uchar>(side - 1, side - 1) = 1;
    cv::Mat out;
    ASSERT_TRUE(ReconstructionbyDilate(marker, mask, cv::MORPH_RECT, out, {3, 3}));
    marker.release();
    EXPECT_EQ(CountDifferent(out(cv::Rect(0, 0, side - 2, side - 20)), 7), 0);
    EXPECT_EQ(CountDifferent(out.row(side - 20).colRange(0, side - 1), 0), 1);
    EXPECT_EQ(CountDifferent(out(cv::Rect(0, side - 19, side - 2, 19)), 6), 0);
    EXPECT_EQ(CountDifferent(out.col(side - 2), 0), 0);
    EXPECT_EQ(CountDifferent(out(cv::Rect(side - 1, side - 19, 1, 19)), 1), 0);
}

TEST(SlowReconstruction, FloodOfAnImageBeyondTwoGigabytes_ReachesItsLastPixel)
{
    // Few rows, so that few pixels wait in the queue.
    int const rows = 64;
    int const cols = 8500000;
    cv::Mat mask(rows, cols, CV_32SC1, cv::Scalar(1));
    ASSERT_GT(mask.total() * mask.elemSize(), std::size_t{1} << 31U);
    mask.col(cols - 20).setTo(6);
    cv::Mat marker(rows, cols, CV_32SC1, cv::Scalar(9));
    marker.at<int>(0, 3) = 2;
    cv::Mat out;
    ASSERT_TRUE(OverBuild(mask, marker, connexity::eConnexity4, out));
    EXPECT_EQ(CountDifferent(out.colRange(0, cols - 20), 2), 0);
    EXPECT_EQ(CountDifferent(out.colRange(cols - 20, cols), 6), 0);
}

} // namespace

} // namespace morvane::geodesy
