// Label on what is hard for a method that works on runs and on words of 64 pixels.
#include <morvane/connexity/Labelling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/Oracles.h"
#include "support/Patterns.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::Labelled;
using tests::Pattern;
using tests::Random;

std::vector<Pattern> PatternsAndNoise(Random & random, cv::Size size)
{
    std::vector<Pattern> patterns = tests::AllPatterns(size);
    for (double const density : {0.02, 0.1, 0.5, 0.9, 0.98})
    {
        patterns.push_back({"density " + std::to_string(density), tests::RandomMask(random, size, density)});
    }
    return patterns;
}

cv::Mat PlainLabels(cv::Mat1b const & mask, int number)
{
    return tests::OracleLabels(tests::OracleZones(mask, number), mask.size(), CV_32SC1);
}

int RandomType(Random & random)
{
    return CV_MAKETYPE(tests::kDepths[static_cast<std::size_t>(random.Below(6))], 1 + random.Below(4));
}

/// Labels the mask, painted in some pixel type, with the shapes that reach two pixels far and without neighbours.
void ExpectPlainLabelsOfOtherShapes(Random & random, cv::Mat1b const & mask)
{
    for (int number = 5; number <= tests::kConnexityCount; ++number)
    {
        cv::Mat const image = tests::PaintMask(random, mask, RandomType(random));
        SCOPED_TRACE(tests::Case(image.type(), image.size(), number));
        ASSERT_TRUE(tests::EqualImages(Labelled(image, number), PlainLabels(mask, number)));
    }
}

/// Labels the mask, painted in every pixel type, with the shapes of 4 and 8 neighbours.
void ExpectPlainLabelsInEveryType(Random & random, cv::Mat1b const & mask)
{
    std::vector<cv::Mat> expected;
    expected.reserve(tests::kSmallConnexities.size());
    for (int const number : tests::kSmallConnexities)
    {
        expected.push_back(PlainLabels(mask, number));
    }
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            cv::Mat const image = tests::PaintMask(random, mask, CV_MAKETYPE(depth, channels));
            for (int const number : tests::kSmallConnexities)
            {
                SCOPED_TRACE(tests::Case(image.type(), image.size(), number));
                ASSERT_TRUE(tests::EqualImages(Labelled(image, number), expected[static_cast<std::size_t>(number)]));
            }
        }
    }
}

