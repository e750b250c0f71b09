// What the fills from neighbours refuse, with the output as it was.
#include <morvane/algorithm/Filling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cstdlib>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::Snapshot;

/// An image whose bytes are all 3, with a first pixel of 0.
cv::Mat Threes(cv::Size size, int type)
{
    cv::Mat image(size, type);
    tests::FillBytes(image, 3);
    image.row(0).col(0).setTo(0);
    return image;
}

void ExpectNoMean(cv::Mat const & image, cv::Mat const & mask, cv::Mat & out)
{
    SCOPED_TRACE(
        cv::typeToString(image.type()) + " under " + cv::typeToString(mask.type()) + " to " +
        cv::typeToString(out.type()));
    Snapshot const before(out);
    EXPECT_FALSE(FillImageWithMean(image, mask, out, connexity::eConnexity8));
    EXPECT_TRUE(before.IsUntouched());
}

void ExpectNoMedian(cv::Mat const & image, cv::Mat & out, connexity::eConnexityType connexity = connexity::eConnexity8)
{
    SCOPED_TRACE(cv::typeToString(image.type()) + " to " + cv::typeToString(out.type()));
    Snapshot const before(out);
    EXPECT_FALSE(FillImageWithMedian(image, out, connexity));
    EXPECT_FALSE(FillImageWithMedianNoZero(image, out, connexity));
    EXPECT_TRUE(before.IsUntouched());
}

cv::Size const kSize(4, 3);

TEST(NeighbourFillsRefusal, DepthsThatTheLibraryDoesNotKnow)
{
    for (int const depth : tests::kRefusedDepths)
    {
        cv::Mat const image = Threes(kSize, depth);
        cv::Mat out = Threes(kSize, depth);
        ExpectNoMean(image, image, out);
        ExpectNoMedian(image, out);
        cv::Mat const none(0, 0, depth);
        cv::Mat noneOut(0, 0, depth);
        ExpectNoMean(none, none, noneOut);
        ExpectNoMedian(none, noneOut);
    }
}

TEST(NeighbourFillsRefusal, DepthsThatDiffer)
{
    std::vector<int> depths(tests::kDepths.begin(), tests::kDepths.end());
    depths.insert(depths.end(), tests::kRefusedDepths.begin(), tests::kRefusedDepths.end());
    for (int const depth : depths)
    {
        for (int const other : depths)
        {
            if (depth == other) continue;
            cv::Mat const image = Threes(kSize, depth);
            cv::Mat const otherImage = Threes(kSize, other);
            cv::Mat out = Threes(kSize, depth);
            cv::Mat otherOut = Threes(kSize, other);
            ExpectNoMean(image, otherImage, out);
            ExpectNoMean(otherImage, image, out);
            ExpectNoMean(image, image, otherOut);
            ExpectNoMedian(image, otherOut);
        }
    }
}

TEST(NeighbourFillsRefusal, SizesThatDiffer)
{
    for (int const depth : tests::kDepths)
    {
        cv::Mat const image = Threes(kSize, depth);
        cv::Mat out = Threes(kSize, depth);
        for (cv::Size const size : {cv::Size(5, 3), cv::Size(4, 2), cv::Size(3, 4), cv::Size(12, 1), cv::Size(0, 0)})
        {
            cv::Mat const other = size.empty() ? cv::Mat(0, 0, depth) : Threes(size, depth);
            cv::Mat otherOut = other.clone();
            ExpectNoMean(image, other, out);
            ExpectNoMean(other, image, out);
            ExpectNoMean(image, image, otherOut);
            ExpectNoMedian(image, otherOut);
            ExpectNoMedian(other, out);
        }
    }
}

TEST(NeighbourFillsRefusal, SeveralChannelsInTheImage)
{
    for (int const depth : tests::kDepths)
    {
        for (int const channels : {2, 3, 4, 5})
        {
            cv::Mat const image = Threes(kSize, CV_MAKETYPE(depth, channels));
            cv::Mat const mask = Threes(kSize, depth);
            cv::Mat out = Threes(kSize, depth);
            ExpectNoMean(image, mask, out);
            ExpectNoMedian(image, out);
            cv::Mat wideOut = image.clone();
            ExpectNoMean(image, image, wideOut);
            ExpectNoMedian(image, wideOut);
        }
    }
}

