// UltimateAttributeOpening against both plain forms, against series of openings, and against itself, on random images.
#include <morvane/connexity/AttributeOpening.h>
#include <morvane/connexity/UltimateAttributeOpening.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/MaxTreeOracle.h"
#include "support/RandomImages.h"
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
using tests::EqualImages;
using tests::Random;
using tests::Ultimate;
using tests::UltimateForm;

/// Every form, with limits on both sides of what small images measure.
std::vector<UltimateForm> const & Forms()
{
    constexpr int kLeast = std::numeric_limits<int>::min();
    static std::vector<UltimateForm> const forms{{},      {{}, 0},  {{}, 3},     {{}, 12},    {{}, -1}, {0, -1},
                                                 {1, -1}, {5, -1},  {-1, -1},    {-7, 6},     {2, 9},   {5, 0},
                                                 {3, 4},  {40, -1}, {1, kLeast}, {kLeast, 20}};
    return forms;
}

Ultimate Opened(UltimateForm const & form, cv::Mat const & image, eAttributeType attribute, int connexity, int depth)
{
    Ultimate out{
        tests::DirtyLabels(image.size(), image.type()), tests::DirtyLabels(image.size(), CV_MAKETYPE(depth, 1))};
    EXPECT_TRUE(tests::CallUltimate(form, image, attribute, connexity, out.residues, out.attributes));
    return out;
}

::testing::AssertionResult Same(Ultimate const & actual, Ultimate const & expected)
{
    ::testing::AssertionResult const residues = EqualImages(actual.residues, expected.residues);
    if (!residues) return residues;
    return EqualImages(actual.attributes, expected.attributes);
}

/// Expects what both plain forms give, for every form.
void ExpectOpenings(cv::Mat const & image, eAttributeType attribute, int connexity, int depth)
{
    tests::OraclePaths const paths = tests::OracleDecompose(image, connexity);
    tests::OracleTree const tree = tests::OracleFlood(image, connexity);
    for (UltimateForm const & form : Forms())
    {
        SCOPED_TRACE(
            tests::TreeCase(image, connexity) + ", attribute " + std::to_string(attribute) + " to " +
            cv::typeToString(depth) + ", " + Describe(form));
        Ultimate const out = Opened(form, image, attribute, connexity, depth);
        ASSERT_TRUE(Same(out, tests::OracleUltimate(image, paths, attribute, form, depth)));
        ASSERT_TRUE(Same(out, tests::OracleUltimate(image, tree, attribute, form, depth)));
    }
}

cv::Size SomeSize(Random & random)
{
    cv::Size const size = tests::RandomSize(random, 11);
    return {size.width + 1, size.height + 1};
}

/// Few or many levels.
cv::Mat SomeImage(Random & random, cv::Size size, int depth)
{
    return tests::HillyImage(random, size, depth, 2 + random.Below(random.Chance(0.3) ? 16 : 6));
}

