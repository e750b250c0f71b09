// Label against the plain walk and against itself, on random images.
#include <morvane/connexity/Labelling.h>

#include "support/AllTypes.h"
#include "support/ImageLiterals.h"
#include "support/Labels.h"
#include "support/Oracles.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <map>
#include <utility>
#include <vector>

namespace morvane::connexity
{

namespace
{

using tests::Labelled;
using tests::Random;

constexpr std::array kUnwrapped{0, 2, 3, 5, 6, 7, 9, 11};
/// Each wrapped shape with its unwrapped partner.
constexpr std::array kWrapped{std::pair(1, 0), std::pair(4, 2), std::pair(8, 7), std::pair(10, 9), std::pair(12, 11)};

/// Labels into views with gaps and compares pixels and surroundings.
void ExpectLabelsInViews(cv::Mat const & image, int number, cv::Mat const & expected)
{
    tests::FramedImage imageView(image);
    tests::FramedImage labelView(tests::DirtyLabels(image.size(), expected.type()));
    EXPECT_TRUE(Label(imageView.View(), tests::Shape(number), labelView.View()));
    EXPECT_TRUE(tests::EqualImages(labelView.View(), expected));
    EXPECT_TRUE(labelView.IsFrameUntouched());
    EXPECT_TRUE(imageView.IsFrameUntouched());
    EXPECT_TRUE(tests::EqualImages(imageView.View(), image));
}

TEST(LabelRandom, MatchesThePlainWalkForEveryTypeAndShape)
{
    Random random(40);
    for (int const depth : tests::kDepths)
    {
        for (int const channels : tests::kChannelCounts)
        {
            for (int round = 0; round < 60; ++round)
            {
                int const number = round % 15 - 1;
                tests::Mixture const mixture{0.2 + 0.6 * random.Unit(), 0.3, 3};
                cv::Mat const image =
                    tests::RandomImage(random, tests::RandomSize(random), CV_MAKETYPE(depth, channels), mixture);
                SCOPED_TRACE(tests::Case(image.type(), image.size(), number));
                auto const zones = tests::OracleZones(tests::OracleTakesPart(image), number);
                for (int const labelDepth : tests::kLabelDepths)
                {
                    cv::Mat const expected = tests::OracleLabels(zones, image.size(), labelDepth);
                    ASSERT_TRUE(tests::EqualImages(Labelled(image, number, labelDepth), expected));
                }
                ExpectLabelsInViews(image, number, tests::OracleLabels(zones, image.size(), CV_32SC1));
                ExpectLabelsInViews(
                    image, number, tests::OracleLabels(zones, image.size(), CV_16UC(1 + random.Below(4))));
                if (HasFailure()) return;
            }
        }
    }
}

TEST(LabelRandom, MatchesThePlainWalkOnNarrowImages)
{
    Random random(41);
    for (int round = 0; round < 200; ++round)
    {
        for (int number = 0; number < tests::kConnexityCount; ++number)
        {
            cv::Size const size(random.Below(6), random.Below(12));
            cv::Mat const image = tests::RandomMask(random, size, 0.1 + 0.5 * random.Unit());
            SCOPED_TRACE(tests::Case(image.type(), size, number));
            cv::Mat const expected = tests::OracleLabels(tests::OracleZones(image, number), size, CV_32SC1);
            ASSERT_TRUE(tests::EqualImages(Labelled(image, number), expected));
        }
    }
}

TEST(LabelRandom, LooksOnlyAtWhetherAPixelIsEmpty)
{
    Random random(42);
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        cv::Mat1b const mask = tests::RandomMask(random, {90, 30}, 0.4);
        cv::Mat const expected = Labelled(mask, number);
        for (int const depth : tests::kDepths)
        {
            for (int const channels : tests::kChannelCounts)
            {
                cv::Mat const image = tests::PaintMask(random, mask, CV_MAKETYPE(depth, channels));
                SCOPED_TRACE(tests::Case(image.type(), image.size(), number));
                ASSERT_TRUE(tests::EqualImages(Labelled(image, number), expected));
            }
        }
    }
}

TEST(LabelRandom, LabelsOfLabels_AreTheSame)
{
    Random random(43);
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        cv::Mat const labels = Labelled(tests::RandomMask(random, {100, 40}, 0.35), number);
        ASSERT_GT(cv::countNonZero(labels), 0);
        EXPECT_TRUE(tests::EqualImages(Labelled(labels, number), labels)) << number;
        EXPECT_TRUE(tests::EqualImages(Labelled(labels != 0, number), labels)) << number;
    }
}