TEST(NeighbourFillsRefusal, OutputsThatAreNotMade)
{
    for (int const depth : tests::kDepths)
    {
        cv::Mat const image = Threes(kSize, depth);
        cv::Mat none;
        ExpectNoMean(image, image, none);
        ExpectNoMedian(image, none);
        EXPECT_TRUE(none.empty());
    }
}

TEST(NeighbourFillsRefusal, MatricesOfThreeDimensions)
{
    for (int const depth : tests::kDepths)
    {
        cv::Mat const solid(std::vector<int>{2, 3, 4}, depth, cv::Scalar(0));
        cv::Mat solidOut(std::vector<int>{2, 3, 4}, depth, cv::Scalar(5));
        EXPECT_FALSE(FillImageWithMean(solid, solid, solidOut, connexity::eConnexity8));
        EXPECT_FALSE(FillImageWithMedian(solid, solidOut, connexity::eConnexity8));
        EXPECT_FALSE(FillImageWithMedianNoZero(solid, solidOut, connexity::eConnexity8));
        EXPECT_EQ(cv::norm(solidOut, cv::Mat(solidOut.dims, solidOut.size.p, depth, cv::Scalar(5)), cv::NORM_INF), 0.0);
    }
}

TEST(NeighbourFillsRefusal, ShapesOutsideTheTable)
{
    for (int const shape : tests::kStrangeConnexities)
    {
        SCOPED_TRACE(shape);
        for (int const depth : tests::kDepths)
        {
            // Whether there is a hole or not, or no pixel at all.
            for (cv::Mat const & image :
                 {Threes(kSize, depth), cv::Mat(kSize, depth, cv::Scalar(7)), cv::Mat(0, 0, depth)})
            {
                cv::Mat out = image.empty() ? cv::Mat(0, 0, depth) : Threes(kSize, depth);
                ExpectNoMedian(image, out, tests::Shape(shape));
            }
        }
    }
}

/// A row of zeros with a 9 at the start of the view, in which the output lies @p shift columns beside the image.
cv::Mat RowAround(int shift, cv::Mat & image, cv::Mat & out)
{
    cv::Mat parent = cv::Mat::zeros(1, 400, CV_8UC1);
    image = parent.colRange(100, 170);
    out = parent.colRange(100 + shift, 170 + shift);
    image.at<uchar>(0) = 9;
    return parent;
}

void ExpectNothingAround(cv::Mat const & parent, int shift)
{
    EXPECT_EQ(cv::countNonZero(parent.colRange(0, 100 - std::abs(shift))), 0);
    EXPECT_EQ(cv::countNonZero(parent.colRange(170 + std::abs(shift), 400)), 0);
}

TEST(NeighbourFillsRefusal, ArgumentsThatOverlap_AreNotRefused_ButNothingBeyondThemChanges)
{
    for (int const shift : {-65, -2, -1, 1, 2, 5, 63, 64, 65})
    {
        SCOPED_TRACE(shift);
        cv::Mat image;
        cv::Mat out;
        cv::Mat parent = RowAround(shift, image, out);
        EXPECT_TRUE(FillImageWithMedian(image, out, connexity::eConnexity4));
        ExpectNothingAround(parent, shift);
        parent = RowAround(shift, image, out);
        EXPECT_TRUE(FillImageWithMedianNoZero(image, out, connexity::eConnexity4));
        ExpectNothingAround(parent, shift);
        parent = RowAround(shift, image, out);
        EXPECT_TRUE(
            FillImageWithMean(cv::Mat(image.size(), CV_8UC1, cv::Scalar(7)), image, out, connexity::eConnexity4));
        ExpectNothingAround(parent, shift);
    }
}

} // namespace

} // namespace morvane::algorithm
