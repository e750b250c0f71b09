#include <morvane/common/ImageCompare.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace morvane::tests
{

namespace
{

using common::AreImagesEqual;

void ExpectEqual(cv::Mat const & left, cv::Mat const & right)
{
    EXPECT_TRUE(AreImagesEqual(left, right));
    EXPECT_TRUE(AreImagesEqual(right, left));
}

void ExpectDifferent(cv::Mat const & left, cv::Mat const & right)
{
    EXPECT_FALSE(AreImagesEqual(left, right));
    EXPECT_FALSE(AreImagesEqual(right, left));
}

TEST(AreImagesEqual, SeesEachByteInEveryType)
{
    Random random(51);
    for (int depth = CV_8U; depth <= CV_16F; ++depth)
    {
        for (int const channels : {1, 2, 3, 4, 5})
        {
            int const type = CV_MAKETYPE(depth, channels);
            SCOPED_TRACE(cv::typeToString(type));
            cv::Mat image(3, 1 + random.Below(20), type);
            FillBytes(image, 0x3C);
            cv::Mat other = CopyOf(image);
            ExpectEqual(image, other);
            int const rowBytes = image.cols * static_cast<int>(image.elemSize());
            for (int byte = 0; byte < 3 * rowBytes; ++byte)
            {
                uchar & changed = other.ptr(byte / rowBytes)[byte % rowBytes];
                changed ^= 1U;
                ExpectDifferent(image, other);
                changed ^= 1U;
            }
        }
    }
}

TEST(AreImagesEqual, TellsTypesApartWhateverTheBytes)
{
    cv::Size const size(4, 3);
    for (int leftType = 0; leftType < CV_MAKETYPE(0, 5); ++leftType)
    {
        for (int rightType = 0; rightType < CV_MAKETYPE(0, 5); ++rightType)
        {
            cv::Mat const left = cv::Mat::zeros(size, leftType);
            cv::Mat const right = cv::Mat::zeros(size, rightType);
            EXPECT_EQ(AreImagesEqual(left, right), leftType == rightType)
                << cv::typeToString(leftType) << " and " << cv::typeToString(rightType);
        }
    }
}

TEST(AreImagesEqual, TellsShapesApartWhateverTheTotal)
{
    ExpectDifferent(cv::Mat::zeros(2, 6, CV_8UC1), cv::Mat::zeros(3, 4, CV_8UC1));
    ExpectDifferent(cv::Mat::zeros(1, 6, CV_32FC1), cv::Mat::zeros(6, 1, CV_32FC1));
    ExpectDifferent(cv::Mat::zeros(3, 4, CV_8UC1), cv::Mat::zeros(3, 5, CV_8UC1));
    ExpectDifferent(cv::Mat::zeros(3, 4, CV_8UC1), cv::Mat::zeros(2, 4, CV_8UC1));
    ExpectDifferent(cv::Mat::zeros(3, 4, CV_8UC1), cv::Mat());
}

TEST(AreImagesEqual, HoldsEmptyImagesOfOneTypeAndShapeEqual)
{
    for (int const depth : kDepths)
    {
        ExpectEqual(cv::Mat(0, 0, depth), cv::Mat(0, 0, depth));
        ExpectEqual(cv::Mat(0, 5, depth), cv::Mat(0, 5, depth));
        ExpectEqual(cv::Mat(5, 0, depth), cv::Mat(5, 0, depth));
        ExpectDifferent(cv::Mat(0, 5, depth), cv::Mat(0, 4, depth));
        ExpectDifferent(cv::Mat(0, 5, depth), cv::Mat(5, 0, depth));
        ExpectDifferent(cv::Mat(5, 0, depth), cv::Mat(4, 0, depth));
    }
    ExpectEqual(cv::Mat(), cv::Mat());
    ExpectDifferent(cv::Mat(0, 0, CV_8UC1), cv::Mat(0, 0, CV_16UC1));
    ExpectDifferent(cv::Mat(0, 0, CV_8UC1), cv::Mat(0, 0, CV_8UC2));
}

template <class T>
void ExpectBytesDecide()
{
    T const nan = std::numeric_limits<T>::quiet_NaN();
    cv::Mat const zero = Row<T>({T(1), T(0), T(2)});
    cv::Mat const negativeZero = Row<T>({T(1), -T(0), T(2)});
    ExpectDifferent(zero, negativeZero);
    cv::Mat const withNaN = Row<T>({T(1), nan, T(2)});
    ExpectEqual(withNaN, CopyOf(withNaN));
    cv::Mat otherNaN = CopyOf(withNaN);
    // The lowest bit of the payload.
    otherNaN.ptr()[sizeof(T)] ^= 1U;
    ExpectDifferent(withNaN, otherNaN);
}

TEST(AreImagesEqual, ComparesBytesNotNumbers)
{
    ExpectBytesDecide<float>();
    ExpectBytesDecide<double>();
}

TEST(AreImagesEqual, DoesNotLookBetweenTheRowsOfViews)
{
    Random random(52);
    for (int const depth : kDepths)
    {
        cv::Mat const image = RandomImage(random, {13, 7}, CV_MAKETYPE(depth, 3));
        FramedImage framed(image);
        ExpectEqual(image, framed.View());
        cv::Mat wide = cv::Mat::zeros(20, 30, image.type());
        cv::Mat const view = wide(cv::Rect(5, 6, 13, 7));
        image.copyTo(view);
        ExpectEqual(view, framed.View());
        framed.View().ptr(6)[framed.View().elemSize() * 13 - 1] ^= 0x80U;
        ExpectDifferent(image, framed.View());
        ExpectDifferent(view, framed.View());
    }
}

TEST(AreImagesEqual, LooksAtTypeAndTotalAloneInMoreThanTwoDimensions)
{
    cv::Mat const zeros(std::vector<int>{2, 3, 4}, CV_8UC1, cv::Scalar(0));
    cv::Mat const ones(std::vector<int>{2, 3, 4}, CV_8UC1, cv::Scalar(1));
    // No rows, so no bytes that could differ.
    ExpectEqual(zeros, ones);
    ExpectEqual(zeros, cv::Mat(std::vector<int>{4, 3, 2}, CV_8UC1, cv::Scalar(1)));
    ExpectEqual(zeros, cv::Mat(std::vector<int>{2, 2, 3, 2}, CV_8UC1, cv::Scalar(1)));
    ExpectDifferent(zeros, cv::Mat(std::vector<int>{2, 3, 5}, CV_8UC1, cv::Scalar(0)));
    ExpectDifferent(zeros, cv::Mat(std::vector<int>{2, 3, 4}, CV_8SC1, cv::Scalar(0)));
    ExpectDifferent(zeros, cv::Mat(std::vector<int>{2, 3, 4}, CV_8UC2, cv::Scalar(0)));
    // The same bytes as an image.
    ExpectDifferent(zeros, cv::Mat::zeros(6, 4, CV_8UC1));
}

TEST(AreImagesEqual, HoldsAnImageEqualToItself)
{
    Random random(53);
    cv::Mat const image = RandomImage(random, {40, 30}, CV_32FC1);
    ExpectEqual(image, image);
}

} // namespace

} // namespace morvane::tests
