// ImageCompare with an output that is, or shares its pixels with, one of the operands; values and shapes at the edges.
#include <morvane/common/ImageCompare.h>

#include "support/AllTypes.h"
#include "support/CompareOracle.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <limits>
#include <vector>

namespace morvane::tests
{

namespace
{

constexpr int kCodeCount = 7;
constexpr Mixture kOperands{.emptyShare = 0.2, .specialShare = 0.2, .alphabet = 3};

/// Calls @p check for all codes and depths with operands of one shape, their pixels in a view.
void ForEachCodeAndDepth(std::function<void(int code, int depth, Random & random, cv::Size size)> const & check)
{
    Random random(33);
    for (int const depth : kDepths)
    {
        for (int code = 0; code < kCodeCount; ++code)
        {
            for (int const width : {1, 7, 16, 33, 70})
            {
                check(code, depth, random, {width, 5});
            }
        }
    }
}

TEST(ImageCompare, WritesOverItsRightOperand)
{
    ForEachCodeAndDepth([](int code, int depth, Random & random, cv::Size size) {
        cv::Mat const left = RandomImage(random, size, depth, kOperands);
        FramedImage right(RandomImage(random, size, depth, kOperands));
        cv::Mat const whenFalse = RandomImage(random, size, depth, kOperands);
        Comparison const comparison{left, code, CopyOf(right.View()), cv::Scalar(3), whenFalse};
        cv::Mat const expected = OracleCompare(comparison, right.View());
        SCOPED_TRACE(Describe(comparison, right.View()));
        ASSERT_TRUE(common::ImageCompare(left, code, right.View(), cv::Scalar(3), whenFalse, right.View()));
        ASSERT_TRUE(EqualImages(right.View(), expected));
        ASSERT_TRUE(right.IsFrameUntouched());
    });
}

TEST(ImageCompare, WritesOverAMatrixThatIsEveryOperand)
{
    ForEachCodeAndDepth([](int code, int depth, Random & random, cv::Size size) {
        cv::Mat const before = RandomImage(random, size, depth, kOperands);
        FramedImage image(before);
        cv::Mat & view = image.View();
        ASSERT_TRUE(common::ImageCompare(view, code, view, view, view, view));
        // Whatever the comparison says, each pixel is selected from itself.
        ASSERT_TRUE(EqualImages(view, before));
        ASSERT_TRUE(common::ImageCompare(view, code, view, cv::Scalar(5), view, view));
        ASSERT_TRUE(EqualImages(view, OracleCompare({before, code, before, cv::Scalar(5), before}, before)));
        ASSERT_TRUE(image.IsFrameUntouched());
    });
}

/// The pixels of an image under another shape.
cv::Mat Reshaped(cv::Mat const & image, int rows)
{
    return image.reshape(0, rows);
}

TEST(ImageCompare, WritesOverAValueImageOfAnotherShape)
{
    Random random(34);
    for (int const outputDepth : kDepths)
    {
        for (int const channels : kChannelCounts)
        {
            for (int const outputRows : {2, 3, 12, 1})
            {
                int const type = CV_MAKETYPE(outputDepth, channels);
                cv::Mat const left = RandomImage(random, {12, 3}, CV_16SC1, kOperands);
                cv::Mat values = RandomImage(random, {12, 3}, type, kOperands);
                cv::Mat const before = CopyOf(values);
                cv::Mat output = Reshaped(values, outputRows);
                cv::Mat const expected = OracleCompare({left, 1, 1.0, cv::Scalar(4, 5, 6, 7), before}, output);
                ASSERT_TRUE(common::ImageCompare(left, 1, 1.0, cv::Scalar(4, 5, 6, 7), values, output));
                ASSERT_TRUE(EqualImages(output, expected));
                ASSERT_EQ(output.data, values.data);

                // Now the output has the shape of the left image, and the values another.
                before.copyTo(values);
                cv::Mat const whenTrue = Reshaped(values, outputRows);
                cv::Mat const selected = OracleCompare({left, 1, 1.0, before, cv::Scalar(4, 5, 6, 7)}, values);
                ASSERT_TRUE(common::ImageCompare(left, 1, 1.0, whenTrue, cv::Scalar(4, 5, 6, 7), values));
                ASSERT_TRUE(EqualImages(values, selected));
            }
        }
    }
}

TEST(ImageCompare, WritesOverComparedImagesOfAnotherShape)
{
    Random random(35);
    for (int const depth : kDepths)
    {
        for (int const rows : {1, 2, 9, 36})
        {
            cv::Mat const left = RandomImage(random, {12, 3}, depth, kOperands);
            cv::Mat const right = RandomImage(random, {12, 3}, depth, kOperands);
            cv::Mat const expected =
                OracleCompare({left, 3, right, cv::Scalar(4), cv::Scalar(5)}, Reshaped(right, rows));
            cv::Mat overRight = CopyOf(right);
            cv::Mat shapedRight = Reshaped(overRight, rows);
            ASSERT_TRUE(common::ImageCompare(left, 3, overRight, cv::Scalar(4), cv::Scalar(5), shapedRight));
            ASSERT_TRUE(EqualImages(shapedRight, expected));
            cv::Mat overLeft = CopyOf(left);
            cv::Mat shapedLeft = Reshaped(overLeft, rows);
            ASSERT_TRUE(common::ImageCompare(overLeft, 3, right, cv::Scalar(4), cv::Scalar(5), shapedLeft));
            ASSERT_TRUE(EqualImages(shapedLeft, expected));
        }
    }
}

TEST(ImageCompare, MakesInfinitiesOfScalarsThatSinglePrecisionDoesNotReach)
{
    float const infinity = std::numeric_limits<float>::infinity();
    cv::Mat const left = Draw<float>({"12"});
    cv::Mat one(1, 2, CV_32FC1, cv::Scalar(9));
    ASSERT_TRUE(common::ImageCompare(left, 0, 1.0, cv::Scalar(1e300), cv::Scalar(-1e300), one));
    ExpectEqualImages(one, Row<float>({infinity, -infinity}));
    cv::Mat four(1, 2, CV_32FC4, cv::Scalar::all(9));
    ASSERT_TRUE(
        common::ImageCompare(left, 0, 1.0, cv::Scalar(1e300, 1, -1e300, 1e-300), cv::Scalar(1, 2, 3, 1e39), four));
    ExpectEqualImages(four, Row<cv::Vec4f>({{infinity, 1, -infinity, 0}, {1, 2, 3, infinity}}));
}

TEST(ImageCompare, RefusesMatricesOfMoreThanTwoDimensions)
{
    cv::Mat const image = Draw<uchar>({"1234", "1234", "1234"});
    cv::Mat const solid(std::vector<int>{2, 3, 2}, CV_8UC1, cv::Scalar(1));
    ASSERT_EQ(solid.total(), image.total());
    cv::Scalar const one(1);
    cv::Mat output = Draw<uchar>({"5555", "6666", "7777"});
    Snapshot const snapshot(output);
    EXPECT_FALSE(common::ImageCompare(solid, 0, 1.0, one, one, output));
    EXPECT_FALSE(common::ImageCompare(solid, 0, solid, solid, solid, output));
    EXPECT_FALSE(common::ImageCompare(image, 0, solid, one, one, output));
    EXPECT_FALSE(common::ImageCompare(image, 0, 1.0, solid, one, output));
    EXPECT_FALSE(common::ImageCompare(image, 0, 1.0, one, solid, output));
    EXPECT_FALSE(common::ImageCompare(image, 0, image, solid, image, output));
    EXPECT_FALSE(common::ImageCompare(image, 0, image, image, solid, output));
    EXPECT_TRUE(snapshot.IsUntouched());

    cv::Mat solidOutput = solid.clone();
    EXPECT_FALSE(common::ImageCompare(image, 5, 1.0, cv::Scalar(7), cv::Scalar(8), solidOutput));
    EXPECT_FALSE(common::ImageCompare(solid, 5, 1.0, cv::Scalar(7), cv::Scalar(8), solidOutput));
    EXPECT_EQ(std::memcmp(solidOutput.data, solid.data, solid.total()), 0);
}

} // namespace

} // namespace morvane::tests
