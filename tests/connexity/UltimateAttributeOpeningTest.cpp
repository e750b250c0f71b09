// UltimateAttributeOpening on drawn images.
#include <morvane/connexity/UltimateAttributeOpening.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/UltimateOracle.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace morvane::connexity
{

namespace
{

using common::eAttributeType;
using tests::Draw;
using tests::Drawing;
using tests::ExpectDrawn;
using tests::Ultimate;
using tests::UltimateForm;

UltimateForm const kPlain{};

UltimateForm Limited(int maxAttribute)
{
    return {std::nullopt, maxAttribute};
}

UltimateForm Tolerant(int delta, int maxAttribute = -1)
{
    return {delta, maxAttribute};
}

/// The results, written over rubbish.
Ultimate Opened(
    UltimateForm const & form, cv::Mat const & image, eAttributeType attribute, int connexity = eConnexity4,
    int type = CV_32SC1)
{
    Ultimate out{tests::DirtyLabels(image.size(), image.type()), tests::DirtyLabels(image.size(), type)};
    uchar const * const residues = out.residues.data;
    uchar const * const attributes = out.attributes.data;
    EXPECT_TRUE(tests::CallUltimate(form, image, attribute, connexity, out.residues, out.attributes));
    EXPECT_EQ(out.residues.data, residues) << "the residues were reallocated";
    EXPECT_EQ(out.attributes.data, attributes) << "the attributes were reallocated";
    return out;
}

/// Expects the same of every depth of both sides.
void ExpectUltimate(
    UltimateForm const & form, Drawing const & image, eAttributeType attribute, Drawing const & residues,
    Drawing const & attributes)
{
    for (int const depth : tests::kTreeDepths)
    {
        for (int const outDepth : tests::kTreeDepths)
        {
            SCOPED_TRACE(cv::typeToString(depth) + " to " + cv::typeToString(outDepth) + ", " + Describe(form));
            Ultimate const out = Opened(form, Draw(image, CV_MAKETYPE(depth, 1)), attribute, eConnexity4, outDepth);
            ExpectDrawn(out.residues, residues);
            ExpectDrawn(out.attributes, attributes);
        }
    }
}

/// All forms, with limits of every kind.
std::vector<UltimateForm> const & Forms()
{
    static std::vector<UltimateForm> const forms{kPlain,         Limited(0),      Limited(3),    Limited(-1),
                                                 Tolerant(0),    Tolerant(1),     Tolerant(5),   Tolerant(-1),
                                                 Tolerant(5, 0), Tolerant(-1, 4), Tolerant(2, 9)};
    return forms;
}

TEST(UltimateAttributeOpening, OfAConstantImageIsNothing)
{
    for (UltimateForm const & form : Forms())
    {
        ExpectUltimate(form, {"9"}, common::eAttributeArea, {"."}, {"."});
        for (eAttributeType const attribute : tests::kAttributes)
        {
            Ultimate const out = Opened(form, Draw<uchar>({"999", "999"}), attribute);
            ExpectDrawn(out.residues, {"...", "..."});
            ExpectDrawn(out.attributes, {"...", "..."});
        }
    }
}

TEST(UltimateAttributeOpening, OfASquareIsItsHeightAndItsSizePlusOne)
{
    Drawing const image{".......", "..aaa..", "..aaa..", "..aaa..", "......."};
    Drawing const side{".......", "..444..", "..444..", "..444..", "......."};
    Drawing const area{".......", "..aaa..", "..aaa..", "..aaa..", "......."};
    for (eAttributeType const attribute : tests::kAttributes)
    {
        ExpectUltimate(kPlain, image, attribute, image, attribute == common::eAttributeArea ? area : side);
    }
}

TEST(UltimateAttributeOpening, MeasuresFromTheRootAndNotFromZero)
{
    ExpectUltimate(kPlain, {"3393", "3333"}, common::eAttributeArea, {"..6.", "...."}, {"..2.", "...."});
}

TEST(UltimateAttributeOpening, AddsTheResiduesOfNestedComponentsOfOneSize)
{
    Drawing const image{"......", ".5885.", ".5885.", "......"};
    ExpectUltimate(
        kPlain, image, common::eAttributeHeight, {"......", ".5885.", ".5885.", "......"},
        {"......", ".3333.", ".3333.", "......"});
    // Of different areas, they stay two: the outer residue is the larger one.
    ExpectUltimate(
        kPlain, image, common::eAttributeArea, {"......", ".5555.", ".5555.", "......"},
        {"......", ".9999.", ".9999.", "......"});
}

TEST(UltimateAttributeOpening, TakesTheLargestResidueOnThePath)
{
    ExpectUltimate(
        kPlain, {"......", ".2882.", ".2882.", "......"}, common::eAttributeArea,
        {"......", ".2662.", ".2662.", "......"}, {"......", ".9559.", ".9559.", "......"});
}

TEST(UltimateAttributeOpening, OfEqualResiduesTheOuterOneWins)
{
    ExpectUltimate(
        kPlain, {"......", ".5aa5.", ".5aa5.", "......"}, common::eAttributeArea,
        {"......", ".5555.", ".5555.", "......"}, {"......", ".9999.", ".9999.", "......"});
}

TEST(UltimateAttributeOpening, ALimitOfZeroLeavesNothing)
{
    Drawing const image{".2882.", ".2882."};
    Drawing const nothing{"......", "......"};
    ExpectUltimate(Limited(0), image, common::eAttributeArea, nothing, nothing);
    for (int const delta : {0, 1, 5, -1})
    {
        ExpectUltimate(Tolerant(delta, 0), image, common::eAttributeArea, nothing, nothing);
    }
}

TEST(UltimateAttributeOpening, ALimitPassesOverWhatReachesIt)
{
    Drawing const image{".2882.", ".2882."};
    Drawing const residues{"..66..", "..66.."};
    Drawing const attributes{"..55..", "..55.."};
    ExpectUltimate(Limited(9), image, common::eAttributeArea, {".2662.", ".2662."}, {".9559.", ".9559."});
    ExpectUltimate(Limited(8), image, common::eAttributeArea, residues, attributes);
    ExpectUltimate(Limited(5), image, common::eAttributeArea, residues, attributes);
    ExpectUltimate(Limited(4), image, common::eAttributeArea, {"......", "......"}, {"......", "......"});
}

TEST(UltimateAttributeOpening, ANegativeLimitIsNone)
{
    Drawing const image{".2882.", ".2882."};
    for (int const limit : {-1, -8, std::numeric_limits<int>::min()})
    {
        ExpectUltimate(Limited(limit), image, common::eAttributeArea, {".2662.", ".2662."}, {".9559.", ".9559."});
        ExpectUltimate(Tolerant(1, limit), image, common::eAttributeArea, {".2662.", ".2662."}, {".9559.", ".9559."});
    }
}

TEST(UltimateAttributeOpening, WithADeltaOfZeroNothingIsMerged)
{
    // Both blocks have the same height.
    Drawing const image{"......", ".5885.", ".5885.", "......"};
    Drawing const five{"......", ".5555.", ".5555.", "......"};
    Drawing const three{"......", ".3333.", ".3333.", "......"};
    ExpectUltimate(Tolerant(0), image, common::eAttributeHeight, five, three);
    ExpectUltimate(Tolerant(1), image, common::eAttributeHeight, image, three);
    ExpectUltimate(kPlain, image, common::eAttributeHeight, image, three);
}

TEST(UltimateAttributeOpening, ADeltaMergesWhatDiffersByLess)
{
    // Areas of 8 and 4 in an image of 24 pixels.
    Drawing const image{"......", ".5885.", ".5885.", "......"};
    Drawing const five{"......", ".5555.", ".5555.", "......"};
    Drawing const nine{"......", ".9999.", ".9999.", "......"};
    ExpectUltimate(Tolerant(4), image, common::eAttributeArea, five, nine);
    ExpectUltimate(Tolerant(5), image, common::eAttributeArea, image, nine);
    // What is merged with the root still gets its own size.
    ExpectUltimate(Tolerant(17), image, common::eAttributeArea, image, nine);
}

TEST(UltimateAttributeOpening, ANegativeDeltaMergesEveryParentAndChild)
{
    Drawing const image{"......", ".5885.", ".5885.", "......"};
    Drawing const nine{"......", ".9999.", ".9999.", "......"};
    for (int const delta : {-1, -30, std::numeric_limits<int>::min()})
    {
        ExpectUltimate(Tolerant(delta), image, common::eAttributeArea, image, nine);
    }
    ExpectUltimate(Tolerant(-1), {"2334", "22.4"}, common::eAttributeArea, {"2334", "22.4"}, {"8888", "88.8"});
}

TEST(UltimateAttributeOpening, AGrowingResidueKeepsTheSizeOfItsFirstComponent)
{
    ExpectUltimate(Tolerant(2), {"..5678.."}, common::eAttributeArea, {"..5678.."}, {"..5555.."});
    ExpectUltimate(Tolerant(1), {"..5678.."}, common::eAttributeArea, {"..5555.."}, {"..5555.."});
}

TEST(UltimateAttributeOpening, AResidueThatOvertakesLaterTakesTheSizeOfThatComponent)
{
    // From outside: 12 pixels of level 10, 5 of 13, 4 of 24. Those of 13 are no more than what was found before.
    ExpectUltimate(Tolerant(2), {".aaaadooooaaa."}, common::eAttributeArea, {".aaaaaeeeeaaa."}, {".ddddd5555ddd."});
}

TEST(UltimateAttributeOpening, WhatWasPassedOverStillAddsItsResidueToWhatIsMerged)
{
    Drawing const image{"......", ".5885.", ".5885.", "......"};
    ExpectUltimate(
        Tolerant(5, 8), image, common::eAttributeArea, {"......", "..88..", "..88..", "......"},
        {"......", "..55..", "..55..", "......"});
    ExpectUltimate(
        Tolerant(4, 8), image, common::eAttributeArea, {"......", "..33..", "..33..", "......"},
        {"......", "..55..", "..55..", "......"});
}

/// A block of @p area pixels of level 3 on a black image, row by row, with room around it.
cv::Mat Block(int area, int width)
{
    cv::Mat image(area / width + 2, width + 2, CV_8UC1, cv::Scalar(0));
    for (int pixel = 0; pixel < area; ++pixel)
    {
        image.at<uchar>(pixel / width + 1, pixel % width + 1) = 3;
    }
    return image;
}

/// The size that is stored for the block, and 3 as its residue.
double StoredSize(int area, int width, int depth)
{
    Ultimate const out = Opened(kPlain, Block(area, width), common::eAttributeArea, eConnexity4, depth);
    EXPECT_EQ(out.residues.at<uchar>(1, 1), 3);
    EXPECT_EQ(out.residues.at<uchar>(0, 0), 0);
    EXPECT_EQ(tests::ElementAt(out.attributes, 0, 0), 0);
    return tests::ElementAt(out.attributes, 1, 1);
}

TEST(UltimateAttributeOpening, SizesWrapInNarrowOutputs)
{
    EXPECT_EQ(StoredSize(300, 20, CV_8U), 45);
    EXPECT_EQ(StoredSize(300, 20, CV_16U), 301);
    EXPECT_EQ(StoredSize(254, 20, CV_8U), 255);
    EXPECT_EQ(StoredSize(255, 20, CV_8U), 0);
    EXPECT_EQ(StoredSize(256, 20, CV_8U), 1);
    EXPECT_EQ(StoredSize(40000, 200, CV_16U), 40001);
    EXPECT_EQ(StoredSize(40000, 200, CV_16S), -25535);
    EXPECT_EQ(StoredSize(32766, 200, CV_16S), 32767);
    EXPECT_EQ(StoredSize(32767, 200, CV_16S), -32768);
    EXPECT_EQ(StoredSize(65535, 200, CV_16U), 0);
    EXPECT_EQ(StoredSize(65536, 200, CV_16S), 1);
    EXPECT_EQ(StoredSize(65536, 200, CV_32S), 65537);
}

TEST(UltimateAttributeOpening, LimitsAreComparedWithTheSizeBeforeItWraps)
{
    cv::Mat const image = Block(300, 20);
    Ultimate const passedOver = Opened(Limited(300), image, common::eAttributeArea, eConnexity4, CV_8U);
    EXPECT_EQ(cv::countNonZero(passedOver.residues), 0);
    EXPECT_EQ(cv::countNonZero(passedOver.attributes), 0);
    Ultimate const counted = Opened(Limited(301), image, common::eAttributeArea, eConnexity4, CV_8U);
    EXPECT_EQ(counted.attributes.at<uchar>(1, 1), 45);
}

TEST(UltimateAttributeOpening, ReachesTheLargestResidueOfEachType)
{
    int const most = std::numeric_limits<int>::max();
    Ultimate const wide = Opened(kPlain, tests::Row<int>({0, most, 1, 0}), common::eAttributeArea);
    EXPECT_TRUE(tests::EqualImages(wide.residues, tests::Row<int>({0, most - 1, 1, 0})));
    EXPECT_TRUE(tests::EqualImages(wide.attributes, tests::Row<int>({0, 2, 3, 0})));
    Ultimate const merged = Opened(Tolerant(-1), tests::Row<int>({0, most, 1, 0}), common::eAttributeArea);
    EXPECT_TRUE(tests::EqualImages(merged.residues, tests::Row<int>({0, most, 1, 0})));
    Ultimate const narrow = Opened(kPlain, tests::Row<ushort>({0, 65535}), common::eAttributeArea);
    EXPECT_TRUE(tests::EqualImages(narrow.residues, tests::Row<ushort>({0, 65535})));
}

TEST(UltimateAttributeOpening, DoesNotWrapAndWithoutNeighboursFindsNothing)
{
    cv::Mat const image = Draw<uchar>({"44....4", "44....4"});
    for (int const number : {eConnexity4Wrapped, eConnexity8Wrapped})
    {
        ExpectDrawn(Opened(kPlain, image, common::eAttributeArea, number).attributes, {"55....3", "55....3"});
    }
    for (int const number : {13, -1})
    {
        Ultimate const out = Opened(kPlain, image, common::eAttributeArea, number);
        EXPECT_EQ(cv::countNonZero(out.residues) + cv::countNonZero(out.attributes), 0);
    }
}

TEST(UltimateAttributeOpening, FillsTheFirstElementsOfAttributesOfSeveralChannels)
{
    cv::Mat const image = Draw<ushort>({".2882.", ".2882."});
    for (int const depth : tests::kTreeDepths)
    {
        for (int const channels : {2, 3, 5})
        {
            cv::Mat residues = tests::DirtyLabels(image.size(), image.type());
            cv::Mat attributes = tests::DirtyLabels(image.size(), CV_MAKETYPE(depth, channels));
            cv::Mat const before = attributes.reshape(1).clone();
            ASSERT_TRUE(UltimateAttributeOpening(image, common::eAttributeArea, eConnexity4, residues, attributes));
            ExpectDrawn(residues, {".2662.", ".2662."});
            cv::Mat const elements = attributes.reshape(1);
            ExpectDrawn(elements.colRange(0, 6).clone(), {".9559.", ".9559."});
            EXPECT_TRUE(tests::EqualImages(
                elements.colRange(6, 6 * channels).clone(), before.colRange(6, 6 * channels).clone()));
        }
    }
}

TEST(UltimateAttributeOpening, MayWriteResiduesOverItsImage)
{
    for (UltimateForm const & form : {kPlain, Limited(9), Tolerant(1)})
    {
        cv::Mat image = Draw<uchar>({".2882.", ".2882."});
        cv::Mat attributes = tests::DirtyLabels(image.size(), CV_8UC1);
        ASSERT_TRUE(CallUltimate(form, image, common::eAttributeArea, eConnexity4, image, attributes));
        ExpectDrawn(image, {".2662.", ".2662."});
        ExpectDrawn(attributes, {".9559.", ".9559."});
    }
}

TEST(UltimateAttributeOpening, OfAMillionLevelsDoesNotExhaustTheStack)
{
    int const levels = 1000000;
    cv::Mat rising(1, levels, CV_32SC1);
    cv::Mat falling(1, levels, CV_32SC1);
    for (int x = 0; x < levels; ++x)
    {
        rising.at<int>(0, x) = x;
        falling.at<int>(0, x) = x == 0 ? 0 : levels - x;
    }
    for (cv::Mat const & image : {rising, falling})
    {
        // All residues are 1, so that the first one stays; merged, they add up under the size of the first.
        Ultimate const plain = Opened(kPlain, image, common::eAttributeArea);
        EXPECT_EQ(cv::countNonZero(plain.residues == 1), levels - 1);
        EXPECT_EQ(cv::countNonZero(plain.attributes == levels), levels - 1);
        Ultimate const merged = Opened(Tolerant(-1), image, common::eAttributeWidth);
        EXPECT_TRUE(tests::EqualImages(merged.residues, image));
        EXPECT_EQ(cv::countNonZero(merged.attributes == levels), levels - 1);
    }
}

} // namespace

} // namespace morvane::connexity
