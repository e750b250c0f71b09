// Every position, or those around the expected one: what counts, which are tried, which of equals wins.
#include <morvane/algorithm/TemplateMatching.h>

#include "support/ImageLiterals.h"
#include "support/MatchingOracle.h"
#include "support/Rows.h"
#include "support/SearchOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <limits>
#include <vector>

namespace morvane::algorithm::matching_internals
{

namespace
{

using tests::Draw;
using tests::Drawing;
using tests::FieldsOf;
using tests::Prior;
using tests::Row;

constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();
constexpr double kUnset = tests::kNoScore;

cv::Mat Integers(Drawing const & drawing)
{
    return Draw<int>(drawing);
}

/// A record with a position and nothing else.
tests::Fields At(double score, cv::Point position, cv::Point_<double> const & translation)
{
    TemplateMatchingInfo record;
    record.score = score;
    record.translationX = translation.x;
    record.translationY = translation.y;
    record.positionX = position.x;
    record.positionY = position.y;
    return FieldsOf(record);
}

tests::Fields const kNothing{kUnset, kUnset, kUnset, kUnset, kUnset, kUnset, 1.0, kUnset, kUnset, kUnset, kUnset};

/// The best of every position, where translations are counted from position (0, 0).
tests::Fields BestOfAll(cv::Mat const & padded, cv::Mat const & rotated)
{
    TemplateMatchingInfo candidate;
    EXPECT_TRUE(TestAllPossibleTranslation(padded, rotated, 0, 1, 1, 1, candidate));
    return FieldsOf(candidate);
}

/// The best around a position where the first pixel of the turned image is expected, counted from (0, 0).
tests::Fields BestAround(cv::Mat const & padded, cv::Mat const & rotated, cv::Point_<double> expected, double range)
{
    Prior prior;
    prior.refOnRef = expected;
    prior.range = range;
    // The other station has no part in it.
    prior.movOnRef = {1000.0, 1000.0};
    prior.movOnMov = {-1000.0, 500.0};
    TemplateMatchingInfo candidate;
    EXPECT_TRUE(TestTranslationsAroundExpectedPosition(
        padded, rotated, 0, 1, 1, 1, ParametersOf(prior), {0.0, 0.0}, candidate));
    return FieldsOf(candidate);
}

TEST(EqualOccupancyScore, Is16ForEachPairOfEqualElementsAbove2)
{
    EXPECT_EQ(EqualOccupancyScore(Integers({"345", "678"}), Integers({"345", "678"})), 96);
    EXPECT_EQ(EqualOccupancyScore(Integers({"345", "678"}), Integers({"354", "679"})), 48);
    EXPECT_EQ(EqualOccupancyScore(Integers({"0123", "2103"}), Integers({"0123", "2103"})), 32);
    EXPECT_EQ(EqualOccupancyScore(Row<int>({kMost, kLeast, -1, -3}), Row<int>({kMost, kLeast, -1, -3})), 16);
    // Low bits alone do not make equals.
    EXPECT_EQ(EqualOccupancyScore(Row<int>({3, 259, 65539}), Row<int>({259, 65539, 3})), 0);
    EXPECT_EQ(EqualOccupancyScore(Integers({"3"}), Integers({"4"})), 0);
}

TEST(EqualOccupancyScore, ReadsElementsOf32BitsAsIntegers)
{
    // 1 is a large integer, negative numbers are negative, and NaN equals itself.
    float const nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(EqualOccupancyScore(Row<float>({1.0F, -1.0F, 0.0F, nan}), Row<float>({1.0F, -1.0F, 0.0F, nan})), 32);
    EXPECT_EQ(EqualOccupancyScore(Row<float>({0.0F, 1.0F}), Row<int>({0, 0x3F800000})), 16);
}

TEST(EqualOccupancyScore, ReadsViewsWithinTheirBorders)
{
    cv::Mat const parent = Integers({"5555", "5345", "5675", "5555"});
    cv::Mat const view = parent(cv::Rect(1, 1, 2, 2));
    EXPECT_EQ(EqualOccupancyScore(view, Integers({"34", "67"})), 64);
    EXPECT_EQ(EqualOccupancyScore(parent(cv::Rect(0, 0, 2, 1)), parent(cv::Rect(2, 3, 2, 1))), 32);
}

TEST(TestAllPossibleTranslation, FindsWhereTheImageLies)
{
    cv::Mat const rotated = Integers({"345", "678", "9ab"});
    cv::Mat const padded = Integers(
        {".......", //
         "..345..", //
         "..678..", //
         "..9ab..", //
         ".......", //
         ".......", //
         "......."});
    TemplateMatchingInfo candidate;
    // The middle of a square of 3 is that of the reference of 3 when it starts at its margin of 2.
    ASSERT_TRUE(TestAllPossibleTranslation(padded, rotated, 2, 3, 3, 3, candidate));
    EXPECT_EQ(FieldsOf(candidate), At(144.0, {2, 1}, {0.0, -1.0}));
}

TEST(TestAllPossibleTranslation, CountsTranslationsFromTheOffsetRoundedDown)
{
    cv::Mat const padded = Integers({"....", "..7.", "...."});
    cv::Mat const rotated = Integers({"7"});
    TemplateMatchingInfo candidate;
    // 5 / 2 + 3 - 4 / 2 is 3.5, 4 / 2 + 3 - 4 / 2 is 3.
    ASSERT_TRUE(TestAllPossibleTranslation(padded, rotated, 3, 4, 5, 4, candidate));
    EXPECT_EQ(FieldsOf(candidate), At(16.0, {2, 1}, {-1.0, -2.0}));
    // 0 / 2 + 0 - 3 / 2 is -1.5, 1 / 2 + 0 - 3 / 2 is -1.
    ASSERT_TRUE(TestAllPossibleTranslation(padded, rotated, 0, 0, 1, 3, candidate));
    EXPECT_EQ(FieldsOf(candidate), At(16.0, {2, 1}, {3.0, 3.0}));
}

TEST(TestAllPossibleTranslation, DoesNotTryTheLastColumnAndRow)
{
    cv::Mat const rotated = Integers({"34", "67"});
    EXPECT_EQ(BestOfAll(Integers({"....", "..34", "..67", "...."}), rotated), At(0.0, {0, 0}, {0.0, 0.0}));
    EXPECT_EQ(BestOfAll(Integers({"....", "....", ".34.", ".67."}), rotated), At(0.0, {0, 0}, {0.0, 0.0}));
    EXPECT_EQ(BestOfAll(Integers({"....", ".34.", ".67.", "...."}), rotated), At(64.0, {1, 1}, {1.0, 1.0}));
}

TEST(TestAllPossibleTranslation, WithoutPositions_LeavesNothing)
{
    cv::Mat const rotated = Integers({"345", "678"});
    EXPECT_EQ(BestOfAll(Integers({"345", "678"}), rotated), kNothing);
    EXPECT_EQ(BestOfAll(Integers({"345.", "678."}), rotated), kNothing);
    EXPECT_EQ(BestOfAll(Integers({"345", "678", "..."}), rotated), kNothing);
    EXPECT_EQ(BestOfAll(Integers({"34", "67", "34", "67"}), rotated), kNothing);
    EXPECT_EQ(BestOfAll(Integers({"345345345"}), rotated), kNothing);
    EXPECT_EQ(BestOfAll(Integers({"3"}), rotated), kNothing);
    EXPECT_EQ(BestOfAll(cv::Mat(0, 0, CV_32S), rotated), kNothing);
    // The one position there is, is tried.
    EXPECT_EQ(BestOfAll(Integers({"345.", "678.", "...."}), rotated), At(96.0, {0, 0}, {0.0, 0.0}));
}

TEST(TestAllPossibleTranslation, OfEqualScores_KeepsTheSmallestColumnThenTheSmallestRow)
{
    cv::Mat const rotated = Integers({"5"});
    EXPECT_EQ(BestOfAll(Integers({"....5.", "..5...", "..5...", "5....."}), rotated), At(16.0, {2, 1}, {2.0, 1.0}));
    EXPECT_EQ(BestOfAll(Integers({"......", "......", "......"}), rotated), At(0.0, {0, 0}, {0.0, 0.0}));
}

TEST(TestAllPossibleTranslation, OfEqualScores_ComparesAKeptTranslationWithTheColumn)
{
    cv::Mat const rotated = Integers({"5"});
    TemplateMatchingInfo candidate;
    // With an offset of -2 a column gives way to the next one and that is all; a row to the rows below.
    ASSERT_TRUE(
        TestAllPossibleTranslation(Integers({"5.555..", "5......", "......."}), rotated, 0, 0, 0, 4, candidate));
    EXPECT_EQ(FieldsOf(candidate), At(16.0, {0, 1}, {2.0, 3.0}));
    ASSERT_TRUE(
        TestAllPossibleTranslation(Integers({"555.5..", ".......", "......."}), rotated, 0, 0, 0, 4, candidate));
    EXPECT_EQ(FieldsOf(candidate), At(16.0, {2, 0}, {4.0, 2.0}));
    // With an offset of -1, to the rows below alone.
    ASSERT_TRUE(
        TestAllPossibleTranslation(Integers({"55555..", "55.....", "......."}), rotated, 0, 0, 0, 2, candidate));
    EXPECT_EQ(FieldsOf(candidate), At(16.0, {0, 1}, {1.0, 2.0}));
    // With an offset of -10, the last of all stays.
    ASSERT_TRUE(TestAllPossibleTranslation(Integers({"......", "......", "......"}), rotated, 0, 0, 0, 20, candidate));
    EXPECT_EQ(FieldsOf(candidate), At(0.0, {4, 1}, {14.0, 11.0}));
}

TEST(TestAllPossibleTranslation, CountsTranslationsFromAnyOffset)
{
    TemplateMatchingInfo candidate;
    ASSERT_TRUE(TestAllPossibleTranslation(Integers({"5..", "..."}), Integers({"5"}), kLeast, 0, 0, 0, candidate));
    EXPECT_EQ(FieldsOf(candidate), At(16.0, {0, 0}, {2147483648.0, 2147483648.0}));
}

TEST(TestAllPossibleTranslation, ReplacesTheCandidateWhole)
{
    TemplateMatchingInfo candidate;
    candidate.score = 1e6;
    candidate.angle = 5.0;
    candidate.ratio = 0.25;
    candidate.reserved1 = 1.0;
    candidate.peakX = 3.0;
    candidate.image = Integers({"12"});
    TemplateMatchingInfo other = candidate;
    ASSERT_TRUE(TestAllPossibleTranslation(Integers({"7..", "..."}), Integers({"7"}), 0, 1, 1, 1, candidate));
    EXPECT_EQ(FieldsOf(candidate), At(16.0, {0, 0}, {0.0, 0.0}));
    EXPECT_TRUE(candidate.image.empty());
    ASSERT_TRUE(TestAllPossibleTranslation(Integers({"7"}), Integers({"77"}), 0, 1, 1, 1, other));
    EXPECT_EQ(FieldsOf(other), kNothing);
    EXPECT_TRUE(other.image.empty());
}

TEST(TestAllPossibleTranslation, CountsRowsOfAnyLength)
{
    // Long enough for counters of 8 and of 16 bits to run over.
    for (int const value : {7, 300, 70000})
    {
        SCOPED_TRACE(value);
        int const length = value == 7 ? 40000 : 2300000;
        cv::Mat const rotated(1, length, CV_32S, cv::Scalar(value));
        cv::Mat const padded(2, length + 1, CV_32S, cv::Scalar(value));
        EXPECT_EQ(BestOfAll(padded, rotated), At(16.0 * length, {0, 0}, {0.0, 0.0}));
    }
}

TEST(TestTranslationsAroundExpectedPosition, TriesColumnsWithoutTheLastAndRowsWithIt)
{
    cv::Mat const rotated = Integers({"7"});
    // Around (3, 3) within 1: columns 2 and 3, rows 2 to 4.
    for (int y = 0; y < 7; ++y)
    {
        for (int x = 0; x < 7; ++x)
        {
            cv::Mat padded = cv::Mat::zeros(7, 7, CV_32S);
            padded.at<int>(y, x) = 7;
            bool const isTried = cv::Rect(2, 2, 2, 3).contains({x, y});
            cv::Point const place = isTried ? cv::Point(x, y) : cv::Point(3, 3);
            EXPECT_EQ(BestAround(padded, rotated, {3.0, 3.0}, 1.0), At(isTried ? 16.0 : 0.0, place, place));
        }
    }
}

TEST(TestTranslationsAroundExpectedPosition, RoundsTheRangeOutwards)
{
    cv::Mat const padded(9, 9, CV_32S, cv::Scalar(0));
    cv::Mat const rotated = Integers({"7"});
    // Around 3.5 within 0.2: 3.3 to 3.7 is column 3, and rows 3 and 4.
    cv::Mat marked = padded.clone();
    marked.at<int>(4, 3) = 7;
    EXPECT_EQ(BestAround(marked, rotated, {3.5, 3.5}, 0.2), At(16.0, {3, 4}, {3.0, 4.0}));
    marked = padded.clone();
    marked.at<int>(3, 4) = 7;
    EXPECT_EQ(BestAround(marked, rotated, {3.5, 3.5}, 0.2), At(0.0, {3, 3}, {3.0, 3.0}));
}

TEST(TestTranslationsAroundExpectedPosition, WithoutARange_TriesNothing)
{
    cv::Mat const padded(9, 9, CV_32S, cv::Scalar(7));
    cv::Mat const rotated = Integers({"7"});
    EXPECT_EQ(BestAround(padded, rotated, {3.0, 3.0}, -1.0), kNothing);
    EXPECT_EQ(BestAround(padded, rotated, {3.5, 3.5}, -1.0), kNothing);
    EXPECT_EQ(BestAround(padded, rotated, {3.25, 3.75}, -1.0), kNothing);
    EXPECT_EQ(BestAround(padded, rotated, {3.0, 3.0}, -5.0), kNothing);
    // A range of 0 is a column between two whole numbers, and none on one.
    EXPECT_EQ(BestAround(padded, rotated, {3.0, 3.0}, 0.0), kNothing);
    EXPECT_EQ(BestAround(padded, rotated, {3.5, 3.0}, 0.0), At(16.0, {3, 3}, {3.0, 3.0}));
}

TEST(TestTranslationsAroundExpectedPosition, OfEqualScores_KeepsTheNearestThenTheSmallestColumnThenRow)
{
    cv::Mat const rotated = Integers({"7"});
    auto const best = [&](Drawing const & drawing) {
        return BestAround(Integers(drawing), rotated, {3.0, 3.0}, 3.0);
    };
    // Nearer in a later column.
    EXPECT_EQ(
        best({"7......", ".......", ".......", "....7..", ".......", ".......", "......."}),
        At(16.0, {4, 3}, {4.0, 3.0}));
    // As near: column before row.
    EXPECT_EQ(
        best({".......", ".......", "...7...", "..7.7..", "...7...", ".......", "......."}),
        At(16.0, {2, 3}, {2.0, 3.0}));
    EXPECT_EQ(
        best({".......", ".......", "...7...", "....7..", "...7...", ".......", "......."}),
        At(16.0, {3, 2}, {3.0, 2.0}));
    EXPECT_EQ(
        best({".......", "...7...", ".......", ".......", "...7...", ".......", "......."}),
        At(16.0, {3, 4}, {3.0, 4.0}));
    // The higher score before all.
    EXPECT_EQ(
        BestAround(
            Integers({".......", ".......", ".......", "...7...", ".......", "77.....", "......."}), Integers({"77"}),
            {3.0, 3.0}, 3.0),
        At(32.0, {0, 5}, {0.0, 5.0}));
}

TEST(TestTranslationsAroundExpectedPosition, ComparesThePartInsideThePaddedReference)
{
    cv::Mat const rotated = Integers({"345", "678", "9ab"});
    // Beyond the right and the lower border the part at the upper left counts.
    EXPECT_EQ(
        BestAround(Integers({"....", "....", "..34", "..67"}), rotated, {2.0, 2.0}, 1.5), At(64.0, {2, 2}, {2.0, 2.0}));
    EXPECT_EQ(
        BestAround(Integers({"....", "....", "....", "...3"}), rotated, {3.0, 3.0}, 5.0), At(16.0, {3, 3}, {3.0, 3.0}));
    // Positions beyond the left and the upper border are left out.
    EXPECT_EQ(BestAround(Integers({"78..", "ab..", "....", "...."}), rotated, {-1.0, -1.0}, 1.0), kNothing);
    EXPECT_EQ(
        BestAround(Integers({"78..", "ab..", "....", "...."}), rotated, {-1.0, -1.0}, 2.0),
        At(0.0, {0, 0}, {0.0, 0.0}));
    EXPECT_EQ(BestAround(Integers({"34", "67"}), rotated, {4.0, 4.0}, 1.0), kNothing);
    // A turned image larger than the padded reference.
    EXPECT_EQ(BestAround(Integers({"34", "67"}), rotated, {0.5, 0.5}, 1.0), At(64.0, {0, 0}, {0.0, 0.0}));
}

TEST(TestTranslationsAroundExpectedPosition, ExpectsTheStationOfTheReferencePlusTheTranslation)
{
    cv::Mat padded = cv::Mat::zeros(20, 20, CV_32S);
    Prior prior;
    prior.refOnRef = {2.0, 3.0};
    prior.translation = {4.0, 1.0};
    prior.movOnRef = {-5.0, -5.0};
    prior.range = 0.5;
    TemplateMatchingInfo candidate;
    // 5 + 2 + 4 - 1 and 5 + 3 + 1 - 2: around (10, 7), column 9, rows 6 to 8; of equals the nearest.
    ASSERT_TRUE(TestTranslationsAroundExpectedPosition(
        padded, Integers({"7"}), 5, 10, 10, 4, ParametersOf(prior), {1.0, 2.0}, candidate));
    // Translations are counted from 10 / 2 + 5 - 4 / 2.
    EXPECT_EQ(FieldsOf(candidate), At(0.0, {10, 7}, {2.0, -1.0}));
    padded.at<int>(8, 9) = 7;
    ASSERT_TRUE(TestTranslationsAroundExpectedPosition(
        padded, Integers({"7"}), 5, 10, 10, 4, ParametersOf(prior), {1.0, 2.0}, candidate));
    EXPECT_EQ(FieldsOf(candidate), At(16.0, {9, 8}, {1.0, 0.0}));
    padded.at<int>(8, 9) = 0;
    padded.at<int>(7, 11) = 7;
    ASSERT_TRUE(TestTranslationsAroundExpectedPosition(
        padded, Integers({"7"}), 5, 10, 10, 4, ParametersOf(prior), {1.0, 2.0}, candidate));
    EXPECT_EQ(FieldsOf(candidate), At(0.0, {10, 7}, {2.0, -1.0}));
}

TEST(TestTranslationsAroundExpectedPosition, ReplacesTheCandidateWhole)
{
    TemplateMatchingInfo candidate;
    candidate.score = 1e6;
    candidate.ratio = 0.25;
    candidate.image = Integers({"12"});
    ASSERT_TRUE(TestTranslationsAroundExpectedPosition(
        Integers({"7"}), Integers({"7"}), 0, 1, 1, 1, ParametersOf(Prior()), {0.0, 0.0}, candidate));
    EXPECT_EQ(FieldsOf(candidate), kNothing);
    EXPECT_TRUE(candidate.image.empty());
}

TEST(TestTranslationsAroundExpectedPosition, TakesRangesAndPlacesOfAnySize)
{
    cv::Mat const padded = Integers({"7..", "..."});
    cv::Mat const rotated = Integers({"7"});
    double const infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(BestAround(padded, rotated, {1.0, 1.0}, 1e300), At(16.0, {0, 0}, {0.0, 0.0}));
    EXPECT_EQ(BestAround(padded, rotated, {1.0, 1.0}, infinity), At(16.0, {0, 0}, {0.0, 0.0}));
    EXPECT_EQ(BestAround(padded, rotated, {1e300, 1.0}, 5.0), kNothing);
    EXPECT_EQ(BestAround(padded, rotated, {1.0, -1e300}, 5.0), kNothing);
    EXPECT_EQ(BestAround(padded, rotated, {std::numeric_limits<double>::quiet_NaN(), 1.0}, 5.0), kNothing);
}

TEST(MatchingPositions, OfOtherElements_AreRefused)
{
    cv::Mat const integers = Integers({"77", "77", "77"});
    std::vector<cv::Mat> others;
    for (int const depth : {CV_8U, CV_8S, CV_16U, CV_16S, CV_64F, CV_16F})
    {
        others.push_back(cv::Mat::zeros(3, 2, depth));
    }
    others.push_back(cv::Mat::zeros(3, 2, CV_32SC2));
    int const sizes[] = {2, 2, 2};
    others.emplace_back(3, sizes, CV_32S, cv::Scalar(7));
    TemplateMatchingInfo candidate;
    candidate.score = 5.0;
    candidate.ratio = 0.5;
    candidate.image = integers;
    auto const before = FieldsOf(candidate);
    for (cv::Mat const & other : others)
    {
        SCOPED_TRACE(cv::typeToString(other.type()) + ", dimensions " + std::to_string(other.dims));
        for (bool const isFirst : {true, false})
        {
            cv::Mat const & padded = isFirst ? other : integers;
            cv::Mat const & rotated = isFirst ? integers : other;
            EXPECT_FALSE(TestAllPossibleTranslation(padded, rotated, 0, 1, 1, 1, candidate));
            EXPECT_FALSE(TestTranslationsAroundExpectedPosition(
                padded, rotated, 0, 1, 1, 1, ParametersOf(Prior()), {0.0, 0.0}, candidate));
            EXPECT_EQ(FieldsOf(candidate), before);
            EXPECT_EQ(candidate.image.data, integers.data);
        }
    }
}

} // namespace

} // namespace morvane::algorithm::matching_internals
