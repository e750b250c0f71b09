#include <morvane/filters/AlternatingSequentialFilters.h>

#include "support/GeodesicOracle.h"
#include "support/ImageLiterals.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <array>
#include <limits>

namespace morvane::filters
{

namespace
{

using tests::Draw;
using tests::EqualImages;
using tests::ExpectDrawn;
using tests::Snapshot;

struct Operator
{
    char const * name;
    bool (*filter)(cv::Mat const & src, cv::Mat & dst, int maxSize, int shape);
};

constexpr Operator kClose{"close", ASF_Close};
constexpr Operator kOpen{"open", ASF_Open};
constexpr std::array kOperators{kClose, kOpen};

cv::Mat Filtered(Operator const & op, cv::Mat const & image, int maxSize, int shape = cv::MORPH_RECT)
{
    cv::Mat dst;
    EXPECT_TRUE(op.filter(image, dst, maxSize, shape)) << op.name;
    return dst;
}

TEST(AlternatingSequentialFilters, Close_FillsADarkSpotThatTheElementCovers)
{
    cv::Mat const image = Draw<uchar>(
        {"9999999", //
         "9999999", //
         "9944499", //
         "9944499", //
         "9944499", //
         "9999999", //
         "9999999"});
    EXPECT_TRUE(EqualImages(Filtered(kClose, image, 3), image));
    EXPECT_TRUE(EqualImages(Filtered(kClose, image, 4), image));
    EXPECT_TRUE(EqualImages(Filtered(kClose, image, 5), cv::Mat(7, 7, CV_8UC1, cv::Scalar(9))));
    EXPECT_TRUE(EqualImages(Filtered(kClose, image, 6), cv::Mat(7, 7, CV_8UC1, cv::Scalar(9))));
}

TEST(AlternatingSequentialFilters, Open_RemovesABrightSpotThatTheElementCovers)
{
    cv::Mat const image = Draw<ushort>(
        {".......", //
         ".......", //
         "..444..", //
         "..444..", //
         "..444..", //
         ".......", //
         "......."});
    EXPECT_TRUE(EqualImages(Filtered(kOpen, image, 4), image));
    EXPECT_TRUE(EqualImages(Filtered(kOpen, image, 5), cv::Mat(7, 7, CV_16UC1, cv::Scalar(0))));
}

TEST(AlternatingSequentialFilters, DifferInWhatComesFirst)
{
    cv::Mat const stripes = Draw<uchar>(
        {"9.9.9.9", //
         "9.9.9.9", //
         "9.9.9.9"});
    ExpectDrawn(Filtered(kClose, stripes, 3), {"9999999", "9999999", "9999999"});
    ExpectDrawn(Filtered(kOpen, stripes, 3), {".......", ".......", "......."});
}

TEST(AlternatingSequentialFilters, GrowTheElementStepByStep)
{
    // A closing by five alone would join the bright spots, and an opening could not remove them any more.
    cv::Mat const image = cv::repeat(Draw<uchar>({"..........99...99...99.........."}), 5, 1);
    EXPECT_EQ(cv::countNonZero(Filtered(kClose, image, 3)), 0);
    EXPECT_EQ(cv::countNonZero(Filtered(kClose, image, 5)), 0);
    cv::Mat const inverted = 9 - image;
    EXPECT_TRUE(EqualImages(Filtered(kOpen, inverted, 5), cv::Mat(image.size(), CV_8UC1, cv::Scalar(9))));
}

TEST(AlternatingSequentialFilters, HaveTheShapeThatIsAsked)
{
    cv::Mat const plus = Draw<short>(
        {"99999", //
         "99499", //
         "94449", //
         "99499", //
         "99999"});
    EXPECT_TRUE(EqualImages(Filtered(kClose, plus, 3, cv::MORPH_CROSS), plus));
    EXPECT_TRUE(EqualImages(Filtered(kClose, plus, 3, cv::MORPH_ELLIPSE), plus));
    EXPECT_TRUE(EqualImages(Filtered(kClose, plus, 3, cv::MORPH_RECT), cv::Mat(5, 5, CV_16SC1, cv::Scalar(9))));
}

TEST(AlternatingSequentialFilters, DoNotFillFromTheBorder)
{
    // A spot in the corner is as good as one that goes on outside.
    cv::Mat const dark = Draw<uchar>(
        {"1199", //
         "1199", //
         "9999", //
         "9999"});
    EXPECT_TRUE(EqualImages(Filtered(kClose, dark, 3), dark));
    cv::Mat const bright = Draw<uchar>(
        {"9911", //
         "9911", //
         "1111", //
         "1111"});
    EXPECT_TRUE(EqualImages(Filtered(kOpen, bright, 3), bright));
}

TEST(AlternatingSequentialFilters, BelowThree_Copy)
{
    for (int const depth : {CV_8U, CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F, CV_16F})
    {
        for (int const channels : {1, 3, 5})
        {
            cv::Mat image(2, 3, CV_MAKETYPE(depth, channels));
            tests::FillBytes(image, 0x31);
            for (Operator const & op : kOperators)
            {
                for (int const maxSize : {2, 1, 0, -1, -1000, std::numeric_limits<int>::min()})
                {
                    cv::Mat const dst = Filtered(op, image, maxSize, 7);
                    EXPECT_TRUE(EqualImages(dst, image));
                    EXPECT_NE(dst.data, image.data) << "not a copy";
                }
            }
        }
    }
    EXPECT_TRUE(Filtered(kClose, cv::Mat(), 0).empty());
}

TEST(AlternatingSequentialFilters, RefuseImagesSmallerThanTheElement)
{
    for (Operator const & op : kOperators)
    {
        for (cv::Size const size : {cv::Size(4, 9), cv::Size(9, 4), cv::Size(4, 4), cv::Size(0, 0)})
        {
            for (int const type : {CV_8UC1, CV_32SC1, CV_8SC1, CV_32FC3})
            {
                cv::Mat image(size, type);
                tests::FillBytes(image, 1);
                cv::Mat dst(3, 3, CV_8UC1, cv::Scalar(77));
                Snapshot const before(dst);
                for (int const maxSize : {5, 6, std::numeric_limits<int>::max()})
                {
                    EXPECT_FALSE(op.filter(image, dst, maxSize, 0));
                    EXPECT_FALSE(op.filter(image, dst, maxSize, 7));
                }
                EXPECT_TRUE(before.IsUntouched());
                cv::Mat none;
                EXPECT_FALSE(op.filter(image, none, 5, 0));
                EXPECT_TRUE(none.empty());
            }
        }
        // Also where nothing would happen.
        cv::Mat dst(3, 3, CV_8UC1, cv::Scalar(77));
        Snapshot const before(dst);
        EXPECT_FALSE(op.filter(cv::Mat(1, 5, CV_8UC1, cv::Scalar(1)), dst, 2, 0));
        EXPECT_FALSE(op.filter(cv::Mat(), dst, 1, 0));
        EXPECT_TRUE(before.IsUntouched());
        EXPECT_TRUE(op.filter(cv::Mat(5, 5, CV_8UC1, cv::Scalar(1)), dst, 5, 0));
    }
}

TEST(AlternatingSequentialFilters, RefuseMoreThanTwoDimensions)
{
    std::array const sides{4, 4, 4};
    cv::Mat const volume(3, sides.data(), CV_8UC1, cv::Scalar(1));
    for (Operator const & op : kOperators)
    {
        for (int const maxSize : {-5, 2, 3})
        {
            cv::Mat dst(3, 3, CV_8UC1, cv::Scalar(77));
            Snapshot const before(dst);
            EXPECT_FALSE(op.filter(volume, dst, maxSize, 0));
            EXPECT_TRUE(before.IsUntouched());
        }
    }
}

TEST(AlternatingSequentialFilters, PassTheExceptionsOfMorphology)
{
    for (Operator const & op : kOperators)
    {
        for (int const depth : tests::kUndilatedDepths)
        {
            cv::Mat image(5, 5, depth);
            tests::FillBytes(image, 1);
            cv::Mat dst;
            EXPECT_THROW(static_cast<void>(op.filter(image, dst, 3, 0)), cv::Exception);
        }
        for (int const shape : tests::kStrangeElementShapes)
        {
            cv::Mat dst;
            EXPECT_THROW(static_cast<void>(op.filter(cv::Mat1b::zeros(5, 5), dst, 3, shape)), cv::Exception);
        }
    }
}

TEST(AlternatingSequentialFilters, WriteInPlaceWhereTheOutputFits)
{
    cv::Mat const image = Draw<uchar>(
        {"111111", //
         "111111", //
         "119111", //
         "111111", //
         "111111"});
    for (Operator const & op : kOperators)
    {
        cv::Mat dst(5, 6, CV_8UC1, cv::Scalar(77));
        uchar const * const data = dst.data;
        ASSERT_TRUE(op.filter(image, dst, 3, 0));
        EXPECT_EQ(dst.data, data);
        EXPECT_TRUE(EqualImages(dst, cv::Mat(5, 6, CV_8UC1, cv::Scalar(1))));
        for (cv::Mat other : {cv::Mat(6, 5, CV_8UC1), cv::Mat(5, 6, CV_16SC1), cv::Mat(9, 9, CV_8UC3)})
        {
            ASSERT_TRUE(op.filter(image, other, 3, 0));
            EXPECT_TRUE(EqualImages(other, dst));
        }
    }
}

TEST(AlternatingSequentialFilters, DoNotSeeTheParentOfAView)
{
    for (int const around : {0, 255})
    {
        for (int const shape : tests::kElementShapes)
        {
            for (Operator const & op : kOperators)
            {
                cv::Mat parent(15, 15, CV_8UC1, cv::Scalar(around));
                cv::Rect const place(4, 4, 7, 7);
                parent(place).setTo(100);
                cv::Mat const view = parent(place);
                cv::Mat const expected(7, 7, CV_8UC1, cv::Scalar(100));
                EXPECT_TRUE(EqualImages(Filtered(op, view, 7, shape), expected)) << op.name;
                // As the output.
                cv::Mat frame(15, 15, CV_8UC1, cv::Scalar(around));
                cv::Mat dst = frame(place);
                ASSERT_TRUE(op.filter(expected, dst, 7, shape));
                EXPECT_TRUE(EqualImages(frame(place), expected)) << op.name;
                EXPECT_EQ(cv::countNonZero(frame == around), 15 * 15 - 7 * 7);
            }
        }
    }
}

} // namespace

} // namespace morvane::filters
