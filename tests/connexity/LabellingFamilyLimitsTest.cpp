// The labelling operators beside Label at the limits of the label types, and on images without pixels.
#include <morvane/connexity/Labelling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Labels.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::DirtyLabels;
using tests::EqualImages;
using tests::Shape;

/// An operator of the family, with a second image of the same channels, without edges, where it takes one.
struct Labelling
{
    std::string name;
    std::function<bool(cv::Mat const & image, eConnexityType connexity, cv::Mat & labels)> call;
    bool takesSeveralChannels;
};

std::vector<Labelling> AllLabellings()
{
    auto const ofOne = tests::OperatorsOfOne();
    auto const ofTwo = tests::OperatorsOfTwo();
    std::vector<Labelling> all;
    all.reserve(ofOne.size() + ofTwo.size());
    for (auto const & one : ofOne)
    {
        all.push_back({one.name, one.call, true});
    }
    for (auto const & two : ofTwo)
    {
        auto const call = [two](cv::Mat const & image, eConnexityType connexity, cv::Mat & labels) {
            cv::Mat const even(image.rows, image.cols, CV_MAKETYPE(CV_16S, image.channels()), cv::Scalar::all(4));
            return two.call(image, even, connexity, labels);
        };
        all.push_back({two.name, call, two.takesSeveralChannels});
    }
    return all;
}

cv::Mat Labelled(Labelling const & labelling, cv::Mat const & image, int number, int type)
{
    return tests::Written(
        image.size(), type, [&](cv::Mat & labels) { return labelling.call(image, Shape(number), labels); });
}

TEST(LabellingFamilyLimits, ThreeHundredZonesInEightBits_WrapThroughZero)
{
    for (auto const & labelling : AllLabellings())
    {
        for (int const channels : tests::kChannelCounts)
        {
            if (channels > 1 && !labelling.takesSeveralChannels) continue;
            cv::Mat const image = tests::RowOfZones(300, CV_32FC(channels));
            for (int number = -1; number < tests::kConnexityCount; ++number)
            {
                SCOPED_TRACE(labelling.name + ", " + tests::Case(image.type(), image.size(), number));
                cv::Mat const labels = Labelled(labelling, image, number, CV_8UC1);
                for (int zone = 1; zone <= 300; ++zone)
                {
                    ASSERT_EQ(labels.at<uchar>(0, zone - 1), zone <= 255 ? zone : zone - 256);
                }
            }
        }
    }
}

TEST(LabellingFamilyLimits, FortyThousandthZoneInSigned16Bits_ReadsNegative)
{
    // A multiple of three, as the row repeats after three pixels and wrapped shapes see its end beside its start.
    cv::Mat const image = tests::RowOfZones(40002, CV_16UC1);
    for (auto const & labelling : AllLabellings())
    {
        for (int const number : {eConnexity4, eConnexity8Wrapped, eConnexity20Interleaved})
        {
            SCOPED_TRACE(labelling.name + ", " + tests::Case(image.type(), image.size(), number));
            cv::Mat const labels = Labelled(labelling, image, number, CV_16SC1);
            EXPECT_EQ(labels.at<short>(0, 32766), 32767);
            EXPECT_EQ(labels.at<short>(0, 32767), -32768);
            EXPECT_EQ(labels.at<short>(0, 39999), -25536);
            EXPECT_EQ(cv::countNonZero(labels), 40002);
        }
    }
}

TEST(LabellingFamilyLimits, MoreThan65536ZonesIn16Bits_WrapThroughZeroAndIn32BitsDoNot)
{
    cv::Mat const image = tests::RowOfZones(66000, CV_8UC1);
    for (auto const & labelling : AllLabellings())
    {
        for (int const number : {eConnexity4, eConnexity24InterleavedWrapped})
        {
            SCOPED_TRACE(labelling.name + ", " + tests::Case(image.type(), image.size(), number));
            cv::Mat const narrow = Labelled(labelling, image, number, CV_16UC1);
            cv::Mat const wide = Labelled(labelling, image, number, CV_32SC1);
            for (int zone = 1; zone <= 66000; ++zone)
            {
                ASSERT_EQ(wide.at<int>(0, zone - 1), zone);
                ASSERT_EQ(narrow.at<ushort>(0, zone - 1), zone <= 65535 ? zone : zone - 65536);
            }
        }
    }
}

/// Expects that the call succeeds and leaves the header of the labels as it is.
void ExpectNothingToDo(Labelling const & labelling, cv::Size size, int type, int number)
{
    for (int const labelDepth : tests::kLabelDepths)
    {
        SCOPED_TRACE(labelling.name + ", " + tests::Case(type, size, number) + ", " + cv::typeToString(labelDepth));
        cv::Mat labels = DirtyLabels(size, labelDepth);
        EXPECT_TRUE(labelling.call(cv::Mat(size.height, size.width, type), Shape(number), labels));
        EXPECT_EQ(labels.rows, size.height);
        EXPECT_EQ(labels.cols, size.width);
        EXPECT_EQ(labels.type(), labelDepth);
    }
}

TEST(LabellingFamilyLimits, ImagesWithoutPixels_AreLabelled)
{
    for (auto const & labelling : AllLabellings())
    {
        for (cv::Size const size : {cv::Size(5, 0), cv::Size(0, 5), cv::Size(0, 0)})
        {
            for (int number = -1; number <= tests::kConnexityCount; ++number)
            {
                for (int const depth : tests::kDepths)
                {
                    ExpectNothingToDo(labelling, size, depth, number);
                    if (labelling.takesSeveralChannels)
                        ExpectNothingToDo(labelling, size, CV_MAKETYPE(depth, 4), number);
                }
            }
        }
    }
}

TEST(LabellingFamilyLimits, DefaultMatrices_AreImagesWithoutPixels)
{
    for (auto const & labelling : AllLabellings())
    {
        cv::Mat labels;
        EXPECT_TRUE(labelling.call(cv::Mat(), eConnexity8, labels)) << labelling.name;
        EXPECT_EQ(labels.data, nullptr) << labelling.name;
    }
}

TEST(LabellingFamilyLimits, EveryDepthOfLabelsHoldsTheSameLabels)
{
    cv::Mat const image = tests::Draw<ushort>({"2255..", "21155.", "311555", "334444"});
    for (auto const & labelling : AllLabellings())
    {
        cv::Mat const wide = Labelled(labelling, image, eConnexity8, CV_32SC1);
        ASSERT_GT(cv::countNonZero(wide), 0);
        for (int const labelDepth : tests::kLabelDepths)
        {
            cv::Mat expected;
            wide.convertTo(expected, labelDepth);
            EXPECT_TRUE(EqualImages(Labelled(labelling, image, eConnexity8, labelDepth), expected)) << labelling.name;
        }
    }
}

} // namespace

} // namespace morvane::connexity
