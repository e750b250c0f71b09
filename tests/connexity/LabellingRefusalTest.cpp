// What Label refuses, and that it leaves the label image alone then.
#include <morvane/connexity/Labelling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"

#include <gtest/gtest.h>

#include <array>

namespace morvane::connexity
{

namespace
{

/// A matrix whose bytes are all 1, for depths that can't be filled otherwise.
cv::Mat Ones(cv::Size size, int type)
{
    cv::Mat image(size.height, size.width, type);
    tests::FillBytes(image, 1);
    return image;
}

void ExpectRefused(cv::Mat const & image, cv::Mat & labels)
{
    cv::Mat const header = labels;
    cv::Mat before(labels.rows, labels.cols, labels.type()); // a clone of 0 x 5 would be 0 x 0
    if (!labels.empty()) labels.copyTo(before);
    for (int number = -1; number <= tests::kConnexityCount; ++number)
    {
        SCOPED_TRACE(tests::Case(image.type(), image.size(), number) + ", labels " + cv::typeToString(labels.type()));
        EXPECT_FALSE(Label(image, tests::Shape(number), labels));
        ASSERT_EQ(labels.data, header.data) << "the label image was reallocated";
        ASSERT_EQ(labels.rows, header.rows);
        ASSERT_EQ(labels.cols, header.cols);
        ASSERT_EQ(labels.type(), header.type());
        ASSERT_TRUE(tests::EqualImages(labels, before));
    }
}

TEST(LabelRefusals, OtherSizes)
{
    cv::Size const size(4, 3);
    for (cv::Size const other :
         {cv::Size(3, 4), cv::Size(4, 4), cv::Size(4, 2), cv::Size(5, 3), cv::Size(3, 3), cv::Size(12, 1),
          cv::Size(0, 0), cv::Size(4, 0), cv::Size(0, 3)})
    {
        cv::Mat labels = tests::DirtyLabels(other, CV_32SC1);
        ExpectRefused(Ones(size, CV_8UC1), labels);
        cv::Mat reversed = tests::DirtyLabels(size, CV_32SC1);
        ExpectRefused(Ones(other, CV_8UC1), reversed);
    }
}

TEST(LabelRefusals, EmptyImagesOfOtherSizes)
{
    cv::Mat labels(5, 0, CV_32SC1);
    ExpectRefused(cv::Mat(0, 5, CV_8UC1), labels);
    ExpectRefused(cv::Mat(0, 0, CV_8UC1), labels);
    ExpectRefused(cv::Mat(), labels);
}

TEST(LabelRefusals, RefusedImageDepths)
{
    for (int const depth : tests::kRefusedDepths)
    {
        for (int const channels : {1, 2, 3, 4, 5})
        {
            for (int const labelDepth : tests::kLabelDepths)
            {
                cv::Mat labels = tests::DirtyLabels({4, 3}, labelDepth);
                ExpectRefused(Ones({4, 3}, CV_MAKETYPE(depth, channels)), labels);
            }
        }
    }
}

TEST(LabelRefusals, RefusedLabelDepths)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            for (int const labelDepth : tests::kRefusedLabelDepths)
            {
                cv::Mat labels = tests::DirtyLabels({4, 3}, labelDepth);
                ExpectRefused(Ones({4, 3}, CV_MAKETYPE(depth, channels)), labels);
            }
        }
    }
}

TEST(LabelRefusals, MoreThanFourChannels)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : {5, 6, 8, 9, 16, 260, CV_CN_MAX})
        {
            for (int const labelDepth : tests::kLabelDepths)
            {
                cv::Mat labels = tests::DirtyLabels({4, 3}, labelDepth);
                ExpectRefused(Ones({4, 3}, CV_MAKETYPE(depth, channels)), labels);
            }
        }
    }
}

TEST(LabelRefusals, EmptyImagesOfRefusedTypes)
{
    // The checks look at the headers, so an image without pixels is no excuse.
    cv::Mat labels(0, 5, CV_32SC1);
    ExpectRefused(cv::Mat(0, 5, CV_8SC1), labels);
    ExpectRefused(cv::Mat(0, 5, CV_16FC1), labels);
    ExpectRefused(cv::Mat(0, 5, CV_8UC(5)), labels);
    cv::Mat floats(0, 5, CV_32FC1);
    ExpectRefused(cv::Mat(0, 5, CV_8UC1), floats);
}

TEST(LabelRefusals, SeveralReasonsAtOnce)
{
    cv::Mat labels = tests::DirtyLabels({3, 3}, CV_64FC1);
    ExpectRefused(Ones({4, 3}, CV_8SC(7)), labels);
}

TEST(LabelRefusals, LeavesViewsAndLabelsOfSeveralChannelsAlone)
{
    cv::Mat parent = tests::DirtyLabels({9, 9}, CV_32SC3);
    cv::Mat const before = parent.clone();
    cv::Mat view = parent(cv::Rect(2, 2, 4, 3));
    ExpectRefused(Ones({4, 3}, CV_8SC1), view);
    ExpectRefused(Ones({3, 4}, CV_8UC1), view);
    tests::ExpectEqualImages(parent, before);
}

TEST(LabelRefusals, MoreThanTwoDimensions)
{
    std::array const sides{2, 3, 4};
    cv::Mat const volume(3, sides.data(), CV_8UC1, cv::Scalar(1));
    cv::Mat labelVolume(3, sides.data(), CV_32SC1, cv::Scalar(7));
    EXPECT_FALSE(Label(volume, eConnexity8, labelVolume));
    EXPECT_EQ(labelVolume.at<int>(1, 2, 3), 7);
    EXPECT_EQ(labelVolume.dims, 3);
    cv::Mat labels = tests::DirtyLabels({3, 2}, CV_32SC1);
    EXPECT_FALSE(Label(volume, eConnexity8, labels));
    EXPECT_FALSE(Label(Ones({3, 2}, CV_8UC1), eConnexity8, labelVolume));
}

} // namespace

} // namespace morvane::connexity
