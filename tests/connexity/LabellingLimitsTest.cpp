// Label at the limits of the label types, and on images beyond two gigabytes.
#include <morvane/connexity/Labelling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

namespace morvane::connexity
{

namespace
{

using tests::Labelled;

/// Pixels so far apart that no shape joins them, @p perRow in each of @p rows rows of them.
cv::Mat Isolated(int rows, int perRow)
{
    cv::Mat image(3 * rows, 3 * perRow, CV_8UC1, cv::Scalar(0));
    for (int y = 0; y < rows; ++y)
    {
        for (int x = 0; x < perRow; ++x)
        {
            image.at<uchar>(3 * y, 3 * x) = 1;
        }
    }
    return image;
}

/// The label of the isolated pixel @p number, from 1.
double LabelOf(cv::Mat const & labels, int number, int perRow)
{
    int const index = number - 1;
    return tests::ElementAt(labels, 3 * (index / perRow), 3 * (index % perRow));
}

TEST(LabelLimits, ThreeHundredZonesInEightBits_WrapThroughZero)
{
    cv::Mat const image = Isolated(10, 30);
    for (int number = -1; number <= tests::kConnexityCount; ++number)
    {
        cv::Mat const labels = Labelled(image, number, CV_8UC1);
        for (int zone = 1; zone <= 300; ++zone)
        {
            int const expected = zone <= 255 ? zone : zone - 256;
            ASSERT_EQ(LabelOf(labels, zone, 30), expected) << "zone " << zone << ", connexity " << number;
        }
        // Zone 256 is 0, like the background.
        EXPECT_EQ(cv::countNonZero(labels), 299) << number;
    }
}

TEST(LabelLimits, FortyThousandthZoneInSigned16Bits_ReadsNegative)
{
    cv::Mat const image = Isolated(200, 200);
    for (int const number : {eConnexity4, eConnexity8, eConnexity8Wrapped, eConnexity12})
    {
        cv::Mat const labels = Labelled(image, number, CV_16SC1);
        EXPECT_EQ(LabelOf(labels, 32767, 200), 32767) << number;
        EXPECT_EQ(LabelOf(labels, 32768, 200), -32768) << number;
        EXPECT_EQ(LabelOf(labels, 40000, 200), -25536) << number;
        EXPECT_EQ(cv::countNonZero(labels), 40000) << number;
    }
}

TEST(LabelLimits, MoreThan65536ZonesIn16Bits_WrapThroughZeroAndIn32BitsDoNot)
{
    cv::Mat const image = Isolated(257, 257);
    for (int const number : {eConnexity4Wrapped, eConnexity8, eConnexity20})
    {
        cv::Mat const narrow = Labelled(image, number, CV_16UC1);
        cv::Mat const wide = Labelled(image, number, CV_32SC1);
        for (int const zone : {1, 255, 256, 32768, 65534, 65535, 65536, 65537, 65538, 66048, 66049})
        {
            EXPECT_EQ(LabelOf(wide, zone, 257), zone) << number;
            EXPECT_EQ(LabelOf(narrow, zone, 257), zone <= 65535 ? zone : zone - 65536) << number;
        }
        EXPECT_EQ(cv::countNonZero(wide), 66049) << number;
        EXPECT_EQ(cv::countNonZero(narrow), 66048) << number;
        cv::Mat asSigned = Labelled(image, number, CV_16SC1);
        cv::Mat const sameBits(asSigned.size(), CV_16UC1, asSigned.data, asSigned.step);
        EXPECT_TRUE(tests::EqualImages(sameBits, narrow)) << number;
    }
}

/// A frame around the image, one pixel in its middle, and a line that divides the lower half.
void DrawSparseScene(cv::Mat & image)
{
    cv::Scalar const full = cv::Scalar::all(1);
    image.setTo(0);
    image.row(0).setTo(full);
    image.row(image.rows - 1).setTo(full);
    image.col(0).setTo(full);
    image.col(image.cols - 1).setTo(full);
    image(cv::Rect(image.cols / 2, image.rows / 2, 1, 1)).setTo(full);
    image.row(image.rows - 20).colRange(10, image.cols - 10).setTo(full);
}

/// Expects the three zones of the scene; labels are compared row by row, as whole-image counts overflow an int.
void ExpectSparseScene(cv::Mat const & labels)
{
    std::int64_t count = 0;
    for (int y = 0; y < labels.rows; ++y)
    {
        count += cv::countNonZero(labels.row(y));
    }
    std::int64_t const frame = 2 * (std::int64_t{labels.rows} + labels.cols) - 4;
    EXPECT_EQ(count, frame + 1 + labels.cols - 20);
    auto const expectAll = [](cv::Mat const & part, int label) {
        EXPECT_EQ(cv::countNonZero(part != label), 0) << "zone " << label;
    };
    expectAll(labels.row(0), 1);
    expectAll(labels.row(labels.rows - 1), 1);
    expectAll(labels.col(0), 1);
    expectAll(labels.col(labels.cols - 1), 1);
    expectAll(labels(cv::Rect(labels.cols / 2, labels.rows / 2, 1, 1)), 2);
    expectAll(labels.row(labels.rows - 20).colRange(10, labels.cols - 10), 3);
}

TEST(SlowLabelLimits, ImageBeyondTwoGigabytes_IsLabelledToItsLastPixel)
{
    cv::Mat image(8200, 8200, CV_64FC4);
    ASSERT_GT(image.total() * image.elemSize(), std::size_t{1} << 31U);
    DrawSparseScene(image);
    for (int const number : {eConnexity4, eConnexity8Wrapped, eConnexity12, eConnexity24InterleavedWrapped})
    {
        SCOPED_TRACE(number);
        ExpectSparseScene(Labelled(image, number, CV_8UC1));
    }
}

TEST(SlowLabelLimits, LabelsBeyondTwoGigabytes_AreWrittenToTheLastPixel)
{
    cv::Mat image(23200, 23200, CV_8UC1);
    DrawSparseScene(image);
    for (int const number : {eConnexity8, eConnexity12})
    {
        SCOPED_TRACE(number);
        cv::Mat const labels = Labelled(image, number, CV_32SC1);
        ASSERT_GT(labels.total() * labels.elemSize(), std::size_t{1} << 31U);
        ExpectSparseScene(labels);
    }
}

TEST(SlowLabelLimits, MorePixelsThan32BitsCount_AreLabelledToTheLastOne)
{
    cv::Mat image(66000, 66000, CV_8UC1);
    ASSERT_GT(image.total(), std::size_t{1} << 32U);
    DrawSparseScene(image);
    ExpectSparseScene(Labelled(image, eConnexity8, CV_8UC1));
}

} // namespace

} // namespace morvane::connexity
