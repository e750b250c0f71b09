// What UltimateAttributeOpening refuses, and that its outputs are left alone then.
#include <morvane/connexity/UltimateAttributeOpening.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/MaxTreeOracle.h"
#include "support/Snapshot.h"
#include "support/UltimateOracle.h"

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
using tests::UltimateForm;

constexpr std::array kAllDepths{CV_8U, CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F, CV_16F};
std::array const kForms{UltimateForm{}, UltimateForm{{}, 5}, UltimateForm{1, 5}};
cv::Size const kSize(5, 4);
std::array const kOtherSizes{cv::Size(4, 4), cv::Size(5, 5), cv::Size(4, 5), cv::Size(10, 2), cv::Size(5, 0)};

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

/// Expects false of every form, and that headers and bytes of the outputs stay.
void ExpectRefusal(
    cv::Mat const & image, cv::Mat residues, cv::Mat attributes, eAttributeType attribute = common::eAttributeArea)
{
    SCOPED_TRACE(
        "image " + tests::TreeCase(image, 0) + ", residues " + tests::TreeCase(residues, 0) + ", attributes " +
        tests::TreeCase(attributes, 0));
    cv::Mat const residuesHeader = residues;
    cv::Mat const attributesHeader = attributes;
    tests::Snapshot const residuesBefore(residues);
    tests::Snapshot const attributesBefore(attributes);
    for (UltimateForm const & form : kForms)
    {
        EXPECT_FALSE(CallUltimate(form, image, attribute, eConnexity8, residues, attributes)) << Describe(form);
    }
    EXPECT_EQ(residues.type(), residuesHeader.type());
    EXPECT_EQ(attributes.type(), attributesHeader.type());
    EXPECT_EQ(residues.size(), residuesHeader.size());
    EXPECT_EQ(attributes.size(), attributesHeader.size());
    EXPECT_TRUE(residuesBefore.IsUntouched());
    EXPECT_TRUE(attributesBefore.IsUntouched());
}

TEST(UltimateAttributeOpeningRefusal, ImagesAndResiduesOfOtherTypes_AreRefused)
{
    for (int const imageDepth : kAllDepths)
    {
        for (int const residueDepth : kAllDepths)
        {
            for (int const imageChannels : {1, 2, 5})
            {
                for (int const residueChannels : {1, 2, 5})
                {
                    cv::Mat const image = Constant(kSize, CV_MAKETYPE(imageDepth, imageChannels));
                    cv::Mat const residues = DirtyLabels(kSize, CV_MAKETYPE(residueDepth, residueChannels));
                    if (image.type() == residues.type() && imageChannels == 1 && HasTree(imageDepth)) continue;
                    ExpectRefusal(image, residues, DirtyLabels(kSize, CV_32SC1));
                }
            }
        }
    }
}

TEST(UltimateAttributeOpeningRefusal, AttributesOfOtherDepths_AreRefused)
{
    for (int const imageDepth : tests::kTreeDepths)
    {
        for (int const depth : tests::kRefusedLabelDepths)
        {
            for (int const channels : {1, 3})
            {
                int const type = CV_MAKETYPE(imageDepth, 1);
                ExpectRefusal(
                    Constant(kSize, type), DirtyLabels(kSize, type), DirtyLabels(kSize, CV_MAKETYPE(depth, channels)));
            }
        }
    }
}

TEST(UltimateAttributeOpeningRefusal, OtherSizes_AreRefused)
{
    for (int const depth : tests::kTreeDepths)
    {
        int const type = CV_MAKETYPE(depth, 1);
        for (cv::Size const size : kOtherSizes)
        {
            ExpectRefusal(Constant(kSize, type), DirtyLabels(size, type), DirtyLabels(kSize, CV_32SC1));
            ExpectRefusal(Constant(kSize, type), DirtyLabels(kSize, type), DirtyLabels(size, CV_32SC1));
            ExpectRefusal(Constant(size, type), DirtyLabels(kSize, type), DirtyLabels(kSize, CV_32SC1));
        }
        ExpectRefusal(Constant(kSize, type), cv::Mat(), DirtyLabels(kSize, CV_32SC1));
        ExpectRefusal(Constant(kSize, type), DirtyLabels(kSize, type), cv::Mat());
    }
}

TEST(UltimateAttributeOpeningRefusal, ImagesWithoutPixels_AreRefused)
{
    for (cv::Size const size : {cv::Size(5, 0), cv::Size(0, 5), cv::Size(0, 0)})
    {
        for (int const depth : tests::kTreeDepths)
        {
            cv::Mat const image(size.height, size.width, CV_MAKETYPE(depth, 1));
            ExpectRefusal(
                image, cv::Mat(size.height, size.width, image.type()), cv::Mat(size.height, size.width, CV_8UC1));
        }
    }
    ExpectRefusal(cv::Mat(), cv::Mat(), cv::Mat());
}

TEST(UltimateAttributeOpeningRefusal, NumbersThatAreNoAttribute_AreRefused)
{
    for (int const number :
         {-1, 6, 7, 256, 260, -252, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
    {
        for (int const depth : tests::kTreeDepths)
        {
            int const type = CV_MAKETYPE(depth, 1);
            ExpectRefusal(
                Constant(kSize, type), DirtyLabels(kSize, type), DirtyLabels(kSize, CV_16UC1),
                static_cast<eAttributeType>(number));
        }
    }
}

TEST(UltimateAttributeOpeningRefusal, MatricesOfThreeDimensions_AreRefused)
{
    std::array<int, 3> const sizes{3, 4, 5};
    cv::Mat const cube(3, sizes.data(), CV_8UC1, cv::Scalar(1));
    cv::Mat const image = Constant(kSize, CV_8UC1);
    for (UltimateForm const & form : kForms)
    {
        cv::Mat residues = cube.clone();
        cv::Mat attributes = cube.clone();
        cv::Mat flat = DirtyLabels(kSize, CV_8UC1);
        EXPECT_FALSE(CallUltimate(form, cube, common::eAttributeArea, eConnexity8, residues, attributes));
        EXPECT_FALSE(CallUltimate(form, image, common::eAttributeArea, eConnexity8, residues, flat));
        EXPECT_FALSE(CallUltimate(form, image, common::eAttributeArea, eConnexity8, flat, attributes));
        EXPECT_EQ(cv::norm(cube, residues, cv::NORM_INF), 0.0);
        EXPECT_EQ(cv::norm(cube, attributes, cv::NORM_INF), 0.0);
        EXPECT_TRUE(tests::EqualImages(flat, DirtyLabels(kSize, CV_8UC1)));
    }
}

} // namespace

} // namespace morvane::connexity
