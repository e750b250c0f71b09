// ImageCompare on images beyond two gigabytes.
#include <morvane/common/ImageCompare.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace morvane::tests
{

namespace
{

constexpr int kSide = 46400;

/// Expects @p value at the marked pixels and @p other everywhere else.
void ExpectMarks(cv::Mat const & image, std::vector<std::int64_t> const & marks, int value, int other)
{
    std::int64_t others = 0;
    for (int y = 0; y < image.rows; ++y)
    {
        others += cv::countNonZero(image.row(y) == other);
    }
    EXPECT_EQ(others, std::int64_t{image.rows} * image.cols - static_cast<std::int64_t>(marks.size()));
    for (std::int64_t const mark : marks)
    {
        EXPECT_EQ(image.at<uchar>(static_cast<int>(mark / image.cols), static_cast<int>(mark % image.cols)), value)
            << "pixel " << mark;
    }
}

TEST(SlowImageCompareLimits, ImageBeyondTwoGigabytes_IsComparedToItsLastPixelAndWrittenInAnotherShape)
{
    cv::Mat image(kSide, kSide, CV_8UC1, cv::Scalar(3));
    auto const pixels = static_cast<std::int64_t>(image.total());
    ASSERT_GT(pixels, std::int64_t{1} << 31U);
    std::vector<std::int64_t> const marks{0, pixels / 2 + 17, (std::int64_t{1} << 31U) + 1, pixels - 1};
    for (std::int64_t const mark : marks)
    {
        image.at<uchar>(static_cast<int>(mark / kSide), static_cast<int>(mark % kSide)) = 5;
    }
    cv::Mat tall(2 * kSide, kSide / 2, CV_8UC1);
    ASSERT_TRUE(common::ImageCompare(image, 1, 3.0, cv::Scalar(9), cv::Scalar(4), tall));
    ExpectMarks(tall, marks, 9, 4);
    tall.release();
    ASSERT_TRUE(common::ImageCompare(image, 1, 3.0, cv::Scalar(7), image, image));
    ExpectMarks(image, marks, 7, 3);
}

} // namespace

} // namespace morvane::tests