TEST(LabelRuns, MatchThePlainWalkAtEveryWidthAroundAWord)
{
    Random random(60);
    for (int const cols : {1, 2, 3, 31, 62, 63, 64, 65, 66, 127, 128, 129, 191, 192, 193, 200})
    {
        for (int const rows : {1, 2, 5, 9})
        {
            for (Pattern const & pattern : PatternsAndNoise(random, {cols, rows}))
            {
                SCOPED_TRACE(pattern.name);
                ExpectPlainLabelsInEveryType(random, pattern.mask);
                ExpectPlainLabelsOfOtherShapes(random, pattern.mask);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST(LabelRuns, MatchThePlainWalkInViewsAndInEveryLabelDepth)
{
    Random random(61);
    for (int const cols : {63, 64, 65, 127, 128, 129, 200})
    {
        for (Pattern const & pattern : PatternsAndNoise(random, {cols, 7}))
        {
            for (int number = 0; number <= tests::kConnexityCount; ++number)
            {
                auto const zones = tests::OracleZones(pattern.mask, number);
                int const type = RandomType(random);
                SCOPED_TRACE(tests::Case(type, pattern.mask.size(), number) + ", " + pattern.name);
                tests::FramedImage image(tests::PaintMask(random, pattern.mask, type));
                for (int const labelDepth : tests::kLabelDepths)
                {
                    cv::Mat const expected =
                        tests::OracleLabels(zones, pattern.mask.size(), CV_MAKETYPE(labelDepth, 1 + random.Below(3)));
                    tests::FramedImage labels(tests::DirtyLabels(expected.size(), expected.type()));
                    ASSERT_TRUE(Label(image.View(), tests::Shape(number), labels.View()));
                    ASSERT_TRUE(tests::EqualImages(labels.View(), expected));
                    ASSERT_TRUE(labels.IsFrameUntouched());
                }
            }
        }
    }
}

TEST(LabelRuns, DoNotReadBesideAView)
{
    // A full parent around an empty view, and around a view whose border is full: nothing may leak in.
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            cv::Mat parent(20, 300, CV_MAKETYPE(depth, channels), cv::Scalar::all(1));
            for (int const cols : {1, 63, 64, 65, 128, 200})
            {
                cv::Mat view = parent(cv::Rect(7, 2, cols, 6));
                view.setTo(0);
                for (int const number : tests::kSmallConnexities)
                {
                    EXPECT_EQ(cv::countNonZero(Labelled(view, number)), 0);
                }
                tests::SetElement(view, 2, 0, 0, 1);
                tests::SetElement(view, 4, cols - 1, channels - 1, 1);
                for (int const number : tests::kSmallConnexities)
                {
                    cv::Mat const labels = Labelled(view, number);
                    SCOPED_TRACE(tests::Case(view.type(), view.size(), number));
                    EXPECT_EQ(cv::countNonZero(labels), 2);
                    EXPECT_EQ(labels.at<int>(2, 0), 1);
                    EXPECT_EQ(labels.at<int>(4, cols - 1), 2);
                }
            }
        }
    }
}

TEST(LabelRuns, JoinSinglePixelsAcrossWordBorders)
{
    for (int const left : {62, 63, 64, 126, 127, 128})
    {
        for (int const dx : {-1, 0, 1})
        {
            cv::Mat image(3, 200, CV_8UC1, cv::Scalar(0));
            image.at<uchar>(1, left) = 9;
            image.at<uchar>(2, left + dx) = 9;
            SCOPED_TRACE("from column " + std::to_string(left) + " to column " + std::to_string(left + dx));
            cv::Mat const four = Labelled(image, eConnexity4);
            cv::Mat const eight = Labelled(image, eConnexity8);
            EXPECT_EQ(four.at<int>(1, left), 1);
            EXPECT_EQ(four.at<int>(2, left + dx), dx == 0 ? 1 : 2);
            EXPECT_EQ(eight.at<int>(1, left), 1);
            EXPECT_EQ(eight.at<int>(2, left + dx), 1);
        }
    }
}

TEST(LabelRuns, MatchThePlainWalkOnLargerImages)
{
    Random random(62);
    std::vector<Pattern> patterns = PatternsAndNoise(random, {517, 301});
    patterns.push_back({"large spiral", tests::Spiral({700, 500})});
    for (Pattern const & pattern : patterns)
    {
        for (int const number : tests::kSmallConnexities)
        {
            SCOPED_TRACE(tests::Case(CV_8UC1, pattern.mask.size(), number) + ", " + pattern.name);
            auto const zones = tests::OracleZones(pattern.mask, number);
            for (int const labelType : {CV_32SC1, CV_16UC1, CV_8UC1})
            {
                cv::Mat const expected = tests::OracleLabels(zones, pattern.mask.size(), labelType);
                ASSERT_TRUE(tests::EqualImages(Labelled(pattern.mask, number, labelType), expected));
            }
        }
        ExpectPlainLabelsOfOtherShapes(random, pattern.mask);
        if (HasFatalFailure()) return;
    }
}

TEST(LabelRuns, MatchThePlainWalkOnAWidePanoramaAndOnATallStrip)
{
    Random random(63);
    for (cv::Size const size : {cv::Size(70001, 3), cv::Size(3, 70001), cv::Size(1, 70001), cv::Size(70001, 1)})
    {
        for (double const density : {0.5, 0.95})
        {
            cv::Mat1b const mask = tests::RandomMask(random, size, density);
            for (int const number : tests::kSmallConnexities)
            {
                SCOPED_TRACE(tests::Case(CV_8UC1, size, number));
                ASSERT_TRUE(tests::EqualImages(Labelled(mask, number), PlainLabels(mask, number)));
            }
        }
    }
}

} // namespace

} // namespace morvane::connexity