TEST(UltimateAttributeOpeningRandom, EveryFormDepthAndAttributeAgreesWithThePlainForms)
{
    Random random(72);
    for (int const depth : tests::kTreeDepths)
    {
        for (int const outDepth : tests::kTreeDepths)
        {
            for (eAttributeType const attribute : tests::kAttributes)
            {
                int const number = random.Below(tests::kConnexityCount);
                ExpectOpenings(SomeImage(random, SomeSize(random), depth), attribute, number, outDepth);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST(UltimateAttributeOpeningRandom, EveryShapeAgreesWithThePlainForms)
{
    Random random(73);
    for (int number = -1; number <= tests::kConnexityCount; ++number)
    {
        eAttributeType const attribute = tests::kAttributes.at(static_cast<std::size_t>(random.Below(6)));
        ExpectOpenings(SomeImage(random, SomeSize(random), CV_8U), attribute, number, CV_16U);
        ExpectOpenings(SomeImage(random, {1 + random.Below(30), 1}, CV_32S), attribute, number, CV_32S);
        ExpectOpenings(SomeImage(random, {1, 1 + random.Below(30)}, CV_16S), attribute, number, CV_8U);
        ExpectOpenings(SomeImage(random, {1, 1}, CV_16U), attribute, number, CV_16S);
        if (HasFatalFailure()) return;
    }
}

TEST(UltimateAttributeOpeningRandom, SizesThatWrapAgreeWithThePlainForms)
{
    Random random(74);
    for (int round = 0; round < 4; ++round)
    {
        // Steps of about 200 pixels, so that the sizes of several components pass 8 bits.
        cv::Mat image(26, 60, CV_8UC1);
        for (int y = 0; y < image.rows; ++y)
        {
            for (int x = 0; x < image.cols; ++x)
            {
                image.at<uchar>(y, x) = static_cast<uchar>(3 * (x / 8) + (random.Chance(0.05) ? 2 : 0));
            }
        }
        ExpectOpenings(image, common::eAttributeArea, eConnexity8, CV_8U);
        if (HasFatalFailure()) return;
    }
}

TEST(UltimateAttributeOpeningRandom, NegativePixelsAgreeWithThePlainForms)
{
    Random random(75);
    for (int round = 0; round < 20; ++round)
    {
        int const type = round % 2 == 0 ? CV_16SC1 : CV_32SC1;
        // Not so far apart that a residue would pass its type.
        cv::Mat const image = tests::RandomImage(random, SomeSize(random), type, {0.2, 0.0, 6}) - 3;
        ExpectOpenings(image, common::eAttributeArea, random.Below(tests::kConnexityCount), CV_32S);
        if (HasFatalFailure()) return;
    }
}

TEST(UltimateAttributeOpeningRandom, LevelsAnyDistanceApartStayInBounds)
{
    Random random(76);
    for (int round = 0; round < 20; ++round)
    {
        int const type = round % 2 == 0 ? CV_16SC1 : CV_32SC1;
        cv::Mat const image = tests::RandomImage(random, SomeSize(random), type, {0.2, 0.5, 4}) - 2;
        for (UltimateForm const & form : Forms())
        {
            Ultimate const out = Opened(form, image, common::eAttributeArea, eConnexity8, CV_32S);
            // Every component but the root lacks a pixel of the image, which makes up for the one that is added.
            double largest = 0.0;
            cv::minMaxLoc(out.attributes, nullptr, &largest);
            EXPECT_LE(largest, static_cast<double>(image.total()));
        }
    }
}

/// The largest step of openings of growing size, and the size after it; of equal steps the last.
Ultimate FromSeries(cv::Mat const & image, eAttributeType attribute, int connexity)
{
    Ultimate out{cv::Mat::zeros(image.size(), image.type()), cv::Mat::zeros(image.size(), CV_32SC1)};
    double darkest = 0.0;
    cv::minMaxLoc(image, &darkest);
    cv::Mat before = image;
    for (unsigned size = 1; size <= image.total(); ++size)
    {
        cv::Mat after(image.size(), image.type());
        EXPECT_TRUE(AttributeOpening(image, attribute, tests::Shape(connexity), size + 1, after));
        // The whole image stays, whatever it measures.
        after = cv::max(after, darkest);
        cv::Mat const step = before - after;
        cv::Mat const isLargest = (step >= out.residues) & (step > 0);
        step.copyTo(out.residues, isLargest);
        out.attributes.setTo(size + 1, isLargest);
        before = after;
    }
    return out;
}

TEST(UltimateAttributeOpeningRandom, IsTheLargestStepOfASeriesOfOpenings)
{
    Random random(77);
    for (int round = 0; round < 30; ++round)
    {
        int const depth = tests::kTreeDepths.at(static_cast<std::size_t>(random.Below(4)));
        int const number = random.Below(tests::kConnexityCount);
        cv::Mat const image = SomeImage(random, SomeSize(random), depth);
        for (eAttributeType const attribute : tests::kAttributes)
        {
            SCOPED_TRACE(tests::TreeCase(image, number) + ", attribute " + std::to_string(attribute));
            ASSERT_TRUE(Same(Opened({}, image, attribute, number, CV_32S), FromSeries(image, attribute, number)));
        }
    }
}

TEST(UltimateAttributeOpeningRandom, FormsAgreeWhereTheirLimitsSayTheSame)
{
    Random random(78);
    int differences = 0;
    for (int round = 0; round < 40; ++round)
    {
        eAttributeType const attribute = tests::kAttributes.at(static_cast<std::size_t>(random.Below(6)));
        cv::Mat const image = SomeImage(random, {24, 17}, CV_16U);
        auto const opened = [&](UltimateForm const & form) {
            return Opened(form, image, attribute, eConnexity8, CV_32S);
        };
        Ultimate const plain = opened({});
        EXPECT_TRUE(Same(opened({{}, -1}), plain));
        EXPECT_TRUE(Same(opened({1, -1}), plain));
        EXPECT_TRUE(Same(opened({{}, 24 * 17 + 1}), plain));
        EXPECT_TRUE(Same(opened({1, 7}), opened({{}, 7})));
        EXPECT_TRUE(Same(opened({24 * 17, 7}), opened({-1, 7})));
        differences += Same(opened({-1, -1}), plain) ? 0 : 1;
        differences += Same(opened({0, -1}), plain) ? 0 : 1;
        differences += Same(opened({{}, 7}), plain) ? 0 : 1;
    }
    EXPECT_GT(differences, 40);
}

TEST(UltimateAttributeOpeningRandom, ViewsAreWrittenWithoutATraceAroundThem)
{
    Random random(79);
    for (int const depth : tests::kTreeDepths)
    {
        for (int const outDepth : tests::kTreeDepths)
        {
            cv::Mat const image = SomeImage(random, SomeSize(random), depth);
            tests::FramedImage input(image);
            tests::FramedImage residues(tests::DirtyLabels(image.size(), image.type()));
            tests::FramedImage attributes(tests::DirtyLabels(image.size(), CV_MAKETYPE(outDepth, 1)));
            ASSERT_TRUE(UltimateAttributeOpening(
                input.View(), common::eAttributeArea, 3, eConnexity8, 30, residues.View(), attributes.View()));
            Ultimate const expected = Opened({3, 30}, image, common::eAttributeArea, eConnexity8, outDepth);
            EXPECT_TRUE(EqualImages(residues.View(), expected.residues));
            EXPECT_TRUE(EqualImages(attributes.View(), expected.attributes));
            EXPECT_TRUE(EqualImages(input.View(), image));
            EXPECT_TRUE(input.IsFrameUntouched());
            EXPECT_TRUE(residues.IsFrameUntouched());
            EXPECT_TRUE(attributes.IsFrameUntouched());
        }
    }
}

TEST(UltimateAttributeOpeningRandom, TransposedImagesExchangeWidthAndHeight)
{
    Random random(80);
    for (int round = 0; round < 30; ++round)
    {
        int const number = random.Below(tests::kConnexityCount);
        cv::Mat const image = SomeImage(random, {21, 14}, CV_16S);
        UltimateForm const form = Forms().at(static_cast<std::size_t>(random.Below(static_cast<int>(Forms().size()))));
        Ultimate const heights = Opened(form, image, common::eAttributeHeight, number, CV_8U);
        Ultimate const widths = Opened(form, image.t(), common::eAttributeWidth, number, CV_8U);
        EXPECT_TRUE(Same({widths.residues.t(), widths.attributes.t()}, heights)) << Describe(form);
    }
}

} // namespace

} // namespace morvane::connexity
