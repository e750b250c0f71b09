// AttributeOpening against both plain forms, and against itself, on random images.
#include <morvane/connexity/AttributeOpening.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/MaxTreeOracle.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <vector>

namespace morvane::connexity
{

namespace
{

using common::eAttributeType;
using tests::EqualImages;
using tests::Random;

constexpr unsigned kMost = std::numeric_limits<unsigned>::max();

cv::Mat Opened(cv::Mat const & image, eAttributeType attribute, int connexity, unsigned threshold)
{
    cv::Mat out = tests::DirtyLabels(image.size(), image.type());
    EXPECT_TRUE(AttributeOpening(image, attribute, tests::Shape(connexity), threshold, out));
    return out;
}

/// 0, 1, the largest, and both sides of some values of components.
std::set<unsigned> Thresholds(Random & random, tests::OraclePaths const & paths, eAttributeType attribute)
{
    std::set<unsigned> thresholds{0, 1, kMost};
    for (int pick = 0; pick < 2; ++pick)
    {
        auto const index = static_cast<std::size_t>(random.Below(static_cast<int>(paths.components.size())));
        auto const value = static_cast<unsigned>(tests::OracleValue(paths.components[index].measure, attribute));
        thresholds.insert({value, value + 1});
    }
    return thresholds;
}

/// Expects what both plain forms give, at several thresholds and for every attribute.
void ExpectOpenings(Random & random, cv::Mat const & image, int connexity)
{
    tests::OraclePaths const paths = tests::OracleDecompose(image, connexity);
    tests::OracleTree const tree = tests::OracleFlood(image, connexity);
    for (eAttributeType const attribute : tests::kAttributes)
    {
        for (unsigned const threshold : Thresholds(random, paths, attribute))
        {
            SCOPED_TRACE(
                tests::TreeCase(image, connexity) + ", attribute " + std::to_string(attribute) + ", threshold " +
                std::to_string(threshold));
            cv::Mat const out = Opened(image, attribute, connexity, threshold);
            ASSERT_TRUE(EqualImages(out, tests::OracleOpening(image, paths, attribute, threshold)));
            ASSERT_TRUE(EqualImages(out, tests::OracleOpening(image, tree, attribute, threshold)));
        }
    }
}

cv::Size SomeSize(Random & random)
{
    cv::Size const size = tests::RandomSize(random, 12);
    return {size.width + 1, size.height + 1};
}

TEST(AttributeOpeningRandom, EveryAttributeDepthAndShapeAgreesWithThePlainForms)
{
    Random random(62);
    for (int number = -1; number <= tests::kConnexityCount; ++number)
    {
        for (int const depth : tests::kTreeDepths)
        {
            for (int round = 0; round < 2; ++round)
            {
                ExpectOpenings(random, tests::HillyImage(random, SomeSize(random), depth, 2 + random.Below(7)), number);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST(AttributeOpeningRandom, RowsColumnsAndPixelsAgreeWithThePlainForms)
{
    Random random(63);
    for (int round = 0; round < 30; ++round)
    {
        int const length = round % 5 == 0 ? 1 : 1 + random.Below(30);
        cv::Size const size = random.Chance(0.5) ? cv::Size(length, 1) : cv::Size(1, length);
        int const depth = tests::kTreeDepths.at(static_cast<std::size_t>(random.Below(4)));
        ExpectOpenings(
            random, tests::HillyImage(random, size, depth, 2 + random.Below(5)), random.Below(tests::kConnexityCount));
        if (HasFatalFailure()) return;
    }
}

TEST(AttributeOpeningRandom, NegativePixelsAgreeWithThePlainForms)
{
    Random random(64);
    for (int round = 0; round < 20; ++round)
    {
        int const type = round % 2 == 0 ? CV_16SC1 : CV_32SC1;
        cv::Mat const image = tests::RandomImage(random, SomeSize(random), type, {0.2, 0.5, 4}) - 2;
        ExpectOpenings(random, image, random.Below(tests::kConnexityCount));
        if (HasFatalFailure()) return;
    }
}

TEST(AttributeOpeningRandom, ViewsAreFilteredWithoutATraceAroundThem)
{
    Random random(65);
    for (int const depth : tests::kTreeDepths)
    {
        for (eAttributeType const attribute : tests::kAttributes)
        {
            cv::Mat const image = tests::HillyImage(random, SomeSize(random), depth, 6);
            cv::Mat const expected = Opened(image, attribute, eConnexity8, 4);
            tests::FramedImage input(image);
            tests::FramedImage output(tests::DirtyLabels(image.size(), image.type()));
            ASSERT_TRUE(AttributeOpening(input.View(), attribute, eConnexity8, 4, output.View()));
            EXPECT_TRUE(EqualImages(output.View(), expected));
            EXPECT_TRUE(EqualImages(input.View(), image));
            EXPECT_TRUE(output.IsFrameUntouched());
            ASSERT_TRUE(AttributeOpening(input.View(), attribute, eConnexity8, 4, input.View()));
            EXPECT_TRUE(EqualImages(input.View(), expected));
            EXPECT_TRUE(input.IsFrameUntouched());
        }
    }
}

/// Tells whether no pixel of @p lower is above that of @p upper.
bool IsBelow(cv::Mat const & lower, cv::Mat const & upper)
{
    return cv::countNonZero(lower > upper) == 0;
}

TEST(AttributeOpeningRandom, ThresholdsUpToOneChangeNothing)
{
    Random random(66);
    for (eAttributeType const attribute : tests::kAttributes)
    {
        for (int const depth : tests::kTreeDepths)
        {
            cv::Mat const image = tests::HillyImage(random, {23, 19}, depth, 30);
            EXPECT_TRUE(EqualImages(Opened(image, attribute, eConnexity8, 0), image));
            EXPECT_TRUE(EqualImages(Opened(image, attribute, eConnexity8, 1), image));
            EXPECT_EQ(cv::countNonZero(Opened(image, attribute, eConnexity8, kMost)), 0);
        }
    }
}

TEST(AttributeOpeningRandom, IsAnOpening)
{
    Random random(67);
    int changes = 0;
    for (int round = 0; round < 60; ++round)
    {
        int const depth = tests::kTreeDepths.at(static_cast<std::size_t>(random.Below(4)));
        eAttributeType const attribute = tests::kAttributes.at(static_cast<std::size_t>(random.Below(6)));
        int const number = random.Below(tests::kConnexityCount);
        auto const threshold = static_cast<unsigned>(random.Below(20));
        cv::Mat const image = tests::HillyImage(random, {25, 20}, depth, 12);
        cv::Mat const out = Opened(image, attribute, number, threshold);
        EXPECT_TRUE(IsBelow(out, image)) << "is not anti-extensive";
        EXPECT_TRUE(EqualImages(Opened(out, attribute, number, threshold), out)) << "is not idempotent";
        EXPECT_TRUE(IsBelow(Opened(image, attribute, number, threshold + 3), out)) << "grows with its threshold";
        cv::Mat const brighter = cv::max(image, tests::HillyImage(random, image.size(), depth, 12));
        EXPECT_TRUE(IsBelow(out, Opened(brighter, attribute, number, threshold))) << "is not increasing";
        changes += EqualImages(out, image) ? 0 : 1;
    }
    EXPECT_GT(changes, 30);
}

TEST(AttributeOpeningRandom, WiderNeighbourhoodsLeaveMore)
{
    Random random(68);
    int differences = 0;
    for (int round = 0; round < 30; ++round)
    {
        cv::Mat const image = tests::HillyImage(random, {25, 20}, CV_8U, 12);
        std::vector<cv::Mat> outs;
        for (int const number : {eConnexity4, eConnexity8, eConnexity12, eConnexity20, eConnexity24Interleaved})
        {
            outs.push_back(Opened(image, common::eAttributeArea, number, 6));
        }
        for (std::size_t index = 1; index < outs.size(); ++index)
        {
            EXPECT_TRUE(IsBelow(outs[index - 1], outs[index])) << index;
            differences += EqualImages(outs[index - 1], outs[index]) ? 0 : 1;
        }
    }
    EXPECT_GT(differences, 30);
}

TEST(AttributeOpeningRandom, TransposedImagesExchangeWidthAndHeight)
{
    Random random(69);
    for (int round = 0; round < 40; ++round)
    {
        int const depth = tests::kTreeDepths.at(static_cast<std::size_t>(random.Below(4)));
        int const number = random.Below(tests::kConnexityCount);
        cv::Mat const image = tests::HillyImage(random, {21, 14}, depth, 8);
        cv::Mat const transposed = image.t();
        auto const expectSame = [&](eAttributeType attribute, eAttributeType other) {
            cv::Mat const out = Opened(image, attribute, number, 4);
            cv::Mat const back = Opened(transposed, other, number, 4).t();
            EXPECT_TRUE(EqualImages(back, out)) << attribute << ", connexity " << number;
        };
        expectSame(common::eAttributeHeight, common::eAttributeWidth);
        expectSame(common::eAttributeWidth, common::eAttributeHeight);
        expectSame(common::eAttributeStrain, common::eAttributeStrain);
        expectSame(common::eAttributeMinHW, common::eAttributeMinHW);
        expectSame(common::eAttributeArea, common::eAttributeArea);
        expectSame(common::eAttributeSqrtArea, common::eAttributeSqrtArea);
    }
}

TEST(AttributeOpeningRandom, FlippedImagesGiveFlippedResults)
{
    Random random(70);
    for (int round = 0; round < 40; ++round)
    {
        int const number = random.Below(tests::kConnexityCount);
        eAttributeType const attribute = tests::kAttributes.at(static_cast<std::size_t>(random.Below(6)));
        cv::Mat const image = tests::HillyImage(random, {21, 14}, CV_16U, 8);
        cv::Mat flipped;
        cv::flip(image, flipped, round % 3 - 1);
        cv::Mat back;
        cv::flip(Opened(flipped, attribute, number, 5), back, round % 3 - 1);
        EXPECT_TRUE(EqualImages(back, Opened(image, attribute, number, 5))) << number;
    }
}

TEST(AttributeOpeningRandom, DepthsGiveTheSameNumbers)
{
    Random random(71);
    for (int round = 0; round < 20; ++round)
    {
        cv::Mat image;
        tests::HillyImage(random, {21, 14}, CV_8U, 20).convertTo(image, CV_8U, 0.49);
        eAttributeType const attribute = tests::kAttributes.at(static_cast<std::size_t>(random.Below(6)));
        cv::Mat const expected = Opened(image, attribute, eConnexity8, 7);
        for (int const depth : {CV_16U, CV_16S, CV_32S})
        {
            cv::Mat wide;
            image.convertTo(wide, depth);
            cv::Mat narrow;
            Opened(wide, attribute, eConnexity8, 7).convertTo(narrow, CV_8U);
            EXPECT_TRUE(EqualImages(narrow, expected)) << cv::typeToString(depth);
        }
    }
}

} // namespace

} // namespace morvane::connexity