TEST(LabelRandom, TransposedAndFlippedImages_HaveTheSameZones)
{
    Random random(44);
    for (int number = 0; number < tests::kConnexityCount; ++number)
    {
        SCOPED_TRACE(number);
        cv::Mat1b const mask = tests::RandomMask(random, {75, 50}, number < 5 ? 0.5 : 0.15);
        cv::Mat const labels = Labelled(mask, number);
        for (int const flip : {-1, 0, 1})
        {
            cv::Mat flipped;
            cv::flip(mask, flipped, flip);
            cv::Mat back;
            cv::flip(Labelled(flipped, number), back, flip);
            EXPECT_TRUE(tests::SamePartition(back, labels)) << "flip " << flip;
        }
        // Rows never wrap, so transposing is for shapes that don't either.
        if (tests::OracleWraps(number)) continue;
        EXPECT_TRUE(tests::SamePartition(Labelled(mask.t(), number).t(), labels)) << "transposed";
    }
}

TEST(LabelRandom, EmptyMargins_ChangeNothing)
{
    Random random(45);
    for (int round = 0; round < 5; ++round)
    {
        cv::Mat1b const mask = tests::RandomMask(random, {60 + round, 20}, 0.4);
        auto const padded = [&](int top, int left, int right) {
            cv::Mat image;
            cv::copyMakeBorder(mask, image, top, top, left, right, cv::BORDER_CONSTANT, cv::Scalar(0));
            return image;
        };
        cv::Rect const inside(4, 3, mask.cols, mask.rows);
        for (int const number : kUnwrapped)
        {
            cv::Mat const labels = Labelled(padded(3, 4, 2), number);
            EXPECT_TRUE(tests::EqualImages(labels(inside), Labelled(mask, number))) << number;
        }
        for (auto const & [wrapped, plain] : kWrapped)
        {
            // Empty rows leave the seam as it is; two empty columns open it.
            cv::Mat const rows = Labelled(padded(3, 0, 0), wrapped);
            EXPECT_TRUE(tests::EqualImages(rows.rowRange(3, 3 + mask.rows), Labelled(mask, wrapped))) << wrapped;
            cv::Mat const columns = Labelled(padded(0, 1, 1), wrapped);
            EXPECT_TRUE(tests::EqualImages(columns.colRange(1, 1 + mask.cols), Labelled(mask, plain))) << wrapped;
        }
    }
}

TEST(LabelRandom, TurningAPanorama_KeepsTheZonesOfWrappedShapes)
{
    Random random(46);
    for (auto const & [wrapped, plain] : kWrapped)
    {
        for (int const turn : {1, 2, 31, 63, 64, 65, 100})
        {
            cv::Mat1b const mask = tests::RandomMask(random, {140, 15}, wrapped < 5 ? 0.5 : 0.15);
            auto const turned = [](cv::Mat const & image, int by) {
                cv::Mat result;
                cv::hconcat(image.colRange(by, image.cols), image.colRange(0, by), result);
                return result;
            };
            cv::Mat const labels = Labelled(turned(mask, turn), wrapped);
            EXPECT_TRUE(tests::SamePartition(turned(labels, 140 - turn), Labelled(mask, wrapped)))
                << wrapped << " turned by " << turn;
        }
    }
}

/// Tells whether each zone of @p fine lies in one zone of @p coarse.
bool Refines(cv::Mat const & fine, cv::Mat const & coarse)
{
    std::map<int, int> holders;
    for (int y = 0; y < fine.rows; ++y)
    {
        for (int x = 0; x < fine.cols; ++x)
        {
            int const holder = coarse.at<int>(y, x);
            if (holders.try_emplace(fine.at<int>(y, x), holder).first->second != holder) return false;
        }
    }
    return true;
}

TEST(LabelRandom, MoreNeighbours_NeverSplitAZone)
{
    std::vector<std::pair<int, int>> const growing{{0, 2}, {0, 1}, {2, 5},  {5, 6},   {6, 11}, {1, 4},
                                                   {2, 4}, {4, 8}, {8, 10}, {10, 12}, {7, 8},  {9, 10}};
    Random random(47);
    for (double const density : {0.05, 0.1, 0.2, 0.4})
    {
        cv::Mat1b const mask = tests::RandomMask(random, {130, 40}, density);
        for (auto const & [smaller, larger] : growing)
        {
            EXPECT_TRUE(Refines(Labelled(mask, smaller), Labelled(mask, larger))) << smaller << " in " << larger;
        }
        for (auto const & [one, other] : {std::pair(2, 3), std::pair(5, 7), std::pair(6, 9)})
        {
            EXPECT_TRUE(tests::EqualImages(Labelled(mask, one), Labelled(mask, other))) << one << " and " << other;
        }
    }
}

} // namespace

} // namespace morvane::connexity
