// What the labelling operators beside Label refuse, how each answers then, and that labels are left alone.
#include <morvane/connexity/Labelling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/LabelChecks.h"
#include "support/Labels.h"
#include "support/Snapshot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

namespace morvane::connexity
{

namespace
{

using tests::DirtyLabels;
using tests::EqualImages;
using tests::OperatorOfOne;
using tests::OperatorOfTwo;
using tests::Snapshot;

cv::Size const kSize(3, 2);
constexpr std::array kAllDepths{CV_8U, CV_8S, CV_16U, CV_16S, CV_32S, CV_32F, CV_64F, CV_16F};

/// A constant image of any type; the bytes make a number far from 0 in all of them.
cv::Mat Constant(cv::Size size, int type)
{
    cv::Mat image(size.height, size.width, type);
    tests::FillBytes(image, 0x40);
    return image;
}

template <class Depths>
bool Holds(Depths const & depths, int depth)
{
    return std::find(depths.begin(), depths.end(), depth) != depths.end();
}

bool IsImageDepth(int depth)
{
    return Holds(tests::kDepths, depth);
}

bool IsLabelDepth(int depth)
{
    return Holds(tests::kLabelDepths, depth);
}

/// How an operator takes a call.
enum class Answer
{
    Labels,
    True, ///< without a label
    False
};

/// The answer of an operator over one image.
Answer AnswerOfOne(cv::Mat const & image, cv::Mat const & labels)
{
    bool const accepted = image.size() == labels.size() && IsImageDepth(image.depth()) &&
                          IsLabelDepth(labels.depth()) && image.channels() <= 4;
    return accepted ? Answer::Labels : Answer::False;
}

/// The answer of an operator over two images, in the order in which it looks.
Answer
AnswerOfTwo(OperatorOfTwo const & labelling, cv::Mat const & image, cv::Mat const & second, cv::Mat const & labels)
{
    Answer const refusedLeaf = labelling.answersTrueToRefusedLeaf ? Answer::True : Answer::False;
    if (!labelling.takesSeveralChannels && (image.channels() > 1 || second.channels() > 1)) return Answer::False;
    if (image.size() != labels.size() || second.size() != labels.size()) return Answer::False;
    if (!IsImageDepth(image.depth()) || !IsImageDepth(second.depth())) return Answer::False;
    if (!IsLabelDepth(labels.depth())) return refusedLeaf;
    if (image.channels() != second.channels()) return Answer::False;
    return image.channels() <= 4 ? Answer::Labels : refusedLeaf;
}

/// Expects that the call answers so, and writes the one zone of constant images or nothing.
template <class Call>
void ExpectAnswer(Answer answer, cv::Mat & labels, Call const & call)
{
    cv::Mat const header = labels;
    Snapshot const before(labels);
    EXPECT_EQ(call(), answer != Answer::False);
    ASSERT_EQ(labels.type(), header.type());
    ASSERT_EQ(labels.rows, header.rows);
    ASSERT_EQ(labels.cols, header.cols);
    if (answer != Answer::Labels)
    {
        ASSERT_TRUE(before.IsUntouched());
        return;
    }
    ASSERT_EQ(labels.data, header.data) << "the label image was reallocated";
    cv::Mat const ones(labels.rows, labels.cols, labels.type(), cv::Scalar::all(1));
    ASSERT_TRUE(EqualImages(labels, ones));
}

void ExpectAnswerOfOne(
    OperatorOfOne const & labelling, cv::Mat const & image, cv::Mat labels, eConnexityType connexity = eConnexity4)
{
    SCOPED_TRACE(
        std::string(labelling.name) + ": " + tests::Case(image.type(), image.size(), connexity) + ", labels " +
        tests::Case(labels.type(), labels.size(), connexity));
    ExpectAnswer(AnswerOfOne(image, labels), labels, [&] { return labelling.call(image, connexity, labels); });
}

void ExpectAnswerOfTwo(
    OperatorOfTwo const & labelling, cv::Mat const & image, cv::Mat const & second, cv::Mat labels,
    eConnexityType connexity = eConnexity4)
{
    SCOPED_TRACE(
        std::string(labelling.name) + ": " + tests::Case(image.type(), image.size(), connexity) + ", second " +
        tests::Case(second.type(), second.size(), connexity) + ", labels " +
        tests::Case(labels.type(), labels.size(), connexity));
    ExpectAnswer(AnswerOfTwo(labelling, image, second, labels), labels, [&] {
        return labelling.call(image, second, connexity, labels);
    });
}

/// Sizes that differ from kSize in a side, and one with as many pixels.
std::array<cv::Size, 7> const kOtherSizes{{{2, 3}, {4, 2}, {3, 3}, {6, 1}, {0, 0}, {3, 0}, {0, 2}}};

TEST(LabellingFamilyRefusals, OneImage_AnswersByDepthsAndChannels)
{
    for (auto const & labelling : tests::OperatorsOfOne())
    {
        for (int const depth : kAllDepths)
        {
            for (int const channels : {1, 2, 3, 4, 5, 6, 9, 257, CV_CN_MAX})
            {
                cv::Mat const image = Constant(kSize, CV_MAKETYPE(depth, channels));
                for (int const labelDepth : kAllDepths)
                {
                    ExpectAnswerOfOne(labelling, image, DirtyLabels(kSize, labelDepth));
                    if (HasFatalFailure()) return;
                }
            }
        }
    }
}

TEST(LabellingFamilyRefusals, OneImage_RefusesOtherSizes)
{
    for (auto const & labelling : tests::OperatorsOfOne())
    {
        for (cv::Size const other : kOtherSizes)
        {
            for (int number = -1; number <= tests::kConnexityCount; ++number)
            {
                auto const connexity = tests::Shape(number);
                ExpectAnswerOfOne(labelling, Constant(kSize, CV_8UC1), DirtyLabels(other, CV_32SC1), connexity);
                ExpectAnswerOfOne(labelling, Constant(other, CV_64FC3), DirtyLabels(kSize, CV_8UC1), connexity);
            }
        }
        // Neither holds a pixel, and their sizes differ all the same.
        ExpectAnswerOfOne(labelling, Constant({0, 5}, CV_8UC1), DirtyLabels({5, 0}, CV_32SC1));
        ExpectAnswerOfOne(labelling, cv::Mat(), DirtyLabels({5, 0}, CV_32SC1));
    }
}

TEST(LabellingFamilyRefusals, TwoImages_AnswerByDepthsAndChannels)
{
    for (auto const & labelling : tests::OperatorsOfTwo())
    {
        for (int const depth1 : kAllDepths)
        {
            for (int const depth2 : kAllDepths)
            {
                for (int const channels : {11, 12, 21, 22, 33, 44, 45, 54, 55, 56, 99})
                {
                    cv::Mat const first = Constant(kSize, CV_MAKETYPE(depth1, channels / 10));
                    cv::Mat const second = Constant(kSize, CV_MAKETYPE(depth2, channels % 10));
                    for (int const labelDepth : kAllDepths)
                    {
                        ExpectAnswerOfTwo(labelling, first, second, DirtyLabels(kSize, labelDepth));
                        if (HasFatalFailure()) return;
                    }
                }
            }
        }
    }
}

TEST(LabellingFamilyRefusals, TwoImages_RefuseOtherSizesBeforeAllElse)
{
    for (auto const & labelling : tests::OperatorsOfTwo())
    {
        for (cv::Size const other : kOtherSizes)
        {
            for (int const type : {CV_8UC1, CV_8SC1, CV_32FC3, CV_64FC(5)})
            {
                for (int const labelDepth : kAllDepths)
                {
                    auto const labels = [&](cv::Size size) {
                        return DirtyLabels(size, labelDepth);
                    };
                    ExpectAnswerOfTwo(labelling, Constant(other, type), Constant(kSize, type), labels(kSize));
                    ExpectAnswerOfTwo(labelling, Constant(kSize, type), Constant(other, type), labels(kSize));
                    ExpectAnswerOfTwo(labelling, Constant(kSize, type), Constant(kSize, type), labels(other));
                    ExpectAnswerOfTwo(labelling, Constant(other, type), Constant(other, type), labels(kSize));
                    ExpectAnswerOfTwo(labelling, Constant(other, type), Constant(kSize, type), labels(other));
                }
            }
        }
    }
}

/// Says which of the operators over two images answer true to a call with these types.
std::string WhoAnswersTrue(int firstType, int secondType, int labelType)
{
    std::string names;
    for (auto const & labelling : tests::OperatorsOfTwo())
    {
        cv::Mat labels = DirtyLabels(kSize, labelType);
        Snapshot const before(labels);
        if (labelling.call(Constant(kSize, firstType), Constant(kSize, secondType), eConnexity8, labels))
        {
            names += std::string(labelling.name) + "; ";
        }
        EXPECT_TRUE(before.IsUntouched()) << labelling.name;
    }
    return names;
}

TEST(LabellingFamilyRefusals, ThreeOperatorsAnswerTrueToARefusedLabelDepthAndToManyChannels)
{
    std::string const three = "LabelDeltaFlatZonesNoZero of two; LabelDeltaFlatZonesWithAreaCondition; "
                              "LabelDeltaFlatZonesNoZeroWithAreaCondition; ";
    for (int const labelDepth : tests::kRefusedLabelDepths)
    {
        EXPECT_EQ(WhoAnswersTrue(CV_8UC1, CV_16UC1, labelDepth), three);
        EXPECT_EQ(WhoAnswersTrue(CV_64FC4, CV_8UC4, labelDepth), three);
        EXPECT_EQ(WhoAnswersTrue(CV_8UC1, CV_8UC3, labelDepth), three) << "the label depth comes before the channels";
        EXPECT_EQ(WhoAnswersTrue(CV_8UC(5), CV_8UC(5), labelDepth), three);
        EXPECT_EQ(WhoAnswersTrue(CV_8SC1, CV_8UC1, labelDepth), "") << "the images come before the label depth";
        EXPECT_EQ(WhoAnswersTrue(CV_8UC1, CV_16FC1, labelDepth), "");
    }
    for (int const labelDepth : tests::kLabelDepths)
    {
        EXPECT_EQ(WhoAnswersTrue(CV_8UC(5), CV_32FC(5), labelDepth), three);
        EXPECT_EQ(WhoAnswersTrue(CV_8UC(257), CV_8UC(257), labelDepth), three);
        EXPECT_EQ(WhoAnswersTrue(CV_8UC(5), CV_8UC(6), labelDepth), "") << "channels differ before they are many";
        EXPECT_EQ(WhoAnswersTrue(CV_8UC1, CV_8UC2, labelDepth), "");
        EXPECT_EQ(WhoAnswersTrue(CV_8UC4, CV_8UC1, labelDepth), "");
        EXPECT_EQ(WhoAnswersTrue(CV_8UC(5), CV_8SC(5), labelDepth), "");
    }
}

TEST(LabellingFamilyRefusals, ImagesWithoutPixels_AreNoExcuseForRefusedTypes)
{
    for (cv::Size const size : {cv::Size(0, 5), cv::Size(5, 0), cv::Size(0, 0)})
    {
        for (int const type : {CV_8UC1, CV_8SC1, CV_16FC2, CV_32SC4, CV_64FC(5)})
        {
            for (int const labelDepth : kAllDepths)
            {
                for (auto const & labelling : tests::OperatorsOfOne())
                {
                    ExpectAnswerOfOne(labelling, Constant(size, type), DirtyLabels(size, labelDepth));
                }
                for (auto const & labelling : tests::OperatorsOfTwo())
                {
                    for (int const secondType : {CV_8UC1, CV_16FC2, CV_32SC4, CV_64FC(5)})
                    {
                        ExpectAnswerOfTwo(
                            labelling, Constant(size, type), Constant(size, secondType), DirtyLabels(size, labelDepth));
                    }
                }
            }
        }
    }
}

TEST(LabellingFamilyRefusals, ViewsAndLabelsOfSeveralChannelsAreLeftAlone)
{
    cv::Mat parent = DirtyLabels({9, 9}, CV_32SC3);
    Snapshot const before(parent);
    cv::Mat view = parent(cv::Rect(2, 2, kSize.width, kSize.height));
    for (auto const & labelling : tests::OperatorsOfOne())
    {
        EXPECT_FALSE(labelling.call(Constant(kSize, CV_8SC1), eConnexity8, view)) << labelling.name;
        EXPECT_FALSE(labelling.call(Constant({2, 3}, CV_8UC1), eConnexity8, view)) << labelling.name;
    }
    for (auto const & labelling : tests::OperatorsOfTwo())
    {
        cv::Mat const image = Constant(kSize, CV_8UC1);
        EXPECT_FALSE(labelling.call(Constant(kSize, CV_8SC1), image, eConnexity8, view)) << labelling.name;
        EXPECT_FALSE(labelling.call(image, Constant({2, 3}, CV_8UC1), eConnexity8, view)) << labelling.name;
        EXPECT_EQ(
            labelling.call(Constant(kSize, CV_8UC(5)), Constant(kSize, CV_8UC(5)), eConnexity8, view),
            labelling.answersTrueToRefusedLeaf)
            << labelling.name;
    }
    EXPECT_TRUE(before.IsUntouched());
}

TEST(LabellingFamilyRefusals, MoreThanTwoDimensions)
{
    std::array const sides{2, 3, 4};
    cv::Mat const volume(3, sides.data(), CV_8UC1, cv::Scalar(1));
    cv::Mat const image = Constant({3, 2}, CV_8UC1);
    cv::Mat labels = DirtyLabels({3, 2}, CV_32SC1);
    Snapshot const before(labels);
    for (int const labelType : {CV_32SC1, CV_32FC1})
    {
        cv::Mat labelVolume(3, sides.data(), labelType, cv::Scalar(7));
        cv::Mat const firstPlane(3, 4, labelType, labelVolume.data);
        for (auto const & labelling : tests::OperatorsOfOne())
        {
            EXPECT_FALSE(labelling.call(volume, eConnexity8, labelVolume)) << labelling.name;
            EXPECT_FALSE(labelling.call(image, eConnexity8, labelVolume)) << labelling.name;
            EXPECT_FALSE(labelling.call(volume, eConnexity8, labels)) << labelling.name;
        }
        for (auto const & labelling : tests::OperatorsOfTwo())
        {
            EXPECT_FALSE(labelling.call(volume, volume, eConnexity8, labelVolume)) << labelling.name;
            EXPECT_FALSE(labelling.call(image, volume, eConnexity8, labels)) << labelling.name;
            EXPECT_FALSE(labelling.call(volume, image, eConnexity8, labels)) << labelling.name;
            EXPECT_FALSE(labelling.call(image, image, eConnexity8, labelVolume)) << labelling.name;
        }
        EXPECT_EQ(cv::countNonZero(firstPlane != 7), 0);
        EXPECT_EQ(labelVolume.dims, 3);
    }
    EXPECT_TRUE(before.IsUntouched());
}

} // namespace

} // namespace morvane::connexity
