// What AttributeOpening refuses, and that the output is left alone then.
#include <morvane/connexity/AttributeOpening.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/MaxTreeOracle.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>

namespace morvane::connexity
{

namespace
{

using common::eAttributeType;
using tests::DirtyLabels;

constexpr std::array kAllDepths{CV_8U, CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F, CV_16F};
cv::Size const kSize(5, 4);

cv::Mat Constant(cv::Size size, int type)
{
    cv::Mat image(size.height, size.width, type);
    tests::FillBytes(image, 0x40);
    return image;
}

bool HasTree(int depth)
{
    return std::find(tests::kTreeDepths.begin(), tests::kTreeDepths.end(), depth) != tests::kTreeDepths.end();
}

/// Expects false, and that the header and the bytes of the output stay.
void ExpectRefusal(cv::Mat const & image, eAttributeType attribute, cv::Mat out)
{
    SCOPED_TRACE("image " + tests::TreeCase(image, 0) + ", out " + tests::TreeCase(out, 0));
    cv::Mat const header = out;
    tests::Snapshot const before(out);
    EXPECT_FALSE(AttributeOpening(image, attribute, eConnexity8, 3, out));
    EXPECT_EQ(out.type(), header.type());
    EXPECT_EQ(out.dims, header.dims);
    EXPECT_EQ(out.rows, header.rows);
    EXPECT_EQ(out.cols, header.cols);
    EXPECT_TRUE(before.IsUntouched());
}

TEST(AttributeOpeningRefusal, OtherTypes_AreRefused)
{
    for (int const imageDepth : kAllDepths)
    {
        for (int const outDepth : kAllDepths)
        {
            for (int const imageChannels : {1, 2, 5})
            {
                for (int const outChannels : {1, 2, 5})
                {
                    cv::Mat const image = Constant(kSize, CV_MAKETYPE(imageDepth, imageChannels));
                    cv::Mat const out = DirtyLabels(kSize, CV_MAKETYPE(outDepth, outChannels));
                    if (image.type() == out.type() && imageChannels == 1 && HasTree(imageDepth)) continue;
                    ExpectRefusal(image, common::eAttributeArea, out);
                }
            }
        }
    }
}

TEST(AttributeOpeningRefusal, OtherSizes_AreRefused)
{
    for (int const depth : tests::kTreeDepths)
    {
        int const type = CV_MAKETYPE(depth, 1);
        for (cv::Size const size : {cv::Size(4, 4), cv::Size(5, 5), cv::Size(4, 5), cv::Size(10, 2), cv::Size(5, 0)})
        {
            ExpectRefusal(Constant(kSize, type), common::eAttributeArea, DirtyLabels(size, type));
            ExpectRefusal(Constant(size, type), common::eAttributeArea, DirtyLabels(kSize, type));
        }
        ExpectRefusal(Constant(kSize, type), common::eAttributeArea, cv::Mat());
    }
}

TEST(AttributeOpeningRefusal, ImagesWithoutPixels_AreRefused)
{
    for (int const depth : tests::kTreeDepths)
    {
        int const type = CV_MAKETYPE(depth, 1);
        ExpectRefusal(cv::Mat(0, 5, type), common::eAttributeArea, cv::Mat(0, 5, type));
        ExpectRefusal(cv::Mat(5, 0, type), common::eAttributeArea, cv::Mat(5, 0, type));
        ExpectRefusal(cv::Mat(0, 0, type), common::eAttributeArea, cv::Mat(0, 0, type));
    }
    ExpectRefusal(cv::Mat(), common::eAttributeArea, cv::Mat());
}

TEST(AttributeOpeningRefusal, NumbersThatAreNoAttribute_AreRefused)
{
    for (int const number :
         {-1, 6, 7, 256, 260, -252, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
    {
        for (int const depth : tests::kTreeDepths)
        {
            int const type = CV_MAKETYPE(depth, 1);
            ExpectRefusal(Constant(kSize, type), static_cast<eAttributeType>(number), DirtyLabels(kSize, type));
        }
    }
}

TEST(AttributeOpeningRefusal, MatricesOfThreeDimensions_AreRefused)
{
    std::array<int, 3> const sizes{3, 4, 5};
    cv::Mat const cube(3, sizes.data(), CV_8UC1, cv::Scalar(1));
    cv::Mat const image = Constant(kSize, CV_8UC1);
    cv::Mat out = cube.clone();
    EXPECT_FALSE(AttributeOpening(cube, common::eAttributeArea, eConnexity8, 3, out));
    EXPECT_FALSE(AttributeOpening(image, common::eAttributeArea, eConnexity8, 3, out));
    EXPECT_EQ(cv::norm(cube, out, cv::NORM_INF), 0.0);
    ExpectRefusal(cube, common::eAttributeArea, DirtyLabels(kSize, CV_8UC1));
}

} // namespace

} // namespace morvane::connexity
