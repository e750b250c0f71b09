// Scores of occupancy words.
#include <morvane/algorithm/MatchingScores.h>

#include "support/AllTypes.h"
#include "support/AnyNumbers.h"
#include "support/ImageLiterals.h"
#include "support/RandomImages.h"
#include "support/Rows.h"
#include "support/ScoreOracle.h"

#include <gtest/gtest.h>
#include <opencv2/core.hpp>

#include <cstdint>
#include <vector>

namespace morvane::algorithm
{

namespace
{

using tests::Draw;
using tests::Random;
using tests::Row;

TEST(HammingDistance, CountsBitsThatDiffer)
{
    EXPECT_EQ(utils::HammingDistance(0xFFFF, 0), 16);
    EXPECT_EQ(utils::HammingDistance(0, 0x8000), 1);
    EXPECT_EQ(utils::HammingDistance(0, 0), 0);
    EXPECT_EQ(utils::HammingDistance(0xFFFF, 0xFFFF), 0);
    EXPECT_EQ(utils::HammingDistance(0b1010, 0b0110), 2);
}

TEST(OccupancyMatchingScore, IsBitsInCommonMinusBitsApart)
{
    EXPECT_EQ(utils::OccupancyMatchingScore(0b1011, 0b0011), 1);
    EXPECT_EQ(utils::OccupancyMatchingScore(0, 0), 0);
    EXPECT_EQ(utils::OccupancyMatchingScore(0xFFFF, 0xFFFF), 16);
    EXPECT_EQ(utils::OccupancyMatchingScore(0xFFFF, 0), -16);
    EXPECT_EQ(utils::OccupancyMatchingScore(0, 0x8000), -1);
    EXPECT_EQ(utils::OccupancyMatchingScore(0xFF00, 0x00FF), -16);
    EXPECT_EQ(utils::OccupancyMatchingScore(0x8001, 0x8001), 2);
}

TEST(OccupancyWords, AgreeWithWalksOverTheirBits)
{
    // Each word against words near it, and far from it.
    Random random(81001);
    for (unsigned a = 0; a < 65536; ++a)
    {
        for (unsigned const b : {a, a ^ 1U, a ^ 0x8000U, ~a & 0xFFFFU, static_cast<unsigned>(random.Below(65536))})
        {
            auto const p = static_cast<ushort>(a);
            auto const q = static_cast<ushort>(b);
            ASSERT_EQ(utils::HammingDistance(p, q), tests::OracleHamming(a, b)) << a << " " << b;
            ASSERT_EQ(utils::OccupancyMatchingScore(p, q), tests::OracleOccupancy(a, b)) << a << " " << b;
        }
    }
}

/// What the three scores answer and give.
struct Scores
{
    std::vector<bool> answers;
    int haming = -99;
    int occupancy = -99;
    double chain = -99.0;
};

Scores ScoresOf(cv::Mat const & a, cv::Mat const & b)
{
    Scores scores;
    scores.answers.push_back(score::ComputeHamingDistanceComparison(a, b, scores.haming));
    scores.answers.push_back(score::ComputeOccupancyMatchingScore(a, b, scores.occupancy));
    scores.answers.push_back(score::ComputeOccupancyLonguestChainMatchingScore(a, b, scores.chain));
    return scores;
}

std::vector<bool> const kAllTrue(3, true);
std::vector<bool> const kAllFalse(3, false);

TEST(OccupancyScores, SumOverPairsOfWords)
{
    // Bits: 1011 against 0011, 1 against 1, 1 against nothing, nothing against 1, nothing against nothing.
    Scores const scores = ScoresOf(Draw<ushort>({"b1", "1.", ".."}), Draw<ushort>({"31", ".1", ".."}));
    EXPECT_EQ(scores.answers, kAllTrue);
    EXPECT_EQ(scores.haming, 15 + 16);
    EXPECT_EQ(scores.occupancy, 1 + 1);
    EXPECT_EQ(scores.chain, 16.0);
}

TEST(OccupancyScores, CanBeNegative)
{
    Scores const scores = ScoresOf(Row<ushort>({0xFF00, 0xF0F0}), Row<ushort>({0x00FF, 0x0F0F}));
    EXPECT_EQ(scores.haming, 0);
    EXPECT_EQ(scores.occupancy, -32);
    EXPECT_EQ(scores.chain, 0.0);
}

TEST(OccupancyScores, OfEqualImages_AreOfTheirFullPixels)
{
    Random random(81002);
    cv::Mat const image = tests::RandomImage(random, {31, 17}, CV_16UC1);
    Scores const scores = ScoresOf(image, image);
    EXPECT_EQ(scores.haming, 16 * cv::countNonZero(image));
    EXPECT_EQ(scores.chain, 16.0 * cv::countNonZero(image));
    // Nowhere equal.
    EXPECT_EQ(ScoresOf(image, cv::Mat(image ^ cv::Scalar(1))).chain, 0.0);
}

TEST(OccupancyScores, OfOtherShapes_PairInRasterOrder)
{
    // 1 2 3 4 5 6 against 1 2 3 4 7 6.
    Scores const scores = ScoresOf(Draw<ushort>({"123", "456"}), Draw<ushort>({"12", "34", "76"}));
    EXPECT_EQ(scores.answers, kAllTrue);
    EXPECT_EQ(scores.chain, 5 * 16.0);
    EXPECT_EQ(scores.haming, 6 * 16 - 1);
}

TEST(OccupancyScores, OfEmptyImages_Are0)
{
    // Of whatever type.
    for (cv::Mat const & a : {cv::Mat(), cv::Mat(0, 5, CV_16UC1), cv::Mat(5, 0, CV_8UC1)})
    {
        for (cv::Mat const & b : {cv::Mat(), cv::Mat(3, 0, CV_16UC1)})
        {
            Scores const scores = ScoresOf(a, b);
            EXPECT_EQ(scores.answers, kAllTrue);
            EXPECT_EQ(scores.haming, 0);
            EXPECT_EQ(scores.occupancy, 0);
            EXPECT_EQ(scores.chain, 0.0);
        }
    }
}

TEST(OccupancyScoresRefusal, LeavesZeros)
{
    auto const expectRefused = [](cv::Mat const & a, cv::Mat const & b) {
        for (bool const turned : {false, true})
        {
            Scores const scores = turned ? ScoresOf(b, a) : ScoresOf(a, b);
            EXPECT_EQ(scores.answers, kAllFalse);
            EXPECT_EQ(scores.haming, 0);
            EXPECT_EQ(scores.occupancy, 0);
            EXPECT_EQ(scores.chain, 0.0);
        }
    };
    cv::Mat const words = Draw<ushort>({"123", "456"});
    expectRefused(words, Draw<ushort>({"12", "34"}));
    expectRefused(words, Draw<ushort>({"1234567"}));
    expectRefused(words, cv::Mat());
    // Elements that are not made of words, and more than two dimensions.
    expectRefused(words, Draw<cv::Vec3b>({"123", "456"}));
    expectRefused(words, Draw<uchar>({"123", "456"}));
    expectRefused(Draw<uchar>({"123", "456"}), Draw<uchar>({"123", "456"}));
    expectRefused(words, cv::Mat(std::vector<int>{2, 3, 1}, CV_16UC1, cv::Scalar(1)));
}

TEST(OccupancyScores, OfWiderElements_ReadTheFirstWordsOfEachRow)
{
    // The words of the rows are 1 0 2 | 0 3 0, and 4 0 5 | 0 6 0.
    cv::Mat const wide = Draw<int>({"123", "456"});
    Scores const scores = ScoresOf(wide, Row<ushort>({1, 1, 3, 4, 4, 5}).reshape(1, 2));
    EXPECT_EQ(scores.answers, kAllTrue);
    // 1 and 1, 2 and 3; 4 and 4, 5 and 5.
    EXPECT_EQ(scores.haming, 16 + 15 + 16 + 16);
    EXPECT_EQ(scores.chain, 48.0);
    cv::Mat const signedWords = Draw<short>({"123", "456"});
    EXPECT_EQ(ScoresOf(signedWords, signedWords).haming, 6 * 16);
}

TEST(OccupancyScoresRandom, AgreeWithThePlainForm)
{
    Random random(81003);
    for (int repeat = 0; repeat < 150; ++repeat)
    {
        cv::Size const size = tests::RandomSize(random);
        SCOPED_TRACE(tests::Case(CV_16U, size, repeat));
        bool const isAny = repeat % 2 == 0;
        cv::Mat const a =
            isAny ? tests::AnyNumbers(random, size, CV_16UC1) : tests::RandomImage(random, size, CV_16UC1);
        cv::Mat b = isAny ? tests::AnyNumbers(random, size, CV_16UC1) : tests::RandomImage(random, size, CV_16UC1);
        tests::OracleWordScores const expected = tests::OracleScoresOfWords(a, b);
        tests::FramedImage framedA(a);
        tests::FramedImage framedB(b);
        // Also with the pixels of the second image in one column.
        cv::Mat const column = size.empty() ? b : b.reshape(1, static_cast<int>(b.total()));
        tests::FramedImage framedColumn(column);
        for (cv::Mat const & other : {b, framedB.View(), column, framedColumn.View()})
        {
            Scores const scores = ScoresOf(framedA.View(), other);
            ASSERT_EQ(scores.answers, kAllTrue);
            ASSERT_EQ(scores.haming, expected.haming);
            ASSERT_EQ(scores.occupancy, expected.occupancy);
            ASSERT_EQ(scores.chain, expected.chain);
        }
        // Neither image is the first one.
        Scores const turned = ScoresOf(b, a);
        ASSERT_EQ(turned.haming, expected.haming);
        ASSERT_EQ(turned.occupancy, expected.occupancy);
        ASSERT_EQ(turned.chain, expected.chain);
    }
}

} // namespace

} // namespace morvane::algorithm
