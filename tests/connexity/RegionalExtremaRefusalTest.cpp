// What LabelMaxima and LabelMinima refuse, and what they leave alone then.
#include <morvane/connexity/RegionalExtrema.h>

#include "support/AllTypes.h"
#include "support/ExtremaOracle.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <array>

namespace morvane::connexity
{

namespace
{

using tests::DirtyLabels;
using tests::Extremum;
using tests::PointsOfExtrema;

/// A matrix whose bytes are all 1, for depths that can't be filled otherwise.
cv::Mat Ones(cv::Size size, int type)
{
    cv::Mat image(size.height, size.width, type);
    tests::FillBytes(image, 1);
    return image;
}

void ExpectRefused(cv::Mat const & image, cv::Mat & labels)
{
    tests::Snapshot const before(labels);
    for (Extremum const kind : tests::kExtrema)
    {
        for (int number = -1; number <= tests::kConnexityCount; ++number)
        {
            SCOPED_TRACE(
                tests::Case(image.type(), image.size(), number) + ", labels " + cv::typeToString(labels.type()));
            EXPECT_FALSE(tests::CallLabel(kind, image, number, labels));
            ASSERT_TRUE(before.IsUntouched());
        }
    }
}

/// Expects that the call is refused and that the map is empty afterwards.
void ExpectListRefused(cv::Mat const & image)
{
    for (Extremum const kind : tests::kExtrema)
    {
        for (int number = -1; number <= tests::kConnexityCount; ++number)
        {
            PointsOfExtrema points{{1, {{2, 3}}}, {5, {}}};
            EXPECT_FALSE(tests::CallList(kind, image, number, points));
            EXPECT_TRUE(points.empty());
        }
    }
}

TEST(LabelExtremaRefusals, OtherSizes)
{
    for (cv::Size const size : {cv::Size(4, 3), cv::Size(3, 4), cv::Size(3, 2), cv::Size(2, 3), cv::Size(9, 1)})
    {
        cv::Mat labels = DirtyLabels(size, CV_32SC1);
        ExpectRefused(Ones({3, 3}, CV_8UC1), labels);
    }
    cv::Mat none;
    ExpectRefused(Ones({3, 3}, CV_8UC1), none);
    cv::Mat labels = DirtyLabels({3, 3}, CV_8UC1);
    ExpectRefused(cv::Mat(), labels);
    cv::Mat narrow(5, 0, CV_8UC1);
    ExpectRefused(cv::Mat(0, 5, CV_8UC1), narrow);
}

TEST(LabelExtremaRefusals, SeveralChannels)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : {2, 3, 4, 5})
        {
            cv::Mat const image = Ones({3, 3}, CV_MAKETYPE(depth, channels));
            cv::Mat labels = DirtyLabels({3, 3}, CV_32SC1);
            ExpectRefused(image, labels);
            ExpectListRefused(image);
        }
    }
}

TEST(LabelExtremaRefusals, Signed8BitAndHalfFloatImages)
{
    for (int const depth : tests::kRefusedDepths)
    {
        cv::Mat const image = Ones({3, 3}, depth);
        for (int const labelDepth : tests::kLabelDepths)
        {
            cv::Mat labels = DirtyLabels({3, 3}, labelDepth);
            ExpectRefused(image, labels);
        }
        ExpectListRefused(image);
        ExpectListRefused(cv::Mat(0, 0, depth));
    }
}

TEST(LabelExtremaRefusals, LabelsOfOtherDepths)
{
    for (int const depth : tests::kDepths)
    {
        for (int const labelDepth : tests::kRefusedLabelDepths)
        {
            cv::Mat labels = DirtyLabels({3, 3}, labelDepth);
            ExpectRefused(Ones({3, 3}, depth), labels);
        }
    }
}

TEST(LabelExtremaRefusals, MoreThanTwoDimensions)
{
    std::array const sides{2, 3, 4};
    cv::Mat const volume(3, sides.data(), CV_8UC1, cv::Scalar(1));
    cv::Mat labelVolume(3, sides.data(), CV_32SC1, cv::Scalar(7));
    EXPECT_FALSE(LabelMaxima(volume, eConnexity8, labelVolume));
    EXPECT_FALSE(LabelMinima(volume, eConnexity8, labelVolume));
    EXPECT_EQ(labelVolume.at<int>(1, 2, 3), 7);
    EXPECT_EQ(labelVolume.dims, 3);
    ExpectListRefused(volume);
}

TEST(LabelExtremaRefusals, LeaveViewsAlone)
{
    cv::Mat parent = DirtyLabels({9, 9}, CV_32SC1);
    cv::Mat const before = parent.clone();
    cv::Mat view = parent(cv::Rect(2, 2, 4, 3));
    ExpectRefused(Ones({4, 3}, CV_8SC1), view);
    ExpectRefused(Ones({3, 4}, CV_8UC1), view);
    tests::ExpectEqualImages(parent, before);
}

TEST(LabelExtremaRefusals, EmptyImagesAreNoneOfThem)
{
    for (cv::Size const size : {cv::Size(0, 0), cv::Size(0, 5), cv::Size(5, 0)})
    {
        for (int const depth : tests::kDepths)
        {
            cv::Mat const image(size.height, size.width, depth);
            for (int number = -1; number <= tests::kConnexityCount; ++number)
            {
                for (Extremum const kind : tests::kExtrema)
                {
                    for (int const labelDepth : tests::kLabelDepths)
                    {
                        cv::Mat labels(size.height, size.width, labelDepth);
                        EXPECT_TRUE(tests::CallLabel(kind, image, number, labels));
                        EXPECT_EQ(labels.size(), size);
                    }
                    PointsOfExtrema points{{4, {{1, 1}}}};
                    EXPECT_TRUE(tests::CallList(kind, image, number, points));
                    EXPECT_TRUE(points.empty());
                }
            }
        }
    }
}

} // namespace

} // namespace morvane::connexity
